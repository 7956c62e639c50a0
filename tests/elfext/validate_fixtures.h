// What the tests of validation share: a module to spoil, and a handler that writes down which
// operation it was told of a flaw by.
#pragma once

#include "elfext/interface/relocation.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

#include <limits>
#include <string>
#include <vector>

namespace elfext::test {

// One report: by which operation, and what it said.
struct Flaw {
    std::string operation;
    uint32_t severity = 0;
    std::string sentence;

    bool operator==(const Flaw& other) const = default;
};

inline void PrintTo(const Flaw& flaw, std::ostream* stream) {
    *stream << flaw.operation << ": " << flaw.severity << " \"" << flaw.sentence << '"';
}

using Flaws = std::vector<Flaw>;

// The operations, in the order of the handler's table. Each notes its name and goes on to what the
// base class makes of it, which ends in `report`.
class OperationHandler : public ErrorHandler {
public:
    static constexpr size_t always = std::numeric_limits<size_t>::max();

    bool report(ObjectModule* /*objectModule*/, Severity severity, const char* message) override {
        m_Flaws.push_back({m_Operation, severity, message});
        m_Operation.clear();
        return m_Flaws.size() <= m_AnswersTrue;
    }

// NOLINTBEGIN(cppcoreguidelines-macro-usage,bugprone-macro-parentheses)
#define NOTED_0(operation)                                                                         \
    bool operation(ObjectModule* module) override {                                                \
        m_Operation = #operation;                                                                  \
        return ErrorHandler::operation(module);                                                    \
    }
#define NOTED_1(operation, A)                                                                      \
    bool operation(ObjectModule* module, A a) override {                                           \
        m_Operation = #operation;                                                                  \
        return ErrorHandler::operation(module, a);                                                 \
    }
#define NOTED_2(operation, A, B)                                                                   \
    bool operation(ObjectModule* module, A a, B b) override {                                      \
        m_Operation = #operation;                                                                  \
        return ErrorHandler::operation(module, a, b);                                              \
    }
#define NOTED_3(operation, A, B, C)                                                                \
    bool operation(ObjectModule* module, A a, B b, C c) override {                                 \
        m_Operation = #operation;                                                                  \
        return ErrorHandler::operation(module, a, b, c);                                           \
    }
#define NOTED_4(operation, A, B, C, D)                                                             \
    bool operation(ObjectModule* module, A a, B b, C c, D d) override {                            \
        m_Operation = #operation;                                                                  \
        return ErrorHandler::operation(module, a, b, c, d);                                        \
    }
    // NOLINTEND(cppcoreguidelines-macro-usage,bugprone-macro-parentheses)

    NOTED_0(outOfMemory)
    NOTED_0(sectionHeaderTableEmpty)
    NOTED_3(sectionSymbolNotInSection, uint64_t, bool, uint32_t)
    NOTED_4(sectionSymbolSizeBad, uint64_t, uint32_t, uint64_t, uint64_t)
    NOTED_4(sectionSymbolSizeTooBig, uint64_t, uint32_t, uint64_t, uint64_t)
    NOTED_3(entrySizeBad, uint32_t, uint64_t, uint64_t)
    NOTED_3(sectionLengthBad, uint32_t, uint64_t, uint64_t)
    NOTED_0(pltRelocationsMixed)
    NOTED_1(nullSectionNotNull, uint32_t)
    NOTED_1(firstSectionNotNull, uint32_t)
    NOTED_1(auxiliarySectionHasSymbol, uint32_t)
    NOTED_1(auxiliarySectionHasRelocation, uint32_t)
    NOTED_2(multipleDynamicRelocations, uint64_t, uint32_t)
    NOTED_2(multipleStaticRelocations, uint64_t, uint32_t)
    NOTED_0(programHeadersInRelocatable)
    NOTED_1(loadableSectionOutsideSegment, uint32_t)
    NOTED_2(nonLoadableSectionInSegment, uint32_t, uint32_t)
    NOTED_2(segmentsOutOfOrder, uint32_t, uint32_t)
    NOTED_2(segmentsOverlap, uint32_t, uint32_t)
    NOTED_2(sectionsOverlap, uint32_t, uint32_t)
    NOTED_2(duplicateInterp, uint32_t, uint32_t)
    NOTED_2(duplicatePhdr, uint32_t, uint32_t)
    NOTED_2(loadBeforeInterp, uint32_t, uint32_t)
    NOTED_2(loadBeforePhdr, uint32_t, uint32_t)
    NOTED_3(phdrTooSmall, uint32_t, uint64_t, uint64_t)
    NOTED_4(segmentNotCongruent, uint32_t, uint64_t, uint64_t, uint64_t)
    NOTED_3(sectionAddressNotAligned, uint32_t, uint64_t, uint64_t)
    NOTED_0(noLoadableSegments)
    NOTED_3(headersNotMapped, uint32_t, uint64_t, uint64_t)
    NOTED_3(exidxFlagsBad, uint32_t, bool, bool)
    NOTED_1(exidxLinkBad, uint32_t)
    NOTED_1(groupFlagWithoutGroup, uint32_t)
    NOTED_2(groupMemberWithoutFlag, uint32_t, uint32_t)
    NOTED_4(relocationCrossesGroup, uint64_t, uint32_t, uint32_t, uint32_t)
    NOTED_3(relocationTargetNotRelocatable, uint64_t, uint32_t, uint32_t)
    NOTED_2(localSymbolUndefined, uint64_t, bool)

#undef NOTED_0
#undef NOTED_1
#undef NOTED_2
#undef NOTED_3
#undef NOTED_4

