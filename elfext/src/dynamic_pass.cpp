// Reads the dynamic sections: what a program or library asks of the system that loads it.
//
// A dynamic section is a list of tags with values. Of both only the low 32 bits count. Values that
// are texts are offsets in the section's string table; those outside of it are left out without a
// word, as are all tags that nothing here knows.
#include "elfext/src/reader_passes.h"

#include "elfext/src/dynamic_tags.h"
#include "elfext/src/preemption_map.h"
#include "elfext/src/read_state.h"
#include "elfext/src/text_table.h"
#include "elfext/src/version_reader.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace elfext {
namespace {

// Tags that are noted as a property of the file.
struct PropertyTag {
    uint32_t tag;
    uint32_t property;
};
constexpr PropertyTag propertyTags[] = {
    {DT_DEBUG, ModuleProperty_DebugTag},
    {DT_QEL_MODULE, ModuleProperty_QelModuleTag},
};

// Tags whose value is a text.
constexpr uint32_t textTags[] = {DT_NEEDED, DT_SONAME, DT_RPATH, DT_RUNPATH};

// The numbers of the last sections of their types.
struct DynamicTables {
    std::optional<uint32_t> symbols;
    std::optional<uint32_t> definitions;
    std::optional<uint32_t> requirements;
    std::optional<uint32_t> versym;
};

DynamicTables findTables(const ReadState& state) {
    DynamicTables tables;
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        switch (state.m_SectionHeaders[i].sh_type) {
        case SHT_DYNSYM:
            tables.symbols = i;
            break;
        case SHT_GNU_verdef:
            tables.definitions = i;
            break;
        case SHT_GNU_verneed:
            tables.requirements = i;
            break;
        case SHT_GNU_versym:
            tables.versym = i;
            break;
        default:
            break;
        }
    }
    return tables;
}

class DynamicSectionReader {
public:
    DynamicSectionReader(ReadState& state, uint32_t section, const DynamicTables& tables)
        : m_State(state), m_Module(state.m_Module), m_Tables(tables), m_Section(section) {
        const uint32_t link = state.m_SectionHeaders[section].sh_link;
        if (link != 0) {
            m_Texts = TextTable(state.contents(link));
        }
    }

    bool run() {
        const std::span<const uint8_t> entries = m_State.contents(m_Section);
        if (!m_State.spendBytes(entries.size()) || !readTags(entries)) {
            return false;
        }
        readEntriesOfVersions();
        return readVersionSections();
    }

private:
    bool readTags(std::span<const uint8_t> entries) {
        return withLayout(m_State.m_Is64, m_State.m_IsLittleEndian, [&](auto layout) {
            const uint64_t entrySize = layout.sizes.dynamicEntry;
            for (uint64_t i = 0; i < entries.size() / entrySize; ++i) {
                const uint8_t* const entry = entries.data() + i * entrySize;
                const auto tag = static_cast<uint32_t>(layout.address(entry));
                if (tag == DT_NULL) {
                    return true;
                }
                const auto value =
                    static_cast<uint32_t>(layout.address(entry + layout.sizes.address));
                if (!applyTag(tag, value)) {
                    return false;
                }
            }
            return true;
        });
    }

    bool applyTag(uint32_t tag, uint32_t value) {
        applyTables(tag, value);
        const bool isText =
            std::find(std::begin(textTags), std::end(textTags), tag) != std::end(textTags);
        const char* const text = isText && value != 0 ? m_Texts.find(value) : nullptr;
        if (text != nullptr && !m_State.spendText(text)) {
            return false;
        }
        switch (tag) {
        case DT_NEEDED:
            if (text != nullptr) {
                m_Module.addNeededLibrary(text);
            }
            break;
        case DT_SONAME:
            if (text != nullptr) {
                m_Module.setSoName(text);
            }
            break;
        case DT_RPATH:
        case DT_RUNPATH:
            if (text != nullptr) {
                m_Module.addLibrarySearchPath(text, tag);
            }
            break;
        case DT_FLAGS:
            m_Module.addDynamicFlags(value);
            break;
        case DT_VERDEFNUM:
            m_DefinitionCount = m_DefinitionCount.value_or(value);
            break;
        case DT_VERNEEDNUM:
            m_RequirementCount = m_RequirementCount.value_or(value);
            break;
        case DT_QEL_PREEMPTMAP:
            return readPreemptions(value);
        default:
            break;
        }
        return true;
    }

