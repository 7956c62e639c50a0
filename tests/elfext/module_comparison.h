// Compares two modules object by object.
//
// What is computed when a module is written may differ in its bytes and its place, such as the
// order of names in a string table; everything that such bytes stand for is compared as objects.
#pragma once

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>

#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/interface/relocation.h"
#include "elfext/interface/version_records.h"

namespace elfext::test {

class ModuleComparison {
public:
    // What a reader makes of the bytes between sections, and notes of the file as a whole, counts
    // `withGaps` only: a table that shrinks in memory leaves a gap.
    ModuleComparison(ObjectModule& left, ObjectModule& right, bool withGaps)
        : m_Left(left), m_Right(right), m_WithGaps(withGaps) {}

    // What differs first, or nothing.
    std::string run() {
        compareFiles();
        compareSections();
        compareSymbols(m_Left.getSymbols(), m_Right.getSymbols(), "symbol");
        compareSymbols(m_Left.getDynamicSymbols(), m_Right.getDynamicSymbols(), "dynamic symbol");
        compareGroups();
        compareSegments();
        compareDynamicRecords();
        compareVersionRecords();
        compareAttributes(m_Left, m_Right, "module", 0);
        return m_Difference;
    }

private:
    template <typename Value>
    bool same(const Value& left, const Value& right, const char* what, uint64_t number,
              const char* field) {
        if (left == right || !m_Difference.empty()) {
            return m_Difference.empty();
        }
        std::ostringstream text;
        text << what << ' ' << number << ": " << field << " is " << left << " and " << right;
        m_Difference = text.str();
        return false;
    }
    bool sameText(const char* left, const char* right, const char* what, uint64_t number,
                  const char* field) {
        const auto shown = [](const char* text) {
            return text != nullptr ? std::string("'") + text + "'" : std::string("none");
        };
        const bool isSame =
            left == nullptr || right == nullptr ? left == right : std::strcmp(left, right) == 0;
        return isSame || same(shown(left), shown(right), what, number, field);
    }
    static int64_t indexOf(const Section* section) {
        return section != nullptr ? int64_t{section->getIndex()} : -1;
    }

    void compareFiles() {
        same(m_Left.getMachine(), m_Right.getMachine(), "file", 0, "machine");
        same(m_Left.getClass(), m_Right.getClass(), "file", 0, "class");
        same(m_Left.getEndianness(), m_Right.getEndianness(), "file", 0, "byte order");
        same(m_Left.getType(), m_Right.getType(), "file", 0, "type");
        same(m_Left.getOsAbi(), m_Right.getOsAbi(), "file", 0, "ABI");
        same(m_Left.getAbiVersion(), m_Right.getAbiVersion(), "file", 0, "ABI version");
        same(m_Left.getFlags(), m_Right.getFlags(), "file", 0, "flags");
        same(m_Left.getEntryPoint(), m_Right.getEntryPoint(), "file", 0, "entry point");
        if (m_WithGaps) {
            same(m_Left.getProperties(), m_Right.getProperties(), "file", 0, "properties");
        }
        same(m_Left.getVersion(), m_Right.getVersion(), "file", 0, "version");
        same(m_Left.getIdentVersion(), m_Right.getIdentVersion(), "file", 0, "ident version");
    }

    void compareSections() {
        if (!same(m_Left.getSectionCount(), m_Right.getSectionCount(), "file", 0, "sections")) {
            return;
        }
        for (uint32_t i = 0; i < m_Left.getSectionCount(); ++i) {
            compareSection(*m_Left.getSection(i), *m_Right.getSection(i), i);
        }
    }

