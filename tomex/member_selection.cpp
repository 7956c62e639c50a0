#include "tomex/member_selection.h"

#include <ctime>
#include <string_view>

#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "platform/interface/path_name.h"
#include "platform/interface/wildcard.h"
#include "tomex/command_report.h"

namespace tomex {
namespace {

// Longer names are compared by so many bytes.
constexpr size_t comparedLength = 1029;

std::string_view leafOf(const char* text) {
    std::string_view leaf(text);
    const char* separators = platform::hostPathStyle == platform::PathStyle_Windows ? "/\\" : "/";
    if (const size_t separator = leaf.find_last_of(separators); separator != leaf.npos) {
        leaf.remove_prefix(separator + 1);
    }
    return leaf.substr(0, comparedLength);
}

} // namespace

bool matchName(const char* pattern, const char* memberName) {
    return platform::wildcardMatch(leafOf(pattern), leafOf(memberName));
}

namespace {

// A word that can be looked up; others are matched against every name.
bool isPlainName(std::string_view leaf) {
    return !platform::hasWildcard(leaf) && leaf.size() < comparedLength;
}

// Members are named without folders, so a member's name is its own leaf.
bool matchesLeaf(std::string_view leaf, const arlib::ArchiveMember& member) {
    const std::string_view name(member.getName(), member.getNameLength());
    return platform::wildcardMatch(leaf, name.substr(0, comparedLength));
}

} // namespace

bool isLookedUp(const char* word) {
    return isPlainName(leafOf(word));
}

void selectMembers(arlib::Archive& archive, const char* word,
                   std::vector<arlib::ArchiveMember*>& selected) {
    selected.clear();
    const std::string_view leaf = leafOf(word);
    if (isPlainName(leaf)) {
        arlib::ArchiveMemberList found;
        archive.findMembers(leaf.data(), found);
        for (uint32_t i = 0; i < found.getSize(); ++i) {
            selected.push_back(found.get(i));
        }
        return;
    }
    for (arlib::ArchiveMember* member : archive.getMembers()) {
        if (matchesLeaf(leaf, *member)) {
            selected.push_back(member);
        }
    }
}

arlib::ArchiveMember* selectFirstMember(arlib::Archive& archive, const char* word) {
    const std::string_view leaf = leafOf(word);
    if (isPlainName(leaf)) {
        return archive.findFirstMember(leaf.data());
    }
    for (arlib::ArchiveMember* member : archive.getMembers()) {
        if (!member->isAuxiliary() && matchesLeaf(leaf, *member)) {
            return member;
        }
    }
    return nullptr;
}

void forEachNamedMember(arlib::Archive& archive, const tabledrivenparser::StrList& words,
                        MemberOperation operation) {
    if (words.empty()) {
        for (arlib::ArchiveMember* member : archive.getMembers()) {
            if (!member->isAuxiliary()) {
                operation(*member);
            }
        }
        return;
    }
    std::vector<arlib::ArchiveMember*> selected;
    for (const char* word : words) {
        selectMembers(archive, word, selected);
        bool isFound = false;
        for (arlib::ArchiveMember* member : selected) {
            if (!member->isAuxiliary()) {
                operation(*member);
                isFound = true;
            }
        }
        if (!isFound) {
            messages::report(messages::Severity_Error, messages::MessageKey_MemberNotPresent, word,
                             archive.getFileName());
        }
    }
}

namespace {

// "rw-r--r--"
struct ModeText {
    explicit ModeText(uint32_t mode) {
        constexpr char letters[] = "rwxrwxrwx";
        uint32_t bit = 0x100;
        for (size_t i = 0; i < sizeof text - 1; ++i, bit >>= 1) {
            text[i] = (mode & bit) != 0 ? letters[i] : '-';
        }
    }
    char text[10] = {};
};

// "Jan 31 09:05 2026", local time
struct TimeText {
    explicit TimeText(int64_t date) {
        const auto time = static_cast<std::time_t>(date);
        std::tm parts = {};
        if (::localtime_r(&time, &parts) != nullptr) {
            std::strftime(text, sizeof text, "%b %d %H:%M %Y", &parts);
        }
    }
    char text[18] = {};
};

} // namespace

void listMember(arlib::ArchiveMember& member) {
    if (!commandState().verbose) {
        reportPlain(messages::MessageKey_ListName, member.getName());
        return;
    }
    reportPlain(messages::MessageKey_ListVerbose, ModeText(member.getMode()).text, member.getUid(),
                member.getGid(), member.getSize(), TimeText(member.getDate()).text,
                member.getName(), member.getOffset());
}

} // namespace tomex
