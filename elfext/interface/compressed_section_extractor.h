// Finds out how large the sections of an image are that the linker has compressed.
//
// An image carries a table, between the symbols "Region$$Table$$Base" and "Region$$Table$$Limit",
// from which its start-up code learns what to copy, to clear and to unpack. In images that link
// "__scatterload_rt2" an entry has four words of the class's width:
//
//     0  where the region's bytes are loaded; of no interest here
//     1  the address of the region's section; with bit 0 relative to the table, with bit 1 only
//        for sections of data that can be written
//     2  the size of the region in memory; bit 0 does not belong to it
//     3  the address of the routine that does the work; with bit 0 counted back from the table
//
// A section is compressed if its entry's routine is "__decompress". In older images entries have
// three words, and nothing is compressed.
//
// The tables of a file may hold anything. Whatever does not fit together means that nothing is
// compressed; nothing is reported.
#pragma once

#include "elfext/interface/decompressors.h"

#include <cstdint>
#include <vector>

namespace elfext {

class Buffer;
class ObjectModule;
class Section;
class Symbol;

class CompressedSectionExtractor {
public:
    // Looks for the tables of `objectModule`, which is not null and must outlive the extractor
    // unchanged.
    explicit CompressedSectionExtractor(ObjectModule* objectModule);

    // The section that holds the region table; null if there is none.
    Section* getRegionTableSection() const { return m_RegionTableSection; }
    // Where in that section, and at which address; the offset is notFound if there is no table.
    static constexpr uint64_t notFound = UINT64_MAX;
    uint64_t getRegionTableOffset() const { return m_RegionTableOffset; }
    uint64_t getRegionTableAddress() const { return m_RegionTableAddress; }
    // Whether entries can tell of compression.
    enum State : uint32_t {
        State_NotCompressed = 1, // entries of three words, or no table
        State_Compressed = 2,    // entries of four words
    };
    uint32_t getCompressionState() const { return m_CompressionState; }
    // 0 also for a table that its section does not hold.
    uint32_t getRegionTableEntryCount() const { return m_RegionTableEntryCount; }
    // The variant by which all compressed sections are to be unpacked.
    int32_t getDecompressorId() const { return m_DecompressorId; }

    // Sets `size` to the size in memory of a compressed section of the module. False, and no
    // change, for a section that is not compressed.
    bool findUncompressedSize(const Section& section, uint64_t& size) const;

    // Fills `destination` with a section of the module as it is in memory: as many bytes as
    // findUncompressedSize tells, or else as the section's getSize. The caller asks these first,
    // and not only for the room: more than UINT32_MAX bytes are an internal fault, and files may
    // claim any number. A section that cannot be unpacked comes as it is in the file, with zeros
    // behind it. False if the contents could not be fetched from the file, which has been reported.
    bool getContents(Section* section, uint8_t* destination) const;

private:
    // An entry that unpacks a section at `address`.
    struct CompressedRegion {
        uint64_t address;
        uint64_t size;
        bool onlyWritable;
    };
    struct NamedSymbols;

    void findTable(const NamedSymbols& symbols);
    void measureTable(const NamedSymbols& symbols);
    const Symbol* findVariantSymbol(uint64_t address) const;
    void identifyDecompressor(const NamedSymbols& symbols);
    void readTable();
    void keepDecidingRegions();
    std::vector<uint64_t> decompressorAddresses() const;
    bool decompress(const Buffer& contents, uint8_t* destination, uint64_t size) const;
    uint64_t wordSize() const;
    uint64_t addressMask() const;

    ObjectModule* m_ObjectModule;
    Section* m_RegionTableSection = nullptr;
    uint64_t m_RegionTableOffset = notFound;
    uint64_t m_RegionTableAddress = 0;
    uint32_t m_CompressionState = State_NotCompressed;
    uint32_t m_RegionTableEntryCount = 0;
    int32_t m_DecompressorId = unknownDecompressor;
    std::vector<CompressedRegion> m_Regions; // by address, then in the table's order
};

} // namespace elfext
