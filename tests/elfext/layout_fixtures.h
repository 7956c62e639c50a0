// What the tests of layout share: a module of sections and segments that a test puts together, and
// what layout says of it.
#pragma once

#include "elfext/interface/elf_layout.h"
#include "elfext/interface/raw_data_block.h"
#include "tests/elfext/model_fixtures.h"
#include "tests/elfext/reader_fixtures.h"

#include <string>

namespace elfext::test {

class LayoutTest : public ModelTest {
protected:
    void SetUp() override {
        ModelTest::SetUp();
        module().setErrorHandler(&m_Handler);
        module().setType(ET_EXEC);
    }

    Section* sized(uint64_t size, uint32_t type = SHT_PROGBITS, uint64_t alignment = 1) {
        Section* const section = module().createSection(".part", type, SHF_ALLOC);
        section->setSize(size);
        section->setAlignment(alignment);
        return section;
    }
    Segment* segmentOf(uint64_t address, uint64_t size, uint64_t alignment) {
        return module().createSegment({.m_Type = PT_LOAD,
                                       .m_VirtualAddress = address,
                                       .m_PhysicalAddress = 0,
                                       .m_MemorySize = size,
                                       .m_FileSize = size,
                                       .m_Flags = PF_R,
                                       .m_Alignment = alignment});
    }
    bool layOut() { return layOutElfFile(&module()); }
    Names sentences() const {
        Names texts;
        for (const Report& report : m_Handler.m_Reports) {
            EXPECT_EQ(report.severity, uint32_t{Severity_Error});
            texts.push_back(report.message);
        }
        return texts;
    }
    // Both answers to the only clash that there is.
    void expectClash(const std::string& parts) {
        const std::string text = parts + " have alignment constraints which cannot both be "
                                         "satisfied given their relative offset";
        EXPECT_FALSE(layOut());
        EXPECT_EQ(sentences(), Names{text});
        m_Handler.m_GoesOn = true;
        EXPECT_TRUE(layOut());
        EXPECT_EQ(sentences(), (Names{text, text}));
    }

    static constexpr uint64_t header = 52;
    RecordingHandler m_Handler;
};

} // namespace elfext::test
