// Makes the symbols of all symbol tables. Entry 0 of a table is no symbol.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

namespace elfext {
namespace {

// Names of a table that cannot be longer than this all together, wherever they are in its string
// table, are not measured one by one. That is so for most objects.
constexpr uint64_t fewNameBytes = 0x40000;

// One symbol table and what belongs to it.
class TableReader {
public:
    TableReader(ReadState& state, uint32_t table)
        : m_State(state), m_Module(state.m_Module), m_Table(table),
          m_IsDynamic(state.m_SectionHeaders[table].sh_type == SHT_DYNSYM),
          m_StringTable(state.m_SectionHeaders[table].sh_link),
          m_StringsLength(state.m_SectionHeaders[m_StringTable].sh_size),
          m_Strings(reinterpret_cast<const char*>(state.contents(m_StringTable).data())) {
        const auto* const section =
            static_cast<const SymbolTableSection*>(m_Module.getSection(table));
        const ShndxSection* const extension = section->getShndxSection();
        m_HasIndexes = extension != nullptr;
        if (m_HasIndexes) {
            m_Indexes = state.contents(extension->getIndex());
        }
    }

    bool run() {
        const uint64_t count = m_State.symbolCount(m_Table);
        if (!m_State.spendBytes(m_State.m_SectionHeaders[m_Table].sh_size)) {
            return false;
        }
        m_Symbols = ReadState::takeTable<Symbol*>(*m_Module.getContainerRegion(), count);
        m_State.m_SymbolsByTable[m_Table] = {m_Symbols.data(), count};
        if (count < 2) {
            return true;
        }
        const uint64_t nameBytes = count * m_StringsLength;
        m_AreNamesMeasured = nameBytes > fewNameBytes;
        if (!m_AreNamesMeasured && !m_State.spendSteps(nameBytes)) {
            return false;
        }
        m_Module.reserveSymbols(static_cast<uint32_t>(count - 1), m_IsDynamic);
        const uint8_t* const entries = m_State.contents(m_Table).data();
        return withLayout(m_State.m_Is64, m_State.m_IsLittleEndian, [&](auto layout) {
            for (uint64_t i = 1; i < count; ++i) {
                if (!readSymbol(i, layout.symbol(entries + i * layout.sizes.symbol))) {
                    return false;
                }
            }
            return true;
        });
    }

private:
    bool readSymbol(uint64_t number, const Elf64_Sym& entry) {
        SymbolFields fields;
        fields.m_Size = entry.st_size;
        fields.m_Type = entry.st_info & 0xF;
        fields.m_Binding = entry.st_info >> 4;
        fields.m_Visibility = entry.st_other & 0x3;
        fields.m_OtherBits = entry.st_other;
        if (!readName(number, entry.st_name, fields)) {
            return false;
        }
        switch (entry.st_shndx) {
        case SHN_ABS:
            m_Symbols[number] = (m_Module.*(m_IsDynamic ? &ObjectModule::createDynamicAbsoluteSymbol
                                                        : &ObjectModule::createAbsoluteSymbol))(
                fields, entry.st_value);
            return checkOutsideSections(number, fields);
        case SHN_COMMON:
            m_Symbols[number] = (m_Module.*(m_IsDynamic ? &ObjectModule::createDynamicCommonSymbol
                                                        : &ObjectModule::createCommonSymbol))(
                fields, entry.st_value);
            return checkOutsideSections(number, fields);
        case SHN_UNDEF:
            m_Symbols[number] =
                (m_Module.*(m_IsDynamic ? &ObjectModule::createDynamicUndefinedSymbol
                                        : &ObjectModule::createUndefinedSymbol))(fields);
            if (entry.st_value != 0) {
                m_Symbols[number]->setUndefinedValue(entry.st_value);
            }
            return checkOutsideSections(number, fields);
        case SHN_XINDEX:
            return readExtended(number, fields, entry.st_value);
        default:
            return host(number, fields, entry.st_shndx, entry.st_value);
        }
    }

    bool readName(uint64_t number, uint32_t offset, SymbolFields& fields) {
        if (offset == 0) {
            return true;
        }
        if (offset < m_StringsLength) {
            fields.m_Name = m_Strings + offset;
            return !m_AreNamesMeasured || m_State.spendText(fields.m_Name);
        }
        return askHandler(m_Module, &ErrorHandler::symbolNameOffsetBad, number, m_IsDynamic,
                          m_Table, offset, m_StringTable, m_StringsLength);
    }

    bool readExtended(uint64_t number, const SymbolFields& fields, uint64_t value) {
        if (!m_HasIndexes) {
            return reportFatal(m_Module, &ErrorHandler::symbolXindexWithoutShndx, number,
                               m_IsDynamic, m_Table);
        }
        const auto index =
            assembleBytes<uint32_t>(m_Indexes.data() + 4 * number, m_State.m_IsLittleEndian);
        return host(number, fields, index, value);
    }

    bool host(uint64_t number, const SymbolFields& fields, uint32_t index, uint64_t value) {
        if (index >= m_State.sectionCount()) {
            return reportFatal(m_Module, &ErrorHandler::symbolSectionIndexBad, number, m_IsDynamic,
                               m_Table, index, m_State.lastSection());
        }
        Section* const section = m_Module.getSection(index);
        const uint64_t offset = m_Module.hasAddresses() ? value - section->getAddress() : value;
        m_Symbols[number] = m_IsDynamic
                                ? m_Module.createDynamicHostedSymbol(fields, section, offset)
                                : m_Module.createHostedSymbol(fields, section, offset);
        return true;
    }

    bool checkOutsideSections(uint64_t number, const SymbolFields& fields) {
        return fields.m_Type != STT_SECTION ||
               askHandler(m_Module, &ErrorHandler::sectionSymbolNotInSection, number, m_IsDynamic,
                          m_Table);
    }

    ReadState& m_State;
    ObjectModule& m_Module;
    const uint32_t m_Table;
    const bool m_IsDynamic;
    const uint32_t m_StringTable;
    const uint64_t m_StringsLength;
    const char* const m_Strings;
    bool m_AreNamesMeasured = false;
    bool m_HasIndexes = false;
    std::span<const uint8_t> m_Indexes; // words, as many as there are entries
    std::span<Symbol*> m_Symbols;
};

} // namespace

bool readSymbols(ReadState& state) {
    state.m_SymbolsByTable = state.takeTable<SymbolsByNumber>(state.sectionCount());
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const uint32_t type = state.m_SectionHeaders[i].sh_type;
        const bool isTable = type == SHT_SYMTAB || type == SHT_DYNSYM;
        if (isTable && !state.m_IsBadSection[i] && !TableReader(state, i).run()) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
