# The warnings that our own code is held to.
include_guard(GLOBAL)

function(zx3d_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    # What the sanitizers add keeps GCC from seeing that the empty optional is not destroyed.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  if(ZX3D_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
