// A path split into its parts: root, directory, base name, extension.
//
// File names reach the tool in Windows, POSIX and mixed spellings, on the command line and in
// files. A PathName is such a name taken apart by the rules of one style; the parts can be changed
// and rendered again, in the same style or another. All texts that these functions return are on
// the heap; the caller owns them.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/interface/owned_text.h"

namespace platform {

enum PathStyle : uint32_t {
    PathStyle_Unknown = 0, // parsePath decides; as a target of rendering: the text as stored
    PathStyle_Windows = 2, // separator "\", "/" is also accepted; drive or UNC root
    PathStyle_Posix = 3,   // separator "/" only; no root
    PathStyle_Mixed = 5,   // roots as in the Windows style; separator "/"
};

// The style in which operands, archive names and names of via files are read on this host.
#ifdef _WIN32
inline constexpr PathStyle hostPathStyle = PathStyle_Windows;
#else
inline constexpr PathStyle hostPathStyle = PathStyle_Posix;
#endif

struct PathName {
    OwnedText root;      // a drive ("C:") or a UNC prefix ("\\server\share\")
    OwnedText directory; // no separator at its end, unless it is the top directory
    OwnedText base;      // the leaf up to its first dot; null for ".profile"
    OwnedText extension; // what follows that first dot; null if there is none
    PathStyle style = PathStyle_Unknown;
};

using OwnedPath = std::unique_ptr<PathName>;

// A new record of the given style, filled from text. Null or empty text gives no parts.
OwnedPath newPath(const char* text, PathStyle style);

// Fills the record from text. A record of unknown style gets the style that the text shows.
void parsePath(PathName& path, const char* text);

// The part rendered in a style, or null if there is none. Rendering replaces each separator with
// that of the style. A root exists only for records and targets that know roots.
OwnedText rootOf(const PathName& path, PathStyle style);
OwnedText directoryOf(const PathName& path, PathStyle style);

// Root and directory joined; an empty text if there is neither.
OwnedText rootAndDirectory(const PathName& path, PathStyle style);

// Base, dot and extension joined; an empty text if there is no leaf.
OwnedText leafName(const PathName& path);

// Replaces the leaf: text is split at its first dot. An empty text takes the leaf away.
void setLeafName(PathName& path, const char* text);

// The whole name. A drive without a directory takes no separator ("C:" and "a.o" give "C:a.o").
OwnedText fullPath(const PathName& path, PathStyle style);

// Completes a relative record from the current directory and resolves "." and "..". False if the
// current directory cannot be had; the record is then unchanged.
bool makeAbsolute(PathName& path);

// The part of a file name behind its last "/" or "\". Members are named by it. Points into
// fileName.
const char* fileNameLeaf(const char* fileName);

} // namespace platform
