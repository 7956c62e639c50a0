#include "tomex/edit_actions.h"

#include <cstring>
#include <string>
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

void moveMembers(arlib::Archive& archive, const ArchiveReadStatus& status, int64_t& position) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    for (const char* word : commandState().fileList) {
        arlib::ArchiveMember* member = selectFirstMember(archive, word);
        if (member == nullptr) {
            messages::report(messages::Severity_Error, messages::MessageKey_MemberNotPresent, word,
                             archive.getFileName());
            continue;
        }
        int64_t target = int64_t{archive.getMembers().getSize()} - 1;
        if (position >= 0) {
            // Taking the member out from before the position shifts the position.
            target = member->getIndex() < position ? position - 1 : position;
            position = target + 1;
        }
        archive.moveMember(member, static_cast<uint32_t>(target));
        reportIfVerbose(messages::MessageKey_MovedMember, member->getName());
    }
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
