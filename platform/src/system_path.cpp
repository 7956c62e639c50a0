#include "platform/interface/system_path.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace platform {
namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bool isDriveLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool hasDriveBeforeSeparator(std::string_view name) {
    const size_t colon = name.find(':');
    return colon != name.npos && colon < std::min(name.size(), name.find_first_of("/\\"));
}

} // namespace

OwnedText joinAndNormalise(const char* base, const char* name) {
    const std::string_view nameText(name);
    std::string joined;
    if ((!nameText.empty() && isSeparator(nameText[0])) || hasDriveBeforeSeparator(nameText)) {
        joined = nameText;
    } else {
        joined = std::string(base) + '\\' + std::string(nameText);
    }

    std::string result;
    size_t position = 0;
    while (position < joined.size() && isSeparator(joined[position])) {
        result += '\\';
        ++position;
    }
    if (position == 0 && joined.size() >= 2 && joined[1] == ':') {
        result = joined.substr(0, 2);
        position = 2;
        if (position < joined.size() && isSeparator(joined[position])) {
            result += '\\';
            ++position;
        }
    }
    const size_t start = result.size();
    while (position < joined.size()) {
        const size_t end = std::min(joined.size(), joined.find_first_of("/\\", position));
        const std::string_view segment = std::string_view(joined).substr(position, end - position);
        if (segment == "..") {
            if (result.size() > start) {
                result.pop_back();
                const size_t separator = result.rfind('\\');
                result.resize(
                    std::max(start, separator == result.npos ? size_t{0} : separator + 1));
            }
        } else if (!segment.empty() && segment != ".") {
            result += segment;
            result += '\\';
        }
        position = end + 1;
    }
    while (result.size() > start && result.back() == '\\') {
        result.pop_back();
    }
    return copyText(result);
}

OwnedText longWindowsPath(const char* currentDirectory, const char* name) {
    const std::string_view text(name);
    const bool isDevice = text.size() >= 3 && isSeparator(text[0]) && isSeparator(text[1]) &&
                          (text[2] == '.' || text[2] == '?');
    const bool isDriveRelative = text.size() >= 2 && isDriveLetter(text[0]) && text[1] == ':' &&
                                 (text.size() == 2 || !isSeparator(text[2]));
    if (text.empty() || isDevice || isDriveRelative) {
        return copyText(text);
    }
    const OwnedText whole = joinAndNormalise(currentDirectory, name);
    const std::string_view wholeText = viewOf(whole);
    if (wholeText.substr(0, 4) == R"(\\?\)") {
        return copyText(wholeText);
    }
    if (wholeText.size() >= 2 && isSeparator(wholeText[0]) && isSeparator(wholeText[1])) {
        return copyText(R"(\\?\UNC\)" + std::string(wholeText.substr(2)));
    }
    return copyText(R"(\\?\)" + std::string(wholeText));
}

OwnedText longSystemPath(const char* name) {
    return copyText(name);
}

} // namespace platform
