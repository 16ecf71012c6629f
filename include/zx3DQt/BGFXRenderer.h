// The object through which an application draws.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/DistanceFade.h>
#include <zx3DQt/FrameStatistics.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/Annotations.h>
#include <zx3D/DataSpan.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/Line.h>
#include <zx3D/TextHandles.h>
#include <zx3D/Vertex.h>

#include <bgfx/bgfx.h>

#include <QColor>
#include <QMatrix4x4>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QVector3D>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace zarvex::zx3DQt {

class Drawing;

/// Draws into one render target, frame by frame:
///
///     if (renderer.StartFrame(frameBuffer)) {
///         view.Submit(frameBuffer);
///         renderer.DrawTriangles(view, vertices, indices);
///         renderer.PresentCurrentAndSubmitNextFrame(false);
///     }
///
/// Lifetime: creates its bgfx resources with the first frame of a context and frees them with `CleanUp`, its
/// destructor, or the end of the context. Without a context `StartFrame` returns false; in the next one it
/// creates its resources anew.
///
/// Thread: the GUI thread, which calls bgfx's API. Errors: a missing shader program throws
/// `std::bad_optional_access`; what cannot be drawn is left out, counted and warned about. It is neither
/// copied nor moved.
class ZX3DQT_EXPORT BGFXRenderer : public QObject {
    Q_OBJECT

public:
    /// Solid geometry: writes colour and depth where the depth is less than or equal to what is there.
    static constexpr BGFXRenderState STATE_OPAQUE{BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                                                  BGFX_STATE_WRITE_Z | BGFX_STATE_DEPTH_TEST_LEQUAL};
    /// As opaque, blended by source alpha. Still writes depth: draw it after what lies behind.
    static constexpr BGFXRenderState STATE_TRANSPARENT{STATE_OPAQUE | BGFX_STATE_BLEND_ALPHA};
    /// Drawn over everything; leaves the depth as it is.
    static constexpr BGFXRenderState STATE_MARKER_OVERLAY{BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A |
                                                          BGFX_STATE_DEPTH_TEST_ALWAYS};
    /// As opaque, for vertices that are pairs of line ends.
    static constexpr BGFXRenderState STATE_LINES{STATE_OPAQUE | BGFX_STATE_PT_LINES};
    /// As opaque, for vertices that are points of one pixel.
    static constexpr BGFXRenderState STATE_POINTS{STATE_OPAQUE | BGFX_STATE_PT_POINTS};
    /// As opaque, for vertices that are joined in order.
    static constexpr BGFXRenderState STATE_LINESTRIP{STATE_OPAQUE | BGFX_STATE_PT_LINESTRIP};

    /// Creates no bgfx resource.
    explicit BGFXRenderer(QObject* parent = nullptr);
    ~BGFXRenderer() override;

    /// Creates uniforms, sampler and programs, once; `StartFrame` calls it. Throws
    /// `std::bad_optional_access` when a program cannot be created. Where bgfx has not enough uniforms left,
    /// it creates nothing: a warning is logged, nothing is drawn, and the next frame tries again.
    void Initialize();

    /// Destroys uniforms and sampler; the next frame creates them again. Programs belong to the factory.
    void CleanUp();

    /// Programs and sampler for the application's own submissions; invalid before `Initialize`. Not owned by
    /// the caller.
    /// @{
    bgfx::ProgramHandle GetBasicProgram() const;
    bgfx::ProgramHandle GetLightingProgram() const;
    bgfx::ProgramHandle GetFullscreenTextureProgram() const;
    bgfx::UniformHandle GetFullscreenTextureSampler() const;
    /// @}

    /// Tells the lighting program where the viewer is, world space, from the next draw on. bgfx keeps the
    /// value, for every renderer and in the order in which it draws, until it is set again; before the first
    /// time the view's camera counts.
    void UpdateViewPositionUniform(QVector3D const& position) const;

    /// Begins to record a frame: follows the frame buffer's requested size and frees the buffers of the frame
    /// before. Returns false when the frame buffer is collapsed, when its bgfx object could not be created,
    /// or when no context runs: draw and present nothing then. Throws as `Initialize`.
    bool StartFrame(zx3D::FrameBuffer& frameBuffer);

