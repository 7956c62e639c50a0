// Versions of symbols, and the map of preemptions.
#include "elfext/src/auxiliary_state.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/version_records.h"

#include <algorithm>
#include <cstring>

namespace elfext {
namespace {

constexpr uint16_t recordVersion = 1; // of the records of versions
constexpr uint32_t verdefSize = 20;
constexpr uint32_t verdauxSize = 8;
constexpr uint32_t verneedSize = 16;
constexpr uint32_t vernauxSize = 16;
constexpr uint32_t versymSize = 2;

std::vector<const VersionDefinition*> definitionsOf(const ObjectModule& objectModule) {
    std::vector<const VersionDefinition*> definitions;
    if (objectModule.getFileVersionDefinition() != nullptr) {
        definitions.push_back(objectModule.getFileVersionDefinition());
    }
    for (const SymbolVersionDefinition* definition = objectModule.getFirstSymbolVersionDefinition();
         definition != nullptr; definition = definition->getNext()) {
        definitions.push_back(definition);
    }
    return definitions;
}

// What is asked of one library.
struct LibraryVersions {
    const char* library = nullptr;
    std::vector<const SymbolVersionRequirement*> versions;
};

// Libraries in the order in which they came.
std::vector<LibraryVersions> librariesOf(const ObjectModule& objectModule) {
    std::vector<LibraryVersions> libraries;
    std::unordered_map<std::string_view, size_t> places;
    for (const SymbolVersionRequirement* requirement =
             objectModule.getFirstSymbolVersionRequirement();
         requirement != nullptr; requirement = requirement->getNext()) {
        const char* const library = requirement->getLibraryName();
        const auto [place, isNew] = places.try_emplace(library, libraries.size());
        if (isNew) {
            libraries.push_back({library, {}});
        }
        libraries[place->second].versions.push_back(requirement);
    }
    return libraries;
}

void fillDefinitions(AuxiliaryState& state, Section& section) {
    const StringTableBuilder& texts = state.textsOf(state.m_DynamicNames);
    const std::vector<const VersionDefinition*> definitions = definitionsOf(state.m_Module);
    RecordBytes bytes = state.makeBytes();
    for (const VersionDefinition* const definition : definitions) {
        const uint32_t count = definition->getDefinedVersionIdentifierCount();
        bytes.half(recordVersion);
        bytes.half(definition->getFlags());
        bytes.half(definition->getIndex());
        bytes.half(static_cast<uint16_t>(count));
        bytes.word(count != 0 ? definition->getDefinedVersionIdentifier(0)->getHash() : 0);
        bytes.word(verdefSize);
        bytes.word(definition != definitions.back() ? verdefSize + count * verdauxSize : 0);
        for (uint32_t i = 0; i < count; ++i) {
            bytes.word(
                texts.offsetOf(definition->getDefinedVersionIdentifier(i)->getVersionString()));
            bytes.word(i + 1 < count ? verdauxSize : 0);
        }
    }
    state.setTable(section, bytes, section.getEntrySize());
    section.setLink(state.m_DynamicNames);
    section.setInfo(static_cast<uint32_t>(definitions.size()));
}

void fillRequirements(AuxiliaryState& state, Section& section) {
    const StringTableBuilder& texts = state.textsOf(state.m_DynamicNames);
    const std::vector<LibraryVersions> libraries = librariesOf(state.m_Module);
    RecordBytes bytes = state.makeBytes();
    for (const LibraryVersions& library : libraries) {
        const auto count = static_cast<uint32_t>(library.versions.size());
        bytes.half(recordVersion);
        bytes.half(static_cast<uint16_t>(count));
        bytes.word(texts.offsetOf(library.library));
        bytes.word(verneedSize);
        bytes.word(&library != &libraries.back() ? verneedSize + count * vernauxSize : 0);
        for (const SymbolVersionRequirement* const version : library.versions) {
            const VersionIdentifier& identifier = version->getRequiredVersionIdentifier();
            bytes.word(identifier.getHash());
            bytes.half(version->getFlags());
            bytes.half(version->getIndex());
            bytes.word(texts.offsetOf(identifier.getVersionString()));
            bytes.word(version != library.versions.back() ? vernauxSize : 0);
        }
    }
    state.setTable(section, bytes, section.getEntrySize());
    section.setLink(state.m_DynamicNames);
    section.setInfo(static_cast<uint32_t>(libraries.size()));
}

// The entry of a symbol in the table of versions. A number that nothing here stands behind is kept
// only where no versions have been read: then nobody knows better.
uint16_t versionOf(const Symbol& symbol, bool areVersionsKnown) {
    const uint16_t entry = symbol.getVersionEntry();
    const uint16_t hidden = symbol.isVersionHidden() ? uint16_t{VERSYM_HIDDEN} : uint16_t{0};
    if (symbol.getSymbolVersionDefinition() != nullptr) {
        return symbol.getSymbolVersionDefinition()->getIndex() | hidden;
    }
    if (symbol.getSymbolVersionRequirement() != nullptr) {
        return symbol.getSymbolVersionRequirement()->getIndex() | hidden;
    }
    if (entry != Symbol::NoVersionEntry &&
        (!areVersionsKnown || (entry & VERSYM_VERSION) <= VER_NDX_GLOBAL)) {
        return entry;
    }
    return symbol.getBinding() == STB_LOCAL ? VER_NDX_LOCAL : VER_NDX_GLOBAL;
}

// True if the table of versions can be made of what the symbols say.
bool areEntriesKnown(const ObjectModule& objectModule) {
    const ObjectModule::SymbolArray& symbols = objectModule.getDynamicSymbols();
    return hasVersions(objectModule) ||
           std::any_of(symbols.begin(), symbols.end(), [](const Symbol* symbol) {
               return symbol->getVersionEntry() != Symbol::NoVersionEntry;
           });
}

void fillSymbolVersions(AuxiliaryState& state, Section& section) {
    const bool areVersionsKnown = hasVersions(state.m_Module);
    RecordBytes bytes = state.makeBytes();
    bytes.half(VER_NDX_LOCAL);
    for (const Symbol* const symbol : state.m_Module.getDynamicSymbols()) {
        bytes.half(versionOf(*symbol, areVersionsKnown));
    }
    state.setTable(section, bytes, versymSize);
    section.setLink(state.m_Dynsym);
}

} // namespace

bool hasVersions(const ObjectModule& objectModule) {
    return objectModule.getFileVersionDefinition() != nullptr ||
           objectModule.getFirstSymbolVersionDefinition() != nullptr ||
           objectModule.getFirstSymbolVersionRequirement() != nullptr;
}

void addVersionTexts(AuxiliaryState& state) {
    if (!hasVersions(state.m_Module)) {
        return;
    }
    StringTableBuilder& texts = state.textsOf(state.m_DynamicNames);
    for (const VersionDefinition* const definition : definitionsOf(state.m_Module)) {
        for (uint32_t i = 0; i < definition->getDefinedVersionIdentifierCount(); ++i) {
            texts.add(definition->getDefinedVersionIdentifier(i)->getVersionString());
        }
    }
    for (const LibraryVersions& library : librariesOf(state.m_Module)) {
        texts.add(library.library);
        for (const SymbolVersionRequirement* const version : library.versions) {
            texts.add(version->getRequiredVersionIdentifier().getVersionString());
        }
    }
}

void fillVersions(AuxiliaryState& state) {
    const auto fillFirst = [&state](const ObjectModule::SectionArray& sections, auto fill) {
        if (sections.getSize() != 0) {
            fill(state, *sections[0]);
        }
    };
    if (hasVersions(state.m_Module)) {
        fillFirst(state.m_Module.getVerdefSections(), fillDefinitions);
        fillFirst(state.m_Module.getVerneedSections(), fillRequirements);
    }
    if (state.m_Dynsym != nullptr && areEntriesKnown(state.m_Module)) {
        fillFirst(state.m_Module.getVersymSections(), fillSymbolVersions);
    }
}

// A map in a segment keeps its size: what follows its end does not count.
void fillPreemptionMap(AuxiliaryState& state) {
    if (state.m_Module.getPreemptionMapSections().getSize() == 0) {
        return;
    }
    Section& section = *state.m_Module.getPreemptionMapSections()[0];
    const StringTableBuilder& texts = state.textsOf(state.m_DynamicNames);
    RecordBytes bytes = state.makeBytes();
    for (uint32_t i = 0; i < state.m_Module.getPreemptionCount(); ++i) {
        const Preemption& preemption = *state.m_Module.getPreemption(i);
        const uint32_t count = preemption.getPreemptedDllCount();
        if (count == 0) {
            continue; // would end the map
        }
        bytes.word(count);
        bytes.word(texts.offsetOf(preemption.getSymbolName()));
        bytes.word(texts.offsetOf(preemption.getPreemptingDllName()));
        for (uint32_t k = 0; k < count; ++k) {
            bytes.word(texts.offsetOf(preemption.getPreemptedDll(k)->getName()));
        }
    }
    bytes.word(0);
    if (state.isPlaced(section)) {
        bytes.resize(std::max(bytes.size(), section.getSettledContentsSize()));
    }
    state.setTable(section, bytes, section.getEntrySize());
    section.setLink(state.m_DynamicNames);
}

} // namespace elfext
