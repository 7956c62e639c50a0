// What the command makes of the archive library's reports, operation by operation: those that no
// damaged file and no failing call can provoke in a run of the program are tried here too.
#include "tomex/archive_error_handler.h"

#include <array>
#include <cerrno>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "messages/interface/diagnostic_control.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"
#include "messages/interface/stream_switch.h"
#include "tests/messages/captured_stream.h"
#include "tomex/command_state.h"

namespace commandtest {
namespace {

class ArchiveErrorHandler : public MessagesTest {
protected:
    ArchiveErrorHandler() {
        alloclib::startAllocators();
        tomex::resetCommandState();
        m_Archive = std::make_unique<arlib::Archive>();
        m_Archive->setFileName("lib.a");
        m_Members = {add("first.o"), add("second.o"), add("third.o")};
    }
    ~ArchiveErrorHandler() override {
        m_Archive.reset();
        alloclib::finishAllocators();
    }

    arlib::ArchiveMember* add(const char* name) {
        return m_Archive->addMember(name, 1, 2, 3, 0100644);
    }
    arlib::MemberGroup group() const { return m_Members; }
    arlib::Archive* archive() const { return m_Archive.get(); }

    static void beVerbose() { tomex::commandState().verbose = true; }

    static constexpr const char* groupList = " * first.o [0] : first.o\n"
                                             " * first.o [1] : second.o\n"
                                             " * first.o [2] : third.o\n";

    std::unique_ptr<arlib::Archive> m_Archive;
    std::array<arlib::ArchiveMember*, 3> m_Members = {};
    tomex::ArlibErrorHandler m_Handler;
};
using ArchiveErrorHandlerDeathTest = ArchiveErrorHandler;

TEST_F(ArchiveErrorHandler, StopsForAFatalFlawAndGoesOnAfterOthers) {
    EXPECT_FALSE(m_Handler.report(archive(), arlib::ErrorKind_Fatal, "text"));
    EXPECT_EQ(output(), "Error: L6829E: 'lib.a': malformed archive: text\n");
    EXPECT_TRUE(m_Handler.report(archive(), arlib::ErrorKind_Forgivable, "text"));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: text\n");
    EXPECT_TRUE(m_Handler.report(archive(), arlib::ErrorKind_Recoverable, "text"));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: text\n");
    EXPECT_EQ(messages::errorCount(), 1U);
}

TEST_F(ArchiveErrorHandlerDeathTest, EndsTheRunWhenMemoryIsShort) {
    m_Switch.reset();
    EXPECT_EXIT(m_Handler.outOfMemory(archive()), testing::ExitedWithCode(1),
                "^Fatal error: L6800U: Out of memory\n$");
}

TEST_F(ArchiveErrorHandler, NamesTheArchiveInFailuresOfAnyFile) {
    using Handler = tomex::ArlibErrorHandler;
    const struct {
        bool (Handler::*operation)(arlib::Archive*, const char*, int);
        const char* text;
    } rows[] = {
        {&Handler::readError, "Error: L6835E: Reading file 'lib.a' : "},
        {&Handler::seekError, "Error: L6976E: Seeking in file 'lib.a' : "},
        {&Handler::closeError, "Error: L6977E: Closing file 'lib.a' : "},
        {&Handler::deleteError, "Error: L6978E: Deleting file 'lib.a' : "},
        {&Handler::writeError, "Error: L6830E: Writing file 'lib.a' : "},
    };
    for (const auto& row : rows) {
        for (const char* file : {static_cast<const char*>(nullptr), "lib.a.0"}) {
            EXPECT_FALSE((m_Handler.*row.operation)(archive(), file, ENOSPC));
            EXPECT_EQ(output(), std::string(row.text) + "No space left on device\n");
        }
        EXPECT_FALSE((m_Handler.*row.operation)(archive(), nullptr, 0));
        EXPECT_EQ(output(), std::string(row.text) + "Success\n");
    }
    EXPECT_FALSE(m_Handler.outputReadOnly(archive(), "lib.a.0"));
    EXPECT_EQ(output(), "Error: L6979E: Output file 'lib.a' is read-only\n");
    EXPECT_FALSE(m_Handler.badMagic(archive()));
    EXPECT_EQ(output(), "Error: L6826E: 'lib.a' not in archive format\n");
}

// What has no wording of its own here reaches the user as a flaw of the archive, by its kind.
TEST_F(ArchiveErrorHandler, TakesTheSentenceOfTheLibraryWhereItHasNone) {
    EXPECT_FALSE(m_Handler.headerEndOfFile(archive(), 68));
    EXPECT_EQ(output(), "Error: L6829E: 'lib.a': malformed archive: End of file in the middle of "
                        "archive member header starting at offset 68\n");
    EXPECT_TRUE(m_Handler.badDate(archive(), 8, "x"));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: Archive member header "
                        "starting at offset 8 contains invalid date string 'x'\n");
    EXPECT_TRUE(m_Handler.memberSymbolsUnreadable(archive(), m_Members[1], "bad"));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: Unable to read symbols "
                        "defined in archive member #1 'second.o': bad\n");
    EXPECT_FALSE(m_Handler.bitcodeFailure(archive(), "libLTO "));
    EXPECT_EQ(output(), "Error: L6829E: 'lib.a': malformed archive: Failure to use libLTO to "
                        "process bitcode symbols\n");
}

