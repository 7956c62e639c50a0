// Which members the words of the command line mean.
#pragma once

#include <vector>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_member.h"
#include "tabledrivenparser/interface/str_list.h"

namespace tomex {

// True if a member's name matches a pattern with "*" and "?", folders and case put aside.
bool matchName(const char* pattern, const char* memberName);

// The members that a word means, in list order, auxiliary ones included. A word without wildcards
// costs a look-up, not a walk.
void selectMembers(arlib::Archive& archive, const char* word,
                   std::vector<arlib::ArchiveMember*>& selected);

// True if the word is looked up, so that the order of the list plays no part in what it means but
// for members of one name.
bool isLookedUp(const char* word);

// The first of them that is not auxiliary, or null.
arlib::ArchiveMember* selectFirstMember(arlib::Archive& archive, const char* word);

// What is done to each selected member.
using MemberOperation = void (*)(arlib::ArchiveMember& member);

// Runs the operation on all members that the words mean, word by word in list order, or with no
// words on all members; never on auxiliary ones. A word that means no member is an error.
void forEachNamedMember(arlib::Archive& archive, const tabledrivenparser::StrList& words,
                        MemberOperation operation);

// Prints a member's line of the table of contents.
void listMember(arlib::ArchiveMember& member);

} // namespace tomex
