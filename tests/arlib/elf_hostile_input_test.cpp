// Objects that are cut or spoiled at every place, one after the other.
//
// Reading ends with an answer: the module, and not a word said, or a report and no module. Then the
// same once more for a reader that is told to go on wherever it can, and everything that can be
// asked of what it made of the bytes is asked. The sanitized build sees every byte that is read
// where there is none.

#include <string>
#include <vector>

#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/format_recognizer.h"
#include "elfext/interface/object_module.h"
#include "tests/arlib/arlib_fixture.h"
#include "tests/support/elf_builder.h"
#include "tests/support/module_walk.h"
#include "tests/support/rich_elf.h"

namespace arlibtest {
namespace {

using testsupport::ElfFormat;
using testsupport::RichElf;
using testsupport::SectionField;

using namespace testsupport::elf;

// Counts reports. A problem that is no warning or error cannot be passed.
class CountingHandler final : public elfext::ErrorHandler {
public:
    explicit CountingHandler(bool goesOn) : m_GoesOn(goesOn) {}

    bool report(elfext::ObjectModule*, elfext::Severity severity, const char* message) override {
        ++reports;
        last = message;
        return m_GoesOn && severity != elfext::Severity_Fatal;
    }

    int reports = 0;
    std::string last;

private:
    bool m_GoesOn;
};

class HostileElf : public ArlibTest {
protected:
    // Reads the bytes in both ways. The copy is exactly as long as they are, so that a byte read
    // behind them is seen.
    void readBoth(const std::string& bytes) {
        const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
        static constexpr uint8_t none = 0;
        const uint8_t* data = exact.empty() ? &none : exact.data();
        elfext::isElfFile(data, exact.size());
        for (const bool goesOn : {false, true}) {
            CountingHandler counting(goesOn);
            elfext::ObjectModule module;
            module.setErrorHandler(&counting);
            const bool isRead = elfext::readElfBuffer("file", data, exact.size(), &module, nullptr);
            if (isRead) {
                ++m_GoodReads;
                m_Walked += testsupport::walkModule(module);
            } else {
                ASSERT_TRUE(module.isEmpty());
            }
            if (!goesOn) {
                ASSERT_EQ(isRead, counting.reports == 0) << counting.last;
            } else if (!isRead) {
                ASSERT_NE(counting.reports, 0);
            }
        }
    }

    // Sets each byte of a stretch to each of the values.
    void spoilEach(const std::string& right, uint64_t start, uint64_t end,
                   const std::string& values) {
        std::string bytes = right;
        for (uint64_t i = start; i < end; ++i) {
            for (const char value : values) {
                bytes[i] = value;
                readBoth(bytes);
                if (HasFatalFailure()) {
                    FAIL() << "byte " << i << " set to " << static_cast<int>(value);
                }
            }
            bytes[i] = right[i];
        }
    }

    // What a size, a count, an index or a sign turns on.
    const std::string turningValues = {'\x00', '\x7F', '\x80', '\xFF'};

