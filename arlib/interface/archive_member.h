// One member of an archive: a named stretch of bytes with the header fields of the format.
//
// The bytes are in memory (contents), on disk (a location), or both. Members read from an archive
// or added from a file have only a location: the bytes are fetched when they are asked for and let
// go again, so that a large archive is never held whole. Members belong to their archive; they and
// their names live in its object region.
//
// Operations that change a member require an archive that is not read-only; asking otherwise is an
// internal fault. File failures go to the archive's handler, and the operation answers false with
// the member as it was.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "arlib/interface/archive_member_type.h"
#include "arlib/interface/contents_location.h"
#include "elfext/interface/fast_array.h"

namespace elfext {
class ErrorHandler;
class ObjectModule;
} // namespace elfext

namespace platform {
class OutputFile;
enum class CopyOutcome;
} // namespace platform

namespace arlib {

class Archive;
class ContentsReader;
class Symbol;
struct ContentsRegion;
struct NameEntry;
struct SourceFile;

// A growable byte array on the heap.
class MemberContents {
public:
    MemberContents() = default;
    MemberContents(const MemberContents&) = delete;
    MemberContents& operator=(const MemberContents&) = delete;
    ~MemberContents();

    uint32_t size() const { return m_Used; }
    uint8_t* bytes() { return m_Bytes; }
    const uint8_t* bytes() const { return m_Bytes; }

    // Changes the size; bytes up to the smaller of both sizes stay, new ones are undefined. False
    // if the memory cannot be had; the contents are then unchanged.
    bool resize(uint32_t size);

    // Gives all memory back.
    void release();

private:
    uint32_t m_Allocated = 0;
    uint32_t m_Used = 0;
    uint8_t* m_Bytes = nullptr;
};

// The symbols of one member. Most runs never ask a member for them.
struct MemberSymbols {
    explicit MemberSymbols(alloclib::Region* region) : m_Symbols(region), m_SortedSymbols(region) {}

    elfext::fast_array<Symbol*> m_Symbols;       // in table order
    elfext::fast_array<Symbol*> m_SortedSymbols; // in order of name
};

class ArchiveMember {
public:
    // The name, of so many characters and a NUL, lives as long as the archive.
    ArchiveMember(Archive* archive, const char* name, uint32_t nameLength);
    ArchiveMember(const ArchiveMember&) = delete;
    ArchiveMember& operator=(const ArchiveMember&) = delete;
    virtual ~ArchiveMember();

    // The file name without folders; empty for the archive's own tables. Valid as long as the
    // archive.
    const char* getName() const { return m_Name; }
    uint32_t getNameLength() const { return m_NameLength; }

    // Seconds since 1970, user and group numbers, file mode, as in the header.
    int64_t getDate() const { return m_Date; }
    int32_t getUid() const { return m_Uid; }
    int32_t getGid() const { return m_Gid; }
    uint32_t getMode() const { return m_Mode; }

    // Size of the contents in bytes.
    uint32_t getSize() const { return m_Size; }

    // Offset of the header in the archive file. Only while the archive's offsets are up to date.
    uint32_t getOffset() const;

    // Where the name stands in the file name table; only for a long name with an up-to-date table.
    uint32_t getLongNameOffset() const { return m_LongNameOffset; }

    const ArchiveMemberType* getType() const { return m_Type; }
    Archive* getArchive() const { return m_Archive; }
    bool isAuxiliary() const { return m_Type != nullptr && m_Type->isAuxiliary(); }

    // True if made or changed since the archive was read.
    bool isChanged() const { return m_Changed; }

    // The symbols that the archive symbol table gives this member, in table order, and the same
    // in order of name.
    const elfext::fast_array<Symbol*>& getSymbols();
    const elfext::fast_array<Symbol*>& getSortedSymbols();

    // The place in the archive's list, or 0x80000000 if it is not there.
    uint32_t getIndex() const;

