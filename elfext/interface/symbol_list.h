// The symbols that a query found.
#pragma once

#include "elfext/interface/inline_list.h"
#include "platform/interface/internal_check.h"

#include <cstdint>

namespace elfext {

class Symbol;

class SymbolList : public inline_list<Symbol, 7> {
public:
    SymbolList() = default;

    // The entry at `index`; null if none has been set since `setSize`.
    Symbol* operator[](uint32_t index) const {
        TOMEX_CHECK(index < m_Size);
        return entry(index);
    }

    // Neither sets nor adds a null entry. The entries stay their owner's.
    void set(uint32_t index, Symbol* symbol) {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
        setEntry(index, symbol);
    }
    void add(Symbol* symbol) {
        TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
        addEntry(symbol);
    }
};

} // namespace elfext
