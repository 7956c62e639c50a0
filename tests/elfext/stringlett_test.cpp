// Keys by name.
#include "elfext/interface/stringlett.h"

#include "elfext/interface/hash_functions.h"

#include <gtest/gtest.h>

#include <string>

namespace elfext::test {
namespace {

TEST(Stringlett, HashOfNullAndOfEmptyIsZero) {
    EXPECT_EQ(Stringlett().getHash(), 0U);
    EXPECT_EQ(Stringlett(nullptr).getHash(), 0U);
    EXPECT_EQ(Stringlett("").getHash(), 0U);
}

TEST(Stringlett, HashValues) {
    EXPECT_EQ(Stringlett("a").getHash(), 97U);
    EXPECT_EQ(Stringlett("ab").getHash(), 97U * 31 + 98);
    EXPECT_EQ(Stringlett("main").getHash(), 3343801U);
    EXPECT_EQ(Stringlett("__ctype_b_loc").getHash(), [] {
        uint64_t hash = 0;
        for (const char c : std::string("__ctype_b_loc")) {
            hash = (hash * 31 + static_cast<unsigned char>(c)) % 0x100000000;
        }
        return static_cast<uint32_t>(hash);
    }());
}

TEST(Stringlett, BytesCountUnsigned) {
    EXPECT_EQ(Stringlett("\xff").getHash(), 255U);
    EXPECT_EQ(Stringlett("\x80\xfe").getHash(), 128U * 31 + 254);
}

TEST(Stringlett, HashWrapsAt32Bits) {
    const std::string longName(1000, '\xff');
    uint32_t hash = 0;
    for (int i = 0; i < 1000; ++i) {
        hash = hash * 31 + 255;
    }
    EXPECT_EQ(Stringlett(longName.c_str()).getHash(), hash);
}

TEST(Stringlett, NullIsEqualOnlyToNull) {
    EXPECT_TRUE(Stringlett() == Stringlett(nullptr));
    EXPECT_FALSE(Stringlett() == Stringlett(""));
    EXPECT_FALSE(Stringlett("") == Stringlett());
    EXPECT_FALSE(Stringlett() == Stringlett("a"));
    EXPECT_TRUE(Stringlett("") == Stringlett(""));
}

TEST(Stringlett, EqualityIsOfBytesNotOfAddresses) {
    const std::string one = "name";
    const std::string two = "name";
    EXPECT_TRUE(Stringlett(one.c_str()) == Stringlett(two.c_str()));
    EXPECT_FALSE(Stringlett("name") == Stringlett("nam"));
    EXPECT_FALSE(Stringlett("name") == Stringlett("Name"));
}

TEST(Stringlett, EqualHashesAreNotEqualKeys) {
    ASSERT_EQ(Stringlett("Aa").getHash(), Stringlett("BB").getHash());
    EXPECT_FALSE(Stringlett("Aa") == Stringlett("BB"));
}

TEST(Stringlett, TextIsNotCopied) {
    const char text[] = "text";
    EXPECT_EQ(Stringlett(text).getString(), text);
    EXPECT_EQ(Stringlett().getString(), nullptr);
}

TEST(NumberedStringlett, NeedsBothEqual) {
    const NumberedStringlett key("name", 3);
    EXPECT_TRUE(key == NumberedStringlett(std::string("name").c_str(), 3));
    EXPECT_FALSE(key == NumberedStringlett("name", 4));
    EXPECT_FALSE(key == NumberedStringlett("nam", 3));
    EXPECT_FALSE(NumberedStringlett("", 3) == NumberedStringlett(nullptr, 3));
}

TEST(NumberedStringlett, HashIsTheExclusiveOr) {
    EXPECT_EQ(NumberedStringlett("a", 0x12345678).getHash(), 0x12345678U ^ 97U);
    EXPECT_EQ(NumberedStringlett("a", 97).getHash(), 0U);
    EXPECT_EQ(NumberedStringlett().getHash(), 0U);
}

} // namespace
} // namespace elfext::test
