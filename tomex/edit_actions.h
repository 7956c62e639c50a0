// The actions that delete and move members, and the position that -a and -b mean.
//
// Actions change the Archive in memory only; the run decides afterwards whether it is written. An
// error in one word does not stop the others.
#pragma once

#include <cstdint>

#include "arlib/interface/archive.h"
#include "tomex/command_state.h"

namespace tomex {

// Where -a and -b put members, as an index into the member list.
inline constexpr int64_t noPosition = -1;
inline constexpr int64_t positionNotFound = -2;

// The index that -a, -b or -i means, or one of the two values above.
int64_t resolvePosition(const arlib::Archive& archive);

// Moves the first match of each word to the position, or to the end.
void moveMembers(arlib::Archive& archive, const ArchiveReadStatus& status, int64_t position);

// Deletes all matches of each word.
void deleteMembers(arlib::Archive& archive, const ArchiveReadStatus& status);

// Says that there is no archive to work on, and why.
void reportArchiveNotFound(const arlib::Archive& archive, const ArchiveReadStatus& status);

} // namespace tomex
