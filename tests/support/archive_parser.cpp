// One pass over the bytes. Whatever is not exactly right ends it with a text that says where.
#include "tests/support/archive_parser.h"

#include <algorithm>
#include <map>
#include <optional>

namespace testsupport {

namespace {

constexpr std::string_view magic = "!<arch>\n";
constexpr size_t headerSize = 60;

struct Field {
    size_t offset;
    size_t width;
    unsigned base;
};

constexpr Field nameField = {0, 16, 0};
constexpr Field dateField = {16, 12, 10};
constexpr Field uidField = {28, 6, 10};
constexpr Field gidField = {34, 6, 10};
constexpr Field modeField = {40, 8, 8};
constexpr Field sizeField = {48, 10, 10};
constexpr Field magicField = {58, 2, 0};

std::string_view fieldOf(std::string_view header, const Field& field) {
    return header.substr(field.offset, field.width);
}

bool blank(std::string_view text) {
    return text.find_first_not_of(' ') == std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// A number as printf writes it into a field: no sign, no leading zero, blanks behind it only.
std::optional<uint64_t> number(std::string_view field, unsigned base) {
    const std::string_view digits = trimmed(field);
    if (digits.empty() || (digits.size() > 1 && digits[0] == '0')) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit >= static_cast<char>('0' + base)) {
            return std::nullopt;
        }
        value = value * base + static_cast<uint64_t>(digit - '0');
    }
    return value;
}

class Parser {
public:
    Parser(std::string_view bytes, ArchiveRules rules) : m_bytes(bytes), m_rules(rules) {}

    ParsedArchive parse() {
        if (m_bytes.substr(0, magic.size()) != magic) {
            fail("the archive's magic is wrong", 0);
            return std::move(m_archive);
        }
        m_position = magic.size();
        while (m_archive.ok() && m_position < m_bytes.size()) {
            readMember();
        }
        if (m_archive.ok()) {
            readNames();
        }
        if (m_archive.ok()) {
            readSymbols();
        }
        return std::move(m_archive);
    }

private:
    void fail(const std::string& what, size_t position) {
        m_archive.error = what + " at offset " + std::to_string(position);
    }

    void readMember() {
        const size_t start = m_position;
        if (m_bytes.size() - start < headerSize) {
            fail("the file ends in a header", start);
            return;
        }
        ParsedMember member;
        member.headerOffset = start;
        member.header = m_bytes.substr(start, headerSize);
        if (!readFields(member)) {
            return;
        }
        const size_t left = m_bytes.size() - start - headerSize;
        if (member.size > left) {
            fail("the file ends in the contents", start);
            return;
        }
        member.contents = m_bytes.substr(start + headerSize, member.size);
        m_position = start + headerSize + member.size;
        if (member.size % 2 == 1) {
            if (m_position == m_bytes.size() || m_bytes[m_position] != '\n') {
                fail("the padding byte is missing or wrong", m_position);
                return;
            }
            ++m_position;
        }
        m_archive.members.push_back(std::move(member));
    }

    bool readFields(ParsedMember& member) {
        if (fieldOf(member.header, magicField) != "`\n") {
            fail("the header's magic is wrong", member.headerOffset);
            return false;
        }
        member.name = trimmed(fieldOf(member.header, nameField));
        member.auxiliary = isTable(member.name);
        return readField(member, "date", dateField, member.date) &&
               readField(member, "uid", uidField, member.uid) &&
               readField(member, "gid", gidField, member.gid) &&
               readField(member, "mode", modeField, member.mode) &&
               readField(member, "size", sizeField, member.size);
    }

    bool readField(const ParsedMember& member, const char* what, const Field& field,
                   uint64_t& value) {
        const std::string_view text = fieldOf(member.header, field);
        if (m_rules == ArchiveRules::AnyTool && member.auxiliary && blank(text)) {
            value = 0;
            return true;
        }
        const std::optional<uint64_t> parsed = number(text, field.base);
        if (!parsed) {
            fail(std::string{"the "} + what + " field \"" + std::string{text} + "\" is wrong",
                 member.headerOffset);
            return false;
        }
        value = *parsed;
        return true;
    }

    // Tables stand in front, the symbol table first, each at most once. Anywhere else "/" is how a
    // member without a name is written.
    bool isTable(std::string_view name) const {
        const std::vector<ParsedMember>& before = m_archive.members;
        return (name == "/" && before.empty()) ||
               (name == "//" && (before.empty() || (before.size() == 1 && before[0].name == "/")));
    }

    void readNames() {
        const ParsedMember* table = m_archive.table("//");
        const std::string names = table != nullptr ? table->contents : std::string{};
        size_t expected = 0; // where the next long name has to start in the table
        for (ParsedMember& member : m_archive.members) {
            if (member.auxiliary) {
                continue;
            }
            const bool isLong = member.name.size() > 1 && member.name[0] == '/';
            if (isLong ? !readLongName(member, names, expected) : !readShortName(member)) {
                return;
            }
        }
        const std::string_view rest = std::string_view{names}.substr(expected);
        if (!(rest.empty() || (m_rules == ArchiveRules::AnyTool && rest == "\n"))) {
            fail("the name table holds more than the members' names",
                 table != nullptr ? table->headerOffset : 0);
        }
    }

