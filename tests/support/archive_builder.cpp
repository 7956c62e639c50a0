// The bytes of an archive, composed front to back: first the list of all members with their final
// contents (tables first), then each one's header, contents and padding.
#include "tests/support/archive_builder.h"

#include <limits>
#include <sstream>
#include <stdexcept>

namespace testsupport {

namespace {

constexpr size_t nameWidth = 16;
constexpr size_t dateWidth = 12;
constexpr size_t ownerWidth = 6;
constexpr size_t modeWidth = 8;
constexpr size_t sizeWidth = 10;

std::string field(const std::string& text, size_t width) {
    if (text.size() > width) {
        throw std::length_error(text + " is too wide for a field of " + std::to_string(width) +
                                " characters");
    }
    return padded(text, width);
}

std::string octal(uint64_t value) {
    std::ostringstream digits;
    digits << std::oct << value;
    return digits.str();
}

std::string paddingOf(const BuiltMember& member) {
    if (member.rawPadding) {
        return *member.rawPadding;
    }
    return member.contents.size() % 2 == 1 ? "\n" : "";
}

// A member's bytes. Its name is no longer looked at: rawName holds the whole field.
std::string memberBytes(const BuiltMember& member) {
    std::string bytes = member.rawName.value_or("");
    bytes += member.rawDate ? *member.rawDate : field(std::to_string(member.date), dateWidth);
    bytes += member.rawUid ? *member.rawUid : field(std::to_string(member.uid), ownerWidth);
    bytes += member.rawGid ? *member.rawGid : field(std::to_string(member.gid), ownerWidth);
    bytes += member.rawMode ? *member.rawMode : field(octal(member.mode), modeWidth);
    bytes +=
        member.rawSize ? *member.rawSize : field(std::to_string(member.contents.size()), sizeWidth);
    bytes += member.rawMagic.value_or("`\n");
    return bytes + member.contents + paddingOf(member);
}

bool isLong(const BuiltMember& member) {
    return member.name.size() > longestShortName;
}

} // namespace

std::string padded(std::string_view text, size_t width) {
    std::string result{text};
    if (result.size() < width) {
        result.resize(width, ' ');
    }
    return result;
}

std::string bigEndian32(uint32_t value) {
    std::string bytes;
    for (unsigned shift : {24U, 16U, 8U, 0U}) {
        bytes += static_cast<char>(value >> shift & 0xFFU);
    }
    return bytes;
}

std::string headerText(std::string_view nameField, uint64_t date, uint64_t uid, uint64_t gid,
                       uint64_t mode, uint64_t size) {
    return field(std::string{nameField}, nameWidth) + field(std::to_string(date), dateWidth) +
           field(std::to_string(uid), ownerWidth) + field(std::to_string(gid), ownerWidth) +
           field(octal(mode), modeWidth) + field(std::to_string(size), sizeWidth) + "`\n";
}

ArchiveBuilder& ArchiveBuilder::add(BuiltMember member) {
    m_members.push_back(std::move(member));
    return *this;
}

ArchiveBuilder& ArchiveBuilder::add(std::string name, std::string contents) {
    return add({.name = std::move(name), .contents = std::move(contents)});
}

ArchiveBuilder& ArchiveBuilder::symbol(std::string name, size_t member) {
    m_symbols.push_back({std::move(name), member});
    return *this;
}

ArchiveBuilder& ArchiveBuilder::withSymbolTable() {
    m_withSymbolTable = true;
    return *this;
}

ArchiveBuilder& ArchiveBuilder::rawSymbolTable(std::string contents) {
    m_rawSymbolTable = std::move(contents);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::rawNameTable(std::string contents) {
    m_rawNameTable = std::move(contents);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::withoutNameTable() {
    m_withoutNameTable = true;
    return *this;
}

ArchiveBuilder& ArchiveBuilder::magic(std::string bytes) {
    m_magic = std::move(bytes);
    return *this;
}

bool ArchiveBuilder::hasSymbolTable() const {
    return m_withSymbolTable || m_rawSymbolTable || !m_symbols.empty();
}

bool ArchiveBuilder::hasNameTable() const {
    return !m_withoutNameTable && (m_rawNameTable || !nameTableContents().empty());
}

std::string ArchiveBuilder::nameTableContents() const {
    if (m_rawNameTable) {
        return *m_rawNameTable;
    }
    std::string table;
    for (const BuiltMember& member : m_members) {
        if (isLong(member) && !member.rawName) {
            table += member.name + "/\n";
        }
    }
    return table;
}

std::string ArchiveBuilder::symbolTableContents() const {
    if (m_rawSymbolTable) {
        return *m_rawSymbolTable;
    }
    std::string table = bigEndian32(static_cast<uint32_t>(m_symbols.size()));
    for (const BuiltSymbol& symbol : m_symbols) {
        const uint64_t offset = offsetOf(symbol.member);
        if (offset > std::numeric_limits<uint32_t>::max()) {
            throw std::length_error("the member of \"" + symbol.name + "\" starts past 4 GiB");
        }
        table += bigEndian32(static_cast<uint32_t>(offset));
    }
    for (const BuiltSymbol& symbol : m_symbols) {
        table += symbol.name + '\0';
    }
    return table;
}

// The members as added, each with its name field in rawName.
std::vector<BuiltMember> ArchiveBuilder::laidOutMembers() const {
    std::vector<BuiltMember> members = m_members;
    size_t longNameOffset = 0;
    for (BuiltMember& member : members) {
        if (member.rawName) {
            continue;
        }
        if (isLong(member)) {
            member.rawName = field(std::to_string(longNameOffset).insert(0, 1, '/'), nameWidth);
            longNameOffset += member.name.size() + 2;
        } else {
            member.rawName = field(member.name + "/", nameWidth);
        }
    }
    return members;
}

// Members' offsets depend on the symbol table's size, but not on what its offsets are, so the
// size is counted here without building the table.
uint64_t ArchiveBuilder::offsetOf(size_t member) const {
    uint64_t offset = m_magic.size();
    auto skip = [&offset](BuiltMember table, size_t size, const char* name) {
        table.contents.assign(size, '\0');
        table.rawName = table.rawName.value_or(padded(name, nameWidth));
        offset += memberBytes(table).size();
    };
    if (hasSymbolTable()) {
        size_t size = 4;
        for (const BuiltSymbol& symbol : m_symbols) {
            size += 4 + symbol.name.size() + 1;
        }
        skip(m_symbolTableHeader, m_rawSymbolTable ? m_rawSymbolTable->size() : size, "/");
    }
    if (hasNameTable()) {
        skip(m_nameTableHeader, nameTableContents().size(), "//");
    }
    const std::vector<BuiltMember> members = laidOutMembers();
    for (size_t i = 0; i < member; ++i) {
        offset += memberBytes(members.at(i)).size();
    }
    return offset;
}

std::string ArchiveBuilder::bytes() const {
    std::string archive = m_magic;
    auto appendTable = [&archive](BuiltMember table, std::string contents, const char* name) {
        table.contents = std::move(contents);
        table.rawName = table.rawName.value_or(padded(name, nameWidth));
        archive += memberBytes(table);
    };
    if (hasSymbolTable()) {
        appendTable(m_symbolTableHeader, symbolTableContents(), "/");
    }
    if (hasNameTable()) {
        appendTable(m_nameTableHeader, nameTableContents(), "//");
    }
    for (const BuiltMember& member : laidOutMembers()) {
        archive += memberBytes(member);
    }
    return archive;
}

} // namespace testsupport
