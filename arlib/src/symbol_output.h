// What goes into a new symbol table: the members that define symbols, and the table's entries.
//
// All of it lives in the region of the table's making and is dropped with it.
#pragma once

#include <cstdint>
#include <string_view>

#include "arlib/interface/archive_format.h"
#include "arlib/interface/symbol_name_list.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

class ArchiveMember;

// An object module that defines symbols, with their names.
struct HostingMember {
    ArchiveMember* member = nullptr;
    const SymbolNameList* names = nullptr;
    uint64_t fingerprint = 0; // of the names, whatever their order
};

// Symbols on their way into the table: names and, beside them, the members that define them.
class SymbolOutput {
public:
    explicit SymbolOutput(alloclib::Region* scratch) : names(scratch), members(scratch) {}

    // Where entries and what they refer to live.
    alloclib::Region* region() const { return names.getRegion(); }

    // A NUL stands behind the name, which must live as long as the region.
    void add(std::string_view name, ArchiveMember* member) {
        names.add(name);
        members.add(member);
    }

    // Bytes that the table takes.
    uint64_t tableSize() const {
        uint64_t size = symbolTableWord;
        for (const std::string_view name : names) {
            size += symbolTableWord + name.size() + 1;
        }
        return size;
    }

    elfext::fast_array<std::string_view> names;
    elfext::fast_array<ArchiveMember*> members;
};

} // namespace arlib
