// The fields of a segment, and its image.
#include "elfext/interface/segment.h"

#include "elfext/interface/data_store.h"
#include "elfext/interface/data_structure.h"
#include "elfext/interface/object_module.h"

#include <algorithm>
#include <cstring>

namespace elfext {

namespace {

// Types that are mapped whatever the ABI is, and those that are so unless the file follows the
// processor's own ABI, whose loader does without them.
constexpr uint32_t loadableTypes[] = {PT_LOAD, PT_NOTE, PT_PHDR, PT_TLS, PT_QEL_EXIDX};
constexpr uint32_t loadableTypesOfOtherAbis[] = {PT_DYNAMIC, PT_INTERP};

template <size_t Count>
bool isOneOf(const uint32_t (&types)[Count], uint32_t type) {
    return std::find(types, types + Count, type) != types + Count;
}

} // namespace

Segment::Segment(ObjectModule* objectModule, const SegmentFields& fields)
    : FileRegion(objectModule->getContainerRegion()), m_Type(fields.m_Type),
      m_Flags(fields.m_Flags), m_VirtualAddress(fields.m_VirtualAddress),
      m_PhysicalAddress(fields.m_PhysicalAddress), m_MemorySize(fields.m_MemorySize),
      m_FileSize(fields.m_FileSize), m_Alignment(fields.m_Alignment), m_ObjectModule(objectModule) {
}

uint32_t Segment::getIndex() const {
    return m_ObjectModule->getSegmentIndex(this);
}

void Segment::markChanged() {
    m_ObjectModule->markChanged();
}

void Segment::setType(uint32_t type) {
    m_Type = type;
    markChanged();
}

void Segment::setVirtualAddress(uint64_t address) {
    m_VirtualAddress = address;
    markChanged();
}

void Segment::setPhysicalAddress(uint64_t address) {
    m_PhysicalAddress = address;
    markChanged();
}

void Segment::setMemorySize(uint64_t size) {
    m_MemorySize = size;
    markChanged();
}

void Segment::setFileSize(uint64_t size) {
    m_FileSize = size;
    markChanged();
}

void Segment::setFlags(uint32_t flags) {
    m_Flags = flags;
    markChanged();
}

bool Segment::isLoadable() const {
    return isOneOf(loadableTypes, m_Type) || (isOneOf(loadableTypesOfOtherAbis, m_Type) &&
                                              m_ObjectModule->getOsAbi() != ELFOSABI_QEL);
}

void Segment::getContents(void* output, uint64_t size) {
    TOMEX_CHECK_TEXT(output != nullptr || size == 0, "output != NULL");
    auto* const bytes = static_cast<uint8_t*>(output);
    std::fill_n(bytes, size, uint8_t{0});
    for (uint32_t i = 0; i < getContainedCount(); ++i) {
        const ContainedRegion contained = getContained(i);
        const DataStore* const store = contained.m_Region->getDataStore();
        if (store == nullptr || contained.m_Offset >= size) {
            continue;
        }
        const uint64_t count = std::min(store->getDataSize(), size - contained.m_Offset);
        if (count != 0) {
            store->read(0, bytes + contained.m_Offset, count);
        }
    }
}

bool Segment::getFileRange(uint64_t* offset, uint64_t* size) const {
    *offset = m_FileOffset;
    *size = m_FileSize;
    return m_FileOffsetKnown;
}

void Segment::getFileConstraints(uint64_t* congruence, uint64_t* alignment) const {
    *congruence = m_VirtualAddress & (m_Alignment - 1);
    *alignment = m_Alignment;
}

void Segment::setFileOffset(uint64_t offset) {
    m_FileOffset = offset;
    m_FileOffsetKnown = true;
}

void Segment::setAlignment(uint64_t alignment) {
    // One blank less than where other alignments are checked: the text is a key in reports.
    TOMEX_CHECK_TEXT((alignment & ~(alignment & (0 - alignment))) == 0,
                     "(alignment & ~(alignment & (0-alignment))) == 0");
    m_Alignment = alignment;
    markChanged();
}

DataStructure* Segment::createDataStructure(alloclib::Region* region, uint64_t offset) {
    void* const memory = alloclib::allocate(*region, sizeof(SegmentDataStructure), 8);
    return new (memory) SegmentDataStructure(this, offset);
}

} // namespace elfext
