// The section layer: subsections, sub-subsections and their index lists.

#include "elfext/interface/array.h"
#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/src/attribute_stream.h"
#include "platform/interface/internal_check.h"

namespace elfext {

namespace {

enum Scope : uint32_t {
    Scope_File = 1,
    Scope_Section = 2,
    Scope_Symbol = 3,
};

constexpr uint8_t FormatVersion = 'A';
constexpr uint32_t MinimumSubsectionLength = 5; // the length itself and an empty name
constexpr uint32_t LengthSize = 4;
constexpr uint32_t FirstIndexCapacity = 256;

// One walk over a section.
class SectionWalk {
public:
    SectionWalk(BuildAttributesSectionParser& parser, bool isLittleEndian)
        : m_Parser(parser), m_IsLittleEndian(isLittleEndian) {
        m_Indexes.reserve(FirstIndexCapacity);
    }

    // False if anything was wrong.
    bool run(const uint8_t* data, uint64_t length) {
        if (length == 0 || data[0] != FormatVersion) {
            return false;
        }
        const uint8_t* const end = data + length;
        for (const uint8_t* position = data + 1; position != end;) {
            AttributeStream stream(position, end);
            uint32_t subsectionLength = 0;
            if (!stream.readWord(subsectionLength, m_IsLittleEndian) ||
                subsectionLength < MinimumSubsectionLength ||
                subsectionLength - LengthSize > stream.remaining()) {
                return false; // where the next one begins is not known
            }
            walkSubsection(stream.position(), position + subsectionLength);
            position += subsectionLength;
        }
        return !m_IsCorrupt;
    }

private:
    // The part of a subsection behind its length.
    void walkSubsection(const uint8_t* begin, const uint8_t* end) {
        AttributeStream stream(begin, end);
        const char* vendorName = nullptr;
        if (!stream.readText(vendorName)) {
            m_IsCorrupt = true;
            return;
        }
        const uint8_t* position = stream.position();
        while (position != end) {
            position = walkSubSubsection(vendorName, position, end);
            if (position == nullptr) {
                m_IsCorrupt = true;
                return;
            }
        }
    }

    // Where the next sub-subsection begins, or null where that cannot be told.
    const uint8_t* walkSubSubsection(const char* vendorName, const uint8_t* begin,
                                     const uint8_t* end) {
        AttributeStream stream(begin, end);
        uint32_t scope = 0;
        if (!stream.readNumber(scope) || scope < Scope_File || scope > Scope_Symbol) {
            return nullptr;
        }
        uint32_t size = 0;
        const bool hasSize = stream.readWord(size, m_IsLittleEndian);
        const auto headSize = static_cast<uint64_t>(stream.position() - begin);
        if (!hasSize || size < headSize || size - headSize > stream.remaining()) {
            return nullptr;
        }
        const uint8_t* const next = begin + size;
        if (scope == Scope_File) {
            note(m_Parser.parseFileSubSubsection(vendorName, stream.position(),
                                                 lengthOf(stream.position(), next)));
        } else {
            walkListed(scope, vendorName, stream.position(), next);
        }
        return next;
    }

    // A body with an index list.
    void walkListed(uint32_t scope, const char* vendorName, const uint8_t* begin,
                    const uint8_t* end) {
        // The list ends at the first 0 byte, whatever the numbers before it say: required, since
        // writers of lists have always looked for it in this way.
        AttributeStream body(begin, end);
        const char* list = nullptr;
        if (!body.readText(list)) {
            m_IsCorrupt = true;
            return;
        }
        const uint8_t* const attributes = body.position();
        gatherIndexes(begin, attributes - 1);
        const uint32_t length = lengthOf(attributes, end);
        const uint32_t* const indexes = m_Indexes.begin();
        const uint32_t count = m_Indexes.getSize();
        note(scope == Scope_Section ? m_Parser.parseSectionSubSubsection(vendorName, indexes, count,
                                                                         attributes, length)
                                    : m_Parser.parseSymbolSubSubsection(vendorName, indexes, count,
                                                                        attributes, length));
    }

    // A bad number ends the list; what stands before it counts.
    void gatherIndexes(const uint8_t* begin, const uint8_t* end) {
        m_Indexes.clear();
        AttributeStream list(begin, end);
        while (!list.isAtEnd()) {
            uint32_t index = 0;
            if (!list.readNumber(index) || index == 0) {
                m_IsCorrupt = true;
                return;
            }
            m_Indexes.add(index);
        }
    }

    // Bodies are parts of a subsection, whose length is 32 bits wide.
    static uint32_t lengthOf(const uint8_t* begin, const uint8_t* end) {
        return static_cast<uint32_t>(end - begin);
    }

    void note(bool isGood) { m_IsCorrupt = m_IsCorrupt || !isGood; }

    BuildAttributesSectionParser& m_Parser;
    bool m_IsLittleEndian;
    bool m_IsCorrupt = false;
    array<uint32_t> m_Indexes;
};

} // namespace

bool BuildAttributesSectionParser::parse(const uint8_t* data, uint64_t length,
                                         bool isLittleEndian) {
    TOMEX_CHECK_TEXT(data != nullptr, "buildAttributesData != NULL");
    return SectionWalk(*this, isLittleEndian).run(data, length);
}

bool BuildAttributesSectionParser::parseFileSubSubsection(const char*, const uint8_t*, uint32_t) {
    return true;
}

bool BuildAttributesSectionParser::parseSectionSubSubsection(const char*, const uint32_t*, uint32_t,
                                                             const uint8_t*, uint32_t) {
    return true;
}

bool BuildAttributesSectionParser::parseSymbolSubSubsection(const char*, const uint32_t*, uint32_t,
                                                            const uint8_t*, uint32_t) {
    return true;
}

} // namespace elfext