    void compareSection(Section& left, Section& right, uint32_t i) {
        const char* const what = "section";
        sameText(left.getName(), right.getName(), what, i, "name");
        if (!same(left.getType(), right.getType(), what, i, "type")) {
            return;
        }
        same(left.getFlags(), right.getFlags(), what, i, "flags");
        same(left.getAddress(), right.getAddress(), what, i, "address");
        same(left.getAlignment(), right.getAlignment(), what, i, "alignment");
        same(left.getEntrySize(), right.getEntrySize(), what, i, "entry size");
        same(indexOf(left.getLink()), indexOf(right.getLink()), what, i, "link");
        same(left.getInfo(), right.getInfo(), what, i, "info");
        same(indexOf(left.getInfoSection()), indexOf(right.getInfoSection()), what, i,
             "section in the info");
        const bool isLoaded =
            left.getObjectModule()->getSegmentCount() != 0 && (left.getFlags() & SHF_ALLOC) != 0;
        if (!left.isAuxiliary() || isLoaded) {
            same(left.getSize(), right.getSize(), what, i, "size");
        }
        if (isLoaded && left.getContentsSize() != 0) {
            same(left.getFileOffset(), right.getFileOffset(), what, i, "offset");
        }
        same(left.getSegment() != nullptr ? left.getSegment()->getIndex() + 1 : 0,
             right.getSegment() != nullptr ? right.getSegment()->getIndex() + 1 : 0, what, i,
             "segment");
        if (!left.isAuxiliary()) {
            compareContents(left, right, i);
        }
        compareRelocations(left, right, i);
        compareAttributes(left, right, what, i);
    }

    void compareContents(Section& left, Section& right, uint32_t i) {
        const Buffer* const one = left.getContents();
        const Buffer* const two = right.getContents();
        if (same(one->getSize(), two->getSize(), "section", i, "contents' size")) {
            same(std::equal(one->getData(), one->getData() + one->getSize(), two->getData()), true,
                 "section", i, "contents' equality");
        }
    }

    void compareRelocations(Section& left, Section& right, uint32_t i) {
        const auto& one = left.getRelocations();
        const auto& two = right.getRelocations();
        if (!same(one.getSize(), two.getSize(), "section", i, "relocations")) {
            return;
        }
        for (uint32_t k = 0; k < one.getSize() && m_Difference.empty(); ++k) {
            same(one[k]->getOffset(), two[k]->getOffset(), "relocation", k, "offset");
            same(one[k]->getType(), two[k]->getType(), "relocation", k, "type");
            same(one[k]->isDynamic(), two[k]->isDynamic(), "relocation", k, "linkage");
            if (same(one[k]->hasAddend(), two[k]->hasAddend(), "relocation", k, "form") &&
                one[k]->hasAddend()) {
                same(one[k]->getAddend(), two[k]->getAddend(), "relocation", k, "addend");
            }
            same(numberOf(one[k]->getTarget()), numberOf(two[k]->getTarget()), "relocation", k,
                 "symbol");
        }
    }

    static uint32_t numberOf(const Symbol* symbol) {
        if (symbol == nullptr) {
            return 0;
        }
        return symbol->isDynamic() ? symbol->getObjectModule()->getDynamicSymbolIndex(symbol)
                                   : symbol->getObjectModule()->getSymbolIndex(symbol);
    }

    void compareSymbols(const ObjectModule::SymbolArray& left,
                        const ObjectModule::SymbolArray& right, const char* what) {
        if (!same(left.getSize(), right.getSize(), "file", 0, what)) {
            return;
        }
        for (uint32_t i = 0; i < left.getSize() && m_Difference.empty(); ++i) {
            const Symbol& one = *left[i];
            const Symbol& two = *right[i];
            sameText(one.getName(), two.getName(), what, i, "name");
            same(one.getSize(), two.getSize(), what, i, "size");
            same(one.getType(), two.getType(), what, i, "type");
            same(one.getBinding(), two.getBinding(), what, i, "binding");
            same(one.getVisibility(), two.getVisibility(), what, i, "visibility");
            if (!same(one.getCategory(), two.getCategory(), what, i, "category")) {
                return;
            }
            if (one.getCategory() == Symbol::Category_Hosted) {
                same(indexOf(one.getSection()), indexOf(two.getSection()), what, i, "section");
                same(one.getOffset(), two.getOffset(), what, i, "offset");
            } else if (one.getCategory() == Symbol::Category_Common) {
                same(one.getCommonValue(), two.getCommonValue(), what, i, "alignment");
            } else {
                same(one.getAddress(), two.getAddress(), what, i, "value");
            }
            compareVersions(one, two, what, i);
            compareAttributes(one, two, what, i);
        }
    }

