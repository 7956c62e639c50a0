// The ground that the parser's tests stand on: hand-made tables, a reporter that writes down what
// it is told and returns, and a parser over both in a fresh default region.
#pragma once

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/interface/parser_messages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace tabledrivenparser {

// The texts of the messages that the reporter received, each behind its severity and key, as
// "3 23131082 Unrecognized option '--x'.".
class RecordingReporter final : public Reporter {
public:
    void reportParseMessage(uint32_t severity, uint32_t key, ...) override;

    std::vector<std::string> messages;
    // For tests of many messages: count them, keep none.
    bool countsOnly = false;
    uint64_t count = 0;
};

// Writes down the values that it is offered, and takes those that `takes` says.
class RecordingListener final : public Listener {
public:
    bool parameterSet(Parameters& parameters, uint32_t parameter, uint64_t value) override;

    std::vector<std::pair<uint32_t, uint64_t>> offered;
    std::function<bool(uint32_t parameter, uint64_t value)> takes;
    const Parameters* seenParameters = nullptr;
};

class ParserTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Adds to the tables; before the first use of the parser. Rows are put into table order when
    // the parser is made, keeping the order within a letter.
    uint32_t addParameter(uint32_t type, const void* constraints = nullptr);
    void addRow(OptionRow row);
    void addFlag(const char* name, uint32_t parameter, uint64_t value = 1,
                 uint8_t flags = OptionFlag_Public);
    void addOption(const char* name, uint32_t parameter, char separator = 0,
                   uint8_t flags = OptionFlag_Public, uint32_t argument = OptionArgument_Required,
                   uint64_t implied = 0);

    // The parser over the tables; made at the first call.
    Parser& parser();
    void dropParser();
    const Parameters& parameters() { return parser().parameters(); }
    // Reads the words as a command line.
    void parse(std::initializer_list<const char*> words);
    // What was reported since the last call.
    std::vector<std::string> messages();
    // The elements of a list parameter; empty if there is no list.
    std::vector<std::string> texts(uint32_t parameter);
    std::vector<int> ints(uint32_t parameter);
    std::vector<int64_t> int64s(uint32_t parameter);
    // The row with that name, in the table that the parser uses.
    const OptionRow* row(const char* name);

    OptionTable m_table;
    std::vector<OptionRow> m_rows;
    std::vector<ParameterDescriptor> m_descriptors;
    std::vector<ParameterValue> m_values;
    RecordingReporter m_reporter;
    RecordingListener m_listener;

private:
    std::array<uint32_t, 26> m_letterIndex{};
    std::unique_ptr<Parser> m_parser;
};

using Texts = std::vector<std::string>;

} // namespace tabledrivenparser
