// The warning.
#include "GridSteps.h"

#include "../frame/Logging.h"

#include <mutex>

namespace zarvex::zx3DQt {

void WarnOfEndlessGrid(float first, float step, float end) {
    static std::once_flag warned;
    std::call_once(warned, [=] {
        LoggerOf(LibraryLog()).warning()
            << "A coordinate grid from" << first << "to" << end << "in steps of" << step << "is cut short";
    });
}

} // namespace zarvex::zx3DQt
