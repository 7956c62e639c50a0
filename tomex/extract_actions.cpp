#include "tomex/extract_actions.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "arlib/interface/archive.h"
#include "messages/interface/byte_output.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "platform/interface/output_file.h"
#include "tomex/command_report.h"

namespace tomex {
namespace {

// The longest name that a file gets, with or without -T.
constexpr uint32_t longestFileName = 260;

void reportWriteFailure(const arlib::ArchiveMember& member, int error) {
    messages::report(messages::Severity_Error, messages::MessageKey_ExtractWriteError,
                     member.getName(), std::strerror(error));
}

} // namespace

void extractMember(arlib::ArchiveMember& member) {
    const CommandState& state = commandState();
    if (member.getNameLength() > longestFileName && !state.truncateNames) {
        messages::report(messages::Severity_Error, messages::MessageKey_FileNameTooLong,
                         member.getName());
        return;
    }
    const std::string name = std::string(member.getName()).substr(0, longestFileName);
    platform::OutputFile file;
    const bool isOpen = state.overwriteOnExtract
                            ? file.overwrite(name.c_str(), member.getArchive()->getFileStatus())
                            : file.createNew(name.c_str());
    if (!isOpen && !state.overwriteOnExtract && errno == EEXIST) {
        messages::report(messages::Severity_Error, messages::MessageKey_FileAlreadyExists,
                         name.c_str());
        return;
    }
    if (!isOpen) {
        reportWriteFailure(member, errno);
        return;
    }
    reportIfVerbose(messages::MessageKey_ExtractedMember, member.getName());
    if (member.copyContents(file) == platform::CopyOutcome::InputFailed) {
        file.discardAll(); // half a member is worse than an empty file
        return;
    }
    if (!file.close()) {
        reportWriteFailure(member, file.error());
        std::remove(name.c_str());
    }
}

namespace {

// Contents of this size go to the standard output without a stop in memory.
constexpr uint32_t largeContents = 16 << 10;

void printLargeMember(arlib::ArchiveMember& member) {
    platform::OutputFile output;
    output.adopt(messages::duplicateStandardOutput());
    const platform::CopyOutcome outcome = member.copyContents(output);
    const bool isClosed = output.close();
    if (outcome == platform::CopyOutcome::OutputFailed ||
        (outcome == platform::CopyOutcome::Done && !isClosed)) {
        messages::noteLostOutput(output.error());
    }
}

} // namespace

void printMember(arlib::ArchiveMember& member) {
    reportIfVerbose(messages::MessageKey_PrintedMember, member.getName());
    if (member.getSize() >= largeContents) {
        printLargeMember(member);
    } else if (member.ensureContents()) {
        messages::printBytesToStandardOutput(member.getContents()->bytes(), member.getSize());
        member.releaseContents();
    }
}

} // namespace tomex
