// Reads the conversions of a format text, to hold the texts of two languages against each other.
#pragma once

#include <map>
#include <string>

struct FormatConversions {
    // By the number of the argument, from 1 on: the conversion without its position.
    std::map<int, std::string> byArgument;
    bool positional = false;
    bool sequential = false;
};

inline FormatConversions readConversions(const std::string& text) {
    FormatConversions result;
    int next = 1;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            continue;
        }
        ++at;
        if (at < text.size() && text[at] == '%') {
            continue;
        }
        int argument = 0;
        const size_t dollar = text.find_first_not_of("0123456789", at);
        if (dollar != std::string::npos && dollar > at && text[dollar] == '$') {
            argument = std::stoi(text.substr(at));
            at = dollar + 1;
            result.positional = true;
        } else {
            argument = next++;
            result.sequential = true;
        }
        const size_t type = text.find_first_of("csduxX", at);
        result.byArgument[argument] = text.substr(at, type - at + 1);
        at = type;
    }
    return result;
}
