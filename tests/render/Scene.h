// Pictures of lines and points: drawn by the library, and drawn in software.
#pragma once

#include "OffscreenTarget.h"
#include "ReferencePicture.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <QImage>
#include <QMatrix4x4>
#include <QRect>
#include <QSize>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zarvex::testing {

constexpr QSize kSceneSize(224, 160);

using SceneLines = std::vector<zx3D::Line>;
using ScenePoints = std::vector<zx3D::Vertex::Pos3fColorRGBA>;

/// A call of DrawLines or of DrawPoints.
struct SceneCall {
    std::variant<SceneLines, ScenePoints> shapes;
    std::uint16_t size = 1; ///< width of the lines or side of the points, pixels
    std::optional<zx3D::LineStipplePattern> stipple = std::nullopt;
    QMatrix4x4 model = QMatrix4x4();
    bool isModelGivenById = false; ///< otherwise it is the current one
};

/// A picture on a target of kSceneSize, black where nothing is drawn.
struct Scene {
    std::string name;
    std::vector<SceneCall> calls;
    QRect viewport = QRect(QPoint(), kSceneSize);
    /// Changes a view in which one unit is one pixel, y down from the viewport's top left corner.
    std::function<void(zx3DQt::BGFXViewContext&)> setUpView = nullptr;
    /// Of the pixels drawn, at most this part may lie on edges.
    double maxEdges = 0.03;
};

/// Which way wide lines and large points become triangles.
enum class SpritePath { Compute, CPU };

/// The picture that the library draws.
QImage Draw(Scene const& scene, SpritePath path, zx3DQt::BGFXRenderer& renderer, OffscreenTarget& target);

/// The picture that it should draw. bgfx must run: projections depend on its range of depths.
ReferencePicture DrawReference(Scene const& scene);

} // namespace zarvex::testing
