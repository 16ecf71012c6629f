// What the viewer does with its options, from the start of bgfx to its end.
#pragma once

#include "CommandLine.h"

namespace viewer {

/// Runs with a QApplication in place; returns how the process ends. Says on the standard error what failed.
ExitCode Run(Options const& options);

} // namespace viewer
