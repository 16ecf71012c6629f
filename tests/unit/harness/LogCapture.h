// Collects what is logged through Qt while it lives.
#pragma once

#include <QDebug>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

/// One message that reached Qt's message handler.
struct LogLine {
    QtMsgType level = QtDebugMsg;
    std::string category;
    std::string text;
    bool hasContext = false; ///< file, line or function is set

    friend bool operator==(LogLine const&, LogLine const&) = default;
    friend std::ostream& operator<<(std::ostream& stream, LogLine const& line) {
        return stream << line.category << " level " << int(line.level) << ": " << line.text;
    }
};

/// Replaces Qt's message handler for its lifetime and keeps the messages instead of printing them.
/// One at a time; messages may come from any thread.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();

    LogCapture(LogCapture const&) = delete;
    LogCapture& operator=(LogCapture const&) = delete;

    [[nodiscard]] std::vector<LogLine> Lines() const;

    /// Texts of one category, in order.
    [[nodiscard]] std::vector<std::string> Texts(char const* category) const;

    /// Texts of the library's own category.
    [[nodiscard]] std::vector<std::string> Texts() const { return Texts("zarvex.zx3dqt"); }

    void Clear();

private:
    QtMessageHandler m_previous;
};

/// The text that these pieces give when they are streamed one by one into a QDebug in its default mode.
template<typename... Pieces>
std::string Streamed(Pieces const&... pieces) {
    QString text;
    {
        QDebug stream(&text);
        ((stream << pieces), ...);
    }
    // The blank after the last piece; QDebug takes it off when it hands a message over.
    if (text.endsWith(u' '))
        text.chop(1);
    return text.toStdString();
}
