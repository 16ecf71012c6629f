// What the viewer's main window does.
#include "ViewerWindow.h"

#include "CapabilitiesDialog.h"
#include "FileDrop.h"
#include "PictureDialog.h"
#include "TickSteps.h"

#include <zx3DQt/CapsReport.h>

#include <QAction>
#include <QActionGroup>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>

namespace viewer {

using namespace zarvex;

namespace {

/// The card's maker, as the library's report names it; empty where the renderer does not tell. The one card
/// that there is, is the active one, also where its number is not known.
QString GpuText(QJsonObject const& report) {
    QJsonArray const available = report["availableGPUs"].toArray();
    QJsonObject const gpu = available.size() == 1 ? available[0].toObject() : report["activeGPU"].toObject();
    return gpu["vendorId"].toString() == "0" ? QString() : gpu["vendorName"].toString();
}

QString BackendText() {
    QJsonObject const report = zx3DQt::ToJson(*bgfx::getCaps());
    QString const renderer = report["rendererTypeName"].toString();
    QString const gpu = GpuText(report);
    return gpu.isEmpty() ? renderer : renderer + "  ·  " + gpu;
}

QString SizeText(QVector3D const& size) {
    return QString("%1 × %2 × %3").arg(NumberText(size.x()), NumberText(size.y()), NumberText(size.z()));
}

} // namespace

ViewerWindow::ViewerWindow() {
    resize(1120, 760);
    CreateViews();
    CreateStatusBar();
    CreateMenus();
    new FileDrop(*this, [this](QString const& path) { Open(path); });

    connect(&m_loader, &MeshLoader::Progressed, this, &ViewerWindow::ShowProgress);
    connect(&m_loader, &MeshLoader::Loaded, this, &ViewerWindow::ShowMesh);
    connect(&m_loader, &MeshLoader::Failed, this, &ViewerWindow::ShowLoadFailure);
    connect(&m_scene, &Scene::FrameDrawn, this, [this](double milliseconds) {
        m_frameTime->setText(QString("%1 ms").arg(milliseconds, 0, 'f', 1));
    });
    connect(&m_scene, &Scene::Changed, this, &ViewerWindow::ShowCamera);
    connect(&m_scene, &Scene::Changed, this, &ViewerWindow::ShowSampleCount);
    ShowBuiltInScene();
}

void ViewerWindow::CreateViews() {
    m_splitter = new QSplitter;
    m_native = new NativeSceneView(m_scene);
    m_offscreen = new OffscreenSceneView(m_scene);
    m_splitter->addWidget(m_native);
    m_splitter->addWidget(m_offscreen);
    m_splitter->setSizes({1, 1});
    setCentralWidget(m_splitter);
    SetTarget(Target::Native);
}

void ViewerWindow::SetTarget(Target target) {
    m_native->setVisible(target != Target::Offscreen);
    m_offscreen->setVisible(target != Target::Native);
    GetView().AsWidget().setFocus();
}

AnySceneView& ViewerWindow::GetView() {
    if (m_native->isHidden())
        return *m_offscreen;
    return *m_native;
}

// ---- The status line.

void ViewerWindow::CreateStatusBar() {
    m_progress = new QProgressBar;
    m_progress->setFixedWidth(180);
    m_cancel = new QPushButton("Cancel");
    m_cancel->setObjectName("cancel");
    m_cancel->setShortcut(Qt::Key_Escape);
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_loader.Cancel();
        HideProgress();
        statusBar()->showMessage("Loading was cancelled", 5000);
    });
    m_facts = new QLabel;
    m_facts->setObjectName("facts");
    m_frameTime = new QLabel;
    m_frameTime->setObjectName("frameTime");
    m_frameTime->setMinimumWidth(fontMetrics().horizontalAdvance("8888.8 ms"));
    m_frameTime->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* const backend = new QLabel(BackendText());
    backend->setObjectName("backend");
    for (QWidget* const part :
         std::initializer_list<QWidget*>{m_progress, m_cancel, m_facts, m_frameTime, backend}) {
        if (qobject_cast<QLabel*>(part) != nullptr)
            part->setContentsMargins(8, 0, 8, 0);
        statusBar()->addPermanentWidget(part);
    }
    HideProgress();
}

