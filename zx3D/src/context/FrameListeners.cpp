// The list of frame listeners, which two threads use.
#include "FrameListeners.h"

#include <zx3D/FrameListener.h>

#include <mutex>
#include <utility>
#include <vector>

namespace zarvex::zx3D {

namespace {

struct Listeners {
    std::mutex mutex; ///< held while they are called: a listener that is gone is not called any more
    std::vector<FrameListener const*> list;
};

Listeners& GetListeners() {
    // Never destroyed: the render thread runs to the last moment of the process.
    static Listeners& listeners = *new Listeners;
    return listeners;
}

} // namespace

FrameListener::FrameListener(Function onFrameFinished) : m_onFrameFinished(std::move(onFrameFinished)) {
    Listeners& listeners = GetListeners();
    std::lock_guard const lock(listeners.mutex);
    listeners.list.push_back(this);
}

FrameListener::~FrameListener() {
    Listeners& listeners = GetListeners();
    std::lock_guard const lock(listeners.mutex);
    std::erase(listeners.list, this);
}

void NotifyFrameFinished(std::uint32_t number) {
    Listeners& listeners = GetListeners();
    std::lock_guard const lock(listeners.mutex);
    for (FrameListener const* const listener : listeners.list)
        listener->OnFrameFinished(number);
}

} // namespace zarvex::zx3D
