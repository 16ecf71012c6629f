// Lines that fade with distance: what bgfx is asked for, and that what it gets gives the distances meant.
#include <DrawFixture.h>
#include <LogCapture.h>
#include <Warnings.h>

#include <zx3DQt/Library.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr std::uint64_t kBlended =
    BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A | BGFX_STATE_DEPTH_TEST_LEQUAL |
    BGFX_STATE_BLEND_FUNC_SEPARATE(BGFX_STATE_BLEND_SRC_ALPHA, BGFX_STATE_BLEND_INV_SRC_ALPHA,
                                   BGFX_STATE_BLEND_ONE, BGFX_STATE_BLEND_INV_SRC_ALPHA);

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Point = std::array<double, 3>;

/// A view as a test knows it: where the eye is, and the axes of the camera.
struct Camera {
    QVector3D eye;
    QVector3D right, up, forward;
    bool isParallel = false;
    float scale = 1.0f; ///< half the height of the picture, in parallel, or at a distance of 1
    float nearest = 0.1f;
    float farthest = 1000.0f;

    QMatrix4x4 View() const {
        QMatrix4x4 rotation(right.x(), right.y(), right.z(), 0, up.x(), up.y(), up.z(), 0, -forward.x(),
                            -forward.y(), -forward.z(), 0, 0, 0, 0, 1);
        rotation.translate(-eye);
        return rotation;
    }

    QMatrix4x4 Projection() const {
        QMatrix4x4 matrix;
        if (isParallel)
            matrix.ortho(-2 * scale, 2 * scale, -scale, scale, nearest, farthest);
        else
            matrix.frustum(-2 * scale * nearest, 2 * scale * nearest, -scale * nearest, scale * nearest,
                           nearest, farthest);
        return matrix;
    }

    /// At a depth and a part of the picture.
    QVector3D PositionAt(float x, float y, float depth) const {
        float const size = isParallel ? scale : scale * depth;
        return eye + depth * forward + 2.0f * size * x * right + size * y * up;
    }
};

class DrawFadingLinesTest : public DrawFixture {
protected:
    void DrawFading(float width = 1.0f) {
        m_renderer->DrawFadingLines(m_view, m_lines, m_fade, width, std::nullopt, m_stipple);
    }

    void SetUp(Camera const& camera) {
        m_view.SetViewMatrix(camera.View());
        m_view.SetProjectionMatrix(camera.Projection());
    }
    using DrawFixture::SetUp;

    static double LengthOfPlace(std::vector<float> const& matrix, std::array<double, 4> const& position) {
        std::array<double, 4> place{};
        for (int i = 0; i < 4; ++i) {
            for (int k = 0; k < 4; ++k)
                place[i] += double(matrix.at(4 * k + i)) * position[k];
        }
        return std::hypot(place[0], place[1], place[2]) / std::abs(place[3]);
    }

    /// The distance that the shaders of thin lines compute for a position.
    double ThinDistance(QVector3D const& position) {
        recorder::ClearCalls();
        DrawFading();
        return LengthOfPlace(TheDraw().uniforms.at("u_fadePlace"),
                             {position.x(), position.y(), position.z(), 1.0});
    }

    /// The distance that those of wide lines compute, from clip coordinates in floats.
    double WideDistance(QVector3D const& position) {
        recorder::ClearCalls();
        DrawFading(2.0f);
        QVector4D const clip =
            m_view.GetProjectionMatrix() * m_view.GetViewMatrix() * QVector4D(position, 1.0f);
        return LengthOfPlace(recorder::Draws().back().uniforms.at("u_fadePlace"),
                             {clip.x(), clip.y(), clip.z(), clip.w()});
    }

    Camera RandomCamera(float reach) {
        std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
        auto const random = [&] { return QVector3D(unit(m_random), unit(m_random), unit(m_random)); };
        Camera camera;
        camera.eye = reach * random();
        camera.forward = random().normalized();
        camera.right = QVector3D::crossProduct(camera.forward, random()).normalized();
        camera.up = QVector3D::crossProduct(camera.right, camera.forward);
        camera.scale = std::exp(1.5f * unit(m_random));
        camera.isParallel = unit(m_random) < 0.0f;
        return camera;
    }

