// The shader compiler's command line.
#include "EmbeddedSource.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <regex>

namespace {

using namespace zarvex::zx3D::ShaderCompiler;

constexpr int kExitUsage = 2;

constexpr char const* kDescription =
    R"(zx3d_shader_compiler: one GLSL shader for bgfx's OpenGL and Vulkan backends

Compiles SOURCE for both and writes them as C++ source to embed. The shader is named by the stem of SOURCE.)";

constexpr char const* kFooter = R"(
Shaders are written without #version, with layout(location = n) on every input and output, and with
uniforms of the types vec4, mat3, mat4 and vec4[n]. Samplers have layout(binding = n), n being the
texture stage. VULKAN is defined when compiling for Vulkan.

Exit status: 0 done, 1 the shader is wrong or a file cannot be read or written, 2 wrong usage.
Nothing is written unless the status is 0.)";

struct Request {
    CompilationOptions compilation;
    std::string stage;
    std::string space = "shaders";
    std::filesystem::path output;
    std::filesystem::path depfile;

    std::string Name() const { return compilation.source.stem().string(); }
};

void AddOptions(CLI::App& app, Request& request) {
    app.footer(kFooter);
    app.add_option("SOURCE", request.compilation.source, "the shader")->required();
    app.add_option("--output", request.output, "the C++ source to write")->required();
    app.add_option("--stage", request.stage, "by default the extension .vert, .frag or .comp decides")
        ->check(CLI::IsMember({"vertex", "fragment", "compute"}));
    app.add_option("--namespace", request.space, "the C++ namespace of the shader")->capture_default_str();
    app.add_option("--include", request.compilation.includeDirectories,
                   "look for included files here too; may be given several times")
        ->allow_extra_args(false);
    app.add_option("--vertex", request.compilation.vertexShaders,
                   "for a fragment shader: its inputs must match the outputs of this vertex shader; may be "
                   "given several times")
        ->allow_extra_args(false);
    app.add_option("--depfile", request.depfile,
                   "write the files that the result depends on, in Make's syntax");
}

void CheckRequest(Request& request) {
    auto& compilation = request.compilation;
    auto const stage =
        request.stage.empty() ? ShaderStageFromPath(compilation.source) : ShaderStageFromName(request.stage);
    if (!stage) {
        throw CLI::ValidationError("the extension of '" + compilation.source.string() +
                                   "' names no stage; use --stage");
    }
    if (!std::regex_match(request.Name(), std::regex("[A-Za-z_][A-Za-z0-9_]*"))) {
        throw CLI::ValidationError("'" + request.Name() + "' cannot be the name of a shader");
    }
    if (!compilation.vertexShaders.empty() && *stage != ShaderStage::Fragment) {
        throw CLI::ValidationError("--vertex is for fragment shaders");
    }
    compilation.stage = *stage;
}

bool Write(std::filesystem::path const& path, std::string const& content) {
    if (WriteFileAtomically(path, content)) {
        return true;
    }
    std::cerr << path.string() << ": error: cannot write the file\n";
    return false;
}

bool WriteResult(Request const& request, CompiledShader const& shader) {
    if (!request.depfile.empty() && !Write(request.depfile, MakeDepfile(request.output, shader))) {
        return false;
    }
    return Write(request.output, MakeEmbeddedSource(request.space, request.Name(), shader));
}

} // namespace

int main(int argumentCount, char** arguments) {
    CLI::App app(kDescription, "zx3d_shader_compiler");
    Request request;
    try {
        AddOptions(app, request);
        app.parse(argumentCount, arguments);
        CheckRequest(request);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : kExitUsage;
    }
    Diagnostics diagnostics;
    auto const shader = CompileShader(request.compilation, diagnostics);
    diagnostics.Print(std::cerr);
    return shader && WriteResult(request, *shader) ? EXIT_SUCCESS : EXIT_FAILURE;
}
