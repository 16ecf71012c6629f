// Blocks that are used again: which, how many are kept, and that they may outlive the pool.
#include "../../src/render/BlockPool.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using zarvex::zx3DQt::BlockPool;

namespace {

constexpr std::size_t kSize = 1 << 20;

class BlockPoolTest : public testing::Test {
protected:
    /// The address of a block that is taken and let go at once.
    void const* TakeAndLetGo(std::size_t bytes) { return m_pool->Take(bytes).get(); }

    /// Takes as many blocks at once and lets them go.
    void Fill(std::size_t count, std::size_t bytes) {
        std::vector<std::shared_ptr<std::byte[]>> blocks;
        for (std::size_t i = 0; i < count; ++i)
            blocks.push_back(m_pool->Take(bytes));
    }

    std::shared_ptr<BlockPool> m_pool = std::make_shared<BlockPool>();
};

} // namespace

TEST_F(BlockPoolTest, ABlockThatCameBackIsUsedAgain) {
    void const* const first = TakeAndLetGo(kSize);
    EXPECT_EQ(TakeAndLetGo(kSize), first);
    EXPECT_EQ(TakeAndLetGo(kSize - 1000), first) << "nearly the same size";
}

TEST_F(BlockPoolTest, BlocksInUseAreNotShared) {
    auto const first = m_pool->Take(kSize);
    auto const second = m_pool->Take(kSize);
    EXPECT_NE(first.get(), second.get());
}

TEST_F(BlockPoolTest, EveryByteOfEverySizeMayBeWritten) {
    for (std::size_t bytes = BlockPool::kSmallestBlock; bytes < 4 * kSize; bytes += 99991) {
        auto const block = m_pool->Take(bytes);
        block[0] = block[bytes - 1] = std::byte{1};
    }
}

TEST_F(BlockPoolTest, WhatIsIdleForLongIsFreed) {
    Fill(1, kSize);
    EXPECT_EQ(m_pool->CountIdleBytes(), kSize);
    for (std::uint32_t frame = 0; frame < BlockPool::kMaxIdleFrames; ++frame)
        m_pool->StartFrame();
    EXPECT_EQ(m_pool->CountIdleBytes(), kSize);
    m_pool->StartFrame();
    EXPECT_EQ(m_pool->CountIdleBytes(), 0u);
}

TEST_F(BlockPoolTest, NoMoreThanTheLimitIsKept) {
    constexpr std::size_t large = BlockPool::kMaxIdleBytes / 4;
    Fill(6, large);
    EXPECT_EQ(m_pool->CountIdleBytes(), BlockPool::kMaxIdleBytes);
}

TEST_F(BlockPoolTest, ABlockMayOutliveThePool) {
    auto block = m_pool->Take(kSize);
    m_pool.reset();
    block[0] = std::byte{1};
    block.reset();
}

TEST_F(BlockPoolTest, BlocksComeBackFromAnotherThread) {
    for (int i = 0; i < 100; ++i) {
        auto block = m_pool->Take(kSize);
        std::thread([taken = std::move(block)]() mutable { taken.reset(); }).join();
    }
    EXPECT_EQ(m_pool->CountIdleBytes(), kSize);
}
