// Reads options and their values.
#include "CommandLine.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

/// The stem becomes a C++ name.
bool IsIdentifier(std::string const& name) {
    auto const isWordCharacter = [](unsigned char character) {
        return std::isalnum(character) != 0 || character == '_';
    };
    return !name.empty() && std::isdigit(static_cast<unsigned char>(name.front())) == 0 &&
           std::ranges::all_of(name, isWordCharacter);
}

class CommandLineParser {
public:
    explicit CommandLineParser(std::span<char const* const> arguments) : m_arguments(arguments) {}

    std::variant<CompileRequest, HelpRequest, UsageError> Run() {
        for (; m_index < m_arguments.size() && m_error.empty(); ++m_index) {
            std::string_view const argument = m_arguments[m_index];
            if (argument == "--help" || argument == "-h") {
                return HelpRequest{};
            }
            if (argument.starts_with("-")) {
                TakeOption(argument);
            } else {
                TakeSource(argument);
            }
        }
        CheckRequest();
        if (!m_error.empty()) {
            return UsageError{m_error};
        }
        return m_request;
    }

private:
    void TakeOption(std::string_view option) {
        static constexpr std::string_view kOptions[] = {"--stage", "--output", "--depfile", "--include",
                                                        "--vertex"};
        if (std::ranges::find(kOptions, option) == std::end(kOptions)) {
            m_error = "unknown option '" + std::string(option) + "'";
            return;
        }
        if (m_index + 1 == m_arguments.size()) {
            m_error = std::string(option) + " needs a value";
            return;
        }
        ApplyOption(option, m_arguments[++m_index]);
    }

    void ApplyOption(std::string_view option, std::string_view value) {
        if (option == "--output") {
            m_request.output = value;
        } else if (option == "--depfile") {
            m_request.depfile = value;
        } else if (option == "--include") {
            m_request.compilation.includeDirectories.emplace_back(value);
        } else if (option == "--vertex") {
            m_request.compilation.vertexShaders.emplace_back(value);
        } else {
            m_stage = ShaderStageFromName(value);
            if (!m_stage) {
                m_error = "'" + std::string(value) + "' is not a stage; use vertex, fragment or compute";
            }
        }
    }

    void TakeSource(std::string_view argument) {
        if (!m_request.compilation.source.empty()) {
            m_error = "more than one source given";
        }
        m_request.compilation.source = argument;
    }

    void CheckRequest() {
        if (!m_error.empty()) {
            return;
        }
        auto& compilation = m_request.compilation;
        if (!m_stage) {
            m_stage = ShaderStageFromPath(compilation.source);
        }
        if (compilation.source.empty()) {
            m_error = "no source given";
        } else if (m_request.output.empty()) {
            m_error = "--output is missing";
        } else if (!m_stage) {
            m_error = "the extension of '" + compilation.source.string() + "' names no stage; use --stage";
        } else if (!IsIdentifier(compilation.source.stem().string())) {
            m_error = "'" + compilation.source.stem().string() + "' cannot be the name of a shader";
        } else if (!compilation.vertexShaders.empty() && *m_stage != ShaderStage::Fragment) {
            m_error = "--vertex is for fragment shaders";
        } else {
            compilation.stage = *m_stage;
        }
    }

    std::span<char const* const> m_arguments;
    std::size_t m_index = 0;
    std::optional<ShaderStage> m_stage;
    CompileRequest m_request;
    std::string m_error;
};

} // namespace

std::variant<CompileRequest, HelpRequest, UsageError>
ParseCommandLine(std::span<char const* const> arguments) {
    return CommandLineParser(arguments).Run();
}

std::string_view HelpText() {
    return R"(Usage: zx3d_shader_compiler [options] --output FILE.cpp SOURCE

Compiles one GLSL shader for bgfx's OpenGL and Vulkan backends and writes both as C++ source to embed.
The shader is named by the stem of SOURCE.

Options:
  --output FILE     the C++ source to write
  --stage STAGE     vertex, fragment or compute; by default the extension .vert, .frag or .comp decides
  --include DIR     look for included files here too; may be given several times
  --vertex FILE     for a fragment shader: its inputs must match the outputs of this vertex shader;
                    may be given several times
  --depfile FILE    write the files that the result depends on, in Make's syntax
  --help            show this text

Shaders are written without #version, with layout(location = n) on every input and output, and with
uniforms of the types vec4, mat3, mat4 and vec4[n]. Samplers have layout(binding = n), n being the
texture stage, and are used in texture functions only. VULKAN is defined when compiling for Vulkan.

Exit status: 0 done, 1 the shader is wrong or a file cannot be read or written, 2 wrong usage.
Nothing is written unless the status is 0.
)";
}

} // namespace zarvex::zx3D::ShaderCompiler
