// The buffer of a via file: how long a word may be where, what it holds for how long, and bytes
// that no text has.

#include "tests/tabledrivenparser/via_fixture.h"
#include "tests/tabledrivenparser/via_words_model.h"

#include <random>
#include <stdexcept>

namespace tabledrivenparser {

namespace {

// Throws the key of what it is told.
class ThrowingReporter final : public Reporter {
public:
    void reportParseMessage(uint32_t /*severity*/, uint32_t key, ...) override {
        throw std::runtime_error(std::to_string(key));
    }
};

class ViaBufferTest : public ViaTest {
protected:
    static std::string letters(size_t count, char letter = 'x') {
        return std::string(count, letter);
    }
    void expectTooLong(std::string_view bytes, const Texts& before) {
        EXPECT_EQ(fileWords(bytes), before);
        EXPECT_EQ(reported(), tooLong());
    }
    void expectWords(std::string_view bytes, const Texts& words) {
        EXPECT_EQ(fileWords(bytes), words);
        EXPECT_EQ(reported(), Texts());
    }
    // 113 lines of nine bytes: the last word begins at 1008, the next line at 1017.
    static std::string lines() {
        std::string text;
        for (int line = 0; line < 113; ++line) {
            text += "aaaaaaaa\n";
        }
        return text;
    }
    static Texts with(const Texts& more) {
        Texts words(113, "aaaaaaaa");
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
};

} // namespace

TEST_F(ViaBufferTest, FirstWordMustLeaveRoomForItsEnd) {
    expectWords(letters(1023), {letters(1023)});
    expectTooLong(letters(1024), {});
    expectTooLong(letters(5000), {});
    // Quotes take room as well.
    expectWords("\"" + letters(1021) + "\"", {letters(1021)});
    expectTooLong("\"" + letters(1022) + "\"", {});
    // Comments do not.
    expectWords("#" + letters(3000) + "\n" + letters(500) + "#" + letters(3000) + "\n" +
                    letters(523),
                {letters(1023)});
}

TEST_F(ViaBufferTest, FirstWordAndWhatFollowsItShareTheBuffer) {
    expectWords(letters(1022) + "\n", {letters(1022)});
    expectTooLong(letters(1023) + "\n", {letters(1023)});
    expectWords(letters(1000) + "\n" + letters(22, 'y') + "\nz",
                {letters(1000), letters(22, 'y'), "z"});
    expectWords(letters(1000) + "\n" + letters(22, 'y'), {letters(1000), letters(22, 'y')});
    expectTooLong(letters(1000) + "\n" + letters(23, 'y') + "\nz", {letters(1000)});
    expectTooLong(letters(1000) + "\n" + letters(23, 'y'), {letters(1000)});
}

TEST_F(ViaBufferTest, WhiteSpaceTakesRoomToo) {
    expectWords(letters(1023, ' '), {});
    expectTooLong(letters(1024, ' '), {});
    expectTooLong(letters(1024, '\n') + "a", {});
    expectWords("a" + letters(1022, ' '), {"a"});
    expectTooLong("a" + letters(1023, ' '), {"a"});
    expectWords("a b" + letters(1020, ' '), {"a", "b"});
    expectWords("ab c" + letters(1021, ' ') + "d", {"ab", "c", "d"});
    // Seven places are left behind the lines, then 1008 in front of the last word.
    expectWords(lines() + letters(7 + 1007, ' '), with({}));
    expectTooLong(lines() + letters(7 + 1008, ' '), with({}));
    expectWords(lines() + letters(7 + 1006, ' ') + "b", with({"b"}));
    expectTooLong(lines() + letters(7 + 1007, ' ') + "b", with({}));
}

TEST_F(ViaBufferTest, LaterWordMustFitInFrontOfTheOneBefore) {
    // Seven of its characters are there when the buffer is at its end; 1000 more places come.
    expectWords(lines() + letters(1006) + "\n", with({letters(1006)}));
    expectWords(lines() + letters(1006), with({letters(1006)}));
    expectTooLong(lines() + letters(1007) + "\n", with({}));
    expectTooLong(lines() + letters(1007), with({}));
    expectTooLong(lines() + letters(9999), with({}));
}

TEST_F(ViaBufferTest, WordOfAThousandCharactersPassesWhereThereIsRoom) {
    const std::string text = letters(1000) + "\n" + letters(30, 'y') + "\n";
    expectTooLong(text, {letters(1000)});
    // Moved by the words in front of it, it meets the end of the buffer with other neighbours.
    expectWords(lines() + "b\n" + letters(1000) + "\nc\n", with({"b", letters(1000), "c"}));
}

TEST_F(ViaBufferTest, WordBehindALongOneHasTheRestOfTheBuffer) {
    expectWords(lines() + letters(1006) + "\n" + letters(15, 'y') + "\nz",
                with({letters(1006), letters(15, 'y'), "z"}));
    expectTooLong(lines() + letters(1006) + "\n" + letters(16, 'y') + "\nz", with({letters(1006)}));
}

TEST_F(ViaBufferTest, WordThatFillsTheRoomExactlyBeforeItMovesIsTooLong) {
    // "b" begins at 511 and is live; the next word has 511 characters when the buffer ends, and so
    // leaves no place in front of it.
    const std::string front = letters(510, 'a') + "\n" + "b\n";
    expectTooLong(front + letters(511), {letters(510, 'a'), "b"});
    // "bb" in its place leaves one, which the gap takes.
    expectTooLong(letters(510, 'a') + "\n" + "bb\n" + letters(510), {letters(510, 'a'), "bb"});
    // With one character less in front there is one more scanned than room.
    expectTooLong(letters(509, 'a') + "\n" + "b\n" + letters(512), {letters(509, 'a'), "b"});
    // With one more there is one place free behind the gap.
    expectWords(letters(511, 'a') + "\n" + "b\n" + letters(510),
                {letters(511, 'a'), "b", letters(510)});
    expectTooLong(letters(511, 'a') + "\n" + "b\n" + letters(511), {letters(511, 'a'), "b"});
}

TEST_F(ViaBufferTest, BackslashAtTheEndOfTheBufferKeepsItsMeaning) {
    for (size_t before = 0; before < 20; ++before) {
        for (const char* word :
             {"\"q\\\"r\"", "q\\ r", "q\\\\r", "'q\\'r'", "q\\r", "\\\"\\\"\\\\"}) {
            const std::string text = letters(200, 'a') + "\n" + letters(800, 'b') + "\n" +
                                     letters(before + 1, 'c') + " " + word + "\nend\n";
            const viamodel::Words model = viamodel::wordsOf(text);
            expectWords(text, model.words);
        }
    }
}

TEST_F(ViaBufferTest, WordStaysValidUntilTheSecondCallAfterIt) {
    std::string text;
    Texts expected;
    std::mt19937 random(3);
    for (int index = 0; index < 3000; ++index) {
        expected.push_back(std::to_string(index) + letters(random() % 60));
        text += expected.back() + "\n";
    }
    file(text);
    ViaFile viaFile(m_folder.pathOf("f").c_str(), m_reporter);
    const char* word = viaFile.nextToken();
    for (size_t index = 0; index + 1 < expected.size(); ++index) {
        const char* next = viaFile.nextToken();
        ASSERT_EQ(word, expected[index]);
        ASSERT_EQ(next, expected[index + 1]);
        word = next;
    }
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    EXPECT_EQ(word, expected.back());
    EXPECT_EQ(reported(), Texts());
}

TEST_F(ViaBufferTest, AnyFileGivesTheWordsOfTheModelOrIsRefused) {
    std::mt19937 random(52);
    const std::string special = "  \n\n\"'\\(),=\t\r";
    int refused = 0;
    int whole = 0;
    for (int round = 0; round < 250; ++round) {
        const size_t runs = random() % 60 + 1;
        std::string text;
        for (size_t run = 0; run < runs; ++run) {
            text +=
                letters(random() % (round % 3 == 0 ? 400 : 70), static_cast<char>('a' + run % 26));
            text += special[random() % special.size()];
            if (random() % 9 == 0) {
                text += "# comment \" \n";
            }
        }
        const viamodel::Words model = viamodel::wordsOf(viamodel::withoutComments(text));
        const Texts words = fileWords(text);
        const Texts told = reported();
        if (told == tooLong()) {
            ASSERT_LE(words.size(), model.words.size());
            EXPECT_TRUE(std::equal(words.begin(), words.end(), model.words.begin())) << text;
            ++refused;
        } else {
            EXPECT_EQ(words, model.words) << text;
            EXPECT_EQ(told, model.isMalformed ? malformed() : Texts()) << text;
            ++whole;
        }
    }
    EXPECT_GT(refused, 20);
    EXPECT_GT(whole, 100);
}

TEST_F(ViaBufferTest, NulByteIsRefusedWhereverItStands) {
    using namespace std::string_literals;
    for (const std::string& bytes : {"\0"s, "a\0"s, "a b\0c"s, "# x\0y\nb"s, "\"a\0b\""s}) {
        EXPECT_EQ(fileWords(bytes), Texts()) << "found by the first stretch already";
        EXPECT_EQ(reported(), binary());
    }
    // In a later stretch; what was read before it is in the middle of a word.
    EXPECT_EQ(fileWords(lines() + letters(100) + "\0"s), with({}));
    EXPECT_EQ(reported(), binary());
    // When the room behind the live word is filled.
    EXPECT_EQ(fileWords(lines() + letters(1000) + "\nabcdefg\0"s), with({letters(1000)}));
    EXPECT_EQ(reported(), binary());
}

TEST_F(ViaBufferTest, FileThatCannotBeOpened) {
    ViaFile viaFile((m_folder.path() + "/none").c_str(), m_reporter);
    EXPECT_EQ(reported(), Texts{"3 23131146 Could not open via file 'none'."});
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    ViaFile unnamed("", m_reporter);
    EXPECT_EQ(reported(), Texts{"3 23131146 Could not open via file ''."});
    EXPECT_EQ(unnamed.nextToken(), nullptr);
}

TEST_F(ViaBufferTest, FileThatCannotBeRead) {
    m_folder.makeFolder("f");
    ViaFile viaFile(m_folder.pathOf("f").c_str(), m_reporter);
    EXPECT_EQ(reported(), Texts{"3 23131162 Error when reading from via file 'f'."});
    EXPECT_EQ(viaFile.nextToken(), nullptr);
}

TEST_F(ViaBufferTest, ReporterThatThrowsLeavesNothingOpen) {
    using namespace std::string_literals;
    m_folder.makeFolder("folder");
    const std::pair<std::string, std::string> faults[] = {
        {file("\0a"s, "start"), "23131370"},
        {file(lines() + letters(100) + "\0"s, "later"), "23131370"},
        {m_folder.pathOf("folder"), "23131162"},
        {m_folder.pathOf("none"), "23131146"},
        {file("a \"b", "open"), "23131178"},
    };
    ThrowingReporter reporter;
    for (const auto& [path, key] : faults) {
        const auto before = openFiles();
        std::string thrown;
        try {
            ViaFile viaFile(path.c_str(), reporter);
            wordsOf(viaFile);
        } catch (const std::runtime_error& error) {
            thrown = error.what();
        }
        EXPECT_EQ(thrown, key) << path;
        EXPECT_EQ(openFiles(), before) << path;
    }
}

TEST_F(ViaBufferTest, NameIsShownAsItWasGiven) {
    file("\"a");
    std::string name = m_folder.path() + "/./f";
    ViaFile viaFile(name.c_str(), m_reporter);
    name.assign(name.size(), '!'); // only a copy may be shown
    EXPECT_EQ(viaFile.nextToken(), nullptr);
    EXPECT_EQ(messages(), Texts{"3 23131178 Malformed via file '" + m_folder.path() + "/./f'."});
}

} // namespace tabledrivenparser
