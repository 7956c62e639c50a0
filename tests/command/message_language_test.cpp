// The language of messages and the character set that they go out in.
#include "tests/command/command_case.h"

#include <iconv.h>

namespace commandtest {
namespace {

// What the host makes of a text for a character set, "?" for each character that it lacks.
std::string encoded(const char* charset, std::string text) {
    iconv_t handle = ::iconv_open(charset, "UTF-8");
    std::string target(text.size() * 2 + 16, '\0');
    char* from = text.data();
    char* to = target.data();
    size_t fromLeft = text.size();
    size_t toLeft = target.size();
    while (::iconv(handle, &from, &fromLeft, &to, &toLeft) == static_cast<size_t>(-1)) {
        *to++ = '?';
        --toLeft;
        do {
            ++from;
            --fromLeft;
        } while (fromLeft > 0 && (static_cast<unsigned char>(*from) & 0xC0U) == 0x80);
    }
    ::iconv_close(handle);
    target.resize(target.size() - toLeft);
    return target;
}

class MessageLanguage : public CommandCase {
protected:
    MessageLanguage() { library("lib.a", {"a.o", "b.o"}); }

    CommandResult in(const std::string& environment, Words words) const {
        Command command = testsupport::tomex(folder, std::move(words));
        command.environment["LC_ALL"] = environment;
        return testsupport::run(command);
    }
    CommandResult japanese(Words words) const {
        words.insert(words.begin(), "--message_locale=ja_JP.UTF-8");
        return tomex(std::move(words));
    }
    static std::string refused(const std::string& name) {
        return "Fatal error: L9780E: Could not initialise message locale " + name + "\n";
    }
};

TEST_F(MessageLanguage, JapaneseOfEachSeverity) {
    file("c.o", "c");
    EXPECT_TRUE(ended(japanese({"-t", "lib.a", "no.o"}), 1, "",
                      "エラー: L6831E: 'no.o' はアーカイブ 'lib.a' に存在しません\n"));
    EXPECT_TRUE(ended(japanese({"-r", "new.a", "c.o"}), 0, "",
                      "警告: L6875W: ELF 以外のオブジェクト 'c.o' をアーカイブ 'new.a' "
                      "に追加しています\nアーカイブ 'new.a' を作成しています\n"));
    EXPECT_TRUE(ended(japanese({"--foo"}), 1, "",
                      "致命的なエラー: L3900U: オプション '--foo' を認識できません。\n"));
    EXPECT_TRUE(ended(japanese({"--diag_style=ide", "-t", "lib.a", "no.o"}), 1, "",
                      "tomex : エラー L6831:  'no.o' はアーカイブ 'lib.a' に存在しません\n"));
}

TEST_F(MessageLanguage, JapaneseOrderOfArguments) {
    EXPECT_TRUE(ended(japanese({"-tt", "lib.a"}), 0, "a.o\nb.o\n",
                      "警告: L3920W: 連結したオプション '-tt' でオプション '-t' "
                      "が繰り返されています。\n"));
}

TEST_F(MessageLanguage, ListingsKeepTheirColumns) {
    EXPECT_TRUE(ended(japanese({"-t", "lib.a"}), 0, "a.o\nb.o\n", ""));
    EXPECT_TRUE(ended(japanese({"-tv", "lib.a", "a.o"}), 0,
                      "rw-------     7/     8      4 Jan 01 00:08 1970 a.o (オフセット     72)\n",
                      ""));
}

// Each line of the usage is about the same option in both languages.
TEST_F(MessageLanguage, UsageNamesAllOptions) {
    const auto optionsOf = [](const std::string& usage) {
        Words options;
        size_t at = 0;
        while (at < usage.size()) {
            const size_t end = usage.find('\n', at);
            const std::string line = usage.substr(at, end - at);
            if (line.starts_with(" -") || line.starts_with("--") || line.starts_with("        ")) {
                options.push_back(line.starts_with("   ") ? line : line.substr(0, 12));
            }
            at = end + 1;
        }
        return options;
    };
    const CommandResult english = tomex({"--help"});
    const CommandResult result = japanese({"--help"});
    EXPECT_TRUE(result.exitedWith(0)) << result;
    EXPECT_EQ(optionsOf(english.output).size(), 27U);
    EXPECT_EQ(optionsOf(result.output), optionsOf(english.output));
    EXPECT_NE(result.output.find("\nコマンドの形式:\n\ntomex options archive [ file_list ]\n"),
              std::string::npos)
        << result;
}

TEST_F(MessageLanguage, ActsOnWhatIsReadLater) {
    EXPECT_TRUE(ended(tomex({"--foo", "--message_locale=ja_JP.UTF-8"}), 1, "",
                      "Fatal error: L3900U: Unrecognized option '--foo'.\n"));
    EXPECT_TRUE(ended(tomex({"-tt", "--message_locale", "ja_JP.UTF-8", "lib.a", "no.o"}), 1, "",
                      "Warning: L3920W: Option '-t' repeated in concatenated options '-tt'.\n"
                      "エラー: L6831E: 'no.o' はアーカイブ 'lib.a' に存在しません\n"));
    EXPECT_TRUE(ended(
        tomex({"--message_locale=ja_JP.UTF-8", "--message_locale=en_US", "-t", "lib.a", "no.o"}), 1,
        "", notPresent("Error", "no.o")));
}

TEST_F(MessageLanguage, CharacterSetOfTheEnvironment) {
    const std::string line = "エラー: L6831E: 'no.o' はアーカイブ 'lib.a' に存在しません\n";
    const Words words = {"--message_locale=ja_JP", "-t", "lib.a", "no.o"};
    EXPECT_TRUE(ended(in("C.UTF-8", words), 1, "", line));
    // A locale need not be installed to name its character set.
    EXPECT_TRUE(ended(in("xx_XX.EUC-JP", words), 1, "", encoded("EUC-JP", line)));
    EXPECT_TRUE(ended(in("C", words), 1, "", "???: L6831E: 'no.o' ?????? 'lib.a' ???????\n"));
}

TEST_F(MessageLanguage, CharacterSetByNumberOrName) {
    const std::string line = "エラー: L6831E: 'no.o' はアーカイブ 'lib.a' に存在しません\n";
    const std::vector<std::pair<std::string, const char*>> sets = {
        {"932", "CP932"},    {"65001", "UTF-8"}, {"utf8", "UTF-8"},    {"UTF8", "UTF-8"},
        {"utf-8", "UTF-8"},  {"UTF-8", "UTF-8"}, {"gb2312", "GB2312"}, {"Gb2312", "GB2312"},
        {"20936", "GB2312"}, {"936", "CP936"},
    };
    for (const auto& [name, charset] : sets) {
        for (const char* environment : {"C", "C.UTF-8"}) {
            EXPECT_TRUE(
                ended(in(environment, {"--message_locale=ja_JP." + name, "-t", "lib.a", "no.o"}), 1,
                      "", encoded(charset, line)))
                << name;
        }
    }
    EXPECT_TRUE(
        ended(in("C.UTF-8", {"--message_locale=ja_JP.0", "-t", "lib.a", "no.o"}), 1, "", line));
}

TEST_F(MessageLanguage, NamesGoOutInTheCharacterSet) {
    library("lib.a", {"caf\xC3\xA9.o", "日本.o"});
    EXPECT_TRUE(
        ended(tomex({"--message_locale=en_US.1252", "-t", "lib.a"}), 0, "caf\xE9.o\n??.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--message_locale=1252", "-t", "lib.a"}), 0, "caf\xE9.o\n??.o\n", ""));
    EXPECT_TRUE(ended(tomex({"--message_locale=en_US.932", "-t", "lib.a"}), 0,
                      "caf?.o\n" + encoded("CP932", "日本.o\n"), ""));
    EXPECT_TRUE(
        ended(tomex({"--message_locale=utf8", "-t", "lib.a"}), 0, "caf\xC3\xA9.o\n日本.o\n", ""));
}

