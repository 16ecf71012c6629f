// The steps of a compilation, in order.
#include "ShaderCompilation.h"

#include "GlslCompilation.h"
#include "OpenGLText.h"
#include "SamplerSeparation.h"
#include "ShaderContainer.h"
#include "ShaderReflection.h"
#include "SourceFiles.h"
#include "StageMatch.h"

#include <spirv-tools/libspirv.hpp>

#include <exception>
#include <span>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

using Spirv = std::vector<std::uint32_t>;

std::span<std::uint8_t const> AsBytes(std::string const& text) {
    return {reinterpret_cast<std::uint8_t const*>(text.data()), text.size()};
}

/// SPIR-V is a stream of words; the machine that compiles has to be little endian like the container.
std::span<std::uint8_t const> AsBytes(Spirv const& words) {
    return {reinterpret_cast<std::uint8_t const*>(words.data()), words.size() * sizeof(std::uint32_t)};
}

/// Compiles for Vulkan and reflects. The module still has its combined samplers.
std::optional<Spirv> CompileAndReflect(std::filesystem::path const& path, ShaderStage stage,
                                       SourceFiles& files, ShaderInterface& interface,
                                       Diagnostics& diagnostics) {
    auto spirv = CompileToSpirv(path, stage, Target::Vulkan, files, diagnostics);
    if (spirv) {
        interface = ReflectShader(*spirv, stage, files, diagnostics);
    }
    return diagnostics.HasErrors() ? std::nullopt : spirv;
}

bool MatchVertexShader(std::filesystem::path const& path, CompilationOptions const& options,
                       SourceFiles const& fragmentFiles, CompiledShader& fragment, Diagnostics& diagnostics) {
    SourceFiles files(options.includeDirectories);
    ShaderInterface vertex;
    if (!CompileAndReflect(path, ShaderStage::Vertex, files, vertex, diagnostics)) {
        return false;
    }
    auto const paths = files.Paths();
    fragment.files.insert(fragment.files.end(), paths.begin(), paths.end());
    return MatchStages(vertex.outputs, path, fragment.interface.inputs, fragmentFiles, diagnostics);
}

bool IsValid(Spirv const& words, std::string const& name, Diagnostics& diagnostics) {
    spvtools::SpirvTools tools(SPV_ENV_VULKAN_1_0);
    tools.SetMessageConsumer(
        [&](spv_message_level_t, char const*, spv_position_t const&, char const* message) {
            diagnostics.Error({name, 1}, std::string("generated SPIR-V is invalid: ") + message);
        });
    return tools.Validate(words);
}

} // namespace

std::optional<CompiledShader> CompileShader(CompilationOptions const& options, Diagnostics& diagnostics) try {
    GlslangProcess const process;
    SourceFiles files(options.includeDirectories);
    auto const name = options.source.string();
    CompiledShader result;
    auto const vulkan =
        CompileAndReflect(options.source, options.stage, files, result.interface, diagnostics);
    auto const openGL =
        vulkan ? CompileToSpirv(options.source, options.stage, Target::OpenGL, files, diagnostics)
               : std::nullopt;
    if (!openGL) {
        return std::nullopt;
    }
    auto const separated = SeparateSamplers(*vulkan);
    auto const text = MakeOpenGLText(*openGL, options.stage);
    if (!IsValid(separated, name, diagnostics) || !CheckOpenGLText(text, name, options.stage, diagnostics)) {
        return std::nullopt;
    }
    result.openGL = WriteShaderContainer(options.stage, result.interface, AsBytes(text));
    result.vulkan = WriteShaderContainer(options.stage, result.interface, AsBytes(separated));
    result.files = files.Paths();
    for (auto const& path : options.vertexShaders) {
        if (!MatchVertexShader(path, options, files, result, diagnostics)) {
            return std::nullopt;
        }
    }
    return result;
} catch (std::exception const& error) { // SPIRV-Cross's way of saying no
    diagnostics.Error({options.source.string(), 1}, error.what());
    return std::nullopt;
}

} // namespace zarvex::zx3D::ShaderCompiler
