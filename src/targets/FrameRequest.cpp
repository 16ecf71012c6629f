// Asking, and telling who was asked for.
#include "FrameRequest.h"

#include <QCoreApplication>
#include <QEvent>

#include <cstdint>
#include <pthread.h>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

/// The address behind the oldest frame of the calling thread's stack; 0 where the system does not tell.
std::uintptr_t FindEndOfStack() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return 0;
    void* begin = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &begin, &size);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(begin) + size;
}

} // namespace

FrameRequest::FrameRequest(std::function<void()> paint) : m_paint(std::move(paint)) {}

void FrameRequest::Ask() {
    m_isOpen = true;
    // Qt's own requests have the low priority.
    if (!std::exchange(m_isPosted, true))
        QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority - 1);
}

void FrameRequest::AskAgain() {
    if (m_isOpen)
        Ask();
}

bool FrameRequest::event(QEvent* event) {
    if (event->type() != QEvent::UpdateRequest)
        return QObject::event(event);
    m_isPosted = false;
    if (m_isOpen)
        m_paint();
    return true;
}

bool WasSent(QEvent const& event) {
    // Qt does not say. But what it sends lies on the stack, and what was posted was allocated.
    static thread_local std::uintptr_t const endOfStack = FindEndOfStack();
    auto const here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    auto const place = reinterpret_cast<std::uintptr_t>(&event);
    return here < place && place < endOfStack;
}

} // namespace zarvex::zx3DQt
