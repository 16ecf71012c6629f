// What a sequence of calls works on, and the steps that it is made of.
#pragma once

#include "Random.h"
#include "Targets.h"

#include <zx3DQt/BGFXLightingContext.h>
#include <zx3DQt/BGFXMaterial.h>
#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/FrameBuffer.h>

#include <bgfx/bgfx.h>

#include <QPointer>
#include <QWidget>

#include <array>
#include <memory>
#include <vector>

namespace zarvex::fuzz {

/// Some windows, widgets, renderers, frame buffers and lights, and a library that runs or does not.
class World {
public:
    /// Starts the library. `backends` are those that it may be started on again, the first one now.
    World(std::uint64_t seed, std::vector<bgfx::RendererType::Enum> backends);

    /// Destroys what is left, some of it before the library stops and some after it.
    ~World();

    /// What comes next, for people.
    char const* NextStep() const { return m_next->name; }

    /// Does it.
    void TakeStep();

private:
    using Step = void (World::*)();
    struct NamedStep {
        char const* name;
        Step step;
    };
    static NamedStep const kSteps[];

    void CreateWindow();
    void CreateNativeWidget();
    void CreateOffscreenWidget();
    void CreateDock();
    void ShowOrHide();
    void ChangeState();
    void ResizeWidget();
    void ResizeWindow();
    void Reparent();
    void Close();
    void Destroy();
    void AskForPaint();
    void Capture();
    void HandleEvents();
    void DrawWindow();
    void DrawUnattached();
    void InterleaveRenderers();
    void ResizeFrameBuffer();
    void ExchangeFrameBuffers();
    void ChangeLights();
    void ChangeFont();
    void ChangeBatches();
    void StopAndStart();

    void Start();
    QWidget* PickWidget();
    Window* PickWindow();
    void Adopt(std::unique_ptr<QWidget> widget);

    Random m_random;
    NamedStep const* m_next = nullptr;
    std::vector<bgfx::RendererType::Enum> m_backends;
    Shared m_shared;
    std::vector<QPointer<QWidget>> m_hosts;   ///< top levels with docks
    std::vector<QPointer<QWidget>> m_widgets; ///< targets; those in a host go with it
    std::vector<std::unique_ptr<Window>> m_windows;
    std::array<zx3DQt::BGFXRenderer, 2> m_renderers;
    std::vector<zx3D::FrameBuffer> m_frameBuffers; ///< unattached, one for each renderer and a texture
    zx3DQt::BGFXMaterial m_material{"u_material"};
    bool m_materialHasUniforms = false;
    zx3DQt::BGFXLightingContext m_lights;
};

} // namespace zarvex::fuzz
