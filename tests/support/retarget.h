// Real objects made fit for this tool: the machine number in their header is overwritten.
//
// No compiler of this host makes objects for the tool's processors, but everything in an object
// besides the meaning of its code and relocations is the same for all. So objects of the host's
// libraries and of its compilers serve as input once their `e_machine` says 183 (64-bit) or 40
// (32-bit); set back in the finished archive, the host's linkers accept them again.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/elf_fields.h"
#include "tests/support/scratch_folder.h"

namespace testsupport {

// Whether the bytes start with a header of the format, in a class and byte order that it knows.
bool isElf(std::string_view bytes);

// Overwrites the machine by this tool's for the file's class; returns what stood there. Nothing
// happens to other bytes than ELF.
std::optional<uint16_t> retargetElf(std::string& bytes);

// What is done to one member's bytes, which may change but not in number: they are handed over with
// their place in the archive.
using MemberWork = std::function<void(std::string& archive, uint64_t offset, uint64_t size)>;

// Calls `work` for each member of the archive, the two tables included. Stops at the first header
// that is none. Members of thin archives lie elsewhere: such an archive has no work done.
void forEachMember(std::string& archive, const MemberWork& work);

// The same for all members of an archive. Returns how many were objects.
size_t retargetArchive(std::string& archive);
// Puts `machine` into each member that is ELF.
void setArchiveMachine(std::string& archive, uint16_t machine);

// The four targets that the host's clang makes objects for without any headers of theirs: both
// classes in both byte orders.
struct GenericTarget {
    std::string name; // as the compiler's --target has it
    ElfFormat format;
};
const std::vector<GenericTarget>& genericTargets();

// Compiles a C source for a target and retargets the object. Throws std::runtime_error with the
// compiler's words if it fails. `flags` are further options.
std::string compileRetargeted(const ScratchFolder& folder, const GenericTarget& target,
                              std::string_view source, const std::vector<std::string>& flags = {});

} // namespace testsupport
