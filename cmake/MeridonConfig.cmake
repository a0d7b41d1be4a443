include(CMakeFindDependencyMacro)
find_dependency(Threads)
# Only Meridon::client, for GAME_Init and GAME_Mod modules, hands on Vulkan and ImGui, so they are looked for without
# being required: a project of server modules builds where neither is installed. meridon_add_module says what is
# missing when a client module needs them. libquorl carries ImGui's code; the package gives the headers.
find_package(Vulkan QUIET)
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND AND NOT TARGET PkgConfig::IMGUI)
  pkg_check_modules(IMGUI QUIET IMPORTED_TARGET imgui)
endif()
include("${CMAKE_CURRENT_LIST_DIR}/MeridonTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/MeridonModule.cmake")
