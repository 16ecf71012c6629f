// The steps of a compilation, in order.
#include "ShaderCompilation.h"

#include "GlslangFrontEnd.h"
#include "OpenGLCheck.h"
#include "OpenGLText.h"
#include "ShaderContainer.h"
#include "SourceText.h"
#include "SpirvCompilation.h"
#include "StageMatch.h"
#include "VulkanText.h"

#include <span>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

std::span<std::uint8_t const> AsBytes(std::string const& text) {
    return {reinterpret_cast<std::uint8_t const*>(text.data()), text.size()};
}

/// SPIR-V is a stream of words; the machine that compiles has to be little endian like the container.
std::span<std::uint8_t const> AsBytes(std::vector<std::uint32_t> const& words) {
    return {reinterpret_cast<std::uint8_t const*>(words.data()), words.size() * sizeof(std::uint32_t)};
}

bool MatchVertexShader(std::filesystem::path const& path, CompilationOptions const& options,
                       SourceText const& fragmentSource, CompiledShader& fragment, Diagnostics& diagnostics) {
    auto loaded = LoadSource(path, options.includeDirectories, diagnostics);
    if (!loaded) {
        return false;
    }
    auto const vertex = CompileToSpirv(MakeVulkanText(loaded->source), ShaderStage::Vertex, diagnostics);
    if (!vertex) {
        return false;
    }
    fragment.files.insert(fragment.files.end(), loaded->files.begin(), loaded->files.end());
    return MatchStages(vertex->interface.outputs, path, fragment.interface.inputs, fragmentSource,
                       diagnostics);
}

} // namespace

std::optional<CompiledShader> CompileShader(CompilationOptions const& options, Diagnostics& diagnostics) {
    GlslangProcess const process;
    auto loaded = LoadSource(options.source, options.includeDirectories, diagnostics);
    if (!loaded) {
        return std::nullopt;
    }
    auto spirv = CompileToSpirv(MakeVulkanText(loaded->source), options.stage, diagnostics);
    if (!spirv) {
        return std::nullopt;
    }
    auto const openGLText = MakeOpenGLText(loaded->source, options.stage);
    if (!CheckOpenGLText(openGLText, options.stage, diagnostics)) {
        return std::nullopt;
    }

    CompiledShader result;
    result.openGL = WriteShaderContainer(options.stage, spirv->interface, AsBytes(openGLText.text));
    result.vulkan = WriteShaderContainer(options.stage, spirv->interface, AsBytes(spirv->words));
    result.interface = std::move(spirv->interface);
    result.files = std::move(loaded->files);
    for (auto const& path : options.vertexShaders) {
        if (!MatchVertexShader(path, options, loaded->source, result, diagnostics)) {
            return std::nullopt;
        }
    }
    return result;
}

} // namespace zarvex::zx3D::ShaderCompiler