    void compareVersions(const Symbol& left, const Symbol& right, const char* what, uint32_t i) {
        const auto nameOf = [](const Symbol& symbol) -> std::string {
            if (const auto* const definition = symbol.getSymbolVersionDefinition()) {
                std::string names = "defined in " + std::to_string(definition->getIndex());
                for (uint32_t k = 0; k < definition->getDefinedVersionIdentifierCount(); ++k) {
                    names += std::string(" ") +
                             definition->getDefinedVersionIdentifier(k)->getVersionString();
                }
                return names;
            }
            if (const auto* const requirement = symbol.getSymbolVersionRequirement()) {
                return std::string("from ") + requirement->getLibraryName() + " " +
                       std::to_string(requirement->getIndex()) + " " +
                       requirement->getRequiredVersionIdentifier().getVersionString();
            }
            return "";
        };
        same(nameOf(left), nameOf(right), what, i, "version");
        same(left.isVersionHidden(), right.isVersionHidden(), what, i, "version's hiding");
    }

    // All of them, also those that no symbol has.
    void compareVersionRecords() {
        same(describe(m_Left.getFileVersionDefinition()),
             describe(m_Right.getFileVersionDefinition()), "file", 0, "version");
        compareChains(m_Left.getFirstSymbolVersionDefinition(),
                      m_Right.getFirstSymbolVersionDefinition(), "version definition");
        compareChains(m_Left.getFirstSymbolVersionRequirement(),
                      m_Right.getFirstSymbolVersionRequirement(), "version requirement");
    }
    template <typename Kind>
    void compareChains(const Kind* left, const Kind* right, const char* what) {
        for (uint64_t i = 0; left != nullptr || right != nullptr; ++i) {
            if (!same(describe(left), describe(right), what, i, "record")) {
                return;
            }
            left = left->getNext();
            right = right->getNext();
        }
    }
    static std::string describe(const VersionDefinition* definition) {
        if (definition == nullptr) {
            return "none";
        }
        std::string text =
            std::to_string(definition->getIndex()) + "/" + std::to_string(definition->getFlags());
        for (uint32_t k = 0; k < definition->getDefinedVersionIdentifierCount(); ++k) {
            text +=
                std::string(" ") + definition->getDefinedVersionIdentifier(k)->getVersionString();
        }
        return text;
    }
    static std::string describe(const VersionRequirement* requirement) {
        if (requirement == nullptr) {
            return "none";
        }
        return std::to_string(requirement->getIndex()) + "/" +
               std::to_string(requirement->getFlags()) + " " + requirement->getLibraryName() + " " +
               requirement->getRequiredVersionIdentifier().getVersionString();
    }

    void compareGroups() {
        if (!same(m_Left.getGroupCount(), m_Right.getGroupCount(), "file", 0, "groups")) {
            return;
        }
        for (uint32_t i = 0; i < m_Left.getGroupCount(); ++i) {
            const Group& one = *m_Left.getGroup(i);
            const Group& two = *m_Right.getGroup(i);
            sameText(one.getName(), two.getName(), "group", i, "name");
            sameText(one.getSignature(), two.getSignature(), "group", i, "signature");
            same(one.getFlags(), two.getFlags(), "group", i, "flags");
            same(indexOf(one.getSection()), indexOf(two.getSection()), "group", i, "section");
            if (!same(one.getMembers().getSize(), two.getMembers().getSize(), "group", i,
                      "members")) {
                return;
            }
            for (uint32_t k = 0; k < one.getMembers().getSize(); ++k) {
                same(indexOf(one.getMembers()[k]), indexOf(two.getMembers()[k]), "group", i,
                     "member");
            }
        }
    }

