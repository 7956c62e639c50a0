// The hash of texts: that it depends on all that it is given, and on nothing else.
#include "platform/interface/text_hash.h"

#include <initializer_list>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace platform;

TEST(TextHash, FactorsLoseNothingAndStayInARun) {
    EXPECT_EQ(hashFactors().first % 2, 1U);
    EXPECT_EQ(hashFactors().second % 2, 1U);
    EXPECT_EQ(&hashFactors(), &hashFactors());
}

TEST(TextHash, EqualBytesHaveEqualHashesWhereverTheyLie) {
    for (size_t length = 0; length < 40; ++length) {
        const std::string text(length, 'x');
        for (size_t shift = 0; shift < 8; ++shift) {
            const std::string moved = std::string(shift, 'y') + text;
            EXPECT_EQ(mixBytes(7, moved.data() + shift, length), mixText(7, text.c_str()));
        }
    }
}

TEST(TextHash, EachBitAndTheLengthCount) {
    for (const size_t length : std::initializer_list<size_t>{1, 7, 8, 9, 16, 23}) {
        const std::string text(length, '\0');
        std::set<uint64_t> seen = {mixBytes(0, text.data(), length),
                                   mixBytes(mixHash(0, 1), text.data(), length),
                                   mixBytes(0, text.data(), length - 1)};
        for (size_t bit = 0; bit < length * 8; ++bit) {
            std::string other = text;
            other[bit / 8] = static_cast<char>(1U << bit % 8);
            seen.insert(mixBytes(0, other.data(), length));
        }
        EXPECT_EQ(seen.size(), 3 + length * 8) << length;
    }
}

TEST(TextHash, OrderCounts) {
    EXPECT_NE(mixText(0, "first...second.."), mixText(0, "second..first..."));
    EXPECT_NE(mixHash(mixHash(0, 1), 2), mixHash(mixHash(0, 2), 1));
    EXPECT_NE(mixText(mixText(0, "ab"), "c"), mixText(mixText(0, "a"), "bc"));
}

TEST(TextHash, FoldingTakesBothHalves) {
    EXPECT_EQ(foldHash(0x0000000500000003), 6U);
    EXPECT_NE(foldHash(uint64_t{1} << 40), foldHash(0));
}

} // namespace
