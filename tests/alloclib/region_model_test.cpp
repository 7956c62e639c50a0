// Long random sequences beside a model that follows the rules of the regions in the plainest way:
// every address, every state and every request to the parent must be the one that the model says.
#include "alloclib/src/region_large_block.h"
#include "tests/alloclib/region_fixtures.h"

#include <array>
#include <functional>
#include <list>
#include <map>
#include <random>

namespace alloclib::test {
namespace {

constexpr uint64_t up8(uint64_t size) {
    return (size + 7) / 8 * 8;
}

uint64_t gapAt(uint64_t address, uint64_t align) {
    return align > 8 && address % align != 0 ? align - address % align : 0;
}

// A general region as a list of rules. Addresses are numbers here.
class ModelRegion {
public:
    // What the region asks its parent for, answered with an address.
    using Parent = std::function<uint64_t(uint64_t size)>;

    ModelRegion(uint64_t next, uint64_t end, bool accurate)
        : m_next(next), m_end(end), m_accurate(accurate) {
        settle();
    }

    uint32_t state() const { return (m_slow ? 2U : 1U) + (m_accurate ? 4U : 0U); }
    uint64_t fastRoom() const { return m_limit - m_next; }
    uint64_t room() const { return m_end - m_next; }
    uint64_t smallBytes() const { return m_smallBytes; }

    uint64_t allocateFast(uint64_t size, uint64_t align, const Parent& parent) {
        if (fastRoom() > up8(size)) {
            const uint64_t block = m_next;
            m_next += up8(size);
            return block;
        }
        return alloc(size, align, parent);
    }

    uint64_t alloc(uint64_t size, uint64_t align, const Parent& parent) {
        const uint64_t need = up8(size) + (align > 8 ? align - 8 : 0);
        if (m_slow && need >= 8 && need < 128 && !m_small[need / 8].empty()) {
            const uint64_t popped = m_small[need / 8].front();
            m_small[need / 8].pop_front();
            m_smallBytes -= need;
            const uint64_t gap = gapAt(popped, align);
            if (gap != 0) {
                giveBack(popped, gap);
            }
            settle();
            return popped + gap;
        }
        if (size >= 10240) {
            return parent((size + 24 + 4095) / 4096 * 4096) + 24;
        }
        if (room() <= up8(size) + gapAt(m_next, align)) {
            findArea(up8(size), align, parent);
        }
        const uint64_t block = m_next + gapAt(m_next, align);
        m_next = block + up8(size);
        settle();
        return block;
    }

    void discard(uint64_t block, uint64_t size, const Parent& parent) {
        if (size == 0 || size >= 10240) {
            return;
        }
        if (up8(size) < 128 && !m_hasLists) {
            m_hasLists = true;
            allocateFast(128, 8, parent);
        }
        giveBack(block, up8(size));
    }

private:
    struct Free {
        uint64_t block;
        uint64_t size;
    };

    void settle() {
        m_slow = m_smallBytes > 10240;
        const bool open = !m_slow && !m_accurate;
        m_limit = !open ? m_next : room() < 10241 ? m_end : m_next + 10240;
    }

    void giveBack(uint64_t block, uint64_t rounded) {
        if (rounded < 128) {
            m_small[rounded / 8].push_front(block);
            m_smallBytes += rounded;
        } else {
            m_big.push_front({block, rounded});
        }
    }

    void findArea(uint64_t rounded, uint64_t align, const Parent& parent) {
        for (auto free = m_big.begin(); free != m_big.end(); ++free) {
            if (free->size >= rounded + gapAt(free->block, align)) {
                m_next = free->block;
                m_end = m_next + free->size;
                m_big.erase(free);
                return;
            }
        }
        const uint64_t size = (rounded + 3000 + 16 + 4095) / 4096 * 4096;
        const uint64_t block = parent(size);
        m_next = block + 16;
        m_end = block + size;
    }

