# What the tests of installations have in common.

# Runs a command, which must succeed.
function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}: ${result}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Builds the consumer against what is installed below `prefix` and runs it on every backend.
function(build_and_run_consumer prefix)
  string(REPLACE "|" ";" prefix_path "${PREFIX_PATH}")
  list(PREPEND prefix_path "${prefix}")
  string(REPLACE ";" "\\;" prefix_path "${prefix_path}")
  set(folder "${WORK_DIR}/consumer")
  run("${CMAKE_COMMAND}" -S "${CONSUMER_DIR}" -B "${folder}" -G "${GENERATOR}"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_PREFIX_PATH=${prefix_path}")
  run("${CMAKE_COMMAND}" --build "${folder}" --parallel 2)
  run("${folder}/start_noop")
  run("${WITH_DISPLAY}" 640x480 "${folder}/draw_pixmap" --opengl)
  run("${WITH_DISPLAY}" 640x480 "${folder}/draw_pixmap" --vulkan)
  run("${WITH_DISPLAY}" 640x480 "${folder}/draw_own_shader" --opengl "${folder}/opengl.png")
  run("${WITH_DISPLAY}" 640x480 "${folder}/draw_own_shader" --vulkan "${folder}/vulkan.png")
  run("${CMAKE_COMMAND}" -E compare_files "${folder}/opengl.png" "${folder}/vulkan.png")
endfunction()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
