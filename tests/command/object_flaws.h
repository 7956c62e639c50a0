// Objects with one defect each, and the sentence that tells it.
//
// Every row takes an object that holds all kinds of sections and spoils one thing. The member then
// is an object still, by its header, but adds no names to the symbol table, and the user is told
// why in the one warning about it.
#pragma once

#include <string>
#include <vector>

#include "tests/support/rich_elf.h"

namespace commandtest {

struct ObjectFlaw {
    const char* name;
    // Spoils the object; gives the bytes and sets the sentence.
    std::string (*spoil)(testsupport::RichElf rich, std::string& sentence);
    uint16_t fileType = testsupport::elf::ET_REL;
};

// Flaws of the file header, of names and of links between sections.
const std::vector<ObjectFlaw>& headerFlaws();
const std::vector<ObjectFlaw>& linkFlaws();
// Flaws of what sections hold.
const std::vector<ObjectFlaw>& contentsFlaws();

} // namespace commandtest
