// Validation as a whole: the order of its rules, where it ends, what it leaves behind, and what it
// makes of files that were read.
#include "alloclib/interface/alloclib.h"
#include "elfext/interface/elf_layout.h"
#include "tests/elfext/validate_fixtures.h"

#include <new>

namespace elfext::test {
namespace {

// --- The order

class ValidateOrderTest : public ValidateTest {
protected:
    // By these operations the flaws are told, and by no more of them than the handler lets pass.
    void expectOperations(const Names& expected) {
        keepTables();
        EXPECT_TRUE(validateWith(OperationHandler::always));
        ASSERT_EQ(operations(), expected);
        for (size_t count = 0; count < expected.size(); ++count) {
            EXPECT_FALSE(validateWith(count)) << "after " << count;
            EXPECT_EQ(
                operations(),
                Names(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(count) + 1));
        }
    }
    Names operations() const {
        Names names;
        for (const Flaw& flaw : m_Handler.m_Flaws) {
            names.push_back(flaw.operation);
        }
        return names;
    }

    void spoilFirstSections() {
        module().getSection(0)->setInfo(1);
        Section* const strings = module().createStringTableSection(nullptr);
        module().createHostedSymbol(named("in"), strings, 0);
        strings->addRelocationAsRead({});
    }
    // The first two overlap in memory and are in disorder in the file. The others have no place
    // there, so that the order is all that is wrong with it.
    void spoilSegments() {
        segment(PT_LOAD, 0x2000, 0x10000, 0x100);
        segment(PT_LOAD, 0x1000, 0x10080, 0x100, 0x1000);
        for (const uint32_t type : {PT_INTERP, PT_INTERP, PT_PHDR, PT_PHDR}) {
            unplacedSegment(type, 0x10000, 0);
        }
    }
    // The first is a part of what is loaded though it is not to be, the second is to be and is
    // not.
    void spoilPlaces() {
        placed(0, 0x2000, 0, 8);
        placed(SHF_ALLOC, 0x2004, 0x50001, 8)->setAlignment(8);
    }
    void spoilGroups() {
        plain(0, SHT_QEL_EXIDX);
        plain(SHF_GROUP);
        Section* const one =
            module().createSection(nullptr, SHT_PROGBITS, 0, groupWithSection("one"));
        Section* const two =
            module().createSection(nullptr, SHT_PROGBITS, 0, groupWithSection("two"));
        two->addRelocation(0, 1, localIn(one));
        one->setFlags(0);
    }
    void spoilSymbols() {
        Section* const text = plain();
        text->setSize(16);
        text->setEntrySize(3);
        module().createHostedSymbol(sectionSymbol(8), text, 0);
        module().createDynamicHostedSymbol(sectionSymbol(17), text, 4);
        module().createAbsoluteSymbol(sectionSymbol(0), 0);
        module().createUndefinedSymbol(localNamed("nowhere"));
        module().createDynamicUndefinedSymbol(localNamed("nowhere"));
    }
    void spoilRelocations() {
        Section* const got = module().createSection(".got", SHT_PROGBITS, 0);
        Symbol* const symbol = module().createDynamicUndefinedSymbol(named("f"));
        got->addRelocation(0, 1, symbol);
        got->addRelocationWithAddend(0, 1, symbol, 0);
        got->addRelocation(0, 1, nullptr);
        got->addRelocation(0, 1, nullptr);
    }
};

// All that can be wrong with an image that has a null section and something to load.
TEST_F(ValidateOrderTest, RulesOfAnImage) {
    module().setType(ET_EXEC);
    spoilFirstSections();
    spoilSegments();
    spoilPlaces();
    spoilGroups();
    spoilSymbols();
    spoilRelocations();
    expectOperations({
        "nullSectionNotNull", // 2
        "auxiliarySectionHasSymbol",
        "auxiliarySectionHasRelocation", // 3
        "segmentsOutOfOrder",            // 5
        "sectionsOverlap",               // 6
        "duplicateInterp",
        "duplicatePhdr",
        "loadBeforeInterp", // 7
        "loadBeforeInterp",
        "loadBeforePhdr",
        "loadBeforePhdr",
        "phdrTooSmall", //
        "phdrTooSmall", //
        "exidxFlagsBad",
        "exidxLinkBad", // 8
        "groupFlagWithoutGroup",
        "groupMemberWithoutFlag", // 9
        "relocationCrossesGroup",
        "relocationTargetNotRelocatable", //
        "sectionSymbolSizeBad",
        "sectionSymbolNotInSection", // 10
        "sectionSymbolSizeTooBig",
        "localSymbolUndefined", //
        "localSymbolUndefined", //
        "entrySizeBad",
        "entrySizeBad",
        "sectionLengthBad", // the rest
        "pltRelocationsMixed",
        "multipleDynamicRelocations", //
        "multipleStaticRelocations",
        "segmentsOverlap", //
        "segmentNotCongruent",
        "sectionAddressNotAligned", //
        "headersNotMapped",
        "loadableSectionOutsideSegment", //
        "nonLoadableSectionInSegment",   //
    });
}

TEST_F(ValidateOrderTest, RulesOfARelocatableFileWithoutANullSection) {
    module().clear();
    plain();
    spoilFirstSections();
    spoilSegments();
    spoilPlaces();
    expectOperations({
        "firstSectionNotNull", // 2
        "auxiliarySectionHasSymbol",
        "auxiliarySectionHasRelocation", // 3
        "programHeadersInRelocatable",   // 4
        "segmentsOutOfOrder",            // 5
        "sectionsOverlap",               // 6
        "duplicateInterp",
        "duplicatePhdr",
        "loadBeforeInterp", // 7
        "loadBeforeInterp",
        "loadBeforePhdr",
        "loadBeforePhdr",
        "phdrTooSmall",                   //
        "phdrTooSmall",                   //
        "relocationTargetNotRelocatable", // 9
        "segmentsOverlap",
        "segmentNotCongruent",
        "headersNotMapped", // the rest
        "loadableSectionOutsideSegment",
        "nonLoadableSectionInSegment", //
    });
}

TEST_F(ValidateOrderTest, RulesOfAnImageWithoutSections) {
    module().clear();
    module().setType(ET_DYN);
    unplacedSegment(PT_PHDR, 0, 0);
    unplacedSegment(PT_PHDR, 0, 0);
    module().createUndefinedSymbol(localNamed("nowhere"));
    expectOperations({"sectionHeaderTableEmpty", "duplicatePhdr", "phdrTooSmall", "phdrTooSmall",
                      "localSymbolUndefined", "noLoadableSegments"});
}

TEST_F(ValidateOrderTest, NoSectionsAndProgramHeadersInOneRelocatableFile) {
    module().clear();
    unplacedSegment(PT_LOAD, 0, 0);
    expectOperations({"sectionHeaderTableEmpty", "programHeadersInRelocatable"});
}

// --- As a whole

TEST_F(ValidateTest, ASoundObjectIsPassed) {
    Section* const text = makeSection();
    text->setSize(16);
    text->addRelocation(4, 1, module().createHostedSymbol(named("f"), text, 0));
    expectNothing();
    ASSERT_TRUE(layOutElfFile(&module()));
    expectNothing();
}

TEST_F(ValidateTest, TheAuxiliarySectionsAreBroughtUpToDateFirst) {
    module().createUndefinedSymbol(named("f"));
    ASSERT_EQ(module().getSymtabSections().getSize(), 0U);
    expectNothing();
    EXPECT_EQ(module().getSymtabSections().getSize(), 1U);
    EXPECT_TRUE(module().areAuxiliarySectionsUpToDate());
}

// What regions traced while the module was validated.
class ValidateRegionTest : public ValidateTest {
protected:
    std::string traceOf(size_t answersTrue, bool& answer) {
        alloclib::setTraceLevel(1);
        testing::internal::CaptureStderr();
        answer = validateWith(answersTrue);
        const std::string trace = testing::internal::GetCapturedStderr();
        alloclib::setTraceLevel(0);
        return trace;
    }
    static void expectRegion(const std::string& trace) {
        EXPECT_EQ(countOf(trace, "(Validate region:"), 2U) << trace;
        EXPECT_NE(trace.find("New region"), std::string::npos) << trace;
        EXPECT_NE(trace.find("estroyed"), std::string::npos) << trace;
    }
    static size_t countOf(const std::string& text, const std::string& part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(ValidateRegionTest, ItsRegionGoesWithIt) {
    placed(0, 0x100, 0, 0x10);
    placed(0, 0x108, 0, 0x10);
    keepTables();
    bool answer = false;
    expectRegion(traceOf(OperationHandler::always, answer));
    EXPECT_TRUE(answer);
    expectRegion(traceOf(0, answer));
    EXPECT_FALSE(answer);
}

// --- Out of memory

// Has no memory for what it is told.
class StarvedHandler : public ErrorHandler {
public:
    bool report(ObjectModule* /*objectModule*/, Severity severity, const char* message) override {
        if (m_Answers == 0) {
            m_Answers = static_cast<size_t>(-1);
            throw std::bad_alloc();
        }
        --m_Answers;
        m_Reports.push_back({severity, message});
        return std::string(message) != "Out of memory" || m_Persists;
    }
    size_t m_Answers = 0; // until there is none
    bool m_Persists = false;
    Reports m_Reports;
};

TEST_F(ValidateRegionTest, OutOfMemoryIsToldAndEndsIt) {
    for (int i = 0; i < 3; ++i) {
        placed(0, 0x100, 0, 0x10);
    }
    keepTables();
    StarvedHandler handler;
    handler.m_Answers = 1;
    module().setErrorHandler(&handler);
    bool answer = true;
    expectRegion(traceOf(0, answer));
    EXPECT_FALSE(answer);
    EXPECT_EQ(handler.m_Reports,
              (Reports{{Severity_Warning, "Sections #1 and #2 overlap in the file"},
                       {Severity_Fatal, "Out of memory"}}));
    module().setErrorHandler(nullptr);
}

using ValidateDeathTest = ValidateTest;

TEST_F(ValidateDeathTest, NobodyGoesOnWithoutMemory) {
    module().clear();
    StarvedHandler handler;
    handler.m_Persists = true;
    module().setErrorHandler(&handler);
    EXPECT_FAULT(module().validate(), "elfext/src/reporting", "!err_response");
    module().setErrorHandler(nullptr);
}

// --- Files that were read

class ValidateReadTest : public ReaderFormatTest {};

// What is read and laid out again has no flaws of its own.
TEST_P(ValidateReadTest, ARichObjectIsSound) {
    ASSERT_TRUE(read(richElf(format())));
    EXPECT_TRUE(module().validate());
    EXPECT_EQ(reports(), Reports());
    ASSERT_TRUE(layOutElfFile(&module()));
    EXPECT_TRUE(module().validate());
    EXPECT_EQ(reports(), Reports());
}

INSTANTIATE_FORMATS(ValidateReadTest);

} // namespace
} // namespace elfext::test
