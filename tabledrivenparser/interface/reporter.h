// The way out for the parser's messages.
//
// The parser knows no message texts and no output stream: it names a message by its key and hands
// the arguments over. The program that owns the parser supplies the reporter, which looks the text
// up, prints it, and ends the run for a fatal one.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

// How grave a parser message is.
enum ParserSeverity : uint32_t {
    ParserSeverity_Information = 0,
    ParserSeverity_Warning = 1,
    ParserSeverity_Error = 2,
    ParserSeverity_Fatal = 3,
};

class Reporter {
public:
    // Reports message `key` with the arguments that its text asks for: NUL-ended texts that are
    // never null, and an `int` for the one "%d" (see parser_messages.h). The arguments live for
    // the call only. `severity` is a ParserSeverity. A reporter need not return from a fatal
    // message; where it does, the parsing operation that reported it gives its failure result.
    virtual void reportParseMessage(uint32_t severity, uint32_t key, ...) = 0;

protected:
    Reporter() = default;
    Reporter(const Reporter&) = default;
    Reporter& operator=(const Reporter&) = default;
    ~Reporter() = default;
};

} // namespace tabledrivenparser
