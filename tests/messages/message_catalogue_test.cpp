#include "messages/interface/message_catalogue.h"

#include "format_reader.h"
#include "messages/interface/message_keys.h"
#include "messages/src/catalogues.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <iconv.h>
#include <set>
#include <string>

namespace {

using messages::MessageCatalogue;
using messages::MessageEntry;

class MessageCatalogueTest : public testing::Test {
protected:
    ~MessageCatalogueTest() override {
        messages::setCurrentLocale(0);
        messages::setOverlay(nullptr);
    }
};

bool isUtf8(const std::string& text) {
    iconv_t handle = ::iconv_open("UTF-16LE", "UTF-8");
    std::string copy = text;
    std::string target(text.size() * 4 + 4, '\0');
    char* from = copy.data();
    char* to = target.data();
    size_t fromLeft = copy.size();
    size_t toLeft = target.size();
    const size_t result = ::iconv(handle, &from, &fromLeft, &to, &toLeft);
    ::iconv_close(handle);
    return result != static_cast<size_t>(-1) && fromLeft == 0;
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string lineEndsOf(const std::string& text) {
    const size_t first = text.find_first_not_of('\n');
    const size_t last = text.find_last_not_of('\n');
    return first == std::string::npos
               ? std::string()
               : std::to_string(first) + " " + std::to_string(text.size() - last);
}

TEST_F(MessageCatalogueTest, ListsEnglishFirstAndJapaneseSecond) {
    const auto locales = messages::localeTable();
    ASSERT_EQ(locales.size(), 2U);
    EXPECT_STREQ(locales[0].name, "en_US");
    EXPECT_STREQ(locales[1].name, "ja_JP");
    EXPECT_EQ(messages::currentLocale(), 0U);
}

TEST_F(MessageCatalogueTest, HoldsTheSameKeysInAscendingOrderInAllLanguages) {
    const auto locales = messages::localeTable();
    for (const messages::LocaleRow& locale : locales) {
        ASSERT_EQ(locale.count, messages::messageCount);
        for (uint64_t i = 0; i < locale.count; ++i) {
            EXPECT_EQ(locale.entries[i].key, locales[0].entries[i].key);
            ASSERT_NE(locale.entries[i].text, nullptr);
            if (i > 0) {
                EXPECT_LT(locale.entries[i - 1].key, locale.entries[i].key);
            }
        }
    }
}

TEST_F(MessageCatalogueTest, HoldsOnlyKeysOfBothSeriesInTheNumbersInUse) {
    for (const MessageEntry& entry : messages::g_englishEntries) {
        EXPECT_EQ(entry.key & 1U, 0U) << entry.key;
        const uint32_t letter = entry.key >> 18;
        EXPECT_TRUE(letter == 'L' || letter == 'X') << entry.key;
        const uint32_t number = (entry.key >> 4) & 0x3FFF;
        EXPECT_TRUE(number >= 3900 && number <= 9999) << entry.key;
        EXPECT_NE(std::strchr("\2\4\6\xA", static_cast<int>(entry.key & 0xF)), nullptr)
            << entry.key;
    }
}

TEST_F(MessageCatalogueTest, TakesTheSameArgumentsInAllLanguages) {
    for (uint64_t i = 0; i < messages::messageCount; ++i) {
        const MessageEntry& english = messages::g_englishEntries[i];
        const MessageEntry& japanese = messages::g_japaneseEntries[i];
        const FormatConversions left = readConversions(english.text);
        const FormatConversions right = readConversions(japanese.text);
        EXPECT_EQ(left.byArgument, right.byArgument) << english.text << "\n" << japanese.text;
        EXPECT_FALSE(left.positional) << english.text;
        EXPECT_FALSE(right.positional && right.sequential) << japanese.text;
    }
}

TEST_F(MessageCatalogueTest, KeepsLineFeedsAroundTextsInAllLanguages) {
    for (uint64_t i = 0; i < messages::messageCount; ++i) {
        const std::string english = messages::g_englishEntries[i].text;
        const std::string japanese = messages::g_japaneseEntries[i].text;
        EXPECT_EQ(english.empty(), japanese.empty()) << english;
        EXPECT_EQ(lineEndsOf(english), lineEndsOf(japanese)) << english;
        if (!english.empty()) {
            EXPECT_EQ(english.back() == ' ', japanese.back() == ' ') << english;
        }
    }
}

TEST_F(MessageCatalogueTest, HoldsUtf8) {
    for (uint64_t i = 0; i < messages::messageCount; ++i) {
        const std::string english = messages::g_englishEntries[i].text;
        const std::string japanese = messages::g_japaneseEntries[i].text;
        EXPECT_TRUE(isUtf8(japanese)) << english;
        EXPECT_TRUE(std::all_of(english.begin(), english.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x80;
        })) << english;
    }
}

TEST_F(MessageCatalogueTest, FindsEveryTextInEachLanguage) {
    const auto locales = messages::localeTable();
    for (uint32_t locale = 0; locale < locales.size(); ++locale) {
        messages::setCurrentLocale(locale);
        for (uint64_t i = 0; i < locales[locale].count; ++i) {
            const MessageEntry& entry = locales[locale].entries[i];
            EXPECT_EQ(messages::messageText(entry.key), entry.text);
            EXPECT_EQ(messages::lookupMessage(entry.key, nullptr), entry.text);
        }
    }
}

TEST_F(MessageCatalogueTest, FindsATextAgainWhateverWasAskedInBetween) {
    const uint32_t key = messages::MessageKey_OutOfMemory;
    const uint32_t unknown = key + 16;
    for (int i = 0; i < 2; ++i) {
        messages::setCurrentLocale(0);
        EXPECT_STREQ(messages::messageText(key), "Out of memory");
        EXPECT_STREQ(messages::messageText(key), "Out of memory");
        messages::setCurrentLocale(1);
        EXPECT_STREQ(messages::messageText(key), "メモリが足りません");
        EXPECT_STREQ(messages::messageText(unknown), "<NotFound Code=L6801U key=0x0131a91a>");
        EXPECT_STREQ(messages::messageText(unknown), "<NotFound Code=L6801U key=0x0131a91a>");
        EXPECT_STREQ(messages::messageText(key), "メモリが足りません");
        EXPECT_STREQ(messages::messageText(messages::MessageKey_ReadError),
                     "ファイル '%s' を読み込めません : %s");
    }
}

TEST_F(MessageCatalogueTest, ReordersArgumentsWhereJapaneseAsksForIt) {
    messages::setCurrentLocale(1);
    const std::string text = messages::messageText(messages::MessageKey_ViaFileTooDeep);
    EXPECT_LT(text.find("%2$s"), text.find("%1$d"));
    EXPECT_NE(text.find("%1$d"), std::string::npos);
}

TEST_F(MessageCatalogueTest, ShowsAKeyThatIsInNoCatalogue) {
    const uint32_t key = (uint32_t{'X'} * 16384 + 3999) * 16 + 10;
    EXPECT_STREQ(messages::messageText(key), "<NotFound Code=X3999U key=0x0160f9fa>");
    EXPECT_STREQ(messages::messageText(0), "<NotFound Code=?0000? key=0x00000000>");
    EXPECT_STREQ(messages::messageText(0xFFFFFFFF), "<NotFound Code=?16383? key=0xffffffff>");
}

TEST_F(MessageCatalogueTest, PutsTheOverlayBeforeTheBuiltInTexts) {
    const MessageEntry entries[] = {
        {messages::MessageKey_OutOfMemory, "no room"},
        {messages::MessageKey_NotArchiveFormat, nullptr},
        {messages::MessageKey_ReadError, "reading"},
    };
    const MessageCatalogue overlay{3, entries};
    EXPECT_STREQ(messages::lookupMessage(messages::MessageKey_OutOfMemory, &overlay), "no room");
    EXPECT_STREQ(messages::lookupMessage(messages::MessageKey_ReadError, &overlay), "reading");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_OutOfMemory), "Out of memory");
    messages::setOverlay(&overlay);
    EXPECT_STREQ(messages::messageText(messages::MessageKey_OutOfMemory), "no room");
}

