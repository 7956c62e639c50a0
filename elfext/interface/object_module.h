// One ELF file in memory: a model, not a view.
//
// A reader turns a file into the objects of a module, or a program makes them itself; from then on
// everybody works on these objects alone. Sections, symbols, groups and the rest are made by the
// module's creators, live in its regions and end with it: nothing is released singly, and pointers
// to them are good until the module is cleared or ends.
//
// Indexes: sections, groups, segments and the dynamic records count from 0. Symbols count from 1,
// since entry 0 of a symbol table is no symbol. Sorted lists and indexes are brought up to date
// when somebody asks for them.
//
// All preconditions (an index past the end, an object of another module, null where nothing is
// said of it) are internal checks. Nothing here reports to the error handler, but for the fetching
// of deferred contents. One module belongs to one thread.
#pragma once

#include "elfext/interface/byte_order.h"
#include "elfext/interface/elf_constants.h"
#include "elfext/interface/elf_header.h"
#include "elfext/interface/elf_header_table.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/group.h"
#include "elfext/interface/object_module_base.h"
#include "elfext/interface/object_with_build_attributes.h"
#include "elfext/interface/range.h"
#include "elfext/interface/section.h"
#include "elfext/interface/segment.h"
#include "elfext/interface/special_sections.h"
#include "elfext/interface/symbol.h"
#include "elfext/interface/symbol_list.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace elfext {

class ErrorHandler;
class FileVersionDefinition;
class LibrarySearchPath;
class NeededLibrary;
class Preemption;
class PruneCriteria;
class RawDataBlock;
class ReferenceCountedFile;
struct SettledDynamicSection;

// What a reader finds out about a file beyond its objects: the bits of `getProperties`.
enum ModuleProperty : uint32_t {
    ModuleProperty_ElfHeaderLoaded = 0x00000001, // lies in the file range of a PT_LOAD segment
    ModuleProperty_SectionHeaderTableLoaded = 0x00000002,
    ModuleProperty_ProgramHeaderTableLoaded = 0x00000004,
    ModuleProperty_SymbolWithBuildAttributes = 0x00000008, // in a symbol's name
    ModuleProperty_BuildAttributesSection = 0x00000010,
    ModuleProperty_DebugTag = 0x00000020,          // DT_DEBUG
    ModuleProperty_QelModuleTag = 0x00000040,      // DT_QEL_MODULE
    ModuleProperty_NoSectionHeaders = 0x00000100,  // no file range of a section header table
    ModuleProperty_FromFile = 0x00000200,          // always set by a reader
    ModuleProperty_OffsetIncongruent = 0x20000000, // p_vaddr and p_offset differ modulo p_align
    ModuleProperty_AuxiliarySectionWithSymbols = 0x40000000,
    ModuleProperty_AuxiliarySectionWithRelocations = 0x80000000,
};

// An entry of a debug overlay section: two sections that belong together under a number.
struct DebugOverlayRecord {
    uint64_t m_Id = 0;
    Section* m_DebugSection = nullptr;
    Section* m_Section = nullptr;
};

