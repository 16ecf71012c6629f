// The message handler behind LogCapture.
#include "LogCapture.h"

#include <QMutex>

namespace {

QMutex mutex;
std::vector<LogLine> lines;

void Keep(QtMsgType level, QMessageLogContext const& context, QString const& text) {
    QMutexLocker const locker(&mutex);
    bool const hasContext = context.file != nullptr || context.line != 0 || context.function != nullptr;
    lines.push_back({level, context.category, text.toStdString(), hasContext});
}

} // namespace

LogCapture::LogCapture() : m_previous(qInstallMessageHandler(Keep)) {
    Clear();
}

LogCapture::~LogCapture() {
    qInstallMessageHandler(m_previous);
}

std::vector<LogLine> LogCapture::Lines() const {
    QMutexLocker const locker(&mutex);
    return lines;
}

std::vector<std::string> LogCapture::Texts(char const* category) const {
    std::vector<std::string> texts;
    for (LogLine const& line : Lines()) {
        if (line.category == category)
            texts.push_back(line.text);
    }
    return texts;
}

void LogCapture::Clear() {
    QMutexLocker const locker(&mutex);
    lines.clear();
}
