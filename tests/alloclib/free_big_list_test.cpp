// The list of discarded blocks of middle size beside a plain list that is walked.
#include "alloclib/src/free_big_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace alloclib::test {
namespace {

// Places for blocks of up to 256 bytes. They hold no more than the list's own words.
class Places {
public:
    explicit Places(size_t count) : m_bytes(std::make_unique<Place[]>(count)) {}
    void* at(size_t index) { return &m_bytes[index]; }

private:
    struct alignas(8) Place {
        char bytes[72]; // not a power of two, so that places are aligned in many ways
    };
    std::unique_ptr<Place[]> m_bytes;
};

struct Expected {
    void* block;
    uint32_t size;
};

// What a walk from the front takes.
void* walk(std::list<Expected>& list, uint64_t size, uint64_t align) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const Expected& entry) {
        const uint64_t past = reinterpret_cast<uintptr_t>(entry.block) % align;
        const uint64_t gap = align <= 8 || past == 0 ? 0 : align - past;
        return entry.size >= size + gap;
    });
    if (found == list.end()) {
        return nullptr;
    }
    void* const block = found->block;
    list.erase(found);
    return block;
}

TEST(FreeBigList, EmptyListGivesNothing) {
    FreeBigBlock* list = nullptr;
    EXPECT_EQ(takeFreeBig(list, 8, 8), nullptr);
    EXPECT_EQ(list, nullptr);
}

TEST(FreeBigList, LatestThatFitsIsTaken) {
    Places places(4);
    FreeBigBlock* list = nullptr;
    addFreeBig(list, places.at(0), 300);
    addFreeBig(list, places.at(1), 200);
    addFreeBig(list, places.at(2), 200);
    addFreeBig(list, places.at(3), 128);
    EXPECT_EQ(takeFreeBig(list, 304, 8), nullptr);
    FreeBigBlock* const block = takeFreeBig(list, 200, 8);
    EXPECT_EQ(block, places.at(2));
    EXPECT_EQ(sizeOfFreeBig(block), 200U);
    EXPECT_EQ(takeFreeBig(list, 208, 8), places.at(0));
    EXPECT_EQ(takeFreeBig(list, 8, 8), places.at(3));
    EXPECT_EQ(takeFreeBig(list, 8, 8), places.at(1));
    EXPECT_EQ(list, nullptr);
}

TEST(FreeBigList, AgreesWithAWalk) {
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        Places places(600);
        std::vector<void*> unused;
        for (size_t i = 0; i < 600; ++i) {
            unused.push_back(places.at(i));
        }
        std::shuffle(unused.begin(), unused.end(), random);
        FreeBigBlock* list = nullptr;
        std::list<Expected> expected;
        for (int step = 0; step < 4000; ++step) {
            const bool growing = step / 300 % 2 == 0;
            if (!unused.empty() && random() % 10 < (growing ? 7U : 3U)) {
                const auto size =
                    static_cast<uint32_t>(128 + random() % (seed % 2 == 0 ? 8 : 1264) * 8);
                addFreeBig(list, unused.back(), size);
                expected.push_front({unused.back(), size});
                unused.pop_back();
                continue;
            }
            const uint64_t size = random() % 1300 * 8;
            const uint64_t align = random() % 4 == 0 ? uint64_t{1} << random() % 12 : 8;
            void* const block = takeFreeBig(list, size, align);
            ASSERT_EQ(static_cast<void*>(block), walk(expected, size, align))
                << "seed " << seed << " step " << step;
            if (block != nullptr) {
                unused.push_back(block);
            }
        }
        while (!expected.empty()) {
            ASSERT_EQ(takeFreeBig(list, 0, 8), expected.front().block);
            expected.pop_front();
        }
        ASSERT_EQ(list, nullptr);
    }
}

size_t depthOf(const FreeBigBlock* list) {
    size_t deepest = 0;
    std::vector<std::pair<const FreeBigBlock*, size_t>> left{{list, 1}};
    while (!left.empty()) {
        const auto [block, depth] = left.back();
        left.pop_back();
        if (block != nullptr) {
            deepest = std::max(deepest, depth);
            left.emplace_back(block->earlier, depth + 1);
            left.emplace_back(block->later, depth + 1);
        }
    }
    return deepest;
}

// What keeps the time of a search from growing with the number of blocks.
TEST(FreeBigList, StaysFlat) {
    constexpr size_t count = 100000;
    Places places(count);
    FreeBigBlock* list = nullptr;
    for (size_t i = 0; i < count; ++i) {
        addFreeBig(list, places.at(i), i < count / 2 ? 232 : 144);
    }
    EXPECT_LT(depthOf(list), 200U);
    for (size_t i = 0; i < count / 4; ++i) {
        ASSERT_EQ(takeFreeBig(list, 200, 8), places.at(count / 2 - 1 - i));
    }
    EXPECT_LT(depthOf(list), 200U);
}

} // namespace
} // namespace alloclib::test
