// Every sentence of the base class, with its kind, and the answer that comes back.

#include <cerrno>
#include <memory>
#include <string>
#include <type_traits>

#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

class Sentences : public ArlibTest {
protected:
    void SetUp() override {
        ArlibTest::SetUp();
        archive = std::make_unique<arlib::Archive>();
        members[0] = add(*archive, "a.o");
        members[1] = second = add(*archive, "b.o");
    }
    void TearDown() override {
        archive.reset();
        ArlibTest::TearDown();
    }

    // The report's answer must come back whatever it is.
    template <class... Parameters>
    std::string said(bool (arlib::ErrorHandler::*operation)(arlib::Archive*, Parameters...),
                     std::type_identity_t<Parameters>... arguments) {
        std::string text;
        for (const bool answer : {false, true}) {
            handler.reports.clear();
            handler.goesOn = answer;
            EXPECT_EQ((handler.*operation)(archive.get(), arguments...), answer);
            EXPECT_EQ(handler.reports.size(), 1U);
            text = handler.reports.empty() ? "" : handler.reports[0];
        }
        return text;
    }

    arlib::MemberGroup group() const { return {members, 2}; }

    using Handler = arlib::ErrorHandler;
    std::unique_ptr<arlib::Archive> archive;
    arlib::ArchiveMember* members[2] = {};
    arlib::ArchiveMember* second = nullptr;
    const attributes::FullAttr attributes = {};
};

TEST_F(Sentences, OfFileAccess) {
    EXPECT_EQ(said(&Handler::outOfMemory), "0: Out of memory");
    EXPECT_EQ(said(&Handler::readError, nullptr, 0), "0: I/O error reading file");
    EXPECT_EQ(said(&Handler::readError, "f", 0), "0: I/O error reading file 'f'");
    EXPECT_EQ(said(&Handler::readError, "f", ENOENT),
              "0: I/O error reading file 'f': No such file or directory");
    EXPECT_EQ(said(&Handler::readError, nullptr, EIO),
              "0: I/O error reading file: Input/output error");
    EXPECT_EQ(said(&Handler::seekError, "f", EIO),
              "0: I/O error seeking in file 'f': Input/output error");
    EXPECT_EQ(said(&Handler::closeError, "f", EIO),
              "0: I/O error closing file 'f': Input/output error");
    EXPECT_EQ(said(&Handler::deleteError, "f", EIO),
              "0: I/O error deleting file 'f': Input/output error");
    EXPECT_EQ(said(&Handler::writeError, "f", ENOSPC),
              "0: I/O error writing file 'f': No space left on device");
    EXPECT_EQ(said(&Handler::outputReadOnly, "f"), "0: Output file 'f' is read-only");
    EXPECT_EQ(said(&Handler::outputReadOnly, nullptr), "0: Output file is read-only");
}

TEST_F(Sentences, OfHeaders) {
    const std::string header = "Archive member header starting at offset 8";
    EXPECT_EQ(said(&Handler::badMagic), "0: File does not begin with the archive magic number "
                                        "(not an archive file?)");
    EXPECT_EQ(said(&Handler::headerEndOfFile, 8),
              "0: End of file in the middle of archive member header starting at offset 8");
    EXPECT_EQ(said(&Handler::badDate, 8, "x"),
              "1: " + header + " contains invalid date string 'x'");
    EXPECT_EQ(said(&Handler::badUid, 8, "x"), "1: " + header + " contains invalid uid string 'x'");
    EXPECT_EQ(said(&Handler::badGid, 8, "x"), "1: " + header + " contains invalid gid string 'x'");
    EXPECT_EQ(said(&Handler::badMode, 8, "x"),
              "1: " + header + " contains invalid mode string 'x'");
    EXPECT_EQ(said(&Handler::badSize, 8, "x"),
              "0: " + header + " contains invalid size string 'x'");
    EXPECT_EQ(said(&Handler::badMemberMagic, 8),
              "0: " + header + " contains incorrect archive-member magic number");
    EXPECT_EQ(said(&Handler::badPadding, 71, uint8_t{200}),
              "1: Padding byte at offset 71 has value 200 and not 0x0A as it should be");
}

