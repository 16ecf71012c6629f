// Whether tests of amounts and times run in full.
#pragma once

#include <QtGlobal>

namespace zarvex::testing {

/// With ZX3D_FULL_COUNTS in the environment; otherwise they are short.
inline bool IsFull() {
    return qEnvironmentVariableIsSet("ZX3D_FULL_COUNTS");
}

} // namespace zarvex::testing
