#include "tabledrivenparser/interface/trace_hook.h"

#include "tabledrivenparser/interface/parser.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace tabledrivenparser {

namespace {

// The text of a format; empty if the host cannot make one.
std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): started by the caller and copied here
    int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) {
        return "";
    }
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    return text;
}

} // namespace

void Parser::trace(const char* format, ...) const {
    if (m_traceHook == nullptr) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    m_traceHook->trace(formatted(format, arguments).c_str());
    va_end(arguments);
}

} // namespace tabledrivenparser
