// The reports that look into members that are ELF files: how large their sections are, and which
// sections hold entry points.
#pragma once

#include <cstdint>

#include "arlib/interface/archive.h"
#include "arlib/interface/member_sizes.h"
#include "tomex/command_state.h"

namespace tomex {

// What is to be reported.
enum ReportFlag : uint32_t {
    ReportFlag_Entries = 1,
    ReportFlag_Sizes = 2,
};

// Prints a line of sizes for each member that is ELF and can be read, with their sums, or the
// entry points of all of them, or one after the other, as a set of ReportFlag bits says. Other
// members are passed over. `known` has watched the archive being read; it is finished here.
void reportSizes(arlib::Archive& archive, const ArchiveReadStatus& status,
                 arlib::MemberSizes& known, uint32_t flags);

} // namespace tomex
