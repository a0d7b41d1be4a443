# Installs the libraries, the launcher, the headers a module author builds against, with a CMake package
# (find_package(Meridon) then meridon_add_module(...)), and the runnable game tree.
include(GNUInstallDirs)
install(TARGETS quorl meridon meridon_server meridon_client EXPORT MeridonTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS meridon_launcher RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Template bodies (*.inl) go along, except the module template's, which only the library instantiates.
foreach(dir engine modules game)
  install(DIRECTORY ${dir}/ DESTINATION include/meridon/${dir} FILES_MATCHING PATTERN "*.h" PATTERN "*.inl"
    PATTERN "ModuleClass.inl" EXCLUDE)
endforeach()
install(EXPORT MeridonTargets NAMESPACE Meridon:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Meridon)
install(FILES cmake/MeridonConfig.cmake cmake/MeridonModule.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Meridon)

# The game tree: what build/root holds but the launcher and the libraries, which are in bin/ and lib/. It sits one
# folder down, in <libdir>/meridon/root, because the launcher runs in it and saves beside it, in ../Meridon-data:
# that way the saves of an install stay in <libdir>/meridon/ too. Modules are machine code, hence lib/, not share/.
set(MERIDON_INSTALL_ROOT "${CMAKE_INSTALL_LIBDIR}/meridon/root")
install(DIRECTORY "${MERIDON_ROOT_DIR}/game" DESTINATION "${MERIDON_INSTALL_ROOT}")
install(FILES "${MERIDON_ROOT_DIR}/launcher.ini" DESTINATION "${MERIDON_INSTALL_ROOT}")
# The bundled modules' libraries, with a run path from root/modules/<name>/ up to <libdir> and the game library, and
# whatever else the build put into their folders (entity types, assets).
get_property(bundled_modules GLOBAL PROPERTY MERIDON_BUNDLED_MODULES)
foreach(module IN LISTS bundled_modules)
  get_target_property(folder ${module} LIBRARY_OUTPUT_DIRECTORY)
  cmake_path(GET folder FILENAME name)
  set_target_properties(${module} PROPERTIES INSTALL_RPATH "$ORIGIN/../../../..")
  install(TARGETS ${module} LIBRARY DESTINATION "${MERIDON_INSTALL_ROOT}/modules/${name}")
endforeach()
install(DIRECTORY "${MERIDON_ROOT_DIR}/modules/" DESTINATION "${MERIDON_INSTALL_ROOT}/modules"
  USE_SOURCE_PERMISSIONS PATTERN "*.so" EXCLUDE)
