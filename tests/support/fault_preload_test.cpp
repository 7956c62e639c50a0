// Each kind of rule, with a program that tells how its host calls went.
#include <gtest/gtest.h>

#include "tests/support/command_runner.h"

namespace testsupport {
namespace {

Command probe(const ScratchFolder& folder, std::vector<std::string> actions,
              std::vector<std::string> faults) {
    Command command = tool(folder, TOMEX_HOST_CALL_PROBE, std::move(actions));
    command.faults = std::move(faults);
    return command;
}

std::string outputOf(const ScratchFolder& folder, std::vector<std::string> actions,
                     std::vector<std::string> faults) {
    const CommandResult result = run(probe(folder, std::move(actions), std::move(faults)));
    EXPECT_TRUE(result.exitedWith(0)) << result;
    return result.output;
}

TEST(FaultPreload, WithoutARuleForThemCallsGoThrough) {
    const ScratchFolder folder;
    EXPECT_EQ(outputOf(folder, {"write:x:123", "read:x", "fwrite:y:45", "fread:y", "look:y"},
                       {"write:path=another:errno=EIO"}),
              "open ok\nwrite 3\nclose ok\nopen ok\nread 123\nfstat 3\nclose ok\n"
              "fopen ok\nfwrite 2\nferror no\nfclose ok\nfopen ok\nfread 45\n"
              "stat ok\naccess ok\n");
    EXPECT_EQ(folder.read("x"), "123");
    EXPECT_EQ(folder.read("y"), "45");
}

TEST(FaultPreload, EachCallCanFail) {
    const ScratchFolder folder;
    folder.write("x", "123");
    const auto failing = [&folder](const char* call, std::vector<std::string> actions) {
        return outputOf(folder, std::move(actions), {std::string{call} + ":errno=ENOSPC:path=x"});
    };
    EXPECT_EQ(failing("open", {"read:x"}), "open ENOSPC\n");
    EXPECT_EQ(failing("read", {"read:x"}), "open ok\nread ENOSPC\nfstat 3\nclose ok\n");
    EXPECT_EQ(failing("fstat", {"read:x"}), "open ok\nread 123\nfstat ENOSPC\nclose ok\n");
    EXPECT_EQ(failing("close", {"read:x"}), "open ok\nread 123\nfstat 3\nclose ENOSPC\n");
    EXPECT_EQ(failing("stat", {"look:x"}), "stat ENOSPC\naccess ok\n");
    EXPECT_EQ(failing("access", {"look:x"}), "stat ok\naccess ENOSPC\n");
    EXPECT_EQ(failing("fopen", {"fread:x"}), "fopen ENOSPC\n");
    EXPECT_EQ(failing("fread", {"fread:x"}), "fopen ok\nfread ENOSPC\n");
    EXPECT_EQ(failing("fgetc", {"fgetc:x"}), "fopen ok\nfgetc ENOSPC\ngot \n");
    EXPECT_EQ(failing("rename", {"rename:x:z"}), "rename ENOSPC\n");
    EXPECT_EQ(failing("unlink", {"unlink:x"}), "unlink ENOSPC\n");
    EXPECT_EQ(folder.read("x"), "123");
    EXPECT_EQ(failing("write", {"write:x:45"}), "open ok\nwrite ENOSPC\nclose ok\n");
    EXPECT_EQ(failing("writev", {"writev:x:45:6"}), "open ok\nwritev ENOSPC\nclose ok\n");
    EXPECT_EQ(failing("fwrite", {"fwrite:x:45"}),
              "fopen ok\nfwrite ENOSPC\nferror yes\nfclose ok\n");
    EXPECT_EQ(failing("fclose", {"fwrite:x:45"}), "fopen ok\nfwrite 2\nferror no\nfclose ENOSPC\n");
    EXPECT_EQ(failing("copy_file_range", {"copy:x:y"}),
              "open ok\nopen ok\ncopy_file_range ENOSPC\nclose ok\nclose ok\n");
    folder.makeFolder("dx");
    EXPECT_EQ(failing("opendir", {"list:dx"}), "opendir ENOSPC\n");
    EXPECT_EQ(failing("readdir", {"list:dx"}), "opendir ok\nreaddir ENOSPC\n");
}

TEST(FaultPreload, CallsCanBeShort) {
    const ScratchFolder folder;
    folder.write("x", "12345");
    EXPECT_EQ(outputOf(folder, {"write:w:12345"}, {"write:path=w:short=2"}),
              "open ok\nwrite 2\nclose ok\n");
    EXPECT_EQ(folder.read("w"), "12");
    EXPECT_EQ(outputOf(folder, {"writev:w:12:34:56"}, {"writev:short=3"}),
              "open ok\nwritev 3\nclose ok\n");
    EXPECT_EQ(folder.read("w"), "123");
    EXPECT_EQ(outputOf(folder, {"read:x"}, {"read:path=x:short=4"}),
              "open ok\nread 1234\nfstat 5\nclose ok\n");
    EXPECT_EQ(outputOf(folder, {"read:x"}, {"read:path=x:short=0"}),
              "open ok\nread \nfstat 5\nclose ok\n");
    EXPECT_EQ(outputOf(folder, {"fread:x"}, {"fread:path=x:short=1"}), "fopen ok\nfread 1\n");
    EXPECT_EQ(outputOf(folder, {"fwrite:w:12345"}, {"fwrite:path=w:short=1"}),
              "fopen ok\nfwrite 1\nferror yes\nfclose ok\n");
    EXPECT_EQ(folder.read("w"), "1");
    EXPECT_EQ(outputOf(folder, {"copy:x:w"}, {"copy_file_range:short=3"}),
              "open ok\nopen ok\ncopy_file_range 3\nclose ok\nclose ok\n");
}

TEST(FaultPreload, TheNthCallIsCountedByRule) {
    const ScratchFolder folder;
    const std::vector<std::string> actions = {"unlink:a", "unlink:b", "unlink:a", "unlink:a"};
    EXPECT_EQ(outputOf(folder, actions, {"unlink:path=a:nth=2:errno=EIO"}),
              "unlink ENOENT\nunlink ENOENT\nunlink EIO\nunlink ENOENT\n");
    EXPECT_EQ(outputOf(folder, actions, {"unlink:nth=3+:errno=EIO"}),
              "unlink ENOENT\nunlink ENOENT\nunlink EIO\nunlink EIO\n");
    EXPECT_EQ(outputOf(folder, actions, {"unlink:nth=*:errno=EIO"}),
              "unlink EIO\nunlink EIO\nunlink EIO\nunlink EIO\n");
    EXPECT_EQ(outputOf(folder, actions, {"unlink:nth=1:errno=EIO", "unlink:path=b:errno=EACCES"}),
              "unlink EIO\nunlink EACCES\nunlink ENOENT\nunlink ENOENT\n");
}

TEST(FaultPreload, CharactersOfAStreamAreCallsOfTheirOwn) {
    const ScratchFolder folder;
    folder.write("x", "12345");
    EXPECT_EQ(outputOf(folder, {"fgetc:x"}, {"fgetc:path=x:nth=4:errno=EIO"}),
              "fopen ok\nfgetc EIO\ngot 123\n");
    EXPECT_EQ(outputOf(folder, {"fgetc:x"}, {"@read:path=x:nth=7:errno=EIO"}),
              "fopen ok\nfgetc ok\ngot 12345\n");
}

TEST(FaultPreload, PathsMatchByTheirEndOrAsPatterns) {
    const ScratchFolder folder;
    const std::vector<std::string> actions = {"unlink:lib.a", "unlink:lib.a.0", "unlink:d/lib.a"};
    EXPECT_EQ(outputOf(folder, actions, {"unlink:path=lib.a:errno=EIO"}),
              "unlink EIO\nunlink ENOENT\nunlink EIO\n");
    EXPECT_EQ(outputOf(folder, actions, {"unlink:path=lib.a*:errno=EIO"}),
              "unlink EIO\nunlink EIO\nunlink ENOENT\n");
    EXPECT_EQ(outputOf(folder, {"rename:p:q", "rename:q:p"}, {"rename:path=p:nth=2:errno=EIO"}),
              "rename ENOENT\nrename EIO\n");
}

TEST(FaultPreload, StandardStreamsHaveNames) {
    const ScratchFolder folder;
    const CommandResult result =
        run(probe(folder, {"input", "echo:x"}, {"read:path=stdin:errno=EIO"}));
    EXPECT_EQ(result.output, "input closed\nx\n");
}

TEST(FaultPreload, GroupsAndEverythingMatch) {
    const ScratchFolder folder;
    const std::vector<std::string> actions = {"fwrite:x:1", "writev:x:1", "write:x:1", "look:x"};
    EXPECT_EQ(outputOf(folder, actions, {"@write:path=x:errno=EIO"}),
              "fopen ok\nfwrite EIO\nferror yes\nfclose ok\nopen ok\nwritev EIO\nclose ok\n"
              "open ok\nwrite EIO\nclose ok\nstat ok\naccess ok\n");
    EXPECT_EQ(outputOf(folder, actions, {"*:path=x:errno=EIO"}),
              "fopen EIO\nopen EIO\nopen EIO\nstat EIO\naccess EIO\n");
}

TEST(FaultPreload, SignalsComeAtTheCall) {
    const ScratchFolder folder;
    const CommandResult handled = run(probe(folder, {"guard", "write:guarded:x", "echo:never"},
                                            {"write:path=guarded:signal=TERM"}));
    EXPECT_TRUE(handled.exitedWith(3)) << handled;
    EXPECT_EQ(handled.output, "open ok\nhandled\n");
    EXPECT_FALSE(folder.exists("guarded"));
    EXPECT_EQ(run(probe(folder, {"write:x:1"}, {"write:path=x:signal=HUP"})).signal, SIGHUP);
}

TEST(FaultPreload, TheProgramCanBeKilledAtTheCall) {
    const ScratchFolder folder;
    const CommandResult result = run(probe(folder, {"write:x:1"}, {"close:path=x:abort"}));
    EXPECT_EQ(result.signal, SIGKILL);
    EXPECT_EQ(folder.read("x"), "1");
}

TEST(FaultPreload, FilesCanChangeAtTheCall) {
    const ScratchFolder folder;
    folder.write("x", "12345");
    EXPECT_EQ(outputOf(folder, {"look:x"}, {"access:delete=x"}), "stat ok\naccess ENOENT\n");
    folder.write("x", "12345");
    EXPECT_EQ(outputOf(folder, {"read:x"}, {"read:path=x:truncate=x,2"}),
              "open ok\nread 12\nfstat 2\nclose ok\n");
    folder.write("other", "67");
    EXPECT_EQ(outputOf(folder, {"read:x"}, {"open:path=x:replace=x,other"}),
              "open ok\nread 67\nfstat 2\nclose ok\n");
    EXPECT_FALSE(folder.exists("other"));
}

TEST(FaultPreload, TheLogTellsEachCallInOrder) {
    const ScratchFolder folder;
    Command command = probe(folder, {"fwrite:x:1", "rename:x:y", "read:y"}, {});
    command.faultLog = folder.pathOf("log");
    EXPECT_TRUE(run(command).exitedWith(0));
    std::vector<std::string> calls;
    uint64_t last = 0;
    for (const LoggedCall& call : readFaultLog(command.faultLog)) {
        EXPECT_EQ(call.number, last + 1);
        last = call.number;
        if (call.path == "x" || call.path == "y") {
            calls.push_back(call.call + " " + call.path + " " + call.secondPath);
        }
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"fopen x ", "fwrite x ", "fclose x ", "rename x y",
                                               "open y ", "read y ", "fstat y ", "close y "}));
}

