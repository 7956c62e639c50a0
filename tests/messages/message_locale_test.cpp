#include "messages/interface/message_locale.h"

#include "captured_stream.h"
#include "messages/interface/code_page.h"
#include "messages/interface/locale_listener.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "tabledrivenparser/interface/parameters.h"

#include <clocale>

namespace {

using messages::libReportFatal;
using messages::setMessageLocale;

std::string currentLanguage() {
    return messages::localeTable()[messages::currentLocale()].name;
}

// A reporter that leaves the text and the way out to the library.
bool decline(uint32_t, ...) {
    return false;
}

class MessageLocaleTest : public MessagesTest {
protected:
    // To be called in a death test's process: the report goes where the test looks for it.
    static void refuse(const char* name) {
        const messages::StreamSwitch toError(stderr);
        setMessageLocale(name, libReportFatal);
    }
};
using MessageLocaleDeathTest = MessageLocaleTest;

TEST_F(MessageLocaleTest, SelectsALanguageWithTheDefaultCodePage) {
    setMessageLocale("ja_JP", libReportFatal);
    EXPECT_EQ(currentLanguage(), "ja_JP");
    EXPECT_EQ(messages::outputCodePage(), 0U);
    EXPECT_EQ(messages::inputCodePage(), 0U);
    setMessageLocale("en_US", libReportFatal);
    EXPECT_EQ(currentLanguage(), "en_US");
}

TEST_F(MessageLocaleTest, SelectsUtf8ByEachOfItsNames) {
    for (const char* name :
         {"ja_JP.UTF-8", "ja_JP.UTF8", "ja_JP.utf-8", "ja_JP.utf8", "ja_JP.65001"}) {
        messages::initMessages();
        setMessageLocale(name, libReportFatal);
        EXPECT_EQ(currentLanguage(), "ja_JP") << name;
        EXPECT_EQ(messages::outputCodePage(), 65001U) << name;
        EXPECT_EQ(messages::inputCodePage(), 65001U) << name;
    }
}

TEST_F(MessageLocaleTest, SelectsANumberedPage) {
    setMessageLocale("ja_JP.932", libReportFatal);
    EXPECT_EQ(currentLanguage(), "ja_JP");
    EXPECT_EQ(messages::outputCodePage(), 932U);
    EXPECT_EQ(messages::inputCodePage(), 932U);
}

TEST_F(MessageLocaleTest, SelectsGb2312InAnyCase) {
    for (const char* name : {"en_US.gb2312", "en_US.GB2312", "en_US.Gb2312"}) {
        messages::setCodePages(0, 0);
        setMessageLocale(name, libReportFatal);
        EXPECT_EQ(messages::outputCodePage(), 20936U) << name;
    }
}

TEST_F(MessageLocaleTest, AcceptsTheDefaultPageByNumber) {
    setMessageLocale("ja_JP.0", libReportFatal);
    EXPECT_EQ(currentLanguage(), "ja_JP");
    EXPECT_EQ(messages::outputCodePage(), 0U);
}

TEST_F(MessageLocaleTest, AcceptsACodeSetWithoutALanguage) {
    setMessageLocale("utf8", libReportFatal);
    EXPECT_EQ(currentLanguage(), "en_US");
    EXPECT_EQ(messages::outputCodePage(), 65001U);
    setMessageLocale("1252", libReportFatal);
    EXPECT_EQ(messages::outputCodePage(), 1252U);
}

TEST_F(MessageLocaleTest, SetsPlainRulesForCharacters) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    setMessageLocale("en_US", libReportFatal);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
}

TEST_F(MessageLocaleTest, PrintsTheSelectedLanguageInTheSelectedCodePage) {
    setMessageLocale("ja_JP.UTF-8", libReportFatal);
    messages::report(messages::Severity_Error, messages::MessageKey_NoArchiveSpecified);
    EXPECT_EQ(output(), "エラー: L6838E: アーカイブが指定されていません\n");
    setMessageLocale("ja_JP.932", libReportFatal);
    messages::printMessage(messages::MessageKey_SummaryWarning);
    EXPECT_EQ(output(), "\x8C\x78\x8D\x90");
}

TEST_F(MessageLocaleTest, WritesAQuestionMarkForWhatTheOutputCannotShow) {
    setMessageLocale("ja_JP", libReportFatal);
    messages::printMessage(messages::MessageKey_BannerSupplier, "x");
    EXPECT_EQ(output(), "\n??????????: x");
}

TEST_F(MessageLocaleTest, ReordersArgumentsInJapanese) {
    setMessageLocale("ja_JP.UTF-8", libReportFatal);
    messages::printMessage(messages::MessageKey_ViaFileTooDeep, 10, "a.via");
    EXPECT_EQ(output(),
              "ファイル 'a.via' で via ファイルの再帰的な取り込みの深さが 10 に達しました。");
}

TEST_F(MessageLocaleDeathTest, RefusesWhatSelectsNothing) {
    for (const char* name :
         {"zz", "fr_FR", "", "en_us", "ja_JPx", "12345678", "4294967295", "99999999999", "-1",
          "+932", "932x", "fr_FR.65001", "en_US.", ".utf8", "en_US.foo", "en_US.12345678",
          "en_US.utf-8.x", "a_language_of_a_very_long_name.utf8"}) {
        EXPECT_EXIT(refuse(name), testing::ExitedWithCode(1),
                    std::string("^Fatal error: L9780E: Could not initialise message locale ") +
                        (name[0] == '+' ? "\\+932" : name) + "\n$")
            << name;
    }
}

TEST_F(MessageLocaleDeathTest, RefusesInTheLanguageThatTheNameBeganWith) {
    ::setenv("LC_ALL", "C.UTF-8", 1);
    messages::initMessages();
    EXPECT_EXIT(refuse("ja_JP.foo"), testing::ExitedWithCode(1), "メッセージロケール ja_JP.foo");
}

TEST_F(MessageLocaleDeathTest, SaysSoPlainlyWithoutAReporter) {
    EXPECT_EXIT(setMessageLocale("zz", nullptr), testing::ExitedWithCode(1),
                "^\\*\\*\\* Could not initialise message locale 'zz'\n$");
    EXPECT_EXIT(setMessageLocale(nullptr, nullptr), testing::ExitedWithCode(1),
                "^\\*\\*\\* Could not initialise message locale ''\n$");
}

TEST_F(MessageLocaleDeathTest, SaysSoPlainlyWhenTheReporterDeclines) {
    EXPECT_EXIT(setMessageLocale("zz", decline), testing::ExitedWithCode(1),
                "^\\*\\*\\* Could not initialise message locale 'zz'\n$");
}

TEST_F(MessageLocaleTest, ActsAsTheParserReadsTheOptionAndLetsItStoreTheText) {
    messages::LocaleListener listener(libReportFatal);
    tabledrivenparser::Parameters parameters;
    const char* name = "ja_JP.UTF-8";
    EXPECT_FALSE(listener.parameterSet(parameters, 35, reinterpret_cast<uintptr_t>(name)));
    EXPECT_EQ(currentLanguage(), "ja_JP");
}

} // namespace
