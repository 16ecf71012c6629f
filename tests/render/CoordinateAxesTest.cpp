// Coordinate axes: lines, arrow heads and labels where their documentation puts them.
#include "RenderTest.h"
#include "Scene.h"
#include "SoftwareCone.h"
#include "TextPainting.h"

#include <zx3DQt/CoordinateAxes.h>

#include <zx3D/Text.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::CoordinateAxesStyle;

namespace {

constexpr QRectF kRect(-7.0, -5.0, 13.0, 9.0);

/// With margins of 1 and 0.5: by axis.
constexpr QVector2D kMargins(1.0f, 0.5f);
constexpr std::array kMinEnds{Vector3{-6.0, 0.0, 0.0}, Vector3{0.0, 4.5, 0.0}, Vector3{0.0, 0.0, -5.5}};
constexpr std::array kMaxEnds{Vector3{5.0, 0.0, 0.0}, Vector3{0.0, -3.5, 0.0}, Vector3{0.0, 0.0, 5.5}};

/// A unit is ten pixels, the origin is the centre of the pixel (112, 80).
SoftwareCamera const kPlanCamera{
    .place = {-0.05, 0.05, -9.0}, .target = {-0.05, 0.05, 0.0}, .halfHeight = 8.0};
/// Tilted, so that no axis runs along the border of columns.
SoftwareCamera const kObliqueCamera{
    .place = {5.03, 7.01, -10.02}, .target = {0.02, 0.01, 0.03}, .halfHeight = 7.5, .up = {0.2, 1.0, 0.0}};
SoftwareCamera const kPerspectiveCamera{
    .place = {8.03, 5.51, -9.02}, .target = {-0.42, 0.01, 0.03}, .angle = 60.0, .up = {0.3, 1.0, 0.0}};
/// Near arrow heads and labels.
SoftwareCamera const kNearCamera{.place = {5.0, 4.0, -7.0}, .target = {}, .halfHeight = 2.4};

constexpr std::array kDefaultColors{QColor(1, 255, 87), QColor(255, 86, 0), QColor(0, 175, 255)};

class CoordinateAxesTest : public RenderTest {
protected:
    CoordinateAxesTest() : RenderTest(kSceneSize) { m_style.margins = kMargins; }

    zx3DQt::BGFXViewContext View(SoftwareCamera const& camera, bgfx::ViewId id = 0) {
        zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport(), Qt::black, id);
        if (id != 0)
            view.SetViewClearOptions(std::nullopt);
        camera.SetUp(view);
        view.Submit(m_target.GetFrameBuffer());
        return view;
    }

    QImage DrawLines(SoftwareCamera const& camera) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = View(camera);
        bgfx::touch(view);
        DrawCoordinateAxesLines(m_renderer, view, kRect, m_style);
        return Present();
    }

    /// Expects the lines of the style, of which these axes are enabled.
    void CheckLines(SoftwareCamera const& camera, std::vector<int> const& axes = {0, 1, 2});

    CoordinateAxesStyle m_style;

private:
    SceneCall HalfAxis(int axis, Vector3 const& end, zx3D::LineStipplePattern const& stipple) const;
};

SceneCall CoordinateAxesTest::HalfAxis(int axis, Vector3 const& end,
                                       zx3D::LineStipplePattern const& stipple) const {
    return {.shapes = SceneLines{{ToVec3(end), {0.0f, 0.0f, 0.0f}, ToColor(m_style.colors[axis])}},
            .size = static_cast<std::uint16_t>(m_style.lineWidths[axis]),
            .stipple = stipple};
}

void CoordinateAxesTest::CheckLines(SoftwareCamera const& camera, std::vector<int> const& axes) {
    Scene scene;
    scene.setUpView = [&camera](zx3DQt::BGFXViewContext& view) { camera.SetUp(view); };
    for (int const axis : axes)
        scene.calls.push_back(HalfAxis(axis, kMinEnds[axis], m_style.minSideLineStipplePatterns[axis]));
    for (int const axis : axes)
        scene.calls.push_back(HalfAxis(axis, kMaxEnds[axis], m_style.maxSideLineStipplePatterns[axis]));
    ReferencePicture reference = DrawReference(scene);
    EXPECT_GE(reference.CountDrawn(), 20 * static_cast<int>(axes.size()));
    EXPECT_LE(reference.CountEdges(), 50); // GPUs have two rules for thin lines
    // At the origin the lines overlap.
    QPoint const origin = camera.ToPixels({}, kSceneSize).toPoint();
    int const reach = 2 + 2 * static_cast<int>(*std::ranges::max_element(m_style.lineWidths));
    QRect const overlap(origin - QPoint(reach, reach), origin + QPoint(reach, reach));
    for (int const axis : axes)
        reference.Draw(overlap, m_style.colors[axis], [](QPointF) { return Coverage::Edge; });
    QImage const image = DrawLines(camera);
    EXPECT_TRUE(Matches(image, reference.Nearest(image)));
}

