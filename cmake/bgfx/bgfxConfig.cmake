# The installed package of the bgfx that was built together with zx3DQt.
include(CMakeFindDependencyMacro)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/bgfxTargets.cmake)