    uint64_t m_next;
    uint64_t m_end;
    uint64_t m_limit = 0;
    bool m_accurate;
    bool m_slow = false;
    bool m_hasLists = false;
    uint64_t m_smallBytes = 0;
    std::array<std::list<uint64_t>, 16> m_small;
    std::list<Free> m_big;
};

class RegionModelTest : public LibraryTest {
protected:
    struct Block {
        void* address;
        uint64_t size;
        uint64_t align;
    };

    static uint64_t number(const void* address) { return reinterpret_cast<uintptr_t>(address); }

    void run(uint32_t seed, bool accurate) {
        LoggingRegion parent;
        setDebugMode(accurate ? DebugMode_Accurate : DebugMode_None, nullptr);
        PushDefaultParent(&parent);
        RegionGeneral* const region = RegionGeneral::Create(0, "test region");
        const uint64_t next = number(RegionGeneralProbe::next(*region));
        ModelRegion model(next, next + region->workingBlockRoom(), accurate);
        size_t asked = parent.allocs.size();
        const auto answer = [&](uint64_t size) {
            // The region has asked already: the model must ask for the same.
            const bool has = asked < parent.allocs.size();
            EXPECT_TRUE(has && parent.allocs[asked].size == size && parent.allocs[asked].align == 8)
                << size;
            return has ? number(parent.allocs[asked++].block) : 0;
        };
        std::mt19937 random(seed);
        std::vector<Block> blocks;
        for (int step = 0; step < 5000 && !HasFailure(); ++step) {
            const bool growing = step / 600 % 2 == 0;
            if (blocks.empty() || random() % 10 < (growing ? 7U : 3U)) {
                Block block{nullptr, someSize(random), uint64_t{1} << random() % 9};
                const bool fast = block.align <= 8 && random() % 4 != 0;
                block.address = fast ? allocate(*region, block.size, block.align)
                                     : region->Alloc(block.size, block.align, nullptr);
                const uint64_t expected = fast ? model.allocateFast(block.size, block.align, answer)
                                               : model.alloc(block.size, block.align, answer);
                EXPECT_EQ(number(block.address), expected);
                blocks.push_back(block);
            } else {
                std::swap(blocks[random() % blocks.size()], blocks.back());
                const Block block = blocks.back();
                blocks.pop_back();
                region->Discard(block.address, block.size, block.align);
                model.discard(number(block.address), block.size, answer);
            }
            EXPECT_EQ(region->workingState(), model.state());
            EXPECT_EQ(region->fastPathRoom(), model.fastRoom());
            EXPECT_EQ(region->workingBlockRoom(), model.room());
            EXPECT_EQ(region->smallBytesWaiting(), model.smallBytes());
            EXPECT_EQ(asked, parent.allocs.size());
            m_slowSteps += (model.state() & RegionGeneral::State_Slow) != 0 ? 1 : 0;
            EXPECT_FALSE(HasFailure()) << "seed " << seed << " step " << step;
        }
        region->Destroy(true);
        EXPECT_EQ(parent.liveBlocks(), 0U);
        PopDefaultParent();
    }

    int m_slowSteps = 0;

private:
    static uint64_t someSize(std::mt19937& random) {
        switch (random() % 12) {
        case 0:
            return random() % 20 + 10230; // around the border to large blocks
        case 1:
            return random() % 30000;
        case 2:
            return random() % 16 + 116; // around the border to big blocks
        case 3:
            return random() % 10000;
        case 4:
            return random() % 600;
        default:
            return random() % 128;
        }
    }
};

TEST_F(RegionModelTest, GeneralRegionFollowsTheModel) {
    for (uint32_t seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        run(seed, false);
    }
    EXPECT_GT(m_slowSteps, 1000); // all ways have been gone
}

TEST_F(RegionModelTest, AccurateRegionFollowsTheModel) {
    for (uint32_t seed = 1; seed <= 20 && !HasFailure(); ++seed) {
        run(seed, true);
    }
    EXPECT_GT(m_slowSteps, 1000);
}

// A region of pages, page by page.
class ModelPages {
public:
    static constexpr int pages = 10240;

