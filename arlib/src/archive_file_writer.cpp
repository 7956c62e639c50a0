#include "arlib/interface/archive_file_writer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include <unistd.h>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/contents_location.h"
#include "arlib/src/contents_source.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/output_file.h"
#include "platform/interface/temporary_file_guard.h"

namespace arlib {
namespace {

// Puts a text into a header field, padded with blanks, cut on the right if it is too long.
template <size_t width>
void putText(char (&field)[width], std::string_view text) {
    std::memset(field, ' ', width);
    std::memcpy(field, text.data(), std::min(text.size(), width));
}

template <size_t width>
void putNumber(char (&field)[width], uint32_t value, int base) {
    char digits[16];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value, base);
    putText(field, {digits, static_cast<size_t>(end.ptr - digits)});
}

void putName(char (&field)[longNameLength], const ArchiveMember& member) {
    if (member.getType() == getFileNameTableType()) {
        putText(field, "//");
    } else if (member.getType() == getSymbolTableType()) {
        putText(field, "/");
    } else if (member.getNameLength() >= longNameLength) {
        putText(field, "/" + std::to_string(member.getLongNameOffset()));
    } else {
        putText(field, member.getName());
        field[member.getNameLength()] = '/';
    }
}

MemberHeader headerOf(const ArchiveMember& member) {
    constexpr int decimal = 10;
    constexpr int octal = 8;
    MemberHeader header;
    putName(header.name, member);
    putNumber(header.date, static_cast<uint32_t>(member.getDate()), decimal);
    putNumber(header.uid, static_cast<uint32_t>(member.getUid()), decimal);
    putNumber(header.gid, static_cast<uint32_t>(member.getGid()), decimal);
    putNumber(header.mode, member.getMode(), octal);
    putNumber(header.size, member.getSize(), decimal);
    std::memcpy(header.magic, memberMagic, sizeof header.magic);
    return header;
}

} // namespace

// One run of the writer.
class ArchiveFileWriter::Pass {
public:
    Pass(const char* fileName, Archive& archive)
        : m_FileName(fileName), m_Archive(archive), m_Handler(archive.m_ErrorHandler) {}

    bool checkTarget();
    bool checkSizes();
    bool createTemporaryFile();
    bool writeAll();
    bool closeTemporaryFile();
    bool replaceTarget();
    void relocateMembers();

private:
    bool writeFailed(const char* name, int error);
    bool abandon();
    void removeTemporaryFile();
    bool outputFailed();
    bool writeMember(ArchiveMember& member);
    bool replaceInTwoSteps(int renameError);

    const char* m_FileName;
    Archive& m_Archive;
    ErrorHandler* m_Handler;
    std::string m_TemporaryName;
    platform::OutputFile m_Output;
};

bool ArchiveFileWriter::Pass::writeFailed(const char* name, int error) {
    if (m_Handler != nullptr) {
        m_Handler->writeError(&m_Archive, name, error);
    }
    return false;
}

// A file that cannot be removed is named, so that the user can do it.
void ArchiveFileWriter::Pass::removeTemporaryFile() {
    if (!platform::removeGuardedFile() && m_Handler != nullptr) {
        m_Handler->deleteError(&m_Archive, m_TemporaryName.c_str(), errno);
    }
}

// Leaves nothing but the old archive.
bool ArchiveFileWriter::Pass::abandon() {
    m_Output.abandon();
    removeTemporaryFile();
    return false;
}

bool ArchiveFileWriter::Pass::checkTarget() {
    if (platform::isAbsent(m_FileName) || platform::isWritable(m_FileName)) {
        return true;
    }
    if (m_Handler != nullptr) {
        m_Handler->outputReadOnly(&m_Archive, m_FileName);
    }
    return false;
}

// Every header's offset must fit the symbol table's words, with nothing written if one does not.
bool ArchiveFileWriter::Pass::checkSizes() {
    uint64_t offset = archiveMagicSize;
    for (const ArchiveMember* member : m_Archive.getMembers()) {
        if (offset >= archiveSizeLimit) {
            return writeFailed(m_FileName, EFBIG);
        }
        offset = nextMemberOffset(offset, member->getSize());
    }
    return true;
}

// The name gets the first number that no file has; a file that another process makes at the same
// moment means the next number.
bool ArchiveFileWriter::Pass::createTemporaryFile() {
    for (uint32_t number = 0;; ++number) {
        m_TemporaryName = std::string(m_FileName) + "." + std::to_string(number);
        const int descriptor = platform::createGuardedFile(m_TemporaryName.c_str());
        if (descriptor >= 0) {
            m_Output.adopt(descriptor);
            return true;
        }
        if (errno != EEXIST) {
            return writeFailed(m_TemporaryName.c_str(), errno);
        }
    }
}

