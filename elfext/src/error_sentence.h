// A sentence about a flaw, put together piece by piece.
//
// Numbers are decimal without separators, whatever the user's locale: users search for these
// sentences, and scripts read them.
#pragma once

#include "elfext/interface/error_handler.h"

#include <cstdint>
#include <locale>
#include <sstream>

namespace elfext {

// A number of something in the file: prints as "#7".
struct Number {
    uint64_t value;
};

// The type of a section: prints as "7 (SHT_NOTE)", and as the number alone if it has no name.
struct TypeName {
    uint32_t type;
};

std::ostream& operator<<(std::ostream& stream, Number number);
std::ostream& operator<<(std::ostream& stream, TypeName typeName);

// Joins the pieces and hands the sentence to the handler. Gives its answer.
template <typename... Pieces>
bool reportSentence(ErrorHandler& handler, ObjectModule* objectModule, Severity severity,
                    const Pieces&... pieces) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    (stream << ... << pieces);
    return handler.report(objectModule, severity, stream.str().c_str());
}

} // namespace elfext
