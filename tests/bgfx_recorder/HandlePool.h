// Hands out 16-bit indices lowest first and takes them back, in the order bgfx's own allocator does.
#pragma once

#include <bgfx/bgfx.h>

#include <cstdint>
#include <numeric>
#include <vector>

namespace recorder {

class HandlePool {
public:
    explicit HandlePool(uint16_t capacity) : m_dense(capacity), m_sparse(capacity) {
        std::iota(m_dense.begin(), m_dense.end(), uint16_t(0));
    }

    uint16_t Allocate() {
        if (m_count == m_dense.size()) {
            return bgfx::kInvalidHandle;
        }
        uint16_t const handle = m_dense[m_count];
        m_sparse[handle] = m_count++;
        return handle;
    }

    void Free(uint16_t handle) {
        uint16_t const index = m_sparse[handle];
        uint16_t const last = m_dense[--m_count];
        m_dense[m_count] = handle;
        m_dense[index] = last;
        m_sparse[last] = index;
    }

private:
    std::vector<uint16_t> m_dense;
    std::vector<uint16_t> m_sparse;
    uint16_t m_count = 0;
};

} // namespace recorder
