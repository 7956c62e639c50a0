// Symbols of a module: how they are made, sorted and found by name.
#include "elfext/interface/object_module.h"
#include "elfext/interface/sort.h"
#include "elfext/src/name_order.h"
#include "elfext/src/object_module_make.h"

#include <algorithm>

namespace elfext {

namespace {

// Memory for expected symbols is taken this many at a time: few pieces, and little is lost where
// fewer come than were expected.
constexpr uint32_t symbolsAtATime = 64;

int compareByAddress(const void* left, const void* right, void* /*context*/) {
    const uint64_t leftAddress = (*static_cast<Symbol* const*>(left))->getAddress();
    const uint64_t rightAddress = (*static_cast<Symbol* const*>(right))->getAddress();
    return static_cast<int>(leftAddress > rightAddress) -
           static_cast<int>(leftAddress < rightAddress);
}

int compareByName(const void* left, const void* right, void* /*context*/) {
    return compareNames((*static_cast<Symbol* const*>(left))->getName(),
                        (*static_cast<Symbol* const*>(right))->getName());
}

void refill(fast_array<Symbol*>& sorted, const fast_array<Symbol*>& source,
            CompareProc compareProc) {
    sorted = source;
    mergeSort(sorted.begin(), sorted.getSize(), sizeof(Symbol*), compareProc, nullptr);
}

// The search ends at some symbol of the name; those around it have it too.
void findNamed(const fast_array<Symbol*>& sorted, const char* name, SymbolList& result) {
    result.clear();
    const auto hasName = [&sorted, name](uint32_t index) {
        return compareNames(sorted[index]->getName(), name) == 0;
    };
    uint32_t low = 0;
    uint32_t high = sorted.getSize();
    while (low < high) {
        const uint32_t middle = low + (high - low) / 2;
        const int order = compareNames(sorted[middle]->getName(), name);
        if (order < 0) {
            low = middle + 1;
        } else if (order > 0) {
            high = middle;
        } else {
            uint32_t first = middle;
            while (first > low && hasName(first - 1)) {
                --first;
            }
            uint32_t end = middle + 1;
            while (end < high && hasName(end)) {
                ++end;
            }
            result.setSize(end - first);
            for (uint32_t i = first; i < end; ++i) {
                result.set(i - first, sorted[i]);
            }
            return;
        }
    }
}

} // namespace

// --- Making symbols

void ObjectModule::reserveSymbols(uint32_t count, bool isDynamic) {
    SymbolArray& list = isDynamic ? m_DynamicSymbols : m_Symbols;
    list.reserve(list.getSize() + count);
    m_SymbolsExpected = count;
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

// --- Sorted lists

void ObjectModule::sortSymbolLists() {
    if (m_SymbolListsSorted) {
        return;
    }
    refill(m_SymbolsSortedByAddress, m_Symbols, compareByAddress);
    refill(m_DynamicSymbolsSortedByAddress, m_DynamicSymbols, compareByAddress);
    refill(m_SymbolsSortedByName, m_Symbols, compareByName);
    refill(m_DynamicSymbolsSortedByName, m_DynamicSymbols, compareByName);
    m_SymbolListsSorted = true;
}

const ObjectModule::SymbolArray& ObjectModule::getSymbolsSortedByAddress() {
    sortSymbolLists();
    return m_SymbolsSortedByAddress;
}

const ObjectModule::SymbolArray& ObjectModule::getDynamicSymbolsSortedByAddress() {
    sortSymbolLists();
    return m_DynamicSymbolsSortedByAddress;
}

const ObjectModule::SymbolArray& ObjectModule::getSymbolsSortedByName() {
    sortSymbolLists();
    return m_SymbolsSortedByName;
}

const ObjectModule::SymbolArray& ObjectModule::getDynamicSymbolsSortedByName() {
    sortSymbolLists();
    return m_DynamicSymbolsSortedByName;
}

void ObjectModule::findSymbols(const char* name, SymbolList& result) {
    findNamed(getSymbolsSortedByName(), name, result);
}

void ObjectModule::findDynamicSymbols(const char* name, SymbolList& result) {
    findNamed(getDynamicSymbolsSortedByName(), name, result);
}

} // namespace elfext
