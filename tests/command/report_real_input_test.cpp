// Reports on the host's own libraries and programs, with the machine number made one that the tool
// takes. The witnesses are `readelf`, which lists sections and segments, `nm -s`, which prints an
// archive's table, and `ar tO`, which tells where members stand.
#include "tests/command/real_input_case.h"

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "tests/command/report_case.h"
#include "tests/support/retarget.h"

namespace commandtest {
namespace {

namespace fs = std::filesystem;

// A row of `readelf -S`, and the file range of one of `readelf -l`.
struct ListedSection {
    std::string name;
    std::string type;
    uint64_t offset = 0;
    uint64_t size = 0;
    std::string flags;
};
struct ListedRange {
    uint64_t offset = 0;
    uint64_t size = 0;
};

// What `readelf -S -l -h -W` says of one file.
struct ListedFile {
    std::string name;
    std::vector<ListedSection> sections;
    std::vector<ListedRange> segments;
    // Headers: the ELF header and both tables.
    std::vector<ListedRange> headers;
};

class Cursor {
public:
    explicit Cursor(const std::string& line) : m_Words(line) {}

    std::string word() {
        std::string text;
        m_Words >> text;
        return text;
    }
    uint64_t hex() { return std::stoull(word(), nullptr, 16); }

private:
    std::istringstream m_Words;
};

class ReadelfReader {
public:
    explicit ReadelfReader(const std::string& output) {
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            readLine(line);
        }
    }

    std::vector<ListedFile> files;

private:
    void readLine(const std::string& line) {
        if (line.starts_with("File: ")) {
            const size_t start = line.find('(');
            files.emplace_back();
            files.back().name = line.substr(start + 1, line.rfind(')') - start - 1);
        } else if (line.starts_with("  [") && line.find("[Nr]") == line.npos) {
            readSection(line.substr(line.find(']') + 1));
        } else if (line.starts_with("  ") && line.find(':') != line.npos) {
            readHeader(line.substr(2, line.find(':') - 2), line.substr(line.find(':') + 1));
        } else if (line.starts_with("  ") && line[2] != ' ' && line.find(" 0x") != line.npos) {
            readSegment(line);
        }
    }

    // "name type address offset size entry-size flags link info alignment"; name and flags may be
    // missing, and a name may be anything but has no blanks here.
    void readSection(const std::string& row) {
        Words words;
        for (Cursor cursor(row);;) {
            words.push_back(cursor.word());
            if (words.back().empty()) {
                words.pop_back();
                break;
            }
        }
        // The address is the only word of its width and place in front of three others in hex.
        size_t address = 1;
        while (address + 3 < words.size() && !isAddress(words[address])) {
            ++address;
        }
        ASSERT_LT(address + 6, words.size()) << row;
        ListedSection section;
        section.name = address == 2 ? words[0] : "";
        section.type = words[address - 1];
        section.offset = std::stoull(words[address + 1], nullptr, 16);
        section.size = std::stoull(words[address + 2], nullptr, 16);
        section.flags = words.size() == address + 8 ? words[address + 4] : "";
        files.back().sections.push_back(section);
    }
    static bool isAddress(const std::string& word) {
        return (word.size() == 8 || word.size() == 16) &&
               word.find_first_not_of("0123456789abcdef") == word.npos;
    }

    // "type offset address address file-size memory-size flags alignment"
    void readSegment(const std::string& line) {
        Cursor cursor(line);
        cursor.word();
        const uint64_t offset = cursor.hex();
        cursor.hex();
        cursor.hex();
        files.back().segments.push_back({offset, cursor.hex()});
    }

    void readHeader(const std::string& name, const std::string& value) {
        if (name == "Class") {
            m_Is64 = value.find("ELF64") != value.npos;
        } else if (name == "Start of program headers") {
            m_ProgramHeaders = std::stoull(value);
        } else if (name == "Start of section headers") {
            m_SectionHeaders = std::stoull(value);
        } else if (name == "Number of program headers") {
            files.back().headers.push_back({0, uint64_t{m_Is64 ? 64U : 52U}});
            files.back().headers.push_back(
                {m_ProgramHeaders, std::stoull(value) * (m_Is64 ? 56 : 32)});
        } else if (name == "Number of section headers") {
            files.back().headers.push_back(
                {m_SectionHeaders, std::stoull(value) * (m_Is64 ? 64 : 40)});
        }
    }