    // These write the field and nothing else.
    void setDate(int64_t date);
    void setUid(int32_t uid);
    void setGid(int32_t gid);
    void setMode(uint32_t mode);

    // Renames the member; not for the archive's own tables.
    void setName(const char* name);

    // Sets the type, as the builders of the tables do.
    void setType(const ArchiveMemberType* type) { m_Type = type; }

    // Loads the contents if they are not in memory.
    bool ensureContents();

    // Appends the contents to a file being written, without keeping them in memory. A failed read
    // has been reported and leaves its number in errno; a failed write is the caller's to report.
    platform::CopyOutcome copyContents(platform::OutputFile& output);

    // The contents, or null while they are only on disk.
    MemberContents* getContents() { return m_Contents.get(); }

    // Makes sure that the bytes are on disk and lets go of the contents in memory.
    bool releaseContents();

    // Makes sure that the bytes are on disk: contents without a location go to a temporary file,
    // which is removed with the location.
    bool ensureLocation();
    const ContentsLocation* getLocation() const {
        return m_ContentsLocation ? &*m_ContentsLocation : nullptr;
    }

    // Who is told if the host cannot deliver the contents, or memory for them.
    enum class HostFailures { ToModule, ToArchive };

    // Makes a module of the contents, with this handler for what is wrong with them, or null. The
    // member must have a location; the module is named after it. Its bytes are shared with the
    // archive: the module is good until the next member is read so, or this one's contents change.
    // Failures of the host go to the same handler, or to the archive's.
    bool readObjectModule(elfext::ObjectModule& module, elfext::ErrorHandler* handler,
                          HostFailures hostFailures = HostFailures::ToModule);

    // Replaces the contents with a copy of size bytes.
    bool setContents(const void* bytes, uint32_t size);

    // Replaces the contents with those of a file, or with size bytes at offset of a file, and
    // takes the file's date, user, group and mode.
    bool replaceFromFile(const char* fileName);
    bool replaceFromFileRegion(const char* fileName, uint64_t offset, uint64_t size);

    // Prepares for changing the contents in place: they are loaded, and are from then on only in
    // memory. recomputeType must follow. Not for the archive's own tables.
    bool clearContents();

    // Finds the type anew after clearContents.
    void recomputeType();

    // Forgets the location, and removes its file if it is a temporary one. False if that fails;
    // the location is forgotten all the same.
    bool dropLocation();

private:
    friend class Archive;
    friend class ArchiveFileReader;
    friend class ArchiveFileWriter;
    friend class MemberIndex;

    MemberSymbols& symbolLists();
    const uint8_t* viewContents(MemberContents& buffer);
    bool isWindowed() const;
    bool readThroughWindow(ContentsReader& reader, uint8_t* destination) const;
    const uint8_t* keptBytes() const;
    bool readFailed(int error) const;
    bool memoryFailed() const;
    bool closeSource() const;
    bool loadContents(MemberContents& contents);
    void takeRegion(ContentsRegion region);
    void contentsChanged();
    void requireWritable() const;

    Archive* m_Archive;
    const char* m_Name;
    uint32_t m_NameLength;
    uint32_t m_LongNameOffset = 0;
    int64_t m_Date = 0;
    int32_t m_Uid = 0;
    int32_t m_Gid = 0;
    uint32_t m_Mode = 0;
    uint32_t m_Size = 0;
    uint32_t m_Offset = 0;
    bool m_Changed = false;
    const ArchiveMemberType* m_Type = nullptr;
    MemberSymbols* m_SymbolLists = nullptr; // made when it is first asked for
    std::unique_ptr<MemberContents> m_Contents;
    std::optional<ContentsLocation> m_ContentsLocation;

    // Links of the archive's index by name.
    NameEntry* m_NameEntry = nullptr;
    ArchiveMember* m_NextOfName = nullptr;
    ArchiveMember* m_PreviousOfName = nullptr;
};

} // namespace arlib
