#include "elfext/src/version_reader.h"

#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/version_records.h"
#include "elfext/src/read_state.h"

namespace elfext {
namespace {

// Sizes of the records, and where their fields lie.
constexpr uint64_t verdefSize = 20;
constexpr uint64_t verdauxSize = 8;
constexpr uint64_t verneedSize = 16;
constexpr uint64_t vernauxSize = 16;
enum VerdefField : uint32_t { vd_flags = 2, vd_ndx = 4, vd_cnt = 6, vd_aux = 12, vd_next = 16 };
enum VerdauxField : uint32_t { vda_name = 0, vda_next = 4 };
enum VerneedField : uint32_t { vn_cnt = 2, vn_file = 4, vn_aux = 8, vn_next = 12 };
enum VernauxField : uint32_t { vna_flags = 4, vna_other = 6, vna_name = 8, vna_next = 12 };

constexpr uint16_t firstVersion = VER_NDX_GLOBAL + 1;

constexpr uint16_t numberOf(uint16_t entry) {
    return entry & uint16_t{VERSYM_VERSION};
}

class VersionReader {
public:
    VersionReader(ReadState& state, const VersionSections& sections, const TextTable& texts)
        : m_State(state), m_Sections(sections), m_Texts(texts), m_Definitions(&state.m_Region),
          m_Requirements(&state.m_Region) {}

    void readDefinitions() {
        Walk walk(m_Sections.definitions);
        uint64_t place = 0;
        for (uint32_t i = 0; i < m_Sections.definitionCount; ++i) {
            if (!walk.visit(place, verdefSize)) {
                return;
            }
            readDefinition(walk, place);
            const uint32_t next = word(walk.bytes, place + vd_next);
            if (next == 0) {
                return;
            }
            place += next;
        }
    }

    void readRequirements() {
        Walk walk(m_Sections.requirements);
        uint64_t place = 0;
        for (uint32_t i = 0; i < m_Sections.requirementCount; ++i) {
            if (!walk.visit(place, verneedSize)) {
                return;
            }
            readLibrary(walk, place);
            const uint32_t next = word(walk.bytes, place + vn_next);
            if (next == 0) {
                return;
            }
            place += next;
        }
    }

    void tieSymbols(const SymbolsByNumber& symbols) {
        for (uint64_t i = 1; i < symbols.m_Count; ++i) {
            const uint16_t number = numberOf(half(m_Sections.versym, 2 * i));
            if (number >= firstVersion) {
                tieSymbol(*symbols.m_Symbols[i], number);
            }
        }
    }

    bool isWithinLimits() const { return m_IsWithinLimits; }

private:
    // Bounds the records of a section: none outside of it, and no more than could stand in it side
    // by side.
    struct Walk {
        explicit Walk(std::span<const uint8_t> sectionBytes)
            : bytes(sectionBytes), left(sectionBytes.size()) {}

        bool visit(uint64_t place, uint64_t size) {
            if (size > left || size > bytes.size() || place > bytes.size() - size) {
                return false;
            }
            left -= size;
            return true;
        }

        std::span<const uint8_t> bytes;
        uint64_t left;
    };

    uint16_t half(std::span<const uint8_t> bytes, uint64_t place) const {
        return assembleBytes<uint16_t>(bytes.data() + place, m_State.m_IsLittleEndian);
    }
    uint32_t word(std::span<const uint8_t> bytes, uint64_t place) const {
        return assembleBytes<uint32_t>(bytes.data() + place, m_State.m_IsLittleEndian);
    }

    // Null for an offset past the end, and for all once the read has passed its limits.
    const char* findText(uint32_t offset) {
        const char* const text = m_IsWithinLimits ? m_Texts.find(offset) : nullptr;
        m_IsWithinLimits = text == nullptr ? m_IsWithinLimits : m_State.spendText(text);
        return m_IsWithinLimits ? text : nullptr;
    }

