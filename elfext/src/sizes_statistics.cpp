// Measures the sections of a module, or its segments if it has no sections.
#include "elfext/interface/sizes_statistics.h"

#include "elfext/interface/compressed_section_extractor.h"
#include "elfext/interface/object_module.h"
#include "elfext/src/code_stretches.h"
#include "elfext/src/internal_padding.h"
#include "elfext/src/section_use.h"

namespace elfext {
namespace {

// What a segment's flags make of it. A segment that can only be written counts for nothing.
void addSegment(const Segment& segment, SizeStatistics& statistics) {
    const uint32_t flags = segment.getFlags();
    const uint64_t size = segment.getFileSize();
    if ((flags & PF_X) != 0) {
        statistics.m_Code += size;
    } else if ((flags & (PF_W | PF_R)) == (PF_W | PF_R)) {
        statistics.m_RwDataUncompressed += size;
        statistics.m_RwDataCompressed += size;
    } else if ((flags & PF_R) != 0) {
        statistics.m_RoData += size;
    } else {
        return;
    }
    statistics.m_ZiData += segment.getMemorySize() - size;
}

void addSegments(const ObjectModule& objectModule, SizeStatistics& statistics) {
    for (const Segment* const segment : objectModule.getSegments()) {
        if (segment->getType() == PT_LOAD) {
            addSegment(*segment, statistics);
        }
    }
}

void addReadWriteData(const Section& section, const CompressedSectionExtractor& extractor,
                      SizeStatistics& statistics) {
    uint64_t uncompressedSize = section.getSize();
    extractor.findUncompressedSize(section, uncompressedSize);
    statistics.m_RwDataUncompressed += uncompressedSize;
    statistics.m_RwDataCompressed += section.getSize();
}

void addSection(const Section& section, const CompressedSectionExtractor& extractor,
                SizeStatistics& statistics) {
    switch (sectionUseOf(section.getType(), section.getFlags())) {
    case SectionUse::NotLoaded:
        statistics.m_DebugInfo += section.isDebugSection() ? section.getSize() : 0;
        break;
    case SectionUse::Zeros:
        statistics.m_ZiData += section.getSize();
        break;
    case SectionUse::Code:
        addCodeStretches(section, statistics);
        break;
    case SectionUse::Constants:
        statistics.m_RoData += section.getSize();
        break;
    case SectionUse::Data:
        addReadWriteData(section, extractor, statistics);
        break;
    }
}

} // namespace

SizeStatistics& SizeStatistics::operator+=(const SizeStatistics& other) {
    m_Code += other.m_Code;
    m_LiteralPools += other.m_LiteralPools;
    m_RwDataUncompressed += other.m_RwDataUncompressed;
    m_RwDataCompressed += other.m_RwDataCompressed;
    m_RoData += other.m_RoData;
    m_ZiData += other.m_ZiData;
    m_DebugInfo += other.m_DebugInfo;
    m_InternalPadding += other.m_InternalPadding;
    return *this;
}

SizeStatistics computeSizeStatistics(ObjectModule& objectModule) {
    SizeStatistics statistics;
    if (objectModule.getSectionCount() == 0 && objectModule.getSegmentCount() != 0) {
        addSegments(objectModule, statistics);
        return statistics;
    }
    const CompressedSectionExtractor extractor(&objectModule);
    for (const Section* const section : objectModule.getSections()) {
        addSection(*section, extractor, statistics);
    }
    addRawData(objectModule, statistics);
    statistics.m_InternalPadding += countUncoveredBytes(objectModule);
    return statistics;
}

} // namespace elfext
