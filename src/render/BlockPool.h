// Large blocks of memory that are used again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace zarvex::zx3DQt {

/// Keeps blocks that come back, so that the next frame of as many points as the last does not take new pages
/// from the system, each of which costs a fault.
///
/// Keeps at most `kMaxIdleBytes`, and none for longer than `kMaxIdleFrames` frames. A block may outlive the
/// pool, and is freed then.
///
/// Thread: any may let go of a block; the rest is for one thread.
class BlockPool : public std::enable_shared_from_this<BlockPool> {
public:
    /// Smaller ones are malloc's affair, which keeps those.
    static constexpr std::size_t kSmallestBlock = 256 * 1024;
    static constexpr std::size_t kMaxIdleBytes = 256 * 1024 * 1024;
    static constexpr std::uint32_t kMaxIdleFrames = 100;

    /// A block of `bytes` or more, uninitialised, aligned for every type. It comes back when the last owner
    /// lets go.
    std::shared_ptr<std::byte[]> Take(std::size_t bytes);

    /// Frees what has been idle for too long.
    void StartFrame();

    /// What is kept for the next ones.
    std::size_t CountIdleBytes();

private:
    struct Block {
        std::unique_ptr<std::byte[]> bytes;
        std::size_t size = 0;
        std::uint32_t lastFrame = 0;
    };

    Block TakeIdle(std::size_t size);
    void GiveBack(Block block);

    std::mutex m_mutex; ///< for what follows
    std::vector<Block> m_idle;
    std::size_t m_idleBytes = 0;
    std::uint32_t m_frame = 0;
};

/// Room for `count` values: from the pool where they are many.
template<typename T>
std::shared_ptr<T[]> TakeValues(BlockPool& pool, std::size_t count) {
    std::size_t const bytes = count * sizeof(T);
    if (bytes < BlockPool::kSmallestBlock)
        return std::make_shared_for_overwrite<T[]>(count);
    std::shared_ptr<std::byte[]> block = pool.Take(bytes);
    auto* const values = reinterpret_cast<T*>(block.get());
    return {std::move(block), values};
}

} // namespace zarvex::zx3DQt