// The magic and the members share the output's buffer, so a failure may show late; what counts for
// the report is how far the file got.
bool ArchiveFileWriter::Pass::outputFailed() {
    const bool hasMagic = m_Output.bytesWritten() >= archiveMagicSize;
    writeFailed(hasMagic ? m_TemporaryName.c_str() : m_FileName, m_Output.error());
    return abandon();
}

bool ArchiveFileWriter::Pass::writeMember(ArchiveMember& member) {
    const MemberHeader header = headerOf(member);
    if (!m_Output.write(&header, sizeof header)) {
        return outputFailed();
    }
    const platform::CopyOutcome outcome = member.copyContents(m_Output);
    if (outcome == platform::CopyOutcome::InputFailed) {
        writeFailed(m_TemporaryName.c_str(), errno);
        return abandon();
    }
    if (outcome == platform::CopyOutcome::OutputFailed) {
        return outputFailed();
    }
    if (member.getSize() % 2 != 0 && !m_Output.write(&memberPadding, 1)) {
        return outputFailed();
    }
    return true;
}

bool ArchiveFileWriter::Pass::writeAll() {
    if (!m_Output.write(archiveMagic, archiveMagicSize)) {
        return outputFailed();
    }
    for (ArchiveMember* member : m_Archive.getMembers()) {
        if (!writeMember(*member)) {
            return false;
        }
    }
    if (!m_Output.flush()) {
        return outputFailed();
    }
    // The inputs are closed while the output can still be given up.
    if (!m_Archive.closeSources()) {
        writeFailed(m_TemporaryName.c_str(), errno);
        return abandon();
    }
    return true;
}

// The temporary file stays after a failure here, required: all of it may well be on disk, and it
// may be the only copy that is.
bool ArchiveFileWriter::Pass::closeTemporaryFile() {
    if (m_Output.close()) {
        return true;
    }
    platform::releaseGuardedFile();
    if (m_Handler != nullptr) {
        m_Handler->closeError(&m_Archive, m_TemporaryName.c_str(), m_Output.error());
    }
    return false;
}

bool ArchiveFileWriter::Pass::replaceTarget() {
    return platform::renameGuardedFile(m_FileName) || replaceInTwoSteps(errno);
}

// For hosts and file systems on which a rename does not replace a file.
bool ArchiveFileWriter::Pass::replaceInTwoSteps(int renameError) {
    // Between the two steps only the temporary file holds the members: no signal may take it.
    const platform::StoppingSignalsHeld held;
    if (!platform::isAbsent(m_FileName)) {
        errno = 0;
        if (::unlink(m_FileName) != 0) { // which, unlike remove, spares an empty folder
            const int error = errno;
            if (m_Handler != nullptr) {
                m_Handler->deleteError(&m_Archive, m_FileName, error);
            }
            removeTemporaryFile();
            return false;
        }
        if (platform::renameGuardedFile(m_FileName)) {
            return true;
        }
        renameError = errno;
    }
    writeFailed(m_FileName, renameError);
    removeTemporaryFile();
    return false;
}

void ArchiveFileWriter::Pass::relocateMembers() {
    m_Archive.setFileName(m_FileName);
    auto source = std::make_shared<SourceFile>();
    source->name = m_FileName;
    source->isArchive = true;
    source->status = platform::queryFile(m_FileName);
    uint64_t offset = archiveMagicSize;
    for (ArchiveMember* member : m_Archive.getMembers()) {
        member->dropLocation();
        member->m_ContentsLocation.emplace(member, source, false, offset + memberHeaderSize);
        offset = nextMemberOffset(offset, member->getSize());
    }
}

bool ArchiveFileWriter::writeFile(const char* fileName, Archive& archive) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    Pass pass(fileName, archive);
    if (!pass.checkTarget()) {
        return false;
    }
    // What its answer tells has been reported. An index that is behind the members is no reason to
    // lose them, but without room for a table there is no archive that names them rightly.
    archive.updateAuxiliaryMembers();
    const bool isWritten = !archive.m_TableFailed && pass.checkSizes() &&
                           pass.createTemporaryFile() && pass.writeAll() &&
                           pass.closeTemporaryFile() && pass.replaceTarget();
    if (isWritten) {
        pass.relocateMembers();
    }
    return isWritten;
}

} // namespace arlib
