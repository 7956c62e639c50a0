#include "tomex/shown_command_line.h"

#include "messages/interface/report.h"
#include "messages/interface/stream_switch.h"
#include "tabledrivenparser/interface/rebuilt_command_line.h"

namespace tomex {

using tabledrivenparser::TextBuffer;

void showCommandLine(tabledrivenparser::Parser& parser, const char* toolName) {
    char usual[4096];
    TextBuffer buffer{.capacity = sizeof usual, .text = usual, .quoting = 1};
    const char* line = tabledrivenparser::writeWhole(
        buffer, [&](TextBuffer& text) { tabledrivenparser::rebuildCommandLine(parser, text); });
    const messages::SavedOutSwitch toStandardOutput;
    messages::printText("[%s %s]\n", toolName, line);
}

} // namespace tomex
