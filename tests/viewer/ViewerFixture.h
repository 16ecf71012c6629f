// The viewer's window on a display of its own, and a person before it.
#pragma once

#include <ViewerWindow.h>

#include <harness/InputDevice.h>
#include <harness/LibraryRun.h>
#include <harness/WaitUntil.h>

#include <QImage>
#include <QMessageBox>
#include <QTemporaryDir>

#include <memory>

namespace viewer {

/// Where Debian's assimp-testmodels puts them.
QString ModelPath(QString const& relativePath);

/// Writes a closed surface of `2 * rings * sides` triangles, binary PLY.
void WriteWavyTorus(QString const& path, int rings, int sides);

/// A window that is shown, a row per backend.
class ViewerTest : public zarvex::testing::BackendTest {
protected:
    ViewerTest();

    // ---- What a person does.

    /// Presses a key, as "F" or "Ctrl+O".
    void Type(char const* keys);
    /// Drags from one place of the view to another, shares of its width and height.
    void Drag(QPointF from, QPointF to, zarvex::testing::InputDevice::Button button);
    void TurnWheel(QPointF place, int steps);
    void OpenFile(QString const& path);

    // ---- What a person sees.

    /// Waits until what was done so far is drawn.
    void WaitForFrame();
    /// Waits until more or less than a share of the view differs from an earlier picture.
    void ExpectChange(QImage const& before, double atLeast);
    void ExpectNoChange(QImage const& before);
    void WaitForLoad();
    QString Facts() const;
    /// The window's message, which is closed; empty when there is none.
    QString TakeProblem();
    /// What the screen shows of the view.
    QImage Grab();
    QImage Grab(QWidget const& widget);
    Scene& GetScene() { return m_window->GetScene(); }
    OrbitCamera const& GetCamera() { return GetScene().GetCamera(); }
    QWidget& GetView() { return m_window->GetView().AsWidget(); }

    std::unique_ptr<ViewerWindow> m_window;
    zarvex::testing::InputDevice m_input;
    QTemporaryDir m_folder;
    int m_frames = 0;
};

/// Shares of the pixels that differ by more than a little.
double DifferingShare(QImage const& first, QImage const& second);

/// How many colours a picture has: a view that shows nothing has its background's few.
int CountColors(QImage const& image);

} // namespace viewer