    void compareSegments() {
        if (!same(m_Left.getSegmentCount(), m_Right.getSegmentCount(), "file", 0, "segments")) {
            return;
        }
        for (uint32_t i = 0; i < m_Left.getSegmentCount() && m_Difference.empty(); ++i) {
            Segment& one = *m_Left.getSegment(i);
            Segment& two = *m_Right.getSegment(i);
            same(one.getType(), two.getType(), "segment", i, "type");
            same(one.getVirtualAddress(), two.getVirtualAddress(), "segment", i, "address");
            same(one.getPhysicalAddress(), two.getPhysicalAddress(), "segment", i, "load address");
            same(one.getMemorySize(), two.getMemorySize(), "segment", i, "memory size");
            same(one.getFileSize(), two.getFileSize(), "segment", i, "file size");
            same(one.getFlags(), two.getFlags(), "segment", i, "flags");
            same(one.getAlignment(), two.getAlignment(), "segment", i, "alignment");
            same(one.getFileOffset(), two.getFileOffset(), "segment", i, "offset");
            if (m_WithGaps) {
                same(one.getContainedCount(), two.getContainedCount(), "segment", i, "parts");
            }
        }
        if (m_WithGaps) {
            compareRawData();
        }
    }

    void compareRawData() {
        const auto& left = m_Left.getRawDataBlocks();
        const auto& right = m_Right.getRawDataBlocks();
        if (!same(left.getSize(), right.getSize(), "file", 0, "raw data blocks")) {
            return;
        }
        for (uint32_t i = 0; i < left.getSize(); ++i) {
            const Buffer& one = left[i]->getContents();
            const Buffer& two = right[i]->getContents();
            if (same(one.getSize(), two.getSize(), "raw data block", i, "size")) {
                same(std::equal(one.getData(), one.getData() + one.getSize(), two.getData()), true,
                     "raw data block", i, "equality");
            }
        }
    }

    void compareDynamicRecords() {
        sameText(m_Left.getSoName(), m_Right.getSoName(), "file", 0, "name of the library");
        same(m_Left.getDynamicFlags(), m_Right.getDynamicFlags(), "file", 0, "dynamic flags");
        same(m_Left.hasDynamicFlags(), m_Right.hasDynamicFlags(), "file", 0, "dynamic flags");
        for (const auto get : {&ObjectModule::getInit, &ObjectModule::getFini,
                               &ObjectModule::getInitArray, &ObjectModule::getInitArraySize,
                               &ObjectModule::getPreinitArray, &ObjectModule::getPreinitArraySize,
                               &ObjectModule::getFiniArray, &ObjectModule::getFiniArraySize}) {
            same((m_Left.*get)().has_value(), (m_Right.*get)().has_value(), "file", 0, "a value");
            same((m_Left.*get)().value_or(0), (m_Right.*get)().value_or(0), "file", 0, "a value");
        }
        if (same(m_Left.getNeededLibraryCount(), m_Right.getNeededLibraryCount(), "file", 0,
                 "needed libraries")) {
            for (uint32_t i = 0; i < m_Left.getNeededLibraryCount(); ++i) {
                sameText(m_Left.getNeededLibrary(i)->getName(),
                         m_Right.getNeededLibrary(i)->getName(), "needed library", i, "name");
            }
        }
        if (same(m_Left.getLibrarySearchPathCount(), m_Right.getLibrarySearchPathCount(), "file", 0,
                 "search paths")) {
            for (uint32_t i = 0; i < m_Left.getLibrarySearchPathCount(); ++i) {
                const LibrarySearchPath& one = *m_Left.getLibrarySearchPath(i);
                const LibrarySearchPath& two = *m_Right.getLibrarySearchPath(i);
                sameText(one.getPath(), two.getPath(), "search path", i, "path");
                same(one.getTag(), two.getTag(), "search path", i, "tag");
            }
        }
        comparePreemptions();
        compareOverlays();
    }

