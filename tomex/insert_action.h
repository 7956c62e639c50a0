// The insert action: -r, -q and --create.
#pragma once

#include <cstdint>

#include "arlib/interface/archive.h"
#include "tomex/command_state.h"

namespace tomex {

// True if the update mode lets a file of fileDate replace a member of memberDate.
bool replacePermitted(uint32_t updateMode, int64_t memberDate, int64_t fileDate);

// Inserts or replaces the files of the command line; a file that is itself an archive has its
// members merged. A position is advanced behind each new member, so that they land in order.
void insertFiles(arlib::Archive& archive, ArchiveReadStatus& status, int64_t& position);

} // namespace tomex
