// What one run of the command has been asked to do.
//
// Filled once, from the parsed options; the actions see this and nothing of the parser.
#pragma once

#include <cstdint>

#include "tabledrivenparser/interface/str_list.h"

namespace attributes {
class LibraryAttributeMap;
}

namespace tomex {

enum Action : uint32_t {
    Action_None = 0, // only -s, or -s with -n
    Action_Insert = 1,
    Action_Delete = 2,
    Action_Entries = 3,
    Action_Extract = 4,
    Action_Move = 5,
    Action_Print = 6,
    Action_List = 7,
    Action_Sizes = 8,
    Action_Summary = 9,
    Action_SymbolTable = 10,
};

enum PositionKind : uint32_t {
    PositionKind_None = 0,
    PositionKind_Before = 1, // -b, -i
    PositionKind_After = 2,  // -a
};

enum UpdateMode : uint32_t {
    UpdateMode_Always = 0,
    UpdateMode_NotOlder = 1, // -u
    UpdateMode_Newer = 2,    // --new_files_only
};

// How far into the archive the run reaches. Options raise it; only an insert that turns out to have
// nothing to insert lowers it again.
enum AccessLevel : int32_t {
    AccessLevel_None = 0,
    AccessLevel_TableOfContents = 1,
    AccessLevel_Contents = 2,
    AccessLevel_Modify = 3,
};

struct CommandState {
    uint32_t action = Action_None;
    uint32_t positionKind = PositionKind_None;
    const char* positionName = nullptr;  // the member pattern of -a, -b or -i
    bool noSymbolTable = false;          // -n
    bool regenerateSymbolTable = false;  // -s
    bool versionShown = false;           // --vsn, --version, -V
    bool forceCreate = false;            // --create
    tabledrivenparser::StrList fileList; // file or member words, in the default region
    bool warnOnCreate = true;            // cleared by -c and --create
    bool overwriteOnExtract = true;      // cleared by -C
    bool truncateNames = false;          // -T
    uint32_t updateMode = UpdateMode_Always;
    bool verbose = false;       // -v
    bool helpRequested = false; // -h, --help
    int32_t accessLevel = AccessLevel_None;
    bool normaliseRequested = false; // --normalise with a value other than 0
    int64_t normaliseTime = 0;       // that value

    // Whether archives are read with these settings.
    bool debugSymbols = false;          // --debug_symbols
    bool uniqueSymbols = false;         // --unique_symbols
    bool attributesFromSection = false; // --qeabi_buildattr

    // The rows of --libattrmap, in the default region; null without that option.
    const attributes::LibraryAttributeMap* libraryAttributeMap = nullptr;
};

// The state of this run. Valid from the start of run on.
CommandState& commandState();

// Starts afresh; called once by run, since the file list lives in the default region.
void resetCommandState();

// What reading the archive file came to; travels with the Archive.
struct ArchiveReadStatus {
    bool missing = false;    // there is none, or --create takes no notice of it
    int32_t errorNumber = 0; // the host's number for why
};

} // namespace tomex
