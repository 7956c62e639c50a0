#include <gtest/gtest.h>

#include "tests/support/archive_builder.h"
#include "tests/support/elf_builder.h"
#include "tests/support/retarget.h"

namespace testsupport {
namespace {

TEST(RetargetTest, MachineFollowsTheClass) {
    for (const ElfFormat format : allElfFormats) {
        std::string file = ElfBuilder(format).header(HeaderField::Machine, 62).bytes();
        EXPECT_EQ(retargetElf(file), std::optional<uint16_t>(62)) << describe(format);
        EXPECT_EQ(file, ElfBuilder(format).bytes()) << describe(format);
    }
}

TEST(RetargetTest, OtherBytesStay) {
    std::string text = "not an object, but long enough to be one";
    EXPECT_EQ(retargetElf(text), std::nullopt);
    EXPECT_EQ(text, "not an object, but long enough to be one");
    EXPECT_FALSE(isElf("\x7F"
                       "ELF"));
}

TEST(RetargetTest, ArchiveMembersChangeInPlace) {
    const std::string object = ElfBuilder().header(HeaderField::Machine, 62).bytes();
    const std::string own = ElfBuilder().bytes();
    const auto archiveOf = [](const std::string& contents) {
        return ArchiveBuilder()
            .add("odd.txt", "odd")
            .add("first.o", contents)
            .add("a_name_longer_than_its_field.o", contents)
            .bytes();
    };
    std::string archive = archiveOf(object);
    EXPECT_EQ(retargetArchive(archive), 2U);
    EXPECT_EQ(archive, archiveOf(own));
    setArchiveMachine(archive, 62);
    EXPECT_EQ(archive, archiveOf(object));
}

TEST(RetargetTest, DamagedArchiveIsLeftAtItsFirstBadHeader) {
    std::string archive = ArchiveBuilder().add("a.o", ElfBuilder().bytes()).bytes();
    archive.resize(archive.size() - 1);
    EXPECT_EQ(retargetArchive(archive), 0U);
    std::string empty;
    EXPECT_EQ(retargetArchive(empty), 0U);
}

TEST(RetargetTest, CompilesForEachGenericTarget) {
    const ScratchFolder folder;
    for (const GenericTarget& target : genericTargets()) {
        const std::string object =
            compileRetargeted(folder, target, "int f(void) { return 1; }", {"-g"});
        ASSERT_TRUE(isElf(object)) << target.name;
        EXPECT_EQ(formatOf(object).is64, target.format.is64) << target.name;
        EXPECT_EQ(formatOf(object).littleEndian, target.format.littleEndian) << target.name;
        EXPECT_EQ(headerField(object, HeaderField::Machine), target.format.is64 ? 183U : 40U);
        EXPECT_EQ(headerField(object, HeaderField::Type), elf::ET_REL);
    }
    EXPECT_TRUE(folder.entries().empty());
}

TEST(RetargetTest, CompilerFailureIsTold) {
    const ScratchFolder folder;
    EXPECT_THROW(compileRetargeted(folder, genericTargets()[0], "no C at all"), std::runtime_error);
}

} // namespace
} // namespace testsupport