// One line a member, whatever its name is.
TEST_F(MessageLanguage, NameThatIsNoUtf8KeepsTheEndOfItsLine) {
    library("lib.a", {"caf\xE9", "x\xC3", "y\xF0\x9F", "z.o"});
    for (const char* environment : {"C", "C.UTF-8"}) {
        EXPECT_TRUE(ended(in(environment, {"-t", "lib.a"}), 0, "caf?\nx?\ny?\nz.o\n", ""));
        EXPECT_TRUE(
            ended(in(environment, {"-xv", "lib.a"}), 0, "x - caf?\nx - x?\nx - y?\nx - z.o\n", ""));
    }
    EXPECT_TRUE(ended(in("C.UTF-8", {"-t", "lib.a", "no\xE9"}), 1, "",
                      "Error: L6831E: 'no\xE9\xA7\xA0" // the quote and the blank are taken along
                      "not present in archive 'lib.a'\n"));
}

TEST_F(MessageLanguage, NamesThatSelectSomething) {
    for (const char* name : {"en_US", "ja_JP", "en_US.utf8", "ja_JP.932", "en_US.1252", "utf8",
                             "UTF-8", "65001", "1252", "0", "gb2312", "GB2312", "20936"}) {
        EXPECT_TRUE(ended(tomex({std::string("--message_locale=") + name, "-t", "lib.a"}), 0,
                          "a.o\nb.o\n", ""))
            << name;
    }
}

TEST_F(MessageLanguage, NamesThatSelectNothingEndTheRun) {
    for (const char* name :
         {"zz", "fr_FR", "fr_FR.UTF-8", "fr_FR.932", "en_us", "EN_US", "en_USA", "en_US ", "en",
          "ja_JP.foo", "en_US.12345678", "ja_JP.932x", "en_US.utf-8.x", "en_US.Utf-8", ".utf8",
          "Utf8", "4294967295", "-1", "932x"}) {
        const CommandResult result =
            in("C", {std::string("--message_locale=") + name, "-t", "lib.a"});
        if (std::string_view(name).starts_with("ja_JP.")) { // the language is Japanese by then
            EXPECT_TRUE(
                ended(result, 1, "",
                      "???????: L9780E: ????????? " + std::string(name) + " ????????????\n"));
        } else {
            EXPECT_TRUE(ended(result, 1, "", refused(name))) << name;
        }
    }
    EXPECT_TRUE(ended(in("C.UTF-8", {"--message_locale=ja_JP.foo", "-t", "lib.a"}), 1, "",
                      "致命的なエラー: L9780E: メッセージロケール ja_JP.foo "
                      "を初期化できませんでした\n"));
}

TEST_F(MessageLanguage, EmptyNamesEndTheRun) {
    EXPECT_TRUE(ended(tomex({"--message_locale=", "-t", "lib.a"}), 1, "", refused("")));
    EXPECT_TRUE(ended(tomex({"--message_locale", "", "-t", "lib.a"}), 1, "", refused("")));
    EXPECT_TRUE(ended(tomex({"--message_locale=en_US.", "-t", "lib.a"}), 1, "", refused("en_US.")));
    EXPECT_TRUE(ended(tomex({"--message_locale=."}), 1, "", refused(".")));
}

} // namespace
} // namespace commandtest