TEST_F(ArchiveErrorHandler, WordsFlawsOfVariants) {
    const auto expectAll = [this](const std::string& list) {
        EXPECT_TRUE(m_Handler.noBaseVariant(archive(), group()));
        EXPECT_EQ(output(), "Warning: L6874W: Minor variants of archive member 'first.o' include "
                            "no base variant\n" +
                                list);
        EXPECT_TRUE(m_Handler.multipleBaseVariants(archive(), group()));
        EXPECT_EQ(output(), "Warning: L6876W: Minor variants of archive member 'first.o' include "
                            "multiple base variants\n" +
                                list);
        EXPECT_TRUE(m_Handler.identicalVariants(archive(), "$x", group()));
        EXPECT_EQ(output(), "Warning: L6880W: Minor variants of archive member 'first.o' include "
                            "identical variants with attribute suffix '$x'\n" +
                                list);
        EXPECT_TRUE(m_Handler.attributesNotDecorable(archive(), m_Members[1], group()));
        EXPECT_EQ(output(),
                  "Warning: L6877W: Attribute difference of archive member 'second.o' in minor "
                  "variant group beginning with 'first.o' includes attribute(s) with no symbol "
                  "decoration representation\n" +
                      list);
    };
    expectAll("");
    beVerbose();
    expectAll(groupList);
}

TEST_F(ArchiveErrorHandler, ListsAGroupAlsoWhenItsWarningIsSilentOrAnError) {
    beVerbose();
    messages::applyDiagnosticControl(messages::Severity_Suppressed, "6874");
    EXPECT_TRUE(m_Handler.noBaseVariant(archive(), group()));
    EXPECT_EQ(output(), groupList);
    messages::applyDiagnosticControl(messages::Severity_Error, "6874");
    EXPECT_TRUE(m_Handler.noBaseVariant(archive(), group()));
    EXPECT_EQ(output(), "Error: L6874W: Minor variants of archive member 'first.o' include no base "
                        "variant\n" +
                            std::string(groupList));
    EXPECT_EQ(messages::errorCount(), 1U);
}

TEST_F(ArchiveErrorHandler, ListsAGroupInTheStyleInForce) {
    beVerbose();
    messages::setStyle(1);
    EXPECT_TRUE(m_Handler.noBaseVariant(archive(), group().first(1)));
    EXPECT_EQ(output(), "tomex : warning L6874:  Minor variants of archive member 'first.o' "
                        "include no base variant\n"
                        "tomex :  * first.o [0] : first.o\n");
}

