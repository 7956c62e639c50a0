// Size fields that say more than there is, up to the limits of the format, and what is taken of the
// machine on the way: memory in proportion to the file, never to what a field claims.
#include "tests/command/bad_input_case.h"

#include <fcntl.h>

namespace commandtest {
namespace {

constexpr uint64_t gibibyte = 1ULL << 30U;
constexpr uint64_t mebibyte = 1ULL << 20U;

std::string beyond(const std::string& member, uint64_t offset, uint64_t size, uint64_t fileSize) {
    return "Error reading member '" + member + "': archive member is at offset " +
           std::to_string(offset) + " and has size " + std::to_string(size) +
           " but archive file is only " + std::to_string(fileSize) + " bytes long";
}

class BadInputSize : public BadInputCase {
protected:
    static std::string withSize(const std::string& name, const std::string& size,
                                const std::string& contents = "abcd") {
        BuiltMember member = {.name = "a.o",
                              .contents = contents,
                              .rawName = padded(name, 16),
                              .rawSize = padded(size, 10)};
        return ArchiveBuilder().add(member).bytes();
    }

    // A run that may not take more than 96 MiB. A sanitized program takes terabytes of addresses,
    // so there only its outcome counts.
    CommandResult bounded(Words words) const {
        Command command = testsupport::tomex(folder, std::move(words));
        if (!testsupport::sanitizedBuild) {
            command.memoryLimit = 96 * mebibyte;
        }
        return testsupport::run(command);
    }

    void refusedWithLittleMemory(const std::string& bytes, const std::string& error) const {
        refused(bytes, error);
        EXPECT_TRUE(ended(bounded({"-t", "lib.a"}), 1, "", error));
        EXPECT_TRUE(ended(bounded({"-s", "lib.a"}), 1, "", error));
    }
};

TEST_F(BadInputSize, OneByteTooMany) {
    refused(withSize("a.o/", "5"), failed(beyond("a.o", 68, 5, 72)));
    refused(withSize("a.o/", "1", ""), failed(beyond("a.o", 68, 1, 68)));
    const std::string two = ArchiveBuilder().add("first.o", "123").bytes() +
                            withSize("a.o/", "6").substr(testsupport::archiveMagic.size());
    refused(two, failed(beyond("a.o", 132, 6, 136)));
}

TEST_F(BadInputSize, LargestThatTheFormatHolds) {
    refusedWithLittleMemory(withSize("a.o/", "4294967295"),
                            failed(beyond("a.o", 68, 4294967295, 72)));
    refusedWithLittleMemory(withSize("a.o/", "4294967294"),
                            failed(beyond("a.o", 68, 4294967294, 72)));
    refusedWithLittleMemory(withSize("a.o/", "2147483648"),
                            failed(beyond("a.o", 68, 2147483648, 72)));
    // Offset and size together would fit again if they were counted in 32 bits.
    refusedWithLittleMemory(withSize("a.o/", "4294967229"),
                            failed(beyond("a.o", 68, 4294967229, 72)));
}

TEST_F(BadInputSize, TablesThatClaimToBeLarge) {
    refusedWithLittleMemory(withSize("/", "4294967295"), failed(beyond("", 68, 4294967295, 72)));
    refusedWithLittleMemory(withSize("//", "4294967295"), failed(beyond("", 68, 4294967295, 72)));
    refusedWithLittleMemory(withSize("/", "3000000000"), failed(beyond("", 68, 3000000000, 72)));
    refusedWithLittleMemory(withSize("//", "3000000000"), failed(beyond("", 68, 3000000000, 72)));
}

TEST_F(BadInputSize, TooSmall) {
    // What is left of the contents is taken for the next header.
    const std::string contents(100, 'c');
    refused(withSize("a.o/", "10", contents),
            failed(headerAt(78) + " contains incorrect archive-member magic number"));
    refused(withSize("a.o/", "98", contents),
            failed("End of file in the middle of archive member header starting at offset 166"));
    refused(withSize("a.o/", "9", contents),
            warned("Padding byte at offset 77 has value 99 and not 0x0A as it should be") +
                failed(headerAt(78) + " contains incorrect archive-member magic number"));
}

TEST_F(BadInputSize, SymbolCountThatClaimsToBeLarge) {
    const std::string text = "Archive symbol table is 12 bytes long, but claims to contain ";
    ArchiveBuilder builder;
    builder.rawSymbolTable("\xff\xff\xff\xff" + std::string(8, '\0')).add("a.o", "abcd");
    refusedWithLittleMemory(
        builder.bytes(),
        failed(text + "4294967295 symbols so it should be at least 17179869184 bytes long"));
    // Four times this count is 4 again in 32 bits.
    ArchiveBuilder wrapping;
    wrapping.rawSymbolTable(testsupport::bigEndian32(0x40000001) + std::string(8, '\0'))
        .add("a.o", "abcd");
    refusedWithLittleMemory(
        wrapping.bytes(),
        failed(text + "1073741825 symbols so it should be at least 4294967304 bytes long"));
}

// --- files that are as large as they say ---------------------------------------------------------

// Sparse files: they take no room on disk.
class BadInputLargeFile : public BadInputSize {
protected:
    void append(const std::string& bytes, uint64_t offset) const {
        const int file = ::open(folder.pathOf("lib.a").c_str(), O_WRONLY | O_CLOEXEC);
        ASSERT_GE(file, 0);
        EXPECT_EQ(::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)),
                  static_cast<ssize_t>(bytes.size()));
        EXPECT_EQ(::close(file), 0);
    }
    static std::string start(uint64_t size) {
        return std::string{testsupport::archiveMagic} +
               testsupport::headerText("large.o/", 0, 0, 0, 0644, size);
    }
    static std::string small(const std::string& contents = "small") {
        return ArchiveBuilder()
            .add("small.o", contents)
            .bytes()
            .substr(testsupport::archiveMagic.size());
    }
};