    void applyTables(uint32_t tag, uint32_t value) {
        for (const ValueTag& row : valueTags) {
            if (row.tag == tag) {
                (m_Module.*row.set)(value);
            }
        }
        for (const FlagTag& row : flagTags) {
            if (row.tag == tag) {
                m_Module.addDynamicFlags(row.flag);
            }
        }
        for (const PropertyTag& row : propertyTags) {
            if (row.tag == tag) {
                m_State.m_Properties |= row.property;
            }
        }
    }

    // The value is a file offset in the system profile of the 32-bit processor, elsewhere an
    // address.
    bool readPreemptions(uint32_t position) {
        const bool isFileOffset =
            m_State.m_ElfHeader.e_machine == EM_QEL && m_Module.getOsAbi() == ELFOSABI_QEL;
        if (!m_State.spendSteps(m_State.sectionCount())) {
            return false;
        }
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const Elf64_Shdr& header = m_State.m_SectionHeaders[i];
            const bool isCandidate =
                header.sh_type != SHT_NULL && (!isFileOffset || header.sh_type != SHT_NOBITS);
            const uint64_t start = isFileOffset ? header.sh_offset : header.sh_addr;
            if (isCandidate && start <= position && position - start < header.sh_size) {
                std::span<const uint8_t> bytes;
                return findBytes(i, bytes) && readPreemptionMap(m_State, m_Module.getSection(i),
                                                                bytes, position - start, m_Texts);
            }
        }
        return true;
    }

    // The contents of a section, also if they were left in the file; nothing if they cannot be
    // read. False if the read has passed its limits.
    bool findBytes(uint32_t section, std::span<const uint8_t>& bytes) {
        if (!m_Module.getSection(section)->isContentsDeferred()) {
            bytes = m_State.contents(section);
            return true;
        }
        const Elf64_Shdr& header = m_State.m_SectionHeaders[section];
        if (lowlevel::checkBytes(header.sh_offset, header.sh_size) != LowLevelStatus_Good) {
            return true;
        }
        if (!m_State.spendBytes(header.sh_size)) {
            return false;
        }
        const std::span<uint8_t> block = m_State.takeTable<uint8_t>(header.sh_size);
        if (lowlevel::readBytes(block.data(), header.sh_offset, header.sh_size) ==
            LowLevelStatus_Good) {
            bytes = block;
        }
        return true;
    }

    // They hold good whatever becomes of the versions that they name.
    void readEntriesOfVersions() {
        if (m_Tables.symbols.has_value() && m_Tables.versym.has_value()) {
            const std::span<const uint8_t> versym = m_State.contents(*m_Tables.versym);
            if (m_State.symbolCount(*m_Tables.symbols) == versym.size() / 2) {
                readVersionEntries(m_State, versym, *m_Tables.symbols);
            }
        }
    }

    // Versions count only if the tags and the sections agree.
    bool readVersionSections() {
        if (m_DefinitionCount.has_value() != m_Tables.definitions.has_value() ||
            m_RequirementCount.has_value() != m_Tables.requirements.has_value() ||
            !m_Tables.versym.has_value()) {
            return true;
        }
        VersionSections sections;
        sections.versym = m_State.contents(*m_Tables.versym);
        if (m_Tables.definitions.has_value()) {
            sections.definitions = m_State.contents(*m_Tables.definitions);
            sections.definitionCount = *m_DefinitionCount;
        }
        if (m_Tables.requirements.has_value()) {
            sections.requirements = m_State.contents(*m_Tables.requirements);
            sections.requirementCount = *m_RequirementCount;
        }
        if (!m_Tables.symbols.has_value()) {
            return readVersionDefinitions(m_State, sections, m_Texts);
        }
        return m_State.symbolCount(*m_Tables.symbols) != sections.versym.size() / 2 ||
               readVersions(m_State, sections, m_Texts, *m_Tables.symbols);
    }

    ReadState& m_State;
    ObjectModule& m_Module;
    const DynamicTables& m_Tables;
    const uint32_t m_Section;
    TextTable m_Texts;
    std::optional<uint32_t> m_DefinitionCount; // the first tag's
    std::optional<uint32_t> m_RequirementCount;
};

} // namespace

bool readDynamicSections(ReadState& state) {
    const fast_array<Section*>& sections = state.m_Module.getDynamicSections();
    if (sections.getSize() == 0) {
        return true;
    }
    const DynamicTables tables = findTables(state);
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const bool isDynamic = state.m_SectionHeaders[i].sh_type == SHT_DYNAMIC;
        if (isDynamic && !state.m_IsBadSection[i] &&
            !DynamicSectionReader(state, i, tables).run()) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
