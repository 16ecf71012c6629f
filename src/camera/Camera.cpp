// What the kinds of cameras share.
#include <zx3DQt/Camera.h>

#include <utility>

namespace zarvex::zx3DQt {

namespace {

void FitOne(OrbitCamera& camera, WorldBox const& box, double aspectRatio, double margin) {
    camera.Fit(box, aspectRatio, margin);
}

void FitOne(PlanarCamera& camera, WorldBox const& box, double, double margin) {
    camera.Fit(box, margin);
}

void FitOne(FlyCamera& camera, WorldBox const& box, double aspectRatio, double margin) {
    camera.Fit(box, aspectRatio, margin);
}

} // namespace

void Fit(Camera& camera, WorldBox const& box, double aspectRatio, double margin) {
    std::visit([&](auto& one) { FitOne(one, box, aspectRatio, margin); }, camera);
}

void Apply(Camera const& camera, BGFXViewContext& view, std::optional<WorldBox> const& scene,
           ViewOrigin origin) {
    std::visit([&](auto const& one) { one.Apply(view, scene, origin); }, camera);
}

Camera Interpolate(Camera const& from, Camera const& to, double t) {
    if (from.index() != to.index())
        return t > 0.0 ? to : from;
    return std::visit(
        [&]<typename Kind>(Kind const& one) -> Camera {
            return Kind::Interpolate(one, std::get<Kind>(to), t);
        },
        from);
}

QJsonObject ToJson(Camera const& camera) {
    return std::visit([](auto const& one) { return one.ToJson(); }, camera);
}

std::optional<Camera> CameraFromJson(QJsonObject const& json) {
    if (auto const orbit = OrbitCamera::FromJson(json))
        return *orbit;
    if (auto const planar = PlanarCamera::FromJson(json))
        return *planar;
    if (auto const fly = FlyCamera::FromJson(json))
        return *fly;
    return std::nullopt;
}

} // namespace zarvex::zx3DQt