TEST_F(BadInputLargeFile, ListingTakesNoMemoryForContents) {
    folder.writeSparse("lib.a", 2 * gibibyte, start(2 * gibibyte - 68));
    append(small(), 2 * gibibyte);
    EXPECT_TRUE(ended(bounded({"-t", "lib.a"}), 0, "large.o\nsmall.o\n", ""));
    EXPECT_TRUE(ended(bounded({"-p", "lib.a", "small.o"}), 0, "small", ""));
    // Offsets are listed as signed numbers: required for the scripts that read these columns.
    EXPECT_TRUE(ended(bounded({"-tv", "lib.a"}), 0,
                      "rw-r--r--     0/     02147483580 Jan 01 00:00 1970 large.o (offset      8)\n"
                      "rw-r--r--     0/     0      5 Jan 01 00:00 1970 small.o (offset "
                      "-2147483648)\n",
                      ""));
}

TEST_F(BadInputLargeFile, LargestMemberInALargerFile) {
    // The largest size is odd, and behind it comes a byte of zero. What follows lies beyond what an
    // offset can tell, so nothing is made of it.
    folder.writeSparse("lib.a", 5 * gibibyte, start(4294967295));
    EXPECT_TRUE(ended(bounded({"-t", "lib.a"}), 1, "",
                      warned("Padding byte at offset 4294967363 has value 0 and not 0x0A as it "
                             "should be") +
                          unreadable("File too large")));
}

TEST_F(BadInputLargeFile, SumOfOffsetAndSizePassesThirtyTwoBits) {
    folder.writeSparse("lib.a", 4294967300, start(4294967295));
    EXPECT_TRUE(ended(bounded({"-t", "lib.a"}), 1, "",
                      failed(beyond("large.o", 68, 4294967295, 4294967300))));
}

TEST_F(BadInputLargeFile, MemberBehindFourGibibytes) {
    folder.writeSparse("lib.a", 4294967362, start(4294967294));
    append(small(), 4294967362);
    // The offset of its header has no room in the 32 bits that offsets have everywhere.
    const uint64_t identity = folder.identity("lib.a");
    for (const Words& words : std::vector<Words>{
             {"-t", "lib.a"}, {"-p", "lib.a", "small.o"}, {"-x", "lib.a"}, {"-s", "lib.a"}}) {
        EXPECT_TRUE(ended(bounded(words), 1, "", unreadable("File too large")));
    }
    EXPECT_EQ(folder.identity("lib.a"), identity);
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(BadInputLargeFile, LastMemberMayEndBehindFourGibibytes) {
    folder.writeSparse("lib.a", 68 + 4294967294, start(4294967294));
    EXPECT_TRUE(ended(bounded({"-t", "lib.a"}), 0, "large.o\n", ""));
    EXPECT_TRUE(ended(bounded({"-tv", "lib.a"}), 0,
                      "rw-r--r--     0/     04294967294 Jan 01 00:00 1970 large.o (offset      "
                      "8)\n",
                      ""));
}

TEST_F(BadInputLargeFile, WhatWouldEndBehindFourGibibytesIsNotWritten) {
    // With the symbol table in front, the member behind the large one starts over the limit.
    folder.writeSparse("lib.a", 4294967290, start(4294967290 - 68));
    file("small.o", "small");
    const uint64_t identity = folder.identity("lib.a");
    EXPECT_TRUE(
        ended(bounded({"-r", "lib.a", "small.o"}), 1, "",
              notElf("small.o") + "Error: L6830E: Writing file 'lib.a' : File too large\n"));
    EXPECT_EQ(folder.identity("lib.a"), identity);
    EXPECT_EQ(folder.entries(), (Words{"lib.a", "small.o"}));
}

TEST_F(BadInputLargeFile, TableIsReadInProportionToTheFile) {
    constexpr uint64_t size = 96 * mebibyte;
    const std::string head =
        std::string{testsupport::archiveMagic} + testsupport::headerText("/", 0, 0, 0, 0, size);
    folder.writeSparse("lib.a", 68 + size, head);
    const CommandResult result = testsupport::runTomex(folder, {"-t", "lib.a"});
    EXPECT_TRUE(ended(result, 0, "", ""));
    if (!testsupport::sanitizedBuild) { // else peak memory says nothing
        EXPECT_LE(result.peakMemory, std::max(result.peakFloor, size + 64 * mebibyte));
    }
}

} // namespace
} // namespace commandtest
