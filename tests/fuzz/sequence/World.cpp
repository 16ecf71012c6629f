// The steps.
#include "World.h"

#include "HostileData.h"

#include <zx3DQt/Library.h>

#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <harness/TroubleCallback.h>

#include <QApplication>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QMainWindow>

#include <algorithm>
#include <string>
#include <utility>

namespace zarvex::fuzz {

namespace {

constexpr std::size_t kMostOfAKind = 3;

/// Sides of targets, mostly small: pixels are drawn in software.
int Side(Random& random) {
    constexpr int kSides[] = {1, 2, 17, 64, 100, 300};
    return random.PickFrom(kSides);
}

/// As above, or a size that no GPU has or that wraps somewhere; one side then stays small.
QSize Size(Random& random) {
    QSize size(Side(random), Side(random));
    constexpr int kHostile[] = {0, -1, 16384, 16385, 20000, 32767};
    if (random.OneIn(12))
        (random.OneIn(2) ? size.rwidth() : size.rheight()) = random.PickFrom(kHostile);
    return size;
}

bool CanReadBack() {
    constexpr std::uint64_t kNeeded = BGFX_CAPS_TEXTURE_BLIT | BGFX_CAPS_TEXTURE_READ_BACK;
    return zx3D::Context::IsInitialized() && (bgfx::getCaps()->supported & kNeeded) == kNeeded;
}

} // namespace

World::NamedStep const World::kSteps[] = {
    {"create window", &World::CreateWindow},
    {"create native widget", &World::CreateNativeWidget},
    {"create off-screen widget", &World::CreateOffscreenWidget},
    {"create dock", &World::CreateDock},
    {"show or hide", &World::ShowOrHide},
    {"show or hide", &World::ShowOrHide},
    {"change state", &World::ChangeState},
    {"resize widget", &World::ResizeWidget},
    {"resize window", &World::ResizeWindow},
    {"reparent", &World::Reparent},
    {"close", &World::Close},
    {"destroy", &World::Destroy},
    {"ask for paint", &World::AskForPaint},
    {"capture", &World::Capture},
    {"handle events", &World::HandleEvents},
    {"handle events", &World::HandleEvents},
    {"handle events", &World::HandleEvents},
    {"draw window", &World::DrawWindow},
    {"draw unattached", &World::DrawUnattached},
    {"draw unattached", &World::DrawUnattached},
    {"interleave renderers", &World::InterleaveRenderers},
    {"resize frame buffer", &World::ResizeFrameBuffer},
    {"exchange frame buffers", &World::ExchangeFrameBuffers},
    {"change lights", &World::ChangeLights},
    {"change font", &World::ChangeFont},
    {"change batches", &World::ChangeBatches},
    {"change batches", &World::ChangeBatches},
    {"stop and start", &World::StopAndStart},
};

World::World(std::uint64_t seed, std::vector<bgfx::RendererType::Enum> backends)
    : m_random(seed),
      m_backends(std::move(backends)) {
    Start();
    for (int count = 0; count < 3; ++count)
        m_frameBuffers.emplace_back(nullptr, bgfx::TextureFormat::RGBA8, bgfx::TextureFormat::D16);
    m_shared.texture = &m_frameBuffers.back();
    m_next = &m_random.PickFrom(kSteps);
}

World::~World() {
    if (m_random.OneIn(2))
        m_windows.clear();
    if (m_random.OneIn(2))
        m_lights.ClearAll();
    zx3DQt::Shutdown();
    for (QPointer<QWidget> const& widget : m_widgets)
        delete widget.data();
    for (QPointer<QWidget> const& host : m_hosts)
        delete host.data();
    zx3D::DestroyFont(m_shared.font);
}

void World::Start() {
    zx3D::Context::PreferRenderer(m_random.OneIn(2) ? m_backends.front()
                                                    : m_backends[m_random.Below(m_backends.size())]);
    zx3DQt::Init(false, std::make_unique<testing::TroubleCallback>());
}

void World::TakeStep() {
    (this->*m_next->step)();
    m_next = &m_random.PickFrom(kSteps);
}

QWidget* World::PickWidget() {
    std::erase_if(m_widgets, [](QPointer<QWidget> const& widget) { return widget.isNull(); });
    return m_widgets.empty() ? nullptr : m_widgets[m_random.Below(m_widgets.size())].data();
}

Window* World::PickWindow() {
    return m_windows.empty() ? nullptr : m_windows[m_random.Below(m_windows.size())].get();
}

void World::Adopt(std::unique_ptr<QWidget> widget) {
    m_widgets.emplace_back(widget.release());
}

void World::CreateWindow() {
    std::uint64_t const seed = m_random.NewSeed();
    if (!zx3D::Context::IsInitialized() || m_windows.size() == kMostOfAKind)
        return;
    m_windows.push_back(std::make_unique<Window>(m_shared, seed));
    m_windows.back()->resize(80, 60);
    m_windows.back()->show();
}

void World::CreateNativeWidget() {
    std::uint64_t const seed = m_random.NewSeed();
    if (!zx3D::Context::IsInitialized() || m_widgets.size() >= 2 * kMostOfAKind)
        return;
    Adopt(std::make_unique<NativeWidget>(m_shared, seed));
    m_widgets.back()->show();
}

void World::CreateOffscreenWidget() {
    std::uint64_t const seed = m_random.NewSeed();
    if (!CanReadBack() || m_widgets.size() >= 2 * kMostOfAKind)
        return;
    Adopt(std::make_unique<OffscreenWidget>(m_shared, seed));
    m_widgets.back()->show();
}

void World::CreateDock() {
    if (m_hosts.size() == kMostOfAKind)
        return;
    auto* const host = new QMainWindow;
    host->resize(200, 150);
    host->addDockWidget(Qt::LeftDockWidgetArea, new QDockWidget);
    host->show();
    m_hosts.emplace_back(host);
}

void World::ShowOrHide() {
    bool const isShown = m_random.OneIn(2);
    if (m_random.OneIn(3)) {
        if (Window* const window = PickWindow())
            window->setVisible(isShown);
    } else if (QWidget* const widget = PickWidget()) {
        widget->setVisible(isShown);
    }
}

void World::ChangeState() {
    constexpr Qt::WindowState kStates[] = {Qt::WindowMinimized, Qt::WindowMaximized, Qt::WindowNoState};
    Qt::WindowState const state = m_random.PickFrom(kStates);
    if (m_random.OneIn(2)) {
        if (Window* const window = PickWindow())
            window->setWindowState(state);
    } else if (QWidget* const widget = PickWidget()) {
        widget->window()->setWindowState(state);
    }
}

void World::ResizeWidget() {
    QSize const size = Size(m_random);
    if (QWidget* const widget = PickWidget())
        widget->resize(size);
}

void World::ResizeWindow() {
    QSize const size = Size(m_random);
    if (Window* const window = PickWindow())
        window->resize(size);
}

void World::Reparent() {
    QWidget* const widget = PickWidget();
    std::erase_if(m_hosts, [](QPointer<QWidget> const& host) { return host.isNull(); });
    if (widget == nullptr || m_hosts.empty())
        return;
    QWidget* const host = m_hosts[m_random.Below(m_hosts.size())];
    auto* const dock = host->findChild<QDockWidget*>();
    switch (m_random.Below(4)) {
    case 0:
        widget->setParent(nullptr);
        break;
    case 1:
        widget->setParent(host);
        break;
    case 2:
        if (dock->widget() == nullptr)
            dock->setWidget(widget);
        break;
    default:
        dock->setFloating(!dock->isFloating());
    }
    if (m_random.OneIn(2))
        widget->show();
}

void World::Close() {
    if (m_random.OneIn(2)) {
        if (Window* const window = PickWindow())
            window->close();
    } else if (QWidget* const widget = PickWidget()) {
        widget->window()->close();
    }
}

void World::Destroy() {
    switch (m_random.Below(3)) {
    case 0:
        if (!m_windows.empty())
            m_windows.erase(m_windows.begin() + m_random.Between(0, static_cast<int>(m_windows.size()) - 1));
        break;
    case 1:
        delete PickWidget();
        break;
    default:
        if (!m_hosts.empty()) {
            delete m_hosts.back().data();
            m_hosts.pop_back();
        }
    }
}

void World::AskForPaint() {
    QWidget* const widget = PickWidget();
    if (widget == nullptr)
        return;
    switch (m_random.Below(3)) {
    case 0:
        return widget->update();
    case 1:
        return widget->update(1, 1, 9, 9);
    default:
        return widget->repaint();
    }
}

void World::Capture() {
    QSize size = Size(m_random);
    if (m_random.OneIn(16))
        size = QSize(65537, 65537);
    QWidget* const widget = PickWidget();
    if (auto* const native = dynamic_cast<NativeWidget*>(widget))
        native->RenderPixmap(size.width(), size.height());
    else if (auto* const offscreen = dynamic_cast<OffscreenWidget*>(widget))
        offscreen->RenderPixmap(size);
    if (widget != nullptr && m_random.OneIn(2))
        widget->grab();
}

void World::HandleEvents() {
    QElapsedTimer timer;
    timer.start();
    do
        QApplication::processEvents(QEventLoop::AllEvents, 5);
    while (timer.elapsed() < 5);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void World::DrawWindow() {
    if (Window* const window = PickWindow())
        window->DrawFrame();
}

void World::DrawUnattached() {
    zx3D::FrameBuffer& frameBuffer = m_frameBuffers[m_random.Below(m_frameBuffers.size())];
    zx3DQt::BGFXRenderer& renderer = m_renderers[m_random.Below(m_renderers.size())];
    Random random(m_random.NewSeed());
    if (!renderer.StartFrame(frameBuffer))
        return;
    DrawSomething(random, renderer, frameBuffer, QRect(0, 0, frameBuffer.GetWidth(), frameBuffer.GetHeight()),
                  {20, 8}, m_shared.For(frameBuffer));
    renderer.PresentSubmittedFrame(random.OneIn(8));
}

void World::InterleaveRenderers() {
    Random random(m_random.NewSeed());
    std::array<bool, 2> isStarted{};
    for (std::size_t i = 0; i < 2; ++i)
        isStarted[i] = m_renderers[i].StartFrame(m_frameBuffers[i]);
    for (int turn = 0; turn < 4; ++turn) {
        std::size_t const i = random.Below(2);
        if (!isStarted[i])
            continue;
        zx3D::FrameBuffer const& frameBuffer = m_frameBuffers[i];
        DrawSomething(random, m_renderers[i], frameBuffer,
                      QRect(0, 0, frameBuffer.GetWidth(), frameBuffer.GetHeight()),
                      {static_cast<bgfx::ViewId>(30 + 8 * i), 8}, m_shared.For(frameBuffer));
    }
    if (isStarted[0] || isStarted[1])
        m_renderers[isStarted[0] ? 0 : 1].PresentCurrentAndSubmitNextFrame(false);
}

void World::ResizeFrameBuffer() {
    zx3D::FrameBuffer& frameBuffer = m_frameBuffers[m_random.Below(m_frameBuffers.size())];
    if (m_random.OneIn(4))
        return frameBuffer.Destroy();
    QSize const size = Size(m_random);
    frameBuffer.RequestResize(static_cast<std::uint16_t>(size.width()),
                              static_cast<std::uint16_t>(size.height()));
    if (m_random.OneIn(2))
        frameBuffer.SubmitOnDemand();
}

void World::ExchangeFrameBuffers() {
    Window* const one = PickWindow();
    Window* const other = PickWindow();
    if (one == nullptr)
        return;
    zx3D::FrameBuffer const frameBuffer = one->GetFrameBuffer();
    one->SetFrameBuffer(other->GetFrameBuffer());
    if (m_random.OneIn(2))
        one->DrawFrame();
    if (!m_random.OneIn(8)) // otherwise both keep the same
        one->SetFrameBuffer(frameBuffer);
}

void World::ChangeLights() {
    if (!zx3D::Context::IsInitialized())
        return;
    switch (m_random.Below(5)) {
    case 0:
        if (!std::exchange(m_materialHasUniforms, true))
            m_material.CreateUniforms();
        return;
    case 1:
        if (std::exchange(m_materialHasUniforms, false))
            m_material.DestroyUniforms();
        return;
    case 2:
        return m_material.Submit(); // with uniforms, without, or with those of another run
    case 3: {
        zx3DQt::BGFXPointLightSource light("u_light" + std::to_string(m_random.Below(8)));
        light.SetDiffuse(RgbColor(m_random));
        if (!m_random.OneIn(4))
            light.CreateUniforms();
        m_lights.Add(std::move(light));
        return m_lights.Submit();
    }
    default:
        m_lights.ClearAll();
        return m_lights.Submit();
    }
}

void World::ChangeFont() {
    constexpr std::uint16_t kSizes[] = {0, 1, 12, 60, 512, 513};
    zx3D::DestroyFont(m_shared.font); // what draws on with its handle draws nothing
    if (m_random.OneIn(3))
        return;
    if (auto const font = zx3D::LoadDefaultFont(m_random.PickFrom(kSizes)))
        m_shared.font = *font;
}

void World::ChangeBatches() {
    Random random(m_random.NewSeed());
    m_shared.batches.Change(random);
}

void World::StopAndStart() {
    if (zx3DQt::GetBackBufferWidget() != nullptr && !m_random.OneIn(4))
        return; // starting takes most of a second
    zx3DQt::Shutdown();
    m_materialHasUniforms = false;
    if (m_random.OneIn(4))
        return; // the next time
    Start();
}

} // namespace zarvex::fuzz