    /// Hands the recorded frame to bgfx and returns its number. `capture` asks bgfx to capture it for the
    /// callback. With bgfx's render thread the frame appears while the next one is recorded.
    std::uint32_t PresentCurrentAndSubmitNextFrame(bool capture);

    /// Hands the recorded frame to bgfx together with an empty one after it, so that the recorded one has
    /// been rendered when the call returns. Returns the number of the second.
    std::uint32_t PresentSubmittedFrame(bool capture);

    /// Makes `matrix` (model to world) the current transform, which draw operations use unless they are given
    /// another one. The id means this matrix until the frame is presented.
    ModelTransformCacheId SetModelTransform(QMatrix4x4 const& matrix);

    /// The current transform; the identity before the first was set.
    QMatrix4x4 GetModelTransform() const;

    /// What the frame being recorded consists of so far, or after it was presented the last one: from a call
    /// of `StartFrame` to the next that finds a frame buffer with a size.
    FrameStatistics GetFrameStatistics() const;

    /// How many bytes of their data batches may hand to bgfx in one frame of this renderer's: 16 MiB unless
    /// told otherwise. What is more follows in the next frames, so that a large batch never stops a window.
    /// @{
    void SetUploadBudget(std::uint64_t bytesPerFrame);
    std::uint64_t GetUploadBudget() const;
    /// @}

    // Draw operations. Each submits into the bgfx view of `view` at once and copies its data. Common to all:
    // - an empty span draws nothing;
    // - an absent `modelTransform` means the current one, an absent `state` the operation's own;
    // - what one frame draws lives in bgfx's transient buffers (of the sizes in `zx3D::ContextOptions`), wide
    //   lines and large points excepted while bgfx has buffers for them. A submission that no longer fits is
    //   left out; of a call of points those are drawn that fit. A debug build of bgfx stops at the latter
    //   with an assertion. What is left out is counted (`GetFrameStatistics`), and a warning is logged.

    /// Draws segments, `STATE_LINES` unless told otherwise. Of `width` pixels, rounded, halves away from
    /// zero: up to 1 they are thin lines of one pixel, above they are wide lines: rectangles on the screen,
    /// which take `STATE_OPAQUE` for their own state and a state of triangles. At most 65535.
    ///
    /// The width does not change with distance. `stipple` runs along each segment from its start, in pixels;
    /// along a wide line that comes from behind the camera, from the near plane. Absent, the lines are solid.
    /// Any count: above 32,768 thin or 262,144 wide lines bgfx gets several draw calls.
    void DrawLines(BGFXViewContext const& view, zx3D::DataSpan<zx3D::Line const> lines,
                   std::optional<float> width = std::nullopt,
                   std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                   std::optional<zx3D::LineStipplePattern> const& stipple = std::nullopt,
                   std::optional<BGFXRenderState> state = std::nullopt) const;

    /// Draws a line strip: joins the positions in the order of `indices`, or in their own order when there
    /// are fewer than two indices. A pair of equal indices, or with one beyond the positions, makes no
    /// segment. The rest as above; a stipple starts again at every segment.
    void DrawLines(BGFXViewContext const& view, zx3D::DataSpan<QVector3D const> positions,
                   zx3D::DataSpan<std::uint16_t const> indices, QColor const& color,
                   std::optional<float> width = std::nullopt,
                   std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                   std::optional<zx3D::LineStipplePattern> const& stipple = std::nullopt,
                   std::optional<BGFXRenderState> state = std::nullopt) const;

    /// Draws segments that disappear with distance, as the first `DrawLines` otherwise. For their own state
    /// they are blended by alpha, over what is there, and leave the depth as it is; the target's alpha grows
    /// by theirs. A `state` that is given has to blend, too. Where a view's matrices cannot be inverted, the
    /// lines do not fade; nor, with a warning, where bgfx has no uniforms left for it.
    ///
    /// In a view of the default mode they come after all opaque geometry. The first call in a run of the
    /// context creates the programs.
    void DrawFadingLines(BGFXViewContext const& view, zx3D::DataSpan<zx3D::Line const> lines,
                         DistanceFade const& fade, std::optional<float> width = std::nullopt,
                         std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                         std::optional<zx3D::LineStipplePattern> const& stipple = std::nullopt,
                         std::optional<BGFXRenderState> state = std::nullopt) const;

