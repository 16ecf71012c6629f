// A person looks at a mesh: opens, turns, zooms, fits, switches, captures, resizes, closes.
#include "ViewerFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <cmath>

namespace viewer {

using namespace zarvex;
using namespace zarvex::testing;

namespace {

QString const kDuck = ModelPath("Collada/duck.dae");
QString const kSpider = ModelPath("OBJ/spider.obj");

/// The modal dialog that is there, once it is.
template<typename Dialog>
Dialog* WaitForDialog() {
    auto const find = [] { return qobject_cast<Dialog*>(QApplication::activeModalWidget()); };
    WaitUntil([&] { return find() != nullptr; });
    return find();
}

} // namespace

using ViewerUseTest = ViewerTest;

TEST_P(ViewerUseTest, TheBuiltInSceneShowsItself) {
    WaitForFrame();
    EXPECT_GT(CountColors(Grab()), 1000);
    EXPECT_TRUE(Facts().isEmpty());
    EXPECT_TRUE(m_window->findChild<QLabel*>("backend")->text().startsWith(NameOf(GetParam()).c_str()));
    EXPECT_TRUE(m_window->findChild<QLabel*>("frameTime")->text().endsWith(" ms"));
}

TEST_P(ViewerUseTest, OpensAMeshWithTheDialogAndTellsItsFacts) {
    QImage const before = Grab();
    QTimer::singleShot(0, m_window.get(), [] {
        auto* const dialog = WaitForDialog<QFileDialog>();
        ASSERT_NE(dialog, nullptr);
        auto* const name = dialog->findChild<QLineEdit*>();
        name->setText(kSpider);
        QTest::keyClick(name, Qt::Key_Return);
    });
    Type("Ctrl+O"); // returns when the dialog is closed
    WaitForLoad();
    WaitForFrame();
    EXPECT_TRUE(Facts().startsWith("1,368 triangles")) << Facts().toStdString();
    EXPECT_TRUE(m_window->windowTitle().startsWith("spider.obj"));
    ExpectChange(before, 0.05);
    Type("Ctrl+B");
    WaitForFrame();
    EXPECT_TRUE(Facts().isEmpty());
}

TEST_P(ViewerUseTest, OpensWhatIsDroppedOnTheWindowAndOnTheView) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(kSpider)});
    QWindow& top = *m_window->windowHandle();
    QList<QWindow*> windows = top.findChildren<QWindow*>(); // bgfx's among them
    ASSERT_FALSE(windows.isEmpty());
    windows.prepend(&top);
    for (QWindow* const window : windows) {
        Type("Ctrl+B");
        QDragEnterEvent enter(QPoint(50, 200), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent drop(QPointF(50, 200), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window, &drop);
        EXPECT_TRUE(drop.isAccepted());
        WaitForLoad();
        EXPECT_TRUE(Facts().startsWith("1,368 triangles")) << Facts().toStdString();
    }
    QMimeData text;
    text.setText("no file");
    QDragEnterEvent enter(QPoint(50, 200), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(&top, &enter);
    EXPECT_FALSE(enter.isAccepted());
}

TEST_P(ViewerUseTest, OrbitsPansAndZoomsWithTheMouseInBothWidgets) {
    OpenFile(kDuck);
    for (char const* const target : {"F5", "F6"}) {
        SCOPED_TRACE(target);
        Type(target);
        Type("0");
        WaitForFrame();
        QImage const before = Grab();
        OrbitCamera const start = GetCamera();
        Drag({0.5, 0.5}, {0.7, 0.4}, InputDevice::Left);
        EXPECT_EQ(GetCamera().GetTarget(), start.GetTarget());
        EXPECT_GT((TowardsViewer(GetCamera()) - TowardsViewer(start)).length(), 0.3f);
        ExpectChange(before, 0.05);

        OrbitCamera const turned = GetCamera();
        Drag({0.5, 0.5}, {0.6, 0.5}, InputDevice::Middle);
        EXPECT_EQ(TowardsViewer(GetCamera()), TowardsViewer(turned));
        EXPECT_LT(Dot(GetCamera().GetTarget() - turned.GetTarget(), turned.ComputeAxes().right), 0.0);

        double const distance = GetCamera().GetDistance();
        TurnWheel({0.5, 0.5}, 3);
        EXPECT_NEAR(GetCamera().GetDistance(), distance / 1.520875, 0.01 * distance);
        TurnWheel({0.5, 0.5}, -3);
        EXPECT_NEAR(GetCamera().GetDistance(), distance, 0.01 * distance);
    }
}

TEST_P(ViewerUseTest, ZoomsToThePointer) {
    OpenFile(kDuck);
    Type("1");
    WaitForFrame();
    zx3DQt::WorldPosition const target = GetCamera().GetTarget();
    TurnWheel({0.8, 0.2}, 4);
    zx3DQt::WorldVector const moved = GetCamera().GetTarget() - target;
    EXPECT_GT(Dot(moved, GetCamera().ComputeAxes().right), 0.0);
    EXPECT_GT(Dot(moved, GetCamera().ComputeAxes().up), 0.0);
}

TEST_P(ViewerUseTest, FitsAfterWanderingOff) {
    OpenFile(kDuck);
    WaitForFrame();
    OrbitCamera const fitted = GetCamera();
    TurnWheel({0.9, 0.9}, 5);
    Drag({0.5, 0.5}, {0.9, 0.9}, InputDevice::Right);
    Type("F");
    WaitForFrame();
    zx3DQt::WorldVector const missing = GetCamera().ComputePosition() - fitted.ComputePosition();
    EXPECT_LT(std::sqrt(Dot(missing, missing)), 1e-3 * fitted.GetDistance());
}

TEST_P(ViewerUseTest, KeysShowTheStandardViewsAndBothProjections) {
    OpenFile(kSpider);
    std::vector<QImage> pictures;
    for (char const* const key : {"0", "1", "2", "3", "4", "5", "6", "P"}) {
        SCOPED_TRACE(key);
        Type(key);
        WaitForFrame();
        for (QImage const& other : pictures)
            ExpectChange(other, 0.002);
        pictures.push_back(Grab());
    }
    EXPECT_EQ(GetCamera().GetProjection(), Projection::Parallel);
    Type("Z");
    WaitForFrame();
    EXPECT_EQ(GetCamera().GetUpAxis(), UpAxis::Z);
}

TEST_P(ViewerUseTest, ArrowsOrbitAndPlusZooms) {
    OpenFile(kDuck);
    WaitForFrame();
    OrbitCamera const start = GetCamera();
    QTest::keyClick(&GetView(), Qt::Key_Left);
    EXPECT_GT((TowardsViewer(GetCamera()) - TowardsViewer(start)).length(), 0.05f);
    QTest::keyClick(&GetView(), Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_NE(GetCamera().GetTarget(), start.GetTarget());
    QTest::keyClick(&GetView(), Qt::Key_Plus);
    EXPECT_LT(GetCamera().GetDistance(), start.GetDistance());
}

TEST_P(ViewerUseTest, EveryStyleAndEverySwitchChangesThePicture) {
    OpenFile(kDuck);
    WaitForFrame();
    for (char const* const key : {"E", "W", "D"}) {
        SCOPED_TRACE(key);
        Type("S");
        WaitForFrame();
        QImage const shaded = Grab();
        Type(key);
        ExpectChange(shaded, 0.02);
    }
    Type("S");
    for (char const* const key : {"N", "G", "B", "A"}) {
        SCOPED_TRACE(key);
        WaitForFrame();
        QImage const before = Grab();
        Type(key);
        ExpectChange(before, 0.0005);
        Type(key);
        ExpectNoChange(before);
    }
}

TEST_P(ViewerUseTest, BothWidgetsShowTheSameSideBySide) {
    OpenFile(kDuck);
    Type("F7");
    EXPECT_TRUE(WaitUntil([this] {
        GetScene().Fit();
        HandlePendingEvents();
        QList<QWidget*> const views = {m_window->findChild<QWidget*>("BGFXNativeWidget"),
                                       m_window->findChild<QWidget*>("BGFXOffscreenWidget")};
        return views[0]->isVisible() && views[1]->isVisible() && views[0]->height() == views[1]->height();
    }));
    auto* const native = m_window->findChild<QWidget*>("BGFXNativeWidget");
    auto* const offscreen = m_window->findChild<QWidget*>("BGFXOffscreenWidget");
    int const width = std::min(native->width(), offscreen->width()) - 2;
    double share = 1.0;
    EXPECT_TRUE(WaitUntil([&] {
        HandlePendingEvents();
        // Around their centres, where the same is shown also where one is a pixel wider.
        QImage const first = Grab(*native);
        QImage const second = Grab(*offscreen);
        QRect const middle(QPoint(), QSize(width - 40, native->height() - 40));
        auto const cut = [&](QImage const& image) {
            QRect place = middle;
            place.moveCenter(image.rect().center());
            return image.copy(place);
        };
        share = DifferingShare(cut(first), cut(second));
        return CountColors(first) > 1000 && share < 0.02;
    })) << share;
    Drag({0.4, 0.5}, {0.6, 0.5}, InputDevice::Left); // of the native one; the other follows
    WaitForFrame();
    Type("F6");
    EXPECT_TRUE(WaitUntil([&] { return !native->isVisible() && CountColors(Grab(*offscreen)) > 1000; }));
}

TEST_P(ViewerUseTest, SavesAPictureOfAnySize) {
    OpenFile(kDuck);
    WaitForFrame();
    for (QSize const size : {QSize(320, 200), QSize(1600, 2400), QSize(64, 64)}) {
        QString const path = m_folder.filePath("picture.png");
        Type("Ctrl+S");
        auto* const dialog = WaitForDialog<QDialog>();
        ASSERT_NE(dialog, nullptr);
        dialog->findChild<QLineEdit*>("path")->setText(path);
        dialog->findChild<QSpinBox*>("width")->setValue(size.width());
        dialog->findChild<QSpinBox*>("height")->setValue(size.height());
        QTest::keyClick(dialog, Qt::Key_Return);
        QImage const picture(path);
        EXPECT_EQ(picture.size(), size);
        EXPECT_GT(CountColors(picture), 200);
        EXPECT_TRUE(TakeProblem().isEmpty());
        QFile::remove(path);
        WaitForFrame(); // the view is as it was
    }
}

TEST_P(ViewerUseTest, APictureThatCannotBeSavedIsAMessage) {
    Type("Ctrl+S");
    auto* const dialog = WaitForDialog<QDialog>();
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QLineEdit*>("path")->setText("/no/such/folder/picture.png");
    QTest::keyClick(dialog, Qt::Key_Return);
    EXPECT_TRUE(TakeProblem().contains("/no/such/folder/picture.png"));
    WaitForFrame();
}

TEST_P(ViewerUseTest, TheCapabilitiesCanBeReadAndCopied) {
    Type("Ctrl+I");
    auto* const dialog = WaitForDialog<QDialog>();
    ASSERT_NE(dialog, nullptr);
    QString const text = dialog->findChild<QPlainTextEdit*>("text")->toPlainText();
    QString const json = dialog->findChild<QPlainTextEdit*>("json")->toPlainText();
    EXPECT_TRUE(text.contains("Renderer Type: " + QString::fromStdString(NameOf(GetParam()))));
    EXPECT_TRUE(QJsonDocument::fromJson(json.toUtf8()).object().contains("limits"));
    auto* const copy = dialog->findChild<QPushButton*>("copy");
    QTest::mouseClick(copy, Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), text);
    dialog->findChild<QTabWidget*>()->setCurrentIndex(1);
    QTest::mouseClick(copy, Qt::LeftButton);
    EXPECT_EQ(QApplication::clipboard()->text(), json);
    QTest::keyClick(dialog, Qt::Key_Escape);
    WaitForFrame();
}

TEST_P(ViewerUseTest, FollowsTheWindowsSize) {
    OpenFile(kDuck);
    for (QSize const size : {QSize(500, 420), QSize(1200, 500), QSize(640, 900)}) {
        m_window->resize(size);
        EXPECT_TRUE(WaitUntil([&] {
            HandlePendingEvents();
            QImage const shown = Grab();
            // The picture reaches the corners: its background is lighter at the bottom.
            QColor const top = shown.pixelColor(shown.width() - 3, 3);
            QColor const bottom = shown.pixelColor(shown.width() - 3, shown.height() - 3);
            return m_window->size() == size && bottom.lightness() > top.lightness() + 20;
        })) << size.width();
    }
}

TEST_P(ViewerUseTest, ClosesWhileLoading) {
    QString const path = m_folder.filePath("torus.ply");
    WriteWavyTorus(path, 400, 400);
    m_window->Open(path);
    m_window->close();
    EXPECT_FALSE(m_window->isVisible());
    m_window.reset();
}

ZX3D_INSTANTIATE_BACKENDS(ViewerUseTest);

} // namespace viewer
