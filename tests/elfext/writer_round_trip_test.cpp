// Made files: read, written and read again, in all four formats and as all types.
#include "tests/elfext/round_trip_fixtures.h"
#include "tests/support/witness.h"

namespace elfext::test {
namespace {

using testsupport::BuiltElfSymbol;
using testsupport::BuiltSection;
using testsupport::ElfBuilder;
using testsupport::RichElf;

namespace elf = testsupport::elf;

class WriterFormatTest : public ReaderFormatTest {};

TEST_P(WriterFormatTest, ARichObjectComesBack) {
    EXPECT_EQ(roundTrip(richElf(format(), elf::ET_REL).bytes()).difference, "");
}

TEST_P(WriterFormatTest, ARichProgramComesBack) {
    EXPECT_EQ(roundTrip(richElf(format(), elf::ET_EXEC).bytes()).difference, "");
}

TEST_P(WriterFormatTest, ARichLibraryComesBack) {
    EXPECT_EQ(roundTrip(richElf(format(), elf::ET_DYN).bytes()).difference, "");
}

TEST_P(WriterFormatTest, ARichCoreImageComesBack) {
    EXPECT_EQ(roundTrip(richElf(format(), elf::ET_CORE).bytes()).difference, "");
}

TEST_P(WriterFormatTest, AnEmptyObjectComesBack) {
    EXPECT_EQ(roundTrip(ElfBuilder(format()).bytes()).difference, "");
    EXPECT_EQ(roundTrip(ElfBuilder(format()).withoutSectionNames().bytes()).difference, "");
}

TEST_P(WriterFormatTest, WritingTwiceGivesTheSameBytes) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        const RoundTrip once = roundTrip(richElf(format(), type).bytes());
        const RoundTrip twice = roundTrip(once.bytes);
        EXPECT_EQ(once.bytes, twice.bytes) << type;
    }
}

INSTANTIATE_FORMATS(WriterFormatTest);

} // namespace
} // namespace elfext::test