TEST_F(MessageCatalogueTest, TakesTheBuiltInTextWhereTheOverlayHasNone) {
    const MessageEntry entries[] = {{messages::MessageKey_NotArchiveFormat, nullptr}};
    const MessageCatalogue overlay{1, entries};
    EXPECT_STREQ(messages::lookupMessage(messages::MessageKey_NotArchiveFormat, &overlay),
                 "'%s' not in archive format");
    EXPECT_STREQ(messages::lookupMessage(messages::MessageKey_OutOfMemory, &overlay),
                 "Out of memory");
    const MessageCatalogue empty{0, nullptr};
    EXPECT_STREQ(messages::lookupMessage(messages::MessageKey_OutOfMemory, &empty),
                 "Out of memory");
}

TEST_F(MessageCatalogueTest, IgnoresALocaleThatDoesNotExist) {
    messages::setCurrentLocale(2);
    EXPECT_EQ(messages::currentLocale(), 0U);
}

// Columns, marks of edited members and places, which scripts cut lines by, and what holds no word.
const std::set<uint32_t> sameInAllLanguages = {
    messages::MessageKey_ListName,          messages::MessageKey_ExtractedMember,
    messages::MessageKey_PrintedMember,     messages::MessageKey_ReplacedMember,
    messages::MessageKey_AddedMember,       messages::MessageKey_MovedMember,
    messages::MessageKey_DeletedMember,     messages::MessageKey_SizesRow,
    messages::MessageKey_BannerExtraText,   messages::MessageKey_GnuLocationColumn,
    messages::MessageKey_GnuLocationLine,   messages::MessageKey_GnuLocationFile,
    messages::MessageKey_GnuLocationNone,   messages::MessageKey_IdeLocationColumn,
    messages::MessageKey_IdeLocationLine,   messages::MessageKey_IdeLocationFile,
    messages::MessageKey_IdeLocationNone,   messages::MessageKey_IdeRemark,
    messages::MessageKey_PlainLocationFile, messages::MessageKey_PlainLocationNone,
    messages::MessageKey_PlainRemark,
};

