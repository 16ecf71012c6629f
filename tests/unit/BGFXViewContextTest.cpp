// View contexts: defaults, projections, coordinates, and what a submission tells bgfx.
#include <zx3DQt/BGFXViewContext.h>

#include <Fixtures.h>
#include <LogCapture.h>

#include <QQuaternion>

#include <cmath>
#include <optional>
#include <type_traits>
#include <utility>

using namespace zarvex;
using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// Opens the protected coordinate transforms.
class OpenViewContext : public BGFXViewContext {
public:
    using BGFXViewContext::BGFXViewContext;
    using BGFXViewContext::TransformFromNDCToViewPort;
    using BGFXViewContext::TransformToNDC;
};

class BGFXViewContextTest : public ContextFixture {
protected:
    static void SetHomogeneousDepth(bool homogeneous) {
        Configure([homogeneous](recorder::Settings& settings) { settings.homogeneousDepth = homogeneous; });
    }

    static zx3D::FrameBuffer MakeFrameBuffer() {
        zx3D::FrameBuffer frameBuffer(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
        frameBuffer.RequestResize(800, 600);
        frameBuffer.SubmitOnDemand();
        return frameBuffer;
    }
};

QMatrix4x4 Numbered(float first) {
    QMatrix4x4 matrix;
    for (int i = 0; i < 16; ++i)
        matrix.data()[i] = first + float(i);
    return matrix;
}

std::vector<float> Floats(QMatrix4x4 const& matrix) {
    return {matrix.constData(), matrix.constData() + 16};
}

void ExpectNear(QPointF const& actual, QPointF const& expected) {
    EXPECT_NEAR(actual.x(), expected.x(), 1e-3);
    EXPECT_NEAR(actual.y(), expected.y(), 1e-3);
}

} // namespace

TEST_F(BGFXViewContextTest, Defaults) {
    BGFXViewContext const view;
    EXPECT_EQ(view.GetViewId(), 127);
    EXPECT_EQ(view.GetViewMode(), bgfx::ViewMode::Default);
    EXPECT_FALSE(view.GetViewClearOptions().has_value());
    EXPECT_TRUE(view.GetViewMatrix().isIdentity());
    EXPECT_TRUE(view.GetProjectionMatrix().isIdentity());
    EXPECT_TRUE(view.GetViewport().isNull());
    EXPECT_EQ(view.GetViewport(), QRect());
    EXPECT_EQ(view.ComputeViewportAspectRatio(), 1.0);
}

TEST_F(BGFXViewContextTest, ConstructionStoresItsArguments) {
    BGFXViewContext const view(5, BGFXViewClearOptions{BGFX_CLEAR_COLOR, 0x11223344, 0.5f, 7},
                               bgfx::ViewMode::Sequential);
    EXPECT_EQ(view.GetViewId(), 5);
    EXPECT_EQ(view.GetViewMode(), bgfx::ViewMode::Sequential);
    ASSERT_TRUE(view.GetViewClearOptions().has_value());
    EXPECT_EQ(view.GetViewClearOptions()->flags, BGFX_CLEAR_COLOR);
    EXPECT_EQ(view.GetViewClearOptions()->rgba, 0x11223344u);
    EXPECT_EQ(view.GetViewClearOptions()->depth, 0.5f);
    EXPECT_EQ(view.GetViewClearOptions()->stencil, 7);
}

TEST_F(BGFXViewContextTest, AnEmptyViewModeIsTheDefaultMode) {
    EXPECT_EQ(BGFXViewContext(1, std::nullopt, std::nullopt).GetViewMode(), bgfx::ViewMode::Default);
    EXPECT_EQ(BGFXViewContext(1, std::nullopt, bgfx::ViewMode::DepthAscending).GetViewMode(),
              bgfx::ViewMode::DepthAscending);
}

TEST_F(BGFXViewContextTest, IsAPlainValue) {
    static_assert(!std::is_polymorphic_v<BGFXViewContext>);
    static_assert(std::is_copy_constructible_v<BGFXViewContext>);
    static_assert(std::is_copy_assignable_v<BGFXViewContext>);
    SUCCEED();
}

