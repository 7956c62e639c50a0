// Texts out of a string table, by their offsets.
#pragma once

#include <cstdint>
#include <span>

namespace elfext {

// The bytes of a string table. They end in a zero byte, so that every text in it ends.
class TextTable {
public:
    TextTable() = default;
    explicit TextTable(std::span<const uint8_t> bytes) : m_Bytes(bytes) {}

    // Null for an offset past the end.
    const char* find(uint64_t offset) const {
        return offset < m_Bytes.size() ? reinterpret_cast<const char*>(m_Bytes.data()) + offset
                                       : nullptr;
    }
    // The same, but offset 0 is the empty text also where there is no table.
    const char* findOrEmpty(uint64_t offset) const { return offset == 0 ? "" : find(offset); }

private:
    std::span<const uint8_t> m_Bytes;
};

} // namespace elfext