    uint64_t m_GoodReads = 0;
    uint64_t m_Walked = 0;
};

struct HostileKind {
    ElfFormat format;
    uint16_t type;
};

class HostileRichElf : public HostileElf, public testing::WithParamInterface<HostileKind> {
protected:
    RichElf rich() const { return testsupport::richElf(GetParam().format, GetParam().type); }
};

std::vector<HostileKind> allKinds() {
    std::vector<HostileKind> kinds;
    for (const ElfFormat format : testsupport::allElfFormats) {
        kinds.push_back({format, ET_REL});
        kinds.push_back({format, ET_DYN});
    }
    return kinds;
}

std::string kindName(const testing::TestParamInfo<HostileKind>& info) {
    const ElfFormat format = info.param.format;
    return std::string(info.param.type == ET_REL ? "Object" : "Image") +
           (format.is64 ? "64" : "32") + (format.littleEndian ? "Little" : "Big");
}

INSTANTIATE_TEST_SUITE_P(All, HostileRichElf, testing::ValuesIn(allKinds()), kindName);

TEST_P(HostileRichElf, IsFreeOfDefects) {
    readBoth(rich().bytes());
    EXPECT_EQ(m_GoodReads, 2U);
    EXPECT_GT(m_Walked, 100U);
}

TEST_P(HostileRichElf, CutAtEveryByte) {
    const std::string right = rich().bytes();
    for (size_t size = 0; size < right.size(); ++size) {
        readBoth(right.substr(0, size));
        ASSERT_FALSE(HasFatalFailure()) << "after " << size << " bytes";
    }
    EXPECT_EQ(m_GoodReads, 0U) << "the headers of the sections end the file";
}

TEST_P(HostileRichElf, EveryByteOfTheHeadersSpoiled) {
    const RichElf object = rich();
    const std::string right = object.bytes();
    const testsupport::ElfLayout layout = object.builder.layout();
    const uint64_t headers = layout.programHeaderOffset != 0
                                 ? layout.sections[1].offset
                                 : testsupport::elfHeaderSize(GetParam().format);
    spoilEach(right, 0, headers, turningValues);
    spoilEach(right, layout.sectionHeaderOffset, right.size(), turningValues);
    EXPECT_GT(m_GoodReads, 0U) << "many bytes matter to nobody";
}

TEST_P(HostileRichElf, EveryByteOfTheContentsSpoiled) {
    const RichElf object = rich();
    const testsupport::ElfLayout layout = object.builder.layout();
    spoilEach(object.bytes(), layout.sections[1].offset, layout.sectionHeaderOffset, "\x01\xFF");
    EXPECT_GT(m_GoodReads, 0U);
}

// Two fields at once: what a section is, and what it is tied to.
TEST_P(HostileRichElf, EverySectionAsEveryOtherKind) {
    const RichElf object = rich();
    const std::string right = object.bytes();
    const uint32_t types[] = {SHT_NULL,           SHT_PROGBITS,
                              SHT_SYMTAB,         SHT_STRTAB,
                              SHT_RELA,           SHT_HASH,
                              SHT_DYNAMIC,        SHT_NOTE,
                              SHT_NOBITS,         SHT_REL,
                              SHT_DYNSYM,         SHT_GROUP,
                              SHT_SYMTAB_SHNDX,   SHT_GNU_verdef,
                              SHT_GNU_verneed,    SHT_GNU_versym,
                              SHT_QEL_EXIDX,      SHT_QEL_PREEMPTMAP,
                              SHT_QEL_ATTRIBUTES, SHT_QEL_DEBUGOVERLAY};
    for (size_t section = 1; section <= object.names; ++section) {
        for (const uint32_t type : types) {
            for (const size_t link :
                 {size_t{0}, object.strings, object.symbols, object.dynamicSymbols, section}) {
                std::string bytes = right;
                setSectionField(bytes, section, SectionField::Type, type);
                setSectionField(bytes, section, SectionField::Link, link);
                readBoth(bytes);
                ASSERT_FALSE(HasFatalFailure()) << section << " as " << type;
            }
        }
    }
    EXPECT_GT(m_GoodReads, 0U);
}

// All offsets and sizes from nothing to behind the end, in steps that meet every other section.
TEST_P(HostileRichElf, EverySectionAnywhere) {
    const RichElf object = rich();
    const std::string right = object.bytes();
    for (size_t section = 1; section <= object.names; ++section) {
        for (uint64_t offset = 0; offset < right.size() + 64; offset += 131) {
            for (const uint64_t size : {uint64_t{1}, uint64_t{60}, right.size()}) {
                std::string bytes = right;
                setSectionField(bytes, section, SectionField::Size, size);
                setSectionField(bytes, section, SectionField::Offset, offset);
                readBoth(bytes);
                ASSERT_FALSE(HasFatalFailure()) << section << " at " << offset;
            }
        }
    }
    EXPECT_GT(m_GoodReads, 0U);
}

// An image whose linker has compressed its data: ten bytes that are a hundred in memory.
class HostileCompressedImage : public HostileElf, public testing::WithParamInterface<ElfFormat> {
protected:
    // Without the right name for this symbol nothing is compressed.
    static testsupport::ElfBuilder image(const std::string& fourWords = "__scatterload_rt2") {
        testsupport::ElfBuilder builder(GetParam(), ET_EXEC);
        testsupport::ElfBytes table(GetParam());
        table.address(0x9000).address(0x20000).address(100).address(0x8000);
        builder.add({.name = "ER_RO",
                     .flags = SHF_ALLOC | SHF_EXECINSTR,
                     .contents = std::string(16, 'c') + table.bytes(),
                     .address = 0x8000});
        builder.add({.name = "ER_RW",
                     .flags = SHF_ALLOC | SHF_WRITE,
                     .contents = "ddddeeeeff",
                     .address = 0x20000});
        builder.addSymbols({{.name = "__decompress", .section = 1, .value = 0x8000},
                            {.name = "__decompress1", .section = 1, .value = 0x8000},
                            {.name = fourWords, .section = 1, .value = 0x8008},
                            {.name = "Region$$Table$$Base", .section = 1, .value = 0x8010}});
        return builder;
    }
};

std::string imageName(const testing::TestParamInfo<ElfFormat>& info) {
    return kindName({{info.param, ET_EXEC}, info.index});
}

INSTANTIATE_TEST_SUITE_P(All, HostileCompressedImage, testing::ValuesIn(testsupport::allElfFormats),
                         imageName);

TEST_P(HostileCompressedImage, SectionsAreUnpacked) {
    readBoth(image("__scatterload_rt1").bytes());
    const uint64_t plain = m_Walked;
    m_Walked = 0;
    readBoth(image().bytes());
    EXPECT_EQ(m_GoodReads, 4U);
    // Both reads see the ten bytes once more.
    EXPECT_GT(m_Walked, plain + 2 * 10 * uint64_t{'d'});
}

TEST_P(HostileCompressedImage, EveryByteSpoiled) {
    const std::string right = image().bytes();
    spoilEach(right, 0, right.size(), turningValues);
    EXPECT_GT(m_GoodReads, 0U) << "many bytes matter to nobody";
}

TEST_F(HostileElf, ShortInputs) {
    for (size_t size = 0; size < 80; ++size) {
        for (const char fill : {'\x00', '\x01', '\x02', '\x7F', '\xFF'}) {
            readBoth(std::string(size, fill));
            ASSERT_FALSE(HasFatalFailure()) << size;
        }
    }
    EXPECT_EQ(m_GoodReads, 0U);
}

} // namespace
} // namespace arlibtest
