// The library's messages.
#pragma once

#include <zx3D/Message.h>

#include <QDebug>
#include <QLoggingCategory>
#include <QMessageLogger>

namespace zarvex::zx3DQt {

/// Category "zarvex.zx3dqt": the library's own messages.
QLoggingCategory const& LibraryLog();

/// Category "zarvex.bgfx": what bgfx sends through the callback.
QLoggingCategory const& BgfxLog();

/// A logger of the category without source file, line and function.
inline QMessageLogger LoggerOf(QLoggingCategory const& category) {
    return {nullptr, 0, nullptr, category.categoryName()};
}

/// Streams the pieces one by one into a debug message of the library, with Qt's default blanks between them.
/// Builds nothing when the level is disabled.
template<typename... Pieces>
void LogDebug(Pieces const&... pieces) {
    if (LibraryLog().isDebugEnabled())
        (LoggerOf(LibraryLog()).debug() << ... << pieces);
}

/// Logs a message in the library's category, its name in brackets behind the text, unless its level is
/// disabled. The library's own warnings and zx3D's.
void LogMessage(zx3D::Message const& message);

/// The same at warning level. The text is only built when somebody hears it.
template<typename MakeText>
void LogWarning(char const* name, MakeText&& makeText) {
    if (LibraryLog().isWarningEnabled())
        LogMessage({zx3D::MessageLevel::Warning, name, makeText().toStdString()});
}

} // namespace zarvex::zx3DQt
