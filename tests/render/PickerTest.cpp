// What is picked, against a search for each pixel in double precision.
#include "RenderTest.h"

#include <harness/Trouble.h>
#include <harness/WaitUntil.h>

#include <zx3DQt/FrameNotifier.h>
#include <zx3DQt/OrbitCamera.h>
#include <zx3DQt/Picker.h>

#include <zx3D/Context.h>

#include <QElapsedTimer>
#include <QMouseEvent>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using namespace zarvex::zx3DQt;

namespace {

constexpr bgfx::ViewId kPickView = 40;
constexpr QSize kSize(160, 120);

/// A pixel's middle that is nearer to an edge, pixels, may be on either side of it.
constexpr double kRounding = 0.05;

/// Depths that are nearer to each other, of 0 to 1, may be in either order.
constexpr double kDepthRounding = 2e-6;

/// Far away from the world's origin.
constexpr WorldPosition kOrigin{500'000.25, 5'400'000.5, -120.0};

/// The place of a position in the picture.
struct Placed {
    double x, y; ///< pixels
    double depth;
    double w;
};

/// From positions relative to kOrigin to the picture, in double precision.
class Projection64 {
public:
    explicit Projection64(BGFXViewContext const& view) : m_viewport(view.GetViewport()) {
        WorldVector const shift = kOrigin - view.GetOrigin();
        std::array<std::array<double, 4>, 4> moved{};
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column)
                moved[row][column] = view.GetViewMatrix()(row, column);
            moved[row][3] += moved[row][0] * shift.x + moved[row][1] * shift.y + moved[row][2] * shift.z;
        }
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column) {
                for (int i = 0; i < 4; ++i)
                    m_matrix[row][column] += double(view.GetProjectionMatrix()(row, i)) * moved[i][column];
            }
        }
    }

    std::array<double, 4> ToClip(bx::Vec3 const& p) const {
        std::array<double, 4> clip{};
        for (int row = 0; row < 4; ++row)
            clip[row] =
                m_matrix[row][0] * p.x + m_matrix[row][1] * p.y + m_matrix[row][2] * p.z + m_matrix[row][3];
        return clip;
    }
    Placed Place(bx::Vec3 const& p) const {
        auto const [x, y, z, w] = ToClip(p);
        double const ndc = z / w;
        return {0.5 * m_viewport.width() * (1.0 + x / w), 0.5 * m_viewport.height() * (1.0 - y / w),
                bgfx::getCaps()->homogeneousDepth ? 0.5 * (ndc + 1.0) : ndc, w};
    }
    /// Twice a pixel's offset from the middle, over the viewport's size.
    QPointF ToUnits(QPointF const& pixel) const {
        return {2.0 * pixel.x() / m_viewport.width() - 1.0, 1.0 - 2.0 * pixel.y() / m_viewport.height()};
    }

private:
    QRectF m_viewport;
    double m_matrix[4][4]{};
};

/// What an element has to do with a pixel's middle.
struct Covering {
    double outside; ///< how far the middle is outside, pixels; negative inside
    double depth;
    bx::Vec3 place; ///< relative to kOrigin
};

Covering CoverOf(Projection64 const& projection, ColoredPoint const& point, PointStyle const& style,
                 QPointF const& pixel) {
    Placed const at = projection.Place(point.position);
    double const dx = std::abs(pixel.x() - at.x);
    double const dy = std::abs(pixel.y() - at.y);
    double const distance = style.shape == PointShape::Square ? std::max(dx, dy) : std::hypot(dx, dy);
    return {distance - 0.5 * style.size, at.depth, point.position};
}

bx::Vec3 MixOf(bx::Vec3 const& a, bx::Vec3 const& b, double part) {
    return bx::lerp(a, b, static_cast<float>(part));
}

Covering CoverOf(Projection64 const& projection, LineSegment const& segment, LineStyle const& style,
                 QPointF const& pixel) {
    Placed const a = projection.Place(segment.start.position);
    Placed const b = projection.Place(segment.end.position);
    double const length = std::hypot(b.x - a.x, b.y - a.y);
    QPointF const direction((b.x - a.x) / length, (b.y - a.y) / length);
    QPointF const away = pixel - QPointF(a.x, a.y);
    double const along = QPointF::dotProduct(away, direction);
    double const across = std::abs(direction.x() * away.y() - direction.y() * away.x());
    double const onScreen = std::clamp(along / length, 0.0, 1.0);
    double const part = onScreen * a.w / (b.w + onScreen * (a.w - b.w));
    return {std::max({across - 0.5 * style.width, -along, along - length}),
            a.depth + onScreen * (b.depth - a.depth),
            MixOf(segment.start.position, segment.end.position, part)};
}

