#include "tests/tabledrivenparser/parser_fixture.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>

namespace tabledrivenparser {

namespace {

const char* messageText(uint32_t key) {
    static const std::map<uint32_t, const char*> texts = {
        {23131082, "Unrecognized option '%s%s'."},
        {23131098, "Missing argument for option '%s'."},
        {23131114, "Recursive via file inclusion depth of %d reached in file '%s'."},
        {23131130, "Argument '%s' not permitted for option '%s'."},
        {23131146, "Could not open via file '%s'."},
        {23131162, "Error when reading from via file '%s'."},
        {23131178, "Malformed via file '%s'."},
        {23131194, "Via file '%s' command too long for buffer."},
        {23131210, "Overflow: '%s' will not fit in an integer."},
        {23131236, "Old syntax, please use '%s%s%s%s'."},
        {23131268, "Option '%s' is deprecated."},
        {23131284, "Could not close via file '%s'."},
        {23131298, "The following arguments to option '%s' can be selected:\n %s"},
        {23131316, "Argument '%s' to option '%s' is deprecated"},
        {23131338, "Unexpected argument for option '%s%s'"},
        {23131354, "Concatenated options cannot have arguments: -%s %s"},
        {23131370, "'\\0' character found in via file '%s' - possible binary file.  "
                   "Aborting via file parse."},
        {23131378, "Possible matches for '%s' include '%s' and '%s'."},
        {23131396, "Option '-%s' repeated in concatenated options '-%s%s%s'."},
    };
    auto found = texts.find(key);
    return found == texts.end() ? "unknown key" : found->second;
}

template <class T>
std::vector<T> valuesOf(const LinkedList<T>* list) {
    std::vector<T> values;
    if (list != nullptr) {
        values.assign(list->begin(), list->end());
    }
    return values;
}

// Rows without a letter before those with one, these by their folded letter.
int tablePosition(const OptionRow& row) {
    auto first = static_cast<unsigned char>(row.name[0]);
    if (first == 0) {
        return -2;
    }
    return std::isalpha(first) != 0 ? std::tolower(first) : -1;
}

} // namespace

void RecordingReporter::reportParseMessage(uint32_t severity, uint32_t key, ...) {
    ++count;
    if (countsOnly) {
        return;
    }
    va_list arguments;
    va_start(arguments, key);
    va_list again;
    va_copy(again, arguments);
    int length = std::vsnprintf(nullptr, 0, messageText(key), arguments);
    va_end(arguments);
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), messageText(key), again);
    va_end(again);
    text.pop_back();
    messages.push_back(std::to_string(severity) + " " + std::to_string(key) + " " + text);
}

bool RecordingListener::parameterSet(Parameters& parameters, uint32_t parameter, uint64_t value) {
    seenParameters = &parameters;
    offered.emplace_back(parameter, value);
    return takes && takes(parameter, value);
}

void ParserTest::SetUp() {
    alloclib::startAllocators();
}

void ParserTest::TearDown() {
    dropParser();
    alloclib::finishAllocators();
}

uint32_t ParserTest::addParameter(uint32_t type, const void* constraints) {
    ParameterDescriptor descriptor;
    descriptor.type = type;
    descriptor.defaultKind = DefaultKind_Value;
    descriptor.constraints = constraints;
    m_descriptors.push_back(descriptor);
    m_values.emplace_back();
    return static_cast<uint32_t>(m_values.size() - 1);
}

void ParserTest::addRow(OptionRow row) {
    m_rows.push_back(row);
}

void ParserTest::addFlag(const char* name, uint32_t parameter, uint64_t value, uint8_t flags) {
    addRow({name, parameter, OptionArgument_None, value, nullptr, 0, flags});
}

void ParserTest::addOption(const char* name, uint32_t parameter, char separator, uint8_t flags,
                           uint32_t argument, uint64_t implied) {
    addRow({name, parameter, argument, implied, nullptr, separator, flags});
}

Parser& ParserTest::parser() {
    if (!m_parser) {
        std::stable_sort(m_rows.begin(), m_rows.end(),
                         [](const OptionRow& one, const OptionRow& other) {
                             return tablePosition(one) < tablePosition(other);
                         });
        m_letterIndex = makeLetterIndex(m_rows);
        m_table.rowCount = static_cast<uint32_t>(m_rows.size());
        m_table.rows = m_rows.data();
        m_table.letterIndex = m_letterIndex.data();
        m_parser =
            std::make_unique<Parser>(m_table, m_values, m_descriptors, m_reporter, &m_listener);
    }
    return *m_parser;
}

void ParserTest::dropParser() {
    m_parser.reset();
}

void ParserTest::parse(std::initializer_list<const char*> words) {
    WordArray source({words.begin(), words.size()});
    parser().parseWords(source);
}

std::vector<std::string> ParserTest::messages() {
    return std::exchange(m_reporter.messages, {});
}

std::vector<std::string> ParserTest::texts(uint32_t parameter) {
    std::vector<std::string> result;
    for (const char* text : valuesOf<const char*>(parameters().textList(parameter))) {
        result.emplace_back(text == nullptr ? "<null>" : text);
    }
    return result;
}

std::vector<int> ParserTest::ints(uint32_t parameter) {
    return valuesOf(parameters().intList(parameter));
}

std::vector<int64_t> ParserTest::int64s(uint32_t parameter) {
    return valuesOf(parameters().int64List(parameter));
}

const OptionRow* ParserTest::row(const char* name) {
    parser();
    for (const OptionRow& each : m_rows) {
        if (std::strcmp(each.name, name) == 0) {
            return &each;
        }
    }
    return nullptr;
}

} // namespace tabledrivenparser