    std::vector<zx3D::Line> m_lines{{{0, 0, 0}, {1, 2, 3}, {0.1f, 0.2f, 0.3f, 0.5f}},
                                    {{4, 5, 6}, {7, 8, 9}, {0.4f, 0.5f, 0.6f, 1.0f}}};
    zx3D::LineStipplePattern m_stipple{0x1234, 5};
    DistanceFade m_fade{10.0f, 30.0f, std::nullopt};
    std::mt19937 m_random{7};
};

} // namespace

TEST_F(DrawFadingLinesTest, ThinOnesAreTheSameLinesWithAnotherProgramAndState) {
    m_renderer->DrawLines(m_view, m_lines, std::nullopt, std::nullopt, m_stipple);
    recorder::Draw const plain = TheDraw();
    DrawFading(); // creates the programs
    recorder::ClearCalls();
    DrawFading();
    recorder::Draw const draw = TheDraw();
    EXPECT_EQ("program#" + std::to_string(draw.program.idx), Program("vs_line_fading", "fs_line_fading"));
    EXPECT_EQ(draw.state, kBlended | BGFX_STATE_PT_LINES);
    EXPECT_EQ(draw.vertices, plain.vertices);
    EXPECT_EQ(draw.indices, plain.indices);
    EXPECT_EQ(draw.transform, plain.transform);
    EXPECT_EQ(draw.uniforms.at("u_lineStipple"), plain.uniforms.at("u_lineStipple"));
    EXPECT_EQ(draw.uniforms.at("u_viewport"), plain.uniforms.at("u_viewport"));
    EXPECT_THAT(draw.uniforms.at("u_fadeRange"), ElementsAre(10.0f, 1.0f / 20.0f, 0, 0));
    EXPECT_THAT(draw.uniforms.at("u_fadePlace"), SizeIs(16));
}

TEST_F(DrawFadingLinesTest, WideOnesAreExpandedAsEver) {
    for (bool const hasCompute : {true, false}) {
        if (!hasCompute)
            DisableCompute();
        recorder::ClearCalls();
        m_renderer->DrawLines(m_view, m_lines, 3.0f, std::nullopt, m_stipple);
        std::vector<recorder::Draw> const plain = recorder::Draws();
        recorder::ClearCalls();
        DrawFading(3.0f);
        std::vector<recorder::Draw> const draws = recorder::Draws();
        ASSERT_EQ(draws.size(), plain.size());
        if (hasCompute) {
            EXPECT_TRUE(draws[0].isDispatch);
            EXPECT_EQ(draws[0].program.idx, plain[0].program.idx);
            EXPECT_EQ(draws[0].uniforms, plain[0].uniforms);
        } else {
            EXPECT_EQ(draws[0].vertices, plain[0].vertices);
        }
        recorder::Draw const& draw = draws.back();
        EXPECT_EQ("program#" + std::to_string(draw.program.idx),
                  Program("vs_rectangle_sprite_fading", "fs_rectangle_sprite_fading"));
        EXPECT_EQ(draw.state, kBlended);
        EXPECT_EQ(draw.uniforms.at("u_lineStipple"), plain.back().uniforms.at("u_lineStipple"));
        EXPECT_THAT(draw.uniforms.at("u_fadeRange"), ElementsAre(10.0f, 1.0f / 20.0f, 0, 0));
    }
}

TEST_F(DrawFadingLinesTest, AStateThatIsGivenCounts) {
    for (float const width : {1.0f, 4.0f}) {
        recorder::ClearCalls();
        m_renderer->DrawFadingLines(m_view, m_lines, m_fade, width, std::nullopt, std::nullopt,
                                    BGFXRenderer::STATE_TRANSPARENT);
        EXPECT_EQ(TheDraw().state, std::uint64_t(BGFXRenderer::STATE_TRANSPARENT));
        EXPECT_THAT(TheDraw().uniforms.at("u_lineStipple"), ElementsAre(0xffff, 1, 0, 0));
    }
}

