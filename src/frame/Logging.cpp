// The two logging categories, created on first use.
#include "Logging.h"

namespace zarvex::zx3DQt {

QLoggingCategory const& LibraryLog() {
    static QLoggingCategory const category("zarvex.zx3dqt", QtDebugMsg);
    return category;
}

QLoggingCategory const& BgfxLog() {
    static QLoggingCategory const category("zarvex.bgfx", QtDebugMsg);
    return category;
}

void LogMessage(zx3D::Message const& message) {
    QLoggingCategory const& log = LibraryLog();
    QMessageLogger const logger = LoggerOf(log);
    auto const write = [&](bool isEnabled, auto stream) {
        if (isEnabled)
            stream().noquote() << QString("%1 [%2]").arg(QString::fromUtf8(message.text),
                                                         QString::fromUtf8(message.name));
    };
    switch (message.level) {
    case zx3D::MessageLevel::Debug:
        return write(log.isDebugEnabled(), [&] { return logger.debug(); });
    case zx3D::MessageLevel::Info:
        return write(log.isInfoEnabled(), [&] { return logger.info(); });
    case zx3D::MessageLevel::Warning:
        return write(log.isWarningEnabled(), [&] { return logger.warning(); });
    case zx3D::MessageLevel::Critical:
        return write(log.isCriticalEnabled(), [&] { return logger.critical(); });
    }
}

} // namespace zarvex::zx3DQt