class ObjectModule : public ObjectModuleBase,
                     public ByteOrderSource,
                     public ObjectWithBuildAttributes {
public:
    using SectionArray = fast_array<Section*>;
    using SymbolArray = fast_array<Symbol*>;

    // An empty module of a 32-bit little-endian file. Needs the allocators of the run.
    ObjectModule();
    ~ObjectModule() override;

    bool inheritsBuildAttributes() const override { return false; }
    void getParentBuildAttributes(attributes::BuildAttributes& result) const override;

    // --- For the reader

    // Borrowed, may be null, and must live as long as something may be reported to it.
    ErrorHandler* getErrorHandler() const { return m_ErrorHandler; }
    void setErrorHandler(ErrorHandler* errorHandler) { m_ErrorHandler = errorHandler; }
    // Two switches that a caller can hand to a reader of its own; nothing here looks at them.
    bool getReaderOption(uint32_t option) const { return m_ReaderOptions[option != 0 ? 1 : 0]; }
    void setReaderOption(uint32_t option, bool on) { m_ReaderOptions[option != 0 ? 1 : 0] = on; }

    // The caller's image of the file, `size` bytes that must outlive the module's contents; null
    // for none. Names that lie in it are not copied. With `contentsInReadBuffer` contents refer
    // into it as well.
    void setReadBuffer(const uint8_t* readBuffer, uint64_t size, bool contentsInReadBuffer);
    const uint8_t* getReadBuffer() const { return m_ReadBuffer; }
    bool isContentsInReadBuffer() const { return m_ContentsInReadBuffer; }
    // The same for an image that nobody else needs: it is the module's from now on. The two do not
    // exclude each other.
    void adoptImage(std::unique_ptr<uint8_t[]> image, uint64_t size);
    // Lets go of both. Nothing in the module may refer to them any more.
    void releaseImages();
    // A text for an object of this module: itself if it lies in an image, otherwise a copy in the
    // object region. Null stays null.
    const char* keepText(const char* text) {
        return m_ReadImage.contains(text) || m_OwnImage.contains(text) ? text : copyText(text);
    }

    // --- The file. Texts are copied and may be null.

    const char* getFileName() const { return m_FileName; }
    // Not while contents are deferred.
    void setFileName(const char* fileName);
    const char* getObjectName() const { return m_ObjectName; }
    void setObjectName(const char* objectName);
    // Names the object after a member: "archive(member)".
    void setMemberName(const char* archiveName, const char* memberName);
    uint32_t getMachine() const { return m_Machine; }
    void setMachine(uint32_t machine) { change(m_Machine, machine); }
    uint32_t getClass() const { return m_Class; }
    void setClass(uint32_t fileClass) { change(m_Class, fileClass); }
    bool is64Bit() const { return m_Class == ELFCLASS64; }
    uint32_t getEndianness() const { return m_Endianness; }
    // Sets the byte order with it: little endian for 1 only. Not while contents are deferred.
    void setEndianness(uint32_t endianness);
    uint32_t getOsAbi() const { return m_OsAbi; }
    void setOsAbi(uint32_t osAbi) { change(m_OsAbi, osAbi); }
    uint8_t getAbiVersion() const { return m_AbiVersion; }
    void setAbiVersion(uint8_t abiVersion) { change(m_AbiVersion, abiVersion); }
    uint32_t getType() const { return m_Type; }
    void setType(uint32_t type) { change(m_Type, type); }
    // True for a file whose symbols hold addresses: an executable, a library, a core image.
    bool hasAddresses() const { return m_Type >= ET_EXEC && m_Type <= ET_CORE; }
    // ModuleProperty bits.
    uint32_t getProperties() const { return m_Properties; }
    void setProperties(uint32_t properties) { m_Properties = properties; }
    uint64_t getEntryPoint() const { return m_EntryPoint; }
    void setEntryPoint(uint64_t entryPoint) { change(m_EntryPoint, entryPoint); }
    uint32_t getFlags() const { return m_Flags; }
    void setFlags(uint32_t flags) { change(m_Flags, flags); }
    uint32_t getIdentVersion() const { return m_IdentVersion; }
    void setIdentVersion(uint32_t version) { change(m_IdentVersion, version); }
    uint32_t getVersion() const { return m_Version; }
    void setVersion(uint32_t version) { change(m_Version, version); }

    uint32_t getElfHeaderSize() const { return m_ElfHeaderSize; }
    void setElfHeaderSize(uint32_t size) { m_ElfHeaderSize = size; }
    uint64_t getSectionHeaderOffset() const { return m_SectionHeaderOffset; }
    void setSectionHeaderOffset(uint64_t offset) { m_SectionHeaderOffset = offset; }
    uint64_t getProgramHeaderOffset() const { return m_ProgramHeaderOffset; }
    void setProgramHeaderOffset(uint64_t offset) { m_ProgramHeaderOffset = offset; }
    uint16_t getSectionHeaderCount() const { return m_SectionHeaderCount; }
    void setSectionHeaderCount(uint16_t count) { m_SectionHeaderCount = count; }
    uint16_t getProgramHeaderCount() const { return m_ProgramHeaderCount; }
    void setProgramHeaderCount(uint16_t count) { m_ProgramHeaderCount = count; }
    uint32_t getSectionHeaderSize() const { return m_SectionHeaderSize; }
    void setSectionHeaderSize(uint32_t size) { m_SectionHeaderSize = size; }
    uint32_t getProgramHeaderSize() const { return m_ProgramHeaderSize; }
    void setProgramHeaderSize(uint32_t size) { m_ProgramHeaderSize = size; }

    ELFHeader& getElfHeader() { return m_ElfHeader; }
    SectionHeaderTable& getSectionHeaderTable() { return m_SectionHeaderTable; }
    ProgramHeaderTable& getProgramHeaderTable() { return m_ProgramHeaderTable; }

    // --- Values of the dynamic section

    using DynamicValue = std::optional<uint64_t>;
    const char* getSoName() const { return m_SoName; }
    // Copied unless equal to the present one.
    void setSoName(const char* soName);
    const DynamicValue& getInit() const { return m_Init; }
    void setInit(DynamicValue value) { change(m_Init, value); }
    const DynamicValue& getFini() const { return m_Fini; }
    void setFini(DynamicValue value) { change(m_Fini, value); }
    const DynamicValue& getInitArray() const { return m_InitArray; }
    void setInitArray(DynamicValue value) { change(m_InitArray, value); }
    const DynamicValue& getInitArraySize() const { return m_InitArraySize; }
    void setInitArraySize(DynamicValue value) { change(m_InitArraySize, value); }
    const DynamicValue& getPreinitArray() const { return m_PreinitArray; }
    void setPreinitArray(DynamicValue value) { change(m_PreinitArray, value); }
    const DynamicValue& getPreinitArraySize() const { return m_PreinitArraySize; }
    void setPreinitArraySize(DynamicValue value) { change(m_PreinitArraySize, value); }
    const DynamicValue& getFiniArray() const { return m_FiniArray; }
    void setFiniArray(DynamicValue value) { change(m_FiniArray, value); }
    const DynamicValue& getFiniArraySize() const { return m_FiniArraySize; }
    void setFiniArraySize(DynamicValue value) { change(m_FiniArraySize, value); }
    // DF_ bits, gathered from all tags that stand for one, and whether any was seen.
    uint32_t getDynamicFlags() const { return m_DynamicFlags; }
    bool hasDynamicFlags() const { return m_DynamicFlagsExists; }
    void addDynamicFlags(uint32_t flags);
    // Forgets the name and all these values.
    void forgetDynamicValues();

    // --- Sections

    uint32_t getSectionCount() const { return m_Sections.getSize(); }
    Section* getSection(uint32_t index) const {
        TOMEX_CHECK(index < m_Sections.getSize());
        return m_Sections[index];
    }
    uint32_t getSectionIndex(const Section* section) const;
    const SectionArray& getSections() const { return m_Sections; }
    // Moves a section; those between its old and its new place make room.
    void setSectionIndex(Section* section, uint32_t index);
    // Makes room for `count` sections in all.
    void reserveSections(uint32_t count) { m_Sections.reserve(count); }

    // Each makes a section at the end of the list. Names are copied and may be null, which is
    // what a reader passes that finds the name later.
    NullSection* createNullSection(uint32_t flags);
    StringTableSection* createStringTableSection(const char* name);
    SymbolTableSection* createSymbolTableSection(uint32_t type, const char* name = nullptr);
    RelocationSection* createRelocationSection(const char* name, uint32_t type, uint32_t flags);
    GroupSection* createGroupSection(const char* name);
    ShndxSection* createShndxSection(const char* name = ".symtab_shndx");
    HashSection* createHashSection(const char* name = ".hash");
    PreemptionMapSection* createPreemptionMapSection(const char* name = ".QEL.preemptmap");
    VerdefSection* createVerdefSection(const char* name = ".version_d");
    VerneedSection* createVerneedSection(const char* name = ".version_r");
    VersymSection* createVersymSection(const char* name = ".version");
    DynamicSection* createDynamicSection(const char* name = ".dynamic");
    BuildAttributesSection* createBuildAttributesSection(const char* name = ".QEL.attributes");
    DebugOverlaySection* createDebugOverlaySection(const char* name = ".QEL.debug_overlay");
    // For every type that has no creator of its own.
    Section* createSection(const char* name, uint32_t type, uint32_t flags);
    // The same as a member of `group`, flagged as such.
    Section* createSection(const char* name, uint32_t type, uint32_t flags, Group* group);
    // A section ".comment" with the texts one after the other: the first with its NUL, then the
    // second, a blank, and the third with its NUL.
    Section* createCommentSection(const char* one, const char* two, const char* three);

    const SectionArray& getStringTableSections() const { return m_StringTableSections; }
    // The string table that holds the names of sections; null for none.
    StringTableSection* getSectionNameTable() const;
    const SectionArray& getSymtabSections() const { return m_SymtabSections; }
    const SectionArray& getDynsymSections() const { return m_DynsymSections; }
    const SectionArray& getGroupSections() const { return m_GroupSections; }
    const SectionArray& getHashSections() const { return m_HashSections; }
    const SectionArray& getShndxSections() const { return m_ShndxSections; }
    const SectionArray& getPreemptionMapSections() const { return m_PreemptionMapSections; }
    const SectionArray& getVerdefSections() const { return m_VerdefSections; }
    const SectionArray& getVerneedSections() const { return m_VerneedSections; }
    const SectionArray& getVersymSections() const { return m_VersymSections; }
    const SectionArray& getDynamicSections() const { return m_DynamicSections; }
    const SectionArray& getDebugOverlaySections() const { return m_DebugOverlaySections; }
    const SectionArray& getBuildAttributesSections() const { return m_BuildAttributesSections; }

    // --- Symbols

    uint32_t getSymbolCount() const { return m_Symbols.getSize(); }
    Symbol* getSymbol(uint32_t index) const;
    uint32_t getSymbolIndex(const Symbol* symbol) const;
    const SymbolArray& getSymbols() const { return m_Symbols; }
    void setSymbolIndex(Symbol* symbol, uint32_t index);
    uint32_t getDynamicSymbolCount() const { return m_DynamicSymbols.getSize(); }
    Symbol* getDynamicSymbol(uint32_t index) const;
    uint32_t getDynamicSymbolIndex(const Symbol* symbol) const;
    const SymbolArray& getDynamicSymbols() const { return m_DynamicSymbols; }
    void setDynamicSymbolIndex(Symbol* symbol, uint32_t index);
    // Makes room for `count` more symbols, and takes the memory for them in few pieces.
    void reserveSymbols(uint32_t count, bool isDynamic);

    Symbol* createAbsoluteSymbol(const SymbolFields& fields, uint64_t value);
    Symbol* createCommonSymbol(const SymbolFields& fields, uint64_t value);
    Symbol* createUndefinedSymbol(const SymbolFields& fields);
    Symbol* createHostedSymbol(const SymbolFields& fields, Section* section, uint64_t offset);
    Symbol* createDynamicAbsoluteSymbol(const SymbolFields& fields, uint64_t value);
    Symbol* createDynamicCommonSymbol(const SymbolFields& fields, uint64_t value);
    Symbol* createDynamicUndefinedSymbol(const SymbolFields& fields);
    Symbol* createDynamicHostedSymbol(const SymbolFields& fields, Section* section,
                                      uint64_t offset);

    const SymbolArray& getAbsoluteSymbols() const { return m_AbsoluteSymbols; }
    const SymbolArray& getCommonSymbols() const { return m_CommonSymbols; }
    const SymbolArray& getUndefinedSymbols() const { return m_UndefinedSymbols; }
    const SymbolArray& getAbsoluteDynamicSymbols() const { return m_AbsoluteDynamicSymbols; }
    const SymbolArray& getCommonDynamicSymbols() const { return m_CommonDynamicSymbols; }
    const SymbolArray& getUndefinedDynamicSymbols() const { return m_UndefinedDynamicSymbols; }

    // All symbols by address and by name (bytes compared unsigned, no name before every name),
    // ties in the order of the table. The lists are good until the next change of a symbol.
    const SymbolArray& getSymbolsSortedByAddress();
    const SymbolArray& getDynamicSymbolsSortedByAddress();
    const SymbolArray& getSymbolsSortedByName();
    const SymbolArray& getDynamicSymbolsSortedByName();
    // Fills `result` with the symbols of exactly this name, which may be null, in the order of the
    // table.
    void findSymbols(const char* name, SymbolList& result);
    void findDynamicSymbols(const char* name, SymbolList& result);

    // --- Groups

    uint32_t getGroupCount() const { return m_Groups.getSize(); }
    Group* getGroup(uint32_t index) const;
    uint32_t getGroupIndex(const Group* group) const;
    void setGroupIndex(Group* group, uint32_t index);
    Group* createGroup(const char* name, const char* signature, uint32_t flags);
    // The first group of this name, which may be null. Null if there is none.
    Group* findGroup(const char* name);
    // The comdat group that stands for a signature: the first that came with it. Null if there is
    // none.
    Group* findComdatGroup(const char* signature) const;
    // With how many signatures that search compares at most.
    uint32_t getComdatSearchLength(const char* signature) const {
        return m_MapSignaturesToComdatGroups.getChainLength(Stringlett(signature));
    }
    // The same, but makes one, of that name too, if there is none.
    Group* getOrCreateComdatGroup(const char* signature);

    // --- Segments

    uint32_t getSegmentCount() const { return m_Segments.getSize(); }
    Segment* getSegment(uint32_t index) const;
    uint32_t getSegmentIndex(const Segment* segment) const;
    const fast_array<Segment*>& getSegments() const { return m_Segments; }
    void setSegmentIndex(Segment* segment, uint32_t index);
    Segment* createSegment(const SegmentFields& fields);
    // The same for what a file says: its alignment need not be a power of two.
    Segment* createSegmentAsRead(const SegmentFields& fields);

    // --- Dynamic records

    uint32_t getNeededLibraryCount() const { return m_NeededLibraries.getSize(); }
    NeededLibrary* getNeededLibrary(uint32_t index) const;
    uint32_t getNeededLibraryIndex(const NeededLibrary* neededLibrary) const;
    void setNeededLibraryIndex(NeededLibrary* neededLibrary, uint32_t index);
    NeededLibrary* addNeededLibrary(const char* name);
    uint32_t getLibrarySearchPathCount() const { return m_LibrarySearchPaths.getSize(); }
    LibrarySearchPath* getLibrarySearchPath(uint32_t index) const;
    uint32_t getLibrarySearchPathIndex(const LibrarySearchPath* librarySearchPath) const;
    void setLibrarySearchPathIndex(LibrarySearchPath* librarySearchPath, uint32_t index);
    LibrarySearchPath* addLibrarySearchPath(const char* path, uint32_t tag);
    uint32_t getPreemptionCount() const { return m_Preemptions.getSize(); }
    Preemption* getPreemption(uint32_t index) const;
    uint32_t getPreemptionIndex(const Preemption* preemption) const;
    void setPreemptionIndex(Preemption* preemption, uint32_t index);
    Preemption* addPreemption(const char* symbolName, const char* preemptingDllName);

    // Records of symbol versions; the objects that symbols point to.
    FileVersionDefinition* createFileVersionDefinition(uint16_t index, uint16_t flags);
    FileVersionDefinition* getFileVersionDefinition() const { return m_FileVersionDefinition; }
    // The first of each kind in the order in which they came; null for none.
    SymbolVersionDefinition* getFirstSymbolVersionDefinition() const {
        return m_VersionDefinitions.m_First;
    }
    SymbolVersionRequirement* getFirstSymbolVersionRequirement() const {
        return m_VersionRequirements.m_First;
    }
    SymbolVersionDefinition* createSymbolVersionDefinition(uint16_t index, uint16_t flags);
    SymbolVersionRequirement* createSymbolVersionRequirement(uint16_t index, uint16_t flags,
                                                             const char* libraryName,
                                                             const char* versionString);

    // --- The rest of a file

    // In file order.
    const fast_array<RawDataBlock*>& getRawDataBlocks() const { return m_RawDataBlocks; }
    // Makes a block of `size` zeros at the end of the list.
    RawDataBlock* createRawDataBlock(uint64_t size);
    const fast_array<DebugOverlayRecord>& getDebugOverlayRecords() const {
        return m_DebugOverlayRecords;
    }
    void addDebugOverlayRecord(const DebugOverlayRecord& record);

    // The file that deferred contents come from; null for none.
    ReferenceCountedFile* getReferenceCountedFile() const { return m_ReferenceCountedFile; }
    // Makes that object for `file`, which is the module's from now on.
    ReferenceCountedFile* keepFile(std::FILE* file);
    bool hasDeferredContents() const;

    // --- The model as a whole

    // True if there is no section, group, symbol, needed library, search path, preemption or raw
    // data block. Segments do not count.
    bool isEmpty() const;
    // Removes the objects that `criteria` match, and keeps the rest consistent. Global symbols
    // that were defined in a section that goes become undefined, local ones and the section's own
    // go with it; relocations against a symbol that goes keep their place but have no symbol any
    // more; raw data goes with its segment. What stays keeps its order, and links and infos that
    // name a section (`getLink`, `getInfoSection`) name the same one under its new number, or none
    // if it has gone. Pointers to what went stay readable as long as the module, but belong to
    // nothing.
    //
    // Nothing is changed in contents that the library does not make itself. Code that counts the
    // relocations of its table, as that for calls between files does, counts wrong once one in
    // front is removed; without its symbol such a relocation keeps the place of the others.
    void prune(PruneCriteria& criteria);

    // --- What is computed from the model. See also `elf_layout.h` and
    // `elf_object_module_writer.h`.

    // Brings the auxiliary sections up to date with the lists of the model, unless they are:
    // contents, sizes, links and infos of the tables in use are made anew, tables that are needed
    // are made, and those that are not in use any more are removed: further tables of a kind that
    // there is one of, hash tables of no table of symbols, tables of relocations that have none or
    // no target any more, sections of groups that have gone, string tables and tables of extended
    // indexes that served a table and serve none now. A table in use stays the object that it is,
    // since links, segments and the program itself may refer to it. One that lies in a segment
    // keeps its place, and its texts theirs. Local symbols move in front of the others. Where a
    // group or a table had to be made, the order of sections is settled as well. A table that was
    // made goes again once nothing needs it, unless the program has put it into a segment or at an
    // address.
    //
    // Of what dynamic files have beside these:
    //  - the second hash table (SHT_GNU_HASH) is made anew if it does not fit the dynamic symbols
    //    any more, and they are put into the order that it needs;
    //  - tags of the dynamic section that tell of a table follow it, and go with it unless another
    //    takes its place; those that nothing in the model or its sections stands behind stay;
    //  - notes that tell the segments of sections are made anew if they are wrong.
    //
    // An attributes section that the reader could make nothing of keeps its bytes, unless the
    // program states attributes. All other contents are nobody's but the program's: sections of
    // kinds unknown here that number sections or symbols, such as lists of symbols whose addresses
    // count, tell of the old numbers.
    //
    // False if memory has run out, which is reported. The tables may be half made then, and the
    // module is good for nothing but to be cleared or read anew.
    bool updateAuxiliarySections();
    // Puts the sections into the order that linkers expect: the null section, which is made if
    // there is none, then groups, then all others in their present order with each table of
    // static relocations behind its target, then the static symbols and their tables.
    void imposeSectionOrder();
    // Checks the module against the rules of the format beyond what a reader needs, and reports
    // each breach to the error handler. False as soon as the handler says so; true if there was
    // nothing to report, or if the handler let all of it pass. Brings the auxiliary sections up to
    // date first, so that the numbers in reports are those of the file to be written. A part that
    // overlaps many others is reported once. Running out of memory is reported, too, and the
    // module is then good for nothing but to be cleared or read anew.
    bool validate();

    // Removes everything from the model: all objects, what was gathered about them, build
    // attributes, the values of the dynamic section and the images. The file's own fields stay.
    // Does nothing to a module without objects, so that images which have just been set stay.
    void clear();

    // While set, everything that would change an index is an internal fault.
    bool areIndexesFrozen() const { return m_IndexesFrozen; }
    void setIndexesFrozen(bool frozen) { m_IndexesFrozen = frozen; }
    // True while the auxiliary sections say what the model says.
    bool areAuxiliarySectionsUpToDate() const { return m_AuxiliarySectionsUpToDate; }
    void setAuxiliarySectionsUpToDate(bool upToDate) { m_AuxiliarySectionsUpToDate = upToDate; }
    // Every change of the model ends here.
    void markChanged() { m_AuxiliarySectionsUpToDate = false; }
    bool areSymbolListsSorted() const { return m_SymbolListsSorted; }

private:
    friend class AuxiliaryUpdate;
    friend class Group;
    friend class Pruner;
    friend class Section;
    friend class Symbol;

    using GroupTable = fast_hash_table<Stringlett, Group*>;
    struct Image {
        const uint8_t* m_Bytes = nullptr;
        uint64_t m_Size = 0;

        bool contains(const void* address) const {
            const auto start = reinterpret_cast<uintptr_t>(m_Bytes);
            return reinterpret_cast<uintptr_t>(address) - start < m_Size;
        }
    };

    template <typename Value>
    void change(Value& field, const Value& value) {
        field = value;
        markChanged();
    }
    // Objects that are only walked: each knows the next.
    template <typename Kind>
    struct Chain {
        Kind* m_First = nullptr;
        Kind* m_Last = nullptr;
    };
    template <typename Kind>
    static Kind* append(Chain<Kind>& chain, Kind* object);

    const char* copyText(const char* text);
    void changeStructure();
    template <typename Kind, typename... Arguments>
    Kind* make(const Arguments&... arguments);
    template <typename Kind, typename... Arguments>
    Kind* makeSection(const Arguments&... arguments);
    template <typename Kind>
    uint32_t indexOf(const fast_array<Kind*>& list, const Kind* object) const;
    template <typename Kind>
    void move(fast_array<Kind*>& list, uint32_t from, uint32_t to);
    void moveToFront(uint32_t from);
    SectionArray* listOfType(uint32_t sectionType);
    SymbolArray& categoryList(Symbol::Category category, bool isDynamic);
    Symbol* makeSymbol(const SymbolFields& fields, bool isDynamic);
    void* takeSymbolMemory();
    Symbol* makeSettled(const SymbolFields& fields, Symbol::Category category, uint64_t value,
                        bool isDynamic);
    Symbol* makeHosted(const SymbolFields& fields, Section* section, uint64_t offset,
                       bool isDynamic);
    void sortSymbolLists();
    void enterComdatGroup(Group* group);
    void leaveComdatGroup(Group* group);
    void forgetGroupNames();
    void dropAllDeferredContents();
    void forgetFile();

    const uint8_t* m_ReadBuffer = nullptr; // the caller's
    bool m_ContentsInReadBuffer = false;
    ErrorHandler* m_ErrorHandler = nullptr; // borrowed
    bool m_ReaderOptions[2] = {false, false};
    const char* m_FileName = nullptr;
    const char* m_ObjectName = nullptr;
    uint32_t m_Machine = EM_QEL;
    uint32_t m_Class = ELFCLASS32;
    uint32_t m_Endianness = ELFDATA2LSB; // m_IsLittleEndian of the base goes with it
    uint32_t m_OsAbi = 0;
    uint8_t m_AbiVersion = 0;
    uint32_t m_Type = ET_NONE;
    uint32_t m_Properties = 0;
    uint64_t m_EntryPoint = 0;
    uint32_t m_Flags = 0;
    uint32_t m_IdentVersion = EV_CURRENT;
    uint32_t m_Version = EV_CURRENT;
    const char* m_SoName = nullptr;
    DynamicValue m_Init;
    DynamicValue m_Fini;
    DynamicValue m_InitArray;
    DynamicValue m_InitArraySize;
    DynamicValue m_PreinitArray;
    DynamicValue m_PreinitArraySize;
    DynamicValue m_FiniArray;
    DynamicValue m_FiniArraySize;
    uint32_t m_DynamicFlags = 0;
    bool m_DynamicFlagsExists = false;
    uint32_t m_ElfHeaderSize;
    uint64_t m_SectionHeaderOffset = 0;
    uint64_t m_ProgramHeaderOffset = 0;
    uint16_t m_SectionHeaderCount = 0;
    uint16_t m_ProgramHeaderCount = 0;
    uint32_t m_SectionHeaderSize = 40; // those of a 32-bit file
    uint32_t m_ProgramHeaderSize = 32;
    bool m_IndexesFrozen = false;
    ELFHeader m_ElfHeader;
    SectionHeaderTable m_SectionHeaderTable;
    ProgramHeaderTable m_ProgramHeaderTable;
    SectionArray m_Sections;
    fast_array<Group*> m_Groups;
    fast_array<Segment*> m_Segments;
    SymbolArray m_Symbols; // symbol 1 is element 0
    SymbolArray m_DynamicSymbols;
    fast_array<NeededLibrary*> m_NeededLibraries;
    fast_array<LibrarySearchPath*> m_LibrarySearchPaths;
    fast_array<Preemption*> m_Preemptions;
    fast_array<RawDataBlock*> m_RawDataBlocks;
    ReferenceCountedFile* m_ReferenceCountedFile = nullptr;
    fast_array<DebugOverlayRecord> m_DebugOverlayRecords;
    SymbolArray m_AbsoluteSymbols;
    SymbolArray m_CommonSymbols;
    SymbolArray m_UndefinedSymbols;
    SymbolArray m_AbsoluteDynamicSymbols;
    SymbolArray m_CommonDynamicSymbols;
    SymbolArray m_UndefinedDynamicSymbols;
    SectionArray m_StringTableSections;
    SectionArray m_SymtabSections;
    SectionArray m_DynsymSections;
    SectionArray m_GroupSections;
    SectionArray m_HashSections;
    SectionArray m_ShndxSections;
    SectionArray m_PreemptionMapSections;
    SectionArray m_VerdefSections;
    SectionArray m_VerneedSections;
    SectionArray m_VersymSections;
    SectionArray m_DynamicSections;
    SectionArray m_DebugOverlaySections;
    SectionArray m_BuildAttributesSections;
    // What was in memory and is removed: by addresses. The dynamic section may tell of it.
    fast_array<Range> m_RemovedMemory;
    std::unique_ptr<SettledDynamicSection> m_SettledDynamic; // null for none
    bool m_AuxiliarySectionsUpToDate = false;
    bool m_SymbolListsSorted = true;
    SymbolArray m_SymbolsSortedByAddress;
    SymbolArray m_DynamicSymbolsSortedByAddress;
    SymbolArray m_SymbolsSortedByName;
    SymbolArray m_DynamicSymbolsSortedByName;
    GroupTable m_MapSignaturesToComdatGroups;
    GroupTable m_MapNamesToGroups; // empty until somebody looks for a name
    FileVersionDefinition* m_FileVersionDefinition = nullptr;
    Chain<SymbolVersionDefinition> m_VersionDefinitions;
    Chain<SymbolVersionRequirement> m_VersionRequirements;
    Image m_ReadImage;
    Image m_OwnImage;
    std::unique_ptr<uint8_t[]> m_OwnedBytes; // of m_OwnImage
    char* m_SymbolStorage = nullptr;         // the rest of the memory taken for symbols to come
    uint32_t m_SymbolStorageCount = 0;       // how many fit there
    uint32_t m_SymbolsExpected = 0;          // how many more will be made
};

} // namespace elfext