using Triangle = std::array<bx::Vec3, 3>;

Covering CoverOf(Projection64 const& projection, Triangle const& triangle, QPointF const& pixel) {
    std::array<Placed, 3> const at{projection.Place(triangle[0]), projection.Place(triangle[1]),
                                   projection.Place(triangle[2])};
    double const area = (at[1].x - at[0].x) * (at[2].y - at[0].y) - (at[1].y - at[0].y) * (at[2].x - at[0].x);
    double outside = -std::numeric_limits<double>::infinity();
    std::array<double, 3> share{}; // on the screen
    for (std::size_t i = 0; i < 3; ++i) {
        Placed const& a = at[(i + 1) % 3];
        Placed const& b = at[(i + 2) % 3];
        double const side = (b.x - a.x) * (pixel.y() - a.y) - (b.y - a.y) * (pixel.x() - a.x);
        share[i] = side / area;
        outside = std::max(outside, -side * (area > 0.0 ? 1.0 : -1.0) / std::hypot(b.x - a.x, b.y - a.y));
    }
    double depth = 0.0;
    double inverseW = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        depth += share[i] * at[i].depth;
        inverseW += share[i] / at[i].w;
    }
    std::array<double, 3> place{};
    for (std::size_t i = 0; i < 3; ++i) {
        double const part = share[i] / at[i].w / inverseW;
        place[0] += part * triangle[i].x;
        place[1] += part * triangle[i].y;
        place[2] += part * triangle[i].z;
    }
    return {
        outside, depth,
        bx::Vec3(static_cast<float>(place[0]), static_cast<float>(place[1]), static_cast<float>(place[2]))};
}

/// Points, lines and triangles, and how they are seen.
struct RandomScene {
    explicit RandomScene(unsigned seed) : random(seed) {
        for (int i = 0; i < 30; ++i)
            points.push_back({Position(), 0xFFFFFFFF});
        for (int i = 0; i < 20; ++i)
            segments.push_back({{Position(), 0xFFFFFFFF}, {Position(), 0xFFFFFFFF}});
        for (int i = 0; i < 12; ++i) {
            bx::Vec3 const corner = Position();
            triangles.push_back({corner, bx::add(corner, bx::mul(Position(), 0.4f)),
                                 bx::add(corner, bx::mul(Position(), 0.4f))});
        }
        pointStyle = {.shape = Number(0, 1) < 0.5 ? PointShape::Square : PointShape::Disc,
                      .size = static_cast<float>(Number(1.5, 12.0))};
        lineStyle = {.width = static_cast<float>(Number(1.0, 6.0))};
        camera.SetProjection(Number(0, 1) < 0.5 ? Projection::Perspective : Projection::Parallel);
        camera.SetAzimuth(Number(-180.0, 180.0));
        camera.SetElevation(Number(-90.0, 90.0));
        camera.Fit(WorldBox{kOrigin + WorldVector{-10, -10, -10}, kOrigin + WorldVector{10, 10, 10}},
                   double(kSize.width()) / kSize.height(), 0.0);
    }

    double Number(double least, double greatest) {
        return std::uniform_real_distribution(least, greatest)(random);
    }
    bx::Vec3 Position() {
        return {static_cast<float>(Number(-10, 10)), static_cast<float>(Number(-10, 10)),
                static_cast<float>(Number(-10, 10))};
    }

    std::mt19937 random;
    std::vector<ColoredPoint> points;
    std::vector<LineSegment> segments;
    std::vector<Triangle> triangles;
    PointStyle pointStyle;
    LineStyle lineStyle;
    OrbitCamera camera;
};

struct Expected {
    bool isCertain = true;
    std::optional<PickElement> what{};
    bx::Vec3 place{0.0f, 0.0f, 0.0f};
    double distance = 0.0;
};

class PickerTest : public RenderTest {
protected:
    PickerTest() : RenderTest(kSize) {}

