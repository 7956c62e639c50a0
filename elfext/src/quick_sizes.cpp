// One walk over a relocatable file: what its section headers come to, and the checks of a read.
//
// Each check answers what the reader would: false wherever that one would report something (but
// that it has passed its limits: this here takes less), or would have to look closer. So this file
// and the passes of the reader say the same thing twice; tests hold them against each other on
// real, on made and on damaged files.
#include "elfext/interface/quick_sizes.h"

#include "elfext/interface/build_attributes_parsers.h"
#include "elfext/interface/symbol.h"
#include "elfext/src/code_stretches.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/section_kinds.h"
#include "elfext/src/section_use.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace elfext {

namespace {

constexpr uint8_t elfMagic[] = {0x7F, 'E', 'L', 'F'};

// Larger attributes sections might ask for more work than the reader grants them.
constexpr uint64_t plainAttributesLimit = 1024;

struct Part {
    uint64_t start;
    uint64_t end;
};

// A mapping symbol and the section that it lies in.
struct MarkedPlace {
    uint32_t section;
    CodeMark mark;
};

// Tells whether a section of attributes is sound. Only attributes of the whole file are plain:
// whether others are sound depends on what they are about.
class SoundnessParser : public BuildAttributesSectionParser {
public:
    bool parseFileSubSubsection(const char* vendorName, const uint8_t* data,
                                uint32_t length) override {
        if (std::strcmp(vendorName, attributes::VendorName_Qeabi) == 0) {
            return QeabiBuildAttributesSubSubsectionParser().parse(data, length);
        }
        if (std::strcmp(vendorName, attributes::VendorName_Qel) == 0) {
            return QelBuildAttributesSubSubsectionParser().parse(data, length);
        }
        return true;
    }
    bool parseSectionSubSubsection(const char*, const uint32_t*, uint32_t, const uint8_t*,
                                   uint32_t) override {
        return false;
    }
    bool parseSymbolSubSubsection(const char*, const uint32_t*, uint32_t, const uint8_t*,
                                  uint32_t) override {
        return false;
    }
};

} // namespace

struct QuickSizes::Scratch {
    std::vector<Elf64_Shdr> headers;
    // What takes up the file. Compilers put the tables of relocations behind all else, but list
    // each with its section, so these are kept apart: both lists mostly are in order as they are.
    std::vector<Part> parts;
    std::vector<Part> relocationParts;
    std::vector<Part> allParts;
    std::vector<bool> isInGroup;
    std::vector<bool> isCode;
    std::vector<MarkedPlace> places;
    std::vector<CodeMark> marks; // of one section

    void clear() {
        headers.clear();
        parts.clear();
        relocationParts.clear();
        isInGroup.clear();
        isCode.clear();
        places.clear();
    }
};

// Headers are decoded once and judged as they were then. Other bytes that are looked at twice may
// have changed between, so every look at them stays in the bounds that the headers set.
class QuickSizes::Walk {
public:
    Walk(Scratch& scratch, const uint8_t* bytes, uint64_t size, SizeStatistics& statistics)
        : m_Scratch(scratch), m_Bytes(bytes), m_Size(size), m_Statistics(statistics) {}

    template <typename Layout>
    bool run(Layout layout) {
        return readHeaders(layout) && measureSections() && checkPlaces() && checkSections(layout) &&
               splitCode();
    }

private:
    template <typename Layout>
    bool readHeaders(Layout layout) {
        if (m_Size < layout.sizes.elfHeader) {
            return false;
        }
        m_Header = layout.elfHeader(m_Bytes);
        const uint64_t stride = layout.sizes.sectionHeader;
        if (!isPlain(m_Header) || m_Header.e_shoff > m_Size ||
            m_Header.e_shnum > (m_Size - m_Header.e_shoff) / stride) {
            return false;
        }
        m_Scratch.headers.reserve(m_Header.e_shnum);
        for (uint64_t i = 0; i < m_Header.e_shnum; ++i) {
            m_Scratch.headers.push_back(
                layout.sectionHeader(m_Bytes + m_Header.e_shoff + i * stride));
        }
        return findNames();
    }

