// What is told of the file as a whole: whether its headers are loaded with it, and what is
// unusual about it.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

#include <algorithm>

namespace elfext {
namespace {

// True if the stretch of `count` times `size` bytes at `offset` lies in the segment's part of the
// file. An empty one does not lie anywhere.
bool isLoadedBy(const Elf64_Phdr& segment, uint64_t offset, uint64_t count, uint64_t size) {
    const uint64_t length = count * size;
    return length != 0 && segment.p_offset <= offset && length <= segment.p_filesz &&
           offset - segment.p_offset <= segment.p_filesz - length;
}

bool isIncongruent(const Elf64_Phdr& segment) {
    return segment.p_align != 0 &&
           segment.p_vaddr % segment.p_align != segment.p_offset % segment.p_align;
}

// What the first loaded segment brings into memory of the headers.
uint32_t loadedHeaders(const ReadState& state) {
    const auto segment =
        std::find_if(state.m_ProgramHeaders.begin(), state.m_ProgramHeaders.end(),
                     [](const Elf64_Phdr& header) { return header.p_type == PT_LOAD; });
    if (segment == state.m_ProgramHeaders.end()) {
        return 0;
    }
    const RecordSizes& sizes = state.sizes();
    const Elf64_Ehdr& header = state.m_ElfHeader;
    uint32_t properties = 0;
    if (isLoadedBy(*segment, 0, 1, sizes.elfHeader)) {
        properties |= ModuleProperty_ElfHeaderLoaded;
    }
    if (isLoadedBy(*segment, header.e_shoff, state.sectionCount(), sizes.sectionHeader)) {
        properties |= ModuleProperty_SectionHeaderTableLoaded;
    }
    if (isLoadedBy(*segment, header.e_phoff, state.segmentCount(), sizes.programHeader)) {
        properties |= ModuleProperty_ProgramHeaderTableLoaded;
    }
    return properties;
}

uint32_t segmentProperties(const ReadState& state) {
    uint32_t properties = loadedHeaders(state);
    if (state.sectionCount() == 0) {
        properties |= ModuleProperty_NoSectionHeaders;
    }
    if (std::any_of(state.m_ProgramHeaders.begin(), state.m_ProgramHeaders.end(), isIncongruent)) {
        properties |= ModuleProperty_OffsetIncongruent;
    }
    return properties;
}

uint32_t sectionProperties(const ReadState& state) {
    uint32_t properties = 0;
    for (Section* const section : state.m_Module.getSections()) {
        if (!section->isAuxiliary()) {
            continue;
        }
        if (section->getHostedSymbols().getSize() != 0 ||
            section->getHostedDynamicSymbols().getSize() != 0) {
            properties |= ModuleProperty_AuxiliarySectionWithSymbols;
        }
        if (section->hasRelocations()) {
            properties |= ModuleProperty_AuxiliarySectionWithRelocations;
        }
    }
    return properties;
}

// Properties that only a file with segments has.
constexpr uint32_t tagProperties = ModuleProperty_DebugTag | ModuleProperty_QelModuleTag;

} // namespace

bool computeProperties(ReadState& state) {
    uint32_t properties = state.m_Properties | ModuleProperty_FromFile;
    if (state.segmentCount() != 0) {
        properties |= segmentProperties(state);
    } else {
        properties &= ~tagProperties;
    }
    properties |= sectionProperties(state);
    state.m_Module.setProperties(properties);
    state.m_Module.setAuxiliarySectionsUpToDate(false);
    return true;
}

} // namespace elfext
