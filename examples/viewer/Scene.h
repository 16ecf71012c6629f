// What is shown, and from where: one scene, any number of views on it.
#pragma once

#include "Camera.h"
#include "DemoScene.h"
#include "Lights.h"
#include "Mesh.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>

namespace viewer {

/// What a person chooses to see.
struct Appearance {
    MeshStyle style = MeshStyle::Shaded;
    bool showsGround = true;
    bool showsBox = true;
    bool showsAxes = true;
    bool showsNormals = false;
    std::optional<std::uint32_t> sampleCount; ///< for each pixel; absent: as many as cost little
};

/// A mesh or, without one, the built-in scene, with lights, fonts and the camera that all views share.
///
/// Lifetime: create and destroy it while bgfx runs.
class Scene : public QObject {
    Q_OBJECT

public:
    Scene();

    /// Shows a mesh from a good side; null shows the built-in scene.
    void SetMesh(std::shared_ptr<MeshFile const> file);
    Mesh const* GetMesh() const { return m_mesh.get(); }

    /// What there is to see.
    Box GetBox() const;

    OrbitCamera const& GetCamera() const { return m_camera; }
    void SetCamera(OrbitCamera const& camera);

    /// Moves the camera as part of a movement: where frames take long, edges are smooth again when it ends.
    void MoveCamera(OrbitCamera const& camera);

    /// Lets the camera see everything, in the shape of the view that is drawn next.
    void Fit();
    void LookFrom(StandardView view);

    Appearance const& GetAppearance() const { return m_appearance; }
    void SetAppearance(Appearance const& appearance);

    /// Draws between `StartFrame` and the frame's presentation, into views that are submitted.
    void Draw(Canvas const& canvas);

    /// To be called before a view looks through the camera.
    void PrepareCamera(float aspectRatio);

    Fonts& GetFonts() { return m_fonts; }

    /// Samples for each pixel of views at rest, of the frame that is drawn next, and of pictures.
    /// @{
    std::uint32_t GetSampleCount() const;
    std::uint32_t GetNextSampleCount() const;
    std::uint32_t GetPictureSampleCount() const;
    /// @}

    /// Tells how long a view has taken for a frame, milliseconds.
    void ReportFrame(double milliseconds);

signals:
    /// The views must draw themselves anew.
    void Changed();
    /// The camera has moved while a view draws itself.
    void Fitted();
    void FrameDrawn(double milliseconds);

private:
    std::unique_ptr<Mesh> m_mesh;
    DemoScene m_demo;
    Lights m_lights;
    Fonts m_fonts;
    OrbitCamera m_camera;
    Appearance m_appearance;
    bool m_mustFit = true;
    QTimer m_movement;              ///< runs while the camera moves, and a little longer
    double m_smoothFrameTime = 0.0; ///< of the last frame with smooth edges, milliseconds
};

} // namespace viewer
