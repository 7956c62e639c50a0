// Makes the segments, and tells those sections that have no bytes in the file where they belong.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

namespace elfext {
namespace {

// True if a section of this size at `offset` lies in the stretch of `length` bytes at `start`.
bool liesWithin(uint64_t offset, uint64_t size, uint64_t start, uint64_t length) {
    return start <= offset && size <= length && offset - start <= length - size;
}

bool addressLiesIn(const Elf64_Shdr& section, const Elf64_Phdr& segment) {
    return liesWithin(section.sh_addr, section.sh_size, segment.p_vaddr, segment.p_memsz);
}

// What is mapped may hold the section anywhere in its file range or at its end.
bool canBeLoadedWith(const Elf64_Shdr& section, const Elf64_Phdr& segment) {
    return segment.p_offset <= section.sh_offset &&
           section.sh_offset - segment.p_offset <= segment.p_filesz &&
           section.sh_size <= segment.p_memsz;
}

// Other segments can only go on behind their bytes in the file.
bool follows(const Elf64_Shdr& section, const Elf64_Phdr& segment) {
    return segment.p_offset <= section.sh_offset &&
           section.sh_offset - segment.p_offset == segment.p_filesz &&
           segment.p_filesz <= segment.p_memsz &&
           section.sh_size <= segment.p_memsz - segment.p_filesz;
}

// The segment of a section without bytes, null for none. A later loadable segment is taken in
// place of an earlier one only if the addresses say so.
Segment* chooseSegment(const ReadState& state, const Elf64_Shdr& section) {
    Segment* chosen = nullptr;
    const Elf64_Phdr* chosenHeader = nullptr;
    for (uint32_t i = 0; i < state.segmentCount(); ++i) {
        const Elf64_Phdr& header = state.m_ProgramHeaders[i];
        Segment* const segment = state.m_Module.getSegment(i);
        if (!segment->isLoadable()) {
            if (follows(section, header)) {
                return segment;
            }
        } else if (canBeLoadedWith(section, header) &&
                   (chosen == nullptr ||
                    (addressLiesIn(section, header) && !addressLiesIn(section, *chosenHeader)))) {
            chosen = segment;
            chosenHeader = &header;
        }
    }
    return chosen;
}

} // namespace

bool createSegments(ReadState& state) {
    for (const Elf64_Phdr& header : state.m_ProgramHeaders) {
        SegmentFields fields;
        fields.m_Type = header.p_type;
        fields.m_VirtualAddress = header.p_vaddr;
        fields.m_PhysicalAddress = header.p_paddr;
        fields.m_MemorySize = header.p_memsz;
        fields.m_FileSize = header.p_filesz;
        fields.m_Flags = header.p_flags;
        fields.m_Alignment = header.p_align;
        state.m_Module.createSegmentAsRead(fields)->setFileOffset(header.p_offset);
    }
    return true;
}

bool attachEmptySections(ReadState& state) {
    if (state.segmentCount() == 0) {
        return true;
    }
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const Elf64_Shdr& header = state.m_SectionHeaders[i];
        if (header.sh_size != 0 && header.sh_type != SHT_NOBITS) {
            continue;
        }
        if (!state.spendSteps(state.segmentCount())) {
            return false;
        }
        Segment* const segment = chooseSegment(state, header);
        if (segment != nullptr) {
            FileRegion* const region = state.m_Module.getSection(i);
            uint64_t offset = 0;
            uint64_t size = 0;
            segment->getFileRange(&offset, &size);
            segment->addContained(region, header.sh_offset - offset);
        }
    }
    return true;
}

} // namespace elfext
