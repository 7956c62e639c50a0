// Feeds any bytes to the reader of via files, as a file and as a text in memory.
//
// What its words are is told a second time by a model that knows no buffer; a file may be refused
// for the length of a word, but what it gave before must be the model's. Then the words go back and
// forth: shown as a command line and read again, they must be the same.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "alloclib/interface/default_region.h"
#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/interface/rebuilt_command_line.h"
#include "tabledrivenparser/interface/via_reading.h"
#include "tests/tabledrivenparser/via_words_model.h"

namespace {

using namespace tabledrivenparser;
using Texts = std::vector<std::string>;

[[noreturn]] void fail(const char* what, const std::string& detail) {
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

void require(bool holds, const char* what, const std::string& detail) {
    if (!holds) {
        fail(what, detail);
    }
}

// Remembers the first message.
class FirstMessage final : public Reporter {
public:
    void reportParseMessage(uint32_t /*severity*/, uint32_t messageKey, ...) override {
        key = key == 0 ? messageKey : key;
    }
    uint32_t key = 0;
};

Texts wordsOf(WordSource& source) {
    Texts words;
    while (const char* word = source.nextToken()) {
        words.emplace_back(word);
    }
    require(source.nextToken() == nullptr, "a word behind the last", "");
    return words;
}

// A file in memory with a name.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(::memfd_create("via", 0)) {}
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void setContents(const uint8_t* data, size_t size) const {
        require(::ftruncate(m_descriptor, 0) == 0, "no file", "");
        require(::pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size), "no file", "");
    }
    std::string name() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

void checkFile(const uint8_t* data, size_t size) {
    static const MemoryFile file;
    file.setContents(data, size);
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const viamodel::Words model = viamodel::wordsOf(viamodel::withoutComments(bytes));

    FirstMessage message;
    ViaFile viaFile(file.name().c_str(), message);
    const Texts words = wordsOf(viaFile);
    if (message.key == ParserMessage_ViaFileBinary) {
        require(bytes.find('\0') != std::string::npos, "binary without a NUL", bytes);
    } else if (message.key != ParserMessage_ViaFileWordTooLong) {
        require(words == model.words, "other words", bytes);
        require(message.key == (model.isMalformed ? uint32_t{ParserMessage_ViaFileMalformed} : 0),
                "other end", bytes);
        return;
    }
    require(words.size() <= model.words.size() &&
                std::equal(words.begin(), words.end(), model.words.begin()),
            "other words before the end", bytes);
}

// Text in memory has no comments. Gives its words.
Texts checkText(const std::string& text) {
    const viamodel::Words model = viamodel::wordsOf(text);
    std::vector<char> copy(text.begin(), text.end()); // ends with its block
    copy.push_back('\0');
    FirstMessage message;
    DummyViaFile viaFile(copy.data(), message);
    const Texts words = wordsOf(viaFile);
    require(words == model.words, "other words of a text", text);
    require(message.key == (model.isMalformed ? uint32_t{ParserMessage_ViaFileMalformed} : 0),
            "other end of a text", text);
    return words;
}

// A table with a text of each form; reading it collects the texts.
class TextTable {
public:
    TextTable() : m_index(makeLetterIndex(rows)) {
        m_options.rowCount = 4;
        m_options.rows = rows;
        m_options.letterIndex = m_index.data();
        for (uint32_t each = 0; each < 4; ++each) {
            m_descriptors[each].type = ParameterType_STRING_VECTOR;
            m_descriptors[each].defaultKind = DefaultKind_Value;
            m_descriptors[each].rows = m_rowsOf[each];
        }
    }
    struct Reading {
        std::string line;
        std::vector<Texts> texts;
        uint32_t message = 0;
    };
    template <class Feed>
    Reading read(Feed feed) {
        std::vector<ParameterValue> values(4);
        FirstMessage message;
        Parser parser(m_options, values, m_descriptors, message, nullptr);
        feed(parser);
        Reading reading;
        for (uint32_t each = 0; each < 4; ++each) {
            reading.texts.emplace_back();
            if (const StrList* list = parser.parameters().textList(each)) {
                reading.texts.back().assign(list->begin(), list->end());
            }
        }
        TextBuffer measure{0, nullptr, 0, 1, ' ', 0};
        reading.line.resize(rebuildCommandLine(parser, measure));
        TextBuffer buffer{measure.length, reading.line.data(), 0, 1, ' ', 0};
        rebuildCommandLine(parser, buffer);
        reading.line.pop_back();
        reading.message = message.key;
        return reading;
    }

    static constexpr OptionRow rows[] = {
        {.name = "", .parameter = 0},
        {.name = "a", .parameter = 1},
        {.name = "list", .parameter = 2, .separator = ','},
        {.name = "text", .parameter = 3},
    };

private:
    std::array<uint32_t, 26> m_index;
    OptionTable m_options;
    ParameterDescriptor m_descriptors[4];
    const OptionRow* m_rowsOf[4][2] = {
        {&rows[0], nullptr}, {&rows[1], nullptr}, {&rows[2], nullptr}, {&rows[3], nullptr}};
};

bool hasSpelling(const std::string& text) {
    return text.find_first_of("\r\n") == std::string::npos;
}

void checkRoundTrip(const Texts& words) {
    if (!std::all_of(words.begin(), words.end(), hasSpelling)) {
        return;
    }
    TextTable table;
    const TextTable::Reading first = table.read([&](Parser& parser) {
        uint32_t form = 0;
        for (const std::string& word : words) {
            static const char* const options[] = {"-a", "--list", "--text"};
            if (form < 3) {
                parser.parseWord(options[form], word.c_str());
            } else {
                parser.parseOption(word.c_str(), nullptr, 0, nullptr, 0, nullptr);
            }
            form = (form + 1) % 5;
        }
    });
    require(first.message == 0, "a text was refused", first.line);
    const TextTable::Reading second =
        table.read([&](Parser& parser) { parseViaText(parser, first.line.c_str()); });
    require(second.message == 0, "a shown line was refused", first.line);
    require(second.texts == first.texts, "a shown line has other texts", first.line);
    require(second.line == first.line, "a shown line is shown in another way", first.line);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    alloclib::startAllocators();
    checkFile(data, size);
    std::string text(reinterpret_cast<const char*>(data), size);
    text = text.substr(0, text.find('\0'));
    checkRoundTrip(checkText(text));
    // The lines as words, whatever is in them.
    Texts lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find_first_of("\r\n", at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    checkRoundTrip(lines);
    alloclib::finishAllocators();
    return 0;
}