std::vector<SoftwareCamera> const kCameras{kObliqueCamera, kPerspectiveCamera};

} // namespace

TEST_P(CoordinateAxesTest, InPlanViewTheLinesAreSolidToOneSideAndDashedToTheOther) {
    m_style.enabledAxes.erase(zx3DQt::Z);
    QImage const image = DrawLines(kPlanCamera);
    QImage expected = Canvas();
    Fill(expected, QRect(113, 80, 50, 1), kDefaultColors[0]);
    Fill(expected, QRect(112, 81, 1, 35), kDefaultColors[1]);
    for (int x = 52; x < 112; x += 8) // four pixels on, four off, from the end on
        Fill(expected, QRect(x, 80, 4, 1), kDefaultColors[0]);
    for (int y = 35; y < 80; y += 8)
        Fill(expected, QRect(112, y, 1, std::min(4, 80 - y)), kDefaultColors[1]);
    // Whether the pixels of the ends belong to a line is the GPU's choice.
    for (QPoint const end : {QPoint(52, 80), {162, 80}, {112, 35}, {112, 115}, {112, 80}})
        expected.setPixelColor(end, image.pixelColor(end));
    EXPECT_TRUE(Matches(image, expected, kExact));
}

TEST_P(CoordinateAxesTest, AllThreeAxesReachToTheirEnds) {
    for (SoftwareCamera const& camera : kCameras)
        CheckLines(camera);
}

TEST_P(CoordinateAxesTest, EachAxisHasItsColor) {
    m_style.colors = {QColor(250, 10, 20), QColor(30, 240, 40), QColor(90, 60, 255)};
    for (SoftwareCamera const& camera : kCameras)
        CheckLines(camera);
}

TEST_P(CoordinateAxesTest, EachHalfAxisHasItsStipple) {
    std::vector<zx3D::LineStipplePattern> const stipples{{0xFFFF, 1}, {0x0F0F, 1}, {0xAAAA, 1}, {0x00FF, 2},
                                                         {0x1C47, 1}, {0x8001, 3}, {0x0F0F, 0}, {0xF0F0, 5}};
    for (std::size_t first = 0; first < stipples.size(); ++first) {
        SCOPED_TRACE(first);
        for (std::size_t i = 0; i < 3; ++i) {
            m_style.minSideLineStipplePatterns[i] = stipples[(first + i) % stipples.size()];
            m_style.maxSideLineStipplePatterns[i] = stipples[(first + i + 3) % stipples.size()];
        }
        for (SoftwareCamera const& camera : kCameras)
            CheckLines(camera);
    }
}

TEST_P(CoordinateAxesTest, EachAxisHasItsWidth) {
    for (auto const& widths : {std::array{1.0f, 2.0f, 3.0f}, std::array{5.0f, 4.0f, 1.0f}}) {
        m_style.lineWidths = widths;
        for (SoftwareCamera const& camera : kCameras)
            CheckLines(camera);
    }
}

TEST_P(CoordinateAxesTest, OnlyEnabledAxesHaveLines) {
    for (std::vector<int> const& axes : {std::vector{0}, {1}, {2}, {0, 2}, {}}) {
        m_style.enabledAxes.clear();
        for (int const axis : axes)
            m_style.enabledAxes.insert(static_cast<zx3DQt::CoordinateAxisId>(axis));
        CheckLines(kObliqueCamera, axes);
    }
}

