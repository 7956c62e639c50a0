// An `ar` archive in memory: an ordered list of members, the symbols that its symbol table lists,
// and the two auxiliary members that hold these tables in the file.
//
// ArchiveFileReader fills it, a program edits it, updateAuxiliaryMembers brings the tables up to
// date, ArchiveFileWriter saves it. Contents of members stay on disk until they are asked for.
//
// Members, symbols and their names live in regions of the archive: they die with it or with the
// next clear, and are never released by the caller. Failures go to the attached error handler, if
// there is one, and show as false or null; misuse (a null name, a change while the archive is
// read-only) is an internal fault. Not for use by two threads at once.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "alloclib/interface/region.h"
#include "arlib/interface/archive_member.h"
#include "arlib/interface/archive_member_list.h"
#include "arlib/interface/error_handler.h"
#include "arlib/interface/owned_region.h"
#include "arlib/interface/symbol_list.h"
#include "attributes/interface/full_attr.h"
#include "elfext/interface/fast_array.h"
#include "platform/interface/file_query.h"

namespace elfext {
class ErrorHandler;
}

namespace platform {
struct FileProbe;
}

namespace arlib {

class ContentsSources;
class MemberIndex;
struct ContentsRegion;
struct SourceFile;

// When updateAuxiliaryMembers makes a symbol table.
enum SymbolTableMode : uint32_t {
    SymbolTableMode_Always = 0,   // also an empty one
    SymbolTableMode_None = 1,     // never; one that is there goes away
    SymbolTableMode_IfNeeded = 2, // if any member defines a symbol
};

class Archive {
public:
    // The answer of getIndex and getSymbolIndex for what is not there.
    static constexpr uint32_t notThere = 0x80000000;

    Archive();
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    ~Archive();

    // Settings. Handlers are not owned and may be null.
    void setErrorHandler(ErrorHandler* handler) { m_ErrorHandler = handler; }
    ErrorHandler* getErrorHandler() const { return m_ErrorHandler; }
    void setElfErrorHandler(elfext::ErrorHandler* handler) { m_ElfErrorHandler = handler; }
    elfext::ErrorHandler* getElfErrorHandler() const { return m_ElfErrorHandler; }

    // The archive's file name, or null. Setting one clears the read-only state.
    void setFileName(const char* fileName);
    const char* getFileName() const { return m_FileName; }

    // What was known of the file when it was read; of kind FileKind_None if none was read.
    const platform::FileStatus& getFileStatus() const { return m_FileStatus; }

    // True if the file that was read cannot be opened for writing.
    bool isReadOnly() const { return m_ReadOnly; }

    SymbolTableMode getSymbolTableMode() const { return m_SymbolTableMode; }
    void setSymbolTableMode(SymbolTableMode mode);

    // Asks for a new symbol table at the next update.
    void markSymbolTableStale();

    // Whether symbols of debug sections are listed; whether a name is listed only once; whether
    // attributes come from the attributes section rather than from marker symbols.
    void setDebugSymbols(bool on);
    bool getDebugSymbols() const { return m_DebugSymbols; }
    void setUniqueSymbols(bool on);
    bool getUniqueSymbols() const { return m_UniqueSymbols; }
    void setBuildAttributesFromSection(bool on);
    bool getBuildAttributesFromSection() const { return m_BuildAttributesFromSection; }

    // What the library promises of all its members, if it does.
    void setLibraryAttributes(const attributes::FullAttr& libraryAttributes);
    bool hasLibraryAttributes() const { return m_HasLibraryAttributes; }
    const attributes::FullAttr& getLibraryAttributes() const { return m_LibraryAttributes; }

    // A record of the program's own, carried along and not used here.
    void setReadStatus(void* readStatus) { m_ReadStatus = readStatus; }
    void* getReadStatus() const { return m_ReadStatus; }

    // All members in file order, the auxiliary ones included.
    const elfext::fast_array<ArchiveMember*>& getMembers() const { return m_ArchiveMembers; }
    // The symbols that the symbol table listed when the archive was read, in its order.
    const elfext::fast_array<Symbol*>& getSymbols() {
        loadSymbols();
        return m_Symbols;
    }
    // The auxiliary members, or null.
    ArchiveMember* getSymbolTable() const { return m_SymbolTable; }
    ArchiveMember* getFileNameTable() const { return m_FileNameTable; }

