#include "messages/interface/parse_reporter.h"

#include "messages/interface/report.h"

#include <cstdarg>

namespace messages {

void ParseReporter::reportParseMessage(uint32_t severity, uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    reportParseMessageArguments(severity, key, arguments);
    va_end(arguments);
}

} // namespace messages
