// Which parts of a file overlap: the index against a look at every part.
#include "elfext/src/part_index.h"

#include "tests/elfext/model_fixtures.h"

#include <random>

namespace elfext::test {
namespace {

class PartIndexTest : public ModelTest {
protected:
    // The numbers of the parts that overlap each part.
    static std::vector<uint32_t> byLookingAtAll(const std::vector<FilePart>& parts, uint32_t part) {
        std::vector<uint32_t> found;
        for (uint32_t i = 0; i < parts.size(); ++i) {
            if (parts[i].overlaps(parts[part])) {
                found.push_back(i);
            }
        }
        return found;
    }
    void expectSame(const std::vector<FilePart>& parts) {
        const PartIndex index(*region(), parts);
        for (uint32_t i = 0; i < parts.size(); ++i) {
            fast_array<uint32_t> found(region());
            index.findOverlaps(parts[i], found);
            ASSERT_EQ(elementsOf(found), byLookingAtAll(parts, i)) << i;
            EXPECT_EQ(index.find(parts[i].m_Region), i);
        }
    }
    FilePart partAt(uint64_t start, uint64_t end) { return {makeSection(), start, end}; }
};

TEST_F(PartIndexTest, NoPartIsFoundAmongNone) {
    const std::vector<FilePart> parts;
    EXPECT_EQ(PartIndex(*region(), parts).find(makeSection()), 0U);
}

TEST_F(PartIndexTest, ARegionThatIsNoPartIsNotFound) {
    const std::vector<FilePart> parts = {partAt(0, 1), partAt(1, 2)};
    EXPECT_EQ(PartIndex(*region(), parts).find(makeSection()), 2U);
}

TEST_F(PartIndexTest, PartsThatTouchDoNotOverlap) {
    expectSame({partAt(0, 4), partAt(4, 8), partAt(8, 8), partAt(2, 2), partAt(6, UINT64_MAX)});
}

TEST_F(PartIndexTest, RandomParts) {
    std::mt19937 random(7);
    for (const uint32_t span : {10U, 100U, 10000U}) {
        for (const uint32_t length : {1U, 5U, 300U}) {
            std::vector<FilePart> parts;
            for (uint32_t i = 0; i < 200; ++i) {
                const uint64_t start = random() % span;
                parts.push_back(partAt(start, start + random() % (length + 1)));
            }
            expectSame(parts);
        }
    }
}

// What is found is added to what is there.
TEST_F(PartIndexTest, SearchesAddUp) {
    const std::vector<FilePart> parts = {partAt(0, 4), partAt(2, 6), partAt(9, 10)};
    const PartIndex index(*region(), parts);
    fast_array<uint32_t> found(region());
    index.findOverlaps(parts[2], found);
    index.findOverlaps(parts[0], found);
    EXPECT_EQ(elementsOf(found), (std::vector<uint32_t>{2, 0, 1}));
}

} // namespace
} // namespace elfext::test
