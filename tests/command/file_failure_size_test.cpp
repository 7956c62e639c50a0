// Sizes that the format cannot hold: a member of 4 GiB, a header that would start at 4 GiB or
// beyond. The files are sparse; nothing of them is read or written.
#include "tests/command/command_case.h"

#include <algorithm>

namespace commandtest {
namespace {

constexpr uint64_t gibibyte = uint64_t{1} << 30;

class FileFailureSize : public CommandCase {
protected:
    // The run is refused for the size, in one error line, and leaves all as it was.
    void expectTooLarge(const Words& words) const {
        const Words before = folder.entries();
        const CommandResult result = tomex(words);
        EXPECT_TRUE(result.exitedWith(1)) << result;
        const std::string line = "Error: L6830E: Writing file 'lib.a' : File too large\n";
        const size_t error = result.error.find("Error: ");
        EXPECT_NE(error, std::string::npos) << result;
        EXPECT_EQ(result.error.substr(std::min(error, result.error.size())), line);
        EXPECT_EQ(folder.entries(), before);
    }
};

TEST_F(FileFailureSize, MemberOf4GibibytesIsTooLarge) {
    folder.writeSparse("huge", 4 * gibibyte);
    expectTooLarge({"-r", "lib.a", "huge"});
    folder.writeSparse("huger", 40 * gibibyte);
    expectTooLarge({"-rc", "lib.a", "huger"});
}

TEST_F(FileFailureSize, MemberThatWouldStartBeyond4GibibytesIsTooFar) {
    folder.writeSparse("one", 3 * gibibyte);
    folder.writeSparse("two", 3 * gibibyte);
    file("small", "s");
    expectTooLarge({"-r", "lib.a", "one", "two", "small"});
}

TEST_F(FileFailureSize, LargestMemberLeavesNoRoomForAnother) {
    folder.writeSparse("largest", 4 * gibibyte - 1);
    file("small", "s");
    expectTooLarge({"-r", "lib.a", "largest", "small"});
}

TEST_F(FileFailureSize, OldArchiveStaysWhenAMemberIsTooLarge) {
    library("lib.a", {"a.o", "huge"});
    const std::string before = folder.read("lib.a");
    folder.writeSparse("huge", 4 * gibibyte);
    expectTooLarge({"-r", "lib.a", "huge"}); // in the place of a small one
    EXPECT_EQ(folder.read("lib.a"), before);
}

TEST_F(FileFailureSize, LargeArchiveIsAPlainFileIfItIsDamaged) {
    folder.writeSparse("other.a", 5 * gibibyte, "!<arch>\n");
    expectTooLarge({"-r", "lib.a", "other.a"});
}

} // namespace
} // namespace commandtest
