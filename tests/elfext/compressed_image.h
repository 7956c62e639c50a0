// Images whose linker has compressed their data, for the tests of the region table.
#pragma once

#include "elfext/interface/compressed_section_extractor.h"
#include "tests/elfext/reader_fixtures.h"

#include <optional>

namespace elfext::test {

namespace elf = testsupport::elf;
using testsupport::BuiltElfSymbol;
using testsupport::BuiltSection;
using testsupport::ElfBuilder;
using testsupport::ElfFormat;

inline constexpr uint64_t textAddress = 0x8000;
inline constexpr uint64_t decompressOffset = 4;
inline constexpr uint64_t tableOffset = 32;
inline constexpr uint64_t tableAddress = textAddress + tableOffset;
inline constexpr uint64_t decompressAddress = textAddress + decompressOffset;
inline constexpr uint64_t dataAddress = 0x20000;
inline constexpr size_t dataSize = 10;

struct RegionEntry {
    uint64_t load = 0x9000;
    uint64_t address = dataAddress;
    uint64_t size = 100;
    uint64_t handler = decompressAddress;
};

// An image: code with the table in it, and data. Tests change what they are about.
struct CompressedImage {
    uint16_t type = elf::ET_EXEC;
    std::vector<RegionEntry> entries = {RegionEntry{}};
    BuiltSection text = {
        .name = "ER_RO", .flags = elf::SHF_ALLOC | elf::SHF_EXECINSTR, .address = textAddress};
    BuiltSection data = {.name = "ER_RW",
                         .flags = elf::SHF_ALLOC | elf::SHF_WRITE,
                         .contents = std::string(dataSize, 'd'),
                         .address = dataAddress};
    // Sections 1 and 2 are the two above.
    BuiltElfSymbol base = {.name = "Region$$Table$$Base", .section = 1, .value = tableAddress};
    bool hasLimit = true;
    uint64_t limitAddress = 0; // 0 stands for the end of the entries
    BuiltElfSymbol fourWords = {
        .name = "__scatterload_rt2", .section = 1, .value = textAddress + 8};
    std::vector<BuiltElfSymbol> others = {
        {.name = "__decompress", .section = 1, .value = decompressAddress}};

    ElfBuilder builder(ElfFormat format) const {
        ElfBuilder made(format, type);
        testsupport::ElfBytes table(format);
        for (const RegionEntry& entry : entries) {
            table.address(entry.load).address(entry.address);
            table.address(entry.size).address(entry.handler);
        }
        BuiltSection code = text;
        code.contents = std::string(tableOffset, 'c') + table.bytes();
        if (code.type == elf::SHT_NOBITS) {
            code.noBitsSize = code.contents.size();
        }
        made.add(code);
        made.add(data);
        std::vector<BuiltElfSymbol> symbols = {base, fourWords};
        if (hasLimit) {
            const uint64_t end = tableAddress + table.bytes().size();
            symbols.push_back({.name = "Region$$Table$$Limit",
                               .section = 1,
                               .value = limitAddress != 0 ? limitAddress : end});
        }
        symbols.insert(symbols.end(), others.begin(), others.end());
        made.addSymbols(symbols);
        return made;
    }
};

class CompressedSectionTest : public ReaderFormatTest {
protected:
    uint64_t word() const { return format().is64 ? 8 : 4; }
    // A number as the class holds it.
    uint64_t cut(uint64_t number) const { return format().is64 ? number : number & 0xFFFFFFFF; }

    CompressedSectionExtractor extractorOf(const ElfBuilder& builder) {
        startModule();
        EXPECT_TRUE(read(builder.bytes()));
        EXPECT_EQ(reports(), Reports{});
        return CompressedSectionExtractor(&module());
    }
    CompressedSectionExtractor extractorOf(const CompressedImage& image) {
        return extractorOf(image.builder(format()));
    }
    // The size of the data section in memory, or nothing if it is not compressed.
    std::optional<uint64_t> uncompressed(const CompressedImage& image) {
        const CompressedSectionExtractor extractor = extractorOf(image);
        uint64_t size = 0;
        return extractor.findUncompressedSize(section(2), size) ? std::optional(size)
                                                                : std::nullopt;
    }
    std::optional<uint64_t> uncompressedBy(const RegionEntry& entry) {
        CompressedImage image;
        image.entries = {entry};
        return uncompressed(image);
    }
};

} // namespace elfext::test
