include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(Vulkan)
# libquorl hands ImGui on to what links it: the headers come from the system package, the code from libquorl.
find_dependency(PkgConfig)
pkg_check_modules(IMGUI REQUIRED IMPORTED_TARGET imgui)
include("${CMAKE_CURRENT_LIST_DIR}/MeridonTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/MeridonModule.cmake")
