// Tables that the update of the auxiliary sections has left behind: those that are none of the ones
// in use.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/interface/prune_criteria.h"
#include "elfext/interface/section.h"

namespace elfext::elfext_src_object_module_yuk {

// String tables. Each of the three in use may be null, and two may be the same.
class DeleteStrtabSectionPruneCriteria : public PruneCriteria {
public:
    DeleteStrtabSectionPruneCriteria(const Section* names, const Section* symbolNames,
                                     const Section* dynamicNames)
        : m_Names(names), m_SymbolNames(symbolNames), m_DynamicNames(dynamicNames) {}

    bool matchesSection(const Section* section) override {
        return section->getType() == SHT_STRTAB && section != m_Names && section != m_SymbolNames &&
               section != m_DynamicNames;
    }

private:
    const Section* m_Names;
    const Section* m_SymbolNames;
    const Section* m_DynamicNames;
};

// Tables of extended section indexes: that of the static and that of the dynamic symbols.
class DeleteShndxSectionPruneCriteria : public PruneCriteria {
public:
    DeleteShndxSectionPruneCriteria(const Section* ofSymbols, const Section* ofDynamicSymbols)
        : m_OfSymbols(ofSymbols), m_OfDynamicSymbols(ofDynamicSymbols) {}

    bool matchesSection(const Section* section) override {
        return section->getType() == SHT_SYMTAB_SHNDX && section != m_OfSymbols &&
               section != m_OfDynamicSymbols;
    }

private:
    const Section* m_OfSymbols;
    const Section* m_OfDynamicSymbols;
};

} // namespace elfext::elfext_src_object_module_yuk
