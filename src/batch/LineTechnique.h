// With which program and state lines of a style are drawn, and what it is told of them.
#pragma once

#include "BatchUniforms.h"

#include <zx3DQt/LineBatch.h>

#include <cstdint>

namespace zarvex::zx3DQt {

/// What a batch has.
enum class LineKind : std::uint8_t { Segments, Polylines };

/// The programs differ by what a style needs, so that nobody pays for more.
class LineTechnique {
public:
    /// `isInFront`: no line that the view may show reaches behind the camera.
    LineTechnique(LineStyle const& style, LineKind kind, BGFXViewContext const& view, bool isInFront);

    char const* GetVertexShader() const { return m_vertexShader; }
    char const* GetFragmentShader() const { return m_fragmentShader; }
    /// Whether they are the GPU's own lines, of two vertices; otherwise rectangles of four.
    bool IsThin() const { return m_isThin; }
    BGFXRenderState GetState() const { return m_state; }

    /// Whether the stipple runs on along polylines, which `LineRun` measures.
    bool RunsOn() const { return m_runsOn; }

    /// For the next submission.
    void SetUniforms(BatchUniforms const& uniforms, LineStyle const& style,
                     BGFXViewContext const& view) const;

private:
    char const* m_vertexShader;
    char const* m_fragmentShader = "fs_basic";
    BGFXRenderState m_state;
    bool m_isThin = false;
    bool m_isStippled = false;
    bool m_runsOn = false;
};

/// How wide and deep lines are, and their ends and joins, for the next submission.
/// @{
void SetLineSize(BatchUniforms const& uniforms, LineStyle const& style, BGFXViewContext const& view);
void SetLineShape(BatchUniforms const& uniforms, LineStyle const& style);
/// @}

/// Pixels after which the stipple begins again.
float PatternLengthOf(LineStyle const& style);

/// How far lines reach beyond their vertices: pixels, and world units.
struct LineReach {
    float pixels;
    float world;
};
LineReach ReachOf(LineStyle const& style);

} // namespace zarvex::zx3DQt
