#include "arlib/interface/error_handler.h"

#include <cstring>

#include "arlib/interface/archive_member.h"

namespace arlib {
namespace {

std::string number(uint64_t value) {
    return std::to_string(value);
}

std::string quoted(const char* text) {
    return std::string("'") + text + "'";
}

// "#3 'name'": how a member is called in sentences about groups and symbols.
std::string memberLabel(const ArchiveMember* member) {
    return "#" + number(member->getIndex()) + " " + quoted(member->getName());
}

} // namespace

bool ErrorHandler::reportFile(Archive* archive, const char* action, const char* file, int error) {
    std::string text = std::string("I/O error ") + action + " file";
    if (file != nullptr) {
        text += " " + quoted(file);
    }
    if (error != 0) {
        text += std::string(": ") + std::strerror(error);
    }
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::reportHeader(Archive* archive, ErrorKind kind, uint64_t offset,
                                const std::string& flaw) {
    const std::string text = "Archive member header starting at offset " + number(offset) + flaw;
    return report(archive, kind, text.c_str());
}

bool ErrorHandler::reportSymbol(Archive* archive, uint32_t index, const char* name, uint32_t offset,
                                const char* flaw) {
    const std::string text =
        "Archive symbol table says symbol #" + number(index) + " " + quoted(name) +
        " is defined in the archive member starting at offset " + number(offset) + flaw;
    return report(archive, ErrorKind_Recoverable, text.c_str());
}

bool ErrorHandler::reportGroup(Archive* archive, MemberGroup group, const std::string& flaw) {
    const std::string text =
        "Minor variant group containing archive member " + memberLabel(group[0]) + flaw;
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::outOfMemory(Archive* archive) {
    return report(archive, ErrorKind_Fatal, "Out of memory");
}

bool ErrorHandler::readError(Archive* archive, const char* file, int error) {
    return reportFile(archive, "reading", file, error);
}

bool ErrorHandler::seekError(Archive* archive, const char* file, int error) {
    return reportFile(archive, "seeking in", file, error);
}

bool ErrorHandler::closeError(Archive* archive, const char* file, int error) {
    return reportFile(archive, "closing", file, error);
}

bool ErrorHandler::deleteError(Archive* archive, const char* file, int error) {
    return reportFile(archive, "deleting", file, error);
}

bool ErrorHandler::writeError(Archive* archive, const char* file, int error) {
    return reportFile(archive, "writing", file, error);
}

bool ErrorHandler::outputReadOnly(Archive* archive, const char* file) {
    std::string text = "Output file";
    if (file != nullptr) {
        text += " " + quoted(file);
    }
    text += " is read-only";
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::badMagic(Archive* archive) {
    return report(archive, ErrorKind_Fatal,
                  "File does not begin with the archive magic number (not an archive file?)");
}

bool ErrorHandler::headerEndOfFile(Archive* archive, uint64_t offset) {
    const std::string text =
        "End of file in the middle of archive member header starting at offset " + number(offset);
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::badDate(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Forgivable, offset,
                        " contains invalid date string " + quoted(text));
}

bool ErrorHandler::badUid(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Forgivable, offset,
                        " contains invalid uid string " + quoted(text));
}

bool ErrorHandler::badGid(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Forgivable, offset,
                        " contains invalid gid string " + quoted(text));
}

bool ErrorHandler::badMode(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Forgivable, offset,
                        " contains invalid mode string " + quoted(text));
}

bool ErrorHandler::badSize(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Fatal, offset,
                        " contains invalid size string " + quoted(text));
}

bool ErrorHandler::badMemberMagic(Archive* archive, uint64_t offset) {
    return reportHeader(archive, ErrorKind_Fatal, offset,
                        " contains incorrect archive-member magic number");
}

bool ErrorHandler::noLongNameTable(Archive* archive, uint64_t offset) {
    return reportHeader(archive, ErrorKind_Recoverable, offset,
                        " contains an index into the long name table, but this archive has no "
                        "long name table");
}

bool ErrorHandler::badLongNameIndex(Archive* archive, uint64_t offset, const char* text) {
    return reportHeader(archive, ErrorKind_Recoverable, offset,
                        " contains invalid long-name index " + quoted(text));
}

bool ErrorHandler::longNameIndexRange(Archive* archive, uint64_t offset, uint32_t index,
                                      uint32_t tableSize) {
    return reportHeader(archive, ErrorKind_Recoverable, offset,
                        " contains out-of-range long-name index " + number(index) +
                            " (the long-name table is " + number(tableSize) + " bytes long)");
}

bool ErrorHandler::noSlashInName(Archive* archive, uint64_t offset) {
    return reportHeader(archive, ErrorKind_Recoverable, offset,
                        " has no '/' character in its name field");
}

