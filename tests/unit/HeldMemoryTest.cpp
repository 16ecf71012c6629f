// Frames take no memory that they do not give back.
#include "AllocationCounter.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/CoordinateAxes.h>
#include <zx3DQt/CoordinateGrid.h>
#include <zx3DQt/Shapes.h>

#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <QLoggingCategory>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <optional>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using zarvex::testing::CountHeldBytes;

namespace {

using Vertex = zx3D::Vertex::Pos3fColorRGBA;
using LitVertex = zx3D::Vertex::Pos3fNormal3fColorRGBA;

constexpr int kFirstFrames = 100;
constexpr int kFrames = 2000;

/// Bytes by which two moments may differ: a few blocks may be a little larger than they need be. One of the
/// smallest blocks for each frame would come to 45,000.
constexpr long kAllowance = 1000;

/// Texts that fill the cache of laid-out texts, so that each new one replaces an old one.
constexpr int kTextsToFillTheCache = 40000;

CoordinateAxesStyle Axes(zx3D::FontHandle font) {
    CoordinateAxesStyle style;
    style.lineWidths = {1.0f, 2.0f, 3.0f};
    style.arrowHeads.emplace();
    style.labels.emplace();
    style.labels->font = font;
    return style;
}

CoordinateGridStyle Grid(zx3D::FontHandle font) {
    CoordinateGridStyle style;
    style.gridSpacing = QVector2D(1.0f, 1.0f);
    style.gridMargins = QVector2D(1.0f, 1.0f);
    style.frameTickLabels.emplace();
    style.frameTickLabels->font = font;
    return style;
}

/// A scene of everything that can be drawn. Its parameter: whether bgfx offers compute shaders.
class HeldMemoryTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        zx3D::Context::PreferRenderer(bgfx::RendererType::Noop);
        ASSERT_TRUE(zx3D::Context::Initialize(zx3D::ContextOptions::Create(
            nullptr, 64, 64, nullptr, zx3D::ContextOptions::ThreadMode::MultiThreaded, false)));
        if (!GetParam()) // bgfx keeps its capabilities in one record, which it fills at its start
            const_cast<bgfx::Caps&>(*bgfx::getCaps()).supported &= ~BGFX_CAPS_COMPUTE;
        m_frameBuffer.RequestResize(64, 64);
        QLoggingCategory::setFilterRules("zarvex.*.debug=false");
        m_renderer.emplace();
        m_view.SetViewport(QRect(0, 0, 64, 64));
        m_font = *zx3D::LoadDefaultFont(12);
        m_material.CreateUniforms();
    }
    void TearDown() override {
        zx3D::DestroyFont(m_font);
        m_renderer.reset();
        zx3D::Context::Shutdown();
        QLoggingCategory::setFilterRules("");
    }

    void DrawScene(int textsThatChange) {
        ASSERT_TRUE(m_renderer->StartFrame(m_frameBuffer));
        m_view.Submit(m_frameBuffer);
        DrawLinesAndPoints();
        DrawLitTriangles();
        DrawShapes();
        m_renderer->RenderText(m_view, QPointF(9.0, 9.0), "12.75 µm", m_font, Qt::white, Qt::AlignCenter);
        for (int i = 0; i < textsThatChange; ++i)
            m_renderer->RenderText(m_view, QPointF(9.0, 9.0),
                                   QString("№%1").arg(++m_texts, 6, 10, QChar('0')), m_font, Qt::white,
                                   Qt::AlignRight);
        m_renderer->DrawFullscreenTexture(m_view, bgfx::getTexture(m_frameBuffer.GetHandle()));
        m_renderer->PresentCurrentAndSubmitNextFrame(false);
    }

    /// Once bgfx's render thread is through with the frames.
    static long CountHeldBytesBetweenFrames() {
        bgfx::frame();
        bgfx::frame();
        return CountHeldBytes();
    }

    /// What is held more after many frames than after some, of which each does something else, too.
    template<typename Action>
    long CountGrowth(Action alsoDo) {
        for (int frame = 0; frame < kFirstFrames; ++frame)
            DrawScene(kTextsToFillTheCache / kFirstFrames);
        long const before = CountHeldBytesBetweenFrames();
        for (int frame = kFirstFrames; frame < kFrames; ++frame) {
            DrawScene(2);
            alsoDo();
        }
        return CountHeldBytesBetweenFrames() - before;
    }

