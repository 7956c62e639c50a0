// Any command line of the program, shown and read again, sets every slot to the same value: with
// the program's own options, but without starting it.
#include <random>

#include "alloclib/interface/default_region.h"
#include "tabledrivenparser/interface/rebuilt_command_line.h"
#include "tabledrivenparser/interface/via_reading.h"
#include "tests/support/scratch_folder.h"
#include "tomex/option_table.h"

#include <gtest/gtest.h>

namespace commandtest {
namespace {

using namespace tabledrivenparser;
using tomex::slotCount;
using Words = std::vector<std::string>;

// Counts what is reported; nothing must be.
class CountingReporter final : public Reporter {
public:
    void reportParseMessage(uint32_t /*severity*/, uint32_t key, ...) override {
        keys.push_back(key);
    }
    std::vector<uint32_t> keys;
};

class ShowCommandLineRoundTrip : public testing::Test {
protected:
    ShowCommandLineRoundTrip() { alloclib::startAllocators(); }
    ~ShowCommandLineRoundTrip() override { alloclib::finishAllocators(); }

    // What a parser has read: its slots as texts, and the line rebuilt of them.
    struct Reading {
        Words slots;
        std::string line;
        std::vector<uint32_t> messages;
    };
    template <class Feed>
    Reading read(Feed feed) {
        const std::span<ParameterValue> table = tomex::slotValues();
        std::vector<ParameterValue> values(table.begin(), table.end());
        CountingReporter reporter;
        Parser parser(tomex::optionTable(), values, tomex::slotDescriptors(), reporter, nullptr);
        feed(parser);
        Reading reading;
        for (uint32_t slot = 0; slot < slotCount; ++slot) {
            reading.slots.push_back(slotText(parser.parameters(), slot));
        }
        std::string room(20000, '\0');
        TextBuffer buffer{20000, room.data(), 0, 1, ' ', 0};
        reading.line = room.substr(0, rebuildCommandLine(parser, buffer) - 1);
        reading.messages = reporter.keys;
        return reading;
    }
    static std::string slotText(const Parameters& parameters, uint32_t slot) {
        switch (parameters.descriptors[slot].type) {
        case ParameterType_STRING:
            return parameters.textValue(slot) == nullptr
                       ? "none"
                       : std::string("'") + parameters.textValue(slot);
        case ParameterType_STRING_VECTOR: {
            std::string all;
            if (parameters.textList(slot) != nullptr) {
                for (const char* each : *parameters.textList(slot)) {
                    all += std::string("[") + each + "]";
                }
            }
            return all;
        }
        case ParameterType_VIA_FILE:
            return "any";
        default:
            return std::to_string(parameters.values[slot].value);
        }
    }

    size_t pick(size_t count) { return m_random() % count; }
    bool toss() { return pick(2) == 0; }
    std::string anyText(bool isOperand) {
        static const std::string letters = "abOo.*?/:  \t\"\"''\\\\\\(),=-_\xc3\xa9";
        std::string text;
        for (size_t length = pick(10); length > 0; --length) {
            text += letters[pick(letters.size())];
        }
        return isOperand && text.starts_with("-") ? (toss() ? "." : "=") + text : text;
    }
    // The name as it may be written: in any case, with "-" for "_".
    std::string anySpelling(std::string name) {
        for (char& c : name) {
            if (c == '_' && toss()) {
                c = '-';
            } else if (pick(8) == 0) {
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            }
        }
        return name;
    }
    std::string anyArgument(const std::string& name) {
        if (name.ends_with("normalise")) {
            return std::to_string(static_cast<int32_t>(m_random()) >> pick(31));
        }
        if (name == "diag_style") {
            return Words{"qel", "ide", "devstudio", "GNU"}[pick(4)];
        }
        return anyText(false);
    }
    void addLongOption(Words& words, const OptionRow& row) {
        const std::string name = "--" + anySpelling(row.name);
        if (row.argument == OptionArgument_None) {
            words.push_back(name);
        } else if (toss()) {
            words.push_back(name + "=" + anyArgument(row.name));
        } else {
            words.push_back(name);
            words.push_back(anyArgument(row.name));
        }
    }
    void addLetter(Words& words, const OptionRow& row) {
        std::string word = std::string("-") + row.name;
        if (row.argument == OptionArgument_None) {
            const Words more = {"", "t", "Cn", "vx"};
            words.push_back(word + more[pick(more.size())]);
            return;
        }
        const std::string argument = anyText(false);
        if (toss() && !argument.empty() && argument[0] != '=') {
            words.push_back(word + argument);
        } else {
            words.push_back(word);
            words.push_back(argument);
        }
    }
    Words anyWords() {
        Words words;
        const OptionTable& options = tomex::optionTable();
        for (size_t count = pick(10); count > 0; --count) {
            const OptionRow& row = options.rows[pick(options.rowCount)];
            if (row.name[0] == '\0' || row.parameter == tomex::Slot_ViaFile || pick(4) == 0) {
                words.push_back(anyText(true));
            } else if (row.name[1] == '\0') {
                addLetter(words, row);
            } else {
                addLongOption(words, row);
            }
        }
        if (pick(3) == 0) {
            words.push_back("--");
            for (size_t count = pick(4); count > 0; --count) {
                words.push_back(anyText(false));
            }
        }
        return words;
    }

    std::mt19937 m_random{9};
    const testsupport::ScratchFolder m_folder;
};

TEST_F(ShowCommandLineRoundTrip, HundredsOfCommandLines) {
    size_t shown = 0;
    for (int round = 0; round < 900; ++round) {
        const Words words = anyWords();
        const Reading first = read([&](Parser& parser) {
            for (size_t index = 0; index < words.size();) {
                const char* next = index + 1 < words.size() ? words[index + 1].c_str() : nullptr;
                index += parser.parseWord(words[index].c_str(), next);
            }
        });
        // A repeated letter is the only thing that may be said of these lines.
        for (const uint32_t key : first.messages) {
            ASSERT_EQ(key, 23131396U) << testing::PrintToString(words);
        }
        m_folder.write("shown.via", first.line);
        const std::string path = m_folder.pathOf("shown.via");
        const Reading second = read([&](Parser& parser) {
            if (round % 4 == 0) {
                parser.parseWord("--via", path.c_str());
            } else {
                parseViaText(parser, first.line.c_str());
            }
        });
        EXPECT_EQ(second.slots, first.slots) << first.line << "\n" << testing::PrintToString(words);
        EXPECT_EQ(second.line, first.line);
        EXPECT_TRUE(second.messages.empty()) << first.line;
        shown += first.line.size();
    }
    EXPECT_GT(shown, 40000U);
}

} // namespace
} // namespace commandtest
