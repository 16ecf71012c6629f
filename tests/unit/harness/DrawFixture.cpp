// Set-up and look-ups of the draw fixture.
#include "DrawFixture.h"

#include "DrawingOf.h"

#include <zx3D/Context.h>
#include <zx3D/ProgramFactory.h>

using namespace zarvex;
using namespace zarvex::zx3DQt;

namespace {

std::string Text(std::optional<bgfx::ProgramHandle> program) {
    return "program#" + (bgfx::isValid(program.value()) ? std::to_string(program->idx) : "invalid");
}

} // namespace

void DrawFixture::SetUp() {
    LibraryFixture::SetUp();
    m_renderer.emplace();
    m_renderer->Initialize();
    m_view.SetViewport(QRect(7, 3, 100, 50));
    recorder::ClearCalls();
}

void DrawFixture::TearDown() {
    m_renderer.reset();
    LibraryFixture::TearDown();
}

void DrawFixture::RestartWithTransientSpace(std::uint32_t vertexBytes, std::uint32_t indexBytes) {
    m_renderer.reset();
    zx3D::Context::Shutdown();
    zx3D::ContextOptions options = zx3D::Context::GetOptions();
    options.transientVertexBufferSize = vertexBytes;
    options.transientIndexBufferSize = indexBytes;
    ASSERT_TRUE(zx3D::Context::Initialize(options));
    m_renderer.emplace();
    m_renderer->Initialize();
    recorder::ClearCalls();
}

void DrawFixture::DisableCompute() {
    Configure([](recorder::Settings& settings) { settings.supported &= ~BGFX_CAPS_COMPUTE; });
}

void DrawFixture::DisableCaps() {
    Configure([](recorder::Settings& settings) { settings.hasCaps = false; });
}

bool DrawFixture::StartFrame(std::uint16_t width, std::uint16_t height) {
    if (!m_frameBuffer)
        m_frameBuffer.emplace(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    m_frameBuffer->RequestResize(width, height);
    return m_renderer->StartFrame(*m_frameBuffer);
}

std::string DrawFixture::Program(char const* vertexShader, char const* fragmentShader) {
    return Text(zx3D::ProgramFactory::Get().CreateProgram(vertexShader, fragmentShader));
}

std::string DrawFixture::Program(char const* computeShader) {
    return Text(zx3D::ProgramFactory::Get().CreateProgram(computeShader));
}

recorder::Draw DrawFixture::TheDraw() {
    std::vector<recorder::Draw> draws = recorder::Draws();
    if (draws.size() == 2 && draws[0].isDispatch)
        draws.erase(draws.begin());
    EXPECT_THAT(draws, testing::SizeIs(1));
    return draws.empty() ? recorder::Draw() : draws[0];
}

DrawFixture::Store const& DrawFixture::Kept() const {
    return FrameResourcesOf(*m_renderer);
}

std::vector<FrameResource> DrawFixture::KeptKinds() const {
    std::vector<FrameResource> kinds;
    for (auto const& [kind, resources] : Kept())
        kinds.insert(kinds.end(), resources.size(), static_cast<FrameResource>(kind));
    return kinds;
}

std::map<std::uint32_t, QMatrix4x4> const& DrawFixture::ModelTransforms() const {
    return ModelTransformsOf(*m_renderer);
}

QMatrix4x4 Translation(float x, float y, float z) {
    QMatrix4x4 matrix;
    matrix.translate(x, y, z);
    return matrix;
}

std::vector<float> Floats(QMatrix4x4 const& matrix) {
    return {matrix.constData(), matrix.constData() + 16};
}
