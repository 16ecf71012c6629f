// zx3D::DataSpan: a pointer and a count, and when it counts as empty.
#include <zx3D/DataSpan.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <vector>

using zarvex::zx3D::DataSpan;

TEST(DataSpanTest, DefaultIsEmpty) {
    EXPECT_TRUE(DataSpan<int const>().IsEmpty());
}

TEST(DataSpanTest, PointerWithCountZeroIsEmpty) {
    int const value = 1;
    EXPECT_TRUE((DataSpan<int const>{&value, 0}.IsEmpty()));
}

TEST(DataSpanTest, NullPointerWithCountIsEmpty) {
    EXPECT_TRUE((DataSpan<int const>{nullptr, 3}.IsEmpty()));
}

TEST(DataSpanTest, ViewsContainersWhole) {
    std::vector<int> const vector{1, 2, 3};
    std::array<int, 2> const array{4, 5};
    DataSpan<int const> const ofVector(vector);
    DataSpan<int const> const ofArray(array);
    EXPECT_EQ(ofVector.data, vector.data());
    EXPECT_EQ(ofVector.count, 3u);
    EXPECT_EQ(ofArray.data, array.data());
    EXPECT_EQ(ofArray.count, 2u);
    EXPECT_FALSE(ofVector.IsEmpty());
}

TEST(DataSpanTest, PointerComesBeforeA64BitCount) {
    using Span = DataSpan<int const>;
    static_assert(sizeof(Span::count) == 8);
    EXPECT_EQ(offsetof(Span, data), 0u);
    EXPECT_GE(offsetof(Span, count), sizeof(void*));
}
