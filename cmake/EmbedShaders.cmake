# Compiles GLSL shaders at build time and embeds them in a library.
#
#   zx3d_embed_shaders(<target>
#       SOURCES  a.vert b.frag c.comp ...
#       PROGRAMS a.vert+b.frag ...)
#
# Adds to <target> the compiled form of each source and FindEmbeddedShader of EmbeddedShaders.h, which finds each by
# the stem of its file name. PROGRAMS names the pairs that make a program: a fragment shader whose inputs differ from
# the vertex shader's outputs stops the build. Sources are relative to the calling CMakeLists.txt, which must be the one
# that creates <target>. A shader is compiled again when it, a file that it includes, or the compiler changes.

set(ZX3D_EMBEDDED_SHADERS_INCLUDE_DIR "${CMAKE_CURRENT_LIST_DIR}/../zx3D/src/program")

function(zx3d_embed_shaders target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PROGRAMS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCES)
    message(FATAL_ERROR "zx3d_embed_shaders: expected <target> SOURCES ... [PROGRAMS ...]")
  endif()

  _zx3d_read_shader_programs("${arg_SOURCES}" "${arg_PROGRAMS}")
  set(generated_sources "")
  set(shader_names "")
  foreach(source IN LISTS arg_SOURCES)
    get_filename_component(file "${source}" NAME)
    get_filename_component(name "${source}" NAME_WE)
    _zx3d_compile_shader("${source}" "${name}" "${vertex_shaders_of_${file}}")
    list(APPEND generated_sources "${generated_source}")
    list(APPEND shader_names "${name}")
  endforeach()

  _zx3d_write_shader_table(${target} "${shader_names}")
  list(APPEND generated_sources "${generated_source}")
  set_source_files_properties(${generated_sources} PROPERTIES
    INCLUDE_DIRECTORIES "${ZX3D_EMBEDDED_SHADERS_INCLUDE_DIR}"
    SKIP_AUTOGEN ON)
  target_sources(${target} PRIVATE ${generated_sources})
  source_group("Generated" FILES ${generated_sources})
endfunction()

# Sets vertex_shaders_of_<fragment file> in the caller to the paths of the vertex shaders that it is paired with.
function(_zx3d_read_shader_programs sources programs)
  foreach(source IN LISTS sources)
    get_filename_component(file "${source}" NAME)
    get_filename_component(path_of_${file} "${source}" ABSOLUTE)
  endforeach()
  foreach(program IN LISTS programs)
    string(REPLACE "+" ";" stages "${program}")
    list(LENGTH stages stage_count)
    if(NOT stage_count EQUAL 2)
      message(FATAL_ERROR "zx3d_embed_shaders: '${program}' is not of the form vertex+fragment")
    endif()
    list(POP_FRONT stages vertex fragment)
    if(NOT path_of_${vertex} OR NOT path_of_${fragment})
      message(FATAL_ERROR "zx3d_embed_shaders: a shader of '${program}' is not among the SOURCES")
    endif()
    list(APPEND vertex_shaders_of_${fragment} "${path_of_${vertex}}")
    set(vertex_shaders_of_${fragment} "${vertex_shaders_of_${fragment}}" PARENT_SCOPE)
  endforeach()
endfunction()

# Adds the build step of one shader and sets generated_source in the caller.
function(_zx3d_compile_shader source name vertex_shaders)
  set(output_directory "${CMAKE_CURRENT_BINARY_DIR}/shaders")
  file(MAKE_DIRECTORY "${output_directory}")
  set(output "${output_directory}/${name}.cpp")
  get_filename_component(source_path "${source}" ABSOLUTE)
  set(vertex_options "")
  foreach(vertex IN LISTS vertex_shaders)
    list(APPEND vertex_options --vertex "${vertex}")
  endforeach()
  add_custom_command(
    OUTPUT "${output}"
    COMMAND zx3d_shader_compiler --output "${output}" --depfile "${output}.d" ${vertex_options} "${source_path}"
    DEPENDS zx3d_shader_compiler "${source_path}"
    DEPFILE "${output}.d"
    COMMENT "Compiling shader ${name}"
    VERBATIM)
  set(generated_source "${output}" PARENT_SCOPE)
endfunction()

# Writes FindEmbeddedShader over the named shaders and sets generated_source in the caller.
function(_zx3d_write_shader_table target names)
  list(SORT names)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/shaders/${target}_EmbeddedShaders.cpp")
  set(declarations "")
  set(entries "")
  foreach(name IN LISTS names)
    string(APPEND declarations "extern EmbeddedShader const ${name};\n")
    string(APPEND entries "    &EmbeddedShaders::${name},\n")
  endforeach()
  file(CONFIGURE OUTPUT "${output}" @ONLY CONTENT [[
// Generated: finds the shaders that were compiled into this library; changes here are lost.
#include "EmbeddedShaders.h"

namespace zarvex::zx3D {

namespace EmbeddedShaders {
@declarations@} // namespace EmbeddedShaders

namespace {

constexpr EmbeddedShader const* kShaders[] = {
@entries@};

} // namespace

EmbeddedShader const* FindEmbeddedShader(std::string_view name) {
  for (auto const* const shader : kShaders) {
    if (shader->name == name) {
      return shader;
    }
  }
  return nullptr;
}

} // namespace zarvex::zx3D
]])
  set(generated_source "${output}" PARENT_SCOPE)
endfunction()
