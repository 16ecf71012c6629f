# A package without bgfx::bimg.
add_library(bgfx::bgfx INTERFACE IMPORTED)
add_library(bgfx::bx INTERFACE IMPORTED)
