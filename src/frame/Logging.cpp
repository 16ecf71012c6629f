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

} // namespace zarvex::zx3DQt