    bool areMemberOffsetsUpToDate() const { return m_ArchiveMemberOffsetsUpToDate; }
    bool isFileNameTableUpToDate() const { return m_FileNameTableUpToDate; }
    bool isSymbolTableUpToDate() const { return m_SymbolTableUpToDate; }

    // Destroys all members and symbols; settings and the file name stay.
    void clear();

    // The place of a member in the list, of a symbol in the table.
    uint32_t getIndex(const ArchiveMember* member) const;
    uint32_t getSymbolIndex(const Symbol* symbol);

    // Takes a member out of the list and puts it back at newIndex of the shortened list.
    void moveMember(ArchiveMember* member, uint32_t newIndex);

    // Takes members, each named once, out of the list and puts them back, in the order given,
    // between what stood at gap - 1 and what stood at gap. One walk serves all of them.
    void moveMembers(std::span<ArchiveMember* const> members, uint32_t gap);

    // True if other members have the member's name.
    bool hasNamesakes(const ArchiveMember* member);

    // Appends an empty member that has contents of size 0 in memory.
    ArchiveMember* addMember(const char* name, int64_t date, int32_t uid, int32_t gid,
                             uint32_t mode);

    // Appends a member for a file: named by what follows the last "/" or "\", with the file's
    // date, user, group and mode. Its contents stay in the file. The second form saves a look at
    // the file to a caller that has had one.
    ArchiveMember* addMemberFromFile(const char* fileName);
    ArchiveMember* addMemberFromFile(const char* fileName, const platform::FileProbe& probe);

    // How many bytes of the next file a probe for these operations should read: enough to
    // recognise it, or all of a small one as long as there is room to keep it.
    size_t getProbeSize() const;
    static constexpr size_t largestProbeSize = 8 << 10;

    // Appends a member whose contents are size bytes at offset of a file, with the file's date,
    // user, group and mode. A stretch that the file does not hold is reported; if the handler
    // says to go on it is cut to what there is. The second form takes the stretch from the
    // location of another archive's member.
    ArchiveMember* addMemberFromFileRegion(const char* memberName, const char* fileName,
                                           uint64_t offset, uint64_t size);
    ArchiveMember* addMemberFromFileRegion(const char* memberName, const ArchiveMember& source);

    // Replaces a member's contents in the same two ways; see ArchiveMember.
    bool replaceMember(ArchiveMember* member, const char* fileName,
                       const platform::FileProbe& probe);
    bool replaceMember(ArchiveMember* member, const ArchiveMember& source);

    // Removes members together with the symbols that they define, and destroys them. Many at once
    // cost one pass.
    void deleteMember(ArchiveMember* member);
    void deleteMembers(std::span<ArchiveMember* const> members);

    // All members of this name, in list order. Case of letters does not count.
    void findMembers(const char* name, ArchiveMemberList& result);

    // The first member of this name, or null; never an auxiliary one.
    ArchiveMember* findFirstMember(const char* name);

    // The first member of this name that stands as it was read, or null; never an auxiliary one,
    // though a member read with a flaw may be as nameless as those.
    ArchiveMember* findUnchangedMember(const char* name);

    // Closes the files that contents of members were read from. False if that failed, which has
    // been reported.
    bool closeSources();

    // Brings the file name table, the symbol table and all offsets up to date, and puts the tables
    // in front. False if a table could not be made; it is then still out of date.
    bool updateAuxiliaryMembers();

    // All symbols of exactly this name, in table order.
    void findSymbols(const char* name, SymbolList& result);

    // The symbols of that name to link with for a requester of these attributes, in table order:
    // those of the most specific variant that asks for nothing beyond what the requester and all
    // variants have, or else those without attributes. The result is empty where there are none,
    // and then the answer is false.
    bool selectSymbolVariants(const char* name, const attributes::FullAttr& requester,
                              SymbolList& result);

private:
    friend class ArchiveFileReader;
    friend class ArchiveFileWriter;
    friend class ArchiveMember;

    using SourceFilePointer = std::shared_ptr<const SourceFile>;

