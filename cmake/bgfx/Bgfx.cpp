// bgfx in one file, with its OpenGL renderer telling here when it takes a program or a vertex array object into use, and
// when it asks whether mipmaps can be generated.
//
// On OpenGL every window has a context of its own, and three things go wrong there:
//
// - All contexts share the programs. When one sets a uniform to the value that another has just set, Mesa takes it for
//   unchanged, and the one goes on drawing with its value before. So a program that another context has used meanwhile has
//   its uniforms changed and changed back, once: that makes Mesa hand all of them to the hardware again.
// - bgfx makes a primitive's first vertex the one that flat variables come from, as on Vulkan, but only in the context that
//   draws off screen. So every context is told so here.
// - Vertex array objects are a context's own. From API version 126 on bgfx keeps the name of one and makes a new one in
//   each context that it goes to, as if their names were the same in all. Mesa's are not: with several windows the name is
//   soon one that the current context does not know. So here each context goes on with the one that it has bound.
//
// When it starts, bgfx generates mipmaps in each of its texture formats, to see which ones can have them. Mesa's software
// renderer compiles shaders for every one, which is most of the time that an application needs to start with it. OpenGL
// refuses the same formats where nothing is left to be generated.
#include <unordered_map>

#include "bgfx_p.h"

#if BX_PLATFORM_LINUX && BGFX_CONFIG_RENDERER_OPENGL
namespace bgfx::gl {
void UseProgram(unsigned program);
void TryMipmapGeneration(unsigned target);
void GenVertexArrays(int count, unsigned* names);
void BindVertexArray(unsigned name);
void DeleteVertexArrays(int count, unsigned const* names);
}
#    define glUseProgram(program) UseProgram(program)
// The variable tells what it is for: "target" where bgfx starts, "m_target" where a texture needs its mipmaps.
#    define glGenerateMipmap(variable) GenerateMipmap_##variable(variable)
#    define GenerateMipmap_target(target) TryMipmapGeneration(target)
#    define GenerateMipmap_m_target(target) glGenerateMipmap(target)
#    if BGFX_API_VERSION >= 126
#        define glGenVertexArrays(count, names) GenVertexArrays(count, names)
#        define glBindVertexArray(name) BindVertexArray(name)
#        define glDeleteVertexArrays(count, names) DeleteVertexArrays(count, names)
#    endif
#endif

#include "amalgamated.cpp"

#if BX_PLATFORM_LINUX && BGFX_CONFIG_RENDERER_OPENGL
#    undef glUseProgram
#    undef glGenerateMipmap
#    undef glGenVertexArrays
#    undef glBindVertexArray
#    undef glDeleteVertexArrays

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
    if (glProvokingVertex != nullptr && s_extension[Extension::ARB_provoking_vertex].m_supported)
        glProvokingVertex(GL_FIRST_VERTEX_CONVENTION);
    static std::unordered_map<GLuint, EGLContext> lastUser;
    EGLContext const context = eglGetCurrentContext();
    auto const [entry, isNew] = lastUser.try_emplace(program, context);
    if (!isNew && entry->second != context) {
        entry->second = context;
        RefreshUniforms(program);
    }
}

/// In place of glGenerateMipmap for a texture of 16 x 16 texels: from its smallest level on, if it has levels, as those of
/// depths have not.
void TryMipmapGeneration(GLenum target) {
    glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, 4);
    glGenerateMipmap(target);
    if (glGetError() == GL_NO_ERROR)
        return;
    glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, 0);
    glGenerateMipmap(target);
}

#    if BGFX_API_VERSION >= 126
/// The vertex array object that the current context has bound, 0 for none.
static GLuint BoundVertexArray() {
    GLint name = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &name);
    return GLuint(name);
}

/// In place of glGenVertexArrays: bgfx asks only whether its name is 0.
void GenVertexArrays(GLsizei, GLuint* names) {
    *names = 1;
}

/// In place of glBindVertexArray. Nobody else draws in these contexts, so they keep theirs where bgfx binds none.
void BindVertexArray(GLuint name) {
    if (name == 0 || BoundVertexArray() != 0)
        return;
    GLuint own = 0;
    glGenVertexArrays(1, &own);
    glBindVertexArray(own);
}

/// In place of glDeleteVertexArrays, which unbinds as well.
void DeleteVertexArrays(GLsizei, GLuint const*) {
    GLuint const own = BoundVertexArray();
    glDeleteVertexArrays(1, &own);
}
#    endif

} // namespace bgfx::gl
#endif
