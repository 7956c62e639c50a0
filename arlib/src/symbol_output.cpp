// Puts the symbol table together.
#include "arlib/src/symbol_output.h"

#include <algorithm>

#include "arlib/interface/archive_format.h"
#include "arlib/interface/archive_member.h"

namespace arlib {
namespace {

uint8_t* putBigEndian(uint8_t* destination, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        *destination++ = static_cast<uint8_t>(value >> shift);
    }
    return destination;
}

uint8_t* putText(uint8_t* destination, std::string_view text) {
    return std::copy(text.begin(), text.end(), destination);
}

} // namespace

void SymbolOutput::add(SymbolNames names, const ArchiveMember* member, std::string_view suffix) {
    if (names.empty()) {
        return;
    }
    m_Runs.add({names, suffix, member});
    m_Count += names.size();
    for (const std::string_view name : names) {
        m_TextBytes += name.size() + suffix.size() + 1;
    }
}

uint64_t SymbolOutput::tableSize() const {
    return symbolTableWord + symbolTableWord * m_Count + m_TextBytes;
}

void SymbolOutput::write(uint8_t* destination) const {
    destination = putBigEndian(destination, static_cast<uint32_t>(m_Count));
    for (const Run& run : m_Runs) {
        for (size_t i = 0; i < run.names.size(); ++i) {
            destination = putBigEndian(destination, run.member->getOffset());
        }
    }
    for (const Run& run : m_Runs) {
        for (const std::string_view name : run.names) {
            destination = putText(putText(destination, name), run.suffix);
            *destination++ = '\0';
        }
    }
}

} // namespace arlib
