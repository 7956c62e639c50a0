#include "tests/support/rich_elf.h"

#include <utility>

namespace testsupport {

namespace {

using namespace elf;

// Builds one rich file, a kind of section after the other.
class RichMaker {
public:
    RichMaker(ElfFormat format, uint16_t type) : m_format(format), m_image(type != ET_REL) {
        m_rich.builder = ElfBuilder(format, type);
    }

    RichElf make() {
        addCode();
        addDynamicTables();
        addVersions();
        addPreemptionMap();
        addDynamic();
        if (m_image) {
            m_mappingNote = addNote();
            m_lastMapped = m_rich.note;
        }
        addData();
        addDebug();
        addSymbols();
        addGroupAndRelocations();
        addAttributes();
        if (m_image) {
            addSegments();
            fillMappingNote();
        } else {
            addNote();
        }
        m_rich.names = m_rich.builder.sectionCount();
        return std::move(m_rich);
    }

private:
    ElfBuilder& builder() { return m_rich.builder; }

    ElfBytes bytes() const { return ElfBytes(m_format); }

    size_t add(std::string name, uint32_t type, uint64_t flags, std::string contents) {
        BuiltSection section;
        section.name = std::move(name);
        section.type = type;
        section.flags = flags;
        section.contents = std::move(contents);
        section.alignment = (flags & SHF_ALLOC) != 0 ? 16 : 1;
        section.mapped = m_image && (flags & SHF_ALLOC) != 0;
        m_rich.builder.add(std::move(section));
        return builder().sectionCount() - 1;
    }

    // What a table that is mapped in images has in common.
    void finishTable(size_t index, uint64_t link, uint64_t entrySize) {
        BuiltSection& section = builder().section(index);
        section.flags |= SHF_ALLOC;
        section.mapped = m_image;
        section.link = link;
        section.entrySize = entrySize;
        section.alignment = 16;
    }

    void addCode() {
        m_rich.text = add(".text", SHT_PROGBITS, SHF_ALLOC | SHF_EXECINSTR, std::string(36, 'T'));
        m_rich.exidx = add(".exidx", SHT_QEL_EXIDX, SHF_ALLOC | SHF_LINK_ORDER,
                           bytes().word(1).word(2).bytes());
        builder().section(m_rich.exidx).link = m_rich.text;
    }

    void addDynamicTables() {
        m_rich.dynamicStrings = builder().addStringTable(".dynstr");
        finishTable(m_rich.dynamicStrings, 0, 0);
        std::vector<BuiltElfSymbol> symbols;
        symbols.push_back({.name = "dyn_function", .section = text(), .type = STT_FUNC});
        symbols.push_back({.name = "dyn_weak", .section = text(), .value = 4, .binding = STB_WEAK});
        symbols.push_back({.name = "dyn_needed"});
        symbols.push_back(reservedSymbol("dyn_absolute", SHN_ABS, 7));
        m_rich.dynamicSymbols =
            builder().addSymbolTable(".dynsym", SHT_DYNSYM, m_rich.dynamicStrings, symbols);
        finishTable(m_rich.dynamicSymbols, m_rich.dynamicStrings, symbolSize(m_format));
        // One bucket that chains all five entries: 1 -> 2 -> 3 -> 4.
        ElfBytes hash = bytes();
        hash.word(1).word(5).word(1).word(0).word(2).word(3).word(4).word(0);
        m_rich.hash = add(".hash", SHT_HASH, SHF_ALLOC, hash.bytes());
        finishTable(m_rich.hash, m_rich.dynamicSymbols, 4);
    }

    uint32_t dynamicString(std::string_view text) {
        return builder().addString(m_rich.dynamicStrings, text);
    }

