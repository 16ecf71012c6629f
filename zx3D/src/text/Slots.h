// Objects named by 16-bit handles.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace zarvex::zx3D {

/// Numbers objects from 0 to 65,534, and numbers of freed ones again. A freed object stays as it is until its
/// number is taken again, so that it can keep its memory.
template<typename T>
class Slots {
public:
    static constexpr std::size_t kMaxCount = std::numeric_limits<std::uint16_t>::max();

    /// Takes a number; the object is default-constructed or as it was freed. Empty when all are taken.
    std::optional<std::uint16_t> Take() {
        if (m_free.empty()) {
            if (m_slots.size() == kMaxCount)
                return std::nullopt;
            m_slots.emplace_back();
            m_free.reserve(m_slots.capacity()); // so that freeing needs no memory
            m_free.push_back(static_cast<std::uint16_t>(m_slots.size() - 1));
        }
        std::uint16_t const index = m_free.back();
        m_free.pop_back();
        m_slots[index].isTaken = true;
        return index;
    }

    void Free(std::uint16_t index) {
        m_slots[index].isTaken = false;
        m_free.push_back(index);
    }

    /// Null when the number is not taken.
    T* Find(std::uint16_t index) {
        return index < m_slots.size() && m_slots[index].isTaken ? &m_slots[index].object : nullptr;
    }

private:
    struct Slot {
        T object;
        bool isTaken = false;
    };

    std::vector<Slot> m_slots;
    std::vector<std::uint16_t> m_free;
};

} // namespace zarvex::zx3D
