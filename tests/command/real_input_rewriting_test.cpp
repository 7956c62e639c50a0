// The host's static libraries, written again, and their members put together anew: names, fields
// and bytes stay what they were, and every archiver reads the result.
#include "tests/command/real_input_case.h"

#include <sstream>

namespace commandtest {
namespace {

using testsupport::ArchiveRules;

// Each library is read by several tools here.
constexpr size_t rewritten = testsupport::sanitizedBuild ? 12 : 48;

class RealInputRewriting : public RealInputCase {
protected:
    // Runs the program on "lib.a"; what it remarks about members is not this test's concern.
    void rewrites(Words words) const {
        const CommandResult result = tomex(std::move(words));
        EXPECT_TRUE(result.exitedWith(0)) << result;
        EXPECT_EQ(result.output, "");
    }
    static ParsedArchive parsed(const std::string& bytes) {
        ParsedArchive result = testsupport::parseArchive(bytes, ArchiveRules::AnyTool);
        EXPECT_EQ(result.error, "");
        return result;
    }
    // Header fields and contents of all members that are no tables, one text each.
    static Words members(const ParsedArchive& archive) {
        Words texts;
        for (const ParsedMember& member : archive.plainMembers()) {
            std::ostringstream text;
            text << member.name << ' ' << member.date << ' ' << member.uid << ' ' << member.gid
                 << ' ' << member.mode << '\n'
                 << member.contents;
            texts.push_back(std::move(text).str());
        }
        return texts;
    }
    // "lib.a" has these names and bytes in everybody's eyes.
    void readsTheSame(const std::string& names, const std::string& bytes) const {
        EXPECT_TRUE(prints({"-t", "lib.a"}) == names);
        EXPECT_TRUE(prints({"-p", "lib.a"}) == bytes);
        for (const Witness* witness : {&ar, &llvmAr}) {
            if (present(*witness)) {
                EXPECT_TRUE(says(*witness, {"t", "lib.a"}) == names) << witness->path();
                EXPECT_TRUE(says(*witness, {"p", "lib.a"}) == bytes) << witness->path();
            }
        }
    }
};

TEST_F(RealInputRewriting, NewSymbolTableLeavesTheMembersAlone) {
    const std::vector<std::string> libraries = someHostLibraries(rewritten);
    ASSERT_FALSE(libraries.empty());
    for (const std::string& library : libraries) {
        SCOPED_TRACE(library);
        const std::string bytes = wholeFile(library);
        const ParsedArchive before = parsed(bytes);
        folder.write("lib.a", bytes);
        rewrites({"-s", "lib.a"});
        // A name table that is still good stays as the other tool wrote it.
        const ParsedArchive after = parsed(folder.read("lib.a"));
        EXPECT_TRUE(members(after) == members(before));
        ASSERT_NE(after.table("/"), nullptr);
        readsTheSame(listing(before), allContents(before));
    }
}

TEST_F(RealInputRewriting, DroppingTheSymbolTableLeavesTheMembersAlone) {
    for (const std::string& library : someHostLibraries(rewritten)) {
        SCOPED_TRACE(library);
        const std::string bytes = wholeFile(library);
        const ParsedArchive before = parsed(bytes);
        folder.write("lib.a", bytes);
        rewrites({"-sn", "lib.a"});
        const ParsedArchive after = parsed(folder.read("lib.a"));
        EXPECT_TRUE(members(after) == members(before));
        EXPECT_EQ(after.table("/"), nullptr);
        readsTheSame(listing(before), allContents(before));
    }
}

TEST_F(RealInputRewriting, WritingTwiceChangesNothingMore) {
    for (const std::string& library : someHostLibraries(rewritten)) {
        folder.write("lib.a", wholeFile(library));
        rewrites({"-s", "lib.a"});
        const std::string once = folder.read("lib.a");
        rewrites({"-s", "lib.a"});
        EXPECT_TRUE(folder.read("lib.a") == once) << library;
    }
}

TEST_F(RealInputRewriting, MembersOfALibraryMakeTheSameLibrary) {
    for (const std::string& library : someHostLibraries(rewritten)) {
        SCOPED_TRACE(library);
        const ParsedArchive before = parsed(wholeFile(library));
        folder.makeFolder("members");
        Words words = {"-rc", "lib.a"};
        // Each name once, without the file of another case, in the library's order.
        const std::map<std::string, std::string> files = filesOf(before);
        ParsedArchive expected;
        for (const ParsedMember& member : before.plainMembers()) {
            const std::string file = "members/" + member.name;
            if (folder.exists(file)) {
                continue;
            }
            folder.write(file, files.at(member.name));
            words.push_back(file);
            expected.members.push_back(member);
            expected.members.back().contents = files.at(member.name);
        }
        if (words.size() > 2) {
            rewrites(words);
            EXPECT_EQ(names(), expected.names());
            readsTheSame(listing(expected), allContents(expected));
            folder.remove("lib.a");
        }
        folder.remove("members");
    }
}

// A library merged into an empty one brings its members with all their fields.
TEST_F(RealInputRewriting, MergedLibraryKeepsTheFields) {
    for (const std::string& library : someHostLibraries(rewritten)) {
        SCOPED_TRACE(library);
        const ParsedArchive before = parsed(wholeFile(library));
        if (before.names().empty()) {
            continue;
        }
        rewrites({"-rc", "lib.a", library});
        EXPECT_TRUE(members(archive()) == members(before));
        readsTheSame(listing(before), allContents(before));
        folder.remove("lib.a");
    }
}

} // namespace
} // namespace commandtest
