// The menus and the tool bar of the viewer's main window.
#include "ViewerWindow.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QStyle>
#include <QToolBar>

namespace viewer {

template<typename Choose>
QAction* ViewerWindow::AddChoice(QActionGroup& group, QString const& text, QKeySequence const& key,
                                 Choose choose) {
    QAction* const action = group.addAction(text);
    action->setCheckable(true);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, choose);
    return action;
}

QAction* ViewerWindow::AddSwitch(QMenu& menu, QString const& text, QKeySequence const& key,
                                 bool Appearance::* part) {
    QAction* const action = menu.addAction(text);
    action->setCheckable(true);
    action->setChecked(m_scene.GetAppearance().*part);
    action->setShortcut(key);
    connect(action, &QAction::toggled, this, [this, part](bool isOn) {
        Appearance appearance = m_scene.GetAppearance();
        appearance.*part = isOn;
        m_scene.SetAppearance(appearance);
    });
    return action;
}

void ViewerWindow::CreateMenus() {
    m_toolBar = addToolBar("Tools");
    m_toolBar->setMovable(false);
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    CreateFileMenu();
    CreateShowMenu();
    CreateViewMenu();
    menuBar()->addMenu("&Help")->addAction("Mouse and &keys…", Qt::Key_F1, this, &ViewerWindow::ShowHelp);
}

void ViewerWindow::CreateFileMenu() {
    QMenu& menu = *menuBar()->addMenu("&File");
    QAction* const open = menu.addAction(style()->standardIcon(QStyle::SP_DialogOpenButton), "&Open…",
                                         QKeySequence::Open, this, &ViewerWindow::AskForFile);
    menu.addAction("&Built-in scene", Qt::CTRL | Qt::Key_B, this, &ViewerWindow::ShowBuiltInScene);
    menu.addSeparator();
    QAction* const save = menu.addAction(style()->standardIcon(QStyle::SP_DialogSaveButton), "&Save picture…",
                                         QKeySequence::Save, this, &ViewerWindow::AskForPicture);
    menu.addAction("&Capabilities…", Qt::CTRL | Qt::Key_I, this, &ViewerWindow::ShowCapabilities);
    menu.addSeparator();
    menu.addAction("&Quit", QKeySequence::Quit, this, &QWidget::close);

    m_toolBar->addAction(open);
    m_toolBar->addAction(save);
}

void ViewerWindow::CreateViewMenu() {
    QMenu& menu = *menuBar()->addMenu("&View");
    menu.addAction("&Fit", Qt::Key_F, &m_scene, &Scene::Fit);
    menu.addSeparator();
    struct View {
        char const* text;
        Qt::Key key;
        StandardView view;
    };
    using enum StandardView;
    for (View const& entry :
         {View{"&Iso", Qt::Key_0, Isometric}, View{"F&ront", Qt::Key_1, Front},
          View{"&Back", Qt::Key_2, Back}, View{"&Left", Qt::Key_3, Left}, View{"Ri&ght", Qt::Key_4, Right},
          View{"&Top", Qt::Key_5, Top}, View{"B&ottom", Qt::Key_6, Bottom}})
        menu.addAction(entry.text, entry.key, this, [this, view = entry.view] { LookFrom(view); });
    m_toolBar->addSeparator();
    m_toolBar->addActions(menu.actions()); // what there is so far

    menu.addSeparator();
    m_perspective = menu.addAction("&Perspective", Qt::Key_P, this, [this](bool isOn) {
        SetProjection(isOn ? Projection::Perspective : Projection::Parallel);
    });
    m_perspective->setCheckable(true);
    m_perspective->setChecked(true);
    m_toolBar->addAction(m_perspective);

    auto* const upAxes = new QActionGroup(this);
    m_yIsUp = AddChoice(*upAxes, "&Y is up", Qt::Key_Y, [this] { SetUpAxis(UpAxis::Y); });
    m_zIsUp = AddChoice(*upAxes, "&Z is up", Qt::Key_Z, [this] { SetUpAxis(UpAxis::Z); });
    menu.addActions(upAxes->actions());

    menu.addSection("Widget");
    auto* const targets = new QActionGroup(this);
    AddChoice(*targets, "&Native", Qt::Key_F5, [this] { SetTarget(Target::Native); })->setChecked(true);
    AddChoice(*targets, "Off-&screen", Qt::Key_F6, [this] { SetTarget(Target::Offscreen); });
    AddChoice(*targets, "Bot&h", Qt::Key_F7, [this] { SetTarget(Target::Both); });
    menu.addActions(targets->actions());
    m_toolBar->addSeparator();
    m_toolBar->addActions(targets->actions());
}

void ViewerWindow::CreateShowMenu() {
    QMenu& menu = *menuBar()->addMenu("&Show");
    auto* const styles = new QActionGroup(this);
    struct Style {
        char const* text;
        Qt::Key key;
        MeshStyle style;
    };
    for (Style const& entry : {Style{"&Shaded", Qt::Key_S, MeshStyle::Shaded},
                               Style{"With &edges", Qt::Key_E, MeshStyle::ShadedWithEdges},
                               Style{"&Wireframe", Qt::Key_W, MeshStyle::Wireframe},
                               Style{"&Points", Qt::Key_D, MeshStyle::Points}}) {
        AddChoice(*styles, entry.text, entry.key, [this, style = entry.style] {
            Appearance appearance = m_scene.GetAppearance();
            appearance.style = style;
            m_scene.SetAppearance(appearance);
        });
    }
    styles->actions().first()->setChecked(true);
    menu.addActions(styles->actions());
    menu.addSeparator();
    AddSwitch(menu, "&Normals", Qt::Key_N, &Appearance::showsNormals);
    AddSwitch(menu, "&Grid", Qt::Key_G, &Appearance::showsGround);
    AddSwitch(menu, "&Bounding box", Qt::Key_B, &Appearance::showsBox);
    AddSwitch(menu, "&Axes", Qt::Key_A, &Appearance::showsAxes);
    menu.addSeparator();
    QMenu& samples = *menu.addMenu("S&mooth edges");
    m_sampleCounts = new QActionGroup(this);
    for (std::uint32_t const count : {1, 2, 4, 8, 16}) {
        QString const text = count == 1 ? QString("&Off") : QString("%1 samples for each pixel").arg(count);
        AddChoice(*m_sampleCounts, text, {}, [this, count] {
            Appearance appearance = m_scene.GetAppearance();
            appearance.sampleCount = count;
            m_scene.SetAppearance(appearance);
        })->setData(count);
    }
    samples.addActions(m_sampleCounts->actions());

    m_toolBar->addSeparator();
    m_toolBar->addActions(styles->actions());
}

void ViewerWindow::ShowHelp() {
    auto* const box =
        new QMessageBox(QMessageBox::NoIcon, "Mouse and keys",
                        "<table cellspacing='6'>"
                        "<tr><td><b>Left button</b></td><td>orbit</td></tr>"
                        "<tr><td><b>Middle or right button</b></td><td>pan</td></tr>"
                        "<tr><td><b>Wheel, pinch</b></td><td>zoom to the pointer</td></tr>"
                        "<tr><td><b>Double click</b></td><td>fit</td></tr>"
                        "<tr><td><b>Arrows</b></td><td>orbit; with Shift, pan; with Ctrl, roll</td></tr>"
                        "<tr><td><b>+ and −</b></td><td>zoom</td></tr>"
                        "</table>The menus name the other keys.",
                        QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace viewer
