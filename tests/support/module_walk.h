// Asks an object module for everything that it has.
//
// What a damaged file leads to shows often only when somebody looks at what was made of it: a name
// without an end, a list with a stale entry. Here everything is looked at, so that a checking build
// sees the damage. What is asked is bounded where the file could claim any size.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "elfext/interface/compressed_section_extractor.h"
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/relocation.h"
#include "elfext/interface/sizes_statistics.h"
#include "elfext/interface/version_records.h"

namespace testsupport {

// Sums up what it saw, so that nothing of it is left out by a compiler.
class ModuleWalk {
public:
    explicit ModuleWalk(elfext::ObjectModule& module) : m_Module(module) {}

    uint64_t walk() {
        walkSections();
        walkSymbols();
        walkGroups();
        walkSegments();
        walkDynamicRecords();
        for (const elfext::DebugOverlayRecord& record : m_Module.getDebugOverlayRecords()) {
            see(record.m_DebugSection->getName());
            see(record.m_Section->getIndex());
        }
        walkSizes();
        walkCompressedSections();
        return m_Sum;
    }

private:
    void see(uint64_t value) { m_Sum += 1 + value % 3; }
    void see(const char* text) { m_Sum += text != nullptr ? 1 + std::strlen(text) : 0; }

    void seeBytes(const uint8_t* bytes, uint64_t size) {
        for (uint64_t i = 0; i < size; ++i) {
            m_Sum += bytes[i];
        }
    }

    void walkSections() {
        for (elfext::Section* section : m_Module.getSections()) {
            see(section->getName());
            see(section->getIndex() + section->getSize() + section->isDebugSection());
            if (section->getLink() != nullptr) {
                see(section->getLink()->getName());
            }
            if (section->getSegment() != nullptr) {
                see(section->getSegment()->getIndex());
            }
            if (elfext::Buffer* contents = section->getContents(); contents != nullptr) {
                const elfext::Buffer& bytes = *contents;
                seeBytes(bytes.getData(), bytes.getSize());
            }
            walkRelocations(*section);
            for (const auto* list : {&section->getHostedSymbolsSortedByOffset(),
                                     &section->getHostedDynamicSymbolsSortedByName()}) {
                walkList(*list);
            }
        }
    }

    void walkRelocations(elfext::Section& section) {
        for (const elfext::Relocation* relocation : section.getRelocationsSortedByOffset()) {
            see(relocation->getOffset() + relocation->getType());
            if (relocation->getTarget() != nullptr) {
                see(relocation->getTarget()->getName());
            }
            if (relocation->hasAddend()) {
                see(relocation->getAddend());
            }
        }
    }

    void walkList(const elfext::ObjectModule::SymbolArray& symbols) {
        for (const elfext::Symbol* symbol : symbols) {
            see(symbol->getName());
            see(symbol->getAddress() + symbol->getAbiValue() + symbol->getKind());
            if (symbol->getCategory() == elfext::Symbol::Category_Hosted) {
                see(symbol->getSection()->getIndex());
            }
            if (const auto* definition = symbol->getSymbolVersionDefinition()) {
                for (uint32_t i = 0; i < definition->getDefinedVersionIdentifierCount(); ++i) {
                    see(definition->getDefinedVersionIdentifier(i)->getVersionString());
                }
            }
            if (symbol->getSymbolVersionRequirement() != nullptr) {
                see(symbol->getSymbolVersionRequirement()->getLibraryName());
            }
        }
    }

    void walkSymbols() {
        walkList(m_Module.getSymbols());
        walkList(m_Module.getDynamicSymbols());
        walkList(m_Module.getSymbolsSortedByAddress());
        walkList(m_Module.getDynamicSymbolsSortedByName());
        walkList(m_Module.getSymbolsSortedByName());
        for (const auto* list :
             {&m_Module.getAbsoluteSymbols(), &m_Module.getCommonSymbols(),
              &m_Module.getUndefinedSymbols(), &m_Module.getUndefinedDynamicSymbols()}) {
            walkList(*list);
        }
    }

    void walkGroups() {
        for (uint32_t i = 0; i < m_Module.getGroupCount(); ++i) {
            const elfext::Group* group = m_Module.getGroup(i);
            see(group->getName());
            see(group->getSignature());
            for (const elfext::Section* member : group->getMembers()) {
                see(member->getIndex());
            }
        }
    }

    // A file may claim segments of any size; only what is near its start is asked for.
    void walkSegments() {
        constexpr uint64_t enough = 8192;
        std::vector<uint8_t> image(enough);
        for (elfext::Segment* segment : m_Module.getSegments()) {
            const uint64_t size = std::min(segment->getFileSize(), enough);
            segment->getContents(image.data(), size);
            seeBytes(image.data(), size);
        }
        for (elfext::RawDataBlock* block : m_Module.getRawDataBlocks()) {
            const elfext::Buffer& bytes = block->getContents();
            seeBytes(bytes.getData(), bytes.getSize());
        }
    }

    void walkDynamicRecords() {
        for (uint32_t i = 0; i < m_Module.getNeededLibraryCount(); ++i) {
            see(m_Module.getNeededLibrary(i)->getName());
        }
        for (uint32_t i = 0; i < m_Module.getLibrarySearchPathCount(); ++i) {
            see(m_Module.getLibrarySearchPath(i)->getPath());
        }
        for (uint32_t i = 0; i < m_Module.getPreemptionCount(); ++i) {
            const elfext::Preemption* preemption = m_Module.getPreemption(i);
            see(preemption->getSymbolName());
            see(preemption->getPreemptingDllName());
            for (uint32_t k = 0; k < preemption->getPreemptedDllCount(); ++k) {
                see(preemption->getPreemptedDll(k)->getName());
            }
        }
        see(m_Module.getSoName());
    }

    void walkSizes() {
        const elfext::SizeStatistics sizes = elfext::computeSizeStatistics(m_Module);
        see(sizes.m_Code + sizes.m_LiteralPools + sizes.m_RwDataUncompressed +
            sizes.m_RwDataCompressed + sizes.m_RoData + sizes.m_ZiData + sizes.m_DebugInfo +
            sizes.m_InternalPadding);
    }

    // What sections would be in memory. One entry of a region table may claim any size for any
    // number of sections; they are asked for while all of them come to no more than 1 MiB.
    void walkCompressedSections() {
        const elfext::CompressedSectionExtractor extractor(&m_Module);
        uint64_t room = uint64_t{1} << 20;
        for (elfext::Section* section : m_Module.getSections()) {
            uint64_t size = 0;
            if (extractor.findUncompressedSize(*section, size) && size <= room) {
                room -= size;
                std::vector<uint8_t> unpacked(size + 1); // never without memory
                see(extractor.getContents(section, unpacked.data()) ? 1 : 0);
                seeBytes(unpacked.data(), size);
            }
        }
    }

    elfext::ObjectModule& m_Module;
    uint64_t m_Sum = 0;
};

inline uint64_t walkModule(elfext::ObjectModule& module) {
    return ModuleWalk(module).walk();
}

} // namespace testsupport