TEST_F(BGFXViewContextTest, CopiesTakeOverEveryMember) {
    BGFXViewContext view(5, BGFXViewClearOptions{}, bgfx::ViewMode::Sequential);
    view.SetViewport(QRect(1, 2, 3, 4));
    view.SetViewMatrix(Numbered(1.0f));
    view.SetProjectionMatrix(Numbered(100.0f));
    BGFXViewContext const copy(view);
    BGFXViewContext assigned;
    assigned = view;
    for (BGFXViewContext const* const other : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(other->GetViewId(), 5);
        EXPECT_EQ(other->GetViewMode(), bgfx::ViewMode::Sequential);
        EXPECT_EQ(other->GetViewport(), QRect(1, 2, 3, 4));
        EXPECT_EQ(other->GetViewMatrix(), Numbered(1.0f));
        EXPECT_EQ(other->GetProjectionMatrix(), Numbered(100.0f));
        EXPECT_TRUE(other->GetViewClearOptions().has_value());
    }
    assigned = BGFXViewContext();
    EXPECT_FALSE(assigned.GetViewClearOptions().has_value());
}

TEST_F(BGFXViewContextTest, StandsForItsViewId) {
    BGFXViewContext const view(42);
    std::uint16_t const& id = view;
    EXPECT_EQ(id, 42);
    bgfx::touch(view);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("touch(42)"));
}

TEST_F(BGFXViewContextTest, AccessorsReadAndWrite) {
    BGFXViewContext view;
    view.SetViewId(9);
    view.SetViewMode(bgfx::ViewMode::DepthDescending);
    view.SetViewport(QRect(1, 2, 3, 4));
    view.SetViewClearOptions(BGFXViewClearOptions{BGFX_CLEAR_DEPTH, 1, 0.25f, 2});
    view.GetViewMatrix().translate(1.0f, 2.0f, 3.0f);
    view.GetProjectionMatrix().scale(2.0f);
    EXPECT_EQ(view.GetViewId(), 9);
    EXPECT_EQ(view.GetViewMode(), bgfx::ViewMode::DepthDescending);
    EXPECT_EQ(view.GetViewport(), QRect(1, 2, 3, 4));
    EXPECT_EQ(view.GetViewClearOptions()->depth, 0.25f);
    EXPECT_EQ(view.GetViewMatrix().column(3).toVector3D(), QVector3D(1, 2, 3));
    EXPECT_EQ(view.GetProjectionMatrix()(0, 0), 2.0f);
    view.GetViewClearOptions()->stencil = 3;
    EXPECT_EQ(view.GetViewClearOptions()->stencil, 3);
    view.SetViewClearOptions(std::nullopt);
    EXPECT_FALSE(view.GetViewClearOptions().has_value());
}

TEST_F(BGFXViewContextTest, ARotationDiscardsTheEarlierTranslation) {
    BGFXViewContext view;
    view.GetViewMatrix().translate(1.0f, 2.0f, 3.0f);
    QQuaternion const rotation = QQuaternion::fromAxisAndAngle(0.0f, 0.0f, 1.0f, 90.0f);
    view.SetViewMatrix(rotation);
    QMatrix4x4 expected;
    expected.rotate(rotation);
    EXPECT_EQ(view.GetViewMatrix(), expected);
    EXPECT_EQ(view.GetViewMatrix().column(3), QVector4D(0, 0, 0, 1));
}

TEST_F(BGFXViewContextTest, SetToIdentityResetsBothMatrices) {
    BGFXViewContext view;
    view.SetViewMatrix(Numbered(1.0f));
    view.SetProjectionMatrix(Numbered(2.0f));
    view.SetToIdentity();
    EXPECT_TRUE(view.GetViewMatrix().isIdentity());
    EXPECT_TRUE(view.GetProjectionMatrix().isIdentity());
}