TEST(FaultPreload, EachLoggedCallCanBeMadeToFail) {
    const ScratchFolder folder;
    folder.write("x", "1");
    Command command = probe(folder, {"read:x", "look:x"}, {});
    command.faultLog = folder.pathOf("log");
    const std::string good = run(command).output;
    size_t ownCalls = 0;
    for (const LoggedCall& call : readFaultLog(command.faultLog)) {
        if (call.path == "x") {
            ++ownCalls;
        }
    }
    ASSERT_EQ(ownCalls, 6U);
    for (size_t i = 1; i <= ownCalls; ++i) {
        const std::string rule = "*:path=x:nth=" + std::to_string(i) + ":errno=EIO";
        EXPECT_NE(outputOf(folder, {"read:x", "look:x"}, {rule}), good) << rule;
    }
    EXPECT_EQ(outputOf(folder, {"read:x", "look:x"}, {"*:path=x:nth=7:errno=EIO"}), good);
}

TEST(FaultPreload, LogsThatAreNoLogsAreRefused) {
    const ScratchFolder folder;
    EXPECT_THROW(readFaultLog(folder.pathOf("absent")), std::runtime_error);
    folder.write("text", "hello\n");
    EXPECT_THROW(readFaultLog(folder.pathOf("text")), std::runtime_error);
}

