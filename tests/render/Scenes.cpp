// Coordinates are pixels, y down, unless a scene sets up another view. Where backends may choose which pixels
// to draw, at ties, the scenes avoid it: thin lines run through centres of pixels and large shapes along
// their borders, or neither comes near them.
#include "Scenes.h"

#include "RenderTest.h"

#include <cmath>
#include <string>
#include <utility>

namespace zarvex::testing {

namespace {

constexpr float kDepth = 0.5f;

/// The n-th of many colours that are easily told apart, of 8 bits a channel.
zx3D::Color ColorOf(int n) {
    return ToColor(QColor(60 + 97 * n % 196, 60 + 61 * n % 196, 60 + 151 * n % 196));
}

zx3D::Line LineOf(float x1, float y1, float x2, float y2, int color) {
    return {{x1, y1, kDepth}, {x2, y2, kDepth}, ColorOf(color)};
}

zx3D::Vertex::Pos3fColorRGBA PointOf(float x, float y, int color) {
    return {{x, y, kDepth}, ColorOf(color)};
}

/// Lines in all directions from around a centre outwards, every other one drawn inwards.
SceneLines Fan(float x, float y, float from, float to, int count, float firstAngle) {
    SceneLines lines;
    for (int i = 0; i < count; ++i) {
        float const angle = firstAngle + 6.2831853f * static_cast<float>(i) / static_cast<float>(count);
        zx3D::Line line = LineOf(x + from * std::cos(angle), y + from * std::sin(angle),
                                 x + to * std::cos(angle), y + to * std::sin(angle), i);
        if (i % 2 == 1)
            std::swap(line.start, line.end);
        lines.push_back(line);
    }
    return lines;
}

/// Lines into the depth, from in front of the viewer of PerspectiveView.
SceneLines LinesIntoDepth() {
    SceneLines lines;
    for (int i = 0; i < 9; ++i) {
        float const x = -1.3f + 0.31f * static_cast<float>(i);
        lines.push_back({{x, -0.93f, 2.1f}, {7.7f * x + 0.37f, 4.9f, 21.0f}, ColorOf(i)});
    }
    return lines;
}

ScenePoints PointsIntoDepth() {
    ScenePoints points;
    for (int i = 8; i >= 0; --i) { // the farthest first
        float const distance = static_cast<float>(i);
        points.push_back(
            {{-1.13f + 0.35f * distance, -0.63f + 0.17f * distance, 2.2f + distance}, ColorOf(i)});
    }
    return points;
}

QMatrix4x4 Moved(float x, float y) {
    QMatrix4x4 matrix;
    matrix.translate(x, y);
    return matrix;
}

QMatrix4x4 Turned(float x, float y, float degrees, float scale) {
    QMatrix4x4 matrix = Moved(x, y);
    matrix.rotate(degrees, 0.0f, 0.0f, 1.0f);
    matrix.scale(scale, scale, 1.0f);
    return matrix;
}

void PerspectiveView(zx3DQt::BGFXViewContext& view) {
    QMatrix4x4 projection;
    bx::mtxProj(projection.data(), 60.0f, static_cast<float>(view.ComputeViewportAspectRatio()), 0.1f, 100.0f,
                bgfx::getCaps()->homogeneousDepth);
    view.SetProjectionMatrix(projection);
}

/// Perspective from a place to another one, z up. Lines that are farther away than the first are behind the
/// second.
std::function<void(zx3DQt::BGFXViewContext&)> CameraAt(bx::Vec3 place, bx::Vec3 target, float near = 0.1f) {
    return [=](zx3DQt::BGFXViewContext& view) {
        bx::mtxLookAt(view.GetViewMatrix().data(), place, target, {0.0f, 0.0f, 1.0f});
        bx::mtxProj(view.GetProjectionMatrix().data(), 60.0f,
                    static_cast<float>(view.ComputeViewportAspectRatio()), near, 1000.0f,
                    bgfx::getCaps()->homogeneousDepth);
    };
}

/// Both directions of rows and columns, of many lengths, the outermost ones included.
SceneLines AxisParallelLines() {
    auto const right = static_cast<float>(kSceneSize.width()) - 0.5f;
    auto const bottom = static_cast<float>(kSceneSize.height()) - 0.5f;
    SceneLines lines = {LineOf(0.5f, 0.5f, right, 0.5f, 0), LineOf(right, 0.5f, right, bottom, 1),
                        LineOf(right, bottom, 0.5f, bottom, 2), LineOf(0.5f, bottom, 0.5f, 0.5f, 3)};
    for (int i = 1; i <= 12; ++i) {
        auto const at = static_cast<float>(4 * i) + 0.5f;
        auto const length = static_cast<float>(i * i - 1);
        lines.push_back(LineOf(10.5f, at, 11.5f + length, at, 2 * i));
        lines.push_back(LineOf(right - 5.0f, at, right - 6.0f - 0.3f * length, at, 2 * i + 1));
        lines.push_back(LineOf(10.0f + at, 60.5f, 10.0f + at, 61.5f + std::floor(length / 2.0f), i));
        lines.push_back(LineOf(100.0f + at, 150.5f, 100.0f + at, 149.5f - std::floor(length / 2.0f), i));
    }
    return lines;
}

SceneLines DiagonalLines() {
    return {LineOf(10.5f, 10.5f, 70.5f, 70.5f, 0),   LineOf(150.5f, 70.5f, 90.5f, 10.5f, 1),
            LineOf(10.5f, 150.5f, 70.5f, 90.5f, 2),  LineOf(150.5f, 90.5f, 90.5f, 150.5f, 3),
            LineOf(160.5f, 10.5f, 208.5f, 26.5f, 4), LineOf(160.5f, 20.5f, 176.5f, 68.5f, 5)};
}

/// A row for each pattern and factor: one line forwards, one backwards.
std::vector<SceneCall> StippledCalls(std::uint16_t width) {
    constexpr std::uint16_t patterns[] = {0xF0F0, 0xAAAA, 0x0F35, 0x8001, 0xFFFF, 0x0000};
    constexpr std::uint8_t factors[] = {1, 3, 255, 0};
    std::vector<SceneCall> calls;
    float const rowOffset = width % 2 == 1 ? 0.5f : 0.0f;
    float const columnOffset = width == 1 ? 0.5f : 0.0f;
    auto row = static_cast<float>(width);
    for (std::uint16_t const pattern : patterns) {
        for (std::uint8_t const factor : factors) {
            int const color = static_cast<int>(calls.size());
            float const y = row + rowOffset;
            float const left = 5.0f + columnOffset;
            SceneLines const lines = {LineOf(left, y, left + 110.0f, y, color),
                                      LineOf(left + 210.0f, y, left + 120.0f, y, color)};
            calls.push_back(
                {.shapes = lines, .size = width, .stipple = zx3D::LineStipplePattern{pattern, factor}});
            row += static_cast<float>(width + 2);
        }
    }
    return calls;
}

/// Lines that begin beyond the borders, where their pattern begins too.
std::vector<SceneCall> StippledCallsFromOutside(std::uint16_t width) {
    SceneLines const lines = {LineOf(-100.5f, 20.5f, 210.5f, 20.5f, 0),
                              LineOf(330.5f, 40.5f, 10.5f, 40.5f, 1), LineOf(20.5f, 400.5f, 20.5f, 50.5f, 2),
                              LineOf(-230.3f, -190.2f, 200.6f, 130.7f, 3)};
    return {{.shapes = lines, .size = width, .stipple = zx3D::LineStipplePattern{0x0F35, 255}},
            {.shapes = lines,
             .size = width,
             .stipple = zx3D::LineStipplePattern{0x5555, 7},
             .model = Moved(9.0f, 11.0f)}};
}

std::vector<SceneCall> StippledFans(std::uint16_t width) {
    float const from = 4.0f * width;
    return {{.shapes = Fan(60.2f, 80.3f, from, 57.7f, 14, 0.17f),
             .size = width,
             .stipple = zx3D::LineStipplePattern{0x0F35, 1}},
            {.shapes = Fan(165.4f, 79.6f, from, 56.1f, 14, 0.29f),
             .size = width,
             .stipple = zx3D::LineStipplePattern{0xF0F0, 3}}};
}

/// Lines of all widths that cover whole pixels.
std::vector<SceneCall> AxisParallelWideCalls() {
    std::vector<SceneCall> calls;
    float row = 2.0f;
    float column = 100.0f;
    for (std::uint16_t width = 1; width <= 16; ++width) {
        float const half = width == 1 ? 0.5f : 0.0f; // ends of thin lines are centres of pixels
        float const middle = 0.5f * width;
        calls.push_back(
            {.shapes =
                 SceneLines{LineOf(5.0f + half, row + middle, 90.0f + half, row + middle, width),
                            LineOf(column + middle, 150.0f + half, column + middle, 4.0f + half, width + 1)},
             .size = width});
        row += static_cast<float>(width) + 1.0f;
        column += static_cast<float>(width) * 0.5f + 1.0f + (width % 2 == 1 ? 0.5f : 0.0f);
    }
    return calls;
}

/// Points of all sizes that cover whole pixels.
std::vector<SceneCall> ExactPointCalls() {
    std::vector<SceneCall> calls;
    float x = 3.0f;
    float y = 3.0f;
    for (std::uint16_t size = 1; size <= 32; ++size) {
        auto const side = static_cast<float>(size);
        if (x + side > 221.0f) {
            x = 3.0f;
            y += side;
        }
        calls.push_back(
            {.shapes = ScenePoints{PointOf(x + side / 2.0f, y + side / 2.0f, size)}, .size = size});
        x += side + 1.0f;
    }
    return calls;
}

/// Points of all sizes anywhere, also over each other and across the border.
std::vector<SceneCall> ScatteredPointCalls() {
    std::vector<SceneCall> calls;
    for (std::uint16_t size = 1; size <= 32; ++size) {
        ScenePoints points;
        for (int i = 0; i < 5; ++i) {
            int const n = size * 5 + i;
            points.push_back(
                PointOf(static_cast<float>(n * 37 % 240) - 8.0f + 0.07f * static_cast<float>(n % 13),
                        static_cast<float>(n * 53 % 180) - 10.0f + 0.06f * static_cast<float>(n % 15), n));
        }
        calls.push_back({.shapes = points, .size = size});
    }
    return calls;
}

/// A few lines and points of every kind, in an area of 90 x 70 pixels.
std::vector<SceneCall> MixedCalls() {
    SceneLines const lines = {LineOf(4.5f, 3.5f, 84.5f, 3.5f, 0), LineOf(10.3f, 8.2f, 80.6f, 30.7f, 1),
                              LineOf(80.2f, 35.4f, 60.9f, 65.1f, 2)};
    SceneLines const wideLines = {LineOf(8.2f, 20.3f, 70.8f, 62.6f, 3), LineOf(30.3f, 65.2f, 5.1f, 40.4f, 4)};
    ScenePoints const points = {PointOf(45.3f, 12.2f, 5), PointOf(20.7f, 50.6f, 6), PointOf(75.2f, 55.7f, 7)};
    return {{.shapes = lines},
            {.shapes = lines, .stipple = zx3D::LineStipplePattern{0x0F35, 3}, .model = Moved(0.0f, 4.0f)},
            {.shapes = wideLines, .size = 5},
            {.shapes = wideLines,
             .size = 3,
             .stipple = zx3D::LineStipplePattern{0xF0F0, 1},
             .model = Moved(6.0f, -8.0f)},
            {.shapes = points},
            {.shapes = points, .size = 7, .model = Moved(3.0f, 6.0f)}};
}

// What is in the depth of such a camera has one colour, since the references know nothing of depth.

/// A grid on the ground, of `count` lines each way.
SceneLines GridLines(float half, int count) {
    SceneLines lines;
    for (int i = 0; i < count; ++i) {
        float const at =
            half * (2.0f * static_cast<float>(i) / static_cast<float>(count - 1) - 1.0f) + 0.013f;
        lines.push_back({{at, -half, 0.0f}, {at, half, 0.0f}, ColorOf(0)});
        lines.push_back({{half, at, 0.0f}, {-half, at, 0.0f}, ColorOf(0)});
    }
    return lines;
}

/// The three axes, each in two halves that meet in the origin, the first ones drawn inwards.
SceneLines AxisLines(float length) {
    SceneLines lines;
    for (float const l : {-length, length}) {
        lines.push_back({{l, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f}, ColorOf(0)});
        lines.push_back({{0.0f, l, 0.0f}, {0.0f, 0.0f, 0.0f}, ColorOf(0)});
        lines.push_back({{0.0f, 0.0f, l}, {0.0f, 0.0f, 0.0f}, ColorOf(0)});
    }
    return lines;
}

/// Paths that wind around the z axis, segment by segment.
SceneLines Trajectories() {
    SceneLines lines;
    for (int path = 0; path < 5; ++path) {
        float const radius = 1.1f + 0.9f * static_cast<float>(path);
        auto const at = [&](int i) {
            float const angle = 0.37f * static_cast<float>(i + path);
            return bx::Vec3(radius * std::cos(angle), radius * std::sin(angle),
                            -2.0f + 0.09f * static_cast<float>(i));
        };
        for (int i = 0; i < 50; ++i)
            lines.push_back({at(i), at(i + 1), ColorOf(0)});
    }
    return lines;
}

std::vector<SceneCall> Joined(std::initializer_list<std::vector<SceneCall>> lists) {
    std::vector<SceneCall> calls;
    for (std::vector<SceneCall> const& list : lists)
        calls.insert(calls.end(), list.begin(), list.end());
    return calls;
}

enum class ModelBy { Current, Id };

std::vector<SceneCall> WithModel(std::vector<SceneCall> calls, QMatrix4x4 const& model, ModelBy way) {
    for (SceneCall& call : calls) {
        call.model = model * call.model;
        call.isModelGivenById = way == ModelBy::Id;
    }
    return calls;
}

/// Large shapes have edges where rounding decides, thin lines also where GPUs' rules differ: for slopes
/// around 1 that is every fourth pixel.
std::vector<Scene> WithMaxEdges(double maxEdges, std::vector<Scene> scenes) {
    for (Scene& scene : scenes)
        scene.maxEdges = maxEdges;
    return scenes;
}

constexpr QRect kPartOfTheTarget(37, 21, 101, 83);

} // namespace

std::vector<Scene> ThinLineScenes() {
    SceneLines const acrossBorders = {
        LineOf(-60.3f, 20.2f, 130.6f, 190.7f, 0), LineOf(30.2f, -1e4f, 70.8f, 1e4f, 1),
        LineOf(300.4f, 140.3f, -50.3f, 30.8f, 2), LineOf(-20.0f, 5.2f, -5.0f, 90.0f, 3)};
    SceneLines const behindTheViewer = {{{0.3f, -0.5f, 3.0f}, {0.8f, 0.2f, -2.0f}, ColorOf(0)},
                                        {{-0.2f, 0.1f, -1.0f}, {-0.9f, 0.4f, 2.0f}, ColorOf(1)},
                                        {{0.2f, 0.1f, -1.0f}, {0.9f, 0.4f, -2.0f}, ColorOf(2)},
                                        {{0.4f, -0.2f, 0.0f}, {0.6f, 0.7f, 2.0f}, ColorOf(3)}};
    std::vector<Scene> const scenes = {
        {.name = "thin lines, rows and columns", .calls = {{.shapes = AxisParallelLines()}}},
        {.name = "thin lines, diagonals", .calls = {{.shapes = DiagonalLines()}}},
        {.name = "thin lines, all slopes", .calls = {{.shapes = Fan(110.2f, 79.7f, 9.3f, 75.4f, 40, 0.11f)}}},
        {.name = "thin lines, across borders", .calls = {{.shapes = acrossBorders}}},
        {.name = "thin lines, perspective",
         .calls = {{.shapes = LinesIntoDepth()}},
         .setUpView = PerspectiveView},
        {.name = "thin lines, behind the viewer",
         .calls = {{.shapes = behindTheViewer}},
         .setUpView = PerspectiveView},
        {.name = "thin lines, stippled rows", .calls = StippledCalls(1)},
        {.name = "thin lines, stippled, all slopes", .calls = StippledFans(1)},
        {.name = "thin lines, stippled, from outside", .calls = StippledCallsFromOutside(1)},
        {.name = "thin lines, stippled, perspective",
         .calls = {{.shapes = LinesIntoDepth(), .stipple = zx3D::LineStipplePattern{0x0F35, 3}}},
         .setUpView = PerspectiveView},
    };
    return WithMaxEdges(0.27, scenes);
}

std::vector<Scene> WideLineScenes() {
    std::vector<SceneCall> fans;
    for (std::uint16_t width = 1; width <= 16; ++width) {
        float const at = static_cast<float>(width) - 8.5f;
        fans.push_back({.shapes = Fan(112.3f + 11.1f * at, 79.8f + 3.0f * at, 2.0f * width,
                                      3.0f * width + 30.0f, 5, 0.37f * width),
                        .size = width});
    }
    return {
        {.name = "wide lines, rows and columns of all widths", .calls = AxisParallelWideCalls()},
        {.name = "wide lines, all slopes and widths", .calls = fans},
        {.name = "wide lines, perspective",
         .calls = {{.shapes = LinesIntoDepth(), .size = 8}},
         .setUpView = PerspectiveView},
        {.name = "wide lines, stippled rows", .calls = StippledCalls(4)},
        {.name = "wide lines, stippled rows of odd width", .calls = StippledCalls(3)},
        {.name = "wide lines, stippled, all slopes", .calls = StippledFans(5)},
        {.name = "wide lines, stippled, from outside", .calls = StippledCallsFromOutside(3)},
        {.name = "wide lines, stippled, perspective",
         .calls = {{.shapes = LinesIntoDepth(), .size = 7, .stipple = zx3D::LineStipplePattern{0xF0F0, 3}}},
         .setUpView = PerspectiveView},
    };
}

std::vector<Scene> PointScenes() {
    return {
        {.name = "points, all sizes on whole pixels", .calls = ExactPointCalls()},
        {.name = "points, all sizes anywhere", .calls = ScatteredPointCalls()},
        {.name = "points, perspective",
         .calls = {{.shapes = PointsIntoDepth(), .size = 13}},
         .setUpView = PerspectiveView},
    };
}

std::vector<Scene> TransformScenes() {
    auto const turnView = [](zx3DQt::BGFXViewContext& view) {
        view.SetViewMatrix(Turned(51.3f, 9.2f, 21.0f, 1.3f));
    };
    auto const offsetProjection = [](zx3DQt::BGFXViewContext& view) {
        view.SetOrthoProjectionFromRect(QRectF(QPointF(), QSizeF(kSceneSize)), 0.0f, 1.0f, 0.25f);
    };
    QMatrix4x4 const first = Turned(10.4f, 70.3f, -31.0f, 1.1f);
    QMatrix4x4 const second = Turned(190.2f, 40.9f, 77.0f, 0.9f);
    std::vector<Scene> const scenes = {
        {.name = "current model",
         .calls = Joined({WithModel(MixedCalls(), first, ModelBy::Current),
                          WithModel(MixedCalls(), second, ModelBy::Current)})},
        {.name = "model by id",
         .calls = Joined(
             {WithModel(MixedCalls(), first, ModelBy::Id), WithModel(MixedCalls(), second, ModelBy::Id)})},
        {.name = "view matrix",
         .calls = WithModel(MixedCalls(), Turned(8.3f, 6.1f, 9.0f, 0.8f), ModelBy::Current),
         .setUpView = turnView},
        {.name = "offset projection", .calls = MixedCalls(), .setUpView = offsetProjection},
        {.name = "part of the target", .calls = MixedCalls(), .viewport = kPartOfTheTarget},
        {.name = "cut off by the viewport",
         .calls = WithModel(MixedCalls(), Turned(-20.2f, -12.3f, 5.0f, 1.7f), ModelBy::Id),
         .viewport = kPartOfTheTarget},
        {.name = "lines, perspective, in a part of the target",
         .calls = {{.shapes = LinesIntoDepth(), .size = 3}},
         .viewport = kPartOfTheTarget,
         .setUpView = PerspectiveView},
        {.name = "stippled lines, perspective, in a part of the target",
         .calls = {{.shapes = LinesIntoDepth(),
                    .stipple = zx3D::LineStipplePattern{0x0F35, 1},
                    .model = Moved(-0.2f, 0.1f)}},
         .viewport = kPartOfTheTarget,
         .setUpView = PerspectiveView},
        {.name = "points, perspective, in a part of the target",
         .calls =
             {{.shapes = PointsIntoDepth(), .size = 6, .model = Moved(0.3f, 0.1f), .isModelGivenById = true}},
         .viewport = kPartOfTheTarget,
         .setUpView = PerspectiveView},
    };
    return WithMaxEdges(0.15, scenes);
}

std::vector<Scene> InsideScenes() {
    auto const above = CameraAt({0.4f, -0.3f, 1.3f}, {3.1f, 6.7f, 0.2f});
    auto const down = CameraAt({0.4f, -0.3f, 1.3f}, {0.9f, 0.8f, 0.1f});
    auto const inside = CameraAt({0.31f, -0.23f, 0.17f}, {-0.9f, 0.7f, -0.3f}, 0.01f);
    zx3D::LineStipplePattern const dashed{0xF0F0, 1};
    std::vector<Scene> scenes;
    for (std::uint16_t const width : {1, 2, 3}) {
        std::string const name = std::to_string(width) + " px ";
        for (auto const& [where, camera] : {std::pair("above", above), std::pair("looking down", down)}) {
            scenes.push_back({.name = name + "grid, camera " + where,
                              .calls = {{.shapes = GridLines(20.0f, 21), .size = width}},
                              .setUpView = camera});
            scenes.push_back({.name = name + "dashed grid, camera " + where,
                              .calls = {{.shapes = GridLines(20.0f, 21), .size = width, .stipple = dashed}},
                              .setUpView = camera});
        }
        scenes.push_back({.name = name + "axes, camera beside the origin",
                          .calls = {{.shapes = AxisLines(50.0f), .size = width},
                                    {.shapes = AxisLines(3.0f), .size = width, .stipple = dashed}},
                          .setUpView = inside});
        scenes.push_back({.name = name + "trajectories around the camera",
                          .calls = {{.shapes = Trajectories(), .size = width}},
                          .setUpView = inside});
    }
    return WithMaxEdges(0.3, scenes);
}

std::vector<Scene> AllScenes() {
    std::vector<Scene> all;
    for (auto const& scenes :
         {ThinLineScenes(), WideLineScenes(), PointScenes(), TransformScenes(), InsideScenes()})
        all.insert(all.end(), scenes.begin(), scenes.end());
    return all;
}

} // namespace zarvex::testing
