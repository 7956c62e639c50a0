#include "tomex/edit_actions.h"

#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "tomex/command_report.h"
#include "tomex/command_state.h"
#include "tomex/member_selection.h"

namespace tomex {

int64_t resolvePosition(const arlib::Archive& archive) {
    const CommandState& state = commandState();
    if (state.positionKind == PositionKind_None) {
        return noPosition;
    }
    int64_t index = 0;
    for (const arlib::ArchiveMember* member : archive.getMembers()) {
        if (matchName(state.positionName, member->getName())) {
            return state.positionKind == PositionKind_Before ? index : index + 1;
        }
        ++index;
    }
    return positionNotFound;
}

void reportArchiveNotFound(const arlib::Archive& archive, const ArchiveReadStatus& status) {
    messages::report(messages::Severity_Error, messages::MessageKey_ArchiveNotFound,
                     archive.getFileName(), std::strerror(status.errorNumber));
}

namespace {

// Members on their way to one place of the list, each behind the one before it.
//
// Moving one after the other would shift the list once a member. So the list stays as it is until
// somebody needs its new order, and then takes it on in one walk.
class MemberMoves {
public:
    // The members go in front of what stands at position, or to the end.
    MemberMoves(arlib::Archive& archive, int64_t position)
        : m_Archive(archive),
          m_Gap(position < 0 ? archive.getMembers().getSize() : static_cast<uint32_t>(position)),
          m_Next(m_Gap) {}

    void add(arlib::ArchiveMember* member);

    // Puts the list into its new order.
    void apply();

private:
    using Members = std::vector<arlib::ArchiveMember*>;

    bool isInPlace(const arlib::ArchiveMember* member);

    arlib::Archive& m_Archive;
    uint32_t m_Gap;
    Members m_Moved; // null where a member was moved again
    std::unordered_map<const arlib::ArchiveMember*, size_t> m_Places;
    uint32_t m_Next; // the first behind the gap that has not been moved is here or further on
    bool m_IsChanged = false;
};

// True if the member stands where it is to go, last of those before the gap or first behind it.
bool MemberMoves::isInPlace(const arlib::ArchiveMember* member) {
    const elfext::fast_array<arlib::ArchiveMember*>& list = m_Archive.getMembers();
    while (m_Next < list.getSize() && m_Places.contains(list[m_Next])) {
        ++m_Next;
    }
    const bool isNext = m_Next < list.getSize() && list[m_Next] == member;
    const arlib::ArchiveMember* last = nullptr;
    if (!m_Moved.empty()) {
        last = m_Moved.back();
    } else if (m_Gap != 0) {
        last = list[m_Gap - 1];
    }
    return isNext || last == member;
}

void MemberMoves::add(arlib::ArchiveMember* member) {
    m_IsChanged = !isInPlace(member) || m_IsChanged;
    const auto [place, isNew] = m_Places.try_emplace(member, m_Moved.size());
    if (!isNew) {
        m_Moved[place->second] = nullptr;
        place->second = m_Moved.size();
    }
    m_Moved.push_back(member);
    if (m_Archive.hasNamesakes(member)) {
        apply(); // which of them comes first may be another one now
    }
}

void MemberMoves::apply() {
    std::erase(m_Moved, nullptr);
    if (m_Moved.empty()) {
        return;
    }
    const elfext::fast_array<arlib::ArchiveMember*>& list = m_Archive.getMembers();
    uint32_t staying = 0; // before the gap
    for (uint32_t i = 0; i < m_Gap; ++i) {
        staying += m_Places.contains(list[i]) ? 0U : 1U;
    }
    if (m_IsChanged) {
        m_Archive.moveMembers(m_Moved, m_Gap);
    }
    m_Gap = staying + static_cast<uint32_t>(m_Moved.size());
    m_Next = m_Gap;
    m_Moved.clear();
    m_Places.clear();
    m_IsChanged = false;
}

} // namespace

void moveMembers(arlib::Archive& archive, const ArchiveReadStatus& status, int64_t position) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    MemberMoves moves(archive, position);
    for (const char* word : commandState().fileList) {
        if (!isLookedUp(word)) {
            moves.apply();
        }
        arlib::ArchiveMember* member = selectFirstMember(archive, word);
        if (member == nullptr) {
            messages::report(messages::Severity_Error, messages::MessageKey_MemberNotPresent, word,
                             archive.getFileName());
            continue;
        }
        moves.add(member);
        reportIfVerbose(messages::MessageKey_MovedMember, member->getName());
    }
    moves.apply();
}

void deleteMembers(arlib::Archive& archive, const ArchiveReadStatus& status) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    // The members go in one pass at the end; until then those that are on their way out no longer
    // match.
    std::vector<arlib::ArchiveMember*> doomed;
    std::unordered_set<const arlib::ArchiveMember*> isDoomed;
    std::unordered_set<std::string> doneWords;
    std::vector<arlib::ArchiveMember*> selected;
    for (const char* word : commandState().fileList) {
        selected.clear();
        if (doneWords.insert(word).second) { // a word that comes again finds nothing left
            selectMembers(archive, word, selected);
        }
        bool isFound = false;
        for (auto member = selected.rbegin(); member != selected.rend(); ++member) {
            if (isDoomed.insert(*member).second) {
                reportIfVerbose(messages::MessageKey_DeletedMember, (*member)->getName());
                doomed.push_back(*member);
                isFound = true;
            }
        }
        if (!isFound) {
            messages::report(messages::Severity_Warning, messages::MessageKey_MemberNotPresent,
                             word, archive.getFileName());
        }
    }
    archive.deleteMembers(doomed);
}

} // namespace tomex
