// Makes the relocations of one section when they are asked for.
//
// Most readers of a module never look at relocations, and in an object there are more of them than
// of anything else. So the reader checks the entries of all tables where they lie, and leaves one
// of these with each section that is relocated. It lies in the module's container region and lives
// as long as the module's contents.
#pragma once

#include "elfext/interface/section.h"
#include "elfext/interface/special_sections.h"
#include "elfext/src/read_state.h"

#include <cstdint>

namespace elfext {

// A table of relocations for a section; the tables of one section form a list in file order.
struct RelocationTable {
    RelocationSection* m_Section = nullptr;
    SymbolsByNumber m_Symbols; // what the entries refer to
    RelocationTable* m_Next = nullptr;
};

class TargetRelocationLoader : public RelocationLoader {
public:
    TargetRelocationLoader(bool is64, bool isLittleEndian)
        : m_Is64(is64), m_IsLittleEndian(isLittleEndian) {}

    // Appends a table, which must live as long as this object.
    void addTable(RelocationTable* table);

    void loadRelocations(Section& section) override;

private:
    bool m_Is64;
    bool m_IsLittleEndian;
    RelocationTable* m_First = nullptr;
    RelocationTable* m_Last = nullptr;
    uint32_t m_Count = 0; // of tables, as far as they are told apart
};

} // namespace elfext
