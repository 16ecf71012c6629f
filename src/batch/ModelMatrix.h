// Where a batch is in a view.
#pragma once

#include <zx3DQt/WorldPosition.h>

#include <QMatrix4x4>

namespace zarvex::zx3DQt {

/// From a batch's coordinates to the view's: the origins' distance is small where both are large.
inline QMatrix4x4 ModelMatrix(WorldPosition const& batchOrigin, WorldPosition const& viewOrigin,
                              QMatrix4x4 const& transform) {
    QMatrix4x4 model;
    model.translate(static_cast<float>(batchOrigin.x - viewOrigin.x),
                    static_cast<float>(batchOrigin.y - viewOrigin.y),
                    static_cast<float>(batchOrigin.z - viewOrigin.z));
    return model * transform;
}

} // namespace zarvex::zx3DQt
