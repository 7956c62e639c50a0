// The symbols that a query found. The entries stay their archive's.
#pragma once

#include <cstdint>

#include "elfext/interface/inline_list.h"
#include "platform/interface/internal_check.h"

namespace arlib {

class Symbol;

class SymbolList : public elfext::inline_list<Symbol, 3> {
public:
    Symbol* get(uint32_t index) const {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(entry(index) != nullptr, "symbol != NULL");
        return entry(index);
    }
    void set(uint32_t index, Symbol* symbol) {
        TOMEX_CHECK(index < m_Size);
        TOMEX_CHECK_TEXT(symbol != nullptr, "symbol != NULL");
        setEntry(index, symbol);
    }
};

} // namespace arlib