TEST_F(BGFXViewContextTest, OrthoProjectionMapsTheRectangleUpright) {
    BGFXViewContext const view;
    QMatrix4x4 const projection = BGFXViewContext::ComputeOrthoProjection(QRectF(0, 0, 800, 600), 0, 100, 0);
    QVector4D const topLeft = projection * QVector4D(0, 0, 0, 1);
    QVector4D const bottomRight = projection * QVector4D(800, 600, 0, 1);
    EXPECT_NEAR(topLeft.x(), -1.0f, 1e-6f);
    EXPECT_NEAR(topLeft.y(), 1.0f, 1e-6f);
    EXPECT_NEAR(bottomRight.x(), 1.0f, 1e-6f);
    EXPECT_NEAR(bottomRight.y(), -1.0f, 1e-6f);
}

TEST_F(BGFXViewContextTest, OrthoProjectionMapsDepthAsTheRendererClips) {
    QRectF const rect(0, 0, 800, 600);
    SetHomogeneousDepth(false);
    QMatrix4x4 const zeroToOne = BGFXViewContext::ComputeOrthoProjection(rect, 0, 100, 0);
    EXPECT_NEAR((zeroToOne * QVector4D(0, 0, 0, 1)).z(), 0.0f, 1e-6f);
    EXPECT_NEAR((zeroToOne * QVector4D(0, 0, 100, 1)).z(), 1.0f, 1e-6f);
    SetHomogeneousDepth(true);
    QMatrix4x4 const minusOneToOne = BGFXViewContext::ComputeOrthoProjection(rect, 0, 100, 0);
    EXPECT_NEAR((minusOneToOne * QVector4D(0, 0, 0, 1)).z(), -1.0f, 1e-6f);
    EXPECT_NEAR((minusOneToOne * QVector4D(0, 0, 100, 1)).z(), 1.0f, 1e-6f);
}

TEST_F(BGFXViewContextTest, OrthoProjectionTakesNoNoticeOfTheOrigin) {
    QRectF const rect(1, 2, 30, 40);
    QMatrix4x4 const topLeft = BGFXViewContext::ComputeOrthoProjection(rect, 1, 9, 0);
    Configure([](recorder::Settings& settings) { settings.originBottomLeft = true; });
    EXPECT_EQ(BGFXViewContext::ComputeOrthoProjection(rect, 1, 9, 0), topLeft);
}

TEST_F(BGFXViewContextTest, OrthoProjectionHasItsSixteenElements) {
    constexpr float left = 10;
    constexpr float right = 110;
    constexpr float top = 20;
    constexpr float bottom = 70;
    constexpr float near = 2;
    constexpr float far = 12;
    constexpr float offset = 0.25f;
    for (bool const homogeneous : {false, true}) {
        SetHomogeneousDepth(homogeneous);
        QMatrix4x4 const projection =
            BGFXViewContext::ComputeOrthoProjection(QRectF(left, top, 100, 50), near, far, offset);
        float const a = homogeneous ? 1.0f : 0.0f;
        float expected[16] = {};
        expected[0] = 2 / (right - left);
        expected[5] = 2 / (top - bottom);
        expected[10] = (1 + a) / (far - near);
        expected[12] = (left + right) / (left - right) + offset;
        expected[13] = (top + bottom) / (bottom - top);
        expected[14] = (homogeneous ? near + far : near) / (near - far);
        expected[15] = 1;
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(projection.constData()[i], expected[i], 1e-6f) << "element " << i;
    }
}

TEST_F(BGFXViewContextTest, SetOrthoProjectionFromRectAndFromViewport) {
    BGFXViewContext view;
    view.SetOrthoProjectionFromRect(QRectF(1, 2, 30, 40), 1, 9, 0.5f);
    EXPECT_EQ(view.GetProjectionMatrix(),
              BGFXViewContext::ComputeOrthoProjection(QRectF(1, 2, 30, 40), 1, 9, 0.5f));
    view.SetViewport(QRect(10, 20, 300, 200));
    view.SetOrthoProjectionFromViewport(-1, 1, 0);
    EXPECT_EQ(view.GetProjectionMatrix(),
              BGFXViewContext::ComputeOrthoProjection(QRectF(10, 20, 300, 200), -1, 1, 0));
}

