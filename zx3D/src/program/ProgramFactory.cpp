// Creating programs from the embedded shaders, once each.
#include <zx3D/ProgramFactory.h>

#include "../message/Say.h"

#include <zx3D_objects_shaders.h>

#include <span>
#include <tuple>
#include <utility>

namespace zarvex::zx3D {

namespace {

void Report(std::string_view shader, char const* what, char const* detail = "") {
    Say(MessageLevel::Warning, "program.not-created", "shader \"%.*s\" %s%s", static_cast<int>(shader.size()),
        shader.data(), what, detail);
}

/// The library's own shader of that name; null, with a message, when there is none.
EmbeddedShader const* FindShader(std::string_view name) {
    for (EmbeddedShader const* const shader : zx3D_objects_shaders::kAll) {
        if (shader->name == name)
            return shader;
    }
    Report(name, "does not exist");
    return nullptr;
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

/// How many uniforms a shader names: behind its magic and two hashes, in little endian.
std::uint32_t CountUniforms(EmbeddedShader const& shader) {
    constexpr std::size_t place = 12;
    std::span<std::uint8_t const> const binary = SelectBinary(shader);
    return binary.size() < place + 2 ? 0 : binary[place] + 256u * binary[place + 1];
}

Owned<bgfx::ShaderHandle> CreateShader(EmbeddedShader const& shader, Stage stage) {
    std::span<std::uint8_t const> const binary = SelectBinary(shader);
    if (binary.empty()) {
        Report(shader.name, "is not available for the running renderer");
        return {};
    }
    if (binary.front() != static_cast<std::uint8_t>(stage)) { // bgfx would only check in debug builds
        Report(shader.name, "is of another stage than ", NameOf(stage));
        return {};
    }
    // Embedded data outlives bgfx, so a reference will do.
    return Owned(bgfx::createShader(bgfx::makeRef(binary.data(), static_cast<std::uint32_t>(binary.size()))));
}

/// To the program, which destroys it.
void GiveAway(Owned<bgfx::ShaderHandle>& shader) {
    static_cast<void>(shader.Release());
}

Owned<bgfx::ProgramHandle> CreateGraphicsProgram(EmbeddedShader const& vertexShader,
                                                 EmbeddedShader const& fragmentShader) {
    auto vertex = CreateShader(vertexShader, Stage::Vertex);
    auto fragment = CreateShader(fragmentShader, Stage::Fragment);
    if (!vertex || !fragment)
        return {};
    constexpr bool ownsShaders = true;
    Owned program(bgfx::createProgram(vertex.Get(), fragment.Get(), ownsShaders));
    if (!program) {
        Report(fragmentShader.name, "does not fit its vertex shader");
        return {};
    }
    GiveAway(vertex);
    GiveAway(fragment);
    return program;
}

Owned<bgfx::ProgramHandle> CreateComputeProgram(EmbeddedShader const& shader) {
    auto compute = CreateShader(shader, Stage::Compute);
    if (!compute)
        return {};
    constexpr bool ownsShaders = true;
    Owned program(bgfx::createProgram(compute.Get(), ownsShaders));
    if (!program) {
        Report(shader.name, "does not make a program");
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
    EmbeddedShader const* const vertex = FindShader(vertexShaderName);
    EmbeddedShader const* const fragment = FindShader(fragmentShaderName);
    if (vertex == nullptr || fragment == nullptr)
        return std::nullopt;
    return CreateProgram(*vertex, *fragment);
}

std::optional<bgfx::ProgramHandle> ProgramFactory::CreateProgram(std::string_view computeShaderName) {
    EmbeddedShader const* const compute = FindShader(computeShaderName);
    return compute != nullptr ? CreateProgram(*compute) : std::nullopt;
}

std::optional<bgfx::ProgramHandle> ProgramFactory::CreateProgram(EmbeddedShader const& vertexShader,
                                                                 EmbeddedShader const& fragmentShader) {
    return FindOrCreate({&vertexShader, &fragmentShader});
}

std::optional<bgfx::ProgramHandle> ProgramFactory::CreateProgram(EmbeddedShader const& computeShader) {
    if ((bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE) == 0)
        return bgfx::ProgramHandle(BGFX_INVALID_HANDLE);
    return FindOrCreate({&computeShader, nullptr});
}

bool ProgramFactory::Shaders::operator<(Shaders const& other) const {
    auto const key = [](Shaders const& shaders) {
        auto const secondName = shaders.second != nullptr ? shaders.second->name : std::string_view();
        return std::tuple(shaders.first->name, secondName, shaders.first, shaders.second);
    };
    return key(*this) < key(other);
}

std::optional<bgfx::ProgramHandle> ProgramFactory::FindOrCreate(Shaders shaders) {
    if (auto const found = m_programs.find(shaders); found != m_programs.end())
        return found->second.Get();
    auto const [first, second] = shaders;
    // bgfx's render thread crashes at a shader that bgfx had no uniforms left for.
    std::uint32_t const uniforms = CountUniforms(*first) + (second != nullptr ? CountUniforms(*second) : 0);
    if (bgfx::getStats()->numUniforms + uniforms > bgfx::getCaps()->limits.maxUniforms) {
        m_noUniforms.Raise([first] { Report(first->name, "needs more uniforms than bgfx has left"); });
        return std::nullopt;
    }
    m_noUniforms.Clear();
    Owned program = second != nullptr ? CreateGraphicsProgram(*first, *second) : CreateComputeProgram(*first);
    if (!program)
        return std::nullopt;
    return m_programs.emplace(shaders, std::move(program)).first->second.Get();
}

} // namespace zarvex::zx3D