// The library calls these two only, and here they have no wording of their own.
TEST_F(ArchiveErrorHandler, ShowsClashesWithTheLibraryAsFlawsOfTheArchive) {
    beVerbose();
    const attributes::FullAttr clashing{.isa = {0x1001, 0}};
    EXPECT_TRUE(m_Handler.commonAttributesClash(archive(), group(), clashing));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: Common attributes of minor "
                        "variant group beginning with archive member #0 'first.o' are incompatible "
                        "with library attributes\n");
    EXPECT_TRUE(m_Handler.memberAttributesClash(archive(), m_Members[2], clashing));
    EXPECT_EQ(output(), "Warning: L6974W: 'lib.a': malformed archive: Attributes of minor variant "
                        "member object 'third.o' are incompatible with library attributes\n");
}

// The same clashes in the command's own words, for a caller that knows the command's handler.
class LibraryClash : public ArchiveErrorHandler {
protected:
    std::string listed(const attributes::FullAttr& clashing) {
        EXPECT_TRUE(m_Handler.libraryMemberAttributesClash(archive(), m_Members[2], clashing));
        const std::string memberText = output();
        const std::string memberLine =
            "Warning: L6879W: Attributes of minor variant member object 'third.o' are incompatible "
            "with library attributes.\n";
        EXPECT_TRUE(memberText.starts_with(memberLine)) << memberText;
        EXPECT_TRUE(m_Handler.libraryCommonAttributesClash(archive(), group(), clashing));
        const std::string groupText = output();
        const std::string groupLine =
            "Warning: L6878W: Common attributes of minor variant group beginning with 'first.o' "
            "are incompatible with library attributes.\n";
        EXPECT_TRUE(groupText.starts_with(groupLine)) << groupText;
        EXPECT_EQ(groupText.substr(groupLine.size()), memberText.substr(memberLine.size()));
        return groupText.substr(groupLine.size());
    }
};

// Clashes of instruction sets come first, then those of options, then that of access.
TEST_F(LibraryClash, AllAtOnce) {
    const attributes::FullAttr clashing{
        .isa = {0x6880000000000000 | 0x1001 | 0x1000010000000000, 0},
        .access = {0x0002, 0, 0x0400, 0},
        .options = 0x30 | 0x880000};
    const char* lines = " * FLA clashes with ZLT\n"
                        " * pure-endian double clashes with mixed-endian double\n"
                        " * qel-isa clashes with m-profile\n"
                        " * Q64 clashes with SoftZLT\n"
                        " * stack-checked clashes with not-stack-checked\n"
                        " * require 4-byte alignment of 8-byte datatypes clashes with require "
                        "8-byte alignment of 8-byte datatypes\n"
                        " * L/S clashes with UL/US\n";
    EXPECT_EQ(listed(clashing), "");
    beVerbose();
    EXPECT_EQ(listed(clashing), lines);
    messages::setStyle(2);
    EXPECT_EQ(listed(clashing), lines);
}

TEST_F(LibraryClash, HalfOfAPairIsNone) {
    beVerbose();
    EXPECT_EQ(listed({}), "");
    EXPECT_EQ(listed({.isa = {0x0800000000000000 | 0x2000000000000000 | 0x1 | 0x10000000000, 0},
                      .access = {0x016E, 0x016E, 0x016E, 0xFFFF},
                      .options = 0x20 | 0x80000}),
              "");
    EXPECT_EQ(listed({.isa = {0x0080000000000000 | 0x4000000000000000 | 0x1000, 0xFFFF},
                      .access = {0xFC00, 0xFC00, 0xFC00, 0xFFFF},
                      .options = 0x10 | 0x800000}),
              "");
}

TEST_F(LibraryClash, AccessOfCodeAndDataClashes) {
    beVerbose();
    const char* line = " * L/S clashes with UL/US\n";
    EXPECT_EQ(listed({.isa = {}, .access = {0x0002, 0x0400, 0, 0}}), line);
    EXPECT_EQ(listed({.isa = {}, .access = {0, 0, 0xFFFF, 0}}), line);
    EXPECT_EQ(listed({.isa = {}, .access = {0x0002, 0, 0, 0x0400}}), ""); // stores take no part
}

} // namespace
} // namespace commandtest