TEST_F(BGFXViewContextTest, TheViewPositionIsWhereTheCameraStands) {
    BGFXViewContext view;
    QMatrix4x4 viewMatrix;
    viewMatrix.lookAt(QVector3D(1, 2, 3), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    view.SetViewMatrix(viewMatrix);
    QVector3D const position = view.ComputeViewPosition();
    EXPECT_NEAR(position.x(), 1.0f, 1e-5f);
    EXPECT_NEAR(position.y(), 2.0f, 1e-5f);
    EXPECT_NEAR(position.z(), 3.0f, 1e-5f);
    EXPECT_EQ(BGFXViewContext::ComputeViewPosition(viewMatrix), position);
}

TEST_F(BGFXViewContextTest, TheViewPositionOfASingularMatrixIsTheOrigin) {
    QMatrix4x4 singular;
    singular.fill(0.0f);
    EXPECT_EQ(BGFXViewContext::ComputeViewPosition(singular), QVector3D(0, 0, 0));
}

TEST_F(BGFXViewContextTest, TheAspectRatioCountsSidesBelowOneAsOne) {
    BGFXViewContext view;
    view.SetViewport(QRect(5, 5, 800, 600));
    EXPECT_DOUBLE_EQ(view.ComputeViewportAspectRatio(), 800.0 / 600.0);
    view.SetViewport(QRect(0, 0, 0, 50));
    EXPECT_DOUBLE_EQ(view.ComputeViewportAspectRatio(), 1.0 / 50.0);
    view.SetViewport(QRect(0, 0, 7, -3));
    EXPECT_DOUBLE_EQ(view.ComputeViewportAspectRatio(), 7.0);
}

TEST_F(BGFXViewContextTest, TransformToNdcMultipliesProjectionByViewAndDividesByW) {
    OpenViewContext view;
    QMatrix4x4 projection;
    projection.perspective(60.0f, 1.5f, 0.1f, 50.0f);
    QMatrix4x4 viewMatrix;
    viewMatrix.translate(0.5f, -1.0f, -5.0f);
    view.SetProjectionMatrix(projection);
    view.SetViewMatrix(viewMatrix);
    QVector4D const clip = projection * viewMatrix * QVector4D(1, 2, 3, 1);
    QVector4D const ndc = view.TransformToNDC({1, 2, 3});
    EXPECT_FLOAT_EQ(ndc.x(), clip.x() / clip.w());
    EXPECT_FLOAT_EQ(ndc.y(), clip.y() / clip.w());
    EXPECT_FLOAT_EQ(ndc.z(), clip.z() / clip.w());
    EXPECT_FLOAT_EQ(ndc.w(), 1.0f);
}

TEST_F(BGFXViewContextTest, TransformToNdcHasNoGuardAgainstAZeroW) {
    OpenViewContext view;
    QMatrix4x4 projection;
    projection.setRow(3, QVector4D(0, 0, 1, 0));
    view.SetProjectionMatrix(projection);
    EXPECT_TRUE(std::isinf(view.TransformToNDC({1, 2, 0}).x()));
    EXPECT_TRUE(std::isnan(view.TransformToNDC({1, 2, 0}).w()));
}

TEST_F(BGFXViewContextTest, OnlyPositionsInFrontOfTheCameraAreProjected) {
    BGFXViewContext view;
    view.SetViewport(QRect(10, 20, 800, 600));
    view.GetProjectionMatrix().perspective(60.0f, 1.5f, 0.1f, 50.0f);
    view.GetViewMatrix().translate(0.5f, -1.0f, -5.0f);
    for (bx::Vec3 const& inFront : {bx::Vec3(1, 2, 3), bx::Vec3(-100, 7, 4.99f), bx::Vec3(0, 0, -1000)}) {
        EXPECT_EQ(view.ProjectToViewport(inFront), view.TransformToViewport(inFront));
        QVector3D const same(inFront.x, inFront.y, inFront.z);
        EXPECT_EQ(view.ProjectToViewport(same), view.TransformToViewport(same));
    }
    // The camera is at z = 5, where w is exactly 0.
    for (bx::Vec3 const& elsewhere :
         {bx::Vec3(1, 2, 5), bx::Vec3(-0.5f, 1, 5), bx::Vec3(1, 2, 5.01f), bx::Vec3(1, 2, 1e6f)}) {
        EXPECT_EQ(view.ProjectToViewport(elsewhere), std::nullopt);
        EXPECT_EQ(view.ProjectToViewport(QVector3D(elsewhere.x, elsewhere.y, elsewhere.z)), std::nullopt);
    }
}

TEST_F(BGFXViewContextTest, InAParallelProjectionAllPositionsAreProjected) {
    BGFXViewContext view;
    view.SetViewport(QRect(0, 0, 800, 600));
    view.SetOrthoProjectionFromViewport(0, 100, 0);
    for (float const z : {-1e6f, -1.0f, 0.0f, 50.0f, 101.0f, 1e6f}) {
        std::optional<QPointF> const place = view.ProjectToViewport(bx::Vec3(123, 456, z));
        ASSERT_TRUE(place);
        ExpectNear(*place, QPointF(123, 456));
    }
}

TEST_F(BGFXViewContextTest, NdcTopIsTheViewportsTop) {
    OpenViewContext view;
    view.SetViewport(QRect(100, 50, 800, 600));
    EXPECT_EQ(view.TransformFromNDCToViewPort(QPointF(-1, 1)), QPointF(100, 50));
    EXPECT_EQ(view.TransformFromNDCToViewPort(QPointF(1, -1)), QPointF(900, 650));
    EXPECT_EQ(view.TransformFromNDCToViewPort(QPointF(0, 0)), QPointF(500, 350));
}

TEST_F(BGFXViewContextTest, WorldPixelsOfAViewportAtTheOriginStayWhereTheyAre) {
    BGFXViewContext view;
    view.SetViewport(QRect(0, 0, 800, 600));
    view.SetOrthoProjectionFromViewport(0, 100, 0);
    ExpectNear(view.TransformToViewport(bx::Vec3(0, 0, 0)), QPointF(0, 0));
    ExpectNear(view.TransformToViewport(bx::Vec3(123, 456, 0)), QPointF(123, 456));
    ExpectNear(view.TransformToViewport(QVector3D(123, 456, 50)), QPointF(123, 456));
}

TEST_F(BGFXViewContextTest, WorldPixelsOfAMovedViewportStayWhereTheyAre) {
    BGFXViewContext view;
    view.SetViewport(QRect(100, 50, 800, 600));
    view.SetOrthoProjectionFromViewport(0, 100, 0);
    // The rectangle's left edge maps to NDC -1, and that to the viewport's left edge.
    ExpectNear(view.TransformToViewport(bx::Vec3(100, 50, 0)), QPointF(100, 50));
    ExpectNear(view.TransformToViewport(bx::Vec3(150, 80, 0)), QPointF(150, 80));
}

TEST_F(BGFXViewContextTest, SubmitTellsBgfxModeFrameBufferRectangleAndMatrices) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext view(7);
    view.SetViewMatrix(Numbered(1.0f));
    view.SetProjectionMatrix(Numbered(100.0f));
    recorder::ClearCalls();
    view.Submit(frameBuffer, QRect(10, 20, 300, 200));
    EXPECT_THAT(recorder::CallTexts(),
                ElementsAre("setViewMode(7, Default)", "setViewFrameBuffer(7, frameBuffer#0)",
                            "setViewRect(7, 10, 20, 300, 200)", "setViewTransform(7, view, projection)"));
    std::vector<float> expected = Floats(Numbered(1.0f));
    std::vector<float> const projection = Floats(Numbered(100.0f));
    expected.insert(expected.end(), projection.begin(), projection.end());
    EXPECT_EQ(recorder::Calls()[3].PayloadAs<float>(), expected);
}

