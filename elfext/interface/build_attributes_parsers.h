// Parsers of the build attributes section, type `SHT_QEL_ATTRIBUTES`, by convention named
// ".QEL.attributes". Its layout is public, part of the processor's ABI supplement:
//
//     section         "A", subsections up to the end
//     subsection      u32 length of all of it, vendor name with NUL, sub-subsections
//     sub-subsection  ULEB scope, u32 length of all of it, body
//     body            scope 1, the file:    attributes
//                     scope 2, sections:    ULEB indexes, a 0 byte, attributes
//                     scope 3, symbols:     ULEB indexes, a 0 byte, attributes
//     attribute       ULEB tag, then by the tag's class a ULEB number, a text with NUL, or both
//
// A u32 is in the byte order of the ELF file. A ULEB has seven bits a byte, the lowest first, and
// bit 7 in every byte but the last; numbers are 32 bits wide, and one of more than five bytes
// folds: required, since that is how writers of old got theirs read.
//
// The walk is a family of classes, so that a pass can take only the layer that it wants: the
// section layer finds subsections and scopes, two tag layers decode attributes of the vendors
// "qeabi" and "QEL". Nothing is copied: names, texts and bodies are addresses in the section's
// bytes. Nothing is reported either: a parser says whether all was sound, and goes on after a fault
// where the next thing can be found.
#pragma once

#include "attributes/interface/build_attributes.h"

#include <cstdint>

namespace elfext {

class ObjectModule;
class ObjectWithBuildAttributes;

class BuildAttributesParserBase {
public:
    BuildAttributesParserBase(const BuildAttributesParserBase&) = delete;
    BuildAttributesParserBase& operator=(const BuildAttributesParserBase&) = delete;
    virtual ~BuildAttributesParserBase() = default;

protected:
    BuildAttributesParserBase() = default;
};

// The section layer. What is not overridden does nothing and is content.
class BuildAttributesSectionParser : public BuildAttributesParserBase {
public:
    // Walks the `length` bytes of a section at `data`, not null, and calls one of the operations
    // below for each sub-subsection whose structure is sound. A wrong length of a subsection ends
    // the walk; any other fault costs the rest of its subsection. True if nothing was wrong and no
    // operation said false.
    bool parse(const uint8_t* data, uint64_t length, bool isLittleEndian);

    // `vendorName` ends in a NUL; the attributes are the `length` bytes at `data`. False reports a
    // bad sub-subsection.
    virtual bool parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                        uint32_t length);
    // The same for some sections, or symbols, by their `indexCount` indexes.
    virtual bool parseSectionSubSubsection(const char* vendorName, const uint32_t* indexes,
                                           uint32_t indexCount, const uint8_t* data,
                                           uint32_t length);
    virtual bool parseSymbolSubSubsection(const char* vendorName, const uint32_t* indexes,
                                          uint32_t indexCount, const uint8_t* data,
                                          uint32_t length);
};

// The tag layer of "qeabi". What is not overridden does nothing and is content.
class QeabiBuildAttributesSubSubsectionParser : public BuildAttributesParserBase {
public:
    // Walks the attributes in the `length` bytes at `data`, not null, and calls an operation for
    // each. False if an attribute was cut or had no class, which ends the walk, or if an operation
    // said false, which does not.
    virtual bool parse(const uint8_t* data, uint32_t length);

    // Texts end in a NUL and lie in the bytes that are walked.
    virtual bool numericTag(uint32_t tag, uint32_t number);
    virtual bool stringTag(uint32_t tag, const char* text);
    virtual bool numericAndStringTag(uint32_t tag, uint32_t number, const char* text);
    // The attribute inside of a `Tag_also_compatible_with`, by its class.
    virtual bool alsoCompatibleNumericTag(uint32_t tag, uint32_t number);
    virtual bool alsoCompatibleStringTag(uint32_t tag, const char* text);
    virtual bool alsoCompatibleNumericAndStringTag(uint32_t tag, uint32_t number, const char* text);

private:
    bool parseNested(const char* bytes);
};

// The tag layer of "QEL": even tags have a number, odd ones a text.
class QelBuildAttributesSubSubsectionParser : public BuildAttributesParserBase {
public:
    // As that of "qeabi".
    bool parse(const uint8_t* data, uint32_t length);

    virtual bool numericTag(uint32_t tag, uint32_t number);
    virtual bool stringTag(uint32_t tag, const char* text);
};

// Fills a record from attributes of "qeabi". Tags that the record does not know are skipped, texts
// of the record are cut to 31 characters. Vendor names in the record refer to the walked bytes
// until the record is interned.
class QeabiBuildAttributesDecodingParser : public QeabiBuildAttributesSubSubsectionParser {
public:
    // `attributes` is not null and outlives the parser.
    explicit QeabiBuildAttributesDecodingParser(attributes::BuildAttributes* attributes)
        : m_Attributes(attributes) {}

    bool numericTag(uint32_t tag, uint32_t number) override;
    bool stringTag(uint32_t tag, const char* text) override;
    bool numericAndStringTag(uint32_t tag, uint32_t number, const char* text) override;
    bool alsoCompatibleNumericTag(uint32_t tag, uint32_t number) override;
    bool alsoCompatibleStringTag(uint32_t tag, const char* text) override;
    bool alsoCompatibleNumericAndStringTag(uint32_t tag, uint32_t number,
                                           const char* text) override;

private:
    attributes::BuildAttributes* m_Attributes;
};

// Fills a record from attributes of "QEL"; its texts are not kept.
class QelBuildAttributesDecodingParser : public QelBuildAttributesSubSubsectionParser {
public:
    explicit QelBuildAttributesDecodingParser(attributes::BuildAttributes* attributes)
        : m_Attributes(attributes) {}

    bool numericTag(uint32_t tag, uint32_t number) override;

private:
    attributes::BuildAttributes* m_Attributes;
};

// Attaches what a section says to a module, its sections and its symbols. Each pass takes one
// scope, so three of them go over a section, in order: symbols build upon sections, and these upon
// the file.
class BuildAttributesInjector : public BuildAttributesSectionParser {
public:
    enum Pass : uint32_t {
        Pass_File = 0,
        Pass_Sections = 1,
        Pass_Symbols = 2,
    };

    // `objectModule` is not null and outlives the injector.
    BuildAttributesInjector(ObjectModule* objectModule, uint32_t passNumber)
        : m_ObjectModule(objectModule), pass(passNumber) {}

    bool parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                uint32_t length) override;
    // An index without a section makes the answer false; the others are served. The same for
    // symbols, whose indexes count from 1.
    bool parseSectionSubSubsection(const char* vendorName, const uint32_t* indexes,
                                   uint32_t indexCount, const uint8_t* data,
                                   uint32_t length) override;
    bool parseSymbolSubSubsection(const char* vendorName, const uint32_t* indexes,
                                  uint32_t indexCount, const uint8_t* data,
                                  uint32_t length) override;

private:
    class Application;

    void allowFor(uint64_t bytes) { m_AllowedWork += bytes * WorkPerByte; }
    bool spend(uint64_t work);

    // A short section can ask for endless work: the same attributes for many symbols that each
    // have others already. Such a section counts as corrupt once decoding and copying have
    // touched this many bytes, and as many for each byte seen; compilers' sections stay far below.
    static constexpr uint64_t FreeWork = uint64_t{4} << 20;
    static constexpr uint64_t WorkPerByte = 4;

    ObjectModule* m_ObjectModule;
    uint32_t pass;
    uint64_t m_AllowedWork = FreeWork;
    bool m_IsExhausted = false;
};

} // namespace elfext
