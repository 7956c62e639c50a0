// The second kind of hash table of dynamic symbols (SHT_GNU_HASH).
//
// After a header come a Bloom filter, which tells at once that most names are not here, the number
// of the first symbol of each bucket, and a word for each symbol: its hash, with bit 0 set for the
// last one of its bucket. So the symbols of a bucket stand side by side in the symbol table, behind
// those that nobody looks for here. The format is described in "ELF: symbol lookup via DT_HASH and
// DT_GNU_HASH" and in the sources of the host's C libraries.
#pragma once

#include "elfext/interface/object_module.h"
#include "elfext/src/record_bytes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace elfext {

class GnuHashTable {
public:
    // The table that `bytes` are, or nothing if they are none.
    static std::optional<GnuHashTable> read(std::span<const uint8_t> bytes, bool is64,
                                            bool isLittleEndian);

    // True if the table finds all of these symbols that are to be found, and nothing else.
    bool isOf(const ObjectModule::SymbolArray& symbols) const;
    // Puts the symbols, of which local ones come first, into the order that the table needs.
    // Those that keep their neighbours keep their order.
    void sort(ObjectModule::SymbolArray& symbols) const;
    // The table of symbols in that order, with as many buckets and words in its filter as before.
    RecordBytes make(const ObjectModule::SymbolArray& symbols) const;

private:
    // The two lists at the end. Chain i is that of entry `m_FirstEntry` + i of the symbol table.
    struct Lists {
        std::vector<uint32_t> buckets;
        std::vector<uint32_t> chains;
    };

    GnuHashTable(bool is64, bool isLittleEndian) : m_Is64(is64), m_IsLittleEndian(isLittleEndian) {}

    // Nothing if the symbols of a bucket do not stand together.
    std::optional<Lists> list(const ObjectModule::SymbolArray& symbols, uint32_t firstEntry) const;
    void addFilter(RecordBytes& bytes, const std::vector<uint32_t>& hashes) const;

    bool m_Is64;
    bool m_IsLittleEndian;
    uint32_t m_FirstEntry = 0; // entry 0 is no symbol
    uint32_t m_FilterSize = 0; // in words of the class's width
    uint32_t m_FilterShift = 0;
    Lists m_Lists;
};

} // namespace elfext