    /// Draws points. With a `size` of 2 or more they are squares of that many pixels whatever their distance,
    /// `STATE_OPAQUE` unless `state`, of triangles, is given; above 262,144 bgfx gets several draw calls.
    /// Otherwise they are single pixels, always in `STATE_POINTS`.
    void DrawPoints(BGFXViewContext const& view, zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> points,
                    std::optional<std::uint16_t> size = std::nullopt,
                    std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                    std::optional<BGFXRenderState> state = std::nullopt) const;

    /// Draws triangles of interpolated vertex colours, without light, `STATE_OPAQUE` unless told otherwise.
    /// `indices` are taken three by three into `vertices`, and not checked.
    void DrawTriangles(BGFXViewContext const& view,
                       zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                       zx3D::DataSpan<std::uint16_t const> indices,
                       std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                       std::optional<BGFXRenderState> state = std::nullopt) const;

    /// Draws lit triangles of both sides, `STATE_TRANSPARENT` unless told otherwise, with the lighting
    /// program unless `program` is given. `indices` as above.
    ///
    /// The lighting program reads the material, the lights and the view position that were set before the
    /// call. Without a material the vertex colours are the surface's; without any light the viewer carries
    /// one.
    void DrawTriangles(BGFXViewContext const& view,
                       zx3D::DataSpan<zx3D::Vertex::Pos3fNormal3fColorRGBA const> vertices,
                       zx3D::DataSpan<std::uint16_t const> indices,
                       std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                       std::optional<BGFXRenderState> state = std::nullopt,
                       std::optional<bgfx::ProgramHandle> program = std::nullopt) const;

    /// Draws text at a pen position, pixels from the target's top left, y down, over everything that the view
    /// has drawn; among texts the one of greater depth lies on top. `alignment` puts the text beside the pen:
    /// `Qt::AlignRight` ends there, `Qt::AlignHCenter` is centred on it, anything else begins there;
    /// `Qt::AlignBottom`, `Qt::AlignVCenter` and the rest likewise from top to bottom. Right wins over
    /// centre, bottom over centre.
    ///
    /// A string that was drawn lately in the same font is not shaped again.
    void RenderText(BGFXViewContext const& view, std::pair<QPointF const, int> const& positionAndDepth,
                    QString const& text, zx3D::FontHandle font, QColor const& color,
                    QFlags<Qt::AlignmentFlag> alignment) const;

    /// The same at depth 0.
    void RenderText(BGFXViewContext const& view, QPointF const& position, QString const& text,
                    zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment) const;

    /// The same where a world position appears in the view. Nothing for one behind the camera.
    void RenderText(BGFXViewContext const& view, bx::Vec3 const& worldPosition, QString const& text,
                    zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment) const;

    /// The same turned about the pen, anticlockwise as it is seen, by an angle in degrees; see
    /// `zx3D::SetTextAngle`.
    /// @{
    void RenderText(BGFXViewContext const& view, std::pair<QPointF const, int> const& positionAndDepth,
                    QString const& text, zx3D::FontHandle font, QColor const& color,
                    QFlags<Qt::AlignmentFlag> alignment, float angle) const;
    void RenderText(BGFXViewContext const& view, QPointF const& position, QString const& text,
                    zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment,
                    float angle) const;
    void RenderText(BGFXViewContext const& view, bx::Vec3 const& worldPosition, QString const& text,
                    zx3D::FontHandle font, QColor const& color, QFlags<Qt::AlignmentFlag> alignment,
                    float angle) const;
    /// @}

    /// Draws texts, boxes, lines and arrow heads that were collected, over what the view has drawn; see
    /// `zx3D::Annotations`. Those without room in the transient vertices are left out.
    void DrawAnnotations(BGFXViewContext const& view, zx3D::Annotations const& annotations,
                         zx3D::AnnotationDepth depth = zx3D::AnnotationDepth::Ignored) const;

    /// Covers a view with a texture, sampled as the texture's own flags say. The colours replace what is
    /// there; the depth stays. The colour texture of a frame buffer appears upright on every backend. The
    /// view must have been submitted (`BGFXViewContext::Submit`); its matrices do not matter.
    void DrawFullscreenTexture(std::uint16_t viewId, bgfx::TextureHandle texture) const;

private:
    friend class LineBatch; // draw through the same inside
    friend class MeshBatch;
    friend class PointBatch;

    std::unique_ptr<Drawing> m_drawing;
};

} // namespace zarvex::zx3DQt
