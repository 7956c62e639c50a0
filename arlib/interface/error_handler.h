// Where the archive library says what went wrong.
//
// The library never prints. Each kind of failure has an operation of its own here, which gets the
// facts; the base class makes an English sentence of them and passes it to report, with its idea
// of how bad the flaw is. A program derives from it and overrides report, and beyond that whatever
// it wants to word itself.
//
// Every operation answers whether to go on as far as possible (true) or to give up (false). Texts
// passed in are NUL-terminated and valid during the call. `error` is the host's error number, 0 if
// there is none; `offset` counts bytes from the start of the archive file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "attributes/interface/full_attr.h"

namespace arlib {

class Archive;
class ArchiveMember;

// How bad a flaw is in the eyes of the base class.
enum ErrorKind : uint32_t {
    ErrorKind_Fatal = 0,       // the read cannot go on
    ErrorKind_Forgivable = 1,  // a field is wrong, its neutral value will do
    ErrorKind_Recoverable = 2, // a name or a symbol is lost, the rest stands
};

using MemberGroup = std::span<ArchiveMember* const>;

class ErrorHandler {
public:
    virtual ~ErrorHandler() = default;

    virtual bool report(Archive* archive, ErrorKind kind, const char* text) = 0;

    virtual bool outOfMemory(Archive* archive);

    // File access. file may be null: the archive's own.
    virtual bool readError(Archive* archive, const char* file, int error);
    virtual bool seekError(Archive* archive, const char* file, int error);
    virtual bool closeError(Archive* archive, const char* file, int error);
    virtual bool deleteError(Archive* archive, const char* file, int error);
    virtual bool writeError(Archive* archive, const char* file, int error);
    virtual bool outputReadOnly(Archive* archive, const char* file);

    // The archive file's own structure; offset is that of the member's header.
    virtual bool badMagic(Archive* archive);
    virtual bool headerEndOfFile(Archive* archive, uint64_t offset);
    virtual bool badDate(Archive* archive, uint64_t offset, const char* text);
    virtual bool badUid(Archive* archive, uint64_t offset, const char* text);
    virtual bool badGid(Archive* archive, uint64_t offset, const char* text);
    virtual bool badMode(Archive* archive, uint64_t offset, const char* text);
    virtual bool badSize(Archive* archive, uint64_t offset, const char* text);
    virtual bool badMemberMagic(Archive* archive, uint64_t offset);
    virtual bool noLongNameTable(Archive* archive, uint64_t offset);
    virtual bool badLongNameIndex(Archive* archive, uint64_t offset, const char* text);
    virtual bool longNameIndexRange(Archive* archive, uint64_t offset, uint32_t index,
                                    uint32_t tableSize);
    virtual bool noSlashInName(Archive* archive, uint64_t offset);
    virtual bool trailingInName(Archive* archive, uint64_t offset);
    virtual bool badPadding(Archive* archive, uint64_t offset, uint8_t value);

    // A stretch of a file that the file does not hold. member is the name of the member that it
    // was meant for, or null.
    virtual bool regionBeyondFile(Archive* archive, const char* member, const char* file,
                                  uint64_t offset, uint64_t size, uint64_t fileSize);

    // The archive symbol table. Sizes, and the offsets of symbolTableExtra, count bytes of the
    // table's contents.
    virtual bool symbolTableShort(Archive* archive, uint32_t size);
    virtual bool symbolTableCount(Archive* archive, uint32_t size, uint32_t count,
                                  uint64_t required);
    virtual bool symbolNameEnd(Archive* archive, uint32_t index, uint32_t count);
    virtual bool symbolNoMember(Archive* archive, uint32_t index, const char* name,
                                uint32_t offset);
    virtual bool symbolNotObject(Archive* archive, uint32_t index, const char* name,
                                 uint32_t offset);
    virtual bool symbolTableExtra(Archive* archive, uint64_t offset, uint64_t end);

    // Members whose symbols cannot be listed. text may be empty.
    virtual bool memberSymbolsUnreadable(Archive* archive, ArchiveMember* member, const char* text);

    // Groups of builds of one module; a group has at least one member.
    virtual bool noBaseVariant(Archive* archive, MemberGroup group);
    virtual bool multipleBaseVariants(Archive* archive, MemberGroup group);
    virtual bool identicalVariants(Archive* archive, const char* suffix, MemberGroup group);
    virtual bool attributesNotDecorable(Archive* archive, ArchiveMember* member, MemberGroup group);
    virtual bool commonAttributesClash(Archive* archive, MemberGroup group,
                                       const attributes::FullAttr& common);
    virtual bool memberAttributesClash(Archive* archive, ArchiveMember* member,
                                       const attributes::FullAttr& combined);

    virtual bool bitcodeFailure(Archive* archive, const char* text);

private:
    bool reportFile(Archive* archive, const char* action, const char* file, int error);
    bool reportHeader(Archive* archive, ErrorKind kind, uint64_t offset, const std::string& flaw);
    bool reportSymbol(Archive* archive, uint32_t index, const char* name, uint32_t offset,
                      const char* flaw);
    bool reportGroup(Archive* archive, MemberGroup group, const std::string& flaw);
};

} // namespace arlib
