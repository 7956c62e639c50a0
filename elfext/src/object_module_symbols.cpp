// Symbols of a module: how they are sorted and found by name.
#include "elfext/interface/object_module.h"
#include "elfext/interface/sort.h"
#include "elfext/src/name_order.h"

namespace elfext {

namespace {

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