    bool m_Is64 = false;
    uint64_t m_ProgramHeaders = 0;
    uint64_t m_SectionHeaders = 0;
};

// Bytes of the segments that are in no section and no header.
uint64_t uncoveredBytes(const ListedFile& file) {
    uint64_t end = 0;
    for (const ListedRange& segment : file.segments) {
        end = std::max(end, segment.offset + segment.size);
    }
    std::string kinds(end, ' ');
    const auto mark = [&kinds](uint64_t offset, uint64_t size, char kind) {
        for (uint64_t i = offset; i < std::min<uint64_t>(offset + size, kinds.size()); ++i) {
            kinds[i] = kind;
        }
    };
    for (const ListedRange& segment : file.segments) {
        mark(segment.offset, segment.size, 's');
    }
    for (const ListedSection& section : file.sections) {
        mark(section.offset, section.type == "NOBITS" || section.type == "NULL" ? 0 : section.size,
             'c');
    }
    for (const ListedRange& header : file.headers) {
        mark(header.offset, header.size, 'c');
    }
    return static_cast<uint64_t>(std::count(kinds.begin(), kinds.end(), 's'));
}

Columns columnsOf(const ListedFile& file) {
    uint64_t code = 0;
    uint64_t constants = uncoveredBytes(file);
    uint64_t data = 0;
    uint64_t zeros = 0;
    uint64_t debug = 0;
    for (const ListedSection& section : file.sections) {
        const auto has = [&section](char flag) {
            return section.flags.find(flag) != std::string::npos;
        };
        const bool isDebug = section.name.starts_with(".debug") ||
                             section.name.starts_with(".line") || section.name == "C$$fpmap";
        uint64_t ignored = 0;
        uint64_t& column = !has('A')                  ? (isDebug ? debug : ignored)
                           : section.type == "NOBITS" ? zeros
                           : has('X')                 ? code
                           : has('W')                 ? data
                                                      : constants;
        column += section.size;
    }
    const auto cut = [](uint64_t number) { return static_cast<uint32_t>(number); };
    return {cut(code), cut(constants), cut(data), cut(zeros), cut(debug)};
}

class ReportRealInput : public RealInputCase {
protected:
    const Witness readelf{"readelf"};
    const Witness nm{"nm"};

    std::vector<ListedFile> listed(const std::string& name) const {
        // It complains of members that are no ELF files.
        const CommandResult result = readelf.run(folder, {"-h", "-S", "-l", "-W", name});
        EXPECT_TRUE(result.startFailure.empty()) << result;
        EXPECT_NE(result.output, "") << result;
        return ReadelfReader(result.output).files;
    }
    // The report of "lib.a" as readelf has it.
    std::string expectedSizes(size_t& objects) const {
        std::string table = sizesHeading;
        Columns total{};
        for (const ListedFile& file : listed("lib.a")) {
            const Columns columns = columnsOf(file);
            table += sizesRow(columns, file.name);
            total += columns;
            ++objects;
        }
        return table + totalRow(total);
    }

