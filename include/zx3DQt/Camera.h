// A camera of any kind.
#pragma once

#include <zx3DQt/FlyCamera.h>
#include <zx3DQt/OrbitCamera.h>
#include <zx3DQt/PlanarCamera.h>
#include <zx3DQt/zx3DQtExport.h>

#include <QJsonObject>

#include <optional>
#include <variant>

namespace zarvex::zx3DQt {

/// One of the three: `std::get<OrbitCamera>(camera)` has its own operations. What they share, follows.
using Camera = std::variant<OrbitCamera, PlanarCamera, FlyCamera>;

/// Lets it see all of a box, as its own `Fit` does.
ZX3DQT_EXPORT void Fit(Camera& camera, WorldBox const& box, double aspectRatio, double margin = 0.1);

/// Sets a view's matrices, as its own `Apply` does.
ZX3DQT_EXPORT void Apply(Camera const& camera, BGFXViewContext& view,
                         std::optional<WorldBox> const& scene = std::nullopt,
                         ViewOrigin origin = ViewOrigin::Keep);

/// Between two cameras of the same kind, as their own `Interpolate` does; of different kinds, `from` at 0 and
/// `to` afterwards.
ZX3DQT_EXPORT Camera Interpolate(Camera const& from, Camera const& to, double t);

/// As JSON, which tells the kind, and back: the same camera, to the last bit. Empty where a member is missing
/// or out of range.
/// @{
ZX3DQT_EXPORT QJsonObject ToJson(Camera const& camera);
ZX3DQT_EXPORT std::optional<Camera> CameraFromJson(QJsonObject const& json);
/// @}

} // namespace zarvex::zx3DQt
