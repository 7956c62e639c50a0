// Builds sections of build attributes byte by byte, sound and broken ones.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace elfext::test {

// A number, 7 bits a byte, in as few bytes as it takes and `padding` more.
inline std::string uleb(uint64_t number, uint32_t padding = 0) {
    std::string bytes;
    while (number >= 0x80) {
        bytes += static_cast<char>(number | 0x80);
        number >>= 7;
    }
    bytes += static_cast<char>(number);
    for (uint32_t i = 0; i < padding; ++i) {
        bytes.back() = static_cast<char>(bytes.back() | '\x80');
        bytes += '\0';
    }
    return bytes;
}

// A text with its NUL.
inline std::string ntbs(const std::string& text) {
    return text + '\0';
}

inline std::string number(uint32_t tag, uint64_t value) {
    return uleb(tag) + uleb(value);
}

inline std::string text(uint32_t tag, const std::string& value) {
    return uleb(tag) + ntbs(value);
}

inline std::string both(uint32_t tag, uint64_t value, const std::string& name) {
    return uleb(tag) + uleb(value) + ntbs(name);
}

class AttributeSectionBuilder {
public:
    explicit AttributeSectionBuilder(bool isLittleEndian) : m_IsLittleEndian(isLittleEndian) {}

    std::string word(uint32_t value) const {
        std::string bytes;
        for (uint32_t i = 0; i < 4; ++i) {
            bytes += static_cast<char>(value >> (m_IsLittleEndian ? 8 * i : 24 - 8 * i));
        }
        return bytes;
    }

    // A sub-subsection; its length is off by `lengthError`.
    std::string scope(uint32_t number, const std::string& body, int lengthError = 0,
                      uint32_t scopePadding = 0) const {
        const std::string head = uleb(number, scopePadding);
        const auto length = static_cast<uint32_t>(head.size() + 4 + body.size());
        return head + word(length + static_cast<uint32_t>(lengthError)) + body;
    }
    std::string file(const std::string& attributes) const { return scope(1, attributes); }
    std::string sections(const std::vector<uint64_t>& indexes,
                         const std::string& attributes) const {
        return scope(2, list(indexes) + attributes);
    }
    std::string symbols(const std::vector<uint64_t>& indexes, const std::string& attributes) const {
        return scope(3, list(indexes) + attributes);
    }

    static std::string list(const std::vector<uint64_t>& indexes) {
        std::string bytes;
        for (const uint64_t index : indexes) {
            bytes += uleb(index);
        }
        return bytes + '\0';
    }

    // A subsection; its length is off by `lengthError`.
    std::string subsection(const std::string& vendor, const std::string& scopes,
                           int lengthError = 0) const {
        return raw(ntbs(vendor) + scopes, lengthError);
    }
    std::string raw(const std::string& contents, int lengthError = 0) const {
        const auto length = static_cast<uint32_t>(4 + contents.size());
        return word(length + static_cast<uint32_t>(lengthError)) + contents;
    }

    static std::string section(const std::string& subsections) { return "A" + subsections; }

private:
    bool m_IsLittleEndian;
};

inline const uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

// A copy that ends where its block does, so that a sanitizer sees each byte read beyond.
class ExactBytes {
public:
    explicit ExactBytes(const std::string& bytes) : m_Bytes(bytes.begin(), bytes.end()) {
        m_Bytes.shrink_to_fit();
    }
    // Not null, also when there are none.
    const uint8_t* data() const { return m_Bytes.empty() ? &nothing : m_Bytes.data(); }
    uint32_t size() const { return static_cast<uint32_t>(m_Bytes.size()); }

private:
    static constexpr uint8_t nothing = 0;
    std::vector<uint8_t> m_Bytes;
};

} // namespace elfext::test
