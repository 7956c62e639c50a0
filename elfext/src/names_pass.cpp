// Gives the sections their names, out of the string table that the ELF header names.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

namespace elfext {
namespace {

// The number of the name table, 0 for none. One that does not fit into the ELF header stands in
// the link field of section 0.
bool findNameTable(ReadState& state, uint32_t& table) {
    table = state.m_ElfHeader.e_shstrndx;
    if (table == SHN_XINDEX) {
        if (state.m_SectionHeaders.empty()) {
            return reportFatal(state.m_Module, &ErrorHandler::sectionHeaderTableEmpty);
        }
        table = state.m_SectionHeaders[0].sh_link;
    }
    if (table == 0) {
        return true;
    }
    if (table >= state.sectionCount()) {
        return reportFatal(state.m_Module, &ErrorHandler::elfHeaderNameTableIndexBad, table,
                           state.lastSection());
    }
    const uint32_t type = state.m_SectionHeaders[table].sh_type;
    if (type != SHT_STRTAB) {
        return reportFatal(state.m_Module, &ErrorHandler::elfHeaderNameTableTypeBad, table, type);
    }
    return true;
}

// A section that wants a name where there are none.
bool checkNoNames(ReadState& state) {
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        if (state.m_SectionHeaders[i].sh_name != 0) {
            return askHandler(state.m_Module, &ErrorHandler::sectionNameWithoutTable, i);
        }
    }
    return true;
}

} // namespace

bool readSectionNames(ReadState& state) {
    uint32_t table = 0;
    if (!findNameTable(state, table)) {
        return false;
    }
    if (table == 0) {
        return checkNoNames(state);
    }
    ObjectModule& objectModule = state.m_Module;
    const uint64_t length = state.m_SectionHeaders[table].sh_size;
    const auto* const texts = reinterpret_cast<const char*>(state.contents(table).data());
    const bool isCopied = state.m_Stream.m_File != nullptr;
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const uint32_t offset = state.m_SectionHeaders[i].sh_name;
        if (offset == 0) {
            continue;
        }
        if (offset < length) {
            if (isCopied && !state.spendText(texts + offset)) {
                return false;
            }
            objectModule.getSection(i)->setName(texts + offset);
            objectModule.getSection(i)->setNameOffset(offset);
        } else if (!askHandler(objectModule, &ErrorHandler::sectionNameOffsetBad, i, offset,
                               length)) {
            return false;
        }
    }
    static_cast<StringTableSection*>(objectModule.getSection(table))->setServesSectionNames(true);
    return true;
}

} // namespace elfext
