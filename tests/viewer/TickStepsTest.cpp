// Steps, ticks and their text.
#include <TickSteps.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace viewer {

TEST(TickStepsTest, StepsAreOneTwoOrFiveTimesAPowerOfTen) {
    std::pair<double, double> const expected[] = {{1.0, 1.0},      {1.01, 2.0},  {2.0, 2.0},   {2.1, 5.0},
                                                  {5.0, 5.0},      {5.1, 10.0},  {0.03, 0.05}, {0.1, 0.1},
                                                  {730.0, 1000.0}, {3e-7, 5e-7}, {1.2e9, 2e9}};
    for (auto const& [atLeast, step] : expected)
        EXPECT_NEAR(RoundStep(atLeast) / step, 1.0, 1e-9) << atLeast;
}

TEST(TickStepsTest, AStepIsNeverSmallerThanAskedForNorFiveTimesLarger) {
    for (double atLeast = 1e-6; atLeast < 1e6; atLeast *= 1.37) {
        EXPECT_GE(RoundStep(atLeast), atLeast * (1.0 - 1e-5));
        EXPECT_LE(RoundStep(atLeast), 2.5 * atLeast);
    }
}

TEST(TickStepsTest, WhatIsNoPositiveNumberGivesAUsableStep) {
    for (double const nonsense : {0.0, -3.0, std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_EQ(RoundStep(nonsense), 1.0);
}

TEST(TickStepsTest, TicksAreTheMultiplesWithinTheRangeEndsIncluded) {
    EXPECT_EQ(Ticks(-1.0, 1.0, 0.5), (std::vector<double>{-1.0, -0.5, 0.0, 0.5, 1.0}));
    EXPECT_EQ(Ticks(0.1, 0.9, 0.5), std::vector<double>{0.5});
    EXPECT_EQ(Ticks(0.1, 0.4, 0.5), std::vector<double>());
    // Though 3 times 0.1 is not 0.3, but a little more.
    EXPECT_EQ(Ticks(0.3, 0.3, 0.1).size(), 1u);
    EXPECT_EQ(Ticks(3 * 0.1, 0.35, 0.1).size(), 1u);
}

TEST(TickStepsTest, ThereIsALimitToTheTicks) {
    EXPECT_EQ(Ticks(0.0, 1e9, 1.0).size(), 200u);
    EXPECT_TRUE(Ticks(0.0, std::numeric_limits<double>::infinity(), 1.0).empty());
    EXPECT_TRUE(Ticks(0.0, 1.0, 0.0).empty());
    EXPECT_TRUE(Ticks(0.0, 1.0, -1.0).empty());
}

TEST(TickStepsTest, TextHasTheDecimalsOfItsStep) {
    EXPECT_EQ(TickText(0.5, 0.5), "0.5");
    EXPECT_EQ(TickText(1.0, 0.5), "1.0");
    EXPECT_EQ(TickText(0.25, 0.05), "0.25");
    EXPECT_EQ(TickText(40.0, 20.0), "40");
    EXPECT_EQ(TickText(-3.0, 1.0), QString::fromUtf8("−3"));
    EXPECT_EQ(TickText(1e-17, 0.1), "0");
    EXPECT_EQ(TickText(2e9, 1e9), "2e+09");
    EXPECT_EQ(TickText(3e-6, 1e-6), QString::fromUtf8("3e−06"));
}

} // namespace viewer