    static bool isPlain(const Elf64_Ehdr& header) {
        const bool isOurs = header.e_machine == EM_QEL || header.e_machine == EM_QEL64 ||
                            header.e_machine == EM_QEL64_SECOND;
        return isOurs && header.e_type == ET_REL && header.e_version == EV_CURRENT &&
               header.e_phoff == 0 && header.e_shoff != 0 && header.e_shnum != 0 &&
               header.e_shstrndx != 0 && header.e_shstrndx < header.e_shnum;
    }

    uint32_t sectionCount() const { return static_cast<uint32_t>(m_Scratch.headers.size()); }
    const Elf64_Shdr& header(uint32_t section) const { return m_Scratch.headers[section]; }
    const uint8_t* contents(const Elf64_Shdr& section) const { return m_Bytes + section.sh_offset; }
    bool isInFile(const Elf64_Shdr& section) const {
        return section.sh_offset <= m_Size && section.sh_size <= m_Size - section.sh_offset;
    }

    bool findNames() {
        const Elf64_Shdr& table = header(m_Header.e_shstrndx);
        m_Names = table;
        return header(0).sh_type == SHT_NULL && table.sh_type == SHT_STRTAB && table.sh_size != 0 &&
               isInFile(table);
    }

    // As much of a text in a string table as tells it from all texts that mean something here.
    std::string_view textAt(const Elf64_Shdr& table, uint64_t offset) const {
        constexpr uint64_t enough = 16;
        const auto* const text = reinterpret_cast<const char*>(contents(table) + offset);
        return {text, strnlen(text, std::min(table.sh_size - offset, enough))};
    }

    // --- Sizes

    bool measureSections() {
        m_Scratch.isCode.resize(sectionCount());
        for (uint32_t i = 0; i < sectionCount(); ++i) {
            const Elf64_Shdr& section = header(i);
            if (section.sh_name >= m_Names.sh_size || section.sh_link >= sectionCount() ||
                (section.sh_flags & SHF_ENTRYSECT) != 0) {
                return false;
            }
            measureSection(i, section);
        }
        return true;
    }

    void measureSection(uint32_t index, const Elf64_Shdr& section) {
        switch (sectionUseOf(section.sh_type, section.sh_flags)) {
        case SectionUse::NotLoaded:
            if (section.sh_name != 0 && isDebugSectionName(textAt(m_Names, section.sh_name))) {
                m_Statistics.m_DebugInfo += section.sh_size;
            }
            break;
        case SectionUse::Zeros:
            m_Statistics.m_ZiData += section.sh_size;
            break;
        case SectionUse::Code:
            m_Scratch.isCode[index] = true;
            m_Statistics.m_LiteralPools += section.sh_size; // unless it has mapping symbols
            break;
        case SectionUse::Constants:
            m_Statistics.m_RoData += section.sh_size;
            break;
        case SectionUse::Data:
            m_Statistics.m_RwDataUncompressed += section.sh_size;
            m_Statistics.m_RwDataCompressed += section.sh_size;
            break;
        }
    }

    // --- Checks

    // Comes before any look into sections: those that share no bytes are together no longer than
    // the file.
    bool checkPlaces() {
        for (uint32_t i = 1; i < sectionCount(); ++i) {
            const Elf64_Shdr& section = header(i);
            if (section.sh_type == SHT_NOBITS) {
                continue;
            }
            if (!isInFile(section)) {
                return false;
            }
            const bool isRelocations = section.sh_type == SHT_RELA || section.sh_type == SHT_REL;
            std::vector<Part>& parts = isRelocations ? m_Scratch.relocationParts : m_Scratch.parts;
            parts.push_back({section.sh_offset, section.sh_offset + section.sh_size});
        }
        return checkOverlaps();
    }

    template <typename Layout>
    bool checkSections(Layout layout) {
        m_Scratch.isInGroup.resize(sectionCount());
        for (uint32_t i = 1; i < sectionCount(); ++i) {
            const Elf64_Shdr& section = header(i);
            if (section.sh_type != SHT_NOBITS && !checkSection(layout, section)) {
                return false;
            }
        }
        return true;
    }

    template <typename Layout>
    bool checkSection(Layout layout, const Elf64_Shdr& section) {
        switch (section.sh_type) {
        case SHT_STRTAB:
            return isStringTable(section);
        case SHT_SYMTAB:
            return checkSymbols(layout, section);
        case SHT_RELA:
            return checkRelocations(layout, section, layout.sizes.rela);
        case SHT_REL:
            return checkRelocations(layout, section, layout.sizes.rel);
        case SHT_GROUP:
            return checkGroup(layout, section);
        case SHT_NOTE:
            return hasNoLinkerNote(section);
        case SHT_QEL_ATTRIBUTES:
            return areAttributesSound(section);
        default:
            return sectionKind(section.sh_type).type == SHT_PROGBITS; // nothing special
        }
    }

