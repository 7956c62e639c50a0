// The sorted lists of a section, and the queries that search them.
//
// The lists are made when they are asked for first, and filled and sorted again when they are asked
// for after a change.
#include "elfext/interface/object_module.h"
#include "elfext/interface/relocation.h"
#include "elfext/interface/section.h"
#include "elfext/interface/sort.h"
#include "elfext/src/name_order.h"

#include <algorithm>

namespace elfext {

struct Section::Order {
    explicit Order(alloclib::Region* region)
        : m_HostedSymbolsSortedByOffset(region), m_HostedDynamicSymbolsSortedByOffset(region),
          m_HostedSymbolsSortedByName(region), m_HostedDynamicSymbolsSortedByName(region),
          m_RelocationsSortedByOffset(region) {}

    fast_array<Symbol*> m_HostedSymbolsSortedByOffset;
    fast_array<Symbol*> m_HostedDynamicSymbolsSortedByOffset;
    fast_array<Symbol*> m_HostedSymbolsSortedByName;
    fast_array<Symbol*> m_HostedDynamicSymbolsSortedByName;
    fast_array<Relocation*> m_RelocationsSortedByOffset;
};

namespace {

int compareNumbers(uint64_t left, uint64_t right) {
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

int compareOffsets(const void* left, const void* right, void* /*context*/) {
    const auto* const ppSym1 = static_cast<Symbol* const*>(left);
    const auto* const ppSym2 = static_cast<Symbol* const*>(right);
    TOMEX_CHECK((*ppSym1)->getCategory() == Symbol::Category_Hosted);
    TOMEX_CHECK((*ppSym2)->getCategory() == Symbol::Category_Hosted);
    return compareNumbers((*ppSym1)->getOffset(), (*ppSym2)->getOffset());
}

int compareHostedNames(const void* left, const void* right, void* /*context*/) {
    const auto* const ppSym1 = static_cast<Symbol* const*>(left);
    const auto* const ppSym2 = static_cast<Symbol* const*>(right);
    TOMEX_CHECK((*ppSym1)->getCategory() == Symbol::Category_Hosted);
    TOMEX_CHECK((*ppSym2)->getCategory() == Symbol::Category_Hosted);
    return compareNames((*ppSym1)->getName(), (*ppSym2)->getName());
}

int compareRelocations(const void* left, const void* right, void* /*context*/) {
    return compareNumbers((*static_cast<Relocation* const*>(left))->getOffset(),
                          (*static_cast<Relocation* const*>(right))->getOffset());
}

template <typename Element>
void refill(fast_array<Element*>& sorted, const fast_array<Element*>& source,
            CompareProc compareProc) {
    sorted = source;
    mergeSort(sorted.begin(), sorted.getSize(), sizeof(Element*), compareProc, nullptr);
}

// In a list by offset: the first element at `offset` or behind it, and the first behind it.
template <typename Element>
uint32_t firstAtOrBehind(const fast_array<Element*>& sorted, uint64_t offset) {
    const auto place = std::lower_bound(
        sorted.begin(), sorted.end(), offset,
        [](const Element* element, uint64_t wanted) { return element->getOffset() < wanted; });
    return static_cast<uint32_t>(place - sorted.begin());
}

template <typename Element>
uint32_t firstBehind(const fast_array<Element*>& sorted, uint64_t offset) {
    const auto place = std::upper_bound(
        sorted.begin(), sorted.end(), offset,
        [](uint64_t wanted, const Element* element) { return wanted < element->getOffset(); });
    return static_cast<uint32_t>(place - sorted.begin());
}

bool isOfKinds(const Symbol* symbol, uint32_t kinds) {
    return (symbol->getKind() & kinds) != 0;
}

void findRange(const fast_array<Symbol*>& m_HostedSymbolsSortedByOffset, uint64_t from, uint64_t to,
               uint32_t kinds, SymbolList& result) {
    result.clear();
    const uint32_t fromIndex = firstAtOrBehind(m_HostedSymbolsSortedByOffset, from);
    const uint32_t endIndex = firstBehind(m_HostedSymbolsSortedByOffset, to);
    if (fromIndex >= endIndex) {
        return;
    }
    const uint32_t toIndex = endIndex - 1;
    TOMEX_CHECK(fromIndex <= toIndex && toIndex < m_HostedSymbolsSortedByOffset.getSize());
    uint32_t goodSymbolCount = 0;
    for (uint32_t i = fromIndex; i <= toIndex; ++i) {
        goodSymbolCount += isOfKinds(m_HostedSymbolsSortedByOffset[i], kinds) ? 1U : 0U;
    }
    result.setSize(goodSymbolCount);
    uint32_t listIndex = 0;
    for (uint32_t i = fromIndex; i <= toIndex; ++i) {
        Symbol* const symbol = m_HostedSymbolsSortedByOffset[i];
        if (isOfKinds(symbol, kinds)) {
            result.set(listIndex++, symbol);
        }
    }
    TOMEX_CHECK(listIndex == goodSymbolCount);
}

Symbol* findFirstFrom(const fast_array<Symbol*>& sorted, uint64_t offset, uint32_t kinds) {
    for (uint32_t i = firstAtOrBehind(sorted, offset); i < sorted.getSize(); ++i) {
        if (isOfKinds(sorted[i], kinds)) {
            return sorted[i];
        }
    }
    return nullptr;
}

Symbol* findLastBefore(const fast_array<Symbol*>& sorted, uint64_t offset, uint32_t kinds) {
    for (uint32_t i = firstAtOrBehind(sorted, offset); i > 0; --i) {
        if (isOfKinds(sorted[i - 1], kinds)) {
            return sorted[i - 1];
        }
    }
    return nullptr;
}

} // namespace

Section::Order& Section::order() {
    if (m_Order == nullptr) {
        alloclib::Region* const region = m_ObjectModule->getContainerRegion();
        m_Order = new (alloclib::allocate(*region, sizeof(Order), 8)) Order(region);
    }
    return *m_Order;
}

Section::Order& Section::sortedSymbols() {
    Order& sorted = order();
    if (!m_HostedSymbolListsSorted) {
        refill(sorted.m_HostedSymbolsSortedByOffset, m_HostedSymbols, compareOffsets);
        refill(sorted.m_HostedDynamicSymbolsSortedByOffset, m_HostedDynamicSymbols, compareOffsets);
        refill(sorted.m_HostedSymbolsSortedByName, m_HostedSymbols, compareHostedNames);
        refill(sorted.m_HostedDynamicSymbolsSortedByName, m_HostedDynamicSymbols,
               compareHostedNames);
        m_HostedSymbolListsSorted = true;
    }
    return sorted;
}

Section::Order& Section::sortedRelocations() {
    loadRelocations();
    Order& sorted = order();
    if (!m_RelocationsSorted) {
        refill(sorted.m_RelocationsSortedByOffset, m_Relocations, compareRelocations);
        m_RelocationsSorted = true;
    }
    return sorted;
}

const fast_array<Symbol*>& Section::getHostedSymbolsSortedByOffset() {
    return sortedSymbols().m_HostedSymbolsSortedByOffset;
}

const fast_array<Symbol*>& Section::getHostedDynamicSymbolsSortedByOffset() {
    return sortedSymbols().m_HostedDynamicSymbolsSortedByOffset;
}

const fast_array<Symbol*>& Section::getHostedSymbolsSortedByName() {
    return sortedSymbols().m_HostedSymbolsSortedByName;
}

const fast_array<Symbol*>& Section::getHostedDynamicSymbolsSortedByName() {
    return sortedSymbols().m_HostedDynamicSymbolsSortedByName;
}

void Section::getHostedSymbols(uint64_t from, uint64_t to, uint32_t kinds, SymbolList& result) {
    findRange(getHostedSymbolsSortedByOffset(), from, to, kinds, result);
}

void Section::getHostedDynamicSymbols(uint64_t from, uint64_t to, uint32_t kinds,
                                      SymbolList& result) {
    findRange(getHostedDynamicSymbolsSortedByOffset(), from, to, kinds, result);
}

Symbol* Section::findFirstHostedSymbolFrom(uint64_t offset, uint32_t kinds) {
    return findFirstFrom(getHostedSymbolsSortedByOffset(), offset, kinds);
}

Symbol* Section::findLastHostedSymbolBefore(uint64_t offset, uint32_t kinds) {
    return findLastBefore(getHostedSymbolsSortedByOffset(), offset, kinds);
}

Symbol* Section::findFirstHostedDynamicSymbolFrom(uint64_t offset, uint32_t kinds) {
    return findFirstFrom(getHostedDynamicSymbolsSortedByOffset(), offset, kinds);
}

Symbol* Section::findLastHostedDynamicSymbolBefore(uint64_t offset, uint32_t kinds) {
    return findLastBefore(getHostedDynamicSymbolsSortedByOffset(), offset, kinds);
}

const fast_array<Relocation*>& Section::getRelocationsSortedByOffset() {
    return sortedRelocations().m_RelocationsSortedByOffset;
}

void Section::getRelocations(uint64_t from, uint64_t to, RelocationList& result) {
    const fast_array<Relocation*>& sorted = getRelocationsSortedByOffset();
    const uint32_t fromIndex = firstAtOrBehind(sorted, from);
    const uint32_t endIndex = firstBehind(sorted, to);
    result.setSize(fromIndex < endIndex ? endIndex - fromIndex : 0);
    for (uint32_t i = fromIndex; i < endIndex; ++i) {
        result.set(i - fromIndex, sorted[i]);
    }
}

} // namespace elfext