private:
    void DrawLinesAndPoints() {
        auto const moved = m_renderer->SetModelTransform(QMatrix4x4());
        zx3D::LineStipplePattern const stipple{0xf0f0, 2};
        for (float const width : {1.0f, 4.0f}) {
            m_renderer->DrawLines(m_view, m_lines, width);
            m_renderer->DrawLines(m_view, m_lines, width, moved, stipple);
            m_renderer->DrawLines(m_view, m_places, m_indices, Qt::red, width);
            m_renderer->DrawLines(m_view, m_places, {}, Qt::red, width, moved, stipple);
        }
        for (std::uint16_t const size : {1, 8})
            m_renderer->DrawPoints(m_view, m_vertices, size, moved);
    }

    /// As when lights move.
    void DrawLitTriangles() {
        m_renderer->DrawTriangles(m_view, m_vertices, m_indices);
        m_lights.ClearAll();
        auto lamp = BGFXPointLightSourceBuilder().DefaultDiffuse().SetName("u_light0").Build();
        lamp.CreateUniforms();
        m_lights.Add(std::move(lamp));
        m_lights.Submit();
        m_material.Submit();
        m_renderer->UpdateViewPositionUniform(m_view.ComputeViewPosition());
        m_renderer->DrawTriangles(m_view, m_litVertices, m_indices);
    }

    void DrawShapes() {
        DrawCircle(*m_renderer, m_view, {}, 1.0f, {}, 0.0f, BGFXRenderer::STATE_OPAQUE);
        DrawRectangle(*m_renderer, m_view, {}, {1.0f, 1.0f}, {}, 0.0f, BGFXRenderer::STATE_OPAQUE);
        DrawCone(*m_renderer, m_view, {0.0f, 0.0f, 1.0f}, {}, 1.0, 1.0, 32, {});
        QRectF const rect(-5.0, -5.0, 10.0, 10.0);
        DrawCoordinateAxes(*m_renderer, m_view, m_view, rect, Axes(m_font));
        DrawCoordinateGrid(*m_renderer, m_view, m_view, rect, Grid(m_font));
    }

    zx3D::FrameBuffer m_frameBuffer{nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16};
    std::optional<BGFXRenderer> m_renderer;
    BGFXViewContext m_view{0, BGFXViewClearOptions{}};
    BGFXLightingContext m_lights;
    BGFXMaterial m_material{"u_material"};
    zx3D::FontHandle m_font;
    int m_texts = 0;

    std::vector<zx3D::Line> const m_lines = std::vector<zx3D::Line>(20);
    std::vector<QVector3D> const m_places = std::vector<QVector3D>(20);
    std::vector<Vertex> const m_vertices = std::vector<Vertex>(20);
    std::vector<LitVertex> const m_litVertices = std::vector<LitVertex>(20);
    std::array<std::uint16_t, 6> const m_indices{0, 1, 2, 3, 4, 5};
};

} // namespace

TEST_P(HeldMemoryTest, TheCounterSeesTheSmallestBlockOfEachFrame) {
    std::vector<void*> blocks;
    blocks.reserve(kFrames);
    EXPECT_GT(CountGrowth([&] { blocks.push_back(std::malloc(1)); }), kAllowance);
    for (void* const block : blocks)
        std::free(block);
}

TEST_P(HeldMemoryTest, ThousandsOfFramesHoldNoMoreThanTheFirst) {
    EXPECT_LE(CountGrowth([] {}), kAllowance);
}

INSTANTIATE_TEST_SUITE_P(, HeldMemoryTest, ::testing::Bool(),
                         [](auto const& info) { return info.param ? "Compute" : "CPU"; });
