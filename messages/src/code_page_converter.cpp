#include "messages/src/code_page_converter.h"

#include "messages/interface/code_page.h"
#include "messages/src/utf16.h"

#include <bit>
#include <cstdio>

namespace messages {

namespace {

constexpr const char* unitCharset =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

constexpr uint64_t failed = static_cast<uint64_t>(-1);

// One unit in any character set of the host, its shift sequences included, and the way back to the
// initial shift state with the end.
constexpr uint64_t bytesPerUnit = 8;
constexpr uint64_t endBytes = 16;

// The host takes the source as non-const and does not write to it.
uint64_t convert(iconv_t handle, const void*& from, uint64_t& fromLeft, char*& to,
                 uint64_t& toLeft) {
    auto* source = const_cast<char*>(static_cast<const char*>(from));
    size_t sourceLeft = fromLeft;
    size_t targetLeft = toLeft;
    const size_t result = ::iconv(handle, &source, &sourceLeft, &to, &targetLeft);
    from = source;
    fromLeft = sourceLeft;
    toLeft = targetLeft;
    return result == static_cast<size_t>(-1) ? failed : result;
}

} // namespace

bool CodePageConverter::openCharset(const char* charset) {
    m_Handle = m_Direction == Direction::ToPage ? ::iconv_open(charset, unitCharset)
                                                : ::iconv_open(unitCharset, charset);
    m_Open = reinterpret_cast<intptr_t>(m_Handle) != -1;
    return m_Open;
}

bool CodePageConverter::open(uint32_t codePage, const char* defaultCharset) {
    if (m_Open && m_CodePage == codePage) {
        return true;
    }
    close();
    m_CodePage = codePage;
    switch (codePage) {
    case CodePage_Default:
        return openCharset(defaultCharset);
    case CodePage_Utf8:
        return openCharset("UTF-8");
    case CodePage_Gb2312:
        return openCharset("GB2312");
    case CodePage_None:
        return false;
    default:
        break;
    }
    for (const char* pattern : {"CP%u", "WINDOWS-%u"}) {
        char charset[32];
        std::snprintf(charset, sizeof(charset), pattern, codePage);
        if (openCharset(charset)) {
            return true;
        }
    }
    return false;
}

void CodePageConverter::close() {
    if (m_Open) {
        ::iconv_close(m_Handle);
        m_Open = false;
    }
}

char* CodePageConverter::toPage(const uint16_t* units, uint64_t count, WorkBuffer<char>& result) {
    if (!result.require(count * bytesPerUnit + endBytes)) {
        return nullptr;
    }
    ::iconv(m_Handle, nullptr, nullptr, nullptr, nullptr);
    char* to = result.data();
    uint64_t toLeft = result.capacity() - 1;
    uint64_t done = 0;
    while (done < count) {
        const void* from = units + done;
        uint64_t fromLeft = (count - done) * sizeof(uint16_t);
        const uint64_t status = convert(m_Handle, from, fromLeft, to, toLeft);
        done = count - fromLeft / sizeof(uint16_t);
        if (status == failed && done < count) {
            // The page lacks this character.
            const uint16_t substitute = '?';
            from = &substitute;
            fromLeft = sizeof(substitute);
            if (convert(m_Handle, from, fromLeft, to, toLeft) == failed) {
                break;
            }
            done += unitsOfCharacter(units + done, count - done);
        }
    }
    size_t left = toLeft;
    ::iconv(m_Handle, nullptr, nullptr, &to, &left);
    *to = '\0';
    return result.data();
}

uint16_t* CodePageConverter::fromPage(const char* text, uint64_t length,
                                      WorkBuffer<uint16_t>& result, uint64_t& count) {
    // No character set has characters of one byte that need more than two units.
    if (!result.require(length * 2 + 1)) {
        return nullptr;
    }
    ::iconv(m_Handle, nullptr, nullptr, nullptr, nullptr);
    char* to = reinterpret_cast<char*>(result.data());
    uint64_t toLeft = result.capacity() * sizeof(uint16_t);
    uint64_t left = length;
    while (left > 0) {
        const void* from = text + (length - left);
        if (convert(m_Handle, from, left, to, toLeft) == failed && left > 0) {
            if (toLeft < sizeof(uint16_t)) {
                break;
            }
            *reinterpret_cast<uint16_t*>(to) = '?';
            to += sizeof(uint16_t);
            toLeft -= sizeof(uint16_t);
            --left;
        }
    }
    count = result.capacity() - toLeft / sizeof(uint16_t);
    return result.data();
}

} // namespace messages
