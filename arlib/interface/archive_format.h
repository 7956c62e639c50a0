// The `ar` file format, as far as reader, writer and table builders share it.
//
// A file is the magic followed by members: a 60-byte header of ASCII fields, the contents, and one
// line feed where the contents' size is odd. It is the System V layout
// (https://en.wikipedia.org/wiki/Ar_(file_format)): the first member "/" is the archive symbol
// table, "//" holds the names that do not fit into a header, ended by "/\n" and referred to as
// "/" and their decimal offset. Numbers in the symbol table are big-endian on every host.
#pragma once

#include <cstddef>
#include <cstdint>

namespace arlib {

inline constexpr char archiveMagic[] = "!<arch>\n";
inline constexpr uint32_t archiveMagicSize = 8;

inline constexpr char memberMagic[] = "`\n";
inline constexpr char memberPadding = '\n';

// A member header as it stands in the file: characters only, blank-padded, no terminators.
struct MemberHeader {
    char name[16];
    char date[12]; // decimal, seconds since 1970
    char uid[6];   // decimal
    char gid[6];   // decimal
    char mode[8];  // octal
    char size[10]; // decimal, without the padding byte
    char magic[2];
};
static_assert(sizeof(MemberHeader) == 60 && alignof(MemberHeader) == 1);

inline constexpr uint32_t memberHeaderSize = sizeof(MemberHeader);

// Names of this many characters and more stand in the file name table.
inline constexpr size_t longNameLength = sizeof(MemberHeader::name);

// What ends a name in the file name table.
inline constexpr char longNameEnd[] = "/\n";
inline constexpr uint32_t longNameEndSize = 2;

// The symbol table's entries: a count, then an offset for each name.
inline constexpr uint32_t symbolTableWord = 4;

// Sizes and offsets of the format fit 32 bits: a header must begin below this, and contents must
// be smaller.
inline constexpr uint64_t archiveSizeLimit = uint64_t{1} << 32;

// The offset behind a member of this size whose header stands at offset.
constexpr uint64_t nextMemberOffset(uint64_t offset, uint64_t size) {
    return offset + memberHeaderSize + size + (size & 1);
}

} // namespace arlib
