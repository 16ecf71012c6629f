// Drives glslang and reads its log.
#include "GlslCompilation.h"

#include "SpirvBinding.h"

#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>

#include <regex>
#include <set>
#include <sstream>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

/// The GLSL version that the Vulkan dialect builds on.
constexpr int kVulkanGlslVersion = 450;

/// Locations between stages and bindings, which are written for Vulkan, are no part of GLSL 3.30.
constexpr char const* kPreamble = "#extension GL_GOOGLE_include_directive : require\n";
constexpr char const* kPreamble330 = "#extension GL_GOOGLE_include_directive : require\n"
                                     "#extension GL_ARB_separate_shader_objects : require\n"
                                     "#extension GL_ARB_shading_language_420pack : require\n";

/// Hands included files to glslang: each once, later includes of it are empty.
class Includer : public glslang::TShader::Includer {
public:
    Includer(SourceFiles& files, SourceFile const& source) : m_files(files), m_seen{&source} {}

    IncludeResult* includeLocal(char const* name, char const* includingFile, std::size_t) override {
        auto const* const file = m_files.ReadIncluded(name, includingFile);
        if (file == nullptr) {
            return nullptr; // glslang says so
        }
        static std::string const empty = "\n";
        auto const& text = m_seen.insert(file).second ? file->text : empty;
        return new IncludeResult(file->path.string(), text.data(), text.size(), nullptr);
    }

    void releaseInclude(IncludeResult* result) override { delete result; }

private:
    SourceFiles& m_files;
    std::set<SourceFile const*> m_seen;
};

void AddMessage(std::string const& line, std::string const& name, Diagnostics& diagnostics) {
    // "ERROR: file:12: 'x' : undeclared identifier", or without a place when the message is about the whole
    // shader, and with an empty name when it is about no name.
    static std::regex const message(R"(^(ERROR|WARNING): (?:(.+?):(\d+): )?(?:'' : *)?(.*?) *$)");
    static std::regex const summary(R"(\d+ compilation errors?\..*|compilation terminated)");

    std::smatch match;
    if (!std::regex_match(line, match, message) ||
        std::regex_match(match[4].first, match[4].second, summary)) {
        return;
    }
    auto location =
        match[2].matched ? SourceLocation{match[2], std::stoi(match[3])} : SourceLocation{name, 1};
    if (match[1] == "ERROR") {
        diagnostics.Error(std::move(location), match[4]);
    } else {
        diagnostics.Warning(std::move(location), match[4]);
    }
}

/// A failure must never pass silently, even when the log holds nothing that was understood.
bool Conclude(bool succeeded, char const* log, std::string const& name, Diagnostics& diagnostics) {
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        AddMessage(line, name, diagnostics);
    }
    if (!succeeded && !diagnostics.HasErrors()) {
        diagnostics.Error({name, 1}, log);
    }
    return succeeded && !diagnostics.HasErrors();
}

EShLanguage ToGlslangStage(ShaderStage stage) {
    switch (stage) {
    case ShaderStage::Vertex:
        return EShLangVertex;
    case ShaderStage::Fragment:
        return EShLangFragment;
    case ShaderStage::Compute:
        return EShLangCompute;
    }
    return EShLangVertex;
}

/// One shader, and the program of this one stage that it is linked to.
class StageProgram {
public:
    explicit StageProgram(ShaderStage stage) : m_language(ToGlslangStage(stage)), m_shader(m_language) {}

    glslang::TShader& Shader() { return m_shader; }

    bool ParseAndLink(std::string const& text, std::string const& name, int version, EShMessages messages,
                      glslang::TShader::Includer& includer, Diagnostics& diagnostics) {
        auto const* const string = text.c_str();
        auto const length = static_cast<int>(text.size());
        auto const* const names = name.c_str();
        m_shader.setStringsWithLengthsAndNames(&string, &length, &names, 1);
        bool const parsed =
            m_shader.parse(GetDefaultResources(), version, ECoreProfile, false, true, messages, includer);
        if (!Conclude(parsed, m_shader.getInfoLog(), name, diagnostics)) {
            return false;
        }
        m_program.addShader(&m_shader);
        bool const linked = m_program.link(messages) && m_program.mapIO();
        return Conclude(linked, m_program.getInfoLog(), name, diagnostics);
    }

