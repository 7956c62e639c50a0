#include "platform/interface/path_name.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <unistd.h>

namespace platform {
namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

char separatorOf(PathStyle style) {
    return style == PathStyle_Windows ? '\\' : '/';
}

bool knowsRoots(PathStyle style) {
    return style == PathStyle_Windows || style == PathStyle_Mixed;
}

std::string render(std::string_view text, PathStyle style) {
    std::string result(text);
    if (style == PathStyle_Unknown) {
        return result;
    }
    for (size_t i = 0; i < result.size(); ++i) {
        if (!isSeparator(result[i])) {
            continue;
        }
        const bool isEscape = text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '\\';
        if (isEscape && !knowsRoots(style)) {
            continue;
        }
        result[i] = separatorOf(style);
    }
    return result;
}

PathStyle styleShownBy(std::string_view text) {
    const auto at = [text](size_t i) { return i < text.size() ? text[i] : '\0'; };
    if (at(1) == ':' || at(0) == '\\' || (at(0) == '/' && at(1) == '/')) {
        return PathStyle_Windows;
    }
    if (at(0) == '/') {
        return PathStyle_Posix;
    }
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && at(i + 1) != '\\') {
            return PathStyle_Windows;
        }
    }
    return PathStyle_Mixed;
}

// The length of "\\server\share\" at the start of text, or 0.
size_t uncRootLength(std::string_view text) {
    const bool doubled = text.size() >= 2 && isSeparator(text[0]) && text[0] == text[1];
    if (!doubled) {
        return 0;
    }
    size_t position = 2;
    for (int name = 0; name < 2; ++name) {
        const size_t start = position;
        while (position < text.size() && !isSeparator(text[position])) {
            ++position;
        }
        if (position == start || position == text.size()) {
            return 0;
        }
        ++position;
    }
    return position;
}

size_t rootLength(std::string_view text, PathStyle style) {
    if (!knowsRoots(style)) {
        return 0;
    }
    return text.size() >= 2 && text[1] == ':' ? 2 : uncRootLength(text);
}

size_t lastSeparator(std::string_view text, PathStyle style) {
    return style == PathStyle_Windows ? text.find_last_of("/\\") : text.rfind('/');
}

} // namespace

OwnedPath newPath(const char* text, PathStyle style) {
    auto path = std::make_unique<PathName>();
    path->style = style;
    parsePath(*path, text);
    return path;
}

void parsePath(PathName& path, const char* text) {
    path.root.reset();
    path.directory.reset();
    path.base.reset();
    path.extension.reset();
    if (text == nullptr || *text == '\0') {
        return;
    }
    std::string_view rest(text);
    if (path.style == PathStyle_Unknown) {
        path.style = styleShownBy(rest);
    }
    if (const size_t length = rootLength(rest, path.style); length != 0) {
        path.root = copyText(render(rest.substr(0, length), path.style));
        rest.remove_prefix(length);
    }
    if (const size_t separator = lastSeparator(rest, path.style); separator != rest.npos) {
        const std::string directory = render(rest.substr(0, separator), path.style);
        path.directory =
            copyText(separator == 0 ? std::string(1, separatorOf(path.style)) : directory);
        rest.remove_prefix(separator + 1);
    }
    setLeafName(path, rest.data());
}

OwnedText rootOf(const PathName& path, PathStyle style) {
    if (!path.root || style == PathStyle_Posix) {
        return nullptr;
    }
    if (knowsRoots(style) && !knowsRoots(path.style)) {
        return nullptr;
    }
    return copyText(render(viewOf(path.root), style));
}

OwnedText directoryOf(const PathName& path, PathStyle style) {
    return path.directory ? copyText(render(viewOf(path.directory), style)) : nullptr;
}

OwnedText rootAndDirectory(const PathName& path, PathStyle style) {
    const OwnedText root = rootOf(path, style);
    const OwnedText directory = directoryOf(path, style);
    return copyText(std::string(viewOf(root)) + std::string(viewOf(directory)));
}

OwnedText leafName(const PathName& path) {
    std::string leaf(viewOf(path.base));
    if (path.extension) {
        leaf += '.';
        leaf += viewOf(path.extension);
    }
    return copyText(leaf);
}

void setLeafName(PathName& path, const char* text) {
    path.base.reset();
    path.extension.reset();
    const std::string_view leaf = text == nullptr ? std::string_view() : std::string_view(text);
    const size_t dot = leaf.find('.');
    if (const std::string_view base = leaf.substr(0, dot); !base.empty()) {
        path.base = copyText(base);
    }
    if (dot != leaf.npos) {
        path.extension = copyText(leaf.substr(dot + 1));
    }
}

OwnedText fullPath(const PathName& path, PathStyle style) {
    const OwnedText rootText = rootAndDirectory(path, style);
    std::string full(viewOf(rootText));
    const OwnedText leaf = leafName(path);
    if (viewOf(leaf).empty()) {
        return copyText(full);
    }
    const char separator = separatorOf(style);
    if (path.directory && full != std::string_view(&separator, 1)) {
        full += separator;
    }
    full += viewOf(leaf);
    return copyText(full);
}

namespace {

// The segments of a directory with "." and ".." resolved; ".." stops at the top. Behind a root that
// ends in a separator the directory begins without one.
std::string resolveDots(std::string_view directory, PathStyle style, bool rootHasSeparator) {
    const char separator = separatorOf(style);
    std::string resolved;
    size_t position = 0;
    while (position <= directory.size()) {
        size_t end = position;
        while (end < directory.size() && directory[end] != separator) {
            ++end;
        }
        const std::string_view segment = directory.substr(position, end - position);
        if (segment == "..") {
            resolved.resize(std::min(resolved.size(), resolved.rfind(separator)));
        } else if (!segment.empty() && segment != ".") {
            resolved += separator;
            resolved += segment;
        }
        position = end + 1;
    }
    if (rootHasSeparator) {
        return resolved.empty() ? resolved : resolved.substr(1);
    }
    return resolved.empty() ? std::string(1, separator) : resolved;
}

bool currentDirectory(std::string& directory) {
    char* current = ::getcwd(nullptr, 0);
    if (current == nullptr) {
        return false;
    }
    directory = current;
    std::free(current);
    return true;
}

} // namespace

bool makeAbsolute(PathName& path) {
    const char separator = separatorOf(path.style);
    std::string directory(viewOf(path.directory));
    const bool isRooted = path.root && !(viewOf(path.root).size() == 2 &&
                                         (directory.empty() || directory[0] != separator));
    if (!isRooted && (directory.empty() || directory[0] != separator)) {
        std::string start;
        if (!currentDirectory(start)) {
            return false;
        }
        directory = render(start, path.style) + separator + directory;
    }
    // A leaf of dots is a folder too: "." names the folder itself, ".." the one above.
    const OwnedText leaf = leafName(path);
    if (viewOf(leaf) == "." || viewOf(leaf) == "..") {
        directory += separator;
        directory += viewOf(leaf);
        setLeafName(path, "");
    }
    const bool rootHasSeparator = isSeparator(path.root ? viewOf(path.root).back() : '\0');
    const std::string resolved = resolveDots(directory, path.style, rootHasSeparator);
    path.directory = resolved.empty() ? nullptr : copyText(resolved);
    return true;
}

const char* fileNameLeaf(const char* fileName) {
    const char* leaf = fileName;
    for (const char* c = fileName; *c != '\0'; ++c) {
        if (isSeparator(*c)) {
            leaf = c + 1;
        }
    }
    return leaf;
}

} // namespace platform
