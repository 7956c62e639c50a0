#include "tomex/shown_command_line.h"

#include "alloclib/interface/default_region.h"
#include "messages/interface/report.h"
#include "messages/interface/stream_switch.h"
#include "tabledrivenparser/interface/rebuilt_command_line.h"

namespace tomex {
namespace {

using tabledrivenparser::TextBuffer;

TextBuffer bufferFor(char* text, uint32_t capacity) {
    return {.capacity = capacity, .text = text, .quoting = 1, .separator = ' ', .joined = 0};
}

} // namespace

void showCommandLine(tabledrivenparser::Parser& parser, const char* toolName) {
    char usual[4096];
    const char* line = usual;
    TextBuffer buffer = bufferFor(usual, sizeof usual);
    const uint32_t size = tabledrivenparser::rebuildCommandLine(parser, buffer);
    if (!buffer.fits()) {
        char* large = static_cast<char*>(alloclib::allocate(alloclib::defaultRegion(), size, 1));
        buffer = bufferFor(large, size);
        tabledrivenparser::rebuildCommandLine(parser, buffer);
        large[size - 1] = '\0'; // also if the line was too long to count
        line = large;
    }
    const messages::SavedOutSwitch toStandardOutput;
    messages::printText("[%s %s]\n", toolName, line);
}

} // namespace tomex