    // At most `count` programs and shared libraries of at most 512 KiB, evenly spread.
    static Words someImages(size_t count) {
        Words all;
        for (const char* place : {"/usr/bin", "/usr/lib/x86_64-linux-gnu", "/usr/lib"}) {
            std::error_code failure;
            for (fs::directory_iterator entry(place, failure);
                 !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
                std::error_code ignored;
                if (entry->is_regular_file(ignored) && entry->file_size(ignored) <= 512U << 10U) {
                    all.push_back(entry->path().string());
                }
            }
        }
        std::sort(all.begin(), all.end());
        std::erase_if(all, [](const std::string& path) { return !isImage(path); });
        Words chosen;
        for (size_t i = 0; i < all.size(); i += (all.size() + count - 1) / count) {
            chosen.push_back(all[i]);
        }
        return chosen;
    }
    static bool isImage(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::string head(64, '\0');
        file.read(head.data(), static_cast<std::streamsize>(head.size()));
        if (!file || !testsupport::isElf(head)) {
            return false;
        }
        const uint64_t type = headerField(head, testsupport::HeaderField::Type);
        return type == 2 || type == 3;
    }
};

// The first lines that differ, since tables are long.
testing::AssertionResult sameLines(const std::string& found, const std::string& expected) {
    std::istringstream left(found);
    std::istringstream right(expected);
    std::string leftLine;
    std::string rightLine;
    for (size_t number = 1;; ++number) {
        const bool hasLeft = static_cast<bool>(std::getline(left, leftLine));
        const bool hasRight = static_cast<bool>(std::getline(right, rightLine));
        if (!hasLeft && !hasRight) {
            return testing::AssertionSuccess();
        }
        if (hasLeft != hasRight || leftLine != rightLine) {
            return testing::AssertionFailure() << "line " << number << " is\n"
                                               << (hasLeft ? leftLine : "missing") << "\nand not\n"
                                               << (hasRight ? rightLine : "missing");
        }
    }
}

TEST_F(ReportRealInput, SizesOfHostLibrariesAreWhatReadelfLists) {
    if (!present(readelf)) {
        return;
    }
    size_t objects = 0;
    for (const std::string& library : someHostLibraries(testsupport::sanitizedBuild ? 12 : 60)) {
        SCOPED_TRACE(library);
        std::string bytes = wholeFile(library);
        if (testsupport::retargetArchive(bytes) == 0) {
            continue; // of another object format, or of none
        }
        folder.write("lib.a", bytes);
        const std::string expected = expectedSizes(objects);
        EXPECT_TRUE(sameLines(prints({"--sizes", "lib.a"}), expected));
        EXPECT_EQ(prints({"--entries", "lib.a"}), "No ENTRY points found.\n");
    }
    EXPECT_GT(objects, 0U);
    RecordProperty("objects", static_cast<int>(objects));
}

TEST_F(ReportRealInput, SizesOfProgramsAndSharedLibrariesAreWhatReadelfLists) {
    if (!present(readelf)) {
        return;
    }
    Words words = {"-rc", "lib.a"};
    const Words images = someImages(testsupport::sanitizedBuild ? 20 : 120);
    ASSERT_FALSE(images.empty());
    for (const std::string& path : images) {
        std::string bytes = wholeFile(path);
        ASSERT_TRUE(testsupport::retargetElf(bytes)) << path;
        // Names of their own: the same file name stands in several folders.
        words.push_back("image" + std::to_string(words.size()));
        folder.write(words.back(), bytes);
    }
    EXPECT_EQ(prints(words), "");
    size_t objects = 0;
    const std::string expected = expectedSizes(objects);
    EXPECT_EQ(objects, images.size());
    EXPECT_TRUE(sameLines(prints({"--sizes", "lib.a"}), expected));
}

// Constants, data, zeros, code, and each kind of thread-local data.
const char* const sourceOfAllKinds =
    "int data[3] = {1, 2, 3}; const int constants[5] = {4}; int zeros[7];"
    "const char* const text = \"text\"; int* pointer = data;"
    "int function(int a) { return a + data[a] + zeros[a]; }"
    "__thread int local = 4; __thread int localZeros;";

// All four formats, with everything that a compiler puts into an object, and debug tables.
TEST_F(ReportRealInput, SizesOfCompiledObjectsAreWhatReadelfLists) {
    if (!present(readelf) || !present(Witness("clang"))) {
        return;
    }
    Words words = {"-rc", "--diag_suppress=6876", "lib.a"};
    for (const testsupport::GenericTarget& target : testsupport::genericTargets()) {
        for (const char* flags : {"-g", "-O2", "-fPIC"}) {
            // Short ones: readelf loses its way behind a name table of odd size.
            words.push_back("object" + std::to_string(words.size()) + ".o");
            folder.write(words.back(),
                         compileRetargeted(folder, target, sourceOfAllKinds, {flags}));
        }
    }
    EXPECT_EQ(prints(words), "");
    size_t objects = 0;
    const std::string expected = expectedSizes(objects);
    EXPECT_EQ(objects, 12U);
    EXPECT_TRUE(sameLines(prints({"--sizes", "lib.a"}), expected));
}

// Programs and shared libraries of all four formats. One linker serves all targets; which of them
// it takes depends on its version.
class ReportLinkedImages : public ReportRealInput {
protected:
    const Witness compiler{"clang"};
    const Witness linker{"ld.lld"};

    struct LinkTarget {
        std::string name;
        Words flags;
    };
    // One more of 64 bits and big-endian, since older linkers lack the first one of that kind.
    static std::vector<LinkTarget> linkTargets() {
        std::vector<LinkTarget> targets;
        for (const testsupport::GenericTarget& target : testsupport::genericTargets()) {
            targets.push_back({target.name, {}});
        }
        targets.push_back({"powerpc64-unknown-none-elf", {"-mabi=elfv2"}});
        return targets;
    }