bool ErrorHandler::trailingInName(Archive* archive, uint64_t offset) {
    return reportHeader(
        archive, ErrorKind_Forgivable, offset,
        " has a trailing non-space character after the '/' character in its name field");
}

bool ErrorHandler::badPadding(Archive* archive, uint64_t offset, uint8_t value) {
    const std::string text = "Padding byte at offset " + number(offset) + " has value " +
                             number(value) + " and not 0x0A as it should be";
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::regionBeyondFile(Archive* archive, const char* member, const char* file,
                                    uint64_t offset, uint64_t size, uint64_t fileSize) {
    const std::string place = " at offset " + number(offset);
    std::string text;
    if (member != nullptr) {
        text = "Error reading member " + quoted(member) + ": archive member is" + place +
               " and has size " + number(size) + " but archive file is only " + number(fileSize) +
               " bytes long";
    } else {
        text = "Error reading region from file " + quoted(file) + place + " with size " +
               number(size) + ": file is only " + number(fileSize) + " bytes long";
    }
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::symbolTableShort(Archive* archive, uint32_t size) {
    const std::string text = "Archive symbol table is " + number(size) +
                             " bytes long, but should contain at least a 4-byte symbol count";
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::symbolTableCount(Archive* archive, uint32_t size, uint32_t count,
                                    uint64_t required) {
    const std::string text =
        "Archive symbol table is " + number(size) + " bytes long, but claims to contain " +
        number(count) + " symbols so it should be at least " + number(required) + " bytes long";
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::symbolNameEnd(Archive* archive, uint32_t index, uint32_t count) {
    const std::string text = "Archive symbol table ends in the middle of the name of symbol #" +
                             number(index) + " (out of " + number(count) + ")";
    return report(archive, ErrorKind_Fatal, text.c_str());
}

bool ErrorHandler::symbolNoMember(Archive* archive, uint32_t index, const char* name,
                                  uint32_t offset) {
    return reportSymbol(archive, index, name, offset, " but no archive member starts there");
}

bool ErrorHandler::symbolNotObject(Archive* archive, uint32_t index, const char* name,
                                   uint32_t offset) {
    return reportSymbol(archive, index, name, offset, ", but that member is not an object file");
}

bool ErrorHandler::symbolTableExtra(Archive* archive, uint64_t offset, uint64_t end) {
    const std::string text = "Archive symbol table contains unexpected data at offset " +
                             number(offset) +
                             ", after all the expected data has finished at offset " + number(end);
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::memberSymbolsUnreadable(Archive* archive, ArchiveMember* member,
                                           const char* text) {
    std::string sentence =
        "Unable to read symbols defined in archive member " + memberLabel(member);
    if (*text != '\0') {
        sentence += std::string(": ") + text;
    }
    return report(archive, ErrorKind_Recoverable, sentence.c_str());
}

bool ErrorHandler::noBaseVariant(Archive* archive, MemberGroup group) {
    return reportGroup(archive, group, " includes no base variant");
}

bool ErrorHandler::multipleBaseVariants(Archive* archive, MemberGroup group) {
    return reportGroup(archive, group, " includes multiple base variants");
}

bool ErrorHandler::identicalVariants(Archive* archive, const char* suffix, MemberGroup group) {
    return reportGroup(archive, group, " includes multiple variants with suffix " + quoted(suffix));
}

bool ErrorHandler::attributesNotDecorable(Archive* archive, ArchiveMember* member,
                                          MemberGroup group) {
    // The missing blanks are required: users' scripts look for this sentence as it is.
    const std::string text =
        "Member " + memberLabel(member) + " of minor variant group beginning witharchive member " +
        memberLabel(group[0]) + " includes attribute(s) with nosymbol decoration representation";
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::commonAttributesClash(Archive* archive, MemberGroup group,
                                         const attributes::FullAttr&) {
    const std::string text =
        "Common attributes of minor variant group beginning with archive member " +
        memberLabel(group[0]) + " are incompatible with library attributes";
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::memberAttributesClash(Archive* archive, ArchiveMember* member,
                                         const attributes::FullAttr&) {
    const std::string text = "Attributes of minor variant member object " +
                             quoted(member->getName()) +
                             " are incompatible with library attributes";
    return report(archive, ErrorKind_Forgivable, text.c_str());
}

bool ErrorHandler::bitcodeFailure(Archive* archive, const char* text) {
    const std::string sentence =
        std::string("Failure to use ") + text + "to process bitcode symbols";
    return report(archive, ErrorKind_Fatal, sentence.c_str());
}

} // namespace arlib
