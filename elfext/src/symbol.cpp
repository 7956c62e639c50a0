// A symbol's value, its category, and the list that goes with it.
#include "elfext/interface/symbol.h"

#include "attributes/interface/build_attributes.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/version_records.h"

#include <cstring>

namespace elfext {

SymbolKind getSymbolKind(const char* name) {
    if (name == nullptr || name[0] != '$' || name[1] == '\0') {
        return SymbolKind_Ordinary;
    }
    if (std::strchr("adtx", name[1]) != nullptr) {
        return name[2] == '\0' || name[2] == '.' ? SymbolKind_Mapping : SymbolKind_Ordinary;
    }
    return std::strchr("bfpv", name[1]) != nullptr ? SymbolKind_SecondMapping : SymbolKind_Ordinary;
}

void Symbol::getParentBuildAttributes(attributes::BuildAttributes& result) const {
    if (m_Category == Category_Hosted) {
        m_Value.m_Section->getBuildAttributes(result);
    } else {
        m_ObjectModule->getBuildAttributes(result);
    }
}

void Symbol::setName(const char* name) {
    m_Name = m_ObjectModule->keepText(name);
    markListsUnsorted();
}

void Symbol::setSize(uint64_t size) {
    m_Size = size;
    markChanged();
}

void Symbol::setType(uint32_t type) {
    m_Type = type;
    markChanged();
}

void Symbol::setBinding(uint32_t binding) {
    m_Binding = binding;
    markChanged();
}

void Symbol::setVisibility(uint32_t visibility) {
    m_Visibility = visibility;
    markChanged();
}

void Symbol::setOtherBits(uint8_t otherBits) {
    m_OtherBits = otherBits & OtherBitsMask;
    markChanged();
}

// --- Values

uint64_t Symbol::getAbsoluteValue() const {
    TOMEX_CHECK(m_Category == Category_Absolute);
    return m_Value.m_Number;
}

void Symbol::setAbsoluteValue(uint64_t value) {
    TOMEX_CHECK(m_Category == Category_Absolute);
    m_Value.m_Number = value;
    markListsUnsorted();
}

uint64_t Symbol::getCommonValue() const {
    TOMEX_CHECK(m_Category == Category_Common);
    return m_Value.m_Number;
}

void Symbol::setCommonValue(uint64_t value) {
    TOMEX_CHECK(m_Category == Category_Common);
    m_Value.m_Number = value;
    markChanged();
}

uint64_t Symbol::getUndefinedValue() const {
    TOMEX_CHECK(m_Category == Category_Undefined);
    return m_Value.m_Number;
}

void Symbol::setUndefinedValue(uint64_t value) {
    TOMEX_CHECK(m_Category == Category_Undefined);
    m_Value.m_Number = value;
    markChanged();
}

Section* Symbol::getSection() const {
    TOMEX_CHECK(m_Category == Category_Hosted);
    return m_Value.m_Section;
}

uint64_t Symbol::getOffset() const {
    TOMEX_CHECK(m_Category == Category_Hosted);
    return m_Offset;
}

void Symbol::setOffset(uint64_t offset) {
    TOMEX_CHECK(m_Category == Category_Hosted);
    m_Offset = offset;
    markListsUnsorted();
}

uint64_t Symbol::getAddress() const {
    switch (m_Category) {
    case Category_Absolute:
        return m_Value.m_Number;
    case Category_Hosted:
        return m_Value.m_Section->getAddress() + m_Offset;
    default:
        return 0;
    }
}

uint64_t Symbol::getAbiValue() const {
    const uint64_t mask = m_Type == STT_FUNC ? ~uint64_t{1} : ~uint64_t{0};
    switch (m_Category) {
    case Category_Hosted: {
        const uint64_t base = m_ObjectModule->hasAddresses() ? m_Value.m_Section->getAddress() : 0;
        return (m_Offset & mask) + base;
    }
    case Category_Absolute:
    case Category_Common:
        return m_Value.m_Number & mask;
    default:
        return 0;
    }
}

bool Symbol::isBuildAttributesSymbol() const {
    if (m_Name == nullptr || (m_Category != Category_Hosted && m_Category != Category_Absolute)) {
        return false;
    }
    return std::strncmp(m_Name, attributes::MarkerText, attributes::MarkerLength) == 0 ||
           (m_Category == Category_Absolute &&
            std::strstr(m_Name, attributes::SymbolMarkerText) != nullptr);
}

// --- Category

void Symbol::leaveList() {
    markListsUnsorted();
    categoryList().removeValue(this);
}

// In between, a symbol that moves is as good as new.
void Symbol::beNew() {
    leaveList();
    m_Category = Category_Undefined;
    m_Value.m_Number = 0;
    m_Offset = 0;
}

void Symbol::makeAbsolute(uint64_t value) {
    beNew();
    settle(Category_Absolute, value);
}

void Symbol::makeCommon(uint64_t value) {
    beNew();
    settle(Category_Common, value);
}

void Symbol::makeHosted(Section* section, uint64_t offset) {
    beNew();
    settleIn(section, offset);
}

// A definition's version goes with the definition.
void Symbol::makeUndefined() {
    beNew();
    m_SymbolVersionDefinition = nullptr;
    settle(Category_Undefined, 0);
}

// --- Relations

void Symbol::setSymbolVersionDefinition(SymbolVersionDefinition* definition) {
    TOMEX_CHECK(m_IsDynamic);
    TOMEX_CHECK(getCategory() != Category_Undefined);
    m_SymbolVersionDefinition = definition;
    markChanged();
}

void Symbol::setSymbolVersionRequirement(SymbolVersionRequirement* requirement) {
    TOMEX_CHECK(m_IsDynamic);
    m_SymbolVersionRequirement = requirement;
    markChanged();
}

void Symbol::setVersionEntry(uint16_t entry) {
    TOMEX_CHECK(m_IsDynamic);
    m_VersionEntry = entry;
    markChanged();
}

void Symbol::setLinkedSymbol(Symbol* symbol) {
    TOMEX_CHECK_TEXT(symbol == nullptr || symbol->getObjectModule() == m_ObjectModule,
                     "symbol == NULL || symbol->getObjectModule() == m_ObjectModule");
    m_LinkedSymbol = symbol;
    markChanged();
}

} // namespace elfext