TEST_F(BGFXViewContextTest, SubmitClearsLastAndOnlyWhenAsked) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext view(7, BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_STENCIL, 0x11223344, 0.5f, 9});
    recorder::ClearCalls();
    view.Submit(frameBuffer);
    EXPECT_EQ(recorder::CallTexts().back(), "setViewClear(7, 0x5, 0x11223344, 0.5, 9)");
    EXPECT_THAT(recorder::Calls(), SizeIs(5));
    view.SetViewClearOptions(std::nullopt);
    recorder::ClearCalls();
    view.Submit(frameBuffer);
    EXPECT_EQ(recorder::CountCalls("setViewClear"), 0u);
}

TEST_F(BGFXViewContextTest, SubmitTouchesNothing) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext(7, BGFXViewClearOptions{}).Submit(frameBuffer);
    EXPECT_EQ(recorder::CountCalls("touch"), 0u);
}

TEST_F(BGFXViewContextTest, SubmitUsesTheViewportWithoutARectangle) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext view;
    view.SetViewport(QRect(1, 2, 3, 4));
    view.Submit(frameBuffer);
    EXPECT_EQ(recorder::CallsNamed("setViewRect").at(0).Text(), "setViewRect(127, 1, 2, 3, 4)");
}

TEST_F(BGFXViewContextTest, SubmitRoundsARectangleOfFractions) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    QRectF const rect(1.5, 2.4, 10.2, 20.7);
    QRect const rounded = rect.toRect();
    BGFXViewContext().Submit(frameBuffer, rect);
    BGFXViewContext().Submit(frameBuffer, rounded);
    std::vector<recorder::Call> const calls = recorder::CallsNamed("setViewRect");
    ASSERT_THAT(calls, SizeIs(2));
    EXPECT_EQ(calls[0].Text(), calls[1].Text());
}

