# Builds shader_project four times: with a right shader, a wrong one, the right one again, and a changed included
# file. The build must succeed, stop with a message at the shader's line, recover, and compile the shader again.
set(shader "${build_dir}/probe.vert")
set(included "${build_dir}/probe.glsl")
set(generated "${build_dir}/build/shaders/embedding/probe.cpp")
set(right "#include \"probe.glsl\"\nvoid main() { gl_Position = Place(); }\n")
set(wrong "#include \"probe.glsl\"\nvoid main() { gl_Position = Nowhere(); }\n")

# Sets build_succeeded and build_text in the caller.
function(build)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${build_dir}/build
    RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(result EQUAL 0)
    set(build_succeeded TRUE PARENT_SCOPE)
  else()
    set(build_succeeded FALSE PARENT_SCOPE)
  endif()
  set(build_text "${text}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${build_dir})
file(WRITE ${included} "vec4 Place() { return vec4(0.0); }\n")
file(WRITE ${shader} "${right}")
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${source_dir} -B ${build_dir}/build -G ${generator}
    -D CMAKE_MAKE_PROGRAM=${make_program} -D CMAKE_CXX_COMPILER=${cxx}
    -D compiler=${compiler} -D shader=${shader}
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)

build()
if(NOT build_succeeded)
  message(FATAL_ERROR "a right shader stops the build:\n${build_text}")
endif()

file(WRITE ${shader} "${wrong}")
build()
string(FIND "${build_text}" "${shader}:2: error: 'Nowhere' : no matching overloaded function found" message_position)
if(build_succeeded OR message_position EQUAL -1)
  message(FATAL_ERROR "a wrong shader does not stop the build with its message:\n${build_text}")
endif()

file(WRITE ${shader} "${right}")
build()
if(NOT build_succeeded)
  message(FATAL_ERROR "the build does not recover:\n${build_text}")
endif()

file(READ ${generated} before)
file(WRITE ${included} "vec4 Place() { return vec4(0.5); }\n")
build()
file(READ ${generated} after)
if(NOT build_succeeded OR before STREQUAL after)
  message(FATAL_ERROR "a changed included file does not compile the shader again:\n${build_text}")
endif()
