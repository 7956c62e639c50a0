// Reads the region table once, into a list of what it unpacks, by address. A file may have any
// number of entries and of sections, so neither are walked for each of the other.
#include "elfext/interface/compressed_section_extractor.h"

#include "elfext/interface/object_module.h"

#include <algorithm>
#include <cstring>

namespace elfext {
namespace {

constexpr char tableBaseName[] = "Region$$Table$$Base";
constexpr char tableLimitName[] = "Region$$Table$$Limit";
constexpr char fourWordsName[] = "__scatterload_rt2";
constexpr char decompressName[] = "__decompress";
constexpr char decompressVeneerName[] = "__decompress$$rt2veneer";

enum EntryWord : uint32_t { EntryWord_Load, EntryWord_Address, EntryWord_Size, EntryWord_Handler };
constexpr uint64_t wordsInUse = 4;
constexpr uint64_t wordsWithoutCompression = 3;

// Flags in an entry's words.
constexpr uint64_t relativeBit = 1;
constexpr uint64_t onlyWritableBit = 2;
constexpr uint64_t sizeFlagBit = 1;

// What a decompressor may answer when all went well.
constexpr uint32_t harmlessResultBits = 2;

// The symbols of one name.
class Named {
public:
    explicit Named(const char* name) : m_Name(name) {}

    void look(Symbol* symbol) {
        if (symbol->getName() != nullptr && std::strcmp(symbol->getName(), m_Name) == 0) {
            m_First = m_Count == 0 ? symbol : m_First;
            ++m_Count;
        }
    }
    // The symbol if it is the only one of its name, otherwise null.
    Symbol* only() const { return m_Count == 1 ? m_First : nullptr; }
    // The same if it also stands in a section that has bytes in the file.
    Symbol* onlyInContents() const {
        Symbol* const symbol = only();
        const bool isThere = symbol != nullptr &&
                             symbol->getCategory() == Symbol::Category_Hosted &&
                             symbol->getSection()->getType() != SHT_NOBITS;
        return isThere ? symbol : nullptr;
    }

private:
    const char* m_Name;
    Symbol* m_First = nullptr;
    uint32_t m_Count = 0;
};

bool hasAddress(const Symbol& symbol) {
    return symbol.getCategory() == Symbol::Category_Hosted ||
           symbol.getCategory() == Symbol::Category_Absolute;
}

bool isDecompressor(const Symbol& symbol) {
    const char* const name = symbol.getName();
    return name != nullptr &&
           (std::strcmp(name, decompressName) == 0 || std::strcmp(name, decompressVeneerName) == 0);
}

} // namespace

struct CompressedSectionExtractor::NamedSymbols {
    explicit NamedSymbols(const ObjectModule& objectModule) {
        for (Symbol* const symbol : objectModule.getSymbols()) {
            tableBase.look(symbol);
            tableLimit.look(symbol);
            fourWords.look(symbol);
            decompress.look(symbol);
        }
    }

