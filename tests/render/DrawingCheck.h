// Does drawing work?
#pragma once

#include <QColor>

namespace zarvex::zx3DQt {
class BGFXRenderer;
}

namespace zarvex::testing {

class OffscreenTarget;

/// Draws a rectangle of the colour on the target and fails the test when the picture is not right.
void ExpectDrawingWorks(zx3DQt::BGFXRenderer& renderer, OffscreenTarget& target, QColor const& color);

/// The same with a renderer and a target that come and go with the call.
void ExpectDrawingWorks(QColor const& color);

} // namespace zarvex::testing
