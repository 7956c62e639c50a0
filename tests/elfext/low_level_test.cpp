// Headers and bytes from memory and from a stream.
#include "elfext/src/low_level.h"

#include "elfext/src/file_layout.h"
#include "tests/elfext/container_fixtures.h"
#include "tests/support/elf_builder.h"
#include "tests/support/elf_fields.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

namespace elfext::test {
namespace {

using namespace testsupport;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

OwnedFile streamOf(const std::string& bytes) {
    OwnedFile file(std::tmpfile());
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::fflush(file.get());
    return file;
}

// Runs a check on the same bytes in memory and in a stream.
void inBothInputs(const std::string& bytes, const std::function<void()>& check) {
    {
        SCOPED_TRACE("memory");
        const OpenInput input(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
        check();
    }
    SCOPED_TRACE("stream");
    const OwnedFile file = streamOf(bytes);
    const OpenInput input(file.get(), bytes.size());
    check();
}

LowLevelStatus headerStatus(const std::string& bytes) {
    const OpenInput input(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    Elf64_Ehdr header;
    return lowlevel::readElfHeader(header);
}

std::string sampleFile(ElfFormat format) {
    ElfBuilder builder(format, elf::ET_EXEC);
    builder.add({.name = ".text",
                 .type = elf::SHT_PROGBITS,
                 .flags = 6,
                 .contents = "code",
                 .info = 0x11223344,
                 .address = 0x8000,
                 .alignment = 4,
                 .entrySize = 9});
    builder.addSegment({.flags = 5, .firstSection = 1, .lastSection = 1});
    builder.header(HeaderField::Entry, 0x8004);
    builder.header(HeaderField::Flags, 0x5000000);
    return builder.bytes();
}

// A 32-bit header of the second form, with the words behind it.
std::string secondForm(ElfFormat format, uint32_t version = 2, uint32_t extraSize = 8) {
    ElfBuilder builder(format);
    std::string bytes = builder.bytes().substr(0, 52);
    setHeaderField(bytes, HeaderField::Machine, 77);
    bytes.replace(0, 4, "\xF7ORC");
    return bytes + ElfBytes(format).word(version).word(extraSize).bytes();
}

class LowLevelTest : public ContainerTest {};
using LowLevelDeathTest = LowLevelTest;

TEST_F(LowLevelTest, ReadsBytesInTheirBounds) {
    inBothInputs("0123456789", [] {
        char buffer[11] = {};
        EXPECT_EQ(lowlevel::readBytes(buffer, 3, 4), LowLevelStatus_Good);
        EXPECT_STREQ(buffer, "3456");
        EXPECT_EQ(lowlevel::readBytes(buffer, 0, 10), LowLevelStatus_Good);
        EXPECT_STREQ(buffer, "0123456789");
        EXPECT_EQ(lowlevel::readBytes(buffer, 10, 0), LowLevelStatus_Good);
        EXPECT_EQ(lowlevel::readBytes(buffer, 7, 4), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::readBytes(buffer, 11, 0), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::readBytes(buffer, UINT64_MAX, 2), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::readBytes(buffer, UINT64_MAX - 1, 2), LowLevelStatus_Short);
    });
}

TEST_F(LowLevelTest, MoreThan32BitsAtOnceAreShort) {
    inBothInputs("0123456789", [] {
        char buffer[1];
        EXPECT_EQ(lowlevel::readBytes(buffer, 0, uint64_t{1} << 32), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::readBytes(buffer, 0, UINT64_MAX), LowLevelStatus_Short);
    });
}

// In a stream of unknown size what is not there is found out by reading.
TEST_F(LowLevelTest, StreamThatEndsIsShort) {
    const OwnedFile file = streamOf("0123456789");
    const OpenInput input(file.get(), lowlevel::UnknownSize);
    char buffer[8];
    EXPECT_EQ(lowlevel::readBytes(buffer, 4, 8), LowLevelStatus_Short);
    EXPECT_EQ(lowlevel::readBytes(buffer, 20, 1), LowLevelStatus_Short);
}

TEST_F(LowLevelTest, StreamIsReadUpTo2GiB) {
    const OwnedFile file = streamOf("0123456789");
    const OpenInput input(file.get(), lowlevel::UnknownSize);
    EXPECT_EQ(lowlevel::checkBytes(0x7FFFFFFF, 1), LowLevelStatus_Good);
    EXPECT_EQ(lowlevel::checkBytes(0x80000000, 1), LowLevelStatus_Short);
}

TEST_F(LowLevelTest, MemoryIsReadBeyond2GiB) {
    const uint8_t byte = 0;
    const OpenInput input(&byte, 0x100000000);
    EXPECT_EQ(lowlevel::checkBytes(0x80000000, 1), LowLevelStatus_Good);
    EXPECT_EQ(lowlevel::checkBytes(0xFFFFFFFF, 1), LowLevelStatus_Good);
    EXPECT_EQ(lowlevel::checkBytes(0x100000000, 1), LowLevelStatus_Short);
}

TEST_F(LowLevelTest, StreamThatCannotBeReadFails) {
    const OwnedFile file(std::fopen("/dev/null", "wb"));
    const OpenInput input(file.get(), lowlevel::UnknownSize);
    char buffer[1];
    EXPECT_EQ(lowlevel::readBytes(buffer, 0, 1), LowLevelStatus_ReadFailed);
}

TEST_F(LowLevelTest, HeaderOfEachFormat) {
    for (const ElfFormat format : allElfFormats) {
        SCOPED_TRACE(describe(format));
        const std::string file = sampleFile(format);
        inBothInputs(file, [&] {
            Elf64_Ehdr header = {};
            ASSERT_EQ(lowlevel::readElfHeader(header), LowLevelStatus_Good);
            EXPECT_EQ(lowlevel::is64Bit(), format.is64);
            EXPECT_EQ(lowlevel::isLittleEndian(), format.littleEndian);
            EXPECT_EQ(lowlevel::getReadMode(), ReadMode_Plain);
            EXPECT_EQ(std::memcmp(header.e_ident, file.data(), EI_NIDENT), 0);
            EXPECT_EQ(header.e_type, elf::ET_EXEC);
            EXPECT_EQ(header.e_machine, format.is64 ? 183 : 40);
            EXPECT_EQ(header.e_version, 1U);
            EXPECT_EQ(header.e_entry, 0x8004U);
            EXPECT_EQ(header.e_flags, 0x5000000U);
            EXPECT_EQ(header.e_phoff, headerField(file, HeaderField::ProgramHeaderOffset));
            EXPECT_EQ(header.e_shoff, headerField(file, HeaderField::SectionHeaderOffset));
            EXPECT_EQ(header.e_ehsize, format.is64 ? 64 : 52);
            EXPECT_EQ(header.e_phentsize, format.is64 ? 56 : 32);
            EXPECT_EQ(header.e_phnum, 1);
            EXPECT_EQ(header.e_shentsize, format.is64 ? 64 : 40);
            EXPECT_EQ(header.e_shnum, 3);
            EXPECT_EQ(header.e_shstrndx, 2);
        });
    }
}

TEST_F(LowLevelTest, TablesOfEachFormat) {
    for (const ElfFormat format : allElfFormats) {
        SCOPED_TRACE(describe(format));
        const std::string file = sampleFile(format);
        inBothInputs(file, [&] {
            Elf64_Ehdr header = {};
            ASSERT_EQ(lowlevel::readElfHeader(header), LowLevelStatus_Good);
            Elf64_Shdr sections[3] = {};
            ASSERT_EQ(lowlevel::readSectionHeaders(header, 3, sections), LowLevelStatus_Good);
            EXPECT_EQ(sections[1].sh_name, sectionField(file, 1, SectionField::Name));
            EXPECT_EQ(sections[1].sh_type, 1U);
            EXPECT_EQ(sections[1].sh_flags, 6U);
            EXPECT_EQ(sections[1].sh_addr, 0x8000U);
            EXPECT_EQ(sections[1].sh_offset, sectionField(file, 1, SectionField::Offset));
            EXPECT_EQ(sections[1].sh_size, 4U);
            EXPECT_EQ(sections[1].sh_link, 0U);
            EXPECT_EQ(sections[1].sh_info, 0x11223344U);
            EXPECT_EQ(sections[1].sh_addralign, 4U);
            EXPECT_EQ(sections[1].sh_entsize, 9U);
            EXPECT_EQ(sections[2].sh_type, 3U);
            Elf64_Phdr segment = {};
            ASSERT_EQ(lowlevel::readProgramHeaders(header, 1, &segment), LowLevelStatus_Good);
            EXPECT_EQ(segment.p_type, 1U);
            EXPECT_EQ(segment.p_flags, 5U);
            EXPECT_EQ(segment.p_offset, segmentField(file, 0, SegmentField::Offset));
            EXPECT_EQ(segment.p_vaddr, segmentField(file, 0, SegmentField::VirtualAddress));
            EXPECT_EQ(segment.p_paddr, segmentField(file, 0, SegmentField::PhysicalAddress));
            EXPECT_EQ(segment.p_filesz, segmentField(file, 0, SegmentField::FileSize));
            EXPECT_EQ(segment.p_memsz, segmentField(file, 0, SegmentField::MemorySize));
            EXPECT_EQ(segment.p_align, 0x1000U);
        });
    }
}

TEST_F(LowLevelTest, TablesThatAreNotAllThereAreShort) {
    const std::string file = sampleFile({});
    inBothInputs(file, [&] {
        Elf64_Ehdr header = {};
        ASSERT_EQ(lowlevel::readElfHeader(header), LowLevelStatus_Good);
        const uint64_t fitting = (file.size() - header.e_shoff) / 64;
        EXPECT_EQ(lowlevel::checkSectionHeaders(header, fitting), LowLevelStatus_Good);
        EXPECT_EQ(lowlevel::checkSectionHeaders(header, fitting + 1), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::checkSectionHeaders(header, UINT64_MAX / 32), LowLevelStatus_Short);
        Elf64_Shdr untouched = {};
        EXPECT_EQ(lowlevel::readSectionHeaders(header, fitting + 1, &untouched),
                  LowLevelStatus_Short);
        EXPECT_EQ(untouched.sh_type, 0U);
        header.e_shoff = UINT64_MAX - 10;
        EXPECT_EQ(lowlevel::checkSectionHeaders(header, 1), LowLevelStatus_Short);
        EXPECT_EQ(lowlevel::checkSectionHeaders(header, 0), LowLevelStatus_Good);
        header.e_phoff = file.size() - 55;
        EXPECT_EQ(lowlevel::checkProgramHeaders(header, 1), LowLevelStatus_Short);
        header.e_phoff = file.size() - 56;
        EXPECT_EQ(lowlevel::checkProgramHeaders(header, 1), LowLevelStatus_Good);
    });
}

struct StatusRow {
    const char* name;
    LowLevelStatus status;
    std::string bytes;
};

std::vector<StatusRow> statusRows() {
    const std::string narrow = sampleFile({false, true});
    const std::string wide = sampleFile({true, true});
    std::string wrongClass = narrow;
    wrongClass[4] = 3;
    std::string zeroClass = narrow;
    zeroClass[4] = 0;
    std::string wrongMagic = narrow;
    wrongMagic[0] = 0x7E;
    std::string wrongMagicAndClass = wrongMagic;
    wrongMagicAndClass[4] = 9;
    std::string wideWithoutMagic = wide;
    wideWithoutMagic.replace(0, 4, "....");
    std::string secondOfWrongClass = secondForm({false, true});
    secondOfWrongClass[4] = 3;
    return {
        {"Empty", LowLevelStatus_Short, ""},
        {"FifteenBytes", LowLevelStatus_Short, narrow.substr(0, 15)},
        {"SixteenBytes", LowLevelStatus_ReadFailed, narrow.substr(0, 16)},
        {"TwentyBytesWithoutMagic", LowLevelStatus_ReadFailed, std::string(20, 'x')},
        {"FiftyOneBytes", LowLevelStatus_ReadFailed, narrow.substr(0, 51)},
        {"FiftyTwoBytes", LowLevelStatus_Good, narrow.substr(0, 52)},
        {"SixteenBytesOfClass2", LowLevelStatus_Short, wide.substr(0, 16)},
        {"SixtyThreeBytesOfClass2", LowLevelStatus_Short, wide.substr(0, 63)},
        {"SixtyFourBytesOfClass2", LowLevelStatus_Good, wide.substr(0, 64)},
        {"Class2WithoutMagic", LowLevelStatus_Good, wideWithoutMagic},
        {"WrongMagic", LowLevelStatus_BadMagic, wrongMagic},
        {"WrongMagicBeforeWrongClass", LowLevelStatus_BadMagic, wrongMagicAndClass},
        {"Class3", LowLevelStatus_BadClass, wrongClass},
        {"Class0", LowLevelStatus_BadClass, zeroClass},
        {"SecondForm", LowLevelStatus_Good, secondForm({false, true})},
        {"SecondFormBigEndian", LowLevelStatus_Good, secondForm({false, false})},
        {"SecondFormOfWrongClass", LowLevelStatus_BadClass, secondOfWrongClass},
        {"SecondFormOfVersion1", LowLevelStatus_BadMagic, secondForm({false, true}, 1)},
        {"SecondFormOfSize4", LowLevelStatus_BadMagic, secondForm({false, true}, 2, 4)},
        {"SecondFormWithoutItsWords", LowLevelStatus_Short,
         secondForm({false, true}).substr(0, 59)},
    };
}

TEST_F(LowLevelTest, HeaderStatus) {
    for (const StatusRow& row : statusRows()) {
        EXPECT_EQ(headerStatus(row.bytes), row.status) << row.name;
    }
}

TEST_F(LowLevelTest, SecondFormHasItsReadModeAndMachine) {
    for (const bool littleEndian : {true, false}) {
        const std::string bytes = secondForm({false, littleEndian});
        inBothInputs(bytes, [&] {
            Elf64_Ehdr header = {};
            ASSERT_EQ(lowlevel::readElfHeader(header), LowLevelStatus_Good);
            EXPECT_EQ(lowlevel::getReadMode(), ReadMode_SecondForm);
            EXPECT_EQ(lowlevel::isLittleEndian(), littleEndian);
            EXPECT_FALSE(lowlevel::is64Bit());
            EXPECT_EQ(header.e_machine, EM_QEL);
            EXPECT_EQ(header.e_version, 1U);
        });
    }
}

// Only 1 means little-endian.
TEST_F(LowLevelTest, OtherByteOrdersAreBigEndian) {
    std::string bytes = sampleFile({true, false});
    bytes[5] = 9;
    const OpenInput input(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    Elf64_Ehdr header = {};
    ASSERT_EQ(lowlevel::readElfHeader(header), LowLevelStatus_Good);
    EXPECT_FALSE(lowlevel::isLittleEndian());
    EXPECT_EQ(header.e_type, elf::ET_EXEC);
}

TEST_F(LowLevelTest, SymbolsAndRelocationsOfEachFormat) {
    for (const ElfFormat format : allElfFormats) {
        SCOPED_TRACE(describe(format));
        ElfBytes symbol(format);
        ElfBytes relocation(format);
        relocation.address(0x1234);
        if (format.is64) {
            symbol.word(5).byte(0x12).byte(3).half(0xFFF1).number(0x1122334455667788, 8);
            symbol.number(99, 8);
            relocation.number(uint64_t{0x10} << 32 | 0x20107, 8).number(UINT64_MAX, 8);
        } else {
            symbol.word(5).word(0x55667788).word(99).byte(0x12).byte(3).half(0xFFF1);
            relocation.word(0x10 << 8 | 7).word(0xFFFFFFFF);
        }
        const auto* const symbolBytes = reinterpret_cast<const uint8_t*>(symbol.bytes().data());
        const auto* const entry = reinterpret_cast<const uint8_t*>(relocation.bytes().data());
        withLayout(format.is64, format.littleEndian, [&](auto layout) {
            EXPECT_EQ(layout.sizes.symbol, symbol.bytes().size());
            EXPECT_EQ(layout.sizes.rela, relocation.bytes().size());
            const Elf64_Sym sym = layout.symbol(symbolBytes);
            EXPECT_EQ(sym.st_name, 5U);
            EXPECT_EQ(sym.st_info, 0x12);
            EXPECT_EQ(sym.st_other, 3);
            EXPECT_EQ(sym.st_shndx, 0xFFF1);
            EXPECT_EQ(sym.st_value, format.is64 ? 0x1122334455667788U : 0x55667788U);
            EXPECT_EQ(sym.st_size, 99U);
            const Elf64_Rela rela = layout.relocation(entry, true);
            EXPECT_EQ(rela.r_offset, 0x1234U);
            EXPECT_EQ(rela.symbol, 0x10U);
            EXPECT_EQ(rela.type, format.is64 ? 0x20107U : 7U);
            EXPECT_EQ(rela.r_addend, UINT64_MAX) << "an addend of -1 in each class";
            EXPECT_EQ(layout.relocationSymbol(entry), 0x10U);
            EXPECT_EQ(layout.relocation(entry, false).r_addend, 0U);
        });
    }
}

TEST_F(LowLevelTest, RecordSizes) {
    const RecordSizes& narrow = recordSizes(false);
    const RecordSizes& wide = recordSizes(true);
    EXPECT_EQ(narrow.elfHeader, 52U);
    EXPECT_EQ(wide.elfHeader, 64U);
    EXPECT_EQ(narrow.sectionHeader, 40U);
    EXPECT_EQ(wide.sectionHeader, 64U);
    EXPECT_EQ(narrow.programHeader, 32U);
    EXPECT_EQ(wide.programHeader, 56U);
    EXPECT_EQ(narrow.symbol, 16U);
    EXPECT_EQ(wide.symbol, 24U);
    EXPECT_EQ(narrow.rel, 8U);
    EXPECT_EQ(wide.rel, 16U);
    EXPECT_EQ(narrow.rela, 12U);
    EXPECT_EQ(wide.rela, 24U);
    EXPECT_EQ(narrow.dynamicEntry, 8U);
    EXPECT_EQ(wide.dynamicEntry, 16U);
    EXPECT_EQ(narrow.address, 4U);
    EXPECT_EQ(wide.address, 8U);
}

TEST_F(LowLevelTest, PlainMagicFlagStartsUnset) {
    EXPECT_FALSE(lowlevel::isPlainMagicInUse());
    lowlevel::setPlainMagicInUse(true);
    EXPECT_TRUE(lowlevel::isPlainMagicInUse());
    lowlevel::setPlainMagicInUse(false);
}

TEST_F(LowLevelDeathTest, ReadsDoNotNest) {
    const uint8_t byte = 0;
    const OwnedFile file = streamOf("x");
    EXPECT_FAULT(
        {
            lowlevel::openBuffer(&byte, 1);
            lowlevel::openFile(file.get(), 1);
        },
        "elfext/src/low_level", "elfg_readbuffer == NULL");
    EXPECT_FAULT(
        {
            lowlevel::openFile(file.get(), 1);
            lowlevel::openBuffer(&byte, 1);
        },
        "elfext/src/low_level", "elfg_file == NULL");
    EXPECT_FAULT(lowlevel::close(), "elfext/src/low_level",
                 "elfg_file != NULL || elfg_readbuffer != NULL");
}

} // namespace
} // namespace elfext::test
