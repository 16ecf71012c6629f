// What all targets log alike.
#pragma once

#include "../frame/Logging.h"

#include <QEvent>
#include <QString>

namespace zarvex::zx3DQt {

/// The trace line of an event handler.
template<typename Target>
void LogHandler(char const* className, Target const& target, char const* eventClass, QEvent const* event) {
    if (LibraryLog().isDebugEnabled())
        LogDebug(className, "::", eventClass, "[this:", static_cast<void const*>(&target), "]",
                 "[objectName:", target.objectName(), "]", "[event: ", event, "]");
}

} // namespace zarvex::zx3DQt
