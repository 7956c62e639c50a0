// The byte order of a file, and integers in it.
//
// Buffers do not know their byte order: they look it up in the object that stands for the file
// they belong to, at each access, so that it may be changed there.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

namespace elfext {

// What an object that stands for a file derives from, to tell the byte order of its contents.
class ByteOrderSource {
public:
    explicit ByteOrderSource(bool littleEndian) : m_IsLittleEndian(littleEndian ? 1 : 0) {}

    bool isLittleEndian() const { return m_IsLittleEndian != 0; }

protected:
    uint32_t m_IsLittleEndian; // 1 if the file says so
};

// The same value with its bytes in reverse.
template <std::unsigned_integral Integer>
constexpr Integer reverseBytes(Integer value) {
    Integer reversed = 0;
    for (unsigned i = 0; i < sizeof(Integer); ++i) {
        reversed = static_cast<Integer>(reversed << 8 | (value >> 8 * i & 0xFF));
    }
    return reversed;
}

template <>
constexpr uint8_t reverseBytes(uint8_t value) {
    return value;
}

// An integer between the file's order and the host's, either way.
template <std::unsigned_integral Integer>
constexpr Integer convertByteOrder(Integer value, bool littleEndian) {
    const bool hostIsLittleEndian = std::endian::native == std::endian::little;
    return littleEndian == hostIsLittleEndian ? value : reverseBytes(value);
}

// The integer in the bytes at `bytes`, which need no alignment, put together byte by byte.
template <std::unsigned_integral Integer>
constexpr Integer assembleBytes(const uint8_t* bytes, bool littleEndian) {
    Integer value = 0;
    for (unsigned i = 0; i < sizeof(Integer); ++i) {
        const unsigned index = littleEndian ? static_cast<unsigned>(sizeof(Integer)) - 1 - i : i;
        if constexpr (sizeof(Integer) > 1) {
            value = static_cast<Integer>(value << 8);
        }
        value = static_cast<Integer>(value | bytes[index]);
    }
    return value;
}

} // namespace elfext
