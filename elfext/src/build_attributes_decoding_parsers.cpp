// From attributes as they are met to a record.

#include <cstring>

#include "elfext/interface/build_attributes_parsers.h"

namespace elfext {

namespace {

using attributes::StandardTags;
using attributes::TagRow;

// What fits into a slot of a record.
struct CutText {
    explicit CutText(const char* text) {
        const size_t length = strnlen(text, sizeof characters - 1);
        std::memcpy(characters, text, length);
        characters[length] = '\0';
    }

    char characters[StandardTags::TextSize];
};

void decodeNumber(attributes::BuildAttributes& attributes, attributes::TagVendor vendor,
                  uint32_t tag, uint32_t number) {
    const TagRow* const row = attributes::findTagRow(vendor, tag);
    if (row != nullptr && row->form != attributes::TagForm_Text) {
        attributes.setTag(row->tag, number);
    }
}

} // namespace

bool QeabiBuildAttributesDecodingParser::numericTag(uint32_t tag, uint32_t number) {
    decodeNumber(*m_Attributes, attributes::TagVendor_Qeabi, tag, number);
    return true;
}

bool QeabiBuildAttributesDecodingParser::stringTag(uint32_t tag, const char* text) {
    const TagRow* const row = attributes::findTagRow(attributes::TagVendor_Qeabi, tag);
    if (row == nullptr) {
        return true;
    }
    const CutText cut(text);
    if (row->tag == attributes::Tag_CPU_raw_name) {
        m_Attributes->setCpuRawName(cut.characters);
    } else if (row->tag == attributes::Tag_CPU_name) {
        m_Attributes->setCpuName(cut.characters);
    } else if (row->tag == attributes::Tag_conformance) {
        m_Attributes->setConformance(cut.characters);
    }
    return true;
}

bool QeabiBuildAttributesDecodingParser::numericAndStringTag(uint32_t tag, uint32_t number,
                                                             const char* text) {
    if (tag == attributes::TagNumber_compatibility) {
        m_Attributes->addCompatibilityTag(number, text);
    }
    return true;
}

bool QeabiBuildAttributesDecodingParser::alsoCompatibleNumericTag(uint32_t tag, uint32_t number) {
    m_Attributes->addAlsoCompatibilityTag({tag, number});
    return true;
}

bool QeabiBuildAttributesDecodingParser::alsoCompatibleStringTag(uint32_t tag, const char* text) {
    m_Attributes->addAlsoCompatibilityTag({tag, text});
    return true;
}

bool QeabiBuildAttributesDecodingParser::alsoCompatibleNumericAndStringTag(uint32_t tag,
                                                                           uint32_t number,
                                                                           const char* text) {
    m_Attributes->addAlsoCompatibilityTag({tag, number, text});
    return true;
}

bool QelBuildAttributesDecodingParser::numericTag(uint32_t tag, uint32_t number) {
    decodeNumber(*m_Attributes, attributes::TagVendor_Qel, tag, number);
    return true;
}

} // namespace elfext