    size_t m_AnswersTrue = always; // to so many reports, and false to all others
    Flaws m_Flaws;

private:
    std::string m_Operation; // of the report that comes next
};

class ValidateTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setErrorHandler(&m_Handler);
        module().setType(ET_REL);
        module().createNullSection(0);
    }

    // Validates with a handler that lets so many flaws pass.
    bool validateWith(size_t answersTrue) {
        m_Handler.m_AnswersTrue = answersTrue;
        m_Handler.m_Flaws.clear();
        return module().validate();
    }
    // These are all flaws, in this order. Whichever of them the handler doesn't let pass is the
    // last that it hears of, and without a handler there is no going on either.
    void expectFlaws(const Flaws& expected) {
        EXPECT_TRUE(validateWith(OperationHandler::always));
        ASSERT_EQ(m_Handler.m_Flaws, expected);
        for (size_t count = 0; count < expected.size(); ++count) {
            EXPECT_FALSE(validateWith(count)) << "after " << count;
            const auto end = expected.begin() + static_cast<std::ptrdiff_t>(count) + 1;
            EXPECT_EQ(m_Handler.m_Flaws, Flaws(expected.begin(), end));
        }
        module().setErrorHandler(nullptr);
        EXPECT_EQ(module().validate(), expected.empty());
        module().setErrorHandler(&m_Handler);
    }
    void expectFlaw(const std::string& operation, uint32_t severity, const std::string& sentence) {
        expectFlaws({{operation, severity, sentence}});
    }
    void expectNothing() { expectFlaws({}); }

    // The tables say what they should, and stay as a test spoils them after this.
    void settleTables() { module().updateAuxiliarySections(); }
    void keepTables() { module().setAuxiliarySectionsUpToDate(true); }

    // --- Parts of a module

    Section* plain(uint32_t flags = 0, uint32_t type = SHT_PROGBITS) {
        return module().createSection(nullptr, type, flags);
    }
    // A section at a place of the file and of memory.
    Section* placed(uint32_t flags, uint64_t offset, uint64_t address, uint64_t size) {
        Section* const section = plain(flags);
        section->setFileOffset(offset);
        section->setAddress(address);
        section->setSize(size);
        return section;
    }
    static SymbolFields localNamed(const char* name, uint32_t type = STT_NOTYPE) {
        SymbolFields fields = named(name, type);
        fields.m_Binding = STB_LOCAL;
        return fields;
    }
    static SymbolFields sectionSymbol(uint64_t size) {
        SymbolFields fields = localNamed(nullptr, STT_SECTION);
        fields.m_Size = size;
        return fields;
    }
    Symbol* localIn(Section* section) {
        return module().createHostedSymbol(localNamed("local"), section, 0);
    }
    Group* groupWithSection(const char* signature) {
        Group* const group = module().createGroup(".group", signature, GRP_COMDAT);
        group->setSection(module().createGroupSection(".group"));
        return group;
    }
    Segment* unplacedSegment(uint32_t type, uint64_t address, uint64_t size,
                             uint64_t alignment = 1) {
        return module().createSegment({.m_Type = type,
                                       .m_VirtualAddress = address,
                                       .m_PhysicalAddress = address,
                                       .m_MemorySize = size,
                                       .m_FileSize = size,
                                       .m_Flags = PF_R,
                                       .m_Alignment = alignment});
    }
    Segment* segment(uint32_t type, uint64_t offset, uint64_t address, uint64_t size,
                     uint64_t alignment = 1) {
        Segment* const made = unplacedSegment(type, address, size, alignment);
        made->setFileOffset(offset);
        return made;
    }

    OperationHandler m_Handler;
};

} // namespace elfext::test
