// A scene, call by call.
#include "Scene.h"

#include "RenderTest.h"
#include "SoftwareSprite.h"
#include "WithoutCompute.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zarvex::testing {

namespace {

zx3DQt::BGFXViewContext ViewOf(Scene const& scene) {
    zx3DQt::BGFXViewContext view = PixelView(scene.viewport, Qt::black, 1);
    view.SetViewClearOptions(std::nullopt);
    if (scene.setUpView)
        scene.setUpView(view);
    return view;
}

void Draw(SceneCall const& call, zx3DQt::BGFXRenderer const& renderer, zx3DQt::BGFXViewContext const& view,
          std::optional<zx3DQt::ModelTransformCacheId> model) {
    if (auto const* const lines = std::get_if<SceneLines>(&call.shapes))
        renderer.DrawLines(view, *lines, static_cast<float>(call.size), model, call.stipple);
    else
        renderer.DrawPoints(view, std::get<ScenePoints>(call.shapes), call.size, model);
}

void Draw(SceneCall const& call, zx3DQt::BGFXRenderer& renderer, zx3DQt::BGFXViewContext const& view) {
    zx3DQt::ModelTransformCacheId const model = renderer.SetModelTransform(call.model);
    if (!call.isModelGivenById) {
        Draw(call, renderer, view, std::nullopt);
        return;
    }
    QMatrix4x4 elsewhere;
    elsewhere.translate(3.0f, 5.0f);
    renderer.SetModelTransform(elsewhere);
    Draw(call, renderer, view, model);
}

/// A point in clip space.
struct ClipPoint {
    double x, y, z, w;
};

ClipPoint operator+(ClipPoint const& a, ClipPoint const& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}

ClipPoint operator*(double factor, ClipPoint const& a) {
    return {factor * a.x, factor * a.y, factor * a.z, factor * a.w};
}

class SceneReference {
public:
    explicit SceneReference(Scene const& scene)
        : m_scene(scene),
          m_view(ViewOf(scene)),
          m_picture(kSceneSize, Qt::black) {}

    ReferencePicture Draw() {
        for (SceneCall const& call : m_scene.calls)
            std::visit([&](auto const& shapes) { Draw(call, shapes); }, call.shapes);
        return m_picture;
    }

private:
    template<typename Shape>
    void Draw(Shape const& shape, zx3D::Color const& color) {
        auto const channel = [](float value) { return static_cast<int>(std::lround(value * 255.0f)); };
        m_picture.Draw(
            shape.Area().intersected(m_scene.viewport),
            QColor(channel(color.red), channel(color.green), channel(color.blue), channel(color.alpha)),
            [&shape](QPointF pixelCenter) { return shape.At(pixelCenter); });
    }

    void Draw(SceneCall const& call, SceneLines const& lines) {
        SoftwareStipple const stipple(call.stipple.value_or(zx3D::LineStipplePattern()));
        for (zx3D::Line const& line : lines)
            Draw(Transform(call.model, line.start), Transform(call.model, line.end), call.size, stipple,
                 line.color);
    }

    void Draw(SceneCall const& call, ScenePoints const& points) {
        for (auto const& point : points) {
            QPointF const center = ToPixels(Transform(call.model, point.position));
            Draw(SoftwarePoint{center, double(std::max<int>(call.size, 1))}, point.color);
        }
    }

    void Draw(ClipPoint const& start, ClipPoint const& end, std::uint16_t width,
              SoftwareStipple const& stipple, zx3D::Color const& color) {
        double const atStart = DistanceBeyondNear(start);
        double const atEnd = DistanceBeyondNear(end);
        if (atStart < 0.0 && atEnd < 0.0)
            return;
        auto const cut = [&](ClipPoint const& point, double distance) {
            double const fraction = atStart / (atStart - atEnd);
            return distance < 0.0 ? (1.0 - fraction) * start + fraction * end : point;
        };
        QPointF const from = ToPixels(cut(start, atStart));
        QPointF const to = ToPixels(cut(end, atEnd));
        if (width == 1)
            Draw(SoftwareThinLine{from, to, stipple, ToPixels(start)}, color);
        else // which begins at the near plane if it comes from behind the camera
            Draw(SoftwareWideLine{from, to, double(width), stipple, start.w > 0.0 ? ToPixels(start) : from},
                 color);
    }

    ClipPoint Transform(QMatrix4x4 const& model, bx::Vec3 const& position) const {
        std::array<double, 4> point = {position.x, position.y, position.z, 1.0};
        for (QMatrix4x4 const* const matrix :
             {&model, &m_view.GetViewMatrix(), &m_view.GetProjectionMatrix()}) {
            std::array<double, 4> product = {};
            for (int row = 0; row < 4; ++row) {
                for (int column = 0; column < 4; ++column)
                    product[row] += double((*matrix)(row, column)) * point[column];
            }
            point = product;
        }
        return {point[0], point[1], point[2], point[3]};
    }

    QPointF ToPixels(ClipPoint const& clip) const {
        QRect const& viewport = m_scene.viewport;
        return {viewport.left() + (clip.x / clip.w + 1.0) * 0.5 * viewport.width(),
                viewport.top() + (1.0 - clip.y / clip.w) * 0.5 * viewport.height()};
    }

    double DistanceBeyondNear(ClipPoint const& clip) const {
        return bgfx::getCaps()->homogeneousDepth ? clip.z + clip.w : clip.z;
    }

    Scene const& m_scene;
    zx3DQt::BGFXViewContext const m_view;
    ReferencePicture m_picture;
};

} // namespace

QImage Draw(Scene const& scene, SpritePath path, zx3DQt::BGFXRenderer& renderer, OffscreenTarget& target) {
    std::optional<WithoutCompute> withoutCompute;
    if (path == SpritePath::CPU)
        withoutCompute.emplace();
    EXPECT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
    zx3DQt::BGFXViewContext const background = PixelView(target.GetViewport());
    background.Submit(target.GetFrameBuffer());
    bgfx::touch(background);
    zx3DQt::BGFXViewContext const view = ViewOf(scene);
    view.Submit(target.GetFrameBuffer());
    for (SceneCall const& call : scene.calls)
        Draw(call, renderer, view);
    return ReadBack(target.GetFrameBuffer());
}

ReferencePicture DrawReference(Scene const& scene) {
    return SceneReference(scene).Draw();
}

} // namespace zarvex::testing
