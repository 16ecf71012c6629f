// The object through which an application draws.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/RenderTypes.h>
#include <zx3DQt/zx3DQtExport.h>

#include <zx3D/ContextListener.h>
#include <zx3D/DataSpan.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/Line.h>
#include <zx3D/Vertex.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>
#include <QObject>
#include <QVector3D>

#include <any>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace zarvex::zx3DQt {

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
/// Thread: the GUI thread, which calls bgfx's API. Errors: none are reported, except that a missing shader
/// program throws `std::bad_optional_access`. It is neither copied nor moved.
class ZX3DQT_EXPORT BGFXRenderer : public QObject, private zx3D::ContextListener {
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
    /// `std::bad_optional_access` when a program cannot be created.
    void Initialize();

    /// Destroys uniforms and sampler; the next frame creates them again. Programs belong to the factory.
    void CleanUp();

    /// Programs and sampler for the application's own submissions; invalid before `Initialize`. Not owned by
    /// the caller.
    bgfx::ProgramHandle GetBasicProgram() const { return m_basicProgram; }
    bgfx::ProgramHandle GetLightingProgram() const { return m_lightingProgram; }
    bgfx::ProgramHandle GetFullscreenTextureProgram() const { return m_fullscreenTextureProgram; }
    bgfx::UniformHandle GetFullscreenTextureSampler() const { return m_fullscreenTextureSampler; }

    /// Tells the lighting program where the viewer is, world space, for the next draw.
    void UpdateViewPositionUniform(QVector3D const& position) const;

    /// Begins to record a frame: follows the frame buffer's requested size and frees the buffers of the frame
    /// before. Returns false, having done nothing, when the frame buffer is collapsed or no context runs:
    /// draw and present nothing then. Throws as `Initialize`.
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

    /// Draws triangles of interpolated vertex colours, without light. `indices` are taken three by three into
    /// `vertices`, and not checked. An empty span of either draws nothing. An absent `modelTransform` means
    /// the current one, an absent `state` `STATE_OPAQUE`. The data are copied.
    void DrawTriangles(BGFXViewContext const& view,
                       zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const> vertices,
                       zx3D::DataSpan<std::uint16_t const> indices,
                       std::optional<ModelTransformCacheId> modelTransform = std::nullopt,
                       std::optional<BGFXRenderState> state = std::nullopt) const;

private:
    /// Per-frame and persistent buffers of the draw operations, by the tag of their kind.
    using ResourceStore = std::map<std::uint8_t, std::vector<std::any>>;

    void OnContextStopping() override;

    void InitUniforms();
    void InitTextureSamplers();
    void InitPrograms();

    void UpdateLineStippleUniform(zx3D::LineStipplePattern const& stipple) const;
    void UpdateLineStyleUniform(zx3D::LineStyle const& style) const;
    void UpdatePointSpriteUniform(std::uint32_t pointCount, std::uint32_t size) const;
    void UpdateRectangleSpriteUniform(std::uint32_t lineCount, std::uint32_t width) const;
    void UpdateViewportUniform(BGFXViewContext const& view) const;
    void UpdateDepthOffsetBiasUniform(float offset, float bias) const;

    void SetTransform(std::optional<ModelTransformCacheId> modelTransform) const;

    bool m_initialized = false;
    std::uint32_t m_modelTransformId = 0;

    bgfx::UniformHandle m_lineStippleUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_lineStyleUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_pointSpriteUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_rectangleSpriteUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_viewportUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_viewPositionUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_depthOffsetBiasUniform = BGFX_INVALID_HANDLE;
    bgfx::UniformHandle m_fullscreenTextureSampler = BGFX_INVALID_HANDLE;

    bgfx::ProgramHandle m_basicProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_lightingProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_dashedLineProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_stippledLineProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_pointSpriteComputeProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_pointSpriteProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_rectangleSpriteComputeProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_rectangleSpriteProgram = BGFX_INVALID_HANDLE;
    bgfx::ProgramHandle m_fullscreenTextureProgram = BGFX_INVALID_HANDLE;

    ResourceStore m_frameResources;
    ResourceStore m_persistentResources;
    std::map<std::uint32_t, QMatrix4x4> m_modelTransforms;
};

} // namespace zarvex::zx3DQt