    void requireWritable() const;
    const char* copyName(const char* name);
    SourceFilePointer describeFile(const char* fileName);
    SourceFilePointer describeFile(const char* fileName, const platform::FileProbe& probe);
    const uint8_t* keepBytes(std::span<const uint8_t> bytes);
    std::shared_ptr<SourceFile> acceptFile(const char* fileName, const platform::FileStatus& status,
                                           int error);
    bool acceptRegion(const char* memberName, ContentsRegion& region);
    ArchiveMember* appendMember(const char* name, uint32_t length);
    static ContentsRegion wholeFile(SourceFilePointer source, std::span<const uint8_t> head = {});
    static ContentsRegion regionOf(const ArchiveMember& member);
    ArchiveMember* appendFromRegion(const char* memberName, ContentsRegion region);
    ArchiveMember* appendAccepted(const char* ownName, uint32_t length, ContentsRegion region);
    bool replaceFromRegion(ArchiveMember* member, ContentsRegion region);
    void shiftMember(uint32_t oldIndex, uint32_t newIndex);
    void markTablesStale();
    MemberIndex& memberIndex();
    void addToIndex(ArchiveMember* member);
    void removeFromIndex(ArchiveMember* member);
    void reorderInIndex(ArchiveMember* member, uint32_t newIndex);

    bool updateFileNameTable(alloclib::Region* scratch);
    bool updateSymbolTable(alloclib::Region* scratch);
    bool readSymbolTable();
    bool checkSymbols(const uint8_t* bytes, uint32_t size);
    void loadSymbols();
    void keepReadSymbolTable();
    bool acceptTrailingZeros(const uint8_t* bytes, uint32_t size, uint64_t end);
    void addSymbol(const char* name, const attributes::FullAttr* decoration, ArchiveMember* member);
    void removeSymbolTable();
    void removeTable(ArchiveMember*& table);
    void moveTablesToFront();
    ArchiveMember* memberAtOffset(uint32_t offset, uint32_t& lastIndex) const;
    bool makeRoomForTable(ArchiveMember* table, uint64_t size);
    ArchiveMember* prepareTable(ArchiveMember* table, const ArchiveMemberType* type, uint64_t size);
    void layOutMembers();
    void sortSymbols();

    OwnedRegion m_ObjectRegion;
    OwnedRegion m_ContainerRegion;
    ErrorHandler* m_ErrorHandler = nullptr;
    elfext::ErrorHandler* m_ElfErrorHandler = nullptr;
    const char* m_FileName = nullptr;
    platform::FileStatus m_FileStatus;
    bool m_ReadOnly = false;
    SymbolTableMode m_SymbolTableMode = SymbolTableMode_IfNeeded;
    bool m_DebugSymbols = false;
    bool m_UniqueSymbols = false;
    bool m_BuildAttributesFromSection = false;
    void* m_ReadStatus = nullptr;
    bool m_HasLibraryAttributes = false;
    attributes::FullAttr m_LibraryAttributes;
    elfext::fast_array<ArchiveMember*> m_ArchiveMembers;
    bool m_ArchiveMemberOffsetsUpToDate = true;
    elfext::fast_array<Symbol*> m_Symbols;
    elfext::fast_array<Symbol*> m_SortedSymbols;
    bool m_SortedSymbolsUpToDate = true;
    // Until the symbols are asked for: the member of each entry of the table that was read, null
    // for one that is no symbol, and the table's bytes once its member has got others.
    bool m_SymbolsLoaded = true;
    elfext::fast_array<ArchiveMember*> m_SymbolMembers;
    std::unique_ptr<MemberContents> m_ReadSymbolTable;
    ArchiveMember* m_FileNameTable = nullptr;
    bool m_FileNameTableUpToDate = true;
    ArchiveMember* m_SymbolTable = nullptr;
    bool m_SymbolTableUpToDate = true;
    std::unique_ptr<MemberIndex> m_MemberIndex; // null until a member is looked up by name
    std::unique_ptr<ContentsSources> m_Sources;
    uint64_t m_KeptByteCount = 0;
    std::span<uint8_t> m_KeptBytesRoom; // for those to come
    MemberContents m_ReadBuffer;        // for members that are looked into one after the other
    bool m_TableFailed = false;         // a table's contents could not be made; reported
};

} // namespace arlib
