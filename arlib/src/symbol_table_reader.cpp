// Turns the contents of the archive symbol table into Symbol objects.

#include <algorithm>
#include <cstring>
#include <new>

#include "alloclib/interface/region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/symbol.h"
#include "platform/interface/internal_check.h"

namespace arlib {
namespace {

// The table's parts. Words are read through one accessor that knows how many there are.
class SymbolTableView {
public:
    SymbolTableView(const uint8_t* bytes, uint32_t size) : m_Bytes(bytes), m_Size(size) {}

    bool hasCount() const { return m_Size >= symbolTableWord; }
    uint32_t count() const { return word(0); }
    // Bytes that a table of so many entries takes before its names.
    uint64_t namesStart() const { return symbolTableWord + uint64_t{count()} * symbolTableWord; }
    uint32_t entryOffset(uint32_t index) const { return word(uint64_t{index} + 1); }

    // The length of the name at a position, or the bytes that are left if its end is missing.
    uint64_t nameLength(uint64_t position) const {
        const void* end = std::memchr(m_Bytes + position, 0, m_Size - position);
        return end == nullptr
                   ? m_Size - position
                   : static_cast<uint64_t>(static_cast<const uint8_t*>(end) - (m_Bytes + position));
    }

    // Where the last name ends, or the table if the names do not.
    uint64_t namesEnd() const {
        uint64_t position = namesStart();
        for (uint32_t i = 0; i < count() && position < m_Size; ++i) {
            position += nameLength(position) + 1;
        }
        return std::min<uint64_t>(position, m_Size);
    }

private:
    uint32_t word(uint64_t index) const {
        const uint64_t at = index * symbolTableWord;
        if (at + symbolTableWord > m_Size) {
            return 0;
        }
        const uint8_t* byte = m_Bytes + at;
        return uint32_t{byte[0]} << 24 | uint32_t{byte[1]} << 16 | uint32_t{byte[2]} << 8 | byte[3];
    }

    const uint8_t* m_Bytes;
    uint32_t m_Size;
};

} // namespace

ArchiveMember* Archive::memberAtOffset(uint32_t offset) const {
    uint32_t low = 0;
    uint32_t high = m_ArchiveMembers.getSize();
    while (low < high) {
        const uint32_t middle = low + (high - low) / 2;
        if (m_ArchiveMembers[middle]->m_Offset < offset) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const bool isFound =
        low < m_ArchiveMembers.getSize() && m_ArchiveMembers[low]->m_Offset == offset;
    return isFound ? m_ArchiveMembers[low] : nullptr;
}

void Archive::addSymbol(const char* name, bool isDecorated, ArchiveMember* member) {
    void* memory = alloclib::allocate(*m_ObjectRegion.get(), sizeof(Symbol), alignof(Symbol));
    auto* symbol = new (memory) Symbol(name, this, member);
    if (isDecorated) {
        symbol->setBuildAttributes(attributes::FullAttr());
    }
    m_Symbols.add(symbol);
    member->m_Symbols.add(symbol);
}

bool Archive::readSymbolTable() {
    TOMEX_CHECK(m_SymbolTableUpToDate);
    m_Symbols.clear();
    m_SortedSymbolsUpToDate = false;
    if (m_SymbolTable == nullptr) {
        return true;
    }
    ErrorHandler* handler = m_ErrorHandler;
    const uint32_t size = m_SymbolTable->m_Contents->size();
    const uint8_t* bytes = m_SymbolTable->m_Contents->bytes();
    const SymbolTableView table(bytes, size);
    if (!table.hasCount()) {
        if (handler != nullptr) {
            handler->symbolTableShort(this, size);
        }
        return false;
    }
    const uint32_t count = table.count();
    if (size < table.namesStart()) {
        if (handler != nullptr) {
            handler->symbolTableCount(this, size, count, table.namesStart());
        }
        return false;
    }
    return readSymbolNames(bytes, size);
}

// The names are copied as one block; each symbol points into it.
bool Archive::readSymbolNames(const uint8_t* bytes, uint32_t size) {
    ErrorHandler* handler = m_ErrorHandler;
    const SymbolTableView table(bytes, size);
    const uint32_t count = table.count();
    const uint64_t start = table.namesStart();
    const uint64_t namesSize = table.namesEnd() - start;
    auto* names = static_cast<char*>(alloclib::allocate(*m_ObjectRegion.get(), namesSize + 1, 1));
    std::memcpy(names, bytes + start, namesSize);

    uint64_t position = start;
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t length = table.nameLength(position);
        if (position + length >= size) {
            if (handler != nullptr) {
                handler->symbolNameEnd(this, i, count);
            }
            return false;
        }
        char* name = names + (position - start);
        position += length + 1;
        const uint32_t offset = table.entryOffset(i);
        ArchiveMember* member = memberAtOffset(offset);
        if (member == nullptr) {
            if (handler == nullptr || !handler->symbolNoMember(this, i, name, offset)) {
                return false;
            }
            continue;
        }
        if (member->isAuxiliary()) {
            if (handler == nullptr || !handler->symbolNotObject(this, i, name, offset)) {
                return false;
            }
            continue;
        }
        char* decoration = std::strstr(name, symbolDecoration);
        if (decoration != nullptr) {
            *decoration = '\0';
        }
        addSymbol(name, decoration != nullptr, member);
    }
    return acceptTrailingZeros(bytes, size, position);
}

bool Archive::acceptTrailingZeros(const uint8_t* bytes, uint32_t size, uint64_t end) {
    uint64_t position = end;
    while (position < size && bytes[position] == 0) {
        ++position;
    }
    return position == size ||
           (m_ErrorHandler != nullptr && m_ErrorHandler->symbolTableExtra(this, position, end));
}

} // namespace arlib