    /// Puts a scene into the batches, and on the GPU.
    void Load(RandomScene const& scene) {
        m_points.Set(scene.points);
        m_lines.Set(scene.segments);
        std::vector<bx::Vec3> corners;
        std::vector<std::uint32_t> indices;
        for (Triangle const& triangle : scene.triangles) {
            for (bx::Vec3 const& corner : triangle) {
                indices.push_back(static_cast<std::uint32_t>(corners.size()));
                corners.push_back(corner);
            }
        }
        m_mesh.Set({.positions = corners}, indices);
        m_points.SetOrigin(kOrigin);
        m_lines.SetOrigin(kOrigin);
        m_mesh.SetOrigin(kOrigin);
        m_pointStyle = scene.pointStyle;
        m_lineStyle = scene.lineStyle;
        m_view = ViewOf(scene.camera);
        DrawScene();
    }

    BGFXViewContext ViewOf(OrbitCamera const& camera) const {
        BGFXViewContext view(0,
                             BGFXViewClearOptions{BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000FF, 1.0f, 0});
        view.SetViewport(m_target.GetViewport());
        camera.Apply(view, WorldBox{kOrigin + WorldVector{-20, -20, -20}, kOrigin + WorldVector{20, 20, 20}},
                     ViewOrigin::Focus);
        return view;
    }

    void DrawScene() {
        StartFrame();
        m_view.Submit(m_target.GetFrameBuffer());
        m_points.Draw(m_renderer, m_view, m_pointStyle);
        m_lines.Draw(m_renderer, m_view, m_lineStyle);
        m_mesh.Draw(m_renderer, m_view);
        zx3D::Context::SubmitFrame();
        m_picker.SetView(m_view);
    }

    /// What the pixel with this middle shows; not certain where rounding decides.
    Expected FindIn(RandomScene const& scene, Projection64 const& projection, QPointF const& pixel) const {
        Expected best;
        double nearest = 2.0;
        double next = 3.0;
        double foremostEdge = 3.0; // of what may be there or not
        auto const consider = [&](Covering const& cover, void const* batch, std::uint32_t addition,
                                  std::uint64_t element) {
            if (std::abs(cover.outside) < kRounding)
                foremostEdge = std::min(foremostEdge, cover.depth);
            if (cover.outside >= -kRounding)
                return;
            if (cover.depth < nearest) {
                next = nearest;
                nearest = cover.depth;
                best.what = PickElement{.batch = batch, .addition = addition, .element = element};
                best.place = cover.place;
            } else {
                next = std::min(next, cover.depth);
            }
        };
        for (std::size_t i = 0; i < scene.points.size(); ++i)
            consider(CoverOf(projection, scene.points[i], scene.pointStyle, pixel), &m_points, 0, i);
        for (std::size_t i = 0; i < scene.segments.size(); ++i)
            consider(CoverOf(projection, scene.segments[i], scene.lineStyle, pixel), &m_lines, 1, i);
        for (std::size_t i = 0; i < scene.triangles.size(); ++i)
            consider(CoverOf(projection, scene.triangles[i], pixel), &m_mesh, 2, i);
        best.isCertain = std::min(next, foremostEdge) - nearest > kDepthRounding;
        return best;
    }

    /// What is nearest to a place.
    Expected Search(RandomScene const& scene, QPointF const& place, double radius) const {
        Projection64 const projection(m_view);
        struct Near {
            double distance;
            QPointF middle;
        };
        std::vector<Near> pixels;
        for (int y = 0; y < kSize.height(); ++y) {
            for (int x = 0; x < kSize.width(); ++x) {
                bool const isInside = std::floor(place.x()) == x && std::floor(place.y()) == y;
                QPointF const middle(x + 0.5, y + 0.5);
                double const distance =
                    isInside ? 0.0 : std::hypot(middle.x() - place.x(), middle.y() - place.y());
                if (distance <= radius)
                    pixels.push_back({distance, middle});
            }
        }
        std::sort(pixels.begin(), pixels.end(),
                  [](Near const& a, Near const& b) { return a.distance < b.distance; });
        for (Near const& pixel : pixels) {
            Expected found = FindIn(scene, projection, pixel.middle);
            found.distance = pixel.distance;
            if (!found.isCertain || found.what)
                return found;
        }
        return {};
    }

    PointBatch m_points{PointBatch::KeepData::Yes};
    LineBatch m_lines{LineBatch::KeepData::Yes};
    MeshBatch m_mesh{MeshBatch::KeepData::Yes};
    PointStyle m_pointStyle;
    LineStyle m_lineStyle;
    BGFXViewContext m_view;
    Picker m_picker{kPickView, [this](PickScene& scene) {
                        scene.Add(m_points, m_pointStyle);
                        scene.Add(m_lines, m_lineStyle);
                        scene.Add(m_mesh);
                    }};
};