TEST_F(DrawFadingLinesTest, ProgramsAndUniformsAreCreatedWithTheFirstAndGoWithTheRenderer) {
    m_renderer->DrawLines(m_view, m_lines);
    m_renderer->DrawLines(m_view, m_lines, 3.0f);
    EXPECT_EQ(recorder::CountCalls("createProgram"), 0u);
    EXPECT_EQ(recorder::CountCalls("createUniform"), 0u);
    DrawFading();
    DrawFading(3.0f);
    EXPECT_EQ(recorder::CountCalls("createProgram"), 2u);
    EXPECT_EQ(recorder::CountCalls("createUniform"), 2u);
    recorder::ClearCalls();
    DrawFading();
    EXPECT_EQ(recorder::CountCalls("createProgram"), 0u);
    EXPECT_EQ(recorder::CountCalls("createUniform"), 0u);
    ExpectWarning("draw.no-program");
    // Another run, without leaks of the one before, which the fixture checks.
    zx3DQt::Shutdown();
    DrawFading();
    EXPECT_THAT(recorder::CallsNamed("submit"), SizeIs(1)) << "that of before";
    ASSERT_TRUE(zx3DQt::Init(false));
    m_renderer->Initialize();
    recorder::ClearCalls();
    DrawFading();
    EXPECT_EQ(recorder::CountCalls("createProgram"), 2u);
    EXPECT_EQ(TheDraw().state, kBlended | BGFX_STATE_PT_LINES);
}

TEST_F(DrawFadingLinesTest, WithoutLinesNothingIsCreated) {
    m_renderer->DrawFadingLines(m_view, {}, m_fade);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(DrawFadingLinesTest, TheRangeIsWhereItBeginsAndOneOverItsLength) {
    auto const range = [&](float begin, float end) {
        m_fade = {begin, end, std::nullopt};
        recorder::ClearCalls();
        DrawFading();
        return TheDraw().uniforms.at("u_fadeRange");
    };
    EXPECT_THAT(range(0.0f, 4.0f), ElementsAre(0.0f, 0.25f, 0, 0));
    EXPECT_THAT(range(-3.0f, 4.0f), ElementsAre(0.0f, 0.25f, 0, 0));
    EXPECT_THAT(range(3.0f, kInfinity), ElementsAre(3.0f, 0.0f, 0, 0));
    for (float const end : {5.0f, 3.0f, -kInfinity, kNaN}) {
        std::vector<float> const values = range(5.0f, end);
        EXPECT_EQ(values.at(0), 5.0f);
        EXPECT_GT(values.at(1), 1e18f) << "sudden";
        EXPECT_TRUE(std::isfinite(values.at(1)));
    }
}

TEST_F(DrawFadingLinesTest, InPerspectiveDistancesAreThoseFromTheEye) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(100.0f);
        camera.isParallel = false;
        SetUp(camera);
        float const depth = std::exp(4.0f + 2.5f * unit(m_random));
        QVector3D const position = camera.PositionAt(unit(m_random), unit(m_random), depth);
        double const distance = (position - camera.eye).length();
        ASSERT_NEAR(ThinDistance(position), distance, 1e-3) << i;
        // What a clip depth near 1 tells of a distance in floats.
        ASSERT_NEAR(WideDistance(position), distance, distance * (1e-3 + 1e-7 * depth / 0.1) + 0.02) << i;
    }
}

TEST_F(DrawFadingLinesTest, InParallelDistancesAreThoseInThePicture) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(100.0f);
        camera.isParallel = true;
        SetUp(camera);
        float const x = unit(m_random);
        float const y = unit(m_random);
        QVector3D const position = camera.PositionAt(x, y, 500.0f * (1.0f + unit(m_random)));
        double const distance = camera.scale * std::hypot(2.0f * x, y);
        ASSERT_NEAR(ThinDistance(position), distance, 1e-3 * (1.0 + camera.scale)) << i;
        ASSERT_NEAR(WideDistance(position), distance, 1e-3 * (1.0 + camera.scale)) << i;
    }
}

TEST_F(DrawFadingLinesTest, InParallelTheMiddleOfTheViewportCountsWhateverTheProjection) {
    m_view.SetViewMatrix(QMatrix4x4());
    QMatrix4x4 projection;
    projection.ortho(100.0f, 300.0f, -50.0f, 30.0f, -1.0f, 1.0f); // around (200, -10)
    m_view.SetProjectionMatrix(projection);
    EXPECT_NEAR(ThinDistance(QVector3D(203.0f, -6.0f, 0.3f)), 5.0, 1e-3);
    EXPECT_NEAR(WideDistance(QVector3D(203.0f, -6.0f, 0.3f)), 5.0, 1e-3);
}