TEST_P(CoordinateAxesTest, ArrowHeadsPointOutwardsAtADistanceOfTwo) {
    OffscreenTarget target(QSize(480, 480)); // heads of some size
    QSize const size = target.GetViewport().size();
    m_renderer.StartFrame(target.GetFrameBuffer());
    m_renderer.SetModelTransform(QMatrix4x4());
    zx3DQt::BGFXViewContext view = PixelView(target.GetViewport());
    kNearCamera.SetUp(view);
    view.Submit(target.GetFrameBuffer());
    DrawCoordinateAxesArrowHeads(m_renderer, view, {});
    ReferencePicture reference(size, Qt::black);
    constexpr std::array units{Vector3{1.0, 0.0, 0.0}, Vector3{0.0, 1.0, 0.0}, Vector3{0.0, 0.0, 1.0}};
    for (int axis = 0; axis < 3; ++axis) {
        for (double const sign : {1.0, -1.0}) {
            Vector3 const direction = sign * units[axis];
            // Corners start at direction × the first other axis.
            Vector3 const corner = Cross(direction, axis == 0 ? units[1] : units[0]);
            ConeOutline const head({2.0 * direction, direction, 0.3, 0.1, 32, corner}, kNearCamera, size);
            reference.Draw(head.Area(), kDefaultColors[axis], [&](QPointF pixel) { return head.At(pixel); });
        }
    }
    QImage const image = ReadBack(target.GetFrameBuffer());
    EXPECT_TRUE(Matches(image, reference.Nearest(image), kExact));
    EXPECT_GT(reference.CountDrawn(), 6 * 200);
    EXPECT_LE(reference.CountEdges(), 60);
}

TEST_P(CoordinateAxesTest, LabelsAreBesideTheAxes) {
    constexpr int fontSize = 14;
    zx3DQt::CoordinateAxesLabelStyle labels;
    labels.font = zx3D::LoadDefaultFont(fontSize).value();
    StartFrame();
    zx3DQt::BGFXViewContext const view = View(kNearCamera);
    bgfx::touch(view);
    DrawCoordinateAxesLabels(m_renderer, view, labels);
    QImage expected = Canvas();
    auto const paint = [&](Vector3 const& place, std::string const& text, QColor const& color) {
        ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, fontSize, text);
        QPointF const corner = kNearCamera.ToPixels(place, kSceneSize) -
                               0.5 * QPointF(line.width, line.ascender - line.descender);
        // A place halfway between pixels could be rounded to either.
        for (double const coordinate : {corner.x(), corner.y()})
            ASSERT_GT(std::abs(coordinate - std::floor(coordinate) - 0.5), 0.01) << text;
        QPoint const rounded = corner.toPoint();
        Paint(expected, line, rounded.x(), rounded.y() + line.ascender, color);
    };
    paint({-1.25, 0.3, 0.3}, "-X", kDefaultColors[0]);
    paint({1.25, 0.3, 0.3}, "X", kDefaultColors[0]);
    paint({0.3, -1.25, 0.3}, "-Y", kDefaultColors[1]);
    paint({0.3, 1.25, 0.3}, "Y", kDefaultColors[1]);
    paint({0.3, 0.3, -1.25}, "-Z", kDefaultColors[2]);
    paint({0.3, 0.3, 1.25}, "Z", kDefaultColors[2]);
    EXPECT_TRUE(Matches(Present(), expected));
    zx3D::DestroyFont(labels.font);
}

TEST_P(CoordinateAxesTest, AWholeIsItsParts) {
    zx3DQt::CoordinateAxesLabelStyle labels;
    labels.font = zx3D::LoadDefaultFont(14).value();
    m_style.labels = labels;
    m_style.arrowHeads.emplace();
    QRectF const rect(-3.0, -3.0, 6.0, 6.0);
    m_style.margins = {};
    auto const draw = [&](auto const& drawParts) {
        StartFrame();
        zx3DQt::BGFXViewContext const sceneView = View(kNearCamera);
        drawParts(sceneView, View(kPlanCamera, 1)); // labels elsewhere
        return Present();
    };
    QImage const whole = draw([&](auto const& sceneView, auto const& labelView) {
        DrawCoordinateAxes(m_renderer, sceneView, labelView, rect, m_style);
    });
    QImage const parts = draw([&](auto const& sceneView, auto const& labelView) {
        DrawCoordinateAxesLines(m_renderer, sceneView, rect, m_style);
        DrawCoordinateAxesArrowHeads(m_renderer, sceneView, *m_style.arrowHeads);
        DrawCoordinateAxesLabels(m_renderer, labelView, *m_style.labels);
    });
    EXPECT_TRUE(Matches(whole, parts, kExact));
    EXPECT_GT(CountDifferences(whole, Canvas()), 300);
    zx3D::DestroyFont(labels.font);
}

ZX3D_INSTANTIATE_BACKENDS(CoordinateAxesTest);
