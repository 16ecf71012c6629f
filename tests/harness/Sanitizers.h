// What a test tells the sanitizers.
#pragma once

namespace zarvex::testing {

/// The process is going to end without giving back what it holds: that is no leak.
void ExpectUntidyEnd();

} // namespace zarvex::testing
