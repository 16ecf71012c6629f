// Blocks come in sizes that are a quarter of a power of two apart, so that frames of nearly the same size
// find each other's.
#include "BlockPool.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

std::size_t SizeFor(std::size_t bytes) {
    std::size_t const step = std::bit_floor(bytes) / 4;
    return (bytes + step - 1) / step * step;
}

} // namespace

std::shared_ptr<std::byte[]> BlockPool::Take(std::size_t bytes) {
    std::size_t const size = SizeFor(std::max(bytes, kSmallestBlock));
    Block block = TakeIdle(size);
    if (!block.bytes)
        block.bytes.reset(new std::byte[size]);
    auto const giveBack = [size, pool = weak_from_this()](std::byte* data) {
        Block returned{std::unique_ptr<std::byte[]>(data), size, 0};
        if (std::shared_ptr<BlockPool> const keeper = pool.lock())
            keeper->GiveBack(std::move(returned));
    };
    return {block.bytes.release(), giveBack};
}

void BlockPool::StartFrame() {
    std::lock_guard const lock(m_mutex);
    ++m_frame;
    std::erase_if(m_idle, [&](Block const& block) {
        bool const isOld = m_frame - block.lastFrame > kMaxIdleFrames;
        m_idleBytes -= isOld ? block.size : 0;
        return isOld;
    });
}

std::size_t BlockPool::CountIdleBytes() {
    std::lock_guard const lock(m_mutex);
    return m_idleBytes;
}

BlockPool::Block BlockPool::TakeIdle(std::size_t size) {
    std::lock_guard const lock(m_mutex);
    // The latest first: of those some are in the processor's caches, and the others grow old.
    auto const found = std::find_if(m_idle.rbegin(), m_idle.rend(),
                                    [size](Block const& block) { return block.size == size; });
    if (found == m_idle.rend())
        return {};
    Block block = std::move(*found);
    m_idle.erase(std::next(found).base());
    m_idleBytes -= size;
    return block;
}

void BlockPool::GiveBack(Block block) {
    std::lock_guard const lock(m_mutex);
    if (m_idleBytes + block.size > kMaxIdleBytes)
        return;
    m_idleBytes += block.size;
    block.lastFrame = m_frame;
    m_idle.push_back(std::move(block));
}

} // namespace zarvex::zx3DQt