    void readDefinition(Walk& walk, uint64_t place) {
        ObjectModule& objectModule = m_State.m_Module;
        const uint16_t flags = half(walk.bytes, place + vd_flags);
        const uint16_t number = numberOf(half(walk.bytes, place + vd_ndx));
        VersionDefinition* definition = nullptr;
        if ((flags & VER_FLG_BASE) != 0) {
            definition = objectModule.createFileVersionDefinition(number, flags);
        } else {
            auto* const ofSymbols = objectModule.createSymbolVersionDefinition(number, flags);
            if (!m_Definitions.containsKey(number)) {
                m_Definitions.set(number, ofSymbols);
            }
            definition = ofSymbols;
        }
        const uint16_t count = half(walk.bytes, place + vd_cnt);
        uint64_t aux = place + word(walk.bytes, place + vd_aux);
        for (uint32_t i = 0; i < count && walk.visit(aux, verdauxSize); ++i) {
            const char* const name = findText(word(walk.bytes, aux + vda_name));
            if (name != nullptr) {
                definition->addDefinedVersionIdentifier(name);
            }
            const uint32_t next = word(walk.bytes, aux + vda_next);
            if (next == 0) {
                return;
            }
            aux += next;
        }
    }

    void readLibrary(Walk& walk, uint64_t place) {
        const uint16_t count = half(walk.bytes, place + vn_cnt);
        uint64_t aux = place + word(walk.bytes, place + vn_aux);
        for (uint32_t i = 0; i < count && walk.visit(aux, vernauxSize); ++i) {
            const char* const library = findText(word(walk.bytes, place + vn_file));
            const char* const name = findText(word(walk.bytes, aux + vna_name));
            if (library != nullptr && name != nullptr) {
                addRequirement(numberOf(half(walk.bytes, aux + vna_other)),
                               half(walk.bytes, aux + vna_flags), library, name);
            }
            const uint32_t next = word(walk.bytes, aux + vna_next);
            if (next == 0) {
                return;
            }
            aux += next;
        }
    }

    void addRequirement(uint16_t key, uint16_t flags, const char* library, const char* name) {
        SymbolVersionRequirement* const requirement =
            m_State.m_Module.createSymbolVersionRequirement(key, flags, library, name);
        if (!m_Requirements.containsKey(key)) {
            m_Requirements.set(key, requirement);
        }
    }

    // What is defined here has a definition, unless it is a copy of another library's.
    void tieSymbol(Symbol& symbol, uint16_t number) {
        SymbolVersionDefinition** const definition = m_Definitions.find(number);
        if (definition != nullptr && symbol.getCategory() != Symbol::Category_Undefined) {
            symbol.setSymbolVersionDefinition(*definition);
            return;
        }
        SymbolVersionRequirement** const requirement = m_Requirements.find(number);
        if (requirement != nullptr) {
            symbol.setSymbolVersionRequirement(*requirement);
        }
    }

    ReadState& m_State;
    bool m_IsWithinLimits = true;
    const VersionSections& m_Sections;
    const TextTable& m_Texts;
    // By number; the first of a number is the one that counts.
    fast_hash_table<uint16_t, SymbolVersionDefinition*> m_Definitions;
    fast_hash_table<uint16_t, SymbolVersionRequirement*> m_Requirements;
};

} // namespace

bool readVersionDefinitions(ReadState& state, const VersionSections& sections,
                            const TextTable& texts) {
    VersionReader reader(state, sections, texts);
    reader.readDefinitions();
    return reader.isWithinLimits();
}

void readVersionEntries(ReadState& state, std::span<const uint8_t> versym, uint32_t symbolTable) {
    const SymbolsByNumber& symbols = state.m_SymbolsByTable[symbolTable];
    for (uint64_t i = 1; i < symbols.m_Count && i < versym.size() / 2; ++i) {
        symbols.m_Symbols[i]->setVersionEntry(
            assembleBytes<uint16_t>(versym.data() + 2 * i, state.m_IsLittleEndian));
    }
}

bool readVersions(ReadState& state, const VersionSections& sections, const TextTable& texts,
                  uint32_t symbolTable) {
    const SymbolsByNumber& symbols = state.m_SymbolsByTable[symbolTable];
    TOMEX_CHECK_TEXT(sections.versym.size() / 2 == symbols.m_Count, "nversyms == ndynsyms");
    VersionReader reader(state, sections, texts);
    reader.readDefinitions();
    reader.readRequirements();
    reader.tieSymbols(symbols);
    return reader.isWithinLimits();
}

} // namespace elfext