    struct Place {
        size_t table;
        int page;
        bool operator<(const Place& other) const {
            return std::pair(table, page) < std::pair(other.table, other.page);
        }
    };

    Place alloc(int count) {
        for (size_t number = 0;; ++number) {
            if (number == m_tables.size()) {
                m_tables.emplace_back();
            }
            Table& table = m_tables[number];
            const int page = find(table, count);
            if (page < pages) {
                if (count == 1) {
                    table.firstFreeWord = page / 32;
                }
                std::fill_n(table.free.begin() + page, count, false);
                return {number, page};
            }
            table.firstFreeWord = 321;
        }
    }

    void discard(const Place& place, int count) {
        Table& table = m_tables[place.table];
        std::fill_n(table.free.begin() + place.page, count, true);
        table.firstFreeWord = std::min(table.firstFreeWord, place.page / 32);
    }

    size_t tables() const { return m_tables.size(); }
    int firstFreeWord(size_t table) const { return m_tables[table].firstFreeWord; }

private:
    struct Table {
        std::vector<bool> free = std::vector<bool>(pages, true);
        int firstFreeWord = 0;
    };

    static int find(const Table& table, int count) {
        int run = 0;
        for (int page = table.firstFreeWord * 32; page < pages; ++page) {
            run = page % 256 == 0 ? 0 : run;
            run = table.free[static_cast<size_t>(page)] ? run + 1 : 0;
            if (run == count) {
                return page - count + 1;
            }
        }
        return pages;
    }

    std::vector<Table> m_tables = std::vector<Table>(1);
};

TEST_F(RegionModelTest, PagesFollowTheModel) {
    for (uint32_t seed = 1; seed <= 8; ++seed) {
        RegionLargeBlock* const region = RegionLargeBlock::Create("pages");
        ModelPages model;
        std::mt19937 random(seed);
        std::map<std::pair<size_t, int>, char*> chunks; // where each chunk of a table lies
        struct Pages {
            char* address;
            ModelPages::Place place;
            int count;
        };
        std::vector<Pages> blocks;
        // Enough to fill a table and a part of the next, and to empty them again.
        for (int step = 0; step < 12000; ++step) {
            const bool growing = step < 6000 || step > 10000;
            if (blocks.empty() || random() % 10 < (growing ? 8U : 2U)) {
                const int count = random() % 3 == 0 ? static_cast<int>(random() % 31) + 1 : 1;
                char* const address =
                    bytesAt(region->Alloc(static_cast<uint64_t>(count) * 4096, 8, nullptr));
                const ModelPages::Place place = model.alloc(count);
                const std::pair chunk(place.table, place.page / 256);
                const auto [known, isNew] =
                    chunks.try_emplace(chunk, address - place.page % 256 * 4096);
                ASSERT_EQ(address, known->second + place.page % 256 * 4096)
                    << "seed " << seed << " step " << step;
                blocks.push_back({address, place, count});
            } else {
                std::swap(blocks[random() % blocks.size()], blocks.back());
                const Pages block = blocks.back();
                blocks.pop_back();
                region->Discard(block.address, static_cast<uint64_t>(block.count) * 4096, 8);
                model.discard(block.place, block.count);
            }
            const RegionLargeBlock* table = region;
            for (size_t number = 0; number < model.tables(); ++number) {
                ASSERT_NE(table, nullptr);
                ASSERT_EQ(table->searchStart(), model.firstFreeWord(number))
                    << "seed " << seed << " step " << step;
                table = table->following();
            }
            ASSERT_EQ(table, nullptr);
        }
        EXPECT_GT(model.tables(), 1U);
        region->Destroy(true);
    }
}

} // namespace
} // namespace alloclib::test