void ViewerWindow::UpdateFacts() {
    Mesh const* const mesh = m_scene.GetMesh();
    if (mesh == nullptr) {
        m_facts->clear();
        return;
    }
    QLocale const english(QLocale::English);
    m_facts->setText(QString("%1 triangles  ·  %2 vertices  ·  %3")
                         .arg(english.toString(static_cast<qulonglong>(mesh->CountTriangles())),
                              english.toString(static_cast<qulonglong>(mesh->CountVertices())),
                              SizeText(mesh->GetBox().Size())));
}

// ---- Loading.

void ViewerWindow::AskForFile() {
    QString const path = QFileDialog::getOpenFileName(
        this, "Open mesh", QString(),
        "Meshes (*.obj *.stl *.ply *.gltf *.glb *.dae *.fbx *.3ds *.3mf *.off *.blend *.x *.dxf);;"
        "All files (*)");
    if (!path.isEmpty())
        Open(path);
}

void ViewerWindow::Open(QString const& path) {
    m_loader.Load(path);
    ShowProgress(0);
    statusBar()->showMessage("Loading " + QFileInfo(path).fileName());
}

void ViewerWindow::ShowProgress(int percent) {
    m_progress->setValue(percent);
    m_progress->show();
    m_cancel->show();
}

void ViewerWindow::HideProgress() {
    m_progress->hide();
    m_cancel->hide();
    statusBar()->clearMessage();
}

void ViewerWindow::ShowMesh(std::shared_ptr<MeshFile const> mesh) {
    HideProgress();
    if (QStringList const& notes = mesh->GetNotes(); !notes.isEmpty())
        statusBar()->showMessage(notes.size() == 1
                                     ? notes.first()
                                     : QString("%1 (and %2 more)").arg(notes.first()).arg(notes.size() - 1));
    m_scene.SetMesh(std::move(mesh));
    setWindowTitle(QFileInfo(m_loader.GetPath()).fileName() + " – zx3DQt viewer");
    UpdateFacts();
}

void ViewerWindow::ShowLoadFailure(QString const& reason) {
    HideProgress();
    ShowProblem(QString("%1 cannot be opened.").arg(QFileInfo(m_loader.GetPath()).fileName()), reason + ".");
}

void ViewerWindow::ShowBuiltInScene() {
    m_loader.Cancel();
    HideProgress();
    m_scene.SetMesh(nullptr);
    setWindowTitle("zx3DQt viewer");
    UpdateFacts();
}

void ViewerWindow::ShowProblem(QString const& text, QString const& details) {
    auto* const box = new QMessageBox(QMessageBox::Warning, "zx3DQt viewer", text, QMessageBox::Ok, this);
    box->setInformativeText(details);
    for (QLabel* const label : box->findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText); // files and imports have a say in it
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open(); // does not wait: the views go on
}

// ---- Pictures and capabilities.

void ViewerWindow::AskForPicture() {
    QWidget const& view = GetView().AsWidget();
    auto* const dialog = new PictureDialog(view.size() * view.devicePixelRatio(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this,
            [this, dialog] { SavePicture(dialog->GetPath(), dialog->GetSize()); });
    dialog->open();
}

void ViewerWindow::SavePicture(QString const& path, QSize size) {
    if (GetView().TakePicture(size).save(path))
        statusBar()->showMessage("Saved " + path, 5000);
    else
        ShowProblem("The picture cannot be saved.", path);
}

void ViewerWindow::ShowCapabilities() {
    auto* const dialog = new CapabilitiesDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

// ---- The camera.

void ViewerWindow::LookFrom(StandardView view) {
    m_scene.LookFrom(view);
}

void ViewerWindow::ShowCamera() {
    OrbitCamera const& camera = m_scene.GetCamera();
    m_perspective->setChecked(camera.GetProjection() == Projection::Perspective);
    (camera.GetUpAxis() == UpAxis::Z ? m_zIsUp : m_yIsUp)->setChecked(true);
}

void ViewerWindow::ShowSampleCount() {
    for (QAction* const action : m_sampleCounts->actions())
        action->setChecked(action->data() == m_scene.GetSampleCount());
}

void ViewerWindow::SetProjection(Projection projection) {
    OrbitCamera camera = m_scene.GetCamera();
    camera.SetProjection(projection);
    m_scene.SetCamera(camera);
}

void ViewerWindow::SetUpAxis(UpAxis up) {
    OrbitCamera camera = m_scene.GetCamera();
    camera.SetUpAxis(up);
    m_scene.SetCamera(camera);
    m_scene.Fit();
}

} // namespace viewer
