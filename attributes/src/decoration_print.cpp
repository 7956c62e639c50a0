// Printing decorations.
#include "attributes/interface/decoration.h"

#include "attributes/interface/feature_words.h"
#include "attributes/src/decoration_tables.h"

#include <cstring>
#include <iterator>
#include <span>
#include <string_view>

namespace attributes {

namespace {

// Writes pieces of text as long as there is room for them and a NUL, and counts all of them.
class DecorationWriter {
public:
    DecorationWriter(char* buffer, uint64_t size)
        : m_Next(buffer), m_Free(buffer == nullptr ? 0 : size) {
        if (m_Free > 0) {
            *m_Next = '\0';
        }
    }

    // A "$" and a token. One that does not fit is left out, and a later one may still fit.
    void putToken(std::string_view token) {
        m_Length += 1 + token.size();
        if (1 + token.size() < m_Free) {
            write("$");
            write(token);
        }
    }

    // A piece of a block. After one that does not fit there is no room for anything: required,
    // so that a cut block is never followed by tokens that would be read as part of the whole.
    void putPiece(std::string_view piece) {
        m_Length += piece.size();
        if (piece.size() < m_Free) {
            write(piece);
        } else {
            m_Free = 0;
        }
    }

    uint64_t length() const { return m_Length; }

private:
    void write(std::string_view text) {
        std::memcpy(m_Next, text.data(), text.size());
        m_Next += text.size();
        m_Free -= text.size();
        *m_Next = '\0';
    }

    char* m_Next;
    uint64_t m_Free; // with the byte of the NUL
    uint64_t m_Length = 0;
};

void printFeatures(DecorationWriter& out, const IsaSet& isa) {
    IsaSet rest = isa;
    for (const IsaToken& row : isaPrintTable) {
        if (hasAll(rest, row.mask)) {
            out.putToken(row.text);
            clearWord(rest, row.mask);
        }
    }
}

// One block: `heading` is "$" and, for loads, the region's letter and a colon.
void printBlock(DecorationWriter& out, std::string_view heading, uint32_t forms) {
    if (forms == 0) {
        return;
    }
    out.putPiece(heading);
    for (const AccessToken& token : accessTokens) {
        if ((forms & token.bit) != 0) {
            out.putPiece(token.text);
        }
    }
}

// What every object may do prints as nothing.
constexpr uint32_t PrintedOfCode = 0xFFFF & ~access_bit::L44;
constexpr uint32_t PrintedOfOthers = PrintedOfCode & ~access_bit::L11;

// The loads in five blocks. Each takes its forms out of the union of all, so that no form prints
// twice. The linker reads "R" and "C" into other words than these: required.
void printAccess(DecorationWriter& out, const uint16_t (&access)[4]) {
    const uint32_t code = access[0] & PrintedOfCode;
    const uint32_t readOnly = access[1] & PrintedOfOthers;
    const uint32_t data = access[2] & PrintedOfOthers;
    const struct {
        std::string_view heading;
        uint32_t forms;
    } blocks[] = {
        {"$A:", code & readOnly & data},
        {"$R:", code & readOnly},
        {"$C:", readOnly},
        {"$X:", code},
        {"$W:", data},
    };
    uint32_t rest = code | readOnly | data;
    for (const auto& block : blocks) {
        printBlock(out, block.heading, block.forms & rest);
        rest &= ~block.forms;
    }
    printBlock(out, "$", (access[3] & PrintedOfOthers) << 16);
}

void printBits(DecorationWriter& out, std::span<const OptionToken> table, uint64_t bits) {
    for (const OptionToken& row : table) {
        if ((bits & row.bits) == row.bits) {
            out.putToken(row.text);
            bits &= ~row.bits;
        }
    }
}

} // namespace

uint64_t printDecoration(const FullAttr& value, char* buffer, uint64_t size) {
    DecorationWriter out(buffer, size);
    printFeatures(out, value.isa);
    printAccess(out, value.access);
    for (const OptionToken& row : defaultTokens) {
        out.putToken(row.text);
    }
    printBits(out, optionTokens, value.options);
    printBits(out, requirementTokens, value.requirements);
    printBits(out, abiTokens, value.abiVersion);
    return out.length();
}

char* symbolDecoration(const FullAttr& value, alloclib::Region& region) {
    const uint64_t length = printDecoration(value, nullptr, 0);
    const uint64_t size = MarkerLength + length + 1;
    char* const text = static_cast<char*>(alloclib::allocate(region, size, 1));
    std::memcpy(text, MarkerText, MarkerLength);
    printDecoration(value, text + MarkerLength, length + 1);
    return text;
}

} // namespace attributes
