// Every host call of a run is made to fail in turn. Whatever fails: the archive's name holds the
// old archive or the whole new one, the status tells which, an error is said exactly if the status
// says so, and nothing else is left behind.
#include "tests/command/fault_case.h"
#include "tests/support/elf_builder.h"
#include "tests/support/rich_elf.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace commandtest {
namespace {

// What the program says goes through these. When they fail there is nobody to be told.
bool isOutput(const LoggedCall& call) {
    return call.path == "stdout" || call.path == "stderr" || call.path.starts_with("pipe:");
}

bool reportsError(const CommandResult& result) {
    return result.error.find("Error: ") != std::string::npos ||
           result.error.find("Fatal error: ") != std::string::npos;
}

// Whether an archive other than the one of the undisturbed run is right, after such a failure.
using IsAlsoRight = std::function<bool(const LoggedCall&, const ParsedArchive&)>;

class FileFailureSweep : public FaultCase {
protected:
    void SetUp() override { setScene(); }

    // The file's bytes, or nothing if there is none.
    std::optional<std::string> bytesOf(const std::string& name) const {
        return folder.exists(name) ? std::optional(folder.read(name)) : std::nullopt;
    }

    // One run for each call and each error number.
    void sweep(const Words& words, const std::string& target, const IsAlsoRight& isAlsoRight) {
        m_target = target;
        m_before = bytesOf(target);
        ASSERT_TRUE(tomex(words).exitedWith(0));
        m_after = bytesOf(target);
        setScene();
        for (const LoggedCall& call : callsOf(words)) {
            for (const char* error : {"EIO", "ENOSPC", "EACCES", "ENOMEM", "EINTR"}) {
                SCOPED_TRACE(call.call + " of " + call.path + " fails with " + error);
                setScene();
                const CommandResult result = with({atCall(call) + ":errno=" + error}, words);
                ASSERT_TRUE(result.exitedWith(0) || result.exitedWith(1)) << result;
                checkTarget(call, result, isAlsoRight);
                checkRest(call, result);
            }
        }
    }
    static IsAlsoRight nothingElse() {
        return [](const LoggedCall&, const ParsedArchive&) { return false; };
    }

private:
    void checkTarget(const LoggedCall& call, const CommandResult& result,
                     const IsAlsoRight& isAlsoRight) const {
        const std::optional<std::string> present = bytesOf(m_target);
        if (isOutput(call)) {
            EXPECT_TRUE(present == m_before || present == m_after) << result;
            return;
        }
        EXPECT_EQ(result.status == 1, reportsError(result)) << result;
        if (result.status == 1) {
            EXPECT_TRUE(present == m_before) << result;
        } else {
            EXPECT_TRUE(present == m_after || isAlsoRight(call, archive(m_target))) << result;
        }
    }
    // Only a temporary file that could not be closed may lie beside the scene: it may be the only
    // whole copy.
    void checkRest(const LoggedCall& call, const CommandResult& result) const {
        const std::string temporary = m_target + ".0";
        Words expected = {"a.o", "c.o", "lib.a"};
        if (m_target != "lib.a" && folder.exists(m_target)) {
            expected.push_back(m_target);
        }
        if (isCall(call, "close", temporary) && result.status == 1) {
            expected.push_back(temporary);
            EXPECT_TRUE(bytesOf(temporary) == m_after);
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(folder.entries(), expected) << result;
    }

    std::string m_target;
    std::optional<std::string> m_before;
    std::optional<std::string> m_after;
};

TEST_F(FileFailureSweep, RebuildOfAnArchive) {
    // A file that the host cannot look at counts as absent, so a new archive takes its place.
    sweep(rebuild(), "lib.a", [](const LoggedCall& call, const ParsedArchive& parsed) {
        return isCall(call, "stat", "lib.a") && parsed.names() == Words{"a.o", "c.o"};
    });
}

TEST_F(FileFailureSweep, NewArchive) {
    sweep({"-r", "new.a", "a.o", "c.o"}, "new.a", nothingElse());
}

TEST_F(FileFailureSweep, MergedArchives) {
    // An archive that cannot be read as one is stored like any other file.
    sweep({"-r", "new.a", "lib.a", "c.o"}, "new.a",
          [](const LoggedCall& call, const ParsedArchive& parsed) {
              return call.path == "lib.a" && parsed.names() == Words{"lib.a", "c.o"} &&
                     parsed.find("lib.a")->contents == oldBytes();
          });
}

TEST_F(FileFailureSweep, Delete) {
    sweep({"-d", "lib.a", "a.o"}, "lib.a", nothingElse());
}

TEST_F(FileFailureSweep, ExtractNeverTouchesTheArchiveAndLeavesNoHalfFile) {
    const Words words = {"-x", "lib.a"};
    const Words members = {"a.o", "b-is-a-long-name.o", "large"};
    for (const LoggedCall& call : callsOf(words)) {
        for (const char* error : {"EIO", "ENOSPC", "EACCES"}) {
            SCOPED_TRACE(call.call + " of " + call.path + " fails with " + error);
            setScene();
            const CommandResult result = with({atCall(call) + ":errno=" + error}, words);
            ASSERT_TRUE(result.exitedWith(0) || result.exitedWith(1)) << result;
            if (!isOutput(call)) {
                EXPECT_EQ(result.status == 1, reportsError(result)) << result;
            }
            EXPECT_TRUE(folder.read("lib.a") == oldBytes());
            for (const std::string& member : members) {
                const std::optional<std::string> bytes = bytesOf(member);
                const std::string whole = contents(member);
                const bool isUntouched = member == "a.o" && bytes == "new a";
                EXPECT_TRUE(!bytes || bytes->empty() || *bytes == whole || isUntouched)
                    << member << result;
                EXPECT_TRUE(result.status == 1 || bytes == whole) << member << result;
            }
        }
    }
}

TEST_F(FileFailureSweep, ReadingRunsTouchNothing) {
    for (const Words& words : std::vector<Words>{{"-tv", "lib.a"}, {"-p", "lib.a"}}) {
        const std::string whole = tomex(words).output;
        for (const LoggedCall& call : callsOf(words)) {
            SCOPED_TRACE(call.call + " of " + call.path);
            setScene();
            const CommandResult result = with({atCall(call) + ":errno=EIO"}, words);
            ASSERT_TRUE(result.exitedWith(0) || result.exitedWith(1)) << result;
            if (!isOutput(call)) {
                EXPECT_EQ(result.status == 1, reportsError(result)) << result;
                EXPECT_TRUE(result.status == 1 || result.output == whole) << result;
            }
            expectOldScene();
        }
    }
}

// Of members that are measured while the archive is read, and of those that are read for it.
TEST_F(FileFailureSweep, SizesAreThoseOfAllMembersOrAnErrorIsTold) {
    using testsupport::elf::ET_DYN;
    const testsupport::ElfFormat format = testsupport::allElfFormats[0];
    testsupport::ElfBuilder image(format, ET_DYN);
    const auto text =
        static_cast<uint32_t>(image.add({.name = ".text", .contents = large('c'), .mapped = true}));
    image.addSegment({.firstSection = text, .lastSection = text});
    ArchiveBuilder builder;
    builder.add({.name = "object.o", .contents = testsupport::richElf(format).bytes()})
        .add({.name = "small", .contents = testsupport::richElf(format, ET_DYN).bytes()})
        .add({.name = "large", .contents = image.bytes()});
    const Words words = {"--sizes", "sizes.a"};
    folder.write("sizes.a", builder.bytes());
    const std::string whole = tomex(words).output;
    for (const LoggedCall& call : callsOf(words)) {
        SCOPED_TRACE(call.call + " of " + call.path);
        folder.write("sizes.a", builder.bytes());
        const CommandResult result = with({atCall(call) + ":errno=EIO"}, words);
        ASSERT_TRUE(result.exitedWith(0) || result.exitedWith(1)) << result;
        if (!isOutput(call)) {
            EXPECT_EQ(result.status == 1, reportsError(result)) << result;
            EXPECT_TRUE(result.status == 1 || result.output == whole) << result;
        }
    }
}

} // namespace
} // namespace commandtest
