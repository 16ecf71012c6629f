// The application's top-level widgets, and which of them are painted.
#pragma once

#include <QApplication>
#include <QEvent>
#include <QObject>
#include <QWidget>

#include <algorithm>
#include <vector>

/// Lets everything that was posted or asked for happen.
inline void Settle() {
    for (int i = 0; i < 5; ++i)
        QCoreApplication::processEvents();
}

inline void ShowAllTopLevels() {
    for (QWidget* const widget : QApplication::topLevelWidgets())
        widget->show();
    Settle();
}

/// Notes the top-level widgets in which something was painted since it was created, each once.
class PaintedTopLevels : public QObject {
public:
    PaintedTopLevels() { qApp->installEventFilter(this); }

    [[nodiscard]] std::vector<QWidget*> const& Get() const { return m_painted; }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType())
            Note(static_cast<QWidget*>(watched)->window());
        return false;
    }

private:
    void Note(QWidget* topLevel) {
        if (std::ranges::find(m_painted, topLevel) == m_painted.end())
            m_painted.push_back(topLevel);
    }

    std::vector<QWidget*> m_painted;
};
