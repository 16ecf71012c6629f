// Start and stop of the rendering context, on a hidden widget that gives bgfx its first native window.
#include <zx3DQt/Library.h>

#include <zx3DQt/BGFXDefaultCallback.h>

#include <zx3D/Context.h>

#include "ColorConversion.h"
#include "Logging.h"

#include <QSizePolicy>
#include <QWidget>

#include <mutex>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

constexpr int kBackBufferExtent = 64; // pixels; nobody sees it

struct LibraryState {
    std::unique_ptr<QWidget> backBufferWidget; ///< its existence means "initialised"
    std::unique_ptr<bgfx::CallbackI> callback;
};

constinit std::mutex lifecycleMutex;

/// Locks the mutex for its scope, unless the thread holds it already: whoever is told of the context's end
/// may call back.
class LifecycleLock {
public:
    LifecycleLock() {
        if (isHeld)
            return;
        m_lock = std::unique_lock(lifecycleMutex);
        isHeld = true;
    }

    ~LifecycleLock() {
        if (IsOutermost())
            isHeld = false;
    }

    LifecycleLock(LifecycleLock const&) = delete;
    LifecycleLock& operator=(LifecycleLock const&) = delete;

    bool IsOutermost() const { return m_lock.owns_lock(); }

private:
    static thread_local bool isHeld;

    std::unique_lock<std::mutex> m_lock;
};

constinit thread_local bool LifecycleLock::isHeld = false;

LibraryState& GetState() {
    // Never destroyed: an application that ends without `Shutdown` leaves bgfx's render thread running, which
    // may call the callback to the last moment.
    static LibraryState& state = *new LibraryState;
    return state;
}

void CreateBackBufferWidget(std::unique_ptr<QWidget>& widget) {
    widget.reset(new QWidget(nullptr, {}));
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
    widget->setGeometry(0, 0, kBackBufferExtent, kBackBufferExtent);
    widget->hide();
}

zx3D::ContextOptions CreateContextOptions(LibraryState const& state, bool verticalSync) {
    auto const height = static_cast<std::uint32_t>(state.backBufferWidget->height());
    auto const width = static_cast<std::uint32_t>(state.backBufferWidget->width());
    auto* const window = reinterpret_cast<void*>(state.backBufferWidget->winId());
    auto options =
        zx3D::ContextOptions::Create(window, width, height, state.callback.get(),
                                     zx3D::ContextOptions::ThreadMode::MultiThreaded, verticalSync);
    options.messageHandler = LogMessage;
    return options;
}

} // namespace

bool Init(bool verticalSync, std::unique_ptr<bgfx::CallbackI> callback) {
    LifecycleLock const lock;
    LibraryState& state = GetState();
    if (state.backBufferWidget)
        return true;
    CreateBackBufferWidget(state.backBufferWidget);
    state.callback = callback ? std::move(callback) : std::make_unique<BGFXDefaultCallback>();
    return zx3D::Context::Initialize(CreateContextOptions(state, verticalSync));
}

void Shutdown() {
    LifecycleLock const lock;
    if (!lock.IsOutermost())
        return; // it is under way
    // bgfx uses the window and the callback until it has stopped.
    zx3D::Context::Shutdown();
    GetState().backBufferWidget.reset();
    GetState().callback.reset();
}

void ClearBackBufferWidget(QColor const& color) {
    constexpr bgfx::ViewId view = 0;
    LifecycleLock const lock;
    if (!zx3D::Context::IsInitialized())
        return;
    bgfx::setViewFrameBuffer(view, BGFX_INVALID_HANDLE);
    bgfx::setViewClear(view, BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, QColorToClearColor(color), 1.0f, 0);
    bgfx::touch(view);
}

QWidget* GetBackBufferWidget() {
    return GetState().backBufferWidget.get();
}

zx3D::ContextOptions const& GetZx3DContextOptions() {
    return zx3D::Context::GetOptions();
}

} // namespace zarvex::zx3DQt