TEST_F(DrawFadingLinesTest, FromACenterDistancesAreThoseInSpace) {
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int i = 0; i < 200; ++i) {
        Camera const camera = RandomCamera(100.0f);
        QVector3D const position =
            camera.PositionAt(unit(m_random), unit(m_random), 40.0f + 30.0f * unit(m_random));
        QVector3D const offset = 20.0f * QVector3D(unit(m_random), unit(m_random), unit(m_random));
        m_fade.center = position + offset;
        SetUp(camera);
        ASSERT_NEAR(ThinDistance(position), offset.length(), 1e-3) << i;
        ASSERT_NEAR(WideDistance(position), offset.length(), 0.05) << i;
    }
}

TEST_F(DrawFadingLinesTest, FarFromTheOriginDistancesAreAsExactAsPositions) {
    // Millions of units away floats are half a unit apart.
    Camera camera = RandomCamera(0.0f);
    camera.isParallel = false;
    camera.eye = QVector3D(5e6f, -3e6f, 1e6f);
    SetUp(camera);
    for (float const distance : {10.0f, 100.0f}) {
        QVector3D const position = camera.eye + distance * camera.forward;
        EXPECT_NEAR(ThinDistance(position), (position - camera.eye).length(), 1.5) << distance;
    }
}

TEST_F(DrawFadingLinesTest, ViewsThatTellNoPlacesDoNotFade) {
    QMatrix4x4 flat;
    flat.scale(1.0f, 0.0f, 1.0f);
    QMatrix4x4 unknown;
    unknown(0, 0) = kNaN;
    for (QMatrix4x4 const& matrix : {flat, unknown, QMatrix4x4() * 0.0f}) {
        m_view.SetProjectionMatrix(matrix);
        for (float const width : {1.0f, 3.0f}) {
            recorder::ClearCalls();
            DrawFading(width);
            recorder::Draw const draw = TheDraw();
            EXPECT_EQ("program#" + std::to_string(draw.program.idx),
                      width > 1.0f ? Program("vs_rectangle_sprite", "fs_rectangle_sprite_opengl_stipple")
                                   : Program("vs_line_opengl_stipple", "fs_line_opengl_stipple"));
            EXPECT_THAT(draw.uniforms, Not(Contains(testing::Key("u_fadePlace"))));
        }
    }
}

TEST_F(DrawFadingLinesTest, WithoutUniformsLeftLinesDoNotFadeAndThatIsSaidOnce) {
    std::vector<bgfx::UniformHandle> taken;
    do
        taken.push_back(
            bgfx::createUniform(("u_taken" + std::to_string(taken.size())).c_str(), bgfx::UniformType::Vec4));
    while (bgfx::isValid(taken.back()));
    taken.pop_back();
    {
        LogCapture const log;
        for (int i = 0; i < 3; ++i) {
            recorder::ClearCalls();
            DrawFading();
            EXPECT_EQ("program#" + std::to_string(TheDraw().program.idx),
                      Program("vs_line_opengl_stipple", "fs_line_opengl_stipple"));
        }
        std::size_t said = 0;
        for (LogLine const& line : log.Lines())
            said += line.text.ends_with("[lines.not-fading]");
        EXPECT_EQ(said, 1u);
    }
    for (bgfx::UniformHandle const uniform : taken)
        bgfx::destroy(uniform);
    bgfx::frame();
    recorder::ClearCalls();
    DrawFading();
    EXPECT_EQ("program#" + std::to_string(TheDraw().program.idx),
              Program("vs_line_fading", "fs_line_fading"));
}

TEST_F(DrawFadingLinesTest, BeforeThereAreProgramsNothingIsDrawn) {
    ExpectWarning("draw.no-program");
    BGFXRenderer renderer;
    renderer.DrawFadingLines(m_view, m_lines, m_fade);
    renderer.DrawFadingLines(m_view, m_lines, m_fade, 5.0f);
    EXPECT_EQ(recorder::CountCalls("submit"), 0u);
    EXPECT_EQ(recorder::CountCalls("createUniform"), 0u);
}
