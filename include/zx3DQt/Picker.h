// What is at a place of the picture.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/LineBatch.h>
#include <zx3DQt/MeshBatch.h>
#include <zx3DQt/PickHit.h>
#include <zx3DQt/PointBatch.h>
#include <zx3DQt/zx3DQtExport.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QObject;

namespace zarvex::zx3DQt {

class IdPass;
class PickCollection;

/// How a place is picked. A plain value.
struct PickOptions {
    double radius = 4.0; ///< how far from the place is still at it, device-independent pixels; 0 or more
    PickOrder order = PickOrder::Nearest; ///< which of several
};

/// Which elements are in a rectangle.
enum class PickRange : std::uint8_t {
    Visible, ///< those that the picture shows there, be it a pixel of them
    All      ///< those that would be shown there if nothing stood in front: needs `KeepData::Yes`
};

/// What can be picked: a function adds it, each batch as it draws it in the picture, in the same order.
class ZX3DQT_EXPORT PickScene {
public:
    /// Adds what is on the GPU of a batch. Lines count over their whole width, over the gaps of a stipple,
    /// too. What is destroyed before the answer is not in it.
    /// @{
    void Add(PointBatch& batch, PointStyle const& style = {}, QMatrix4x4 const& transform = {});
    void Add(LineBatch& batch, LineStyle const& style = {}, QMatrix4x4 const& transform = {});
    void Add(MeshBatch& batch, MeshStyle const& style = {}, QMatrix4x4 const& transform = {});
    /// @}

private:
    friend class Picker;

    PickScene() = default;

    IdPass* m_ids = nullptr; ///< one of the two
    PickCollection* m_collection = nullptr;
};

/// Finds out what a picture shows at a place, by having the GPU draw the few pixels around it once more, with
/// numbers in place of colours:
///
///     Picker picker(kPickView, [this](PickScene& scene) { scene.Add(m_edges, kEdgeStyle); }); // a member
///     // In every frame, once its view has its matrices:
///     picker.SetView(view, GetPixelRatio());
///     // When the mouse is pressed:
///     picker.Pick(event->position(), [this](std::optional<PickHit> const& hit) { Select(hit); });
///     // Once, to hear of what the pointer is over:
///     picker.Follow(this, [this](std::optional<PickHit> const& hit) { Highlight(hit); });
///
/// `Pick`, `PickRect` and `Follow` return at once. From the event loop, what is needed is recorded into the
/// next frame: the application's, if it submits one, or else one of the picker's own, which shows nothing, as
/// soon as the render thread is free for it. When the GPU has drawn that, the event loop calls the answer. So
/// an application must not leave a frame half recorded for the event loop. Requests are answered in their
/// order.
///
/// Cost: while nothing is asked, none, and no GPU memory. A pick draws the pieces of the batches that the few
/// pixels may show, into 36 bytes for each pixel, and takes five bgfx textures and a frame buffer meanwhile.
///
/// Lifetime: may be made before `Init` and outlive `Shutdown`, which answers "nothing" to what is asked then,
/// with a warning. Who is destroyed does not answer. Thread: the GUI thread. Errors: where the GPU cannot
/// read back, bgfx has no textures left, or there is no view yet, the answer is "nothing", with a warning
/// that is said once. It is neither copied nor moved.
class ZX3DQT_EXPORT Picker {
public:
    /// Adds to the scene what can be picked.
    using Scene = std::function<void(PickScene&)>;
    /// Takes what was found; empty when there is nothing.
    using Answer = std::function<void(std::optional<PickHit> const&)>;
    /// Takes what is in a rectangle, each element once, in the scene's order.
    using RectAnswer = std::function<void(std::vector<PickElement> const&)>;

    /// Draws in the bgfx view `firstView`, and copies in the next one: two ids that nothing else uses.
    Picker(bgfx::ViewId firstView, Scene scene);
    ~Picker();

    Picker(Picker const&) = delete;
    Picker& operator=(Picker const&) = delete;

    /// The view that the user looks at, of which positions are meant; `pixelRatio` is the target's, physical
    /// pixels per device-independent one.
    void SetView(BGFXViewContext const& view, double pixelRatio = 1.0);

    /// Finds what is at a place: device-independent pixels of the target, as mouse events have them.
    void Pick(QPointF const& position, Answer answer, PickOptions const& options = {});

    /// Finds what is in a rectangle.
    void PickRect(QRectF const& rect, RectAnswer answer, PickRange range = PickRange::Visible);

    /// The same, with the result: submits what was recorded so far, and waits for the GPU.
    /// @{
    std::optional<PickHit> PickNow(QPointF const& position, PickOptions const& options = {});
    std::vector<PickElement> PickRectNow(QRectF const& rect, PickRange range = PickRange::Visible);
    /// @}

    /// Answers whenever the pointer is over something else than before, nothing included: another element,
    /// not another place of the same. `target` is the window or widget that shows the view; a widget tracks
    /// the mouse from then on. Moves that come while the GPU draws are one. While a button is held, nothing
    /// changes; while pointer and view rest, nothing is done. Call it once; with null it ends.
    void Follow(QObject* target, Answer answer, PickOptions const& options = {});

private:
    class Data;
    std::shared_ptr<Data> m_data;
};

} // namespace zarvex::zx3DQt
