// Arithmetic of vertex layouts: offsets and stride of float and integer attributes.
#include <bgfx/bgfx.h>

#include <algorithm>
#include <iterator>

namespace bgfx {

namespace {

constexpr uint16_t kUnused = UINT16_MAX;

// Bits of an attribute: number of elements less one, type, normalised, as integer.
constexpr uint16_t kNumMask = 3;
constexpr uint16_t kTypeShift = 3;
constexpr uint16_t kTypeMask = 7;
constexpr uint16_t kNormalized = 1 << 7;
constexpr uint16_t kAsInt = 1 << 8;

uint16_t SizeOf(AttribType::Enum type, uint8_t count) {
    switch (type) {
    case AttribType::Uint8:
        return count == 3 ? 4 : count;
    case AttribType::Uint10:
        return 4;
    case AttribType::Int16:
    case AttribType::Half:
        return uint16_t(2 * count);
    default:
        return uint16_t(4 * count);
    }
}

uint32_t Mix(uint32_t hash, uint16_t const* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        hash = (hash ^ values[i]) * 16777619U;
    }
    return hash;
}

} // namespace

VertexLayout::VertexLayout() : m_stride(0) {}

VertexLayout& VertexLayout::begin(RendererType::Enum renderer) {
    m_hash = uint32_t(renderer);
    m_stride = 0;
    std::fill(std::begin(m_attributes), std::end(m_attributes), kUnused);
    std::fill(std::begin(m_offset), std::end(m_offset), uint16_t(0));
    return *this;
}

void VertexLayout::end() {
    m_hash = Mix(2166136261U, m_attributes, std::size(m_attributes));
    m_hash = Mix(m_hash, m_offset, std::size(m_offset));
    m_hash = Mix(m_hash, &m_stride, 1);
}

VertexLayout& VertexLayout::add(Attrib::Enum attrib, uint8_t count, AttribType::Enum type, bool normalized,
                                bool asInt) {
    bool const isFloat = type == AttribType::Half || type == AttribType::Float;
    m_attributes[attrib] = uint16_t(((count - 1) & kNumMask) | ((type & kTypeMask) << kTypeShift) |
                                    (normalized ? kNormalized : 0) | (asInt && !isFloat ? kAsInt : 0));
    m_offset[attrib] = m_stride;
    m_stride = uint16_t(m_stride + SizeOf(type, count));
    return *this;
}

VertexLayout& VertexLayout::skip(uint8_t count) {
    m_stride = uint16_t(m_stride + count);
    return *this;
}

void VertexLayout::decode(Attrib::Enum attrib, uint8_t& count, AttribType::Enum& type, bool& normalized,
                          bool& asInt) const {
    uint16_t const value = m_attributes[attrib];
    count = uint8_t((value & kNumMask) + 1);
    type = AttribType::Enum((value >> kTypeShift) & kTypeMask);
    normalized = (value & kNormalized) != 0;
    asInt = (value & kAsInt) != 0;
}

} // namespace bgfx
