// What tests share that take something out of a module, or move it, and look at what becomes of the
// tables.
#pragma once

#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {

class StaleTablesTest : public ReaderFormatTest {
protected:
    void prune(std::initializer_list<const Section*> sections) {
        ManualPruneCriteria criteria;
        for (const Section* const section : sections) {
            criteria.addSection(section);
        }
        module().prune(criteria);
    }
    void pruneDynamicSymbol(uint32_t index) {
        ManualPruneCriteria criteria;
        criteria.addSymbol(module().getDynamicSymbol(index));
        module().prune(criteria);
    }
    // The module as it is read back from its bytes, without a report.
    ObjectModule& readBack() {
        m_Bytes = writtenBytes(module());
        m_Again = std::make_unique<ObjectModule>();
        RecordingHandler handler(true);
        EXPECT_TRUE(readBytes(m_Bytes, *m_Again, handler));
        EXPECT_EQ(handler.m_Reports, Reports());
        return *m_Again;
    }
    // Expects that nothing is different then.
    ObjectModule& readBackTheSame() {
        ObjectModule& again = readBack();
        EXPECT_EQ(differenceAfterRemoval(module(), again), "");
        return again;
    }
    void makeFormat(uint32_t type) {
        module().setType(type);
        module().setClass(format().is64 ? ELFCLASS64 : ELFCLASS32);
        module().setMachine(format().is64 ? EM_QEL64 : EM_QEL);
        module().setEndianness(format().littleEndian ? ELFDATA2LSB : ELFDATA2MSB);
        module().createNullSection(0);
    }
    testsupport::ElfBytes bytes() const { return testsupport::ElfBytes(format()); }
    static void setContents(Section& section, const std::string& contents) {
        section.setContents(contents.data(), contents.size());
    }
    uint64_t width() const { return format().is64 ? 8 : 4; }
    void TearDown() override {
        m_Again.reset();
        ReaderFormatTest::TearDown();
    }

private:
    std::string m_Bytes;
    std::unique_ptr<ObjectModule> m_Again;
};

} // namespace elfext::test
