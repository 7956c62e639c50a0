// Reads build attributes: those of the attributes sections, and where there are none, those that
// stand in names of symbols.
//
// A symbol "BuildAttributes$..." states the attributes of the section that it lies in, or of the
// module; an absolute one "name$$BuildAttributes$..." those of the symbols of that name. Objects
// with a section of attributes carry such symbols too, for tools of old, so the section wins.
#include "elfext/src/reader_passes.h"

#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/src/read_state.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_set>

namespace elfext {
namespace {

using attributes::BuildAttributes;

// What a record costs that is laid over another, in steps of a search.
constexpr uint64_t stepsPerOverlay = 256;

void dropAllAttributes(ObjectModule& objectModule) {
    objectModule.dropBuildAttributes();
    for (Section* const section : objectModule.getSections()) {
        section->dropBuildAttributes();
    }
    for (Symbol* const symbol : objectModule.getSymbols()) {
        symbol->dropBuildAttributes();
    }
    for (Symbol* const symbol : objectModule.getDynamicSymbols()) {
        symbol->dropBuildAttributes();
    }
}

// True if every pass over the section found it sound.
bool injectSection(ReadState& state, uint32_t section) {
    constexpr uint32_t passCount = 3; // of the file, of sections, of symbols
    const std::span<const uint8_t> bytes = state.contents(section);
    for (uint32_t pass = 0; pass < passCount; ++pass) {
        BuildAttributesInjector injector(&state.m_Module, pass);
        if (!injector.parse(bytes.data(), bytes.size(), state.m_IsLittleEndian)) {
            return false;
        }
    }
    return true;
}

// Notes that nothing of a section has been taken over, if it is one of attributes.
void leaveOut(const ReadState& state, uint32_t section) {
    if (state.m_SectionHeaders[section].sh_type == SHT_QEL_ATTRIBUTES) {
        static_cast<BuildAttributesSection*>(state.m_Module.getSection(section))
            ->setIsUnderstood(false);
    }
}

// `isParsed` tells whether a section has been taken. After a corrupted one nothing counts.
bool readSections(ReadState& state, bool& isParsed) {
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        if (state.m_SectionHeaders[i].sh_type != SHT_QEL_ATTRIBUTES) {
            continue;
        }
        state.m_Properties |= ModuleProperty_BuildAttributesSection;
        if (state.m_IsBadSection[i]) {
            leaveOut(state, i);
            continue;
        }
        if (!state.spendBytes(state.contents(i).size())) {
            return false;
        }
        if (injectSection(state, i)) {
            isParsed = true;
            continue;
        }
        if (!askHandler(state.m_Module, &ErrorHandler::buildAttributesCorrupted, i)) {
            return false;
        }
        dropAllAttributes(state.m_Module);
        for (uint32_t k = 0; k < state.sectionCount(); ++k) {
            leaveOut(state, k);
        }
        isParsed = false;
        break;
    }
    return true;
}

// True if a static symbol table's names hold the marker anywhere. Most files have none.
bool mayHaveMarkers(const ReadState& state) {
    const std::string_view marker(attributes::MarkerText, attributes::MarkerLength);
    std::unordered_set<const Section*> searched; // tables may share their names
    for (const Section* const table : state.m_Module.getSymtabSections()) {
        const Section* const strings = table->getLink();
        if (strings == nullptr || !searched.insert(strings).second) {
            continue;
        }
        const Buffer& bytes = strings->getLoadedContents();
        const std::string_view texts(reinterpret_cast<const char*>(bytes.getData()),
                                     static_cast<size_t>(bytes.getSize()));
        if (texts.find(marker) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

class SymbolAttributes {
public:
    SymbolAttributes(ReadState& state, bool isSectionParsed)
        : m_State(state), m_Module(state.m_Module), m_IsSectionParsed(isSectionParsed) {}

    bool run() {
        if (!spendNames()) {
            return false;
        }
        bool isFirst = true;
        for (Symbol* const symbol : m_Module.getSymbols()) {
            if (!symbol->isBuildAttributesSymbol()) {
                continue;
            }
            if (isFirst) {
                m_State.m_Properties |= ModuleProperty_SymbolWithBuildAttributes;
                if (m_IsSectionParsed && m_Module.hasBuildAttributes()) {
                    return true;
                }
                dropAllAttributes(m_Module);
                isFirst = false;
            }
            if (!readSymbol(*symbol)) {
                return false;
            }
        }
        return true;
    }

private:
    // Names may share their bytes, so all of them together can be long: too long to be searched and
    // sorted.
    bool spendNames() {
        for (const Symbol* const symbol : m_Module.getSymbols()) {
            const char* const name = symbol->getName();
            if (name != nullptr && !m_State.spendSteps(std::strlen(name))) {
                return false;
            }
        }
        return true;
    }

    bool readSymbol(Symbol& symbol) {
        const std::string_view name(symbol.getName());
        if (name.starts_with(attributes::MarkerText)) {
            const char* const text = symbol.getName() + attributes::MarkerLength;
            if (symbol.getCategory() == Symbol::Category_Hosted) {
                return apply(*symbol.getSection(), statedBy(text));
            }
            return apply(m_Module, statedBy(text));
        }
        return decorate(symbol, name);
    }

    // The symbols of the name in front of the marker. A marker with nothing in front says nothing.
    bool decorate(const Symbol& decorated, std::string_view name) {
        const size_t prefixLength = name.find(attributes::SymbolMarkerText);
        if (prefixLength == 0 || prefixLength == std::string_view::npos) {
            return true;
        }
        const std::string prefix(name.substr(0, prefixLength));
        const char* const text =
            decorated.getName() + prefixLength + attributes::SymbolMarkerLength;
        SymbolList targets;
        m_Module.findSymbols(prefix.c_str(), targets);
        // The text may be as long as the file, so it is not read for each of them.
        const BuildAttributes stated = statedBy(text);
        for (uint32_t i = 0; i < targets.getSize(); ++i) {
            if (!apply(*targets[i], stated)) {
                return false;
            }
        }
        return true;
    }

    BuildAttributes statedBy(const char* text) {
        attributes::BuildAttributesCache& cache = *m_Module.getBuildAttributesCache();
        return {text, cache.getMemo(), cache};
    }

    // A target that has attributes keeps those that the text does not state.
    bool apply(ObjectWithBuildAttributes& target, const BuildAttributes& stated) {
        if (!m_State.spendSteps(stepsPerOverlay)) {
            return false;
        }
        const BuildAttributes* const present = target.getOwnBuildAttributes();
        if (present == nullptr) {
            target.setBuildAttributes(stated);
            return true;
        }
        BuildAttributes both;
        attributes::overlay(both, *present, stated);
        if (both.derivedStale) {
            target.setBuildAttributes(both);
        }
        return true;
    }

    ReadState& m_State;
    ObjectModule& m_Module;
    const bool m_IsSectionParsed;
};

} // namespace

bool readBuildAttributes(ReadState& state) {
    bool isSectionParsed = false;
    if (!readSections(state, isSectionParsed)) {
        return false;
    }
    return !mayHaveMarkers(state) || SymbolAttributes(state, isSectionParsed).run();
}

} // namespace elfext
