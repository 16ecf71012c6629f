// The two update events and their types.
#include <zx3DQt/UpdateEvents.h>

#include <QPaintEvent>
#include <QResizeEvent>

namespace zarvex::zx3DQt {

// Defined in one file, so that they are registered in this order.
QEvent::Type UpdateFrameBufferEvent::EventType = static_cast<QEvent::Type>(QEvent::registerEventType());
QEvent::Type UpdateViewportEvent::EventType = static_cast<QEvent::Type>(QEvent::registerEventType());

UpdateFrameBufferEvent::UpdateFrameBufferEvent() : QEvent(EventType) {}

UpdateFrameBufferEvent::UpdateFrameBufferEvent(QSize const& size) : QEvent(EventType), m_size(size) {}

UpdateFrameBufferEvent::UpdateFrameBufferEvent(QResizeEvent* event) : QEvent(EventType) {
    if (event != nullptr)
        m_size = event->size();
}

UpdateFrameBufferEvent::UpdateFrameBufferEvent(UpdateFrameBufferEvent const&) = default;
UpdateFrameBufferEvent& UpdateFrameBufferEvent::operator=(UpdateFrameBufferEvent const&) = default;
UpdateFrameBufferEvent::~UpdateFrameBufferEvent() = default;

UpdateViewportEvent::UpdateViewportEvent() : QEvent(EventType) {}

UpdateViewportEvent::UpdateViewportEvent(QRegion const& region) : QEvent(EventType), m_region(region) {}

UpdateViewportEvent::UpdateViewportEvent(QPaintEvent* event) : QEvent(EventType) {
    if (event != nullptr)
        m_region = event->region();
}

UpdateViewportEvent::UpdateViewportEvent(UpdateViewportEvent const&) = default;
UpdateViewportEvent& UpdateViewportEvent::operator=(UpdateViewportEvent const&) = default;
UpdateViewportEvent::~UpdateViewportEvent() = default;

} // namespace zarvex::zx3DQt
