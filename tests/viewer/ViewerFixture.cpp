// The person's hands and eyes.
#include "ViewerFixture.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QWindow>

#include <QFile>

#include <cmath>
#include <cstring>
#include <numbers>
#include <set>

namespace viewer {

using namespace zarvex::testing;

QString ModelPath(QString const& relativePath) {
    return QString(VIEWER_MODELS) + "/" + relativePath;
}

void WriteWavyTorus(QString const& path, int rings, int sides) {
    constexpr float turn = 2.0f * std::numbers::pi_v<float>;
    QByteArray bytes =
        "ply\nformat binary_little_endian 1.0\nelement vertex " + QByteArray::number(rings * sides) +
        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
        QByteArray::number(2 * rings * sides) + "\nproperty list uchar int vertex_indices\nend_header\n";
    auto const append = [&bytes](auto const&... values) {
        (bytes.append(reinterpret_cast<char const*>(&values), sizeof values), ...);
    };
    for (int ring = 0; ring < rings; ++ring) {
        for (int side = 0; side < sides; ++side) {
            float const around = turn * static_cast<float>(ring) / static_cast<float>(rings);
            float const along = turn * static_cast<float>(side) / static_cast<float>(sides);
            float const tube = 1.0f + 0.06f * std::cos(9.0f * along + 6.0f * around);
            float const radius = 3.0f + tube * std::cos(along);
            append(radius * std::cos(around), tube * std::sin(along), radius * std::sin(around));
        }
    }
    char const corners = 3;
    for (int ring = 0; ring < rings; ++ring) {
        int const next = (ring + 1) % rings * sides;
        for (int side = 0; side < sides; ++side) {
            int const a = ring * sides + side;
            int const b = ring * sides + (side + 1) % sides;
            int const c = next + side;
            int const d = next + (side + 1) % sides;
            append(corners, a, c, b, corners, b, c, d);
        }
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

ViewerTest::ViewerTest() : m_window(std::make_unique<ViewerWindow>()) {
    QObject::connect(&GetScene(), &Scene::FrameDrawn, m_window.get(), [this] { ++m_frames; });
    m_window->move(60, 60);
    m_window->resize(900, 680);
    m_window->show();
    EXPECT_TRUE(WaitUntil([this] { return m_window->isActiveWindow() && m_frames > 0; }));
}

void ViewerTest::Type(char const* keys) {
    QTest::keySequence(m_window.get(), QKeySequence(keys));
}

void ViewerTest::Drag(QPointF from, QPointF to, InputDevice::Button button) {
    auto const place = [this](QPointF share) {
        return GetView().mapToGlobal(
            QPointF(share.x() * GetView().width(), share.y() * GetView().height()).toPoint());
    };
    OrbitCamera const before = GetCamera();
    auto const isMoved = [&] { return GetCamera() != before; };
    m_input.MoveTo(place(from) - QPoint(3, 3));
    m_input.MoveTo(place(from));
    HandlePendingEvents();
    m_input.Press(button);
    m_input.MoveTo(place(0.5 * (from + to)));
    m_input.MoveTo(place(to));
    m_input.Release(button);
    EXPECT_TRUE(WaitUntil(isMoved)) << "dragging does nothing";
    HandlePendingEvents();
    HandlePendingEvents();
}

void ViewerTest::TurnWheel(QPointF share, int steps) {
    QPoint const place = GetView().mapToGlobal(
        QPointF(share.x() * GetView().width(), share.y() * GetView().height()).toPoint());
    m_input.MoveTo(place - QPoint(3, 3));
    m_input.MoveTo(place);
    for (int i = 0; i < std::abs(steps); ++i) {
        double const before = GetCamera().GetDistance();
        m_input.Click(steps > 0 ? InputDevice::WheelUp : InputDevice::WheelDown);
        EXPECT_TRUE(WaitUntil([&] { return GetCamera().GetDistance() != before; }))
            << "the wheel does nothing";
    }
}

void ViewerTest::OpenFile(QString const& path) {
    m_window->Open(path);
    WaitForLoad();
}

void ViewerTest::WaitForLoad() {
    ASSERT_TRUE(WaitUntil([this] { return !m_window->GetLoader().IsLoading(); })) << "loading does not end";
}

void ViewerTest::WaitForFrame() {
    HandlePendingEvents();
    // bgfx draws a frame while the next one is recorded, and presents it when it begins that one.
    for (int i = 0; i < 3; ++i) {
        int const before = m_frames;
        GetView().update();
        ASSERT_TRUE(WaitUntil([&] { return m_frames > before; })) << "no frame is drawn";
    }
    HandlePendingEvents();
}

void ViewerTest::ExpectChange(QImage const& before, double atLeast) {
    WaitForFrame();
    double share = 0.0;
    EXPECT_TRUE(WaitUntil([&] { return (share = DifferingShare(Grab(), before)) > atLeast; })) << share;
}

void ViewerTest::ExpectNoChange(QImage const& before) {
    WaitForFrame();
    double share = 0.0;
    EXPECT_TRUE(WaitUntil([&] { return (share = DifferingShare(Grab(), before)) < 1e-4; })) << share;
}

QString ViewerTest::Facts() const {
    return m_window->findChild<QLabel*>("facts")->text();
}

QString ViewerTest::TakeProblem() {
    auto* const box = m_window->findChild<QMessageBox*>();
    if (box == nullptr)
        return {};
    QString const text = box->text() + "|" + box->informativeText();
    delete box;
    return text;
}

QImage ViewerTest::Grab() {
    return Grab(GetView());
}

QImage ViewerTest::Grab(QWidget const& widget) {
    QPoint const place = widget.mapTo(m_window.get(), QPoint());
    QPixmap const pixmap = m_window->screen()->grabWindow(m_window->winId(), place.x(), place.y(),
                                                          widget.width(), widget.height());
    return pixmap.toImage().convertToFormat(QImage::Format_RGB32);
}

double DifferingShare(QImage const& first, QImage const& second) {
    if (first.size() != second.size() || first.isNull())
        return 1.0;
    constexpr int little = 12;
    qint64 differing = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            QRgb const a = first.pixel(x, y);
            QRgb const b = second.pixel(x, y);
            int const difference = std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                             std::abs(qBlue(a) - qBlue(b))});
            differing += difference > little;
        }
    }
    return static_cast<double>(differing) / (static_cast<double>(first.width()) * first.height());
}

int CountColors(QImage const& image) {
    std::set<QRgb> colors;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colors.insert(image.pixel(x, y));
    }
    return static_cast<int>(colors.size());
}

} // namespace viewer
