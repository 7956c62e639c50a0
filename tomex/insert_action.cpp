#include "tomex/insert_action.h"

#include <cstring>

#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/archive_format.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "platform/interface/input_file.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/path_name.h"
#include "tomex/command_report.h"
#include "tomex/command_state.h"
#include "tomex/exit_path.h"

namespace tomex {
namespace {

constexpr uint32_t normalisedMode = 0100644;

// One run of the action over the words of the command line.
class FileInserter {
public:
    FileInserter(arlib::Archive& archive, int64_t& position)
        : m_Archive(archive), m_Position(position), m_State(commandState()) {}

    void insert(const char* fileName);

private:
    bool mergeArchive(const char* fileName, const platform::FileProbe& probe);
    void mergeMember(const arlib::ArchiveMember& source);
    void insertPlainFile(const char* fileName, const platform::FileProbe& probe);
    bool isKept(const arlib::ArchiveMember& present, int64_t date) const;
    void placeNewMember(arlib::ArchiveMember* member);
    void normalise(arlib::ArchiveMember& member) const;
    void warnIfNotElf(const arlib::ArchiveMember& member);

    arlib::Archive& m_Archive;
    int64_t& m_Position;
    const CommandState& m_State;
    bool m_Warned = false;
    uint8_t m_ProbeBuffer[arlib::Archive::largestProbeSize];
};

// True if the update mode says that a member of this date is not to be replaced.
bool FileInserter::isKept(const arlib::ArchiveMember& present, int64_t date) const {
    return m_State.updateMode != UpdateMode_Always &&
           !replacePermitted(m_State.updateMode, present.getDate(), date);
}

void FileInserter::placeNewMember(arlib::ArchiveMember* member) {
    if (m_Position >= 0) {
        m_Archive.moveMember(member, static_cast<uint32_t>(m_Position));
        ++m_Position;
    }
}

void FileInserter::normalise(arlib::ArchiveMember& member) const {
    if (m_State.normaliseRequested) {
        member.setUid(0);
        member.setGid(0);
        member.setMode(normalisedMode);
        member.setDate(m_State.normaliseTime);
    }
}

// Once in a run is enough: a library of other things than objects is rare, and then all of it is.
void FileInserter::warnIfNotElf(const arlib::ArchiveMember& member) {
    if (!m_Warned && !member.getType()->isObjectModule()) {
        messages::report(messages::Severity_Warning, messages::MessageKey_NonElfObject,
                         member.getName(), m_Archive.getFileName());
        m_Warned = true;
    }
}

void FileInserter::insert(const char* fileName) {
    const platform::FileProbe probe =
        platform::probeFile(fileName, {m_ProbeBuffer, m_Archive.getProbeSize()});
    if (!probe.exists) {
        messages::report(messages::Severity_Error, messages::MessageKey_FileDoesNotExist, fileName);
        return;
    }
    if (!mergeArchive(fileName, probe)) {
        insertPlainFile(fileName, probe);
    }
}

// False if the file is no archive, or one with any flaw: then it is a file like others. Nothing is
// said about that, so the archive read here has no handler.
bool FileInserter::mergeArchive(const char* fileName, const platform::FileProbe& probe) {
    const bool hasMagic =
        probe.closeError == 0 && probe.head.size() >= arlib::archiveMagicSize &&
        std::memcmp(probe.head.data(), arlib::archiveMagic, arlib::archiveMagicSize) == 0;
    if (!hasMagic) {
        return false;
    }
    arlib::Archive merged;
    const ArchiveInUse inUse(merged);
    if (!arlib::ArchiveFileReader().readFile(fileName, merged)) {
        return false;
    }
    for (const arlib::ArchiveMember* member : merged.getMembers()) {
        if (!member->isAuxiliary()) {
            mergeMember(*member);
        }
    }
    return true;
}

void FileInserter::mergeMember(const arlib::ArchiveMember& source) {
    arlib::ArchiveMember* present = m_Archive.findUnchangedMember(source.getName());
    arlib::ArchiveMember* target = present;
    bool keepsContents = false;
    if (present == nullptr) {
        target = m_Archive.addMemberFromFileRegion(source.getName(), source);
        if (target == nullptr) {
            return;
        }
        placeNewMember(target);
    } else {
        keepsContents = isKept(*present, source.getDate());
        if (!keepsContents && !m_Archive.replaceMember(present, source)) {
            return;
        }
    }
    // Required: a member whose contents are kept takes the header fields all the same.
    target->setDate(source.getDate());
    target->setUid(source.getUid());
    target->setGid(source.getGid());
    target->setMode(source.getMode());
    warnIfNotElf(*target);
    if (present == nullptr) {
        reportIfVerbose(messages::MessageKey_AddedMember, target->getName());
    } else if (!keepsContents) {
        reportIfVerbose(messages::MessageKey_ReplacedMember, target->getName());
    }
}

void FileInserter::insertPlainFile(const char* fileName, const platform::FileProbe& probe) {
    arlib::ArchiveMember* present = m_Archive.findUnchangedMember(platform::fileNameLeaf(fileName));
    if (present == nullptr) {
        arlib::ArchiveMember* added = m_Archive.addMemberFromFile(fileName, probe);
        if (added != nullptr) {
            normalise(*added);
            placeNewMember(added);
            warnIfNotElf(*added);
            reportIfVerbose(messages::MessageKey_AddedMember, added->getName());
        }
        return;
    }
    const int64_t date = probe.status.date;
    const bool keepsContents = date > 0 && isKept(*present, date);
    if (!keepsContents) {
        if (!m_Archive.replaceMember(present, fileName, probe)) {
            return;
        }
        normalise(*present);
    }
    warnIfNotElf(*present);
    if (!keepsContents) {
        reportIfVerbose(messages::MessageKey_ReplacedMember, present->getName());
    }
}

} // namespace

bool replacePermitted(uint32_t updateMode, int64_t memberDate, int64_t fileDate) {
    switch (updateMode) {
    case UpdateMode_Always:
        return true;
    case UpdateMode_NotOlder:
        return memberDate <= fileDate;
    case UpdateMode_Newer:
        return memberDate < fileDate;
    default:
        // The place by which users' reports know this fault.
        platform::checkFailed("tomex/tomex", 829, "false");
    }
}

void insertFiles(arlib::Archive& archive, ArchiveReadStatus& status, int64_t& position) {
    CommandState& state = commandState();
    if (status.missing && state.fileList.empty()) {
        if (state.forceCreate) {
            messages::report(messages::Severity_Error, messages::MessageKey_NoMembersForCreate);
        }
        // Nothing to make an archive of: no file is made.
        state.accessLevel = AccessLevel_None;
        status.missing = false;
        return;
    }
    FileInserter inserter(archive, position);
    for (const char* fileName : state.fileList) {
        inserter.insert(fileName);
    }
}

} // namespace tomex