TEST_F(Sentences, OfNames) {
    const std::string header = "2: Archive member header starting at offset 8";
    EXPECT_EQ(said(&Handler::noLongNameTable, 8),
              header + " contains an index into the long name table, but this archive has no long "
                       "name table");
    EXPECT_EQ(said(&Handler::badLongNameIndex, 8, "1 2"),
              header + " contains invalid long-name index '1 2'");
    EXPECT_EQ(said(&Handler::longNameIndexRange, 8, 70U, 20U),
              header + " contains out-of-range long-name index 70 (the long-name table is 20 bytes "
                       "long)");
    EXPECT_EQ(said(&Handler::noSlashInName, 8), header + " has no '/' character in its name field");
    EXPECT_EQ(said(&Handler::trailingInName, 8),
              "1: Archive member header starting at offset 8 has a trailing non-space character "
              "after the '/' character in its name field");
}

TEST_F(Sentences, OfRegions) {
    EXPECT_EQ(said(&Handler::regionBeyondFile, "m.o", "f", 68, 100, 90),
              "0: Error reading member 'm.o': archive member is at offset 68 and has size 100 but "
              "archive file is only 90 bytes long");
    EXPECT_EQ(said(&Handler::regionBeyondFile, nullptr, "f", 68, 100, 90),
              "0: Error reading region from file 'f' at offset 68 with size 100: file is only 90 "
              "bytes long");
}

TEST_F(Sentences, OfTheSymbolTable) {
    EXPECT_EQ(said(&Handler::symbolTableShort, 3U),
              "0: Archive symbol table is 3 bytes long, but should contain at least a 4-byte "
              "symbol count");
    EXPECT_EQ(said(&Handler::symbolTableCount, 8U, 0xFFFFFFFFU, uint64_t{17179869184}),
              "0: Archive symbol table is 8 bytes long, but claims to contain 4294967295 symbols "
              "so it should be at least 17179869184 bytes long");
    EXPECT_EQ(said(&Handler::symbolNameEnd, 2U, 5U),
              "0: Archive symbol table ends in the middle of the name of symbol #2 (out of 5)");
    EXPECT_EQ(said(&Handler::symbolNoMember, 2U, "sym", 99U),
              "2: Archive symbol table says symbol #2 'sym' is defined in the archive member "
              "starting at offset 99 but no archive member starts there");
    EXPECT_EQ(said(&Handler::symbolNotObject, 2U, "sym", 8U),
              "2: Archive symbol table says symbol #2 'sym' is defined in the archive member "
              "starting at offset 8, but that member is not an object file");
    EXPECT_EQ(said(&Handler::symbolTableExtra, 20, 18),
              "1: Archive symbol table contains unexpected data at offset 20, after all the "
              "expected data has finished at offset 18");
    EXPECT_EQ(said(&Handler::memberSymbolsUnreadable, second, "bad"),
              "2: Unable to read symbols defined in archive member #1 'b.o': bad");
    EXPECT_EQ(said(&Handler::memberSymbolsUnreadable, second, ""),
              "2: Unable to read symbols defined in archive member #1 'b.o'");
}

TEST_F(Sentences, OfVariants) {
    const std::string start = "1: Minor variant group containing archive member #0 'a.o' ";
    EXPECT_EQ(said(&Handler::noBaseVariant, group()), start + "includes no base variant");
    EXPECT_EQ(said(&Handler::multipleBaseVariants, group()),
              start + "includes multiple base variants");
    EXPECT_EQ(said(&Handler::identicalVariants, "$x", group()),
              start + "includes multiple variants with suffix '$x'");
    EXPECT_EQ(said(&Handler::attributesNotDecorable, second, group()),
              "1: Member #1 'b.o' of minor variant group beginning witharchive member #0 'a.o' "
              "includes attribute(s) with nosymbol decoration representation");
    EXPECT_EQ(said(&Handler::commonAttributesClash, group(), attributes),
              "1: Common attributes of minor variant group beginning with archive member #0 'a.o' "
              "are incompatible with library attributes");
    EXPECT_EQ(said(&Handler::memberAttributesClash, second, attributes),
              "1: Attributes of minor variant member object 'b.o' are incompatible with library "
              "attributes");
    EXPECT_EQ(said(&Handler::bitcodeFailure, "libLTO "),
              "0: Failure to use libLTO to process bitcode symbols");
}

} // namespace
} // namespace arlibtest
