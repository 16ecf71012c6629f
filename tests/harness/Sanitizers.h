// What the sanitizers need to tell our faults from those of drivers.
#pragma once

namespace zarvex::testing {

/// Keeps every library that is loaded now in memory to the end of the process, drivers included: what a
/// driver's globals point to would otherwise be reported as leaked once the driver is unloaded. Does nothing
/// without a sanitizer.
void PinLoadedLibraries();

} // namespace zarvex::testing
