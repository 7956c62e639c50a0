#include "messages/interface/message_code.h"

#include "messages/interface/message_keys.h"
#include "messages/src/catalogues.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string codeOf(uint32_t key) {
    char code[messages::codeBufferSize];
    messages::formatCode(key, code);
    return code;
}

constexpr uint32_t makeKey(char letter, uint32_t number, uint32_t classIndex) {
    return (static_cast<uint32_t>(letter) * 16384 + number) * 16 + 2 * classIndex;
}

TEST(MessageCode, ShowsLetterNumberAndClass) {
    EXPECT_EQ(codeOf(20032374), "L6839E");
    EXPECT_EQ(codeOf(23131082), "X3900U");
    EXPECT_EQ(codeOf(20034532), "L6974W");
    EXPECT_EQ(codeOf(23228066), "X9962I");
}

TEST(MessageCode, ShowsEachClassByItsLetter) {
    const std::string letters = "?IWE?U??";
    for (uint32_t index = 0; index < letters.size(); ++index) {
        EXPECT_EQ(codeOf(makeKey('L', 6800, index)), std::string("L6800") + letters[index]);
    }
}

TEST(MessageCode, ShowsALetterThatIsNotPrintableAsAQuestionMark) {
    EXPECT_EQ(codeOf(makeKey('\x01', 6800, 3)), "?6800E");
    EXPECT_EQ(codeOf(makeKey('\x7F', 6800, 3)), "?6800E");
    EXPECT_EQ(codeOf(makeKey('~', 6800, 3)), "~6800E");
}

TEST(MessageCode, ShowsNumberZeroWithFourDigits) {
    EXPECT_EQ(codeOf(makeKey('X', 0, 5)), "X0000U");
}

TEST(MessageCode, ShowsTheLargestNumberWithAllItsDigits) {
    EXPECT_EQ(codeOf(makeKey('X', 16383, 5)), "X16383U");
    EXPECT_EQ(codeOf(0xFFFFFFFF), "?16383?");
}

TEST(MessageCode, ReadsEveryKeyOfTheCatalogueFromItsCode) {
    for (const messages::MessageEntry& entry : messages::g_englishEntries) {
        EXPECT_EQ(messages::parseCode(codeOf(entry.key).c_str()), entry.key) << codeOf(entry.key);
    }
}

TEST(MessageCode, FoldsLetterAndClassWhenRead) {
    EXPECT_EQ(messages::parseCode("l6839e"), 20032374U);
    EXPECT_EQ(messages::parseCode("x3900u trailing"), 23131082U);
}

TEST(MessageCode, ReadsAnyOtherFirstCharacterAsQ) {
    EXPECT_EQ(messages::parseCode("96839E"), makeKey('Q', 6839, 3));
    EXPECT_EQ(messages::parseCode("_6839W"), makeKey('Q', 6839, 2));
}

TEST(MessageCode, ReadsUnknownOrMissingClassAsNone) {
    EXPECT_EQ(messages::parseCode("L6839Z"), makeKey('L', 6839, 0));
    EXPECT_EQ(messages::parseCode("L6839"), makeKey('L', 6839, 0));
    EXPECT_EQ(messages::parseCode("L6839I"), makeKey('L', 6839, 1));
}

TEST(MessageCode, ReadsShortTexts) {
    EXPECT_EQ(messages::parseCode(""), makeKey('Q', 0, 0));
    EXPECT_EQ(messages::parseCode("L"), makeKey('L', 0, 0));
    EXPECT_EQ(messages::parseCode("Lx"), makeKey('L', 0, 0));
}

TEST(MessageCode, GivesTheNumberOfAKey) {
    EXPECT_EQ(messages::keyNumber(20032374), 6839U);
    EXPECT_EQ(messages::keyNumber(0xFFFFFFFF), 16383U);
}

} // namespace
