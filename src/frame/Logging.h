// The library's messages.
#pragma once

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

} // namespace zarvex::zx3DQt
