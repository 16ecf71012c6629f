// The viewer's main window.
#pragma once

#include "MeshLoader.h"
#include "SceneView.h"

#include <QMainWindow>

class QActionGroup;
class QLabel;
class QProgressBar;
class QPushButton;
class QSplitter;
class QToolBar;

namespace viewer {

/// Which of the library's widgets show the scene.
enum class Target { Native, Offscreen, Both };

/// A scene in a native widget, in an off-screen widget, or in both, with menus, a tool bar and a status line.
/// Remembers nothing from one start to the next.
///
/// Lifetime: create and destroy it while bgfx runs.
class ViewerWindow : public QMainWindow {
    Q_OBJECT

public:
    ViewerWindow();

    /// Loads a mesh; what was shown stays until it is there.
    void Open(QString const& path);

    void SetTarget(Target target);

    Scene& GetScene() { return m_scene; }
    MeshLoader& GetLoader() { return m_loader; }

    /// A view that is shown.
    AnySceneView& GetView();

private:
    // Parts of the window.
    void CreateViews();
    void CreateMenus(); ///< and, with what people need most, the tool bar
    void CreateFileMenu();
    void CreateViewMenu();
    void CreateShowMenu();
    void CreateStatusBar();

    /// An entry that chooses one of several things and shows which.
    template<typename Choose>
    QAction* AddChoice(QActionGroup& group, QString const& text, QKeySequence const& key, Choose choose);
    /// An entry that turns a part of the appearance on and off.
    QAction* AddSwitch(QMenu& menu, QString const& text, QKeySequence const& key, bool Appearance::* part);

    // What the entries do.
    void AskForFile();
    void AskForPicture();
    void SavePicture(QString const& path, QSize size);
    void ShowCapabilities();
    void ShowHelp();
    void LookFrom(StandardView view);
    /// In the menus.
    /// @{
    void ShowCamera();
    void ShowSampleCount();
    /// @}
    void SetProjection(Projection projection);
    void SetUpAxis(UpAxis up);

    // What loading does.
    void ShowProgress(int percent);
    void HideProgress();
    void ShowMesh(std::shared_ptr<MeshFile const> mesh);
    void ShowLoadFailure(QString const& reason);
    void ShowBuiltInScene();

    void ShowProblem(QString const& text, QString const& details);
    void UpdateFacts();

    Scene m_scene;
    MeshLoader m_loader;
    QSplitter* m_splitter = nullptr;
    NativeSceneView* m_native = nullptr;
    OffscreenSceneView* m_offscreen = nullptr;

    QAction* m_perspective = nullptr;
    QAction* m_yIsUp = nullptr;
    QAction* m_zIsUp = nullptr;
    QActionGroup* m_sampleCounts = nullptr;
    QToolBar* m_toolBar = nullptr;

    QProgressBar* m_progress = nullptr;
    QPushButton* m_cancel = nullptr;
    QLabel* m_facts = nullptr;
    QLabel* m_frameTime = nullptr;
};

} // namespace viewer