    void compile(const LinkTarget& target) const {
        folder.write("source.c", sourceOfAllKinds);
        Words arguments = {
            "--target=" + target.name, "-g", "-fPIC", "-c", "source.c", "-o", "source.o"};
        arguments.insert(arguments.begin(), target.flags.begin(), target.flags.end());
        const CommandResult result = compiler.run(folder, arguments);
        EXPECT_TRUE(result.exitedWith(0)) << result;
    }
    // The linked image, fit for the tool; empty, and told, if the linker does not take the target.
    std::string linked(const LinkTarget& target, Words arguments) const {
        arguments.insert(arguments.end(), {"source.o", "-o", "image"});
        const CommandResult result = linker.run(folder, arguments);
        if (!result.exitedWith(0)) {
            std::cerr << "[  NOTE    ] " << linker.path() << " does not link for " << target.name
                      << '\n';
            return {};
        }
        std::string image = folder.read("image");
        EXPECT_TRUE(testsupport::retargetElf(image));
        return image;
    }
};

TEST_F(ReportLinkedImages, SizesAreWhatReadelfLists) {
    if (!present(readelf) || !present(compiler) || !present(linker)) {
        return;
    }
    Words words = {"-rc", "--diag_suppress=6876", "lib.a"};
    std::set<std::string> kinds;
    for (const LinkTarget& target : linkTargets()) {
        compile(target);
        for (const Words& arguments : {Words{"-shared"}, Words{"-static", "-e", "0"}}) {
            const std::string image = linked(target, arguments);
            if (image.empty()) {
                break;
            }
            words.push_back("image" + std::to_string(words.size()));
            folder.write(words.back(), image);
            kinds.insert(testsupport::describe(testsupport::formatOf(image)) + " of type " +
                         std::to_string(headerField(image, testsupport::HeaderField::Type)));
        }
    }
    EXPECT_EQ(kinds.size(), 8U) << testing::PrintToString(kinds);
    EXPECT_EQ(prints(words), "");
    size_t objects = 0;
    const std::string expected = expectedSizes(objects);
    EXPECT_EQ(objects, words.size() - 3);
    EXPECT_TRUE(sameLines(prints({"--sizes", "lib.a"}), expected));
}

TEST_F(ReportRealInput, SymbolsAreWhatNmLists) {
    if (!present(nm) || !present(ar)) {
        return;
    }
    size_t symbols = 0;
    for (const std::string& library : someHostLibraries(testsupport::sanitizedBuild ? 12 : 60)) {
        SCOPED_TRACE(library);
        folder.write("lib.a", wholeFile(library));
        const ParsedArchive parsed =
            testsupport::parseArchive(folder.read("lib.a"), ArchiveRules::AnyTool);
        if (!parsed.ok() || parsed.table("/") == nullptr) {
            continue; // not in the form that the tool takes
        }
        // Which of several members of one name is meant, only the table's reader knows.
        std::map<std::string, std::vector<uint64_t>> places;
        std::istringstream members(says(ar, {"tO", "lib.a"}));
        for (std::string line; std::getline(members, line);) {
            const size_t blank = line.rfind(" 0x");
            // It tells where the contents begin.
            const uint64_t contents = std::stoull(line.substr(blank + 1), nullptr, 16);
            places[line.substr(0, blank)].push_back(contents - testsupport::memberHeaderSize);
        }
        std::istringstream found(prints({"--zs", "lib.a"}));
        std::istringstream index(nm.run(folder, {"-s", "lib.a"}).output);
        std::string entry;
        while (std::getline(index, entry) && entry != "Archive index:") {
        }
        for (const testsupport::ParsedSymbol& symbol : parsed.symbols) {
            std::getline(index, entry);
            EXPECT_EQ(entry, symbol.name + " in " + symbol.member);
            std::string line;
            std::getline(found, line);
            const std::vector<uint64_t>& offsets = places[symbol.member];
            EXPECT_TRUE(std::find(offsets.begin(), offsets.end(), symbol.headerOffset) !=
                        offsets.end())
                << symbol.member << " at " << symbol.headerOffset << ", not "
                << testing::PrintToString(offsets);
            EXPECT_EQ(line, testsupport::padded(symbol.name, 20) + " from " +
                                testsupport::padded(symbol.member, 10) + " at offset " +
                                right(symbol.headerOffset, 6));
            if (HasFailure()) {
                return;
            }
            ++symbols;
        }
        std::getline(index, entry);
        EXPECT_EQ(entry, "") << "nm lists more";
        EXPECT_FALSE(std::getline(found, entry)) << entry;
    }
    EXPECT_GT(symbols, 0U);
    RecordProperty("symbols", static_cast<int>(symbols));
}

} // namespace
} // namespace commandtest
