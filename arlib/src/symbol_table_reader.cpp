// Turns the contents of the archive symbol table into Symbol objects.

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "alloclib/interface/region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/decoration.h"
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

// Reads decorations. All names of a variant have the same one and stand together, so that mostly
// it is the one that was read last.
class DecorationReader {
public:
    const attributes::FullAttr* read(const char* text) {
        if (m_Text == nullptr || std::strcmp(text, m_Text) != 0) {
            attributes::parseDecoration(m_Value, text);
            m_Text = text;
        }
        return &m_Value;
    }

private:
    const char* m_Text = nullptr;
    attributes::FullAttr m_Value;
};

} // namespace

// Finds the member whose header stands at an offset. Members of a file that was just read stand in
// the order of their offsets, and so, mostly, do the table's entries: the search begins at the
// member found last, and moves it on.
ArchiveMember* Archive::memberAtOffset(uint32_t offset, uint32_t& lastIndex) const {
    const uint32_t count = m_ArchiveMembers.getSize();
    for (uint32_t i = lastIndex; i < count && i < lastIndex + 2; ++i) {
        if (m_ArchiveMembers[i]->m_Offset == offset) {
            lastIndex = i;
            return m_ArchiveMembers[i];
        }
    }
    const auto standsBefore = [](const ArchiveMember* member, uint32_t place) {
        return member->m_Offset < place;
    };
    ArchiveMember* const* found =
        std::lower_bound(m_ArchiveMembers.begin(), m_ArchiveMembers.end(), offset, standsBefore);
    if (found == m_ArchiveMembers.end() || (*found)->m_Offset != offset) {
        return nullptr;
    }
    lastIndex = static_cast<uint32_t>(found - m_ArchiveMembers.begin());
    return *found;
}

void Archive::addSymbol(const char* name, const attributes::FullAttr* decoration,
                        ArchiveMember* member) {
    void* memory = alloclib::allocate(*m_ObjectRegion.get(), sizeof(Symbol), alignof(Symbol));
    auto* symbol = new (memory) Symbol(name, this, member);
    if (decoration != nullptr) {
        symbol->setBuildAttributes(*decoration);
    }
    m_Symbols.add(symbol);
    member->symbolLists().m_Symbols.add(symbol);
}

bool Archive::readSymbolTable() {
    TOMEX_CHECK(m_SymbolTableUpToDate);
    m_Symbols.clear();
    m_SymbolMembers.clear();
    m_SymbolsLoaded = true;
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
    return checkSymbols(bytes, size);
}

// Checks every entry and notes its member. The Symbol objects are made when somebody asks for
// them: most runs never do.
bool Archive::checkSymbols(const uint8_t* bytes, uint32_t size) {
    ErrorHandler* handler = m_ErrorHandler;
    const SymbolTableView table(bytes, size);
    const uint32_t count = table.count();
    uint64_t position = table.namesStart();
    uint32_t lastIndex = 0;
    m_SymbolMembers.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t length = table.nameLength(position);
        if (position + length >= size) {
            if (handler != nullptr) {
                handler->symbolNameEnd(this, i, count);
            }
            return false;
        }
        const char* name = reinterpret_cast<const char*>(bytes) + position;
        position += length + 1;
        const uint32_t offset = table.entryOffset(i);
        ArchiveMember* member = memberAtOffset(offset, lastIndex);
        if (member == nullptr) {
            if (handler == nullptr || !handler->symbolNoMember(this, i, name, offset)) {
                return false;
            }
        } else if (member->isAuxiliary()) {
            if (handler == nullptr || !handler->symbolNotObject(this, i, name, offset)) {
                return false;
            }
        }
        m_SymbolMembers.add(member != nullptr && !member->isAuxiliary() ? member : nullptr);
    }
    m_SymbolsLoaded = count == 0;
    return acceptTrailingZeros(bytes, size, position);
}

// Makes the Symbol objects of the table that was read. The names are copied as one block; each
// symbol points into it.
void Archive::loadSymbols() {
    if (m_SymbolsLoaded) {
        return;
    }
    m_SymbolsLoaded = true;
    const MemberContents& contents =
        m_ReadSymbolTable ? *m_ReadSymbolTable : *m_SymbolTable->m_Contents;
    const SymbolTableView table(contents.bytes(), contents.size());
    const uint64_t start = table.namesStart();
    const uint64_t namesSize = table.namesEnd() - start;
    auto* names = static_cast<char*>(alloclib::allocate(*m_ObjectRegion.get(), namesSize + 1, 1));
    std::memcpy(names, contents.bytes() + start, namesSize);
    DecorationReader reader;
    char* name = names;
    for (ArchiveMember* member : m_SymbolMembers) {
        char* next = name + std::strlen(name) + 1;
        if (member != nullptr) {
            const attributes::FullAttr* decoration = nullptr;
            if (char* marker = std::strstr(name, attributes::SymbolMarkerText); marker != nullptr) {
                *marker = '\0';
                decoration = reader.read(marker + attributes::SymbolMarkerLength);
            }
            addSymbol(name, decoration, member);
        }
        name = next;
    }
    m_SymbolMembers.clear();
    m_ReadSymbolTable.reset();
}

// Keeps the bytes that symbols are still to be made of when the table's member gets others.
void Archive::keepReadSymbolTable() {
    if (!m_SymbolsLoaded && !m_ReadSymbolTable) {
        m_ReadSymbolTable = std::move(m_SymbolTable->m_Contents);
        m_SymbolTable->m_Contents = std::make_unique<MemberContents>();
    }
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
