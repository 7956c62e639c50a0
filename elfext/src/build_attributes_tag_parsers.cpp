// The tag layers: attributes of both vendors, and the attribute inside of an attribute.

#include "attributes/interface/standard_tags.h"
#include "attributes/interface/tag_classifier.h"
#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/src/attribute_stream.h"
#include "platform/interface/internal_check.h"

namespace elfext {

namespace {

using Classifier = attributes::BuildAttributesTagClassifier;

// Tags below this mark structure, or nothing; none has a value that could be stepped over.
constexpr uint32_t FirstAttributeTag = 4;

struct TagClass {
    bool hasNumber;
    bool hasText;
};

TagClass classOfQeabiTag(uint32_t tag) {
    const auto number = static_cast<int32_t>(tag);
    const bool hasBoth = Classifier::isQeabiNumericAndStringTag(number);
    return {hasBoth || Classifier::isQeabiNumericTag(number),
            hasBoth || Classifier::isQeabiStringTag(number)};
}

TagClass classOfQelTag(uint32_t tag) {
    const bool isEven = tag % 2 == 0;
    return {isEven, !isEven};
}

// A tag with its value.
struct Attribute {
    // False if the tag has no class, or the value is cut.
    bool read(AttributeStream& stream, TagClass (*classOf)(uint32_t)) {
        if (!stream.readNumber(tag) || tag < FirstAttributeTag) {
            return false;
        }
        tagClass = classOf(tag);
        return (!tagClass.hasNumber || stream.readNumber(number)) &&
               (!tagClass.hasText || stream.readText(text));
    }

    uint32_t tag = 0;
    TagClass tagClass{};
    uint32_t number = 0;
    const char* text = nullptr;
};

} // namespace

bool QeabiBuildAttributesSubSubsectionParser::parse(const uint8_t* data, uint32_t length) {
    TOMEX_CHECK_TEXT(data != nullptr, "subSubsectionData != NULL");
    AttributeStream stream(data, data + length);
    bool isGood = true;
    while (!stream.isAtEnd()) {
        Attribute attribute;
        if (!attribute.read(stream, &classOfQeabiTag)) {
            return false;
        }
        bool isTaken = false;
        if (attribute.tag == attributes::TagNumber_also_compatible_with) {
            isTaken = parseNested(attribute.text);
        } else if (!attribute.tagClass.hasText) {
            isTaken = numericTag(attribute.tag, attribute.number);
        } else if (!attribute.tagClass.hasNumber) {
            isTaken = stringTag(attribute.tag, attribute.text);
        } else {
            isTaken = numericAndStringTag(attribute.tag, attribute.number, attribute.text);
        }
        isGood = isTaken && isGood;
    }
    return isGood;
}

bool QeabiBuildAttributesSubSubsectionParser::parseNested(const char* bytes) {
    // The text's NUL belongs to the nested attribute: it ends its text, or is its number 0.
    const auto* const begin = reinterpret_cast<const uint8_t*>(bytes);
    AttributeStream stream(begin, begin + std::strlen(bytes) + 1);
    Attribute attribute;
    if (!attribute.read(stream, &classOfQeabiTag)) {
        return false;
    }
    if (!attribute.tagClass.hasText) {
        stream.skipFinalNul();
    }
    if (!stream.isAtEnd()) {
        return false;
    }
    if (!attribute.tagClass.hasText) {
        return alsoCompatibleNumericTag(attribute.tag, attribute.number);
    }
    if (!attribute.tagClass.hasNumber) {
        return alsoCompatibleStringTag(attribute.tag, attribute.text);
    }
    return alsoCompatibleNumericAndStringTag(attribute.tag, attribute.number, attribute.text);
}

bool QelBuildAttributesSubSubsectionParser::parse(const uint8_t* data, uint32_t length) {
    TOMEX_CHECK_TEXT(data != nullptr, "subSubsectionData != NULL");
    AttributeStream stream(data, data + length);
    bool isGood = true;
    while (!stream.isAtEnd()) {
        Attribute attribute;
        if (!attribute.read(stream, &classOfQelTag)) {
            return false;
        }
        const bool isTaken = attribute.tagClass.hasNumber
                                 ? numericTag(attribute.tag, attribute.number)
                                 : stringTag(attribute.tag, attribute.text);
        isGood = isTaken && isGood;
    }
    return isGood;
}

bool QeabiBuildAttributesSubSubsectionParser::numericTag(uint32_t, uint32_t) {
    return true;
}

bool QeabiBuildAttributesSubSubsectionParser::stringTag(uint32_t, const char*) {
    return true;
}

bool QeabiBuildAttributesSubSubsectionParser::numericAndStringTag(uint32_t, uint32_t, const char*) {
    return true;
}

bool QeabiBuildAttributesSubSubsectionParser::alsoCompatibleNumericTag(uint32_t, uint32_t) {
    return true;
}

bool QeabiBuildAttributesSubSubsectionParser::alsoCompatibleStringTag(uint32_t, const char*) {
    return true;
}

bool QeabiBuildAttributesSubSubsectionParser::alsoCompatibleNumericAndStringTag(uint32_t, uint32_t,
                                                                                const char*) {
    return true;
}

bool QelBuildAttributesSubSubsectionParser::numericTag(uint32_t, uint32_t) {
    return true;
}

bool QelBuildAttributesSubSubsectionParser::stringTag(uint32_t, const char*) {
    return true;
}

} // namespace elfext