    bool isStringTable(const Elf64_Shdr& section) const {
        return section.sh_size != 0 && contents(section)[0] == 0 &&
               contents(section)[section.sh_size - 1] == 0;
    }

    // One table of symbols is plain.
    template <typename Layout>
    bool checkSymbols(Layout layout, const Elf64_Shdr& table) {
        const Elf64_Shdr& strings = header(table.sh_link);
        const uint64_t entrySize = layout.sizes.symbol;
        if (m_HasSymbols || strings.sh_type != SHT_STRTAB || strings.sh_size == 0 ||
            !isInFile(strings)) {
            return false;
        }
        m_HasSymbols = true;
        const bool mayHaveMarks =
            std::memchr(contents(strings), '$', static_cast<size_t>(strings.sh_size)) != nullptr;
        const uint64_t count = table.sh_size / entrySize;
        const uint8_t* const entries = contents(table);
        for (uint64_t i = 1; i < count; ++i) {
            const Elf64_Sym symbol = layout.symbol(entries + i * entrySize);
            if (symbol.st_name >= strings.sh_size || !isPlacedPlainly(symbol)) {
                return false;
            }
            if (mayHaveMarks && contents(strings)[symbol.st_name] == '$') {
                addMark(symbol, textAt(strings, symbol.st_name));
            }
        }
        return true;
    }

    bool isPlacedPlainly(const Elf64_Sym& symbol) const {
        switch (symbol.st_shndx) {
        case SHN_UNDEF:
        case SHN_ABS:
        case SHN_COMMON:
            return (symbol.st_info & 0xF) != STT_SECTION;
        default:
            return symbol.st_shndx < sectionCount();
        }
    }

    // Takes note of a mapping symbol in a section of code.
    void addMark(const Elf64_Sym& symbol, std::string_view name) {
        const uint32_t section = symbol.st_shndx;
        // In a file of very many sections these are numbers of sections, too.
        const bool isHosted = section != SHN_UNDEF && section != SHN_ABS && section != SHN_COMMON;
        if (isHosted && m_Scratch.isCode[section] &&
            getSymbolKind(std::string(name).c_str()) == SymbolKind_Mapping) {
            m_Scratch.places.push_back({section, {symbol.st_value, codeBucketOf(name)}});
        }
    }

    template <typename Layout>
    bool checkRelocations(Layout layout, const Elf64_Shdr& table, uint64_t entrySize) const {
        const Elf64_Shdr& symbols = header(table.sh_link);
        if (symbols.sh_type != SHT_SYMTAB || table.sh_info >= sectionCount() ||
            table.sh_size % entrySize != 0) {
            return false;
        }
        const uint8_t* const entries = contents(table);
        uint32_t greatest = 0;
        for (uint64_t offset = 0; offset < table.sh_size; offset += entrySize) {
            greatest = std::max(greatest, layout.relocationSymbol(entries + offset));
        }
        return table.sh_size == 0 || greatest < symbols.sh_size / layout.sizes.symbol;
    }

    template <typename Layout>
    bool checkGroup(Layout layout, const Elf64_Shdr& group) {
        const Elf64_Shdr& symbols = header(group.sh_link);
        constexpr uint64_t wordSize = layout.sizes.word;
        if (symbols.sh_type != SHT_SYMTAB || group.sh_info == 0 ||
            group.sh_info >= symbols.sh_size / layout.sizes.symbol ||
            group.sh_size % wordSize != 0) {
            return false;
        }
        // The first word holds flags.
        for (uint64_t offset = wordSize; offset < group.sh_size; offset += wordSize) {
            const uint32_t member = layout.word(contents(group) + offset);
            if (member == 0 || member >= sectionCount() || m_Scratch.isInGroup[member]) {
                return false;
            }
            m_Scratch.isInGroup[member] = true;
        }
        return true;
    }

