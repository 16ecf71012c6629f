// The shader compiler's entry point: command line in, exit status out.
#include "CommandLine.h"
#include "EmbeddedSource.h"

#include <cstdlib>
#include <iostream>

namespace {

using namespace zarvex::zx3D::ShaderCompiler;

constexpr int kExitUsage = 2;

bool Write(std::filesystem::path const& path, std::string const& content) {
    if (WriteFileAtomically(path, content)) {
        return true;
    }
    std::cerr << path.string() << ": error: cannot write the file\n";
    return false;
}

bool WriteResult(CompileRequest const& request, CompiledShader const& shader) {
    auto const name = request.compilation.source.stem().string();
    if (!request.depfile.empty() && !Write(request.depfile, MakeDepfile(request.output, shader))) {
        return false;
    }
    return Write(request.output, MakeEmbeddedSource(name, shader));
}

int Compile(CompileRequest const& request) {
    Diagnostics diagnostics;
    auto const shader = CompileShader(request.compilation, diagnostics);
    diagnostics.Print(std::cerr);
    return shader && WriteResult(request, *shader) ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argumentCount, char** arguments) {
    auto const request = ParseCommandLine(
        {const_cast<char const**>(arguments) + 1, static_cast<std::size_t>(argumentCount - 1)});
    if (auto const* const compile = std::get_if<CompileRequest>(&request)) {
        return Compile(*compile);
    }
    if (auto const* const error = std::get_if<UsageError>(&request)) {
        std::cerr << "zx3d_shader_compiler: " << error->message << "; --help shows the usage\n";
        return kExitUsage;
    }
    std::cout << HelpText();
    return EXIT_SUCCESS;
}
