// A strong alias: one value of type T that no other alias of T converts to.
#pragma once

namespace zarvex::zx3D {

/// Wraps one value of type `T`. `Tag` is an empty struct that only makes the type distinct, so that an id
/// cannot be passed where a render state is expected.
///
/// Built explicitly from a `T`, and converts back to it. A plain value: copied freely, owns nothing.
template<typename T, typename Tag>
class TaggedValueType {
public:
    /// Wraps `value`.
    constexpr explicit TaggedValueType(T value) : m_value(value) {}

    /// The wrapped value.
    constexpr operator T() const { return m_value; }

private:
    T m_value;
};

} // namespace zarvex::zx3D
