// Notices from a widget to the window that it embeds.
#pragma once

#include <zx3DQt/zx3DQtExport.h>

#include <QEvent>
#include <QRegion>
#include <QSize>

#include <optional>

class QPaintEvent;
class QResizeEvent;

namespace zarvex::zx3DQt {

/// Says that the frame buffer must follow a new size.
///
/// An argument of signals and slots, never posted: it lives on the sender's stack until the signal returns,
/// so receivers must not keep its address. `clone()` gives a plain QEvent without the size.
class ZX3DQT_EXPORT UpdateFrameBufferEvent : public QEvent {
public:
    /// The event type of this class, registered when the library is loaded.
    static QEvent::Type EventType;

    /// Carries no size.
    UpdateFrameBufferEvent();
    /// Carries a size in device-independent pixels.
    UpdateFrameBufferEvent(QSize const& size);
    /// Takes the new size of the resize event; from a null pointer, none.
    UpdateFrameBufferEvent(QResizeEvent* event);
    /// Copies carry the same size.
    /// @{
    UpdateFrameBufferEvent(UpdateFrameBufferEvent const&);
    UpdateFrameBufferEvent& operator=(UpdateFrameBufferEvent const&);
    /// @}
    ~UpdateFrameBufferEvent() override;

    /// The new size in device-independent pixels, if the event carries one.
    std::optional<QSize> maybeSize() const { return m_size; }

private:
    std::optional<QSize> m_size;
};

/// Says that the viewport must follow a new paint region. Passed like `UpdateFrameBufferEvent`.
class ZX3DQT_EXPORT UpdateViewportEvent : public QEvent {
public:
    /// The event type of this class, registered when the library is loaded.
    static QEvent::Type EventType;

    /// Carries no region.
    UpdateViewportEvent();
    /// Carries a region in device-independent pixels.
    UpdateViewportEvent(QRegion const& region);
    /// Takes the region of the paint event; from a null pointer, none.
    UpdateViewportEvent(QPaintEvent* event);
    /// Copies carry the same region.
    /// @{
    UpdateViewportEvent(UpdateViewportEvent const&);
    UpdateViewportEvent& operator=(UpdateViewportEvent const&);
    /// @}
    ~UpdateViewportEvent() override;

    /// The region to be painted in device-independent pixels, if the event carries one.
    std::optional<QRegion> maybeRegion() const { return m_region; }

private:
    std::optional<QRegion> m_region;
};

} // namespace zarvex::zx3DQt
