// How symbols come into being: a module makes one, and it settles in the list of its category.
//
// A file has more symbols than anything else, so all of that way lies in this file, where the
// compiler sees it whole.
#include "elfext/interface/object_module.h"
#include "elfext/interface/symbol.h"
#include "elfext/src/object_module_make.h"

#include <algorithm>

namespace elfext {

namespace {

// Memory for expected symbols is taken this many at a time: few pieces, and little is lost where
// fewer come than were expected.
constexpr uint32_t symbolsAtATime = 64;

} // namespace

// --- Settling

Symbol::Symbol(ObjectModule* objectModule, const char* name, uint64_t size, uint32_t type,
               uint32_t binding, uint32_t visibility, bool isDynamic)
    : ObjectWithBuildAttributes(objectModule, objectModule->getBuildAttributesCache()),
      m_IsDynamic(isDynamic), m_Name(objectModule->keepText(name)), m_Size(size), m_Type(type),
      m_Binding(binding), m_Visibility(visibility) {
}

void Symbol::markChanged() {
    m_ObjectModule->markChanged();
}

void Symbol::markListsUnsorted() {
    m_ObjectModule->m_SymbolListsSorted = false;
    if (m_Category == Category_Hosted) {
        m_Value.m_Section->m_HostedSymbolListsSorted = false;
    }
    markChanged();
}

ObjectModule::SymbolArray& ObjectModule::categoryList(Symbol::Category category, bool isDynamic) {
    switch (category) {
    case Symbol::Category_Absolute:
        return isDynamic ? m_AbsoluteDynamicSymbols : m_AbsoluteSymbols;
    case Symbol::Category_Common:
        return isDynamic ? m_CommonDynamicSymbols : m_CommonSymbols;
    default:
        return isDynamic ? m_UndefinedDynamicSymbols : m_UndefinedSymbols;
    }
}

fast_array<Symbol*>& Symbol::categoryList() {
    return m_Category == Category_Hosted ? m_Value.m_Section->hostedList(m_IsDynamic)
                                         : m_ObjectModule->categoryList(m_Category, m_IsDynamic);
}

void Symbol::enterList() {
    categoryList().add(this);
    markListsUnsorted();
}

// The first place of a new symbol, which is undefined and in no list yet.
void Symbol::settle(Category category, uint64_t value) {
    TOMEX_CHECK(m_Category == Category_Undefined);
    m_Category = category;
    m_Value.m_Number = value;
    enterList();
}

void Symbol::settleIn(Section* section, uint64_t offset) {
    TOMEX_CHECK(m_Category == Category_Undefined);
    TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
    TOMEX_CHECK(section->getObjectModule() == m_ObjectModule);
    m_Category = Category_Hosted;
    m_Value.m_Section = section;
    m_Offset = offset;
    enterList();
}

// --- Making

void ObjectModule::reserveSymbols(uint32_t count, bool isDynamic) {
    SymbolArray& list = isDynamic ? m_DynamicSymbols : m_Symbols;
    list.reserve(list.getSize() + count);
    m_SymbolsExpected = count;
}

void* ObjectModule::takeSymbolMemory() {
    if (m_SymbolStorageCount == 0) {
        const uint32_t count = std::clamp(m_SymbolsExpected, 1U, symbolsAtATime);
        m_SymbolsExpected -= std::min(m_SymbolsExpected, count);
        m_SymbolStorage =
            static_cast<char*>(alloclib::allocate(*getObjectRegion(), count * sizeof(Symbol), 8));
        m_SymbolStorageCount = count;
    }
    void* const memory = m_SymbolStorage;
    m_SymbolStorage += sizeof(Symbol);
    --m_SymbolStorageCount;
    return memory;
}

Symbol* ObjectModule::makeSymbol(const SymbolFields& fields, bool isDynamic) {
    changeStructure();
    auto* const symbol =
        new (takeSymbolMemory()) Symbol(this, fields.m_Name, fields.m_Size, fields.m_Type,
                                        fields.m_Binding, fields.m_Visibility, isDynamic);
    symbol->m_OtherBits = fields.m_OtherBits & Symbol::OtherBitsMask;
    SymbolArray& list = isDynamic ? m_DynamicSymbols : m_Symbols;
    symbol->m_Index = list.getSize();
    list.add(symbol);
    return symbol;
}

Symbol* ObjectModule::makeSettled(const SymbolFields& fields, Symbol::Category category,
                                  uint64_t value, bool isDynamic) {
    Symbol* const symbol = makeSymbol(fields, isDynamic);
    symbol->settle(category, value);
    return symbol;
}

Symbol* ObjectModule::makeHosted(const SymbolFields& fields, Section* section, uint64_t offset,
                                 bool isDynamic) {
    Symbol* const symbol = makeSymbol(fields, isDynamic);
    symbol->settleIn(section, offset);
    return symbol;
}

Symbol* ObjectModule::createAbsoluteSymbol(const SymbolFields& fields, uint64_t value) {
    return makeSettled(fields, Symbol::Category_Absolute, value, false);
}

Symbol* ObjectModule::createCommonSymbol(const SymbolFields& fields, uint64_t value) {
    return makeSettled(fields, Symbol::Category_Common, value, false);
}

Symbol* ObjectModule::createUndefinedSymbol(const SymbolFields& fields) {
    return makeSettled(fields, Symbol::Category_Undefined, 0, false);
}

Symbol* ObjectModule::createHostedSymbol(const SymbolFields& fields, Section* section,
                                         uint64_t offset) {
    return makeHosted(fields, section, offset, false);
}

Symbol* ObjectModule::createDynamicAbsoluteSymbol(const SymbolFields& fields, uint64_t value) {
    return makeSettled(fields, Symbol::Category_Absolute, value, true);
}

Symbol* ObjectModule::createDynamicCommonSymbol(const SymbolFields& fields, uint64_t value) {
    return makeSettled(fields, Symbol::Category_Common, value, true);
}

Symbol* ObjectModule::createDynamicUndefinedSymbol(const SymbolFields& fields) {
    return makeSettled(fields, Symbol::Category_Undefined, 0, true);
}

Symbol* ObjectModule::createDynamicHostedSymbol(const SymbolFields& fields, Section* section,
                                                uint64_t offset) {
    return makeHosted(fields, section, offset, true);
}

} // namespace elfext
