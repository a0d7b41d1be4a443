include(CMakeFindDependencyMacro)
find_dependency(Threads)
include("${CMAKE_CURRENT_LIST_DIR}/MeridonTargets.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/MeridonModule.cmake")