double DistanceBetween(WorldPosition const& a, WorldPosition const& b) {
    WorldVector const way = a - b;
    return std::sqrt(Dot(way, way));
}

unsigned CountScenes() {
    return qEnvironmentVariableIsSet("ZX3D_EXHAUSTIVE") ? 1000 : 12;
}

} // namespace

TEST_P(PickerTest, FindsWhatADoublePrecisionSearchFinds) {
    int ties = 0;
    int hits = 0;
    int all = 0;
    double worst = 0.0;
    for (unsigned seed = 0; seed < CountScenes() && !HasFailure(); ++seed) {
        RandomScene scene(seed);
        Load(scene);
        for (int i = 0; i < 20; ++i, ++all) {
            QPointF const place(scene.Number(-3, kSize.width() + 3), scene.Number(-3, kSize.height() + 3));
            double const radius = scene.Number(0.0, 8.0);
            Expected const expected = Search(scene, place, radius);
            if (!expected.isCertain) {
                ++ties;
                continue;
            }
            std::optional<PickHit> const hit = m_picker.PickNow(place, {.radius = radius});
            ASSERT_EQ(hit.has_value(), expected.what.has_value()) << "scene " << seed << ", place " << i;
            if (!hit)
                continue;
            ++hits;
            EXPECT_EQ(hit->what, *expected.what) << "scene " << seed << ", place " << i;
            EXPECT_NEAR(hit->distance, expected.distance, 1e-9);
            WorldPosition const truth =
                kOrigin + WorldVector{expected.place.x, expected.place.y, expected.place.z};
            double const fromEye = DistanceBetween(truth, scene.camera.ComputePosition());
            worst = std::max(worst, DistanceBetween(hit->position, truth) / fromEye);
        }
    }
    EXPECT_LT(worst, 1e-3);
    EXPECT_GT(hits, all / 8);
    EXPECT_LT(ties, all / 8);
    std::printf("%d places, %d ties, %d hits; positions within %.2g of the distance\n", all, ties, hits,
                worst);
}

TEST_P(PickerTest, ARectangleHasWhatItsPixelsShow) {
    std::size_t hidden = 0;
    for (unsigned seed = 0; seed < 3; ++seed) {
        RandomScene scene(seed);
        Load(scene);
        QRect const rect(30, 20, 60, 50);
        Projection64 const projection(m_view);
        std::vector<PickElement> certain;
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            for (int x = rect.left(); x <= rect.right(); ++x) {
                Expected const found = FindIn(scene, projection, QPointF(x + 0.5, y + 0.5));
                if (found.what && found.isCertain && !std::ranges::count(certain, *found.what))
                    certain.push_back(*found.what);
            }
        }
        std::vector<PickElement> const visible = m_picker.PickRectNow(rect);
        for (PickElement const& element : certain)
            EXPECT_TRUE(std::ranges::count(visible, element)) << element.addition << ": " << element.element;
        EXPECT_LE(visible.size(), certain.size() + 5) << "what is there by rounding only";
        std::vector<PickElement> const all = m_picker.PickRectNow(rect, PickRange::All);
        for (PickElement const& element : visible)
            EXPECT_TRUE(std::ranges::count(all, element)) << element.addition << ": " << element.element;
        hidden += all.size() - visible.size();
        EXPECT_LT(all.size(), scene.points.size() + scene.segments.size() + scene.triangles.size());
    }
    EXPECT_GT(hidden, 0u);
}

