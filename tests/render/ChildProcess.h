// For what can be tried only once in a process, or would spoil it for other tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

/// Runs a statement with a fresh start of the test program in a process of its own. Passes when that process
/// ends by itself with no failed expectation; what it writes to its standard error must match the expression.
#define ZX3D_EXPECT_IN_CHILD_PROCESS(statement, expectedOutput)                                              \
    do {                                                                                                     \
        GTEST_FLAG_SET(death_test_style,                                                                     \
                       "threadsafe"); /* the whole program anew, not a fork amid Qt's threads */             \
        EXPECT_EXIT(                                                                                         \
            {                                                                                                \
                statement;                                                                                   \
                zarvex::testing::EndChildProcess();                                                          \
            },                                                                                               \
            ::testing::ExitedWithCode(0), expectedOutput);                                                   \
    } while (false)

namespace zarvex::testing {

/// Ends the process at once, with 0 or, after a failed expectation, with 1.
[[noreturn]] inline void EndChildProcess() {
    std::fflush(nullptr);
    std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
}

} // namespace zarvex::testing
