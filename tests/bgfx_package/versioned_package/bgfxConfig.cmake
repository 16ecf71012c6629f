# A package of which only the API version matters.
add_library(bgfx::bgfx INTERFACE IMPORTED)
add_library(bgfx::bx INTERFACE IMPORTED)
add_library(bgfx::bimg INTERFACE IMPORTED)
target_include_directories(bgfx::bgfx INTERFACE ${CMAKE_CURRENT_LIST_DIR}/include)
