// The look of the viewer's windows.
#pragma once

class QApplication;

namespace viewer {

/// Dark, like the views, so that the mesh is what the eye meets first.
void UseWindowStyle(QApplication& application);

} // namespace viewer
