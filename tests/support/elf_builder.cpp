#include "tests/support/elf_builder.h"

#include <algorithm>
#include <utility>

namespace testsupport {

namespace {

uint64_t alignedUp(uint64_t value, uint64_t alignment) {
    return alignment < 2 ? value : (value + alignment - 1) / alignment * alignment;
}

bool hasNoBytes(const BuiltSection& section) {
    return section.type == elf::SHT_NOBITS || section.type == elf::SHT_NULL;
}

bool needsExtension(const BuiltElfSymbol& symbol) {
    return symbol.extended || (!symbol.reserved && symbol.section >= elf::SHN_LORESERVE);
}

// One record whose fields are set by name.
class Record {
public:
    Record(ElfFormat format, size_t size) : m_format(format), m_bytes(size, '\0') {}

    template <class Field>
    Record& set(Field field, uint64_t value) {
        const FieldPlace place = placeOf(field, m_format);
        writeNumber(m_bytes, place.offset, place.width, m_format.littleEndian, value);
        return *this;
    }

    template <class Field>
    Record& set(const std::map<Field, uint64_t>& values) {
        for (const auto& [field, value] : values) {
            set(field, value);
        }
        return *this;
    }

    std::string& bytes() { return m_bytes; }

private:
    ElfFormat m_format;
    std::string m_bytes;
};

struct EncodedSymbol {
    uint32_t name = 0;
    BuiltElfSymbol symbol;
    bool mapped = false; // it counts from its section's address
};

std::string symbolTableBytes(ElfFormat format, const std::vector<EncodedSymbol>& symbols,
                             const ElfLayout& layout) {
    std::string table(symbolSize(format), '\0');
    for (const EncodedSymbol& encoded : symbols) {
        const BuiltElfSymbol& symbol = encoded.symbol;
        Record record(format, symbolSize(format));
        record.set(SymbolField::Name, encoded.name)
            .set(SymbolField::Value,
                 symbol.value + (encoded.mapped ? layout.sections[symbol.section].address : 0))
            .set(SymbolField::Size, symbol.size)
            .set(SymbolField::Info, static_cast<uint64_t>(symbol.binding) << 4U | symbol.type)
            .set(SymbolField::Other, symbol.other)
            .set(SymbolField::Section,
                 needsExtension(symbol) ? uint32_t{elf::SHN_XINDEX} : symbol.section);
        table += record.bytes();
    }
    return table;
}

std::string extensionBytes(ElfFormat format, const std::vector<BuiltElfSymbol>& symbols) {
    ElfBytes table(format);
    table.word(0);
    for (const BuiltElfSymbol& symbol : symbols) {
        table.word(needsExtension(symbol) ? symbol.section : 0);
    }
    return table.bytes();
}

} // namespace

BuiltElfSymbol reservedSymbol(std::string name, uint32_t index, uint64_t value) {
    BuiltElfSymbol symbol;
    symbol.name = std::move(name);
    symbol.section = index;
    symbol.reserved = true;
    symbol.value = value;
    return symbol;
}

ElfBuilder::ElfBuilder(ElfFormat format, uint16_t type) : m_format(format), m_type(type) {
    BuiltSection null;
    null.type = elf::SHT_NULL;
    null.alignment = 0;
    m_sections.push_back(null);
}

size_t ElfBuilder::add(BuiltSection section) {
    m_sections.push_back(std::move(section));
    return m_sections.size() - 1;
}

size_t ElfBuilder::addStringTable(std::string name) {
    BuiltSection section;
    section.name = std::move(name);
    section.type = elf::SHT_STRTAB;
    section.contents.assign(1, '\0');
    return add(std::move(section));
}

uint32_t ElfBuilder::addString(size_t stringTable, std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    std::string& contents = section(stringTable).contents;
    const auto place = static_cast<uint32_t>(contents.size());
    contents += text;
    contents += '\0';
    return place;
}

size_t ElfBuilder::addSymbolTable(std::string name, uint32_t type, size_t stringTable,
                                  const std::vector<BuiltElfSymbol>& symbols) {
    std::vector<EncodedSymbol> encoded;
    for (const BuiltElfSymbol& symbol : symbols) {
        const bool mapped = !symbol.reserved && symbol.section != 0 &&
                            symbol.section < sectionCount() && section(symbol.section).mapped;
        encoded.push_back({addString(stringTable, symbol.name), symbol, mapped});
    }
    const auto isLocal = [](const BuiltElfSymbol& symbol) {
        return symbol.binding == elf::STB_LOCAL;
    };
    BuiltSection table;
    table.name = std::move(name);
    table.type = type;
    table.contents.assign((symbols.size() + 1) * symbolSize(m_format), '\0');
    table.link = stringTable;
    table.info = 1 + static_cast<uint64_t>(std::ranges::count_if(symbols, isLocal));
    table.alignment = m_format.is64 ? 8 : 4;
    table.entrySize = symbolSize(m_format);
    const size_t index = add(std::move(table));
    fillLate(index, [format = m_format, encoded](const ElfLayout& layout) {
        return symbolTableBytes(format, encoded, layout);
    });
    if (std::ranges::any_of(symbols, needsExtension)) {
        BuiltSection extension;
        extension.name = section(index).name + "_shndx";
        extension.type = elf::SHT_SYMTAB_SHNDX;
        extension.contents = extensionBytes(m_format, symbols);
        extension.link = index;
        extension.alignment = 4;
        extension.entrySize = 4;
        add(std::move(extension));
    }
    return index;
}

size_t ElfBuilder::addSymbols(const std::vector<BuiltElfSymbol>& symbols) {
    const size_t strings = addStringTable(".strtab");
    return addSymbolTable(".symtab", elf::SHT_SYMTAB, strings, symbols);
}

size_t ElfBuilder::addRelocations(std::string name, uint32_t type, size_t target,
                                  size_t symbolTable,
                                  const std::vector<BuiltElfRelocation>& relocations) {
    const bool withAddend = type == elf::SHT_RELA;
    BuiltSection table;
    for (const BuiltElfRelocation& relocation : relocations) {
        const uint64_t symbol = relocation.symbol;
        Record record(m_format, relocationSize(m_format, withAddend));
        record.set(RelocationField::Offset, relocation.offset)
            .set(RelocationField::Info, m_format.is64 ? symbol << 32U | relocation.type
                                                      : symbol << 8U | (relocation.type & 0xFFU));
        if (withAddend) {
            record.set(RelocationField::Addend, relocation.addend);
        }
        table.contents += record.bytes();
    }
    table.name = std::move(name);
    table.type = type;
    table.link = symbolTable;
    table.info = target;
    table.alignment = m_format.is64 ? 8 : 4;
    table.entrySize = relocationSize(m_format, withAddend);
    return add(std::move(table));
}

size_t ElfBuilder::addGroup(std::string name, size_t symbolTable, uint32_t signature,
                            uint32_t flags, const std::vector<uint32_t>& members) {
    ElfBytes words(m_format);
    words.word(flags);
    for (const uint32_t member : members) {
        words.word(member);
    }
    BuiltSection group;
    group.name = std::move(name);
    group.type = elf::SHT_GROUP;
    group.contents = words.bytes();
    group.link = symbolTable;
    group.info = signature;
    group.alignment = 4;
    group.entrySize = 4;
    return add(std::move(group));
}

size_t ElfBuilder::addDynamic(size_t stringTable, const std::vector<BuiltDynamicTag>& tags) {
    BuiltSection dynamic;
    dynamic.name = ".dynamic";
    dynamic.type = elf::SHT_DYNAMIC;
    dynamic.contents.assign((tags.size() + 1) * dynamicEntrySize(m_format), '\0');
    dynamic.link = stringTable;
    dynamic.alignment = m_format.is64 ? 8 : 4;
    dynamic.entrySize = dynamicEntrySize(m_format);
    const size_t index = add(std::move(dynamic));
    fillLate(index, [format = m_format, tags](const ElfLayout& layout) {
        ElfBytes entries(format);
        for (const BuiltDynamicTag& tag : tags) {
            const uint64_t base = tag.addressOf ? layout.sections[*tag.addressOf].address : 0;
            entries.address(tag.tag).address(base + tag.value);
        }
        return entries.address(elf::DT_NULL).address(0).bytes();
    });
    return index;
}

size_t ElfBuilder::addNotes(std::string name, const std::vector<BuiltNote>& notes) {
    ElfBytes bytes(m_format);
    for (const BuiltNote& note : notes) {
        bytes.word(note.name.size() + 1).word(note.description.size()).word(note.type);
        bytes.text(note.name).align(4).raw(note.description).align(4);
    }
    BuiltSection section;
    section.name = std::move(name);
    section.type = elf::SHT_NOTE;
    section.contents = bytes.bytes();
    section.alignment = 4;
    return add(std::move(section));
}

size_t ElfBuilder::addSegment(BuiltSegment segment) {
    m_segments.push_back(std::move(segment));
    return m_segments.size() - 1;
}

ElfBuilder& ElfBuilder::header(HeaderField field, uint64_t value) {
    m_rawHeader[field] = value;
    return *this;
}

ElfBuilder& ElfBuilder::withoutSectionNames() {
    m_withSectionNames = false;
    return *this;
}

void ElfBuilder::fillLate(size_t section, Fill fill) {
    m_fills.emplace(section, std::move(fill));
}

// All sections with the name table at the end, and the places of their names in it.
std::vector<BuiltSection> ElfBuilder::finishedSections(std::vector<uint32_t>& nameOffsets) const {
    std::vector<BuiltSection> sections = m_sections;
    nameOffsets.assign(sections.size() + (m_withSectionNames ? 1 : 0), 0);
    if (m_withSectionNames) {
        BuiltSection names;
        names.name = ".shstrtab";
        names.type = elf::SHT_STRTAB;
        names.contents.assign(1, '\0');
        sections.push_back(names);
        for (size_t i = 0; i < sections.size(); ++i) {
            if (!sections[i].name.empty()) {
                std::string& contents = sections.back().contents;
                nameOffsets[i] = static_cast<uint32_t>(contents.size());
                contents += sections[i].name;
                contents += '\0';
            }
        }
    }
    // The extended forms: what does not fit into the ELF header stands in section 0.
    if (sections.size() >= elf::SHN_LORESERVE) {
        sections[0].raw.emplace(SectionField::Size, sections.size());
        sections[0].raw.emplace(SectionField::Link, m_withSectionNames ? sections.size() - 1 : 0);
    }
    return sections;
}

ElfLayout ElfBuilder::laidOut(const std::vector<BuiltSection>& sections) const {
    ElfLayout layout;
    uint64_t offset = elfHeaderSize(m_format);
    if (!m_segments.empty()) {
        layout.programHeaderOffset = offset;
        offset += m_segments.size() * programHeaderSize(m_format);
    }
    for (const BuiltSection& section : sections) {
        ElfLayout::Place place;
        if (section.type != elf::SHT_NULL) {
            offset = hasNoBytes(section) ? offset : alignedUp(offset, section.alignment);
            place.offset = offset;
            place.size = hasNoBytes(section) ? 0 : section.contents.size();
            place.address = section.mapped ? imageBase + offset : section.address;
            offset += place.size;
        }
        layout.sections.push_back(place);
    }
    layout.sectionHeaderOffset = alignedUp(offset, 8);
    layout.fileSize = layout.sectionHeaderOffset + sections.size() * sectionHeaderSize(m_format);
    return layout;
}

std::string ElfBuilder::headerBytes(const ElfLayout& layout) const {
    const size_t count = layout.sections.size();
    const bool extended = count >= elf::SHN_LORESERVE;
    Record record(m_format, elfHeaderSize(m_format));
    record.bytes().replace(0, 4,
                           "\x7F"
                           "ELF");
    record.set(HeaderField::Class, m_format.is64 ? 2 : 1)
        .set(HeaderField::Data, m_format.littleEndian ? 1 : 2)
        .set(HeaderField::IdentVersion, 1)
        .set(HeaderField::Type, m_type)
        .set(HeaderField::Machine, m_format.is64 ? elf::EM_QEL64 : elf::EM_QEL)
        .set(HeaderField::Version, 1)
        .set(HeaderField::ProgramHeaderOffset, layout.programHeaderOffset)
        .set(HeaderField::SectionHeaderOffset, layout.sectionHeaderOffset)
        .set(HeaderField::HeaderSize, elfHeaderSize(m_format))
        .set(HeaderField::ProgramHeaderSize, m_segments.empty() ? 0 : programHeaderSize(m_format))
        .set(HeaderField::ProgramHeaderCount, m_segments.size())
        .set(HeaderField::SectionHeaderSize, sectionHeaderSize(m_format))
        .set(HeaderField::SectionHeaderCount, extended ? 0 : count);
    if (m_withSectionNames) {
        record.set(HeaderField::NameTableIndex, extended ? uint64_t{elf::SHN_XINDEX} : count - 1);
    }
    return record.set(m_rawHeader).bytes();
}

std::string ElfBuilder::programHeaderBytes(const BuiltSegment& segment, const ElfLayout& layout,
                                           const std::vector<BuiltSection>& sections) const {
    uint64_t start = 0;
    uint64_t fileSize = 0;
    uint64_t memorySize = 0;
    if (segment.type == elf::PT_PHDR) {
        start = layout.programHeaderOffset;
        fileSize = memorySize = m_segments.size() * programHeaderSize(m_format);
    } else {
        const ElfLayout::Place& last = layout.sections.at(segment.lastSection);
        start = layout.sections.at(segment.firstSection).offset;
        fileSize = last.offset + last.size - start;
        memorySize = fileSize;
        if (sections[segment.lastSection].type == elf::SHT_NOBITS) {
            memorySize += sections[segment.lastSection].noBitsSize;
        }
    }
    Record record(m_format, programHeaderSize(m_format));
    record.set(SegmentField::Type, segment.type)
        .set(SegmentField::Offset, start)
        .set(SegmentField::VirtualAddress, imageBase + start)
        .set(SegmentField::PhysicalAddress, imageBase + start)
        .set(SegmentField::FileSize, fileSize)
        .set(SegmentField::MemorySize, memorySize)
        .set(SegmentField::Flags, segment.flags)
        .set(SegmentField::Alignment, segment.alignment);
    return record.set(segment.raw).bytes();
}

std::string ElfBuilder::sectionHeaderBytes(const BuiltSection& section,
                                           const ElfLayout::Place& place,
                                           uint32_t nameOffset) const {
    Record record(m_format, sectionHeaderSize(m_format));
    record.set(SectionField::Name, nameOffset)
        .set(SectionField::Type, section.type)
        .set(SectionField::Flags, section.flags)
        .set(SectionField::Address, place.address)
        .set(SectionField::Offset, place.offset)
        .set(SectionField::Size, section.type == elf::SHT_NOBITS ? section.noBitsSize : place.size)
        .set(SectionField::Link, section.link)
        .set(SectionField::Info, section.info)
        .set(SectionField::Alignment, section.alignment)
        .set(SectionField::EntrySize, section.entrySize);
    return record.set(section.raw).bytes();
}

std::string ElfBuilder::bytes() const {
    std::vector<uint32_t> nameOffsets;
    const std::vector<BuiltSection> sections = finishedSections(nameOffsets);
    const ElfLayout layout = laidOut(sections);
    std::string file = headerBytes(layout);
    for (const BuiltSegment& segment : m_segments) {
        file += programHeaderBytes(segment, layout, sections);
    }
    file.reserve(layout.fileSize);
    for (size_t i = 0; i < sections.size(); ++i) {
        if (!hasNoBytes(sections[i])) {
            file.resize(layout.sections[i].offset);
            // Contents that a test has cut or grown since stay as the test has them.
            const auto fill = m_fills.find(i);
            const std::string filled =
                fill != m_fills.end() ? fill->second(layout) : sections[i].contents;
            file += filled.size() == sections[i].contents.size() ? filled : sections[i].contents;
        }
    }
    file.resize(layout.sectionHeaderOffset);
    for (size_t i = 0; i < sections.size(); ++i) {
        file += sectionHeaderBytes(sections[i], layout.sections[i], nameOffsets[i]);
    }
    return file;
}

ElfLayout ElfBuilder::layout() const {
    std::vector<uint32_t> nameOffsets;
    return laidOut(finishedSections(nameOffsets));
}

} // namespace testsupport
