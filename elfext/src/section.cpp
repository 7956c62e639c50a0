// The fields of a section, its contents and its relocations.
#include "elfext/interface/section.h"

#include "attributes/interface/build_attributes.h"
#include "elfext/interface/data_structure.h"
#include "elfext/interface/deferred_contents.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/relocation.h"
#include "elfext/src/section_kinds.h"

#include <algorithm>
#include <cstring>

namespace elfext {

namespace {

constexpr uint32_t firstRelocationCount = 4;

// In the file nothing is aligned to more than a word.
constexpr uint64_t greatestFileAlignment = 4;

// The section types that have the same alignment in every file.
struct FixedAlignment {
    uint32_t m_Type;
    uint64_t m_Alignment;
};
constexpr FixedAlignment fixedAlignments[] = {
    {SHT_NULL, 1}, {SHT_NOBITS, 1}, {SHT_SYMTAB, 4}, {SHT_DYNSYM, 4},
    {SHT_REL, 4},  {SHT_RELA, 4},   {SHT_GROUP, 4},  {SHT_SYMTAB_SHNDX, 4},
};

} // namespace

Section::Section(ObjectModule* objectModule, bool isAuxiliary, bool isRelocatable, const char* name,
                 uint32_t type, uint32_t flags)
    : ObjectWithBuildAttributes(objectModule, objectModule->getBuildAttributesCache()),
      FileRegion(objectModule->getContainerRegion()), m_IsAuxiliary(isAuxiliary),
      m_IsRelocatable(isRelocatable), m_Name(objectModule->keepText(name)), m_Type(type),
      m_Flags(flags), m_Contents(objectModule->getContainerRegion(), objectModule),
      m_Relocations(objectModule->getContainerRegion(), firstRelocationCount),
      m_RelocationSections(objectModule->getContainerRegion()),
      m_DynamicRelocationSections(objectModule->getContainerRegion()),
      m_HostedSymbols(objectModule->getContainerRegion()),
      m_HostedDynamicSymbols(objectModule->getContainerRegion()) {
    m_Relocations.clear();
}

void Section::getParentBuildAttributes(attributes::BuildAttributes& result) const {
    m_ObjectModule->getBuildAttributes(result);
}

uint64_t Section::getContentsSize() const {
    return m_Type == SHT_NOBITS ? 0 : m_Size;
}

uint32_t Section::getIndex() const {
    return m_ObjectModule->getSectionIndex(this);
}

bool Section::isDebugSection() const {
    return m_Name != nullptr && isDebugSectionName(m_Name);
}

// --- Fields

void Section::markChanged() {
    m_ObjectModule->markChanged();
}

void Section::setName(const char* name) {
    m_Name = m_ObjectModule->keepText(name);
    markChanged();
}

void Section::setFlags(uint32_t flags) {
    m_Flags = flags;
    markChanged();
}

void Section::setUpperFlags(uint32_t flags) {
    m_UpperFlags = flags;
    markChanged();
}

// The symbols here move with the section.
void Section::setAddress(uint64_t address) {
    m_Address = address;
    if (m_HostedSymbols.getSize() != 0 || m_HostedDynamicSymbols.getSize() != 0) {
        m_ObjectModule->m_SymbolListsSorted = false;
    }
    markChanged();
}

void Section::setSize(uint64_t size) {
    m_Size = size;
    markChanged();
}

void Section::setAlignment(uint64_t alignment) {
    TOMEX_CHECK((alignment & ~(alignment & (0 - alignment))) == 0);
    m_Alignment = alignment;
    markChanged();
}

void Section::setEntrySize(uint64_t entrySize) {
    m_EntrySize = entrySize;
    markChanged();
}

void Section::setLink(Section* link) {
    m_Link = link;
    markChanged();
}

void Section::setInfo(uint32_t info) {
    m_Info = info;
    m_InfoSection = nullptr;
    markChanged();
}

void Section::setInfoSection(Section* section) {
    m_Info = 0;
    m_InfoSection = section;
    markChanged();
}

void Section::setSegment(Segment* segment) {
    m_Segment = segment;
    markChanged();
}

// --- As a region of the file

bool Section::getFileRange(uint64_t* offset, uint64_t* size) const {
    *offset = m_FileOffset;
    *size = getContentsSize();
    return m_FileOffsetKnown;
}

void Section::getFileConstraints(uint64_t* congruence, uint64_t* alignment) const {
    *congruence = 0;
    *alignment = std::clamp(m_Alignment, uint64_t{1}, greatestFileAlignment);
    for (const FixedAlignment& fixed : fixedAlignments) {
        if (fixed.m_Type == m_Type) {
            *alignment = fixed.m_Alignment;
        }
    }
}

void Section::setFileOffset(uint64_t offset) {
    m_FileOffset = offset;
    m_FileOffsetKnown = true;
    m_UnsettledGrowth.reset();
}

DataStructure* Section::createDataStructure(alloclib::Region* region, uint64_t offset) {
    void* const memory = alloclib::allocate(*region, sizeof(SectionDataStructure), 8);
    return new (memory) SectionDataStructure(this, offset);
}

// --- Contents

// While the loader works, the buffer is open to it.
Buffer* Section::getContents() {
    if (DeferredContents* const deferred = m_DeferredContents; deferred != nullptr) {
        m_DeferredContents = nullptr;
        if (!deferred->load(*this)) {
            deferred->getReferenceCountedFile()->close();
            m_DeferredContents = deferred;
            return nullptr;
        }
        deferred->getReferenceCountedFile()->release();
    }
    return &m_Contents;
}

void Section::setContents(const void* bytes, uint64_t size) {
    TOMEX_CHECK(!isContentsDeferred());
    m_HasExternalContents = false;
    m_UnsettledGrowth.reset();
    m_Contents.setExternalData(nullptr, nullptr, 0);
    m_Contents.setSize(size);
    m_Contents.writeBytes(0, bytes, size);
    setSize(size);
}

void Section::setExternalContents(ExternalDataFunction function, void* context, uint64_t size) {
    TOMEX_CHECK(!isContentsDeferred());
    m_HasExternalContents = function != nullptr;
    m_UnsettledGrowth.reset();
    m_Contents.setExternalData(function, context, size);
    setSize(size);
}

void Section::deferContents(DeferredContents* deferredContents) {
    TOMEX_CHECK(!isContentsDeferred());
    m_DeferredContents = deferredContents;
}

void Section::dropDeferredContents() {
    if (m_DeferredContents != nullptr) {
        m_DeferredContents->getReferenceCountedFile()->release();
        m_DeferredContents = nullptr;
    }
}

void Section::read(uint64_t offset, void* buffer, uint64_t count) const {
    getLoadedContents().readBytes(offset, buffer, count);
}

void Section::write(uint64_t offset, const void* buffer, uint64_t count) {
    TOMEX_CHECK(isWritable());
    Buffer* const contents = getContents();
    TOMEX_CHECK_TEXT(contents != nullptr, "contents != NULL");
    if (contents != nullptr) {
        contents->writeBytes(offset, buffer, count);
        markChanged();
    }
}

// --- Relocations

const fast_array<Relocation*>& Section::getRelocations() {
    loadRelocations();
    return m_Relocations;
}

// Making what the file holds is no change of the model.
void Section::loadPendingRelocations() {
    RelocationLoader* const loader = m_RelocationLoader;
    m_RelocationLoader = nullptr;
    loader->loadRelocations(*this);
}

Relocation* Section::createRelocation(uint64_t offset, uint16_t type, Symbol* target) {
    void* const memory =
        alloclib::allocate(*m_ObjectModule->getObjectRegion(), sizeof(Relocation), 8);
    auto* const relocation = new (memory) Relocation(this, offset, type, target);
    m_Relocations.add(relocation);
    m_RelocationsSorted = false;
    return relocation;
}

Relocation* Section::addRelocation(uint64_t offset, uint16_t type, Symbol* target) {
    TOMEX_CHECK(m_IsRelocatable);
    TOMEX_CHECK_TEXT(target == nullptr || target->getObjectModule() == m_ObjectModule,
                     "target == NULL || target->getObjectModule() == m_ObjectModule");
    loadRelocations();
    markChanged();
    return createRelocation(offset, type, target);
}

Relocation* Section::addRelocationWithAddend(uint64_t offset, uint16_t type, Symbol* target,
                                             uint64_t addend) {
    Relocation* const relocation = addRelocation(offset, type, target);
    relocation->m_HasAddend = true;
    relocation->m_Addend = addend;
    return relocation;
}

void Section::addRelocationAsRead(const RelocationAsRead& relocation) {
    Relocation* const made =
        createRelocation(relocation.m_Offset, relocation.m_Type, relocation.m_Target);
    made->m_UpperType = relocation.m_UpperType;
    made->m_TableNumber = relocation.m_TableNumber;
    made->m_HasAddend = relocation.m_HasAddend;
    made->m_Addend = relocation.m_HasAddend ? relocation.m_Addend : 0;
    if (relocation.m_Target == nullptr) {
        made->m_IsDynamic = relocation.m_IsDynamic;
    }
}

void Section::reserveRelocations(uint32_t count) {
    m_Relocations.reserve(m_Relocations.getSize() + count);
}

} // namespace elfext
