// Formats bytes as C++ arrays and writes files.
#include "EmbeddedSource.h"

#include <fstream>
#include <span>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

constexpr std::size_t kBytesPerLine = 20;

std::string FormatArray(std::string const& name, std::span<std::uint8_t const> bytes) {
    auto text = "constexpr std::uint8_t " + name + "[] = {";
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        text += index % kBytesPerLine == 0 ? "\n    " : " ";
        text += std::to_string(bytes[index]) + ",";
    }
    return text + "\n};\n\n";
}

/// Make reads a space as the end of a name and a dollar sign as a variable.
std::string EscapeForMake(std::filesystem::path const& path) {
    std::string escaped;
    for (char const character : path.generic_string()) {
        if (character == ' ' || character == '#') {
            escaped += '\\';
        } else if (character == '$') {
            escaped += '$';
        }
        escaped += character;
    }
    return escaped;
}

} // namespace

std::string MakeEmbeddedSource(std::string const& space, std::string const& name,
                               CompiledShader const& shader) {
    return "// Generated from the shader source of the same name; changes here are lost.\n"
           "#include <zx3D/EmbeddedShader.h>\n\n"
           "namespace " +
           space + " {\n\nnamespace {\n\n" + FormatArray("kOpenGL", shader.openGL) +
           FormatArray("kVulkan", shader.vulkan) +
           "} // namespace\n\n"
           "extern zarvex::zx3D::EmbeddedShader const " +
           name + ";\nconstinit zarvex::zx3D::EmbeddedShader const " + name + " = {\"" + name +
           "\", kOpenGL, kVulkan};\n\n} // namespace " + space + "\n";
}

std::string MakeDepfile(std::filesystem::path const& target, CompiledShader const& shader) {
    auto text = EscapeForMake(std::filesystem::absolute(target)) + ":";
    for (auto const& file : shader.files) {
        text += " \\\n  " + EscapeForMake(std::filesystem::absolute(file));
    }
    return text + "\n";
}

bool WriteFileAtomically(std::filesystem::path const& path, std::string const& content) {
    auto temporary = path;
    temporary += ".tmp";
    std::error_code error;
    std::ofstream stream(temporary, std::ios::binary);
    stream << content;
    stream.close();
    if (stream) {
        std::filesystem::rename(temporary, path, error);
    }
    if (!stream || error) {
        std::filesystem::remove(temporary, error);
        return false;
    }
    return true;
}

} // namespace zarvex::zx3D::ShaderCompiler
