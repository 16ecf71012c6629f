# Every shader of zx3D, and which of them make programs together: the arguments of zx3dqt_add_shaders.
set(ZX3D_SHADER_SOURCES
  cs_point_sprite.comp
  cs_rectangle_sprite.comp
  fs_basic.frag
  fs_fullscreen_texture.frag
  fs_lighting.frag
  fs_line_opengl_stipple.frag
  fs_line_simple_dash.frag
  fs_point_sprite.frag
  fs_rectangle_sprite_opengl_stipple.frag
  fs_text.frag
  vs_basic.vert
  vs_fullscreen_triangle.vert
  vs_lighting.vert
  vs_line_opengl_stipple.vert
  vs_line_simple_dash.vert
  vs_point_sprite.vert
  vs_rectangle_sprite.vert
  vs_text.vert
)
list(TRANSFORM ZX3D_SHADER_SOURCES PREPEND "${CMAKE_CURRENT_LIST_DIR}/")

set(ZX3D_SHADER_PROGRAMS
  vs_basic.vert+fs_basic.frag
  vs_lighting.vert+fs_lighting.frag
  vs_line_simple_dash.vert+fs_line_simple_dash.frag
  vs_line_opengl_stipple.vert+fs_line_opengl_stipple.frag
  vs_point_sprite.vert+fs_point_sprite.frag
  vs_rectangle_sprite.vert+fs_rectangle_sprite_opengl_stipple.frag
  vs_fullscreen_triangle.vert+fs_fullscreen_texture.frag
  vs_text.vert+fs_text.frag
)
