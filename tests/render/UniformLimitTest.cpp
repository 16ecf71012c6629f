// bgfx's uniforms are used up before programs are created: a warning, nothing drawn, and no crash of the
// thread that renders.
#include "DrawingCheck.h"
#include "OffscreenTarget.h"

#include <harness/LibraryRun.h>
#include <harness/Trouble.h>

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/ProgramFactory.h>
#include <zx3D/Text.h>

#include <QColor>
#include <QMatrix4x4>

#include <string>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

class UniformLimitTest : public BackendTest {
protected:
    /// Takes all uniforms but some.
    void TakeAllBut(std::size_t left) {
        do
            m_taken.push_back(bgfx::createUniform(("u_taken" + std::to_string(m_taken.size())).c_str(),
                                                  bgfx::UniformType::Vec4));
        while (bgfx::isValid(m_taken.back()));
        m_taken.pop_back();
        GiveBack(left);
    }

    void GiveBack(std::size_t count) {
        for (; count > 0; --count) {
            bgfx::destroy(m_taken.back());
            m_taken.pop_back();
        }
        bgfx::frame(); // with which bgfx has them again
    }

    void GiveAllBack() { GiveBack(m_taken.size()); }

private:
    std::vector<bgfx::UniformHandle> m_taken;
};

/// A frame that bgfx has drawn when this returns.
void DrawFrame(zx3DQt::BGFXRenderer& renderer) {
    OffscreenTarget target(QSize(16, 16));
    ASSERT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
    renderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext view(0, zx3DQt::BGFXViewClearOptions{BGFX_CLEAR_COLOR, 0x336699ff, 1.0f, 0});
    view.SetViewport(target.GetViewport());
    view.Submit(target.GetFrameBuffer());
    bgfx::touch(view);
    zx3D::Vertex::Pos3fNormal3fColorRGBA const vertices[3];
    std::uint16_t const indices[] = {0, 1, 2};
    renderer.DrawTriangles(view, vertices, indices);
    ReadBack(target.GetFrameBuffer());
}

} // namespace

TEST_P(UniformLimitTest, ARendererWithoutUniformsDrawsNothingUntilThereAreSome) {
    ExpectWarning("renderer.no-uniforms");
    ExpectWarning("draw.no-program");
    zx3DQt::BGFXRenderer renderer;
    for (std::size_t const left : {0, 4, 20, 44}) {
        TakeAllBut(left);
        DrawFrame(renderer);
        EXPECT_FALSE(bgfx::isValid(renderer.GetBasicProgram())) << left;
    }
    GiveAllBack();
    ExpectDrawingWorks(Qt::green);
    DrawFrame(renderer);
    EXPECT_TRUE(bgfx::isValid(renderer.GetBasicProgram()));
}

TEST_P(UniformLimitTest, WithoutUniformsTheFactoryGivesNoneUntilThereAreSome) {
    auto const create = [] {
        return zx3D::ProgramFactory::Get().CreateProgram("vs_lighting", "fs_lighting");
    };
    for (std::size_t const left : {0, 1, 36}) {
        TakeAllBut(left);
        EXPECT_FALSE(create().has_value()) << left;
        bgfx::frame();
        bgfx::frame();
    }
    EXPECT_EQ(TakeWarnings("program.not-created").size(), 1u);
    GiveAllBack();
    EXPECT_TRUE(create().has_value());
    bgfx::frame();
    bgfx::frame();
}

TEST_P(UniformLimitTest, WithoutUniformsTextIsLeftOut) {
    ExpectWarning("program.not-created");
    ExpectWarning("text.no-resources");
    TakeAllBut(0);
    std::optional<zx3D::FontHandle> const font = zx3D::LoadDefaultFont(12);
    ASSERT_TRUE(font.has_value());
    zx3D::TextBufferHandle const text = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, *font);
    zx3D::AppendText(text, "text");
    zx3D::SubmitTextBuffer(text, 0, 0);
    bgfx::frame();
    bgfx::frame();
    zx3D::DestroyTextBuffer(text);
    zx3D::DestroyFont(*font);
    GiveAllBack();
}

ZX3D_INSTANTIATE_BACKENDS(UniformLimitTest);