    std::vector<std::uint32_t> Spirv() {
        std::vector<std::uint32_t> words;
        glslang::GlslangToSpv(*m_program.getIntermediate(m_language), words);
        return words;
    }

private:
    EShLanguage m_language;
    glslang::TShader m_shader;
    glslang::TProgram m_program; // refers to the shader, so it has to go first
};

void ConfigureForVulkan(glslang::TShader& shader, ShaderStage stage) {
    shader.setEnvInput(glslang::EShSourceGlsl, ToGlslangStage(stage), glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_0);
    shader.setEnvInputVulkanRulesRelaxed();
    shader.setGlobalUniformBlockName(kUniformBlockName);
    shader.setGlobalUniformSet(0);
    shader.setGlobalUniformBinding(UniformBlockBinding(stage));
    for (auto const resource :
         {glslang::EResTexture, glslang::EResImage, glslang::EResSsbo, glslang::EResUav}) {
        shader.setShiftBinding(resource, kResourceBindingShift);
    }
}

void ConfigureForOpenGL(glslang::TShader& shader, ShaderStage stage) {
    shader.setEnvInput(glslang::EShSourceGlsl, ToGlslangStage(stage), glslang::EShClientOpenGL, 100);
    shader.setEnvClient(glslang::EShClientOpenGL, glslang::EShTargetOpenGL_450);
    shader.setAutoMapLocations(true);
}

bool StatesVersion(SourceFile const& file, Diagnostics& diagnostics) {
    static std::regex const version(R"((^|\n)[ \t]*#[ \t]*version\b)");
    std::smatch match;
    if (!std::regex_search(file.text, match, version)) {
        return false;
    }
    auto const line = 1 + std::count(file.text.begin(), match[1].second, '\n');
    diagnostics.Error({file.path.string(), static_cast<int>(line)},
                      "#version is chosen by the compiler for each backend; remove it");
    return true;
}

} // namespace

GlslangProcess::GlslangProcess() {
    glslang::InitializeProcess();
}

GlslangProcess::~GlslangProcess() {
    glslang::FinalizeProcess();
}

int OpenGLVersion(ShaderStage stage) {
    return stage == ShaderStage::Compute ? 430 : 330;
}

std::optional<std::vector<std::uint32_t>> CompileToSpirv(std::filesystem::path const& path, ShaderStage stage,
                                                         Target target, SourceFiles& files,
                                                         Diagnostics& diagnostics) {
    auto const* const source = files.Read(path);
    if (source == nullptr) {
        diagnostics.Error({path.string(), 0}, "cannot read '" + path.string() + "'");
        return std::nullopt;
    }
    if (StatesVersion(*source, diagnostics)) {
        return std::nullopt;
    }
    StageProgram program(stage);
    auto& shader = program.Shader();
    bool const isVulkan = target == Target::Vulkan;
    isVulkan ? ConfigureForVulkan(shader, stage) : ConfigureForOpenGL(shader, stage);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_0);
    auto const version = isVulkan ? kVulkanGlslVersion : OpenGLVersion(stage);
    shader.setPreamble(version == 330 ? kPreamble330 : kPreamble);

    auto const messages =
        static_cast<EShMessages>(EShMsgSpvRules | (isVulkan ? EShMsgVulkanRules : EShMsgDefault));
    Includer includer(files, *source);
    if (!program.ParseAndLink(source->text, path.string(), version, messages, includer, diagnostics)) {
        return std::nullopt;
    }
    return program.Spirv();
}

bool CheckOpenGLText(std::string const& text, std::string const& name, ShaderStage stage,
                     Diagnostics& diagnostics) {
    StageProgram program(stage);
    glslang::TShader::ForbidIncluder includer;
    return program.ParseAndLink(text, name, OpenGLVersion(stage), EShMsgDefault, includer, diagnostics);
}

} // namespace zarvex::zx3D::ShaderCompiler
