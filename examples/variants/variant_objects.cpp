// Writes the objects of a small library of variants: one module, built in four ways.
//
//     variant_objects FOLDER
//
// The module has two functions. It is built for the plain processor, for one with a floating-point
// unit, for one with media instructions, and for a newer one that has a better unit and vectors.
// What a compiler for this processor would write is written here by hand: a relocatable 32-bit ELF
// file with some bytes of code, the functions' symbols, and a local marker symbol whose name says
// how the object was built.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Build {
    const char* fileName;
    const char* decoration;
};

constexpr Build builds[] = {
    {"vector_plain.o", "$QEL_ISAv5$FCH_ISAv2$IEEE1$IW"},
    {"vector_fpu.o", "$QEL_ISAv5$FCH_ISAv2$ZLTv2$IEEE1$IW"},
    {"vector_media.o", "$QEL_ISAv5$FCH_ISAv2$WMMX$IEEE1$IW"},
    {"vector_wide.o", "$QEL_ISAv7$FCH_ISAv4$N$ZLTv3$IEEE1$IW"},
};

constexpr const char* functions[] = {"dot_product", "vector_length"};

// Numbers of the ELF format.
constexpr uint16_t typeRelocatable = 1;
constexpr uint16_t machine = 40;
constexpr uint16_t headerSize = 52;
constexpr uint16_t sectionHeaderSize = 40;
constexpr uint32_t symbolSize = 16;
constexpr uint16_t absoluteSection = 0xFFF1;
constexpr uint8_t globalFunction = 0x12;
constexpr uint32_t functionSize = 8;
enum SectionType : uint32_t { Type_Contents = 1, Type_Symbols = 2, Type_Names = 3 };
enum SectionIndex : uint16_t { Index_Text = 1, Index_Symbols, Index_Names, Index_SectionNames };
constexpr uint16_t sectionCount = Index_SectionNames + 1;
constexpr uint32_t loadedCode = 6;
constexpr uint32_t firstGlobal = 2; // behind the null symbol and the marker

// Bytes in file order, little-endian.
class Bytes {
public:
    Bytes& half(uint32_t value) {
        m_Text += static_cast<char>(value);
        m_Text += static_cast<char>(value >> 8U);
        return *this;
    }
    Bytes& word(uint32_t value) { return half(value).half(value >> 16U); }
    Bytes& byte(uint8_t value) {
        m_Text += static_cast<char>(value);
        return *this;
    }
    // Returns where the name begins.
    uint32_t name(const std::string& text) {
        const auto start = static_cast<uint32_t>(m_Text.size());
        m_Text += text + '\0';
        return start;
    }
    const std::string& text() const { return m_Text; }

private:
    std::string m_Text;
};

struct Section {
    uint32_t name;
    uint32_t type;
    uint32_t flags;
    std::string contents;
    uint32_t link = 0;
    uint32_t info = 0;
    uint32_t entrySize = 0;
};

void addSymbol(Bytes& symbols, uint32_t name, uint32_t value, uint32_t size, uint8_t kind,
               uint16_t section) {
    symbols.word(name).word(value).word(size).byte(kind).byte(0).half(section);
}

// Contents behind the file's header, then the headers of the sections.
std::string elfFile(const std::vector<Section>& sections) {
    std::string contents;
    Bytes headers;
    for (int i = 0; i < sectionHeaderSize; ++i) {
        headers.byte(0);
    }
    for (const Section& section : sections) {
        const auto offset = static_cast<uint32_t>(headerSize + contents.size());
        headers.word(section.name).word(section.type).word(section.flags).word(0).word(offset);
        headers.word(static_cast<uint32_t>(section.contents.size())).word(section.link);
        headers.word(section.info).word(4).word(section.entrySize);
        contents += section.contents;
        contents.resize((contents.size() + 3) / 4 * 4);
    }
    Bytes header;
    header.byte(0x7F).byte('E').byte('L').byte('F').byte(1).byte(1).byte(1).byte(0);
    header.word(0).word(0).half(typeRelocatable).half(machine).word(1).word(0).word(0);
    header.word(static_cast<uint32_t>(headerSize + contents.size())).word(0).half(headerSize);
    header.half(0).half(0).half(sectionHeaderSize).half(sectionCount).half(Index_SectionNames);
    return header.text() + contents + headers.text();
}

std::string objectFile(const std::string& decoration) {
    Bytes names;
    names.name("");
    Bytes symbols;
    addSymbol(symbols, 0, 0, 0, 0, 0);
    addSymbol(symbols, names.name("BuildAttributes$" + decoration), 0, 0, 0, absoluteSection);
    uint32_t place = 0;
    for (const char* function : functions) {
        addSymbol(symbols, names.name(function), place, functionSize, globalFunction, Index_Text);
        place += functionSize;
    }
    Bytes sectionNames;
    sectionNames.name("");
    std::vector<Section> sections;
    sections.push_back(
        {sectionNames.name(".text"), Type_Contents, loadedCode, std::string(place, '\0')});
    sections.push_back({sectionNames.name(".symtab"), Type_Symbols, 0, symbols.text(), Index_Names,
                        firstGlobal, symbolSize});
    sections.push_back({sectionNames.name(".strtab"), Type_Names, 0, names.text()});
    const uint32_t ownName = sectionNames.name(".shstrtab");
    sections.push_back({ownName, Type_Names, 0, sectionNames.text()});
    return elfFile(sections);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    for (const Build& build : builds) {
        const std::string path = std::string(argv[1]) + "/" + build.fileName;
        std::ofstream file(path, std::ios::binary);
        file << objectFile(build.decoration);
        file.close();
        if (!file) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
        std::printf("%-16s %s\n", build.fileName, build.decoration);
    }
    return 0;
}
