// How geometry is handed to the draw operations: a pointer and a count.
#pragma once

#include <cstdint>
#include <ranges>
#include <type_traits>

namespace zarvex::zx3D {

/// A non-owning view of `count` consecutive elements, passed by value.
///
/// Lifetime: the elements must live until the call that takes the span returns; no draw operation keeps it.
template<typename T>
struct DataSpan {
    T* data = nullptr;       ///< first element; null makes the span empty
    std::uint64_t count = 0; ///< number of elements, not bytes

    /// An empty span.
    constexpr DataSpan() = default;

    /// Views `elementCount` elements from `first` on.
    constexpr DataSpan(T* first, std::uint64_t elementCount) : data(first), count(elementCount) {}

    /// Views a whole contiguous container: std::vector, std::array, QList, a C array.
    template<std::ranges::contiguous_range Range>
        requires(!std::is_same_v<std::remove_cvref_t<Range>, DataSpan> &&
                 std::is_convertible_v<std::remove_reference_t<std::ranges::range_reference_t<Range>> (*)[],
                                       T (*)[]>)
    constexpr DataSpan(Range&& range) : data(std::ranges::data(range)),
                                        count(std::ranges::size(range)) {}

    /// True when there is nothing to read: no elements, or no pointer to them.
    constexpr bool IsEmpty() const { return data == nullptr || count == 0; }
};

} // namespace zarvex::zx3D