    void addVersions() {
        m_rich.versym = add(".gnu.version", SHT_GNU_versym, SHF_ALLOC,
                            bytes().half(0).half(2).half(1).half(3).half(1).bytes());
        finishTable(m_rich.versym, m_rich.dynamicSymbols, 2);
        // Two definitions: the file itself, and one version with a predecessor.
        const uint32_t file = dynamicString("librich.so");
        const uint32_t version = dynamicString("RICH_2");
        ElfBytes definitions = bytes();
        definitions.half(1).half(1).half(1).half(1).word(0x1234).word(20).word(28);
        definitions.word(file).word(0);
        definitions.half(1).half(0).half(2).half(2).word(0x5678).word(20).word(0);
        definitions.word(version).word(8);
        definitions.word(file).word(0);
        m_rich.verdef = add(".gnu.version_d", SHT_GNU_verdef, SHF_ALLOC, definitions.bytes());
        finishTable(m_rich.verdef, m_rich.dynamicStrings, 0);
        builder().section(m_rich.verdef).info = 2;
        ElfBytes requirements = bytes();
        requirements.half(1).half(1).word(dynamicString("libneeded.so")).word(16).word(0);
        requirements.word(0x9ABC).half(0).half(3).word(dynamicString("NEEDED_1")).word(0);
        m_rich.verneed = add(".gnu.version_r", SHT_GNU_verneed, SHF_ALLOC, requirements.bytes());
        finishTable(m_rich.verneed, m_rich.dynamicStrings, 0);
        builder().section(m_rich.verneed).info = 1;
    }

    // Two records and the count 0 that ends the map.
    void addPreemptionMap() {
        const uint32_t symbol = dynamicString("preempted_symbol");
        const uint32_t library = dynamicString("preempting.dll");
        ElfBytes map = bytes();
        map.word(1).word(symbol).word(library).word(dynamicString("preempted.dll"));
        map.word(2).word(0).word(library).word(symbol).word(library);
        map.word(0);
        m_rich.preemptionMap = add(".preemption", SHT_QEL_PREEMPTMAP, SHF_ALLOC, map.bytes());
        finishTable(m_rich.preemptionMap, m_rich.dynamicStrings, 0);
        if (!m_image) {
            // Found by its address, so it is the only section that has one.
            builder().section(m_rich.preemptionMap).address = 0x500000;
        }
    }

    void addDynamic() {
        std::vector<BuiltDynamicTag> tags;
        tags.push_back({DT_NEEDED, dynamicString("libfirst.so")});
        tags.push_back({DT_NEEDED, dynamicString("libsecond.so")});
        tags.push_back({DT_SONAME, dynamicString("librich.so.1")});
        tags.push_back({DT_RPATH, dynamicString("/rpath")});
        tags.push_back({DT_RUNPATH, dynamicString("/runpath")});
        tags.push_back({DT_INIT, 0, text()});
        tags.push_back({DT_FINI, 4, text()});
        tags.push_back({DT_INIT_ARRAY, 8, text()});
        tags.push_back({DT_INIT_ARRAYSZ, 8});
        tags.push_back({DT_SYMBOLIC});
        tags.push_back({DT_DEBUG});
        tags.push_back({DT_TEXTREL});
        tags.push_back({DT_BIND_NOW});
        tags.push_back({DT_FLAGS, 1});
        tags.push_back({DT_VERDEFNUM, 2});
        tags.push_back({DT_VERNEEDNUM, 1});
        tags.push_back({DT_HASH, 0, m_rich.hash});
        tags.push_back({DT_STRTAB, 0, m_rich.dynamicStrings});
        tags.push_back({DT_STRSZ, builder().section(m_rich.dynamicStrings).contents.size()});
        tags.push_back({DT_SYMTAB, 0, m_rich.dynamicSymbols});
        tags.push_back({DT_SYMENT, symbolSize(m_format)});
        tags.push_back({DT_VERSYM, 0, m_rich.versym});
        tags.push_back({DT_VERDEF, 0, m_rich.verdef});
        tags.push_back({DT_VERNEED, 0, m_rich.verneed});
        tags.push_back({DT_QEL_PREEMPTMAP, 0, m_rich.preemptionMap});
        m_rich.dynamic = builder().addDynamic(m_rich.dynamicStrings, tags);
        finishTable(m_rich.dynamic, m_rich.dynamicStrings, dynamicEntrySize(m_format));
    }

    // In an image the note that maps sections to segments, filled in at the end.
    size_t addNote() {
        std::vector<BuiltNote> notes;
        notes.push_back({"RICH", 1, "described"});
        m_rich.note = builder().addNotes(".note", notes);
        if (m_image) {
            finishTable(m_rich.note, 0, 0);
            builder().section(m_rich.note).alignment = 4;
        }
        return m_rich.note;
    }

