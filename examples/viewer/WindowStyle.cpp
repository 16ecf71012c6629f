// A palette for Qt's own style.
#include "WindowStyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace viewer {

void UseWindowStyle(QApplication& application) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QColor const text(222, 227, 235);
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(43, 48, 57));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, QColor(30, 34, 41));
    palette.setColor(QPalette::AlternateBase, QColor(36, 41, 49));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(54, 60, 71));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Highlight, QColor(64, 120, 192));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, QColor(54, 60, 71));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(140, 148, 160));
    palette.setColor(QPalette::Link, QColor(120, 176, 250));
    for (QPalette::ColorRole const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(120, 127, 138));
    application.setPalette(palette);
}

} // namespace viewer
