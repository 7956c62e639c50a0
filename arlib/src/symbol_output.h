// Symbols on their way into a new symbol table.
//
// Entries of one member stand together and have the same suffix, or none; so they are kept as runs
// of names. Names and suffixes are joined nowhere but in the table.
#pragma once

#include <cstdint>
#include <string_view>

#include "arlib/interface/symbol_name_list.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

class ArchiveMember;

class SymbolOutput {
public:
    explicit SymbolOutput(alloclib::Region* scratch) : m_Runs(scratch) {}

    // Where entries and what they refer to live.
    alloclib::Region* region() const { return m_Runs.getRegion(); }

    // Appends an entry for each of the names, with the suffix behind it. Both texts and the array
    // of the names must live as long as this.
    void add(SymbolNames names, const ArchiveMember* member, std::string_view suffix = {});

    // Bytes that the table takes.
    uint64_t tableSize() const;

    // Writes the table: the count, the offsets of members in the file, which must be known by
    // now, and the names. The destination has room for tableSize() bytes.
    void write(uint8_t* destination) const;

private:
    struct Run {
        SymbolNames names;
        std::string_view suffix;
        const ArchiveMember* member = nullptr;
    };

    elfext::fast_array<Run> m_Runs;
    uint64_t m_Count = 0;
    uint64_t m_TextBytes = 0; // of all names, with suffixes and NULs
};

} // namespace arlib
