// bgfx in one file, with its OpenGL renderer telling here when it takes a program into use.
//
// On OpenGL every window has a context of its own, and all share the programs. When one context sets a uniform to the
// value that another has just set, Mesa takes it for unchanged, and the one goes on drawing with its value before. So
// a program that another context has used meanwhile has its uniforms changed and changed back, once: that makes Mesa
// hand all of them to the hardware again.
#include <unordered_map>

#include "bgfx_p.h"

#if BX_PLATFORM_LINUX && BGFX_CONFIG_RENDERER_OPENGL
namespace bgfx::gl {
void UseProgram(unsigned program);
}
#    define glUseProgram(program) UseProgram(program)
#endif

#include "amalgamated.cpp"

#if BX_PLATFORM_LINUX && BGFX_CONFIG_RENDERER_OPENGL
#    undef glUseProgram

namespace bgfx::gl {

namespace {

/// Passes a uniform on to its setter twice: with every number changed, then as it was.
template<typename Set>
void SetAnew(GLuint program, GLint location, Set set) {
    // bgfx does not load this one itself.
    static auto const getUniform =
        reinterpret_cast<void(GL_APIENTRYP)(GLuint, GLint, GLfloat*)>(eglGetProcAddress("glGetUniformfv"));
    GLfloat values[16];
    getUniform(program, location, values);
    GLfloat changed[16];
    for (int i = 0; i < 16; ++i)
        changed[i] = values[i] == 1.0f ? 2.0f : 1.0f;
    set(location, changed);
    set(location, values);
}

/// Makes the current context read the values of the program's uniforms again. bgfx has but these three types, and the
/// first element of an array stands for all of it.
void RefreshUniforms(GLuint program) {
    GLint count = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    for (GLint i = 0; i < count; ++i) {
        GLchar name[256];
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(program, GLuint(i), sizeof(name), nullptr, &size, &type, name);
        GLint const location = glGetUniformLocation(program, name);
        if (location < 0)
            continue;
        switch (type) {
        case GL_FLOAT_VEC4:
            SetAnew(program, location, [](GLint at, GLfloat const* values) { glUniform4fv(at, 1, values); });
            break;
        case GL_FLOAT_MAT3:
            SetAnew(program, location,
                    [](GLint at, GLfloat const* values) { glUniformMatrix3fv(at, 1, GL_FALSE, values); });
            break;
        case GL_FLOAT_MAT4:
            SetAnew(program, location,
                    [](GLint at, GLfloat const* values) { glUniformMatrix4fv(at, 1, GL_FALSE, values); });
            break;
        }
    }
}

} // namespace

/// In place of glUseProgram, on the one thread that calls OpenGL.
void UseProgram(GLuint program) {
    glUseProgram(program);
    if (program == 0)
        return;
    static std::unordered_map<GLuint, EGLContext> lastUser;
    EGLContext const context = eglGetCurrentContext();
    auto const [entry, isNew] = lastUser.try_emplace(program, context);
    if (!isNew && entry->second != context) {
        entry->second = context;
        RefreshUniforms(program);
    }
}

} // namespace bgfx::gl
#endif