    void addData() {
        m_rich.initArray =
            add(".init_array", SHT_INIT_ARRAY, SHF_ALLOC | SHF_WRITE, bytes().address(0).bytes());
        m_rich.data = add(".data", SHT_PROGBITS, SHF_ALLOC | SHF_WRITE, std::string(45, 'D'));
        m_rich.bss = add(".bss", SHT_NOBITS, SHF_ALLOC | SHF_WRITE, {});
        builder().section(m_rich.bss).noBitsSize = 32;
        // Outside every segment in an image, as far as the file goes: it is not mapped.
        m_rich.groupedText =
            add(".text.grouped", SHT_PROGBITS, SHF_EXECINSTR | SHF_GROUP, std::string(8, 'G'));
    }

    void addDebug() {
        m_rich.debugInfo = add(".debug_info", SHT_PROGBITS, 0, std::string(24, 'I'));
        m_rich.debugLine = add(".debug_line", SHT_PROGBITS, 0, std::string(24, 'L'));
        ElfBytes records = bytes();
        records.address(1).word(m_rich.debugInfo).word(text());
        records.address(2).word(m_rich.debugLine).word(m_rich.data);
        m_rich.debugOverlay = add(".debug_overlay", SHT_QEL_DEBUGOVERLAY, 0, records.bytes());
        builder().section(m_rich.debugOverlay).entrySize = m_format.is64 ? 16 : 12;
    }

    void addSymbols() {
        const auto data = static_cast<uint32_t>(m_rich.data);
        const auto debug = static_cast<uint32_t>(m_rich.debugInfo);
        std::vector<BuiltElfSymbol> symbols(RichSymbol_Count - 1);
        const auto set = [&](RichSymbol index, BuiltElfSymbol symbol) {
            symbols[index - 1] = std::move(symbol);
        };
        BuiltElfSymbol file = reservedSymbol("rich.c", SHN_ABS);
        file.binding = STB_LOCAL;
        file.type = STT_FILE;
        set(RichSymbol_File, file);
        set(RichSymbol_TextSection, {.section = text(), .binding = STB_LOCAL, .type = STT_SECTION});
        set(RichSymbol_DebugSection, {.section = debug, .binding = STB_LOCAL, .type = STT_SECTION});
        set(RichSymbol_LocalData,
            {.name = "local_data", .section = data, .binding = STB_LOCAL, .type = STT_OBJECT});
        set(RichSymbol_Function,
            {.name = "rich_function", .section = text(), .size = 8, .type = STT_FUNC});
        set(RichSymbol_Data,
            {.name = "rich_data", .section = data, .value = 4, .size = 4, .type = STT_OBJECT});
        set(RichSymbol_Weak, {.name = "rich_weak", .section = text(), .binding = STB_WEAK});
        set(RichSymbol_Bss, {.name = "rich_bss", .section = static_cast<uint32_t>(m_rich.bss)});
        set(RichSymbol_Absolute, reservedSymbol("rich_absolute", SHN_ABS, 0x77));
        set(RichSymbol_Common, reservedSymbol("rich_common", SHN_COMMON, 8));
        set(RichSymbol_Undefined, {.name = "rich_undefined"});
        set(RichSymbol_Signature,
            {.name = "rich_signature", .section = static_cast<uint32_t>(m_rich.groupedText)});
        set(RichSymbol_Extended, {.name = "rich_extended", .section = data, .extended = true});
        set(RichSymbol_Debug, {.name = "rich_debug", .section = debug, .value = 2});
        m_rich.symbols = builder().addSymbols(symbols);
        m_rich.strings = m_rich.symbols - 1;
        m_rich.extension = m_rich.symbols + 1;
    }

