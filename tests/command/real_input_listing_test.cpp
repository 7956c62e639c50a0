// Every static library of the host, listed: the names that `ar` lists, and the fields of the
// headers.
#include "tests/command/real_input_case.h"

namespace commandtest {
namespace {

class RealInputListing : public RealInputCase {
protected:
    // A sanitized program takes long to start.
    std::vector<std::string> listed() const {
        return testsupport::sanitizedBuild ? someHostLibraries(60) : testsupport::hostLibraries();
    }
};

TEST_F(RealInputListing, NamesAreThoseOfAr) {
    const bool asked = present(ar);
    const std::vector<std::string> libraries = listed();
    ASSERT_FALSE(libraries.empty());
    for (const std::string& library : libraries) {
        const std::string names = prints({"-t", library});
        if (asked) {
            EXPECT_TRUE(names == says(ar, {"t", library})) << library;
        } else {
            const ParsedArchive parsed =
                testsupport::parseArchive(wholeFile(library), testsupport::ArchiveRules::AnyTool);
            EXPECT_TRUE(names == listing(parsed)) << library;
        }
    }
}

TEST_F(RealInputListing, DetailsAreThoseOfTheHeaders) {
    const bool asked = present(ar);
    const std::vector<std::string> libraries = listed();
    ASSERT_FALSE(libraries.empty());
    for (const std::string& library : libraries) {
        const ParsedArchive parsed =
            testsupport::parseArchive(wholeFile(library), testsupport::ArchiveRules::AnyTool);
        ASSERT_EQ(parsed.error, "") << library;
        std::string expected;
        std::string expectedOfAr;
        for (const ParsedMember& member : parsed.members) {
            expected += member.auxiliary ? "" : detailedLine(member);
            expectedOfAr += member.auxiliary ? "" : arDetailedLine(member);
        }
        EXPECT_TRUE(prints({"-tv", library}) == expected) << library;
        if (asked) {
            // That the headers were understood is not only this project's opinion.
            EXPECT_TRUE(says(ar, {"tv", library}) == expectedOfAr) << library;
        }
    }
}

TEST_F(RealInputListing, ListingChangesNothing) {
    const std::vector<std::string> libraries = someHostLibraries(1);
    ASSERT_FALSE(libraries.empty());
    const std::string bytes = wholeFile(libraries.front());
    folder.write("lib.a", bytes);
    const uint64_t identity = folder.identity("lib.a");
    folder.setTime("lib.a", 12345);
    prints({"-t", "lib.a"});
    prints({"-tv", "lib.a"});
    EXPECT_TRUE(folder.read("lib.a") == bytes);
    EXPECT_EQ(folder.identity("lib.a"), identity);
    EXPECT_EQ(folder.time("lib.a"), 12345);
    EXPECT_EQ(folder.entries(), Words{"lib.a"});
}

TEST_F(RealInputListing, WordsChooseMembers) {
    for (const std::string& library : someHostLibraries(testsupport::sanitizedBuild ? 20 : 100)) {
        const ParsedArchive parsed =
            testsupport::parseArchive(wholeFile(library), testsupport::ArchiveRules::AnyTool);
        const Words names = parsed.names();
        if (names.empty()) {
            continue;
        }
        // Of names that differ in case only, each is listed for the other's word too.
        const std::string& last = names.back();
        const std::string output = prints({"-t", library, last});
        EXPECT_NE(("\n" + output).find("\n" + last + "\n"), std::string::npos) << library;
        std::string all;
        for (const std::string& name : names) {
            all += name + "\n";
        }
        EXPECT_TRUE(prints({"-t", library, "*"}) == all) << library;
    }
}

} // namespace
} // namespace commandtest
