// The actions that take members out of the archive: extract and print. Both serve as operations
// of forEachNamedMember.
#pragma once

#include "arlib/interface/archive_member.h"

namespace tomex {

// Writes the member's contents to a file of its name in the current folder.
void extractMember(arlib::ArchiveMember& member);

// Writes the member's contents to the standard output.
void printMember(arlib::ArchiveMember& member);

} // namespace tomex
