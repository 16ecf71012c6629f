# Configures the project afresh with ARGUMENT, expects EXPECTED_LINE in the output, and builds the libraries.
file(REMOVE_RECURSE "${BINARY_DIR}")

# A list, which stays one argument of the command below.
string(REPLACE "|" "\\;" prefix_path "${PREFIX_PATH}")

execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${BINARY_DIR}" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}" "-DCMAKE_PREFIX_PATH=${prefix_path}"
    -DBUILD_TESTING=OFF -DZX3D_BUILD_EXAMPLES=OFF "${ARGUMENT}"
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Cannot configure with ${ARGUMENT}:\n${output}")
endif()
string(FIND "${output}" "${EXPECTED_LINE}" position)
if(position EQUAL -1)
  message(FATAL_ERROR "Expected \"${EXPECTED_LINE}\" in:\n${output}")
endif()

execute_process(
  COMMAND "${CMAKE_COMMAND}" --build "${BINARY_DIR}" --parallel 2 --target zx3DQt zx3D
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Cannot build with ${ARGUMENT}:\n${output}")
endif()
file(REMOVE_RECURSE "${BINARY_DIR}")
