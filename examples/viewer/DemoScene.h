// What the library can draw, in one picture: shown while there is no mesh.
#pragma once

#include "Canvas.h"
#include "DemoGeometry.h"

#include <zx3DQt/BGFXMaterial.h>

namespace viewer {

/// Exhibits on a grid, around the coordinate axes. z is up.
///
/// Lifetime: creates its uniforms with the first frame; destroy it while bgfx runs.
class DemoScene {
public:
    DemoScene();

    static Box GetBox();

    void Draw(Canvas const& canvas);

private:
    void CreateUniformsOnce();
    void DrawGridAndAxes(Canvas const& canvas) const;
    void DrawLinesAndPoints(Canvas const& canvas) const;
    void DrawTriangles(Canvas const& canvas) const;
    void DrawShapes(Canvas const& canvas) const;
    void DrawTitles(Canvas const& canvas) const;

    DemoGeometry m_geometry;
    bool m_hasUniforms = false;
    zarvex::zx3DQt::BGFXMaterial m_gold;
};

} // namespace viewer