TEST_P(PickerTest, PolylinesBallsAndInstancesAreFoundToo) {
    LineVertex const vertices[] = {{{0, 0, 0}}, {{40, 0, 0}}, {{40, 30, 0}}};
    Polyline const polylines[] = {{{vertices, 2}}, {vertices, PolylineEnds::Closed}};
    LineBatch outlines;
    outlines.Set(polylines);
    ColoredPoint const balls[] = {{{20.5f, 80.5f, 0.5f}}, {{60.5f, 80.5f, 0.5f}}};
    PointBatch spheres;
    spheres.Set(balls);
    bx::Vec3 const corners[] = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {10, 10, 0}};
    std::uint32_t const indices[] = {0, 1, 2, 2, 1, 3};
    MeshBatch tiles;
    tiles.Set({.positions = corners}, indices);
    QMatrix4x4 first;
    first.translate(100, 50, 0.5f);
    QMatrix4x4 second;
    second.translate(130, 50, 0.5f);
    MeshInstance const places[] = {MeshInstance(first), MeshInstance(second)};
    tiles.SetInstances(places);
    QMatrix4x4 shift;
    shift.translate(5, 5, 0.5f);
    PointStyle const ballStyle{.shape = PointShape::Ball, .size = 15.0f};
    LineStyle const dashes{.width = 4.0f, .stipple = {0x00FF, 2}};

    StartFrame();
    BGFXViewContext const view = SubmitPixelView();
    outlines.Draw(m_renderer, view, dashes, shift);
    spheres.Draw(m_renderer, view, ballStyle);
    tiles.Draw(m_renderer, view);
    Present();
    Picker picker(kPickView, [&](PickScene& scene) {
        scene.Add(outlines, dashes, shift);
        scene.Add(spheres, ballStyle);
        scene.Add(tiles);
    });
    picker.SetView(view, 2.0); // two pixels in one that events count
    auto const pick = [&](double x, double y, PickOptions const& options = {.radius = 0.0}) {
        return picker.PickNow(QPointF(x / 2, y / 2), options);
    };

    for (double const x : {10.5, 20.5, 30.5, 40.5}) { // in gaps and dashes
        std::optional<PickHit> const hit = pick(x, 5.5);
        ASSERT_TRUE(hit);
        EXPECT_EQ(hit->what.batch, &outlines);
        EXPECT_EQ(hit->what.element, 1u) << "drawn over the first one";
        EXPECT_EQ(hit->what.segment, 0u);
        EXPECT_NEAR(hit->position.x, x, 0.02);
        EXPECT_NEAR(hit->position.y, 5.0, 1e-4) << "in the line's middle";
    }
    EXPECT_EQ(pick(45.5, 20.5)->what.segment, 1u);
    EXPECT_EQ(pick(25.5, 20.5)->what.segment, 2u) << "which closes it";

    std::optional<PickHit> const ball = pick(65.5, 77.5);
    ASSERT_TRUE(ball);
    EXPECT_EQ(ball->what, (PickElement{.batch = &spheres, .addition = 1, .element = 1}));
    EXPECT_EQ(ball->position, (WorldPosition{60.5, 80.5, 0.5}));
    EXPECT_FALSE(pick(67.5, 87.5)) << "a corner of its square";

    EXPECT_EQ(pick(132.5, 53.5)->what,
              (PickElement{.batch = &tiles, .addition = 2, .element = 0, .instance = 1}));
    EXPECT_EQ(pick(107.5, 57.5)->what,
              (PickElement{.batch = &tiles, .addition = 2, .element = 1, .instance = 0}));
    EXPECT_NEAR(pick(132.5, 53.5)->position.x, 132.5, 1e-3);

    // Beside a line, whose distance counts in the events' pixels.
    EXPECT_FALSE(pick(35.5, 12.5, {.radius = 2.0}));
    std::optional<PickHit> const beside = pick(35.5, 12.5, {.radius = 4.0});
    ASSERT_TRUE(beside);
    EXPECT_DOUBLE_EQ(beside->distance, 3.0);
}

TEST_P(PickerTest, ThinThingsComeFirstWhereThatIsAskedFor) {
    bx::Vec3 const corners[] = {{0, 0, 0.5f}, {100, 0, 0.5f}, {0, 100, 0.5f}};
    std::uint32_t const indices[] = {0, 1, 2};
    LineSegment const edge[] = {{{{0, 30, 0.4f}}, {{50, 30, 0.4f}}}};
    LineSegment const hidden[] = {{{{0, 20, 0.6f}}, {{50, 20, 0.6f}}}};
    m_mesh.Set({.positions = corners}, indices);
    m_lines.Set(edge);
    LineBatch behind;
    behind.Set(hidden);
    StartFrame();
    BGFXViewContext const view = SubmitPixelView();
    m_mesh.Draw(m_renderer, view);
    m_lines.Draw(m_renderer, view);
    behind.Draw(m_renderer, view);
    Present();
    Picker picker(kPickView, [&](PickScene& scene) {
        scene.Add(m_mesh);
        scene.Add(m_lines);
        scene.Add(behind);
    });
    picker.SetView(view);
    QPointF const place(20.5, 26.5);
    EXPECT_EQ(picker.PickNow(place)->what.batch, &m_mesh);
    EXPECT_EQ(picker.PickNow(place, {.order = PickOrder::ThinFirst})->what.batch, &m_lines);
    EXPECT_EQ(picker.PickNow({20.5, 22.5}, {.radius = 3.0, .order = PickOrder::ThinFirst})->what.batch,
              &m_mesh)
        << "what is behind the surface does not count";
}