    // Notes by the linker tell which segment a section went to. A file without segments has none.
    bool hasNoLinkerNote(const Elf64_Shdr& section) const {
        constexpr std::string_view linkerName("QEL\0", 4);
        const std::string_view notes(reinterpret_cast<const char*>(contents(section)),
                                     static_cast<size_t>(section.sh_size));
        return notes.find(linkerName) == std::string_view::npos;
    }

    // The parser relies on the ends of texts that it has found, so it gets bytes that stay.
    // One such section is plain.
    bool areAttributesSound(const Elf64_Shdr& section) {
        uint8_t copy[plainAttributesLimit];
        if (m_HasAttributes || section.sh_size > sizeof copy) {
            return false;
        }
        m_HasAttributes = true;
        std::copy_n(contents(section), section.sh_size, copy);
        return SoundnessParser().parse(copy, section.sh_size, m_Bytes[EI_DATA] == ELFDATA2LSB);
    }

    static bool startsBefore(const Part& left, const Part& right) {
        return std::tie(left.start, left.end) < std::tie(right.start, right.end);
    }

    static void sortParts(std::vector<Part>& parts) {
        if (!std::is_sorted(parts.begin(), parts.end(), startsBefore)) {
            std::sort(parts.begin(), parts.end(), startsBefore);
        }
    }

    // Parts without bytes may stand anywhere; what lies over a header, nobody reports.
    bool checkOverlaps() {
        sortParts(m_Scratch.parts);
        sortParts(m_Scratch.relocationParts);
        m_Scratch.allParts.resize(m_Scratch.parts.size() + m_Scratch.relocationParts.size());
        std::merge(m_Scratch.parts.begin(), m_Scratch.parts.end(),
                   m_Scratch.relocationParts.begin(), m_Scratch.relocationParts.end(),
                   m_Scratch.allParts.begin(), startsBefore);
        uint64_t end = 0;
        for (const Part& part : m_Scratch.allParts) {
            if (part.start < end && part.start != part.end) {
                return false;
            }
            end = std::max(end, part.end);
        }
        return true;
    }

    // --- Code

    // Sections with mapping symbols are counted anew.
    bool splitCode() {
        std::vector<MarkedPlace>& places = m_Scratch.places;
        const auto standsBefore = [](const MarkedPlace& left, const MarkedPlace& right) {
            return left.section < right.section;
        };
        if (!std::is_sorted(places.begin(), places.end(), standsBefore)) {
            std::stable_sort(places.begin(), places.end(), standsBefore);
        }
        for (auto place = places.begin(); place != places.end();) {
            const uint32_t index = place->section;
            m_Scratch.marks.clear();
            for (; place != places.end() && place->section == index; ++place) {
                m_Scratch.marks.push_back(place->mark);
            }
            const Elf64_Shdr& section = header(index);
            m_Statistics.m_LiteralPools -= section.sh_size;
            addCodeStretches(section.sh_size, (section.sh_flags & SHF_WRITE) != 0, m_Scratch.marks,
                             m_Statistics);
        }
        return true;
    }

    Scratch& m_Scratch;
    const uint8_t* const m_Bytes;
    const uint64_t m_Size;
    SizeStatistics& m_Statistics;
    Elf64_Ehdr m_Header = {};
    Elf64_Shdr m_Names = {};
    bool m_HasSymbols = false;
    bool m_HasAttributes = false;
};

QuickSizes::QuickSizes() = default;
QuickSizes::~QuickSizes() = default;

bool QuickSizes::measure(const uint8_t* bytes, uint64_t size, SizeStatistics& statistics) try {
    if (size < EI_NIDENT || size > UINT32_MAX ||
        std::memcmp(bytes, elfMagic, sizeof elfMagic) != 0) {
        return false;
    }
    const uint8_t elfClass = bytes[EI_CLASS];
    const uint8_t order = bytes[EI_DATA];
    if ((elfClass != ELFCLASS32 && elfClass != ELFCLASS64) ||
        (order != ELFDATA2LSB && order != ELFDATA2MSB)) {
        return false;
    }
    if (m_Scratch == nullptr) {
        m_Scratch = std::make_unique<Scratch>();
    }
    m_Scratch->clear();
    statistics = {};
    Walk walk(*m_Scratch, bytes, size, statistics);
    return withLayout(elfClass == ELFCLASS64, order == ELFDATA2LSB,
                      [&walk](auto layout) { return walk.run(layout); });
} catch (const std::bad_alloc&) {
    return false;
}

} // namespace elfext
