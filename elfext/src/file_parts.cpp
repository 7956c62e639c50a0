#include "elfext/src/file_parts.h"

#include "elfext/src/read_state.h"

#include <algorithm>

namespace elfext {
namespace {

FilePart makePart(FileRegion* region, uint64_t start, uint64_t size) {
    return {region, start, size <= UINT64_MAX - start ? start + size : UINT64_MAX};
}

uint64_t sizeInFile(const Elf64_Shdr& header) {
    return header.sh_type == SHT_NULL || header.sh_type == SHT_NOBITS ? 0 : header.sh_size;
}

// The parts that have a size, by where they start. Most files list them in that order.
std::span<const FilePart*> sortParts(ReadState& state, std::span<const FilePart> parts) {
    const std::span<const FilePart*> sorted = state.takeTable<const FilePart*>(parts.size());
    size_t count = 0;
    for (const FilePart& part : parts) {
        if (part.size() != 0) {
            sorted[count++] = &part;
        }
    }
    const auto startsBefore = [](const FilePart* left, const FilePart* right) {
        return left->m_Start < right->m_Start;
    };
    const std::span<const FilePart*> used = sorted.first(count);
    if (!std::is_sorted(used.begin(), used.end(), startsBefore)) {
        std::sort(used.begin(), used.end(), startsBefore);
    }
    return used;
}

} // namespace

std::span<FilePart> listFileParts(ReadState& state) {
    ObjectModule& objectModule = state.m_Module;
    const std::span<FilePart> parts =
        state.takeTable<FilePart>(uint64_t{state.segmentCount()} + state.sectionCount() + 3);
    size_t count = 0;
    for (uint32_t i = 0; i < state.segmentCount(); ++i) {
        const Elf64_Phdr& header = state.m_ProgramHeaders[i];
        parts[count++] = makePart(objectModule.getSegment(i), header.p_offset, header.p_filesz);
    }
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const Elf64_Shdr& header = state.m_SectionHeaders[i];
        parts[count++] = makePart(objectModule.getSection(i), header.sh_offset, sizeInFile(header));
    }
    parts[count++] = makePart(&objectModule.getElfHeader(), 0, state.m_ElfHeader.e_ehsize);
    if (state.sectionCount() != 0) {
        SectionHeaderTable& table = objectModule.getSectionHeaderTable();
        parts[count++] =
            makePart(&table, state.m_ElfHeader.e_shoff, table.getEntrySize() * table.getCount());
    }
    if (state.m_ElfHeader.e_type != ET_REL) {
        ProgramHeaderTable& table = objectModule.getProgramHeaderTable();
        parts[count++] =
            makePart(&table, state.m_ElfHeader.e_phoff, table.getEntrySize() * table.getCount());
    }
    return parts.first(count);
}

bool anyOverlap(ReadState& state, std::span<const FilePart> parts) {
    uint64_t end = 0;
    for (const FilePart* const part : sortParts(state, parts)) {
        if (part->m_Start < end) {
            return true;
        }
        end = part->m_End;
    }
    return false;
}

void markOverlaps(ReadState& state, std::span<const FilePart> parts, std::span<bool> marks) {
    const std::span<const FilePart*> sorted = sortParts(state, parts);
    uint64_t end = 0;
    for (size_t i = 0; i < sorted.size(); ++i) {
        const FilePart& part = *sorted[i];
        const bool overlapsEarlier = part.m_Start < end;
        const bool overlapsLater = i + 1 < sorted.size() && sorted[i + 1]->m_Start < part.m_End;
        marks[static_cast<size_t>(&part - parts.data())] = overlapsEarlier || overlapsLater;
        end = std::max(end, part.m_End);
    }
}

} // namespace elfext