TEST_P(PickerTest, AnswersFromTheEventLoopInTheirOrder) {
    RandomScene const scene(1);
    Load(scene);
    std::vector<int> answered;
    std::optional<PickHit> late;
    m_picker.Pick({80, 60}, [&](auto const& hit) {
        answered.push_back(0);
        late = hit;
        m_picker.Pick({-50, 60}, [&](auto const& outside) {
            answered.push_back(2);
            EXPECT_FALSE(outside);
        });
    });
    m_picker.PickRect({0, 0, 160, 120}, [&](auto const& elements) {
        answered.push_back(1);
        EXPECT_FALSE(elements.empty());
    });
    EXPECT_TRUE(answered.empty()) << "not before the event loop";
    ASSERT_TRUE(WaitUntil([&] { return answered.size() == 3; }));
    EXPECT_EQ(answered, (std::vector{0, 1, 2}));
    std::optional<PickHit> const now = m_picker.PickNow({80, 60});
    ASSERT_EQ(late.has_value(), now.has_value());
    if (now) {
        EXPECT_EQ(late->what, now->what);
    }
}

TEST_P(PickerTest, FollowingAnswersOnlyWhatIsNew) {
    LineSegment const lines[] = {{{{10, 10, 0.5f}}, {{10, 100, 0.5f}}},
                                 {{{100, 10, 0.5f}}, {{100, 100, 0.5f}}}};
    m_lines.Set(lines);
    StartFrame();
    BGFXViewContext const view = SubmitPixelView();
    m_lines.Draw(m_renderer, view);
    Present();
    Picker picker(kPickView, [&](PickScene& scene) { scene.Add(m_lines); });
    picker.SetView(view);
    QObject target;
    std::vector<std::optional<std::uint64_t>> answers;
    picker.Follow(&target, [&](std::optional<PickHit> const& hit) {
        answers.push_back(hit ? std::optional(hit->what.element) : std::nullopt);
    });
    auto const move = [&](double x, double y, Qt::MouseButton held = Qt::NoButton) {
        QMouseEvent event(QEvent::MouseMove, QPointF(x, y), QPointF(x, y), Qt::NoButton, held,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&target, &event);
    };
    // Everything that was asked before it is answered.
    auto const settle = [&] {
        bool isDone = false;
        picker.Pick({0, 0}, [&](auto const&) { isDone = true; });
        ASSERT_TRUE(WaitUntil([&] { return isDone; }));
        isDone = false;
        picker.Pick({0, 0}, [&](auto const&) { isDone = true; });
        ASSERT_TRUE(WaitUntil([&] { return isDone; }));
    };
    move(50, 50);
    settle();
    EXPECT_TRUE(answers.empty()) << "nothing before, nothing now";
    move(11, 50);
    ASSERT_TRUE(WaitUntil([&] { return answers.size() == 1; }));
    EXPECT_EQ(answers.back(), 0u);
    move(11, 60); // another place of the same
    settle();
    EXPECT_EQ(answers.size(), 1u);
    move(50, 60);
    move(70, 60);
    move(100, 60); // only the last one counts
    ASSERT_TRUE(WaitUntil([&] { return answers.size() == 2; }));
    EXPECT_EQ(answers.back(), 1u);
    move(50, 60, Qt::LeftButton); // while something is dragged
    settle();
    EXPECT_EQ(answers.size(), 2u);
    BGFXViewContext moved = view;
    QMatrix4x4 shift;
    shift.translate(40, 0);
    moved.SetViewMatrix(shift);
    picker.SetView(moved); // the scene goes away from under the pointer
    ASSERT_TRUE(WaitUntil([&] { return answers.size() == 3; }));
    EXPECT_FALSE(answers.back());
    picker.SetView(view);
    ASSERT_TRUE(WaitUntil([&] { return answers.size() == 4; }));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&target, &leave);
    ASSERT_TRUE(WaitUntil([&] { return answers.size() == 5; }));
    EXPECT_FALSE(answers.back());
}

TEST_P(PickerTest, WithoutTexturesItFindsNothingAndSaysSo) {
    RandomScene const scene(1);
    Load(scene);
    ExpectWarning("picker.no-target");
    std::vector<bgfx::TextureHandle> taken;
    while (taken.empty() || bgfx::isValid(taken.back()))
        taken.push_back(bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::R8));
    taken.pop_back();
    EXPECT_FALSE(m_picker.PickNow({80, 60}));
    EXPECT_FALSE(m_picker.PickNow({80, 60})); // said once
    for (bgfx::TextureHandle const texture : taken)
        bgfx::destroy(texture);
    zx3D::Context::SubmitFrame();
    zx3D::Context::SubmitFrame();
    EXPECT_FALSE(m_picker.PickRectNow({0, 0, 160, 120}).empty());
}

