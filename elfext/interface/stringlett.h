// The key of every table that is keyed by name: a text and its hash, computed once.
//
// A `Stringlett` refers to its text and does not own it; the text must outlive it unchanged. A
// null text and an empty one are different keys with the same hash.
#pragma once

#include <cstdint>
#include <cstring>

namespace elfext {

class Stringlett {
public:
    // The null key.
    constexpr Stringlett() = default;

    // `string` ends in a NUL, or is null. Implicit, so that a table can be asked for a plain text.
    Stringlett(const char* string) : m_String(string), m_Hash(hashOf(string)) {}

    const char* getString() const { return m_String; }
    uint32_t getHash() const { return m_Hash; }

    bool operator==(const Stringlett& other) const {
        if (m_String == other.m_String) {
            return true;
        }
        if (m_String == nullptr || other.m_String == nullptr || m_Hash != other.m_Hash) {
            return false;
        }
        return std::strcmp(m_String, other.m_String) == 0;
    }

private:
    // h = h * 31 + byte over all bytes, in 32 bits. Eight bytes at a time, because one by one each
    // step would wait for the multiplication before it.
    static uint32_t hashOf(const char* string) {
        if (string == nullptr) {
            return 0;
        }
        const auto* byte = reinterpret_cast<const unsigned char*>(string);
        const unsigned char* const end = byte + std::strlen(string);
        uint32_t hash = 0;
        for (; end - byte >= 8; byte += 8) {
            hash = hash * Power8 + byte[0] * Power7 + byte[1] * Power6 + byte[2] * Power5 +
                   byte[3] * Power4 + byte[4] * Power3 + byte[5] * Power2 + byte[6] * Power1 +
                   byte[7];
        }
        for (; byte != end; ++byte) {
            hash = hash * Power1 + *byte;
        }
        return hash;
    }

    // Powers of 31, in 32 bits.
    static constexpr uint32_t Power1 = 31;
    static constexpr uint32_t Power2 = Power1 * Power1;
    static constexpr uint32_t Power3 = Power2 * Power1;
    static constexpr uint32_t Power4 = Power3 * Power1;
    static constexpr uint32_t Power5 = Power4 * Power1;
    static constexpr uint32_t Power6 = Power5 * Power1;
    static constexpr uint32_t Power7 = Power6 * Power1;
    static constexpr uint32_t Power8 = Power7 * Power1;

    const char* m_String = nullptr;
    uint32_t m_Hash = 0;
};

// A name together with a second number, where only both identify an entry.
class NumberedStringlett {
public:
    constexpr NumberedStringlett() = default;
    NumberedStringlett(const Stringlett& stringlett, uint32_t number)
        : m_Stringlett(stringlett), m_Number(number) {}

    const Stringlett& getStringlett() const { return m_Stringlett; }
    uint32_t getNumber() const { return m_Number; }
    uint32_t getHash() const { return m_Stringlett.getHash() ^ m_Number; }

    bool operator==(const NumberedStringlett& other) const {
        return m_Number == other.m_Number && m_Stringlett == other.m_Stringlett;
    }

private:
    Stringlett m_Stringlett;
    uint32_t m_Number = 0;
};

} // namespace elfext
