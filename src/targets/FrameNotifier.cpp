// From the render thread into the GUI thread's event queue.
#include <zx3DQt/FrameNotifier.h>

#include <zx3D/FrameListener.h>

#include <QMetaObject>

#include <atomic>
#include <cstdint>

namespace zarvex::zx3DQt {

namespace {

std::atomic<std::uint32_t> newestFrame;
std::atomic<bool> isAnnounced; ///< a notice is in the event queue, and will take the newest number

} // namespace

FrameNotifier& FrameNotifier::Get() {
    // Never destroyed: the render thread runs to the last moment of the process.
    static FrameNotifier& notifier = *new FrameNotifier;
    return notifier;
}

FrameNotifier::FrameNotifier()
    : m_listener(std::make_unique<zx3D::FrameListener>([this](std::uint32_t number) {
          newestFrame = number;
          if (isAnnounced.exchange(true))
              return;
          auto const tell = [this] {
              isAnnounced = false; // first: a frame that is finished from here on is another notice
              emit frameFinished(newestFrame);
          };
          QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
      })) {}

FrameNotifier::~FrameNotifier() = default;

} // namespace zarvex::zx3DQt
