# Configures the probe project with a cargo that works, then again with none: the sources are there by then.
file(REMOVE_RECURSE "${BINARY_DIR}")
foreach(cargo IN ITEMS "${CARGO}" /nowhere/cargo)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "BGFX_CRATE=${CRATE}"
      "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BINARY_DIR}" -G "${GENERATOR}"
      "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" -DCMAKE_DISABLE_FIND_PACKAGE_bgfx=ON "-DZX3D_CARGO=${cargo}"
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  string(FIND "${output}" "built from the crate" position)
  if(NOT result EQUAL 0 OR position EQUAL -1)
    message(FATAL_ERROR "With ${cargo}:\n${output}")
  endif()
endforeach()
