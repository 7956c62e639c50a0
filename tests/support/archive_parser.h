// A second reader of archives, for checking what the program wrote.
//
// It shares nothing with the program's reader and forgives nothing: a test that gets an empty
// `error` knows that every byte of the file is where it belongs. What other tools write differs in
// a few allowed points (blank fields in the tables' headers, a filled-up end of a table), which
// ArchiveRules::AnyTool lets pass.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace testsupport {

enum class ArchiveRules {
    OwnOutput, // as the program writes it, exactly
    AnyTool,   // as other archivers may write it, too
};

struct ParsedMember {
    std::string name; // "/" and "//" for the two tables
    uint64_t date = 0;
    uint64_t uid = 0;
    uint64_t gid = 0;
    uint64_t mode = 0;
    uint64_t size = 0;
    uint64_t headerOffset = 0; // of the header, from the start of the file
    std::string contents;
    std::string header; // its 60 bytes
    bool auxiliary = false;
};

struct ParsedSymbol {
    std::string name;
    uint64_t headerOffset = 0;
    std::string member; // the name of the member that starts there
};

struct ParsedArchive {
    std::string error;                 // empty if all is well, else the first flaw
    std::vector<ParsedMember> members; // all, the tables included, in file order
    std::vector<ParsedSymbol> symbols; // in table order

    bool ok() const { return error.empty(); }
    // The members that are no tables.
    std::vector<ParsedMember> plainMembers() const;
    std::vector<std::string> names() const;
    // The first plain member of that name, or null; lives as long as the archive.
    const ParsedMember* find(std::string_view name) const;
    // The table of that name ("/" or "//"), or null.
    const ParsedMember* table(std::string_view name) const;
    // Header and size as read, the name decoded: "a.o 12 1 2 100644 5".
    std::vector<std::string> summary() const;
};

ParsedArchive parseArchive(std::string_view bytes, ArchiveRules rules = ArchiveRules::OwnOutput);

} // namespace testsupport
