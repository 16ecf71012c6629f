// Where a world position is said to appear, and where it does.
#include "RenderTest.h"
#include "SoftwareCamera.h"

#include <zx3D/Text.h>

#include <QPointF>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

/// On a target that is large enough for a square of a few pixels to be a point.
class TransformToViewportTest : public RenderTest {
protected:
    TransformToViewportTest() : RenderTest(QSize(320, 240)) {}

    /// Draws a small white square around a world position, facing along z; the centre of the pixels that it
    /// covers.
    QPointF DrawnCenter(zx3DQt::BGFXViewContext const& view, QVector3D const& position, double extent);
};

QPointF TransformToViewportTest::DrawnCenter(zx3DQt::BGFXViewContext const& view, QVector3D const& position,
                                             double extent) {
    StartFrame();
    view.Submit(m_target.GetFrameBuffer());
    QRectF const square(position.x() - extent / 2.0, position.y() - extent / 2.0, extent, extent);
    DrawRect(view, square, Qt::white, position.z());
    QImage const image = Present();
    QPointF sum;
    int count = 0;
    // Around the view nothing is cleared, and anything may be there.
    QRect const drawn = view.GetViewport();
    for (int y = drawn.top(); y <= drawn.bottom(); ++y) {
        for (int x = drawn.left(); x <= drawn.right(); ++x) {
            if (image.pixelColor(x, y) == Qt::white) {
                sum += QPointF(x + 0.5, y + 0.5);
                ++count;
            }
        }
    }
    EXPECT_GT(count, 4) << "the square is not in the picture";
    return sum / std::max(count, 1);
}

/// A camera in the convention of the running backend that looks at the origin from above and aside.
zx3DQt::BGFXViewContext PerspectiveView(QRect const& viewport) {
    zx3DQt::BGFXViewContext view = PixelView(viewport);
    bx::mtxLookAt(view.GetViewMatrix().data(), bx::Vec3(2.0f, 3.0f, -6.0f), bx::Vec3(0.0f, 0.0f, 0.0f));
    bx::mtxProj(view.GetProjectionMatrix().data(), 50.0f,
                static_cast<float>(view.ComputeViewportAspectRatio()), 0.5f, 50.0f,
                bgfx::getCaps()->homogeneousDepth);
    return view;
}

double Distance(QPointF a, QPointF b) {
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

} // namespace

TEST_P(TransformToViewportTest, TellsWhereOrthoDraws) {
    zx3DQt::BGFXViewContext view = PixelView(QRect(60, 45, 200, 150));
    view.SetOrthoProjectionFromRect(QRectF(-1.0, -0.5, 2.0, 1.5), -1.0f, 1.0f, 0.0f);
    for (QVector3D const& position :
         {QVector3D(0.0f, 0.0f, 0.0f), QVector3D(-0.6f, 0.7f, 0.4f), QVector3D(0.55f, -0.2f, -0.9f)}) {
        QPointF const told = view.TransformToViewport(position);
        EXPECT_LT(Distance(DrawnCenter(view, position, 0.1), told), 0.51) << told.x() << ", " << told.y();
    }
}

TEST_P(TransformToViewportTest, TellsWherePerspectiveDraws) {
    zx3DQt::BGFXViewContext const view = PerspectiveView(QRect(30, 20, 260, 190));
    for (QVector3D const& position : {QVector3D(0.0f, 0.0f, 0.0f), QVector3D(-1.2f, 0.9f, 1.0f),
                                      QVector3D(1.5f, -0.7f, -0.5f), QVector3D(2.0f, 1.0f, 6.0f)}) {
        QPointF const told = view.TransformToViewport(position);
        EXPECT_LT(Distance(DrawnCenter(view, position, 0.3), told), 0.51) << told.x() << ", " << told.y();
    }
}

TEST_P(TransformToViewportTest, LabelsAllAroundTheCameraAreDrawnWhereItLooksOnly) {
    zx3DQt::BGFXViewContext view = PixelView(m_target.GetViewport());
    SoftwareCamera const camera{.place = {0.3, -0.2, 0.1}, .target = {1.0, 0.4, 2.0}, .angle = 70.0};
    camera.SetUp(view);
    zx3D::FontHandle const font = zx3D::LoadDefaultFont(10).value();
    auto const draw = [&](auto const& drawLabel) {
        StartFrame();
        view.Submit(m_target.GetFrameBuffer());
        bgfx::touch(view);
        int number = 0;
        for (int latitude = -80; latitude <= 80; latitude += 20) {
            for (int longitude = 0; longitude < 360; longitude += 20) {
                double const phi = latitude * std::numbers::pi / 180.0;
                double const lambda = longitude * std::numbers::pi / 180.0;
                Vector3 const direction{std::cos(phi) * std::cos(lambda), std::sin(phi),
                                        std::cos(phi) * std::sin(lambda)};
                drawLabel(camera.place + 5.0 * direction, QString::number(number++));
            }
        }
        return Present();
    };
    QImage const picture = draw([&](Vector3 const& place, QString const& text) {
        m_renderer.RenderText(view, ToVec3(place), text, font, Qt::white, Qt::AlignCenter);
    });
    int drawn = 0;
    QImage const expected = draw([&](Vector3 const& place, QString const& text) {
        if (Dot(place - camera.place, camera.target - camera.place) <= 0.0)
            return;
        ++drawn;
        m_renderer.RenderText(view, view.TransformToViewport(ToVec3(place)), text, font, Qt::white,
                              Qt::AlignCenter);
    });
    EXPECT_EQ(drawn, 81); // of 162
    EXPECT_TRUE(Matches(picture, expected, kExact));
    EXPECT_NE(picture, Canvas());
    zx3D::DestroyFont(font);
}

ZX3D_INSTANTIATE_BACKENDS(TransformToViewportTest);