TEST_P(PickerTest, MayGoWhileItIsAsked) {
    RandomScene const scene(1);
    Load(scene);
    auto picker = std::make_unique<Picker>(kPickView, [&](PickScene& all) { all.Add(m_lines, m_lineStyle); });
    picker->SetView(m_view);
    bool isAnswered = false;
    picker->Pick({80, 60}, [&](auto const&) { isAnswered = true; });
    for (int i = 0; i < 3; ++i) // in different stages
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    bool const wasAnswered = isAnswered;
    picker.reset();
    HandlePendingEvents();
    EXPECT_EQ(isAnswered, wasAnswered);

    // By its own answer.
    picker = std::make_unique<Picker>(kPickView, [&](PickScene& all) { all.Add(m_lines, m_lineStyle); });
    picker->SetView(m_view);
    picker->Pick({80, 60}, [&](auto const&) { picker.reset(); });
    ASSERT_TRUE(WaitUntil([&] { return picker == nullptr; }));
}

TEST_P(PickerTest, NowIsNotMixedUpWithWhatIsUnderWay) {
    RandomScene const scene(1);
    Load(scene);
    std::vector<PickElement> const all = m_picker.PickRectNow({0, 0, 160, 120});
    std::vector<PickElement> late;
    m_picker.PickRect({0, 0, 160, 120}, [&](auto const& elements) { late = elements; });
    zx3D::Context::SubmitFrame(); // under way, so that the next one is only recorded
    QCoreApplication::sendPostedEvents();
    m_picker.PickNow({80, 60});
    EXPECT_EQ(m_picker.PickRectNow({0, 0, 160, 120}), all);
    ASSERT_TRUE(WaitUntil([&] { return !late.empty(); }));
    EXPECT_EQ(late, all);
}

TEST_P(PickerTest, WhatIsDestroyedMeanwhileIsNotFound) {
    LineSegment const line[] = {{{{10, 10, 0.5f}}, {{10, 100, 0.5f}}}};
    auto lines = std::make_unique<LineBatch>();
    lines->Set(line);
    StartFrame();
    BGFXViewContext const view = SubmitPixelView();
    lines->Draw(m_renderer, view);
    Present();
    Picker picker(kPickView, [&](PickScene& scene) {
        if (lines)
            scene.Add(*lines);
    });
    picker.SetView(view);
    EXPECT_TRUE(picker.PickNow({10.5, 50}));
    bool isAnswered = false;
    picker.Pick({10.5, 50}, [&](auto const& hit) {
        isAnswered = true;
        EXPECT_FALSE(hit);
    });
    QCoreApplication::sendPostedEvents(); // it is recorded
    lines.reset();
    ASSERT_TRUE(WaitUntil([&] { return isAnswered; }));
}

