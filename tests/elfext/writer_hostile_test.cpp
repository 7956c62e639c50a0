// Files with something wrong in them that can be read all the same: whatever they turn into, it can
// be validated, written, and cut down.
#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/round_trip_fixtures.h"

#include <random>

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

// Lets everything pass that can be let pass.
class LenientHandler : public ErrorHandler {
public:
    bool report(ObjectModule* /*objectModule*/, Severity severity, const char* message) override {
        m_Last = message;
        return severity != Severity_Fatal;
    }
    std::string m_Last;
};

class WriterHostileTest : public ReaderFormatTest {
protected:
    // No file that is written is much larger than the one that was read, whatever addresses and
    // alignments that tells: by twice its size for tables that are made anew, and by what may be
    // left free.
    static uint64_t greatestSize(const std::string& bytes) {
        constexpr uint64_t freeBytes = 16 << 20;
        constexpr uint64_t freePerByte = 16;
        return bytes.size() + freeBytes + (1 + freePerByte) * 2 * bytes.size();
    }
};

// Removes every third section and symbol.
class ThirdCriteria : public PruneCriteria {
public:
    bool matchesSection(const Section* /*section*/) override { return ++m_Count % 3 == 0; }
    bool matchesSymbol(const Symbol* /*symbol*/) override { return ++m_Count % 3 == 0; }
    bool matchesSegment(const Segment* /*segment*/) override { return ++m_Count % 3 == 0; }

private:
    uint32_t m_Count = 0;
};

TEST_P(WriterHostileTest, SpoiltFilesAreWrittenWithoutHarm) {
    size_t readable = 0;
    size_t writable = 0;
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        const std::string sound = richElf(format(), type).bytes();
        std::mt19937 random(type);
        for (int i = 0; i < 400; ++i) {
            std::string bytes = sound;
            const size_t changes = 1 + random() % 4;
            for (size_t k = 0; k < changes; ++k) {
                static constexpr uint8_t values[] = {0, 1, 2, 7, 0x7F, 0x80, 0xFE, 0xFF};
                bytes[16 + random() % (bytes.size() - 16)] =
                    static_cast<char>(random() % 2 != 0 ? values[random() % 8] : random());
            }
            LenientHandler handler;
            ObjectModule module;
            module.setErrorHandler(&handler);
            if (!readElfBuffer(testFileName, reinterpret_cast<const uint8_t*>(bytes.data()),
                               bytes.size(), &module, nullptr)) {
                continue;
            }
            ++readable;
            module.validate();
            const std::string written = writtenBytes(module);
            writable += !written.empty() ? 1U : 0U;
            EXPECT_LE(written.size(), greatestSize(bytes));
            ThirdCriteria criteria;
            module.prune(criteria);
            module.validate();
            writtenBytes(module);
            module.imposeSectionOrder();
            writtenBytes(module);
        }
    }
    EXPECT_GT(readable, 100U);
    EXPECT_GT(writable, 60U);
}

// Segments want to lie as far away as an alignment can say.
TEST_P(WriterHostileTest, WhereSegmentsWantToLieIsNoReasonForALargeFile) {
    using testsupport::SegmentField;
    const uint32_t bits = format().is64 ? 64 : 32;
    uint32_t written = 0;
    for (uint32_t bit = 4; bit < bits; ++bit) {
        testsupport::ElfBuilder builder(format(), elf::ET_EXEC);
        for (int i = 0; i < 3; ++i) {
            const size_t section = builder.add({.contents = std::string(64, 'x')});
            builder.addSegment({.firstSection = section,
                                .lastSection = section,
                                .alignment = uint64_t{1} << bit,
                                .raw = {{SegmentField::VirtualAddress, 8}}});
        }
        const std::string bytes = builder.bytes();
        LenientHandler handler;
        ObjectModule module;
        module.setErrorHandler(&handler);
        ASSERT_TRUE(readElfBuffer(testFileName, reinterpret_cast<const uint8_t*>(bytes.data()),
                                  bytes.size(), &module, nullptr));
        const std::string image = writtenBytes(module);
        ASSERT_LE(image.size(), greatestSize(bytes)) << "bit " << bit;
        EXPECT_EQ(handler.m_Last.find("File too large") != std::string::npos, image.empty());
        written += image.empty() ? 0U : 1U;
    }
    EXPECT_GT(written, 10U);
    EXPECT_LT(written, bits - 8);
}

INSTANTIATE_FORMATS(WriterHostileTest);

// The same bytes serve as the names of all symbols, and as the last part of each.
TEST_F(ReaderTest, NamesThatShareTheirBytesShareThemAgain) {
    testsupport::ElfBuilder builder;
    const std::string longName(2000, 'n');
    std::vector<testsupport::BuiltElfSymbol> symbols;
    for (size_t i = 0; i < 1500; ++i) {
        symbols.push_back(testsupport::reservedSymbol(longName.substr(i), elf::SHN_UNDEF));
    }
    builder.addSymbols(symbols);
    ASSERT_TRUE(read(builder.bytes()));
    const std::string written = writtenBytes(module());
    EXPECT_LT(written.size(), 1500U * 24 + 2000 + 1000);
}

} // namespace
} // namespace elfext::test