    void addGroupAndRelocations() {
        m_rich.group = builder().addGroup(".group", m_rich.symbols, RichSymbol_Signature,
                                          GRP_COMDAT, {static_cast<uint32_t>(m_rich.groupedText)});
        m_rich.textRelocations =
            builder().addRelocations(".rel.text", SHT_REL, m_rich.text, m_rich.symbols,
                                     {{.offset = 4, .symbol = RichSymbol_Data, .type = 2},
                                      {.offset = 8, .symbol = RichSymbol_Undefined, .type = 3}});
        m_rich.dataRelocations = builder().addRelocations(
            ".rela.data", SHT_RELA, m_rich.data, m_rich.symbols,
            {{.offset = 0, .symbol = RichSymbol_Function, .addend = 12},
             {.offset = 8, .symbol = RichSymbol_TextSection, .addend = 16}});
        m_rich.dynamicRelocations =
            builder().addRelocations(".rela.dyn", SHT_RELA, m_rich.data, m_rich.dynamicSymbols,
                                     {{.offset = 16, .symbol = 3}, {.offset = 24, .symbol = 0}});
    }

    // One subsection of the public vendor, with attributes of the file, a section and a symbol, and
    // one of the tool chain's own. Tag 6 is a number, tag 5 a text.
    void addAttributes() {
        const auto scope = [&](uint32_t kind, std::string_view indexes, std::string_view stream) {
            const std::string body = std::string(indexes) + std::string(stream);
            return bytes().byte(kind).word(5 + body.size()).raw(body).bytes();
        };
        const auto vendor = [&](std::string_view name, std::string_view scopes) {
            return bytes().word(5 + name.size() + scopes.size()).text(name).raw(scopes).bytes();
        };
        const std::string number = bytes().byte(6).byte(2).bytes();
        const std::string text = bytes().byte(5).text("CPU").bytes();
        const std::string index = bytes().byte(1).byte(0).bytes();
        m_rich.attributes =
            add(".QEL.attributes", SHT_QEL_ATTRIBUTES, 0,
                "A" +
                    vendor("qeabi", scope(1, {}, number + text) + scope(2, index, number) +
                                        scope(3, index, number)) +
                    vendor("QEL", scope(1, {}, bytes().byte(16).byte(1).bytes())));
    }

    void addSegments() {
        builder().addSegment({.type = PT_PHDR, .alignment = 8});
        builder().addSegment({.flags = 5, .lastSection = m_lastMapped});
        builder().addSegment(
            {.flags = 6, .firstSection = m_rich.initArray, .lastSection = m_rich.bss});
        builder().addSegment({.type = PT_DYNAMIC,
                              .firstSection = m_rich.dynamic,
                              .lastSection = m_rich.dynamic,
                              .alignment = 8});
        builder().addSegment({.type = PT_NOTE,
                              .firstSection = m_rich.note,
                              .lastSection = m_rich.note,
                              .alignment = 4});
    }

    // One word for each mapped section: the number of its segment.
    void fillMappingNote() {
        ElfBytes words = bytes();
        for (size_t i = 0; i < builder().sectionCount(); ++i) {
            if ((builder().section(i).flags & SHF_ALLOC) != 0) {
                words.word(i <= m_lastMapped ? 1 : 2);
            }
        }
        ElfBytes note = bytes();
        note.word(4).word(words.bytes().size()).word(0x40000000).text("QEL").raw(words.bytes());
        builder().section(m_mappingNote).contents += note.bytes();
    }

    uint32_t text() const { return static_cast<uint32_t>(m_rich.text); }

    ElfFormat m_format;
    bool m_image;
    RichElf m_rich;
    size_t m_lastMapped = 0; // of the first loaded segment
    size_t m_mappingNote = 0;
};

} // namespace

RichElf richElf(ElfFormat format, uint16_t type) {
    return RichMaker(format, type).make();
}

size_t richMappingWords(const RichElf& rich) {
    ElfBuilder builder = rich.builder;
    size_t count = 0;
    for (size_t i = 0; i < builder.sectionCount(); ++i) {
        count += (builder.section(i).flags & SHF_ALLOC) != 0 ? 1U : 0U;
    }
    return count;
}

std::vector<std::string> richNames(bool debugSymbols) {
    std::vector<std::string> names = {"rich_function",  "rich_data",     "rich_weak",
                                      "rich_bss",       "rich_absolute", "rich_common",
                                      "rich_signature", "rich_extended"};
    if (debugSymbols) {
        names.emplace_back("rich_debug");
    }
    return names;
}

} // namespace testsupport
