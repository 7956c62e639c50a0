// A cursor over bytes of an attributes section: the one place where they are read. A read that
// does not find all it wants says so and leaves the cursor anywhere.
#pragma once

#include <cstdint>
#include <cstring>

#include "elfext/interface/byte_order.h"

namespace elfext {

class AttributeStream {
public:
    AttributeStream(const uint8_t* begin, const uint8_t* end) : m_Next(begin), m_End(end) {}

    bool isAtEnd() const { return m_Next == m_End; }
    const uint8_t* position() const { return m_Next; }
    uint64_t remaining() const { return static_cast<uint64_t>(m_End - m_Next); }

    // A ULEB number in 32 bits. The shift wraps, so that a long one folds.
    bool readNumber(uint32_t& number) {
        number = 0;
        for (uint32_t shift = 0; m_Next != m_End; shift += 7) {
            const uint8_t byte = *m_Next++;
            number |= uint32_t{byte & 0x7FU} << (shift % 32);
            if ((byte & 0x80) == 0) {
                return true;
            }
        }
        return false;
    }

    // A text with its NUL.
    bool readText(const char*& text) {
        const void* const nul = isAtEnd() ? nullptr : std::memchr(m_Next, 0, remaining());
        if (nul == nullptr) {
            return false;
        }
        text = reinterpret_cast<const char*>(m_Next);
        m_Next = static_cast<const uint8_t*>(nul) + 1;
        return true;
    }

    bool readWord(uint32_t& word, bool isLittleEndian) {
        if (remaining() < sizeof word) {
            return false;
        }
        word = assembleBytes<uint32_t>(m_Next, isLittleEndian);
        m_Next += sizeof word;
        return true;
    }

    // Steps over the rest if that is a single 0 byte.
    void skipFinalNul() {
        if (remaining() == 1 && *m_Next == 0) {
            ++m_Next;
        }
    }

private:
    const uint8_t* m_Next;
    const uint8_t* m_End;
};

} // namespace elfext