TEST_F(BGFXViewContextTest, SubmitTruncatesTo16Bits) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext().Submit(frameBuffer, QRect(-1, 65537, 70000, -2));
    EXPECT_EQ(recorder::CallsNamed("setViewRect").at(0).Text(), "setViewRect(127, 65535, 1, 4464, 65534)");
}

TEST_F(BGFXViewContextTest, SubmitPassesAnInvalidFrameBufferOn) {
    zx3D::FrameBuffer const none(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    BGFXViewContext().Submit(none);
    EXPECT_EQ(recorder::CallsNamed("setViewFrameBuffer").at(0).arguments, "127, frameBuffer#invalid");
}

TEST_F(BGFXViewContextTest, SubmitLogsOneLine) {
    zx3D::FrameBuffer const frameBuffer = MakeFrameBuffer();
    BGFXViewContext const view(7, std::nullopt, bgfx::ViewMode::Sequential);
    LogCapture const log;
    view.Submit(frameBuffer, QRect(10, 20, 300, 200));
    std::string const expected = Streamed(
        "Submitting view context [this: ", static_cast<void const*>(&view), "] ", "[viewId: ", quint16(7),
        "] ", "[viewMode: ", int(bgfx::ViewMode::Sequential), "] ", "[framebuffer: (w:", quint16(800),
        ",h:", quint16(600), "), handle: ", quint16(0), "] ", "[viewRect: (w:", 300, ",h:", 200, ")]");
    EXPECT_THAT(log.Lines(), ElementsAre(LogLine{QtDebugMsg, "zarvex.zx3dqt", expected, false}));
}

TEST_F(BGFXViewContextTest, ClearOptionsHoldTheArgumentsOfSetViewClearInOrder) {
    static_assert(std::is_same_v<decltype(BGFXViewClearOptions::flags), std::uint16_t>);
    static_assert(std::is_same_v<decltype(BGFXViewClearOptions::rgba), std::uint32_t>);
    static_assert(std::is_same_v<decltype(BGFXViewClearOptions::depth), float>);
    static_assert(std::is_same_v<decltype(BGFXViewClearOptions::stencil), std::uint8_t>);
    auto const [flags, rgba, depth, stencil] = BGFXViewClearOptions{1, 2, 3.0f, 4};
    EXPECT_EQ(flags, 1);
    EXPECT_EQ(rgba, 2u);
    EXPECT_EQ(depth, 3.0f);
    EXPECT_EQ(stencil, 4);
}
