# Compiles GLSL shaders at build time and embeds them in a target.
#
#   zx3dqt_add_shaders(<target>
#       SHADERS  a.vert b.frag c.comp ...
#       [PROGRAMS a.vert+b.frag ...])
#
# Adds to <target> the compiled form of each shader and a header, <target>_shaders.h, that declares them in the namespace
# <target>_shaders: a zx3D::EmbeddedShader for each, named by the stem of its file, and kAll, pointers to all of them.
# PROGRAMS names the pairs that make a program: a fragment shader whose inputs differ from the vertex shader's outputs
# stops the build. Shaders are relative to the calling CMakeLists.txt, which must be the one that creates <target>. A
# shader is compiled again when it, a file that it includes, or the compiler changes.
include_guard(GLOBAL)

function(zx3dqt_add_shaders target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SHADERS;PROGRAMS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SHADERS)
    message(FATAL_ERROR "zx3dqt_add_shaders: expected <target> SHADERS ... [PROGRAMS ...]")
  endif()

  string(MAKE_C_IDENTIFIER "${target}_shaders" namespace)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/shaders/${target}")
  file(MAKE_DIRECTORY "${folder}")
  _zx3dqt_read_programs("${arg_SHADERS}" "${arg_PROGRAMS}")
  set(generated "${folder}/${target}_shaders.h")
  set(declarations "")
  set(pointers "")
  foreach(shader IN LISTS arg_SHADERS)
    get_filename_component(path "${shader}" ABSOLUTE)
    get_filename_component(file "${shader}" NAME)
    get_filename_component(name "${shader}" NAME_WE)
    set(output "${folder}/${name}.cpp")
    list(TRANSFORM vertex_shaders_of_${file} PREPEND "--vertex;" OUTPUT_VARIABLE vertex_options)
    add_custom_command(
      OUTPUT "${output}"
      COMMAND "$<TARGET_FILE:zx3DQt::shader_compiler>" --output "${output}" --depfile "${output}.d"
        --namespace "${namespace}" ${vertex_options} "${path}"
      DEPENDS "$<TARGET_FILE:zx3DQt::shader_compiler>" "${path}"
      DEPFILE "${output}.d"
      COMMENT "Compiling shader ${name}"
      VERBATIM)
    list(APPEND generated "${output}")
    string(APPEND declarations "extern zarvex::zx3D::EmbeddedShader const ${name};\n")
    string(APPEND pointers " &${name},")
  endforeach()

  file(CONFIGURE OUTPUT "${folder}/${target}_shaders.h" @ONLY CONTENT [[
// Generated: the shaders that are compiled into @target@; changes here are lost.
#pragma once

#include <zx3D/EmbeddedShader.h>

namespace @namespace@ {

@declarations@
inline constexpr zarvex::zx3D::EmbeddedShader const* kAll[] = {@pointers@};

} // namespace @namespace@
]])
  set_source_files_properties(${generated} PROPERTIES
    SKIP_AUTOGEN ON SKIP_PRECOMPILE_HEADERS ON SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE ${generated})
  target_include_directories(${target} PRIVATE "${folder}")
  source_group("Generated" FILES ${generated})
endfunction()

# Sets vertex_shaders_of_<fragment file> in the caller to the paths of the vertex shaders that it is paired with.
function(_zx3dqt_read_programs shaders programs)
  foreach(shader IN LISTS shaders)
    get_filename_component(file "${shader}" NAME)
    get_filename_component(path_of_${file} "${shader}" ABSOLUTE)
  endforeach()
  foreach(program IN LISTS programs)
    string(REPLACE "+" ";" stages "${program}")
    list(LENGTH stages stage_count)
    if(NOT stage_count EQUAL 2)
      message(FATAL_ERROR "zx3dqt_add_shaders: '${program}' is not of the form vertex+fragment")
    endif()
    list(POP_FRONT stages vertex fragment)
    if(NOT path_of_${vertex} OR NOT path_of_${fragment})
      message(FATAL_ERROR "zx3dqt_add_shaders: a shader of '${program}' is not among the SHADERS")
    endif()
    list(APPEND vertex_shaders_of_${fragment} "${path_of_${vertex}}")
    set(vertex_shaders_of_${fragment} "${vertex_shaders_of_${fragment}}" PARENT_SCOPE)
  endforeach()
endfunction()