    void comparePreemptions() {
        if (!same(m_Left.getPreemptionCount(), m_Right.getPreemptionCount(), "file", 0,
                  "preemptions")) {
            return;
        }
        for (uint32_t i = 0; i < m_Left.getPreemptionCount(); ++i) {
            const Preemption& one = *m_Left.getPreemption(i);
            const Preemption& two = *m_Right.getPreemption(i);
            sameText(one.getSymbolName(), two.getSymbolName(), "preemption", i, "symbol");
            sameText(one.getPreemptingDllName(), two.getPreemptingDllName(), "preemption", i,
                     "library");
            if (same(one.getPreemptedDllCount(), two.getPreemptedDllCount(), "preemption", i,
                     "preempted libraries")) {
                for (uint32_t k = 0; k < one.getPreemptedDllCount(); ++k) {
                    sameText(one.getPreemptedDll(k)->getName(), two.getPreemptedDll(k)->getName(),
                             "preemption", i, "preempted library");
                }
            }
        }
    }

    void compareOverlays() {
        const auto& left = m_Left.getDebugOverlayRecords();
        const auto& right = m_Right.getDebugOverlayRecords();
        if (same(left.getSize(), right.getSize(), "file", 0, "overlay records")) {
            for (uint32_t i = 0; i < left.getSize(); ++i) {
                same(left[i].m_Id, right[i].m_Id, "overlay record", i, "number");
                same(indexOf(left[i].m_DebugSection), indexOf(right[i].m_DebugSection),
                     "overlay record", i, "debug section");
                same(indexOf(left[i].m_Section), indexOf(right[i].m_Section), "overlay record", i,
                     "section");
            }
        }
    }

    void compareAttributes(const ObjectWithBuildAttributes& left,
                           const ObjectWithBuildAttributes& right, const char* what, uint64_t i) {
        const attributes::BuildAttributes* const one = left.getOwnBuildAttributes();
        const attributes::BuildAttributes* const two = right.getOwnBuildAttributes();
        if (same(one != nullptr, two != nullptr, what, i, "attributes' presence") &&
            one != nullptr) {
            same(one->equals(*two), true, what, i, "attributes' equality");
        }
        if (same(left.getBuildAttributesBlockCount(), right.getBuildAttributesBlockCount(), what, i,
                 "attribute blocks")) {
            for (uint32_t k = 0; k < left.getBuildAttributesBlockCount(); ++k) {
                const attributes::BuildAttributesBlock& block = *left.getBuildAttributesBlock(k);
                same(bytesOf(&block),
                     bytesOf(right.findBuildAttributesBlock(block.getVendorName())), what, i,
                     block.getVendorName());
            }
        }
    }
    // Tags and values as they stand, in hexadecimal digits.
    static std::string bytesOf(const attributes::BuildAttributesBlock* block) {
        if (block == nullptr) {
            return "none";
        }
        std::ostringstream text;
        for (uint32_t i = 0; i < block->getLength(); ++i) {
            text << std::hex << std::setw(2) << std::setfill('0') << uint32_t{block->getData()[i]};
        }
        return text.str();
    }

    ObjectModule& m_Left;
    ObjectModule& m_Right;
    const bool m_WithGaps;
    std::string m_Difference;
};

inline std::string differenceBetween(ObjectModule& left, ObjectModule& right) {
    return ModuleComparison(left, right, true).run();
}

// The same for a module that something was taken out of after it was read.
inline std::string differenceAfterRemoval(ObjectModule& left, ObjectModule& right) {
    return ModuleComparison(left, right, false).run();
}

} // namespace elfext::test
