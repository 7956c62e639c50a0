// Files that cannot be read, are no files, or change between the moment when they are looked at and
// the moment when they are copied into the archive.
#include "tests/command/fault_case.h"

#include <cerrno>

#include <sys/stat.h>

namespace commandtest {
namespace {

class FileFailureInput : public FaultCase {
protected:
    void SetUp() override { setScene(); }

    // What is neither read nor written, though it seems to be a file of no bytes.
    void expectRefused(const std::string& word) const {
        Command command = testsupport::tomex(folder, {"-r", "new.a", word});
        command.watchdog = std::chrono::seconds(20);
        const CommandResult result = testsupport::run(command);
        EXPECT_TRUE(result.exitedWith(1)) << result;
        EXPECT_NE(result.error.find("Error: L6835E: Reading file 'new.a' : "), std::string::npos)
            << result;
        EXPECT_FALSE(folder.exists("new.a"));
        EXPECT_FALSE(folder.exists("new.a.0"));
    }
};

// A small file is read once. Whatever becomes of it then, the archive gets the bytes whose symbols
// its table lists.
TEST_F(FileFailureInput, SmallFileIsCopiedAsItWasLookedAt) {
    for (const char* change : {"delete=a.o", "truncate=a.o,4", "truncate=a.o,0",
                               "truncate=a.o,5000", "replace=a.o,a.new"}) {
        setScene();
        file("a.new", "n e w", 2000);
        EXPECT_TRUE(
            ended(with({std::string("@open:path=lib.a.0:nth=1:") + change}), 0, "", rebuilt("")));
        EXPECT_EQ(contents("a.o"), "new a") << change;
        EXPECT_EQ(archive().find("a.o")->date, 1000U) << change;
    }
}

TEST_F(FileFailureInput, FileThatVanishesBeforeItIsCopied) {
    EXPECT_TRUE(ended(with({"@open:path=lib.a.0:nth=1:delete=c.o"}), 1, "",
                      rebuilt(reading(ENOENT) + writing(ENOENT))));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
}

TEST_F(FileFailureInput, FileThatShrinksBeforeItIsCopied) {
    for (const char* change : {"truncate=c.o,100000", "truncate=c.o,5", "truncate=c.o,0"}) {
        setScene();
        EXPECT_TRUE(ended(with({std::string("@open:path=lib.a.0:nth=1:") + change}), 1, "",
                          rebuilt(reading(EIO) + writing(EIO))));
        expectOldScene();
    }
}

TEST_F(FileFailureInput, FileThatGrowsIsCopiedAsFarAsItWasMeasured) {
    EXPECT_TRUE(ended(with({"@open:path=lib.a.0:nth=1:truncate=c.o,200000"}), 0, "", rebuilt("")));
    EXPECT_TRUE(contents("c.o") == large('c'));
}

TEST_F(FileFailureInput, FileRewrittenBeforeItIsCopiedGivesItsNewBytes) {
    file("c.new", large('n'), 2000);
    EXPECT_TRUE(ended(with({"@open:path=lib.a.0:nth=1:replace=c.o,c.new"}), 0, "", rebuilt("")));
    EXPECT_TRUE(contents("c.o") == large('n'));
    EXPECT_EQ(archive().find("c.o")->date, 1000U); // as it was when the file was looked at
}

TEST_F(FileFailureInput, FileThatCannotBeOpenedAgain) {
    const Calls calls = callsOf();
    for (const int error : {EACCES, ENFILE, EIO}) {
        EXPECT_TRUE(ended(with({atCallAfter(calls, "open", "lib.a.0", "open", "c.o") +
                                ":errno=" + std::to_string(error)}),
                          1, "", rebuilt(reading(error) + writing(error))));
        expectOldScene();
    }
}

TEST_F(FileFailureInput, FileThatCannotBeReadAgain) {
    // No copying between files by the host, so that the reads can be seen.
    const std::string noRange = "copy_file_range:errno=EXDEV";
    const std::string noSending = "sendfile:errno=EINVAL";
    const Calls calls = callsOf(rebuild(), {noRange, noSending});
    const std::string failingRead =
        atCallAfter(calls, "open", "lib.a.0", "read", "c.o") + ":errno=EIO";
    EXPECT_TRUE(ended(with({noRange, noSending, failingRead}), 1, "",
                      rebuilt(reading(EIO) + writing(EIO))));
    expectOldScene();
}

TEST_F(FileFailureInput, FileThatCannotBeClosedIsNotTaken) {
    EXPECT_TRUE(ended(with({"@close:path=a.o:nth=1:errno=EIO"}), 1, "",
                      failure("L6977E: Closing", EIO) + notElf("c.o")));
    expectOldScene();
}

TEST_F(FileFailureInput, OldArchiveThatVanishesBeforeItIsCopied) {
    EXPECT_TRUE(ended(with({"@open:path=lib.a.0:nth=1:delete=lib.a"}), 1, "",
                      rebuilt(reading(ENOENT) + writing(ENOENT))));
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o"}));
}

TEST_F(FileFailureInput, OldArchiveThatShrinksBeforeItIsCopied) {
    const CommandResult result = with({"@open:path=lib.a.0:nth=1:truncate=lib.a,100"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_NE(result.error.find("Error: L6835E: Reading file 'lib.a' : "), std::string::npos);
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a"}));
    EXPECT_EQ(folder.read("lib.a"), oldBytes().substr(0, 100));
}

TEST_F(FileFailureInput, ArchiveWrittenByAnotherRunMeanwhileIsNotMixedUp) {
    const std::string rival = ArchiveBuilder().add("z", large('z') + large('y')).bytes();
    folder.write("rival", rival);
    const CommandResult result = with({"@open:path=lib.a.0:nth=1:replace=lib.a,rival"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_NE(result.error.find("Error: L6835E: Reading file 'lib.a' : "), std::string::npos);
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a"}));
    EXPECT_TRUE(folder.read("lib.a") == rival);
}

TEST_F(FileFailureInput, MergedArchiveThatShrinksBeforeItIsCopied) {
    folder.write("other.a", ArchiveBuilder().add("x", large('x')).bytes());
    const CommandResult result =
        with({"@open:path=lib.a.0:nth=1:truncate=other.a,1000"}, {"-r", "lib.a", "other.a"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_NE(result.error.find("Error: L6835E: Reading file 'lib.a' : "), std::string::npos);
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "lib.a", "other.a"}));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
}

TEST_F(FileFailureInput, FewDescriptorsServeManyFiles) {
    Words words = {"-rc", "many.a"};
    for (int i = 0; i < 60; ++i) {
        words.push_back("file" + std::to_string(i));
        folder.write(words.back(), i % 3 == 0 ? large('m') : "small");
    }
    words.emplace_back("lib.a");
    Command command = testsupport::tomex(folder, words);
    command.openFilesLimit = 12;
    EXPECT_TRUE(ended(testsupport::run(command), 0, "", notElf("file0", "many.a")));
    EXPECT_EQ(names("many.a").size(), 63U);
    EXPECT_TRUE(contents("file57", "many.a") == large('m'));
}

TEST_F(FileFailureInput, FolderFailsWhenItIsRead) {
    folder.makeFolder("dir");
    EXPECT_TRUE(ended(tomex({"-rv", "lib.a", "dir"}), 1, "a - dir\n",
                      notElf("dir") + reading(EISDIR) + writing(EISDIR)));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
    EXPECT_TRUE(tomex({"-r", "lib.a", "dir/"}).exitedWith(1));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
    EXPECT_EQ(folder.entries(), (Words{"a.o", "c.o", "dir", "lib.a"}));
}

TEST_F(FileFailureInput, FileOfAnotherUserFailsWhenItIsRead) {
    file("secret.o", "secret");
    folder.giveToUnprivilegedUser();
    folder.setMode("secret.o", 0);
    Command command = testsupport::tomex(folder, {"-rv", "lib.a", "secret.o"});
    command.unprivileged = true;
    EXPECT_TRUE(ended(testsupport::run(command), 1, "a - secret.o\n",
                      notElf("secret.o") + reading(EACCES) + writing(EACCES)));
    EXPECT_TRUE(folder.read("lib.a") == oldBytes());
}

TEST_F(FileFailureInput, PipeIsNotWaitedForAndNotStored) {
    ASSERT_EQ(::mkfifo(folder.pathOf("pipe").c_str(), 0666), 0);
    expectRefused("pipe");
}

TEST_F(FileFailureInput, DevicesAreNotStored) {
    expectRefused("/dev/null");
    expectRefused("/dev/zero");
}

TEST_F(FileFailureInput, PipeGivenAsArchiveIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(folder.pathOf("pipe.a").c_str(), 0666), 0);
    for (const char* word : {"-t", "-r"}) {
        Command command = testsupport::tomex(folder, {word, "pipe.a", "a.o"});
        command.watchdog = std::chrono::seconds(20);
        const CommandResult result = testsupport::run(command);
        EXPECT_TRUE(result.exitedWith(1)) << result;
        EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file 'pipe.a' : ")) << result;
    }
}

TEST_F(FileFailureInput, NullDeviceIsNoArchive) {
    const CommandResult result = tomex({"-t", "/dev/null"});
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_TRUE(result.error.starts_with("Error: L6835E: Reading file '/dev/null' : ")) << result;
}

} // namespace
} // namespace commandtest