TEST(FaultPreload, WrongRulesEndTheProgramAtItsStart) {
    const ScratchFolder folder;
    for (const char* rule :
         {"", ":errno=EIO", "@nothing:errno=EIO", "read:errno=ENOTHING", "read:nth=0:errno=EIO",
          "read:nth=x:abort", "read:short=", "read:short=-1", "read:signal=NONE", "read:whatever",
          "read:replace=x", "read:truncate=x,y", "read:path="}) {
        const CommandResult result = run(probe(folder, {"echo:x"}, {"unlink:abort", rule}));
        if (*rule == '\0') {
            EXPECT_TRUE(result.exitedWith(0)) << result;
        } else {
            EXPECT_TRUE(result.exitedWith(125)) << rule << "\n" << result;
            EXPECT_NE(result.error.find("fault rules: "), std::string::npos);
        }
    }
}

TEST(FaultPreload, OtherToolsCanBeMadeToFailToo) {
    const ScratchFolder folder;
    folder.write("x", "text\n");
    Command command = tool(folder, "cat", {"x"});
    EXPECT_EQ(run(command).output, "text\n");
    command.faults = {"@open:path=x:errno=EMFILE"};
    const CommandResult result = run(command);
    EXPECT_TRUE(result.exitedWith(1)) << result;
    EXPECT_NE(result.error.find("Too many open files"), std::string::npos);
}

TEST(FaultPreload, WorksForAnUnprivilegedUser) {
    const ScratchFolder folder;
    Command command = probe(folder, {"unlink:x"}, {"unlink:errno=EIO"});
    command.unprivileged = true;
    const CommandResult result = run(command);
    EXPECT_EQ(result.output, "unlink EIO\n") << result;
}

} // namespace
} // namespace testsupport
