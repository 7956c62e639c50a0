#include "messages/interface/message_file.h"

#include "messages/interface/message_code.h"
#include "messages/interface/message_keys.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using messages::MessageCatalogue;

struct FreeCatalogue {
    void operator()(MessageCatalogue* catalogue) const { messages::freeMessageFile(catalogue); }
};
using OwnedCatalogue = std::unique_ptr<MessageCatalogue, FreeCatalogue>;

struct ReadResult {
    OwnedCatalogue catalogue;
    std::string warning;
};

ReadResult readBytes(const std::string& bytes) {
    std::FILE* file = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    testing::internal::CaptureStderr();
    ReadResult result;
    result.catalogue.reset(messages::readMessageFile(file));
    result.warning = testing::internal::GetCapturedStderr();
    std::fclose(file);
    return result;
}

std::string warningAt(size_t offset) {
    return "Warning: Badly formed message file before offset " + std::to_string(offset) + ".\n";
}

TEST(MessageFile, ReadsEntriesInTheOrderOfTheFile) {
    const ReadResult result = readBytes("V0001V 3\nL6800U 7 no room\nL6826E 0 \nX3900U 3 a\nb\n");
    EXPECT_EQ(result.warning, "");
    ASSERT_NE(result.catalogue, nullptr);
    ASSERT_EQ(result.catalogue->count, 3U);
    const messages::MessageEntry* entries = result.catalogue->entries;
    EXPECT_EQ(entries[0].key, uint32_t{messages::MessageKey_OutOfMemory});
    EXPECT_STREQ(entries[0].text, "no room");
    EXPECT_EQ(entries[1].key, uint32_t{messages::MessageKey_NotArchiveFormat});
    EXPECT_EQ(entries[1].text, nullptr);
    EXPECT_EQ(entries[2].key, uint32_t{messages::MessageKey_UnrecognizedOption});
    EXPECT_STREQ(entries[2].text, "a\nb");
    EXPECT_STREQ(
        messages::lookupMessage(messages::MessageKey_UnrecognizedOption, result.catalogue.get()),
        "a\nb");
}

TEST(MessageFile, SkipsWhatStandsBehindAnEntry) {
    const ReadResult result = readBytes("V0000V 2 comment\nL6800U 1 xrest\nL6826E 1 y");
    ASSERT_NE(result.catalogue, nullptr);
    EXPECT_STREQ(result.catalogue->entries[0].text, "x");
    EXPECT_STREQ(result.catalogue->entries[1].text, "y");
}

TEST(MessageFile, KeepsBlanksOfATextAndTakesTheFirstForTheSeparator) {
    const ReadResult result = readBytes("V0001V 1\nL6800U 3  x ");
    ASSERT_NE(result.catalogue, nullptr);
    EXPECT_STREQ(result.catalogue->entries[0].text, " x ");
}

TEST(MessageFile, ReadsAFileWithoutEntries) {
    const ReadResult result = readBytes("V0001V 0");
    ASSERT_NE(result.catalogue, nullptr);
    EXPECT_EQ(result.catalogue->count, 0U);
}

TEST(MessageFile, RefusesOtherFilesQuietly) {
    for (const char* bytes :
         {"!<arch>\n", "V0002V 0", "V9999V 0", "V00x1V 0", "V0001W 0", "V0001V0 ", "v0001V 0"}) {
        const ReadResult result = readBytes(bytes);
        EXPECT_EQ(result.catalogue, nullptr) << bytes;
        EXPECT_EQ(result.warning, "") << bytes;
    }
}

TEST(MessageFile, WarnsOfAFileThatEndsInItsHeader) {
    EXPECT_EQ(readBytes("").warning, warningAt(0));
    EXPECT_EQ(readBytes("V0001V").warning, warningAt(6));
}

TEST(MessageFile, WarnsOfDefectsBehindTheHeader) {
    const struct {
        const char* bytes;
        size_t offset;
    } cases[] = {
        {"V0001V ", 7},                                  // no count
        {"V0001V x", 7},                                 // count is no number
        {"V0001V 99999999999999999999999", 27},          // count out of range
        {"V0001V 1", 8},                                 // no line feed
        {"V0001V 1\n", 9},                               // no entry
        {"V0001V 1\nL6800", 14},                         // entry cut short
        {"V0001V 1\n16800U 1 x", 16},                    // no letter
        {"V0001V 1\nL68x0U 1 x", 16},                    // no number
        {"V0001V 1\nL68001 1 x", 16},                    // no class letter
        {"V0001V 1\nL6800Ux1 x", 16},                    // no blank
        {"V0001V 1\nL6800U x", 16},                      // no length
        {"V0001V 1\nL6800U 1", 17},                      // nothing behind the length
        {"V0001V 1\nL6800U 1x", 18},                     // no blank behind the length
        {"V0001V 1\nL6800U 5 abc", 21},                  // text cut short
        {"V0001V 1\nL6800U 18446744073709551615 x", 38}, // length beyond the file
        {"V0001V 2\nL6800U 1 x", 19},                    // second entry missing
    };
    for (const auto& defect : cases) {
        const ReadResult result = readBytes(defect.bytes);
        EXPECT_EQ(result.catalogue, nullptr) << defect.bytes;
        EXPECT_EQ(result.warning, warningAt(defect.offset)) << defect.bytes;
    }
}

TEST(MessageFile, TakesMemoryByWhatTheFileHoldsAndNotByItsCount) {
    const ReadResult result = readBytes("V0001V 18446744073709551615\nL6800U 1 x");
    EXPECT_EQ(result.catalogue, nullptr);
    EXPECT_EQ(result.warning, warningAt(38));
}

TEST(MessageFile, ReadsATextLongerThanOnePiece) {
    const std::string text(10000, 'x');
    const ReadResult result = readBytes("V0001V 1\nL6800U 10000 " + text);
    ASSERT_NE(result.catalogue, nullptr);
    EXPECT_EQ(result.catalogue->entries[0].text, text);
}

} // namespace
