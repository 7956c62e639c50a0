// The bounded text writer.

#include "tabledrivenparser/interface/text_buffer.h"

#include "alloclib/interface/default_region.h"

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

TEST(TextBufferTest, WholeTextStandsInTheCallersRoomIfItFits) {
    alloclib::startAllocators();
    for (uint32_t length : {0U, 1U, 6U, 7U, 8U, 9U, 100000U}) {
        std::string room(9, '!');
        TextBuffer buffer{8, room.data(), 0, 1, ',', 1};
        int times = 0;
        const char* text = writeWhole(buffer, [&](TextBuffer& each) {
            ++times;
            EXPECT_EQ(each.length, 0U);
            EXPECT_EQ(each.quoting, 1);
            EXPECT_EQ(each.separator, ',');
            EXPECT_EQ(each.joined, 1);
            each.addText(std::string(length, 'x').c_str());
            each.add('\0');
        });
        EXPECT_EQ(text, std::string(length, 'x'));
        EXPECT_EQ(buffer.text, text);
        EXPECT_EQ(buffer.length, length + 1);
        EXPECT_EQ(text == room.data(), length < 8) << length;
        EXPECT_EQ(times, length < 8 ? 1 : 2) << length;
        EXPECT_EQ(room[8], '!');
    }
    alloclib::finishAllocators();
}

} // namespace tabledrivenparser
