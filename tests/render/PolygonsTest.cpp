// Filled polygons against the even-odd rule, computed in double precision at each pixel's centre.
#include "Coverage.h"
#include "RenderTest.h"

#include <zx3DQt/Polygons.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

using namespace zarvex;
using namespace zarvex::testing;
using zx3DQt::FillRule;
using zx3DQt::PolygonOutline;

namespace {

class PolygonsTest : public RenderTest {
protected:
    PolygonsTest() : RenderTest(QSize(200, 160)) {}

    void ExpectFilled(std::vector<PolygonOutline> const& outlines, FillRule rule) {
        StartFrame();
        zx3DQt::BGFXViewContext const view = SubmitPixelView();
        DrawRect(view, QRectF(0, 0, 1, 1), Qt::black, 0.99f); // bgfx clears views that are drawn into
        DrawPolygon(m_renderer, view, outlines, ToColor(Qt::yellow), zx3DQt::BGFXRenderer::STATE_OPAQUE,
                    rule);
        QImage const image = Present();
        QImage expected = image;
        int inside = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                Crossing const crossing = CrossingsOf(outlines, x + 0.5, y + 0.5);
                if (crossing.distance < 2.0 * kEdgeWidth)
                    continue; // either is right
                bool const isInside =
                    rule == FillRule::EvenOdd ? crossing.count % 2 == 1 : crossing.winding != 0;
                expected.setPixelColor(x, y, isInside ? Qt::yellow : Qt::black);
                inside += isInside;
            }
        }
        EXPECT_GT(inside, 500);
        EXPECT_TRUE(Matches(image, expected, kExact));
    }

private:
    /// How a ray to the right crosses the outlines, and how far the nearest one is, pixels.
    struct Crossing {
        int count = 0;
        int winding = 0;
        double distance = std::numeric_limits<double>::max();
    };

    static Crossing CrossingsOf(std::vector<PolygonOutline> const& outlines, double x, double y) {
        Crossing crossing;
        for (PolygonOutline const& outline : outlines) {
            for (std::size_t i = 0; i < outline.size(); ++i) {
                QVector3D const& a = outline[i];
                QVector3D const& b = outline[(i + 1) % outline.size()];
                double const ax = a.x() - x, ay = a.y() - y, bx = b.x() - x, by = b.y() - y;
                double const dx = bx - ax, dy = by - ay;
                if ((ay <= 0.0) != (by <= 0.0) && ax - ay * dx / dy > 0.0) {
                    ++crossing.count;
                    crossing.winding += dy > 0.0 ? 1 : -1;
                }
                double const length = dx * dx + dy * dy;
                double const t = length > 0.0 ? std::clamp(-(ax * dx + ay * dy) / length, 0.0, 1.0) : 0.0;
                crossing.distance = std::min(crossing.distance, std::hypot(ax + t * dx, ay + t * dy));
            }
        }
        return crossing;
    }
};

PolygonOutline Star(QPointF const& center, double radius, int corners, int step) {
    PolygonOutline outline;
    for (int i = 0; i < corners; ++i) {
        double const angle = 2.0 * std::numbers::pi * i * step / corners + 0.1;
        outline.push_back({static_cast<float>(center.x() + radius * std::cos(angle)),
                           static_cast<float>(center.y() + radius * std::sin(angle)), 0.5f});
    }
    return outline;
}

} // namespace

TEST_P(PolygonsTest, FillsWhatTheRulesSay) {
    std::vector<std::vector<PolygonOutline>> pictures{
        {Star({100, 80}, 75, 40, 1), Star({80, 70}, 25, 3, 1), Star({130, 95}, 22, 12, 5)}, // holes
        {Star({100, 80}, 78, 7, 3)},                                                        // crosses itself
        {Star({70, 80}, 55, 30, 1), Star({130, 80}, 55, 30, 29)}}; // cross each other
    std::mt19937 random(3);
    std::uniform_real_distribution<float> place(0.0f, 1.0f);
    for (int i = 0; i < 3; ++i) {
        pictures.emplace_back();
        for (int j = 0; j < 3; ++j) {
            pictures.back().emplace_back();
            for (int k = 0; k < 12; ++k)
                pictures.back().back().push_back({190.3f * place(random), 150.7f * place(random), 0.5f});
        }
    }
    for (std::vector<PolygonOutline> const& outlines : pictures) {
        ExpectFilled(outlines, FillRule::EvenOdd);
        ExpectFilled(outlines, FillRule::NonZero);
    }
}

ZX3D_INSTANTIATE_BACKENDS(PolygonsTest);
