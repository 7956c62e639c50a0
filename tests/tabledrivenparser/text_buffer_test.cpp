// The bounded text writer.

#include "tabledrivenparser/interface/text_buffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tabledrivenparser {

TEST(TextBufferTest, FieldsStandInTheirOrder) {
    TextBuffer buffer{7, nullptr, 3, 1, ',', 1};
    EXPECT_EQ(buffer.capacity, 7U);
    EXPECT_EQ(buffer.text, nullptr);
    EXPECT_EQ(buffer.length, 3U);
    EXPECT_EQ(buffer.quoting, 1);
    EXPECT_EQ(buffer.separator, ',');
    EXPECT_EQ(buffer.joined, 1);
}

TEST(TextBufferTest, WritesWhatFitsAndCountsAll) {
    std::string room(8, '!');
    TextBuffer buffer;
    buffer.capacity = 5;
    buffer.text = room.data();
    buffer.addText("abc");
    buffer.add('d');
    EXPECT_TRUE(buffer.fits());
    buffer.addText("efg");
    buffer.add('\0');
    EXPECT_EQ(room, "abcde!!!");
    EXPECT_EQ(buffer.length, 8U);
    EXPECT_FALSE(buffer.fits());
}

TEST(TextBufferTest, ExactlyFullStillFits) {
    std::string room(5, '!');
    TextBuffer buffer;
    buffer.capacity = 4;
    buffer.text = room.data();
    buffer.addText("abc");
    buffer.add('\0');
    EXPECT_TRUE(buffer.fits());
    EXPECT_EQ(room, std::string("abc\0!", 5));
}

TEST(TextBufferTest, NoRoomOnlyCounts) {
    TextBuffer buffer;
    buffer.addText("abc");
    EXPECT_EQ(buffer.length, 3U);
    EXPECT_FALSE(buffer.fits());
}

TEST(TextBufferTest, LengthStaysAtItsGreatestValue) {
    TextBuffer buffer;
    buffer.length = std::numeric_limits<uint32_t>::max() - 1;
    buffer.addText("abc");
    EXPECT_EQ(buffer.length, std::numeric_limits<uint32_t>::max());
}

} // namespace tabledrivenparser
