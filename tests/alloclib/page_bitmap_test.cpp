// Search and marking in the bitmap of free pages.
#include "alloclib/src/page_bitmap.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace alloclib::test {
namespace {

constexpr uint32_t allPages = PageBitmap::Words * PageBitmap::WordBits;

TEST(PageBitmap, HasTheShapeOfATable) {
    EXPECT_EQ(uint32_t{PageBitmap::Words}, 320U);
    EXPECT_EQ(uint32_t{PageBitmap::Chunks}, 40U);
    EXPECT_EQ(uint32_t{PageBitmap::PagesInChunk}, 256U);
    EXPECT_EQ(allPages, 10240U);
    EXPECT_EQ(sizeof(PageBitmap), 320U * 4);
}

TEST(PageBitmap, StartsWithAllPagesFree) {
    const PageBitmap bitmap;
    for (uint32_t page = 0; page < allPages; ++page) {
        ASSERT_TRUE(bitmap.isFree(page)) << page;
    }
    EXPECT_EQ(bitmap.findRun(0, 1), 0U);
    EXPECT_EQ(bitmap.findRun(0, 256), 0U);
    EXPECT_EQ(bitmap.findRun(0, 257), PageBitmap::NoRun);
}

TEST(PageBitmap, FindsTheFirstRunOfTheLength) {
    PageBitmap bitmap;
    bitmap.clearBits(0, 256);
    bitmap.setBits(3, 1);
    bitmap.setBits(10, 2);
    bitmap.setBits(30, 4); // over the border of two words
    EXPECT_EQ(bitmap.findRun(0, 1), 3U);
    EXPECT_EQ(bitmap.findRun(0, 2), 10U);
    EXPECT_EQ(bitmap.findRun(0, 3), 30U);
    EXPECT_EQ(bitmap.findRun(0, 4), 30U);
    EXPECT_EQ(bitmap.findRun(0, 5), 256U);
}

TEST(PageBitmap, RunNeverCrossesAChunk) {
    PageBitmap bitmap;
    bitmap.clearBits(0, allPages);
    bitmap.setBits(156, 100); // the end of chunk 0
    bitmap.setBits(256, 100); // the start of chunk 1
    EXPECT_EQ(bitmap.findRun(0, 200), PageBitmap::NoRun);
    EXPECT_EQ(bitmap.findRun(0, 101), PageBitmap::NoRun);
    EXPECT_EQ(bitmap.findRun(0, 100), 156U);
    bitmap.clearBits(156, 1);
    EXPECT_EQ(bitmap.findRun(0, 100), 256U);
}

TEST(PageBitmap, RunMayCrossWordsInAChunk) {
    PageBitmap bitmap;
    bitmap.clearBits(0, 32);
    EXPECT_EQ(bitmap.findRun(0, 224), 32U);
    EXPECT_EQ(bitmap.findRun(0, 225), 256U);
}

TEST(PageBitmap, UsedWordBreaksARun) {
    PageBitmap bitmap;
    bitmap.clearBits(32, 32);
    EXPECT_EQ(bitmap.findRun(0, 33), 64U);
    EXPECT_EQ(bitmap.findRun(0, 32), 0U);
}

TEST(PageBitmap, SearchStartsAtTheGivenWord) {
    const PageBitmap bitmap;
    EXPECT_EQ(bitmap.findRun(5, 1), 160U);
    EXPECT_EQ(bitmap.findRun(319, 32), 319U * 32);
    EXPECT_EQ(bitmap.findRun(319, 33), PageBitmap::NoRun);
    EXPECT_EQ(bitmap.findRun(320, 1), PageBitmap::NoRun);
    EXPECT_EQ(bitmap.findRun(321, 1), PageBitmap::NoRun);
}

TEST(PageBitmap, OpenRunGoesOnInAWordWhoseLowHalfIsUsed) {
    PageBitmap bitmap;
    bitmap.clearBits(0, 31);
    bitmap.clearBits(32, 16); // low half of word 1
    EXPECT_EQ(bitmap.findRun(0, 1), 31U);
    EXPECT_EQ(bitmap.findRun(0, 2), 48U);
    EXPECT_EQ(bitmap.findRun(1, 1), 48U);
}

TEST(PageBitmap, LastPageCanBeMarked) {
    PageBitmap bitmap;
    bitmap.clearBits(allPages - 1, 1);
    EXPECT_FALSE(bitmap.isFree(allPages - 1));
    EXPECT_TRUE(bitmap.isFree(allPages - 2));
    bitmap.setBits(allPages - 1, 1);
    EXPECT_TRUE(bitmap.isFree(allPages - 1));
}

TEST(PageBitmapDeathTest, MarkingBehindTheEnd) {
    const auto mark = [](uint32_t first, uint64_t count) {
        PageBitmap bitmap;
        bitmap.setBits(first, count);
    };
    const char* const text = "Internal alloclib error: SetBits outside of bitmap\n";
    EXPECT_EXIT(mark(allPages, 1), testing::ExitedWithCode(1), testing::Eq(text));
    EXPECT_EXIT(mark(allPages - 1, 2), testing::ExitedWithCode(1), testing::Eq(text));
    EXPECT_EXIT(mark(0, uint64_t{1} << 40), testing::ExitedWithCode(1), testing::Eq(text));
    EXPECT_EXIT(mark(UINT32_MAX, 1), testing::ExitedWithCode(1), testing::Eq(text));
}

// The first run by the plain definition.
uint32_t plainSearch(const std::vector<bool>& freePages, uint32_t count) {
    uint32_t run = 0;
    for (uint32_t page = 0; page < freePages.size(); ++page) {
        if (page % 256 == 0) {
            run = 0;
        }
        run = freePages[page] ? run + 1 : 0;
        if (run == count) {
            return page + 1 - count;
        }
    }
    return PageBitmap::NoRun;
}

TEST(PageBitmap, AgreesWithAPlainSearch) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        std::minstd_rand engine(seed);
        const auto random = [&engine] { return static_cast<uint32_t>(engine()) >> 3; };
        PageBitmap bitmap;
        std::vector<bool> freePages(allPages, true);
        for (int step = 0; step < 400; ++step) {
            const uint32_t count = random() % 80 + 1;
            const uint32_t first = random() % (allPages - count);
            const bool makeFree = random() % 3 == 0;
            if (makeFree) {
                bitmap.setBits(first, count);
            } else {
                bitmap.clearBits(first, count);
            }
            std::fill_n(freePages.begin() + first, count, makeFree);
            const uint32_t length = random() % 70 + 1;
            ASSERT_EQ(bitmap.findRun(0, length), plainSearch(freePages, length))
                << "seed " << seed << " step " << step;
        }
    }
}

} // namespace
} // namespace alloclib::test
