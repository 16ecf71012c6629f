// Creating programs from the embedded shaders, once each.
#include <zx3D/ProgramFactory.h>

#include "../message/Say.h"
#include "EmbeddedShaders.h"

#include <span>

namespace zarvex::zx3D {

namespace {

void Report(std::string_view shader, char const* what, char const* detail = "") {
    Say(MessageLevel::Warning, "program.not-created", "shader \"%.*s\" %s%s", static_cast<int>(shader.size()),
        shader.data(), what, detail);
}

/// The shader's binary for the running renderer. The renderer that draws nothing takes any.
std::span<std::uint8_t const> SelectBinary(EmbeddedShader const& shader) {
    switch (bgfx::getRendererType()) {
    case bgfx::RendererType::OpenGL:
    case bgfx::RendererType::Noop:
        return shader.openGL;
    case bgfx::RendererType::Vulkan:
        return shader.vulkan;
    default:
        return {};
    }
}

/// What the first byte of a shader's binary tells it to be.
enum class Stage : std::uint8_t { Vertex = 'V', Fragment = 'F', Compute = 'C' };

char const* NameOf(Stage stage) {
    switch (stage) {
    case Stage::Vertex:
        return "vertex";
    case Stage::Fragment:
        return "fragment";
    default:
        return "compute";
    }
}

Owned<bgfx::ShaderHandle> CreateShader(std::string_view name, Stage stage) {
    EmbeddedShader const* const shader = FindEmbeddedShader(name);
    if (shader == nullptr) {
        Report(name, "does not exist");
        return {};
    }
    std::span<std::uint8_t const> const binary = SelectBinary(*shader);
    if (binary.empty()) {
        Report(name, "is not available for the running renderer");
        return {};
    }
    if (binary.front() != static_cast<std::uint8_t>(stage)) { // bgfx would only check in debug builds
        Report(name, "is of another stage than ", NameOf(stage));
        return {};
    }
    // Embedded data outlives bgfx, so a reference will do.
    return Owned(bgfx::createShader(bgfx::makeRef(binary.data(), static_cast<std::uint32_t>(binary.size()))));
}

/// To the program, which destroys it.
void GiveAway(Owned<bgfx::ShaderHandle>& shader) {
    static_cast<void>(shader.Release());
}

Owned<bgfx::ProgramHandle> CreateGraphicsProgram(std::string_view vertexShaderName,
                                                 std::string_view fragmentShaderName) {
    auto vertex = CreateShader(vertexShaderName, Stage::Vertex);
    auto fragment = CreateShader(fragmentShaderName, Stage::Fragment);
    if (!vertex || !fragment)
        return {};
    constexpr bool ownsShaders = true;
    Owned program(bgfx::createProgram(vertex.Get(), fragment.Get(), ownsShaders));
    if (!program) {
        Report(fragmentShaderName, "does not fit its vertex shader");
        return {};
    }
    GiveAway(vertex);
    GiveAway(fragment);
    return program;
}

Owned<bgfx::ProgramHandle> CreateComputeProgram(std::string_view name) {
    auto compute = CreateShader(name, Stage::Compute);
    if (!compute)
        return {};
    constexpr bool ownsShaders = true;
    Owned program(bgfx::createProgram(compute.Get(), ownsShaders));
    if (!program) {
        Report(name, "does not make a program");
        return {};
    }
    GiveAway(compute);
    return program;
}

/// Exists from the start, so that listeners of the application's are told of the context's end before it:
/// they may draw until then.
[[maybe_unused]] ProgramFactory const& toldLast = ProgramFactory::Get();

} // namespace

ProgramFactory& ProgramFactory::Get() {
    // Never destroyed: the context may be shut down at the very end of the process.
    static ProgramFactory& factory = *new ProgramFactory;
    return factory;
}

std::optional<bgfx::ProgramHandle> ProgramFactory::CreateProgram(std::string_view vertexShaderName,
                                                                 std::string_view fragmentShaderName) {
    // No shader name contains a line feed.
    std::string key = std::string(vertexShaderName) + '\n' + std::string(fragmentShaderName);
    return FindOrCreate(std::move(key),
                        [&] { return CreateGraphicsProgram(vertexShaderName, fragmentShaderName); });
}

std::optional<bgfx::ProgramHandle> ProgramFactory::CreateProgram(std::string_view computeShaderName) {
    bool const hasCompute = (bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE) != 0;
    if (!hasCompute && FindEmbeddedShader(computeShaderName) != nullptr)
        return bgfx::ProgramHandle(BGFX_INVALID_HANDLE);
    return FindOrCreate(std::string(computeShaderName),
                        [&] { return CreateComputeProgram(computeShaderName); });
}

template<typename Create>
std::optional<bgfx::ProgramHandle> ProgramFactory::FindOrCreate(std::string key, Create create) {
    if (auto const found = m_programs.find(key); found != m_programs.end())
        return found->second.Get();
    Owned<bgfx::ProgramHandle> program = create();
    if (!program)
        return std::nullopt;
    return m_programs.emplace(std::move(key), std::move(program)).first->second.Get();
}

} // namespace zarvex::zx3D