TEST_P(PickerTest, AnAnswerTakesThreeFramesAtMost) {
    // Ten million, or less.
    std::uint32_t const side = qEnvironmentVariableIsSet("ZX3D_EXHAUSTIVE") ? 3163 : 316;
    std::vector<ColoredPoint> points;
    for (std::uint32_t i = 0; i < side * side; ++i)
        points.push_back({{160.0f * static_cast<float>(i % side) / static_cast<float>(side),
                           120.0f * static_cast<float>(i / side) / static_cast<float>(side), 0.5f}});
    m_points.Set(points);
    BGFXViewContext view;
    auto const draw = [&] {
        StartFrame();
        view = SubmitPixelView();
        m_points.Draw(m_renderer, view);
        return zx3D::Context::SubmitFrame();
    };
    do
        draw();
    while (!m_points.IsUploaded());
    Picker picker(kPickView, [&](PickScene& scene) { scene.Add(m_points); });
    picker.SetView(view);
    EXPECT_TRUE(picker.PickNow({80, 60})) << "which makes the programs";
    // Without what other processes take.
    auto const cpuTime = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
    };
    auto const pause = [&] {
        double const begin = cpuTime();
        QCoreApplication::processEvents();
        return cpuTime() - begin;
    };
    // Frames of ten million points take a software renderer seconds.
    auto const isSoon = [](auto condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 100'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    };
    for (bool const isAnimated : {false, true}) {
        ASSERT_TRUE(isSoon([] { return !zx3D::Context::IsFrameInFlight(); }));
        bool isAnswered = false;
        std::uint32_t last = 0;
        // As an animation does, which is under way when something is picked.
        auto const counting =
            QObject::connect(&FrameNotifier::Get(), &FrameNotifier::frameFinished, [&](quint32 number) {
                last = number;
                if (isAnimated && !zx3D::Context::IsFrameInFlight())
                    draw();
            });
        std::uint32_t const before = draw();
        if (!isAnimated) {
            ASSERT_TRUE(isSoon([&] { return last == before; }));
        }
        QElapsedTimer total;
        total.start();
        picker.Pick({80, 60}, [&](std::optional<PickHit> const& hit) {
            isAnswered = true;
            EXPECT_TRUE(hit);
        });
        double longestPause = 0.0;
        while (!isAnswered && total.elapsed() < 100'000)
            longestPause = std::max(longestPause, pause());
        QObject::disconnect(counting);
        EXPECT_TRUE(isAnswered);
        std::uint32_t const frames = last - before; // with the one under way
        EXPECT_LE(frames, 3u);
        std::printf("%u points, %s: %u frames, %lld ms, the event loop was busy for %.2f ms at most\n",
                    side * side, isAnimated ? "animated" : "at rest", frames,
                    static_cast<long long>(total.elapsed()), longestPause);
    }
}

TEST_P(PickerTest, AHighlightLooksLikeElementsOfItsColor) {
    constexpr std::uint32_t marked = 0x20C040FF;
    std::uint64_t const elements[] = {3, 4, 9, 1'000'000};
    RandomScene scene(5);
    auto const drawn = [&](auto&& draw) {
        StartFrame();
        m_view = ViewOf(scene.camera);
        m_view.Submit(m_target.GetFrameBuffer());
        draw();
        return Present();
    };
    auto const colored = [&](auto things, auto color) {
        for (std::uint64_t const i : {3, 4, 9})
            color(things[i]);
        return things;
    };
    m_points.SetOrigin(kOrigin);
    m_lines.SetOrigin(kOrigin);
    for (PointShape const shape : {PointShape::Square, PointShape::Disc, PointShape::Ball}) {
        for (float const size : {1.0f, 9.0f}) {
            m_pointStyle = {.shape = shape, .size = size};
            m_points.Set(colored(scene.points, [](ColoredPoint& point) { point.rgba = marked; }));
            QImage const expected = drawn([&] { m_points.Draw(m_renderer, m_view, m_pointStyle); });
            m_points.Set(scene.points);
            m_pointStyle.highlight = {.elements = elements, .rgba = marked};
            QImage const picture = drawn([&] { m_points.Draw(m_renderer, m_view, m_pointStyle); });
            EXPECT_TRUE(Matches(picture, expected, kExact));
        }
    }
    // What is nearer by a pixel covers others where lines cross: apart from each other, then.
    std::vector<LineSegment> segments;
    for (int i = 0; i < 12; ++i)
        segments.push_back(
            {{{-8.0f, -6.0f + static_cast<float>(i), 0.0f}}, {{8.0f, -6.0f + static_cast<float>(i), 0.0f}}});
    scene.camera = OrbitCamera();
    scene.camera.SetElevation(90.0);
    scene.camera.SetTarget(kOrigin);
    scene.camera.SetDistance(30.0);
    LineStyle style{.width = 3.0f, .cap = LineCap::Round};
    m_lines.Set(
        colored(segments, [](LineSegment& segment) { segment.start.rgba = segment.end.rgba = marked; }));
    QImage const expected = drawn([&] { m_lines.Draw(m_renderer, m_view, style); });
    m_lines.Set(segments);
    style.highlight = {.elements = elements, .rgba = marked};
    EXPECT_TRUE(Matches(drawn([&] { m_lines.Draw(m_renderer, m_view, style); }), expected, kExact));

    std::vector<LineVertex> vertices;
    std::vector<Polyline> polylines;
    for (LineSegment const& segment : segments) {
        vertices.push_back(segment.start);
        vertices.push_back(segment.end);
    }
    for (std::size_t i = 0; i < segments.size(); ++i)
        polylines.push_back({{&vertices[2 * i], 2}});
    m_lines.Set(polylines);
    EXPECT_TRUE(Matches(drawn([&] { m_lines.Draw(m_renderer, m_view, style); }), expected, kExact));
}

ZX3D_INSTANTIATE_BACKENDS(PickerTest);
