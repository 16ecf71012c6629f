// The warning.
#include "GridSteps.h"

#include "../frame/Logging.h"

#include <zx3D/Message.h>

#include <QString>

namespace zarvex::zx3DQt {

void WarnOfEndlessGrid(float first, float step, float end) {
    // Grids have no state that could tell when the cause is gone: once for all of them.
    static zx3D::OncePerCause endlessGrid;
    endlessGrid.Raise([=] {
        LogWarning("grid.cut-short", [=] {
            return QString("A coordinate grid from %1 to %2 in steps of %3 is cut short")
                .arg(first)
                .arg(end)
                .arg(step);
        });
    });
}

} // namespace zarvex::zx3DQt
