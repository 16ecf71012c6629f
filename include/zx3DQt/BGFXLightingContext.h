// The lights of a scene.
#pragma once

#include <zx3DQt/BGFXPointLightSource.h>
#include <zx3DQt/zx3DQtExport.h>

#include <map>
#include <string>

namespace zarvex::zx3DQt {

/// Holds lights and submits them together:
///
///     auto lamp = BGFXPointLightSourceBuilder().DefaultDiffuse().SetName("u_light0").Build();
///     lamp.CreateUniforms();      // once in the context it can only be read
///     lights.Add(std::move(lamp));
///     ...
///     lights.Submit();            // before each draw with the lighting program
///
/// To move or recolour a light, to remove one, or to replace all: `ClearAll`, add what is to be there,
/// `Submit`. A light that was cleared and not added again is turned off by that `Submit`, and one of the
/// lighting program's, "u_light0" to "u_light7", by all that follow, too, until somebody else submits a light
/// of its name. A context that is destroyed leaves its lights shining: clear it and submit it before a draw.
///
/// Lifetime: owns its lights. Thread: the GUI thread.
class ZX3DQT_EXPORT BGFXLightingContext {
public:
    /// Without lights.
    BGFXLightingContext();
    ~BGFXLightingContext();

    /// Takes a light and returns its id. Ids count from 1 and are never used again.
    int Add(BGFXPointLightSource light);

    /// The light of that id. Throws `std::out_of_range` for an unknown one.
    BGFXPointLightSource const& Get(int id) const;

    /// The number of lights.
    unsigned long long GetCount() const { return m_lights.size(); }
    /// True when there is no light.
    bool IsEmpty() const { return m_lights.empty(); }

    /// Destroys all lights, and their uniforms.
    void ClearAll();

    /// Sets the uniforms of all lights, in the order of their ids, for the next draw.
    void Submit() const;

private:
    friend class SurfaceLight; // has batches lit by them

    void SubmitDarkness() const;

    [[maybe_unused]] int m_reserved = -1;
    int m_nextId = 1;
    std::map<int, BGFXPointLightSource> m_lights;
    /// Lights that do not shine, by the names of those that were cleared and would shine on.
    mutable std::map<std::string, BGFXPointLightSource> m_dark;
};

} // namespace zarvex::zx3DQt
