// One section of an object module.
//
// A section is three things at once: it can carry build attributes, it takes up a stretch of the
// file, and it holds bytes. Plain sections are what programs are made of. Auxiliary sections
// (`special_sections.h`) are computed from the rest of the model when it is written: symbol tables,
// string tables and the like; a program doesn't put symbols or relocations into them.
//
// What is seldom asked for is made when it is asked for: relocations out of the bytes of their
// tables, sorted lists out of the unsorted ones, deferred contents out of the file.
#pragma once

#include "elfext/interface/buffer.h"
#include "elfext/interface/data_store.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/file_region.h"
#include "elfext/interface/object_with_build_attributes.h"
#include "elfext/interface/relocation_list.h"
#include "elfext/interface/symbol_list.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace elfext {

class DeferredContents;
class Group;
class Relocation;
class RelocationSection;
class Section;
class Segment;
class Symbol;

// Makes the relocations of a section when they are asked for first.
class RelocationLoader {
public:
    RelocationLoader(const RelocationLoader&) = delete;
    RelocationLoader& operator=(const RelocationLoader&) = delete;

    // Adds the relocations of `section` through its `addRelocationAsRead`. Called once for each
    // section that it is attached to.
    virtual void loadRelocations(Section& section) = 0;

protected:
    RelocationLoader() = default;
    ~RelocationLoader() = default;
};

class Section : public ObjectWithBuildAttributes, public FileRegion, public DataStore {
public:
    // Sections are made by their module's creators, in its object region. `name` may be null and
    // is copied there.
    Section(ObjectModule* objectModule, bool isAuxiliary, bool isRelocatable, const char* name,
            uint32_t type, uint32_t flags);

    // --- Build attributes: the parent is the module.

    bool inheritsBuildAttributes() const override { return true; }
    void getParentBuildAttributes(attributes::BuildAttributes& result) const override;

    // --- Kind and size

    virtual const RelocationSection* asRelocationSection() const { return nullptr; }
    virtual RelocationSection* asRelocationSection() { return nullptr; }
    // In memory, as `sh_size` says.
    virtual uint64_t getSize() const { return m_Size; }
    // In the file: 0 for SHT_NOBITS.
    virtual uint64_t getContentsSize() const;

    // --- Fields. Names may be null. Setters mark the module as changed.

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    // Where the section stands in its module, from 0.
    uint32_t getIndex() const;
    bool isAuxiliary() const { return m_IsAuxiliary; }
    void setIsAuxiliary(bool isAuxiliary) { m_IsAuxiliary = isAuxiliary; }
    bool isRelocatable() const { return m_IsRelocatable; }
    void setIsRelocatable(bool isRelocatable) { m_IsRelocatable = isRelocatable; }
    const char* getName() const { return m_Name; }
    // Copies the name, unless it lies in the image that the module refers to.
    void setName(const char* name);
    // Where the name stands in the table of section names, as of the read or of the last update of
    // the auxiliary sections.
    uint32_t getNameOffset() const { return m_NameOffset; }
    void setNameOffset(uint32_t offset) { m_NameOffset = offset; }
    uint32_t getType() const { return m_Type; }
    uint32_t getFlags() const { return m_Flags; }
    void setFlags(uint32_t flags);
    // Bits 32 and up of a 64-bit file's `sh_flags`, which nobody has given a meaning: they are kept
    // for who writes the file again.
    uint32_t getUpperFlags() const { return m_UpperFlags; }
    void setUpperFlags(uint32_t flags);
    uint64_t getAddress() const { return m_Address; }
    void setAddress(uint64_t address);
    // The size in memory; the contents stay as they are.
    void setSize(uint64_t size);
    uint64_t getAlignment() const { return m_Alignment; }
    // What a file says, which need not be a power of two.
    void setAlignmentAsRead(uint64_t alignment) { m_Alignment = alignment; }
    uint64_t getEntrySize() const { return m_EntrySize; }
    void setEntrySize(uint64_t entrySize);
    // The section that `sh_link` names, or null.
    Section* getLink() const { return m_Link; }
    void setLink(Section* link);
    // What `sh_info` says. Where that is a section, it is its present number.
    uint32_t getInfo() const {
        return m_InfoSection != nullptr ? m_InfoSection->getIndex() : m_Info;
    }
    // A plain number from now on.
    void setInfo(uint32_t info);
    // The section that `sh_info` names by its number (SHF_INFO_LINK), or null. Relocation sections
    // have a target instead.
    Section* getInfoSection() const { return m_InfoSection; }
    void setInfoSection(Section* section);
    uint64_t getFileOffset() const { return m_FileOffset; }
    bool isFileOffsetKnown() const { return m_FileOffsetKnown; }
    // The section has outgrown its place; layout gives it another.
    void forgetFileOffset() { m_FileOffsetKnown = false; }
    // The segment that a note of the linker names for this section, or null.
    Segment* getSegment() const { return m_Segment; }
    void setSegment(Segment* segment);
    // The group that the section is in, or null.
    Group* getGroup() const { return m_Group; }

