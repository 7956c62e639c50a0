// Archives made byte by byte, for tests that need to know every byte of their input.
//
// An archive is the magic "!<arch>\n" and then members: a header of seven text fields (60 bytes in
// all), the contents, and one line feed behind contents of odd size. Two members are special: "/"
// maps symbols to members, "//" holds the names too long for a header. The builder writes all of
// that correctly on its own; each field of each header can be replaced by raw text, so that a test
// can make exactly one thing wrong and leave the rest right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace testsupport {

inline constexpr std::string_view archiveMagic = "!<arch>\n";
inline constexpr size_t memberHeaderSize = 60;
// Names of up to this many characters stand in the header, longer ones in the name table.
inline constexpr size_t longestShortName = 15;

// One member to build. What is not set gets its correct text. Raw texts go into the header as they
// are, neither padded nor cut: a text of another width than its field shifts all that follows.
struct BuiltMember {
    std::string name = {};
    std::string contents = {};
    uint64_t date = 0; // seconds since 1970
    uint64_t uid = 0;
    uint64_t gid = 0;
    uint64_t mode = 0100644; // written in octal
    // Raw header fields, with the widths of the format.
    std::optional<std::string> rawName = std::nullopt;  // 16
    std::optional<std::string> rawDate = std::nullopt;  // 12
    std::optional<std::string> rawUid = std::nullopt;   // 6
    std::optional<std::string> rawGid = std::nullopt;   // 6
    std::optional<std::string> rawMode = std::nullopt;  // 8
    std::optional<std::string> rawSize = std::nullopt;  // 10
    std::optional<std::string> rawMagic = std::nullopt; // 2
    // What follows the contents; by default one line feed if their size is odd, else nothing.
    std::optional<std::string> rawPadding = std::nullopt;
};

// A symbol of the table to build: its name and the number of its member, counted over the members
// given to add(), from 0.
struct BuiltSymbol {
    std::string name = {};
    size_t member = 0;
};

class ArchiveBuilder {
public:
    // Appends a plain member. A member with a name of 16 or more characters makes a name table.
    ArchiveBuilder& add(BuiltMember member);
    ArchiveBuilder& add(std::string name, std::string contents);

    // Appends an entry to the symbol table, which thereby exists.
    ArchiveBuilder& symbol(std::string name, size_t member);
    // Makes a symbol table even if no symbol is added: 4 bytes of zero.
    ArchiveBuilder& withSymbolTable();
    // Takes these bytes as the contents of the symbol table, whatever symbols were added.
    ArchiveBuilder& rawSymbolTable(std::string contents);
    // Takes these bytes as the contents of the name table. Members with long names still refer to
    // the places that their names have in the table that would have been built.
    ArchiveBuilder& rawNameTable(std::string contents);
    // Leaves out the name table, though members refer to it.
    ArchiveBuilder& withoutNameTable();
    // Replaces the eight bytes at the start.
    ArchiveBuilder& magic(std::string bytes);

    // The two table members' own headers, to set raw fields of. Their `contents` are not used.
    BuiltMember& symbolTableHeader() { return m_symbolTableHeader; }
    BuiltMember& nameTableHeader() { return m_nameTableHeader; }

    // The archive. Throws std::length_error if a value is too wide for its field: a test that
    // wants that says so with a raw field.
    std::string bytes() const;

    // Where the header of the member that was added as number `member` starts in bytes().
    uint64_t offsetOf(size_t member) const;
    // What the tables hold, as they stand in bytes(), without their padding.
    std::string symbolTableContents() const;
    std::string nameTableContents() const;

private:
    bool hasSymbolTable() const;
    bool hasNameTable() const;
    std::vector<BuiltMember> laidOutMembers() const;

    std::string m_magic{archiveMagic};
    std::vector<BuiltMember> m_members;
    std::vector<BuiltSymbol> m_symbols;
    bool m_withSymbolTable = false;
    bool m_withoutNameTable = false;
    std::optional<std::string> m_rawSymbolTable;
    std::optional<std::string> m_rawNameTable;
    BuiltMember m_symbolTableHeader;
    BuiltMember m_nameTableHeader;
};

// `text`, filled with blanks to `width` characters; unchanged if it is as long already.
std::string padded(std::string_view text, size_t width);
// The four bytes of `value`, most significant first.
std::string bigEndian32(uint32_t value);
// The 60 bytes of a correct header, name field included as given ("a.o/", "/0", "//").
std::string headerText(std::string_view nameField, uint64_t date, uint64_t uid, uint64_t gid,
                       uint64_t mode, uint64_t size);

} // namespace testsupport