    bool readShortName(ParsedMember& member) {
        const size_t end = member.name.find('/');
        if (end == std::string::npos || end + 1 != member.name.size()) {
            fail("the name field \"" + member.name + "\" is wrong", member.headerOffset);
            return false;
        }
        member.name.resize(end);
        return true;
    }

    // Long names stand in the table in the members' order, with nothing between them. Other tools
    // may keep equal names once, so there only each name's own bounds are looked at.
    bool readLongName(ParsedMember& member, const std::string& names, size_t& expected) {
        const std::optional<uint64_t> offset = number(member.name.substr(1), 10);
        if (!offset || *offset >= names.size() ||
            (m_rules == ArchiveRules::OwnOutput && *offset != expected)) {
            fail("the name field \"" + member.name + "\" leads to no name", member.headerOffset);
            return false;
        }
        const size_t end = names.find("/\n", *offset);
        if (end == std::string::npos ||
            (*offset != 0 && names.compare(*offset - 2, 2, "/\n") != 0)) {
            fail("the name field \"" + member.name + "\" leads to no whole name",
                 member.headerOffset);
            return false;
        }
        member.name = names.substr(*offset, end - *offset);
        expected = std::max(expected, end + 2);
        const bool needed = member.name.size() > 15;
        if (!needed && m_rules == ArchiveRules::OwnOutput) {
            fail("the short name \"" + member.name + "\" stands in the name table",
                 member.headerOffset);
            return false;
        }
        return true;
    }

    void readSymbols() {
        const ParsedMember* table = m_archive.table("/");
        if (table == nullptr) {
            return;
        }
        const std::string& contents = table->contents;
        const size_t at = table->headerOffset;
        if (contents.size() < 4) {
            fail("the symbol table has no count", at);
            return;
        }
        const uint64_t count = word(contents, 0);
        if ((contents.size() - 4) / 4 < count) {
            fail("the symbol table has too few offsets", at);
            return;
        }
        std::map<uint64_t, const ParsedMember*> starts;
        for (const ParsedMember& member : m_archive.members) {
            starts.emplace(member.headerOffset, &member);
        }
        size_t position = 4 + 4 * count;
        for (uint64_t i = 0; i < count; ++i) {
            const size_t end = contents.find('\0', position);
            const auto start = starts.find(word(contents, 4 + 4 * i));
            if (end == std::string::npos || start == starts.end() || start->second->auxiliary) {
                fail("symbol " + std::to_string(i) + " has no name or no member", at);
                return;
            }
            m_archive.symbols.push_back(
                {contents.substr(position, end - position), start->first, start->second->name});
            position = end + 1;
        }
        const std::string_view rest = std::string_view{contents}.substr(position);
        const bool filled = rest.find_first_not_of('\0') == std::string_view::npos;
        if (!(rest.empty() || (m_rules == ArchiveRules::AnyTool && filled))) {
            fail("the symbol table holds more than its symbols", at);
        }
    }

    static uint64_t word(const std::string& bytes, size_t offset) {
        uint64_t value = 0;
        for (size_t i = 0; i < 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
        }
        return value;
    }

    std::string_view m_bytes;
    ArchiveRules m_rules;
    size_t m_position = 0;
    ParsedArchive m_archive;
};

} // namespace

std::vector<ParsedMember> ParsedArchive::plainMembers() const {
    std::vector<ParsedMember> plain;
    std::copy_if(members.begin(), members.end(), std::back_inserter(plain),
                 [](const ParsedMember& member) { return !member.auxiliary; });
    return plain;
}

std::vector<std::string> ParsedArchive::names() const {
    std::vector<std::string> names;
    for (const ParsedMember& member : members) {
        if (!member.auxiliary) {
            names.push_back(member.name);
        }
    }
    return names;
}

const ParsedMember* ParsedArchive::find(std::string_view name) const {
    for (const ParsedMember& member : members) {
        if (!member.auxiliary && member.name == name) {
            return &member;
        }
    }
    return nullptr;
}

const ParsedMember* ParsedArchive::table(std::string_view name) const {
    for (const ParsedMember& member : members) {
        if (member.auxiliary && member.name == name) {
            return &member;
        }
    }
    return nullptr;
}

std::vector<std::string> ParsedArchive::summary() const {
    std::vector<std::string> lines;
    for (const ParsedMember& member : members) {
        const std::string mode{trimmed(fieldOf(member.header, modeField))};
        lines.push_back(member.name + " " + std::to_string(member.date) + " " +
                        std::to_string(member.uid) + " " + std::to_string(member.gid) + " " + mode +
                        " " + std::to_string(member.size));
    }
    return lines;
}

ParsedArchive parseArchive(std::string_view bytes, ArchiveRules rules) {
    return Parser(bytes, rules).parse();
}

} // namespace testsupport
