// What must not happen while a test runs, noticed wherever it happens.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zarvex::testing {

/// Collects troubles of the process and fails the test, or else the suite, in which they are met: Qt's
/// warnings, those of the libraries among them, and whatever else is reported. Thread-safe.
class Trouble {
public:
    /// Listens to Qt's messages and to the ends of tests from here on.
    static void Watch();

    static void Report(std::string text);

    /// The running test provokes troubles whose text contains this: one at least must be met before its end,
    /// and none of them is a failure.
    static void Expect(std::string text);

    /// What was reported since the last call, and fails nothing any more.
    static std::vector<std::string> Take();

    /// Those of them that contain a text; the others stay.
    static std::vector<std::string> Take(std::string_view text);
};

/// The running test provokes a warning of the libraries by its name, such as "surface.too-large": it must
/// come before the test ends, and is no failure. Any other is.
void ExpectWarning(std::string_view name);

/// The texts of the libraries' warnings of this name since the last call. They fail nothing any more.
std::vector<std::string> TakeWarnings(std::string_view name);

} // namespace zarvex::testing