TEST_F(MessageCatalogueTest, TranslatesEveryTextThatHasWords) {
    for (uint64_t i = 0; i < messages::messageCount; ++i) {
        const std::string english = messages::g_englishEntries[i].text;
        const std::string japanese = messages::g_japaneseEntries[i].text;
        if (sameInAllLanguages.contains(messages::g_englishEntries[i].key)) {
            EXPECT_EQ(english, japanese);
        } else {
            EXPECT_FALSE(isAscii(japanese)) << english << "\n" << japanese;
        }
    }
}

// Texts that users' scripts look for, letter by letter where they are easily mistaken.
TEST_F(MessageCatalogueTest, KeepsOddTexts) {
    EXPECT_STREQ(messages::messageText(messages::MessageKey_NullInViaFile),
                 "'\\0' character found in via file '%s' - possible binary file.  Aborting via "
                 "file parse.");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_CannotDeleteVariant),
                 "Cannot delete '%s' as  '%s' is a variant of it");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_BadErrorMessageList),
                 "Bad error message list %s for command %s\n");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_SizesHeading),
                 "\n      Code    RO Data    RW Data    ZI Data      Debug   Object Name\n");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_Banner),
                 "Product: %s\nComponent: %s\nTool: %s [%08x]");
    EXPECT_STREQ(messages::messageText(messages::MessageKey_SummaryWarnings), "warnings");
}

} // namespace
