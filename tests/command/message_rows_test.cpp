// Every message of the command stands in one of the tables here: those that a run can be brought to
// say are said, each by a scene of its own; the others are named, with why.
#include <functional>
#include <map>
#include <set>

#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_code.h"
#include "tests/command/fault_case.h"
#include "tests/command/variant_case.h"

namespace commandtest {
namespace {

class MessageRows : public FaultCase {
protected:
    void SetUp() override { setScene(); }

    // Runs a scene that shall say the line and end with the status; more may be said as well.
    void says(const std::string& code, int status, const std::string& line,
              const CommandResult& result) const {
        EXPECT_TRUE(result.exitedWith(status)) << code << "\n" << result;
        EXPECT_NE(("\n" + result.error).find("\n" + line + "\n"), std::string::npos)
            << "expected: " << line << "\n"
            << result;
        EXPECT_TRUE(line.find(code) != std::string::npos || !line.starts_with("Error")) << line;
        m_Said.insert(code);
    }

    mutable std::set<std::string> m_Said;
};

// Nothing says them; they keep their numbers.
const std::set<std::string> withoutCaller = {
    "L6834E", "L6837E", "L6844E", "L6845E", "L6846E", "L6847E", "L6848E", "L6849E", "L6850E",
    "L6851E", "L6870W", "L6871W", "L6967I", "L6972W", "L6973E", "L6975W",
    // Ready for an archive library that tells clashes with the
    // library apart from other flaws.
    "L6878W", "L6879W"};

// Said by the handler of the archive library's reports when the library cannot seek in a file (it
// names the place with each read instead). Tried in archive_error_handler_test.cpp.
const std::set<std::string> saidByHandlerAlone = {"L6976E"};

// Lines of the usage text and of listings: no diagnostics.
const std::set<std::string> reportLines = {
    "L6881I", "L6882I", "L6883I", "L6884I", "L6885I", "L6950I", "L6951I", "L6952I", "L6953I",
    "L6954I", "L6955I", "L6956I", "L6957I", "L6958I", "L6968I", "L6969I", "L6970I", "L6971I"};

TEST_F(MessageRows, EachIsSaidOrHasAReasonNotToBe) {
    const std::string library = "'lib.a'";
    folder.write("text.a", "no archive");
    says("L6826E", 1, "Error: L6826E: 'text.a' not in archive format", tomex({"-t", "text.a"}));

    folder.write(
        "size.a",
        ArchiveBuilder().add({.name = "a.o", .contents = "ab", .rawSize = "x         "}).bytes());
    says("L6829E", 1,
         "Error: L6829E: 'size.a': malformed archive: Archive member header starting at offset 8 "
         "contains invalid size string 'x         '",
         tomex({"-t", "size.a"}));

    folder.write(
        "date.a",
        ArchiveBuilder().add({.name = "a.o", .contents = "ab", .rawDate = "x           "}).bytes());
    says("L6974W", 0,
         "Warning: L6974W: 'date.a': malformed archive: Archive member header starting at offset 8 "
         "contains invalid date string 'x           '",
         tomex({"-t", "date.a"}));

    says("L6830E", 1, "Error: L6830E: Writing file 'lib.a' : No space left on device",
         with({"@write:path=lib.a.0:errno=ENOSPC"}));
    says("L6831E", 1, "Error: L6831E: 'no.o' not present in archive 'lib.a'",
         tomex({"-t", "lib.a", "no.o"}));
    says("L6831E", 0, "Warning: L6831E: 'no.o' not present in archive 'lib.a'",
         tomex({"-d", "lib.a", "no.o"}));
    says("L6832E", 1, "Error: L6832E: Archive 'none.a' not found : No such file or directory",
         tomex({"-t", "none.a"}));
    says("L6833E", 1, "Error: L6833E: File 'no.o' does not exist", tomex({"-r", "lib.a", "no.o"}));

    folder.makeFolder("folder");
    says("L6835E", 1, "Error: L6835E: Reading file 'folder' : Is a directory",
         tomex({"-t", "folder"}));
    says("L6836E", 1, "Error: L6836E: 'a.o' already exists, so will not be extracted",
         tomex({"-xC", "lib.a", "a.o"}));
    says("L6838E", 1, "Error: L6838E: No archive specified", tomex({"-t"}));
    says("L6839E", 1, "Error: L6839E: One of the actions -[dmpqrtx] must be specified",
         tomex({"lib.a"}));
    says("L6840E", 1, "Error: L6840E: Only one action option may be specified",
         tomex({"-tx", "lib.a"}));
    says("L6841E", 1, "Error: L6841E: Position 'no.o' not found",
         tomex({"-r", "-a", "no.o", "lib.a", "a.o"}));

    const std::string longName(261, 'n');
    folder.write("long.a", ArchiveBuilder().add(longName, "x").bytes());
    says("L6842E", 1, "Error: L6842E: Filename '" + longName + "' too long for file system",
         tomex({"-x", "long.a"}));
    folder.write("dir.a", ArchiveBuilder().add("folder", "x").bytes());
    says("L6843E", 1, "Error: L6843E: Writing file 'folder' : Is a directory",
         tomex({"-x", "dir.a"}));

    folder.write("bare.a", ArchiveBuilder().add("a.o", "x").bytes());
    says("L6872I", 0, "Archive 'bare.a' does not have a symbol table", tomex({"--zs", "bare.a"}));
    says("L6873I", 0, "Creating archive 'made.a'", tomex({"-s", "made.a"}));
    says("L6875W", 0, "Warning: L6875W: Adding non-ELF object 'a.o' to archive 'lib.a'",
         tomex({"-r", "lib.a", "a.o"}));

    const auto variants = [this](const std::string& first, const std::string& second) {
        folder.write("v1.o", variantObject({"f"}, {first}));
        folder.write("v2.o", variantObject({"f"}, {second}));
        return tomex({"--create", "v.a", "v1.o", "v2.o"});
    };
    says("L6874W", 0,
         "Warning: L6874W: Minor variants of archive member 'v1.o' include no base variant",
         variants("$E", "$P"));
    says("L6876W", 0,
         "Warning: L6876W: Minor variants of archive member 'v1.o' include multiple base variants",
         variants("$E", "$E"));
    says("L6877W", 0,
         "Warning: L6877W: Attribute difference of archive member 'v2.o' in minor variant group "
         "beginning with 'v1.o' includes attribute(s) with no symbol decoration representation",
         variants("", "$A_PROFILE"));
    folder.write("v3.o", variantObject({"f"}, {"$E"}));
    variants("", "$E");
    says("L6880W", 0,
         "Warning: L6880W: Minor variants of archive member 'v2.o' include identical variants with "
         "attribute suffix '$$BuildAttributes$$E$IEEE1'",
         tomex({"-r", "v.a", "v3.o"}));

    says("L6977E", 1, "Error: L6977E: Closing file 'lib.a' : Input/output error",
         with({"close:path=lib.a.0:errno=EIO"}));
    // The name cannot be given to the new file, nor taken from the old one.
    says("L6978E", 1, "Error: L6978E: Deleting file 'lib.a' : Permission denied",
         with({"rename:errno=EXDEV", "@remove:path=lib.a:errno=EACCES"}));

    setScene();
    folder.setMode("lib.a", 0444);
    folder.giveToUnprivilegedUser();
    Command command = testsupport::tomex(folder, {"-s", "lib.a"});
    command.unprivileged = true;
    says("L6979E", 1, "Error: L6979E: Output file 'lib.a' is read-only", testsupport::run(command));
    says("L6980E", 1, "Error: L6980E: No archive members specified with --create",
         tomex({"--create", "lib.a"}));

    // A table of names that the file really holds, but memory does not. (A sanitized program takes
    // terabytes of addresses, so there its memory cannot be limited.)
    if (testsupport::sanitizedBuild) {
        m_Said.insert("L6800U");
    } else {
        const uint64_t size = uint64_t{1} << 30;
        folder.writeSparse("huge.a", 68 + size,
                           std::string(testsupport::archiveMagic) +
                               testsupport::headerText("//", 0, 0, 0, 0, size));
        Command hungry = testsupport::tomex(folder, {"-t", "huge.a"});
        hungry.memoryLimit = uint64_t{256} << 20;
        says("L6800U", 1, "Fatal error: L6800U: Out of memory", testsupport::run(hungry));
    }

    for (const messages::MessageEntry& entry :
         std::span(messages::localeTable()[0].entries, messages::localeTable()[0].count)) {
        char code[messages::codeBufferSize];
        messages::formatCode(entry.key, code);
        if (code[0] == 'L') {
            const auto places = m_Said.count(code) + withoutCaller.count(code) +
                                saidByHandlerAlone.count(code) + reportLines.count(code);
            EXPECT_EQ(places, 1U) << code << " " << entry.text;
        }
    }
}

} // namespace
} // namespace commandtest
