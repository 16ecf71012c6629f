// Warnings of the libraries that a unit test provokes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// See harness/Trouble.h. Here, since the namespace there would hide Google Test's where `zarvex` is used.

/// The running test provokes a warning of this name, such as "surface.too-large": it must come before the
/// test ends, and is no failure. Any other is, unless a LogCapture keeps it.
void ExpectWarning(std::string_view name);

/// The texts of the warnings of this name since the last call. They fail nothing any more.
std::vector<std::string> TakeWarnings(std::string_view name);