    Named tableBase{tableBaseName};
    Named tableLimit{tableLimitName};
    Named fourWords{fourWordsName};
    Named decompress{decompressName};
};

CompressedSectionExtractor::CompressedSectionExtractor(ObjectModule* objectModule)
    : m_ObjectModule(objectModule) {
    TOMEX_CHECK_TEXT(objectModule != nullptr, "objectModule != NULL");
    if (objectModule->getType() == ET_REL || objectModule->getSymbolCount() == 0) {
        return;
    }
    const NamedSymbols symbols(*objectModule);
    findTable(symbols);
    identifyDecompressor(symbols);
    if (m_CompressionState == State_Compressed && m_RegionTableEntryCount != 0) {
        readTable();
    }
}

void CompressedSectionExtractor::findTable(const NamedSymbols& symbols) {
    const Symbol* const base = symbols.tableBase.onlyInContents();
    if (base == nullptr) {
        return;
    }
    m_RegionTableSection = base->getSection();
    m_RegionTableAddress = base->getAbiValue();
    m_RegionTableOffset = m_RegionTableAddress - m_RegionTableSection->getAddress();
    m_CompressionState =
        symbols.fourWords.only() != nullptr ? State_Compressed : State_NotCompressed;
    measureTable(symbols);
}

// Counts the entries, none if the section does not hold all of them.
void CompressedSectionExtractor::measureTable(const NamedSymbols& symbols) {
    const uint64_t sectionSize = m_RegionTableSection->getSize();
    if (m_RegionTableOffset > sectionSize) {
        return;
    }
    const uint64_t room = sectionSize - m_RegionTableOffset;
    const Symbol* const limit = symbols.tableLimit.only();
    const uint64_t length = limit != nullptr ? limit->getAbiValue() - m_RegionTableAddress : room;
    if (length <= room) {
        const uint64_t words =
            m_CompressionState == State_Compressed ? wordsInUse : wordsWithoutCompression;
        m_RegionTableEntryCount = static_cast<uint32_t>(length / words / wordSize());
    }
}

// The symbol that names a variant at this address; null if there is none.
const Symbol* CompressedSectionExtractor::findVariantSymbol(uint64_t address) const {
    for (const Symbol* const symbol : m_ObjectModule->getSymbols()) {
        if (decompressorOfSymbol(symbol->getName()) != unknownDecompressor && hasAddress(*symbol) &&
            symbol->getAbiValue() == address) {
            return symbol;
        }
    }
    return nullptr;
}

// The name that tells of the variant stands beside "__decompress", at the same address.
void CompressedSectionExtractor::identifyDecompressor(const NamedSymbols& symbols) {
    const Symbol* const decompressSymbols[] = {symbols.decompress.onlyInContents()};
    if (decompressSymbols[0] == nullptr) {
        return;
    }
    [[maybe_unused]] const uint32_t decompressSymbolIndex =
        m_ObjectModule->getSymbolIndex(decompressSymbols[0]);
    TOMEX_CHECK(decompressSymbolIndex != 0);
    const Symbol* const decompressIdSymbol = findVariantSymbol(decompressSymbols[0]->getAbiValue());
    if (decompressIdSymbol != nullptr) {
        TOMEX_CHECK(decompressIdSymbol->getAbiValue() == decompressSymbols[0]->getAbiValue());
        m_DecompressorId = decompressorOfSymbol(decompressIdSymbol->getName());
    }
}

uint64_t CompressedSectionExtractor::wordSize() const {
    return m_ObjectModule->is64Bit() ? 8 : 4;
}

// Addresses are as wide as the class, and so are sums of them.
uint64_t CompressedSectionExtractor::addressMask() const {
    return m_ObjectModule->is64Bit() ? UINT64_MAX : UINT32_MAX;
}

// Where the section of the table has routines that unpack, sorted.
std::vector<uint64_t> CompressedSectionExtractor::decompressorAddresses() const {
    std::vector<uint64_t> addresses;
    for (const Symbol* const symbol : m_RegionTableSection->getHostedSymbols()) {
        if (isDecompressor(*symbol)) {
            addresses.push_back(symbol->getAbiValue());
        }
    }
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

void CompressedSectionExtractor::readTable() {
    const std::vector<uint64_t> decompressors = decompressorAddresses();
    const Buffer* const contents = m_RegionTableSection->getContents();
    const uint64_t entrySize = wordsInUse * wordSize();
    const uint64_t end = m_RegionTableOffset + m_RegionTableEntryCount * entrySize;
    if (decompressors.empty() || contents == nullptr || contents->getSize() < end) {
        return;
    }
    for (uint64_t offset = m_RegionTableOffset; offset < end; offset += entrySize) {
        const auto word = [&](EntryWord number) {
            const uint64_t place = offset + number * wordSize();
            return m_ObjectModule->is64Bit() ? contents->getUnalignedUint64(place)
                                             : contents->getUnalignedUint32(place);
        };
        uint64_t handler = word(EntryWord_Handler);
        if ((handler & relativeBit) != 0) {
            handler = (m_RegionTableAddress - handler - 1) & addressMask();
        }
        if (!std::binary_search(decompressors.begin(), decompressors.end(), handler)) {
            continue;
        }
        uint64_t address = word(EntryWord_Address);
        const bool onlyWritable = (address & onlyWritableBit) != 0;
        address &= ~onlyWritableBit;
        if ((address & relativeBit) != 0) {
            address = (address - relativeBit + m_RegionTableAddress) & addressMask();
        }
        m_Regions.push_back({address, word(EntryWord_Size) & ~sizeFlagBit, onlyWritable});
    }
    keepDecidingRegions();
}

// Of several entries for one address the first that a section fits decides. So there is no need for
// more than two: the first, and if that is only for some sections, the first that is for all.
void CompressedSectionExtractor::keepDecidingRegions() {
    std::stable_sort(m_Regions.begin(), m_Regions.end(),
                     [](const CompressedRegion& left, const CompressedRegion& right) {
                         return left.address < right.address;
                     });
    size_t kept = 0;
    for (const CompressedRegion& region : m_Regions) {
        const CompressedRegion* const last = kept != 0 ? &m_Regions[kept - 1] : nullptr;
        const bool isFirst = last == nullptr || last->address != region.address;
        if (isFirst || (last->onlyWritable && !region.onlyWritable)) {
            m_Regions[kept++] = region;
        }
    }
    m_Regions.resize(kept);
}

bool CompressedSectionExtractor::findUncompressedSize(const Section& section,
                                                      uint64_t& size) const {
    if ((section.getFlags() & SHF_ALLOC) == 0) {
        return false;
    }
    const uint64_t address = section.getAddress();
    const bool isWritable =
        section.getType() == SHT_PROGBITS && (section.getFlags() & SHF_WRITE) != 0;
    const auto first = std::lower_bound(
        m_Regions.begin(), m_Regions.end(), address,
        [](const CompressedRegion& region, uint64_t wanted) { return region.address < wanted; });
    for (auto region = first; region != m_Regions.end() && region->address == address; ++region) {
        if (isWritable || !region->onlyWritable) {
            size = region->size;
            return true;
        }
    }
    return false;
}

// False if the variant is not known, or its routine fails.
bool CompressedSectionExtractor::decompress(const Buffer& contents, uint8_t* destination,
                                            uint64_t size) const {
    const Decompressor routine = findDecompressor(m_DecompressorId);
    if (routine == nullptr) {
        return false;
    }
    std::vector<uint8_t> source(static_cast<size_t>(contents.getSize()));
    if (!source.empty()) {
        contents.readBytes(0, source.data(), source.size());
    }
    const uint32_t result = routine(source.data(), source.size(), destination, size);
    return (result & ~harmlessResultBits) == 0;
}

bool CompressedSectionExtractor::getContents(Section* section, uint8_t* destination) const {
    const Buffer* const contents = section->getContents();
    if (contents == nullptr) {
        return false;
    }
    uint64_t uncompressedSize = section->getSize();
    if (findUncompressedSize(*section, uncompressedSize)) {
        TOMEX_CHECK(uncompressedSize <= UINT32_MAX);
        if (decompress(*contents, destination, uncompressedSize)) {
            return true;
        }
    } else {
        TOMEX_CHECK(section->getSize() <= UINT32_MAX);
    }
    std::fill_n(destination, uncompressedSize, uint8_t{0});
    const uint64_t copied = std::min(contents->getSize(), uncompressedSize);
    if (copied != 0) {
        contents->readBytes(0, destination, copied);
    }
    return true;
}

} // namespace elfext
