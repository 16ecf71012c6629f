# Calls within a library, which go straight to the function or are inlined: nobody replaces a function of ours by one
# of the same name. In Release also between files.
include_guard(GLOBAL)
include(CheckIPOSupported)
# The unit tests link the objects without it, which Clang's objects do not allow.
set(ZX3D_HAS_IPO OFF)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  check_ipo_supported(RESULT ZX3D_HAS_IPO LANGUAGES CXX)
endif()

function(zx3d_optimize_calls library objects)
  set_target_properties(${library} ${objects} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ${ZX3D_HAS_IPO})
  target_compile_options(${objects} PRIVATE
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-fno-semantic-interposition>)
endfunction()
