// A texture over a whole view: the draw, and the triangle that is kept.
#include <DrawFixture.h>
#include <Warnings.h>

#include <zx3DQt/Library.h>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

class DrawFullscreenTextureTest : public DrawFixture {
protected:
    void SetUp() override {
        DrawFixture::SetUp();
        m_texture = bgfx::createTexture2D(4, 4, false, 1, bgfx::TextureFormat::RGBA8);
        recorder::ClearCalls();
    }
    void TearDown() override {
        bgfx::destroy(m_texture);
        DrawFixture::TearDown();
    }

    /// The handle that the one call of a function returned.
    static std::string ResultOf(char const* name) { return recorder::CallsNamed(name).at(0).result; }

    /// While `create` gives nothing more, nothing is drawn, nothing left behind, and the cause told of once.
    template<typename Create>
    void ExpectNothingDrawnWithout(Create create) {
        using Buffer = decltype(create());
        std::vector<Buffer> taken;
        do
            taken.push_back(create());
        while (bgfx::isValid(taken.back()));
        taken.pop_back();
        std::vector<std::string> const alive = recorder::Alive();
        recorder::ClearCalls();
        for (int i = 0; i < 3; ++i)
            m_renderer->DrawFullscreenTexture(9, m_texture);
        EXPECT_THAT(recorder::Draws(), IsEmpty());
        EXPECT_THAT(recorder::CallNames(), Not(Contains(StartsWith("set"))));
        bgfx::frame();
        EXPECT_EQ(recorder::Alive(), alive);
        EXPECT_EQ(m_renderer->GetFrameStatistics().CountLeftOut(LeftOutReason::NoBuffer), 3u);
        EXPECT_THAT(TakeWarnings("draw.no-buffer"), SizeIs(1));

        bgfx::destroy(taken.back());
        taken.pop_back();
        bgfx::frame();
        m_renderer->DrawFullscreenTexture(9, m_texture);
        EXPECT_EQ(TheDraw().view, 9);
        for (Buffer const buffer : taken)
            bgfx::destroy(buffer);
    }

    bgfx::TextureHandle m_texture = BGFX_INVALID_HANDLE;
};

} // namespace

TEST_F(DrawFullscreenTextureTest, TheFirstCallCreatesATriangleAndDrawsIt) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    std::string const sampler = std::to_string(m_renderer->GetFullscreenTextureSampler().idx);
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("makeRef(84)", "createVertexBuffer(84, 28, 0x0)", "makeRef(6)",
                            "createIndexBuffer(6, 0x0)", "setState(0xf, 0x0)",
                            "setVertexBuffer(0, " + ResultOf("createVertexBuffer") + ")",
                            "setIndexBuffer(" + ResultOf("createIndexBuffer") + ")",
                            "setTexture(0, uniform#" + sampler + ", texture#" +
                                std::to_string(m_texture.idx) + ", 0xffffffff)",
                            "submit(9, " + Program("vs_fullscreen_triangle", "fs_fullscreen_texture") +
                                ", 0, 0xff)"));
    EXPECT_EQ(recorder::UniformName(m_renderer->GetFullscreenTextureSampler()), "s_fullscreen_texture");
}

TEST_F(DrawFullscreenTextureTest, TheTriangleIsThreeZeroVerticesInOrder) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ(draw.layout, "Position 3 Float, Color0 4 Float");
    EXPECT_EQ(draw.VerticesAs<float>(), std::vector<float>(3 * 7));
    EXPECT_THAT(draw.IndicesAs<std::uint16_t>(), ElementsAre(0, 1, 2));
}

TEST_F(DrawFullscreenTextureTest, SetsNoTransformAndNoUniform) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    EXPECT_FALSE(TheDraw().transform);
    EXPECT_THAT(TheDraw().uniforms, IsEmpty());
}

TEST_F(DrawFullscreenTextureTest, ASecondCallCreatesNoBuffers) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    recorder::Draw const first = TheDraw();
    m_renderer->PresentCurrentAndSubmitNextFrame(false);
    recorder::ClearCalls();
    m_renderer->DrawFullscreenTexture(8, m_texture);
    EXPECT_THAT(recorder::CallNames(),
                ElementsAre("setState", "setVertexBuffer", "setIndexBuffer", "setTexture", "submit"));
    EXPECT_EQ(TheDraw().vertexBuffer, first.vertexBuffer);
    EXPECT_EQ(TheDraw().indexBuffer, first.indexBuffer);
    EXPECT_EQ(TheDraw().view, 8);
}

TEST_F(DrawFullscreenTextureTest, IsNotAmongWhatAFrameKeeps) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    EXPECT_THAT(KeptKinds(), IsEmpty());
}

TEST_F(DrawFullscreenTextureTest, TheRendererDestroysTheIndexBufferThenTheVertexBuffer) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    std::string const vertexBuffer = "destroy(" + ResultOf("createVertexBuffer") + ")";
    std::string const indexBuffer = "destroy(" + ResultOf("createIndexBuffer") + ")";
    recorder::ClearCalls();
    m_renderer.reset();
    std::vector<std::string> bufferCalls;
    for (std::string const& text : recorder::CallTexts()) {
        if (text.find("Buffer#") != std::string::npos)
            bufferCalls.push_back(text);
    }
    EXPECT_THAT(bufferCalls, ElementsAre(indexBuffer, vertexBuffer));
}

TEST_F(DrawFullscreenTextureTest, TheDataLiveUntilBgfxHasReadThem) {
    // Released and overwritten memory would be noticed with the second frame.
    m_renderer->DrawFullscreenTexture(9, m_texture);
    m_renderer.reset();
    std::vector<std::vector<std::uint8_t>> const others(64, std::vector<std::uint8_t>(84, 0xff));
    bgfx::frame();
    bgfx::frame();
    EXPECT_THAT(recorder::Errors(), IsEmpty());
}

TEST_F(DrawFullscreenTextureTest, TheBuffersGoWhenTheContextStops) {
    m_renderer->DrawFullscreenTexture(9, m_texture);
    bgfx::destroy(m_texture);
    Shutdown();
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
    ASSERT_TRUE(Init(false));
    m_renderer->Initialize();
    m_texture = bgfx::createTexture2D(4, 4, false, 1, bgfx::TextureFormat::RGBA8);
    recorder::ClearCalls();
    m_renderer->DrawFullscreenTexture(9, m_texture);
    EXPECT_EQ(recorder::CountCalls("createVertexBuffer"), 1u);
}

TEST_F(DrawFullscreenTextureTest, RenderersHaveTheirOwnTriangles) {
    BGFXRenderer other;
    other.Initialize();
    m_renderer->DrawFullscreenTexture(9, m_texture);
    other.DrawFullscreenTexture(9, m_texture);
    EXPECT_EQ(recorder::CountCalls("createVertexBuffer"), 2u);
}

TEST_F(DrawFullscreenTextureTest, WithoutAVertexBufferNothingIsDrawnUntilThereIsOne) {
    ExpectNothingDrawnWithout(
        [] { return bgfx::createVertexBuffer(bgfx::alloc(28), zx3D::Vertex::Pos3fColorRGBA::Layout()); });
}

TEST_F(DrawFullscreenTextureTest, WithoutAnIndexBufferNothingIsDrawnUntilThereIsOne) {
    ExpectNothingDrawnWithout([] { return bgfx::createIndexBuffer(bgfx::alloc(6)); });
}
