// Long random sequences of allocation and discard: blocks never overlap and keep their bytes.
#include "alloclib/interface/default_region.h"
#include "alloclib/src/library_state.h"
#include "alloclib/src/region_large_block.h"
#include "tests/alloclib/region_fixtures.h"

#include <map>
#include <random>

namespace alloclib::test {
namespace {

struct Block {
    char* address;
    uint64_t size;
    uint64_t align;
    char fill;
};

class RandomUser {
public:
    RandomUser(Region& region, uint32_t seed) : m_region(region), m_random(seed) {}

    void run(int steps) {
        for (int step = 0; step < steps; ++step) {
            // Waves of growth and shrinking, so that lists run full and empty.
            const bool growing = step / 500 % 2 == 0;
            if (m_blocks.empty() || m_random() % 10 < (growing ? 7U : 3U)) {
                take();
            } else {
                giveBack(m_random() % m_blocks.size());
            }
            if (testing::Test::HasFailure()) {
                return;
            }
        }
        while (!m_blocks.empty()) {
            giveBack(m_blocks.size() - 1);
        }
    }

private:
    uint64_t someSize() {
        switch (m_random() % 10) {
        case 0:
            return m_random() % 400 + 10100; // around the border to large blocks
        case 1:
            return m_random() % 300000 + 1;
        case 2:
            return m_random() % 16 + 116; // around the border to big blocks
        case 3:
            return m_random() % 10000 + 1;
        default:
            return m_random() % 127 + 1;
        }
    }

    void take() {
        Block block{nullptr, someSize(), uint64_t{1} << m_random() % 8,
                    static_cast<char>(m_random())};
        const bool fast = block.align <= 8 && m_random() % 2 == 0;
        block.address = bytesAt(fast ? allocate(m_region, block.size, block.align)
                                     : m_region.Alloc(block.size, block.align, "random"));
        const uint64_t honoured = block.size < 10240 ? std::max<uint64_t>(block.align, 8) : 8;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block.address) % honoured, 0U);
        expectApart(block);
        std::fill_n(block.address, block.size, block.fill);
        m_extents[block.address] = block.address + block.size;
        m_blocks.push_back(block);
    }

    void expectApart(const Block& block) {
        const auto following = m_extents.lower_bound(block.address);
        if (following != m_extents.end()) {
            EXPECT_LE(block.address + block.size, following->first);
        }
        if (following != m_extents.begin()) {
            EXPECT_LE(std::prev(following)->second, block.address);
        }
    }

    void giveBack(size_t index) {
        std::swap(m_blocks[index], m_blocks.back());
        const Block block = m_blocks.back();
        m_blocks.pop_back();
        m_extents.erase(block.address);
        const auto isFill = [&](char byte) { return byte == block.fill; };
        EXPECT_TRUE(std::all_of(block.address, block.address + block.size, isFill));
        m_region.Discard(block.address, block.size, block.align);
    }

    Region& m_region;
    std::mt19937 m_random;
    std::vector<Block> m_blocks;
    std::map<char*, char*> m_extents;
};

TEST(RandomUse, BlocksOfTheDefaultRegionNeverOverlap) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        startAllocators();
        RandomUser(defaultRegion(), seed).run(6000);
        finishAllocators();
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
}

TEST(RandomUse, BlocksOfAnAccurateRegionNeverOverlap) {
    for (uint32_t seed = 1; seed <= 10; ++seed) {
        setDebugMode(DebugMode_Accurate, nullptr);
        startAllocators();
        RandomUser(defaultRegion(), seed).run(6000);
        finishAllocators();
        setDebugMode(DebugMode_None, nullptr);
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
    }
}

TEST(RandomUse, RegionsSideBySideDoNotDisturbEachOther) {
    startAllocators();
    RegionGeneral* const first = RegionGeneral::Create(0, "first");
    RegionGeneral* const second = RegionGeneral::Create(0, "second");
    for (uint32_t seed = 1; seed <= 5; ++seed) {
        RandomUser(*first, seed).run(1500);
        RandomUser(*second, seed + 100).run(1500);
    }
    second->Destroy(true);
    first->Destroy(true);
    finishAllocators();
}

TEST(RandomUse, PagesNeverOverlap) {
    for (uint32_t seed = 1; seed <= 10; ++seed) {
        InitAlloclib();
        RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
        std::mt19937 random(seed);
        std::map<char*, uint64_t> blocks;
        for (int step = 0; step < 3000; ++step) {
            if (blocks.empty() || random() % 5 < 3) {
                const uint64_t size = (random() % 40 + 1) * 4096;
                char* const block = bytesAt(region->Alloc(size, 8, nullptr));
                const auto following = blocks.lower_bound(block);
                ASSERT_TRUE(following == blocks.end() || block + size <= following->first);
                if (following != blocks.begin()) {
                    const auto& [before, sizeBefore] = *std::prev(following);
                    ASSERT_LE(before + sizeBefore, block);
                }
                block[0] = 1;
                block[size - 1] = 1;
                blocks[block] = size;
            } else {
                auto chosen = blocks.begin();
                std::advance(chosen, static_cast<std::ptrdiff_t>(random() % blocks.size()));
                region->Discard(chosen->first, chosen->second, 8);
                blocks.erase(chosen);
            }
        }
        for (const auto& [block, size] : blocks) {
            region->Discard(block, size, 8);
        }
        region->Destroy(true);
        FinishAlloclib();
    }
}

} // namespace
} // namespace alloclib::test
