// The fields of a relocation.
#include "elfext/interface/relocation.h"

#include "elfext/interface/object_module.h"

namespace elfext {

Relocation::Relocation(Section* section, uint64_t offset, uint16_t type, Symbol* target)
    : m_Offset(offset), m_Section(section), m_Target(target), m_Type(type),
      m_IsDynamic(target != nullptr && target->isDynamic()) {
}

void Relocation::markChanged() {
    m_Section->m_ObjectModule->markChanged();
}

void Relocation::setOffset(uint64_t offset) {
    m_Offset = offset;
    m_Section->m_RelocationsSorted = false;
    markChanged();
}

void Relocation::setType(uint16_t type) {
    m_Type = type;
    m_UpperType = 0;
    markChanged();
}

void Relocation::setTarget(Symbol* target) {
    m_Target = target;
    if (target != nullptr) {
        m_IsDynamic = target->isDynamic();
    }
    markChanged();
}

void Relocation::setIsDynamic(bool isDynamic) {
    TOMEX_CHECK_TEXT(m_Target == nullptr, "m_Target == NULL");
    m_IsDynamic = isDynamic;
    markChanged();
}

uint64_t Relocation::getAddend() const {
    TOMEX_CHECK(m_HasAddend);
    return m_Addend;
}

void Relocation::setAddend(uint64_t addend) {
    TOMEX_CHECK(m_HasAddend);
    m_Addend = addend;
    markChanged();
}

void Relocation::setHasAddend(bool hasAddend) {
    m_HasAddend = hasAddend;
    m_Addend = 0;
    markChanged();
}

} // namespace elfext
