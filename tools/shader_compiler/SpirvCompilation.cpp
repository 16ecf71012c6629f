// Drives glslang's Vulkan path and SPIRV-Tools' validator.
#include "SpirvCompilation.h"

#include "GlslangFrontEnd.h"
#include "ShaderReflection.h"
#include "SpirvBinding.h"

#include <glslang/SPIRV/GlslangToSpv.h>
#include <spirv-tools/libspirv.hpp>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

/// The GLSL version that the Vulkan dialect builds on.
constexpr int kVulkanGlslVersion = 450;
constexpr auto kMessages = static_cast<EShMessages>(EShMsgSpvRules | EShMsgVulkanRules);

void ConfigureForVulkan(glslang::TShader& shader, ShaderStage stage) {
    shader.setEnvInput(glslang::EShSourceGlsl, ToGlslangStage(stage), glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_0);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_0);
    shader.setEnvInputVulkanRulesRelaxed();

    shader.setGlobalUniformBlockName(kUniformBlockName);
    shader.setGlobalUniformSet(0);
    shader.setGlobalUniformBinding(UniformBlockBinding(stage));
    shader.setShiftBinding(glslang::EResTexture, kResourceBindingShift);
    shader.setShiftBinding(glslang::EResImage, kResourceBindingShift);
    shader.setShiftBinding(glslang::EResSsbo, kResourceBindingShift);
    shader.setShiftBinding(glslang::EResUav, kResourceBindingShift);
    shader.setShiftBinding(glslang::EResSampler, kSamplerBindingShift);
}

bool IsValidSpirv(std::vector<std::uint32_t> const& words, SourceText const& source,
                  Diagnostics& diagnostics) {
    spvtools::SpirvTools tools(SPV_ENV_VULKAN_1_0);
    tools.SetMessageConsumer([&](spv_message_level_t, char const*, spv_position_t const&,
                                 char const* message) {
        diagnostics.Error(source.LocationOfLine(1), std::string("generated SPIR-V is invalid: ") + message);
    });
    return tools.Validate(words);
}

} // namespace

std::optional<SpirvShader> CompileToSpirv(SourceText const& vulkanText, ShaderStage stage,
                                          Diagnostics& diagnostics) {
    // The program refers to the shader, so it has to go first.
    glslang::TShader shader(ToGlslangStage(stage));
    glslang::TProgram program;
    ConfigureForVulkan(shader, stage);
    if (!ParseAndLink(shader, program, vulkanText, kVulkanGlslVersion, kMessages, diagnostics)) {
        return std::nullopt;
    }
    if (!program.mapIO()) {
        diagnostics.Error(vulkanText.LocationOfLine(1), "bindings collide or are out of range");
        return std::nullopt;
    }

    SpirvShader result;
    result.interface = ReflectShader(program, stage, vulkanText, diagnostics);
    if (diagnostics.HasErrors()) {
        return std::nullopt;
    }
    glslang::GlslangToSpv(*program.getIntermediate(ToGlslangStage(stage)), result.words);
    if (!IsValidSpirv(result.words, vulkanText, diagnostics)) {
        return std::nullopt;
    }
    return result;
}

} // namespace zarvex::zx3D::ShaderCompiler
