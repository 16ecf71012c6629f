// The command line of the shader compiler.
#pragma once

#include "ShaderCompilation.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace zarvex::zx3D::ShaderCompiler {

struct HelpRequest {};

struct UsageError {
    std::string message;
};

struct CompileRequest {
    CompilationOptions compilation;
    std::filesystem::path output;
    /// Empty when no depfile is asked for.
    std::filesystem::path depfile;
};

std::variant<CompileRequest, HelpRequest, UsageError>
ParseCommandLine(std::span<char const* const> arguments);

std::string_view HelpText();

} // namespace zarvex::zx3D::ShaderCompiler
