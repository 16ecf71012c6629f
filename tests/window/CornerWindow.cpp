// Painting and looking at the screen.
#include "CornerWindow.h"

#include "CornerPicture.h"

#include <QPixmap>
#include <QScreen>

#include <gtest/gtest.h>

namespace zarvex::testing {

CornerWindow::CornerWindow(QColor const& color, std::uint16_t viewId) : m_color(color), m_viewId(viewId) {
    resize(320, 240);
}

bool CornerWindow::RecordFrame() {
    return RecordCornerPicture(GetRenderer(), GetFrameBuffer(), GetViewport(), m_color, m_viewId);
}

bool CornerWindow::PaintFrame() {
    if (!RecordFrame())
        return false;
    GetRenderer().PresentCurrentAndSubmitNextFrame(false);
    return true;
}

void ShowAndWait(CornerWindow& window) {
    window.show();
    EXPECT_TRUE(WaitUntil([&window] { return window.isExposed(); })) << "the window does not appear";
}

QImage GrabFromScreen(CornerWindow const& window) {
    QImage image =
        window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGB32);
    image.setDevicePixelRatio(1.0);
    return image;
}

void ExpectPicture(CornerWindow& window) {
    std::string difference = "nothing was painted";
    EXPECT_TRUE(WaitUntil([&] {
        if (!window.PaintFrame())
            return false;
        difference = FindDifference(GrabFromScreen(window), window.GetViewport().size(), window.GetColor());
        return difference.empty();
    })) << difference;
}

} // namespace zarvex::testing
