// Reaches what is behind a renderer.
#pragma once

#include "PrivateMember.h"

#include "../../../src/render/Drawing.h"

#include <zx3DQt/BGFXRenderer.h>

#include <map>
#include <memory>

namespace drawing_of {

struct Pointer {
    using Type = std::unique_ptr<zarvex::zx3DQt::Drawing> zarvex::zx3DQt::BGFXRenderer::*;
};
struct FrameResources {
    using Type = zarvex::zx3DQt::ResourceStore zarvex::zx3DQt::Drawing::*;
};
struct PersistentResources {
    using Type = zarvex::zx3DQt::ResourceStore zarvex::zx3DQt::Drawing::*;
};
struct ModelTransforms {
    using Type = std::map<std::uint32_t, QMatrix4x4> zarvex::zx3DQt::Drawing::*;
};

} // namespace drawing_of

template struct Reveal<drawing_of::Pointer, &zarvex::zx3DQt::BGFXRenderer::m_drawing>;
template struct Reveal<drawing_of::FrameResources, &zarvex::zx3DQt::Drawing::m_frameResources>;
template struct Reveal<drawing_of::PersistentResources, &zarvex::zx3DQt::Drawing::m_persistentResources>;
template struct Reveal<drawing_of::ModelTransforms, &zarvex::zx3DQt::Drawing::m_modelTransforms>;

inline zarvex::zx3DQt::Drawing& DrawingOf(zarvex::zx3DQt::BGFXRenderer const& renderer) {
    return *(renderer.*Revealed<drawing_of::Pointer>::pointer);
}

/// What draw operations keep until the next frame.
inline zarvex::zx3DQt::ResourceStore& FrameResourcesOf(zarvex::zx3DQt::BGFXRenderer const& renderer) {
    return DrawingOf(renderer).*Revealed<drawing_of::FrameResources>::pointer;
}

/// What they keep for good.
inline zarvex::zx3DQt::ResourceStore& PersistentResourcesOf(zarvex::zx3DQt::BGFXRenderer const& renderer) {
    return DrawingOf(renderer).*Revealed<drawing_of::PersistentResources>::pointer;
}

/// The current model matrices by their ids; entries of earlier frames stay.
inline std::map<std::uint32_t, QMatrix4x4> const&
ModelTransformsOf(zarvex::zx3DQt::BGFXRenderer const& renderer) {
    return DrawingOf(renderer).*Revealed<drawing_of::ModelTransforms>::pointer;
}
