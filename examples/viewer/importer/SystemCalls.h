// What an import may ask of the kernel.
#pragma once

namespace viewer {

/// From here on the process can read files, write what is open already, use memory and start threads.
/// Whatever else it asks for, as a file that took it over might, ends it with 1 and a message on the standard
/// error. False where the kernel, or the machine it was built on, does not offer that.
bool CloseSystemCalls();

} // namespace viewer