    // True if the name says that the section is for debuggers only.
    bool isDebugSection() const;

    // --- As a region of the file

    bool getFileRange(uint64_t* offset, uint64_t* size) const override;
    void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const override;
    void setFileOffset(uint64_t offset) override;
    // Of the address; a power of two or 0.
    void setAlignment(uint64_t alignment) override;
    DataStore* getDataStore() override { return this; }
    DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) override;

    // --- Contents

    // The contents, fetched from the file first if they are still there. Null if that fails; the
    // module's error handler has been told then.
    Buffer* getContents();
    // The contents of a section whose contents are not deferred.
    const Buffer& getLoadedContents() const {
        TOMEX_CHECK(!isContentsDeferred());
        return m_Contents;
    }
    Buffer& getLoadedContents() {
        TOMEX_CHECK(!isContentsDeferred());
        return m_Contents;
    }
    // Copies `size` bytes in as the contents, and makes that the section's size.
    void setContents(const void* bytes, uint64_t size);
    // From now on the bytes are held elsewhere; see `Buffer::setExternalData`.
    void setExternalContents(ExternalDataFunction function, void* context, uint64_t size);
    // Contents that an update of the auxiliary sections has made are not settled until layout gives
    // them a place. It may refuse them, so the next update starts from what was settled.
    bool areContentsSettled() const { return !m_UnsettledGrowth.has_value(); }
    // The contents are an update's, and longer than the settled ones by so many bytes.
    void setUnsettled(uint64_t growth) { m_UnsettledGrowth = growth; }
    uint64_t getUnsettledGrowth() const { return m_UnsettledGrowth.value_or(0); }
    // The size of the contents, which are not deferred, without that growth.
    uint64_t getSettledContentsSize() const {
        const uint64_t size = getLoadedContents().getSize();
        return size - std::min(size, getUnsettledGrowth());
    }
    // True for a section that an update has made, since something needed it. It goes again once
    // nothing does, unless the program has given it a place in memory.
    bool isMadeByUpdate() const { return m_IsMadeByUpdate; }
    void setIsMadeByUpdate(bool isMade) { m_IsMadeByUpdate = isMade; }
    bool hasExternalContents() const { return m_HasExternalContents; }

    bool isContentsDeferred() const { return m_DeferredContents != nullptr; }
    const DeferredContents* getDeferredContents() const { return m_DeferredContents; }
    // Leaves the contents in the file. The record lies in the object region; its reference to the
    // file is given back once the contents have been read, or when the module ends.
    void deferContents(DeferredContents* deferredContents);
    // Gives up deferred contents without reading them.
    void dropDeferredContents();

    void read(uint64_t offset, void* buffer, uint64_t count) const override;
    void write(uint64_t offset, const void* buffer, uint64_t count) override;
    uint64_t getDataSize() const override { return getContentsSize(); }
    bool isWritable() const override { return !m_IsAuxiliary && !m_HasExternalContents; }

    // --- Symbols that are defined here, in the order in which they came

    const fast_array<Symbol*>& getHostedSymbols() const { return m_HostedSymbols; }
    const fast_array<Symbol*>& getHostedDynamicSymbols() const { return m_HostedDynamicSymbols; }

    // Fills `result` with the symbols whose offsets are from `from` up to and including `to`, in
    // ascending order, those of equal offset in the order in which they came. `kinds` is a set
    // of SymbolKind bits: symbols of other kinds are left out.
    void getHostedSymbols(uint64_t from, uint64_t to, uint32_t kinds, SymbolList& result);
    void getHostedDynamicSymbols(uint64_t from, uint64_t to, uint32_t kinds, SymbolList& result);

    // The first symbol of these kinds at `offset` or behind it, and the last one before `offset`;
    // null if there is none.
    Symbol* findFirstHostedSymbolFrom(uint64_t offset, uint32_t kinds);
    Symbol* findLastHostedSymbolBefore(uint64_t offset, uint32_t kinds);
    Symbol* findFirstHostedDynamicSymbolFrom(uint64_t offset, uint32_t kinds);
    Symbol* findLastHostedDynamicSymbolBefore(uint64_t offset, uint32_t kinds);

    // All of them by offset and by name (no name comes first), ties in the order in which they
    // came. The lists are good until the next change of a symbol here.
    const fast_array<Symbol*>& getHostedSymbolsSortedByOffset();
    const fast_array<Symbol*>& getHostedDynamicSymbolsSortedByOffset();
    const fast_array<Symbol*>& getHostedSymbolsSortedByName();
    const fast_array<Symbol*>& getHostedDynamicSymbolsSortedByName();

    // --- Relocations that apply to this section

    const fast_array<Relocation*>& getRelocations();
    // Fills `result` with the relocations whose offsets are from `from` up to and including `to`,
    // in ascending order, ties in the order in which they came.
    void getRelocations(uint64_t from, uint64_t to, RelocationList& result);
    const fast_array<Relocation*>& getRelocationsSortedByOffset();

    // Adds a relocation. The section must be one that may be relocated; `target` may be null.
    Relocation* addRelocation(uint64_t offset, uint16_t type, Symbol* target);
    Relocation* addRelocationWithAddend(uint64_t offset, uint16_t type, Symbol* target,
                                        uint64_t addend);

    // The same for what a file holds: it may relocate any section. `isDynamic` is for relocations
    // without a target; the others take it from there.
    struct RelocationAsRead {
        uint64_t m_Offset = 0;
        uint64_t m_Addend = 0;
        Symbol* m_Target = nullptr;
        uint16_t m_Type = 0;
        uint16_t m_UpperType = 0;
        uint16_t m_TableNumber = 0;
        bool m_HasAddend = false;
        bool m_IsDynamic = false;
    };
    void addRelocationAsRead(const RelocationAsRead& relocation);
    // Makes room for `count` relocations more.
    void reserveRelocations(uint32_t count);
    // `loader` will make the relocations that this section has from its file. It must live as long
    // as the section.
    void setRelocationLoader(RelocationLoader* loader) { m_RelocationLoader = loader; }
    // True if there are relocations, without making them.
    bool hasRelocations() const {
        return m_Relocations.getSize() != 0 || m_RelocationLoader != nullptr;
    }

    // The sections that hold this one's relocations, static and dynamic.
    const fast_array<Section*>& getRelocationSections() const { return m_RelocationSections; }
    const fast_array<Section*>& getDynamicRelocationSections() const {
        return m_DynamicRelocationSections;
    }

