# Writes a copy of bgfx's amalgamated.cpp to `out`, beside a changed renderer_gl.cpp that it includes from there.
#
# On OpenGL every window has a context of its own, and all share the programs. When one context sets a uniform to the
# value that another has just set, Mesa takes it for unchanged, and the one goes on drawing with its value before. So
# bgfx sets each uniform to something else first.
function(zx3d_refresh_uniforms bgfx_folder out)
  file(READ ${bgfx_folder}/src/renderer_gl.cpp text)
  string(REGEX REPLACE "GL_CHECK\\((glUniform4fv?)\\(loc, "
    "GL_CHECK(glUniform4fv(loc, 1, otherValue) ); GL_CHECK(\\1(loc, " text "${text}")
  string(REGEX REPLACE "GL_CHECK\\((glUniformMatrix[34]fv)\\(loc, num, transpose, "
    "GL_CHECK(\\1(loc, 1, transpose, otherValue) ); GL_CHECK(\\1(loc, num, transpose, " text "${text}")
  string(REGEX MATCHALL "otherValue" changes "${text}")
  list(LENGTH changes count)
  if(NOT count EQUAL 4)
    message(WARNING "This bgfx sets OpenGL uniforms in another way than known: with Mesa, windows that draw the same "
      "may show old pictures.")
  endif()
  file(CONFIGURE OUTPUT ${out}/renderer_gl.cpp @ONLY
    CONTENT "static const float otherValue[16] = { 3.0e38f, 3.0e38f, 3.0e38f, 3.0e38f };\n${text}")
  configure_file(${bgfx_folder}/src/amalgamated.cpp ${out}/amalgamated.cpp COPYONLY)
endfunction()
