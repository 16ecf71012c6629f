// A window, or what can be done without one: a picture, the capabilities, the times of frames.
#include "Run.h"

#include "ViewerWindow.h"

#include <zx3D/Context.h>
#include <zx3DQt/CapsReport.h>
#include <zx3DQt/Library.h>

#include <QApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <numeric>
#include <vector>

namespace viewer {

using namespace zarvex;

namespace {

constexpr QSize kPictureSize(1280, 800);

void Print(FILE* stream, QString const& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

ExitCode Fail(QString const& reason) {
    Print(stderr, "viewer: " + reason + "\n");
    return kFailure;
}

void PrintNotes(QString const& path, MeshFile const& mesh) {
    for (QString const& note : mesh.GetNotes())
        Print(stderr, "viewer: " + path + ": " + note + "\n");
}

/// Waits for a mesh; the reason, where there will be none.
QString LoadMesh(QString const& path, std::chrono::seconds timeout, Scene& scene) {
    MeshLoader loader;
    QEventLoop loop;
    QString failure;
    QObject::connect(&loader, &MeshLoader::Loaded, &loop, [&](std::shared_ptr<MeshFile const> mesh) {
        PrintNotes(path, *mesh);
        scene.SetMesh(std::move(mesh));
        loop.quit();
    });
    QObject::connect(&loader, &MeshLoader::Failed, &loop, [&](QString const& reason) {
        failure = reason;
        loop.quit();
    });
    QTimer::singleShot(timeout, &loop, [&] {
        loader.Cancel();
        failure = QString("It is not read after %1 s; --timeout gives it more").arg(timeout.count());
        loop.quit();
    });
    loader.Load(path);
    loop.exec();
    return failure;
}

void ApplyAppearance(Options const& options, Scene& scene) {
    Appearance appearance = scene.GetAppearance();
    appearance.sampleCount = options.samples;
    scene.SetAppearance(appearance);
}

void ApplyView(Options const& options, Scene& scene) {
    OrbitCamera camera = scene.GetCamera();
    if (options.up)
        camera.SetUpAxis(*options.up);
    if (options.parallel)
        camera.SetProjection(Projection::Parallel);
    scene.SetCamera(camera);
    scene.LookFrom(options.view);
}

/// Draws one frame after the other, each from a little farther round.
void PrintFrameTimes(AnySceneView& view, Scene& scene, int count) {
    view.AsWidget().show();
    std::vector<double> times;
    QEventLoop loop;
    QObject::connect(&scene, &Scene::FrameDrawn, &loop, [&](double milliseconds) {
        times.push_back(milliseconds);
        if (static_cast<int>(times.size()) >= count)
            loop.quit();
        OrbitCamera camera = scene.GetCamera();
        camera.Orbit(360.0 / count, 0.0);
        scene.MoveCamera(camera);
    });
    loop.exec();
    double const total = std::accumulate(times.begin(), times.end(), 0.0);
    std::ranges::sort(times);
    Print(stdout, QString("%1 frames: median %2 ms, mean %3 ms, longest %4 ms\n")
                      .arg(times.size())
                      .arg(times[times.size() / 2], 0, 'f', 2)
                      .arg(total / static_cast<double>(times.size()), 0, 'f', 2)
                      .arg(times.back(), 0, 'f', 2));
}

/// A view by itself, without the window around it.
ExitCode RunWithoutWindow(Options const& options) {
    Scene scene;
    if (!options.file.isEmpty()) {
        QString const failure = LoadMesh(options.file, std::chrono::seconds(options.timeout), scene);
        if (!failure.isEmpty())
            return Fail(options.file + ": " + failure);
    }
    ApplyAppearance(options, scene);
    ApplyView(options, scene);
    NativeSceneView view(scene);
    view.resize(options.size.value_or(kPictureSize));
    if (options.frames > 0)
        PrintFrameTimes(view, scene, options.frames);
    if (!options.screenshot.isEmpty()) {
        QImage const picture = view.TakePicture(options.size.value_or(kPictureSize));
        if (picture.isNull() || !picture.save(options.screenshot))
            return Fail(options.screenshot + ": the picture cannot be saved");
    }
    return kSuccess;
}

ExitCode RunWindow(Options const& options) {
    ViewerWindow window;
    MeshLoader const& loader = window.GetLoader();
    QObject::connect(&loader, &MeshLoader::Failed, &window,
                     [&](QString const& reason) { Fail(loader.GetPath() + ": " + reason); });
    QObject::connect(&loader, &MeshLoader::Loaded, &window, [&](std::shared_ptr<MeshFile const> const& mesh) {
        PrintNotes(loader.GetPath(), *mesh);
    });
    if (options.size)
        window.resize(*options.size);
    ApplyAppearance(options, window.GetScene());
    ApplyView(options, window.GetScene());
    window.show();
    if (!options.file.isEmpty()) {
        // Once the mesh is there it is looked at as it was asked for; one that is opened by hand is not.
        QMetaObject::Connection const connection = QObject::connect(
            &window.GetLoader(), &MeshLoader::Loaded, &window, [&] { ApplyView(options, window.GetScene()); },
            Qt::SingleShotConnection);
        QObject::connect(
            &window.GetLoader(), &MeshLoader::Failed, &window,
            [connection] { QObject::disconnect(connection); }, Qt::SingleShotConnection);
        window.Open(options.file);
    }
    QApplication::exec();
    return kSuccess;
}

} // namespace

ExitCode Run(Options const& options) {
    if (options.renderer)
        zx3D::Context::PreferRenderer(*options.renderer);
    auto const shutDown = qScopeGuard(zx3DQt::Shutdown);
    bool const isMeasuring = options.frames > 0;
    if (!zx3DQt::Init(!isMeasuring)) // wait for the display's refresh
        return Fail("bgfx does not start; QT_LOGGING_RULES=\"zarvex.bgfx.info=true\" tells why");
    if (options.renderer && bgfx::getRendererType() != *options.renderer)
        return Fail(QString("%1 does not work here").arg(bgfx::getRendererName(*options.renderer)));
    if (options.showCapabilities) {
        Print(stdout, zx3DQt::ToString(*bgfx::getCaps()));
        return kSuccess;
    }
    bool const needsWindow = options.screenshot.isEmpty() && !isMeasuring;
    return needsWindow ? RunWindow(options) : RunWithoutWindow(options);
}

} // namespace viewer
