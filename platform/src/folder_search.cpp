#include "platform/interface/folder_search.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

#include <dirent.h>

#include "platform/interface/system_path.h"
#include "platform/interface/wildcard.h"

namespace platform {
namespace {

bool isMeant(std::string_view pattern, std::string_view name) {
    const bool isHidden = !name.empty() && name[0] == '.';
    const bool asksForHidden = !pattern.empty() && pattern[0] == '.';
    return (!isHidden || asksForHidden) && wildcardMatchExact(pattern, name);
}

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

// False if the folder cannot be opened or not be read to its end: half a list would be taken for
// the whole.
bool listMatches(const char* directory, const char* pattern, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(directory));
    if (!folder) {
        return false;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(folder.get());
        if (entry == nullptr) {
            return errno == 0;
        }
        if (isMeant(pattern, entry->d_name)) {
            names.emplace_back(entry->d_name);
        }
    }
}

bool byUnsignedBytes(const std::string& left, const std::string& right) {
    return left.compare(right) < 0; // char_traits<char> compares bytes as unsigned
}

} // namespace

const char* firstMatch(const char* directory, const char* pattern, MatchIterator& iterator) {
    iterator.names.clear();
    iterator.next = 0;
    const bool isHere = directory == nullptr || *directory == '\0';
    if (!listMatches(isHere ? "." : longSystemPath(directory).get(), pattern, iterator.names)) {
        iterator.names.clear();
        return nullptr;
    }
    std::sort(iterator.names.begin(), iterator.names.end(), byUnsignedBytes);
    return nextMatch(iterator);
}

const char* nextMatch(MatchIterator& iterator) {
    return iterator.next < iterator.names.size() ? iterator.names[iterator.next++].c_str()
                                                 : nullptr;
}

} // namespace platform
