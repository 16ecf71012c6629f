// A strong alias: one value of type T that no other alias of T converts to.
#pragma once

#include <concepts>

namespace zarvex::zx3D {

/// Wraps one value of type `T`. `Tag` is an empty struct that only makes the type distinct, so that an id
/// cannot be passed where a render state is expected.
///
/// Built explicitly from a `T`, and converts back to exactly that type, but to no other: neither can a state
/// be taken for a width. A plain value: copied freely, owns nothing.
template<typename T, typename Tag>
class TaggedValueType {
public:
    /// Wraps `value`.
    constexpr explicit TaggedValueType(T value) : m_value(value) {}

    /// The wrapped value.
    /// @{
    constexpr T GetValue() const { return m_value; }
    template<std::same_as<T> U>
    constexpr operator U() const {
        return m_value;
    }
    /// @}

private:
    T m_value;
};

} // namespace zarvex::zx3D
