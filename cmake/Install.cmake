# Installs the libraries, the launcher and the headers a module author builds against, with a CMake package:
#   find_package(Meridon) then meridon_add_module(...).
include(GNUInstallDirs)
install(TARGETS quorl meridon EXPORT MeridonTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS meridon_launcher RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Template bodies (*.inl) go along, except the module template's, which only the library instantiates.
foreach(dir engine modules game)
  install(DIRECTORY ${dir}/ DESTINATION include/meridon/${dir} FILES_MATCHING PATTERN "*.h" PATTERN "*.inl"
    PATTERN "ModuleClass.inl" EXCLUDE)
endforeach()
install(EXPORT MeridonTargets NAMESPACE Meridon:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Meridon)
install(FILES cmake/MeridonConfig.cmake cmake/MeridonModule.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Meridon)
