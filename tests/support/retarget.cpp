#include "tests/support/retarget.h"

#include <charconv>
#include <stdexcept>

#include "tests/support/archive_builder.h"
#include "tests/support/elf_builder.h"
#include "tests/support/witness.h"

namespace testsupport {

namespace {

constexpr size_t sizeField = 48;
constexpr size_t sizeWidth = 10;

uint64_t memberSize(std::string_view header) {
    uint64_t size = 0;
    const std::string_view text = header.substr(sizeField, sizeWidth);
    std::from_chars(text.data(), text.data() + text.size(), size);
    return size;
}

// In place, so that archives of many megabytes are not copied around member by member.
bool setMachine(std::string& bytes, uint64_t offset, uint64_t size,
                std::optional<uint16_t> machine) {
    const std::string_view member = std::string_view(bytes).substr(offset, size);
    if (!isElf(member)) {
        return false;
    }
    const ElfFormat format = formatOf(member);
    const FieldPlace place = placeOf(HeaderField::Machine, format);
    const uint16_t own = format.is64 ? elf::EM_QEL64 : elf::EM_QEL;
    writeNumber(bytes, offset + place.offset, place.width, format.littleEndian,
                machine.value_or(own));
    return true;
}

} // namespace

bool isElf(std::string_view bytes) {
    return bytes.size() >= 20 &&
           bytes.starts_with("\x7F"
                             "ELF") &&
           (bytes[4] == 1 || bytes[4] == 2) && (bytes[5] == 1 || bytes[5] == 2);
}

std::optional<uint16_t> retargetElf(std::string& bytes) {
    if (!isElf(bytes)) {
        return std::nullopt;
    }
    const auto before = static_cast<uint16_t>(headerField(bytes, HeaderField::Machine));
    setMachine(bytes, 0, bytes.size(), std::nullopt);
    return before;
}

void forEachMember(std::string& archive, const MemberWork& work) {
    uint64_t offset = archiveMagic.size();
    while (archive.starts_with(archiveMagic) && offset + memberHeaderSize <= archive.size()) {
        const uint64_t size = memberSize(std::string_view(archive).substr(offset));
        const uint64_t contents = offset + memberHeaderSize;
        if (size > archive.size() - contents) {
            return;
        }
        work(archive, contents, size);
        offset = contents + size + size % 2;
    }
}

size_t retargetArchive(std::string& archive) {
    size_t count = 0;
    forEachMember(archive, [&](std::string& bytes, uint64_t offset, uint64_t size) {
        count += setMachine(bytes, offset, size, std::nullopt) ? 1U : 0U;
    });
    return count;
}

void setArchiveMachine(std::string& archive, uint16_t machine) {
    forEachMember(archive, [&](std::string& bytes, uint64_t offset, uint64_t size) {
        setMachine(bytes, offset, size, machine);
    });
}

const std::vector<GenericTarget>& genericTargets() {
    static const std::vector<GenericTarget> targets = {
        {"x86_64-unknown-none-elf", {true, true}},
        {"s390x-unknown-none-elf", {true, false}},
        {"i386-unknown-none-elf", {false, true}},
        {"mips-unknown-none-elf", {false, false}},
    };
    return targets;
}

std::string compileRetargeted(const ScratchFolder& folder, const GenericTarget& target,
                              std::string_view source, const std::vector<std::string>& flags) {
    static const Witness compiler("clang");
    if (!compiler.present()) {
        throw std::runtime_error(compiler.absence());
    }
    folder.write("retargeted.c", source);
    // Options go first: one that names the language counts for the files behind it.
    std::vector<std::string> arguments = flags;
    arguments.insert(arguments.end(),
                     {"--target=" + target.name, "-c", "retargeted.c", "-o", "retargeted.o"});
    const CommandResult result = compiler.run(folder, arguments);
    if (!result.exitedWith(0)) {
        throw std::runtime_error(result.describe());
    }
    std::string object = folder.read("retargeted.o");
    folder.remove("retargeted.c");
    folder.remove("retargeted.o");
    if (!retargetElf(object)) {
        throw std::runtime_error("the compiler's output is no ELF object");
    }
    return object;
}

} // namespace testsupport