private:
    friend class Group;
    friend class ObjectModule;
    friend class Pruner;
    friend class Relocation;
    friend class RelocationSection;
    friend class Symbol;

    struct Order;

    void markChanged();
    fast_array<Symbol*>& hostedList(bool isDynamic) {
        return isDynamic ? m_HostedDynamicSymbols : m_HostedSymbols;
    }
    void loadRelocations() {
        if (m_RelocationLoader != nullptr) [[unlikely]] {
            loadPendingRelocations();
        }
    }
    void loadPendingRelocations();
    Order& order();
    Order& sortedSymbols();
    Order& sortedRelocations();
    Relocation* createRelocation(uint64_t offset, uint16_t type, Symbol* target);

    bool m_IsAuxiliary;
    bool m_IsRelocatable;
    bool m_FileOffsetKnown = false;
    bool m_HasExternalContents = false;
    bool m_IsMadeByUpdate = false;
    bool m_HostedSymbolListsSorted = true;
    bool m_RelocationsSorted = true;
    const char* m_Name; // in the object region or in the image
    uint32_t m_Type;
    uint32_t m_Flags;
    uint32_t m_UpperFlags = 0;
    uint64_t m_Address = 0;
    uint64_t m_Size = 0;
    uint64_t m_Alignment = 0;
    uint64_t m_EntrySize = 0;
    Section* m_Link = nullptr;
    Section* m_InfoSection = nullptr;
    uint32_t m_Info = 0;
    uint32_t m_NameOffset = 0;
    mutable uint32_t m_Index = 0;
    uint64_t m_FileOffset = 0;
    std::optional<uint64_t> m_UnsettledGrowth;
    Buffer m_Contents;
    Segment* m_Segment = nullptr;
    Group* m_Group = nullptr;
    fast_array<Relocation*> m_Relocations;
    fast_array<Section*> m_RelocationSections;
    fast_array<Section*> m_DynamicRelocationSections;
    fast_array<Symbol*> m_HostedSymbols;
    fast_array<Symbol*> m_HostedDynamicSymbols;
    Order* m_Order = nullptr; // the sorted lists, made when one is asked for first
    RelocationLoader* m_RelocationLoader = nullptr;
    DeferredContents* m_DeferredContents = nullptr;
};

} // namespace elfext
