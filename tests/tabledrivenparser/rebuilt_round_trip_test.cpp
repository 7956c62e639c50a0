// What is rebuilt from any command line leads, when it is read again, to the same values: for a
// table that has every type and form of option.

#include "tests/tabledrivenparser/rebuilt_fixture.h"

#include "tabledrivenparser/interface/via_reading.h"
#include "tests/support/scratch_folder.h"

#include <random>

namespace tabledrivenparser {

namespace {

const EnumRow styleRows[] = {
    {.name = "plain", .value = 1}, {.name = "wide", .value = 2}, {.name = "broad", .value = 2}};
const EnumTable styles = {3, styleRows};

class RebuiltRoundTripTest : public RebuiltTest {
protected:
    void SetUp() override {
        RebuiltTest::SetUp();
        addParameter(ParameterType_STRING_VECTOR);
        addOption("", 0);
        addRowsOf(ParameterType_BOOLEAN);
        addFlag("no_flag", addRowsOf(ParameterType_BOOLEAN, "flag", "f"), 0);
        addRowsOf(ParameterType_INT, "number", "n");
        addRowsOf(ParameterType_ADDRESS, "address", "d");
        addRowsOf(ParameterType_ADDRESS64, "wide_address", "w");
        addRowsOf(ParameterType_STRING, "text", "t");
        addRowsOf(ParameterType_STRING, nullptr, "a", ','); // known by a letter alone
        addRowsOf(ParameterType_STRING_VECTOR, "repeated", "r");
        addRowsOf(ParameterType_STRING_VECTOR, "joined", "j", ',');
        addRowsOf(ParameterType_STRING_VECTOR, nullptr, "m");
        addRowsOf(ParameterType_INT_VECTOR, "ints", "i", ',');
        addRowsOf(ParameterType_INT64_VECTOR, "longs", "l", ':');
        addRowsOf(ParameterType_ENUM, "style", "s", 0, &styles);
        addOption("level", addRowsOf(ParameterType_INT), 0, OptionFlag_Public,
                  OptionArgument_Optional, 3);
        m_room = 100000;
        m_firstValues = m_values;
    }
    uint32_t addRowsOf(uint32_t type, const char* name = nullptr, const char* letter = nullptr,
                       char separator = 0, const void* constraints = nullptr) {
        uint32_t parameter = addParameter(type, constraints);
        for (const char* each : {name, letter}) {
            if (each != nullptr && type == ParameterType_BOOLEAN) {
                addFlag(each, parameter);
            } else if (each != nullptr) {
                addOption(each, parameter, separator);
            }
        }
        return parameter;
    }
    void startAgain() {
        dropParser();
        m_values = m_firstValues;
        linkRows();
    }

    size_t pick(size_t count) { return m_random() % count; }
    std::string anyText() {
        static const std::string letters = "abc.  \t\"\"''\\\\\\(),==-\v\f\xe9";
        std::string text;
        for (size_t length = pick(8); length > 0; --length) {
            text += letters[pick(letters.size())];
        }
        return text;
    }
    std::string anyNumber(bool isSigned) {
        const std::string digits = std::to_string(m_random());
        return (isSigned && pick(2) == 0 ? "-" : "") + digits.substr(0, pick(8) + 1);
    }
    // An option of one of the forms in which its argument can be written.
    void addOptionTo(Texts& words, const std::string& name, const std::string& argument) {
        if (name.size() == 1) {
            if (pick(2) == 0 && !argument.empty() && argument[0] != '=' && argument[0] != ',') {
                words.push_back("-" + name + argument);
                return;
            }
            words.push_back("-" + name);
        } else if (pick(2) == 0) {
            words.push_back("--" + name + "=" + argument);
            return;
        } else {
            words.push_back("--" + name);
        }
        words.push_back(argument);
    }
    void addAnyOption(Texts& words) {
        static const Texts texts = {"text", "t", "a", "repeated", "r", "joined", "j", "m"};
        static const Texts signedNumbers = {"number", "n", "ints", "i", "longs", "l"};
        static const Texts addresses = {"address", "d", "wide_address", "w"};
        switch (pick(7)) {
        case 0:
            return addOptionTo(words, texts[pick(texts.size())], anyText());
        case 1:
            return addOptionTo(words, signedNumbers[pick(signedNumbers.size())], anyNumber(true));
        case 2:
            return addOptionTo(words, addresses[pick(addresses.size())], anyNumber(false));
        case 3:
            return addOptionTo(words, pick(2) == 0 ? "style" : "s", styleRows[pick(3)].name);
        case 4:
            return words.push_back(Texts{"--flag", "--no-flag", "-f", "--FLAG"}[pick(4)]);
        case 5:
            return words.push_back(
                Texts{"--level", "--level=3", "--level=0", "--level=9"}[pick(4)]);
        default: {
            const std::string word = anyText();
            return words.push_back(word.starts_with("-") ? "x" + word : word);
        }
        }
    }
    Texts anyWords() {
        Texts words;
        for (size_t count = pick(12); count > 0; --count) {
            addAnyOption(words);
        }
        if (pick(4) == 0) {
            words.push_back("--");
            for (size_t count = pick(4); count > 0; --count) {
                words.push_back(anyText());
            }
        }
        return words;
    }

    // The values of all parameters, as texts.
    Texts state() {
        Texts all;
        for (uint32_t index = 0; index < m_values.size(); ++index) {
            std::string text = std::to_string(index) + ":";
            switch (m_descriptors[index].type) {
            case ParameterType_STRING:
                text += parameters().textValue(index) == nullptr
                            ? "none"
                            : std::string("'") + parameters().textValue(index);
                break;
            case ParameterType_STRING_VECTOR:
                for (const std::string& each : texts(index)) {
                    text += "[" + each + "]";
                }
                break;
            case ParameterType_INT_VECTOR:
                for (int each : ints(index)) {
                    text += std::to_string(each) + ",";
                }
                break;
            case ParameterType_INT64_VECTOR:
                for (int64_t each : int64s(index)) {
                    text += std::to_string(each) + ",";
                }
                break;
            default:
                text += std::to_string(m_values[index].value);
            }
            all.push_back(text);
        }
        return all;
    }

    std::vector<ParameterValue> m_firstValues;
    std::mt19937 m_random{2026};
    const testsupport::ScratchFolder m_folder;
};

} // namespace

TEST_F(RebuiltRoundTripTest, AnyCommandLine) {
    size_t shown = 0;
    for (int round = 0; round < 1500; ++round) {
        startAgain();
        const Texts words = anyWords();
        std::vector<const char*> pointers;
        for (const std::string& each : words) {
            pointers.push_back(each.c_str());
        }
        WordArray source(pointers);
        parser().parseWords(source);
        ASSERT_TRUE(messages().empty()) << testing::PrintToString(words);
        const std::string line = rebuilt();
        const Texts before = state();
        shown += line.size();

        startAgain();
        if (round % 4 == 0) {
            m_folder.write("f", line);
            ViaFile viaFile(m_folder.pathOf("f").c_str(), m_reporter);
            runViaFile(viaFile, parser());
        } else {
            parseViaText(parser(), line.c_str());
        }
        EXPECT_EQ(state(), before) << line << "\n" << testing::PrintToString(words);
        EXPECT_TRUE(messages().empty()) << line;
        EXPECT_EQ(rebuilt(), line);
    }
    EXPECT_GT(shown, 60000U);
}

} // namespace tabledrivenparser
