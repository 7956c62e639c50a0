// What the special sections do beyond having a type.
#include "elfext/interface/special_sections.h"

#include "elfext/interface/object_module.h"

namespace elfext {

namespace {

// A type as the conditions of checks write it, whose texts are keys in reports.
constexpr uint32_t Type(SectionType type) {
    return type;
}

} // namespace

SymbolTableSection::SymbolTableSection(ObjectModule* objectModule, const char* name, uint32_t type)
    : Section(objectModule, true, false, name, type, 0) {
    TOMEX_CHECK(type == Type(SHT_SYMTAB) || type == Type(SHT_DYNSYM));
}

RelocationSection::RelocationSection(ObjectModule* objectModule, const char* name, uint32_t type,
                                     uint32_t flags)
    : Section(objectModule, true, false, name, type, flags) {
    TOMEX_CHECK(type == Type(SHT_REL) || type == Type(SHT_RELA));
}

void RelocationSection::setTarget(Section* target, bool isDynamic) {
    const auto listOf = [](Section* section, bool dynamic) -> fast_array<Section*>& {
        return dynamic ? section->m_DynamicRelocationSections : section->m_RelocationSections;
    };
    if (m_Target != nullptr) {
        listOf(m_Target, m_IsDynamic).removeValue(this);
    }
    m_Target = target;
    m_IsDynamic = isDynamic;
    if (target != nullptr) {
        listOf(target, isDynamic).add(this);
    }
    m_ObjectModule->markChanged();
}

} // namespace elfext
