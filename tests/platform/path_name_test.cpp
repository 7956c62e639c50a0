#include "platform/interface/path_name.h"
#include "platform/interface/program_name.h"
#include "platform/interface/system_path.h"

#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace platform {
namespace {

// "(null)" stands for a part that is not there, so that it differs from an empty one.
std::string shown(const OwnedText& text) {
    return text ? text.get() : "(null)";
}

std::string partsOf(const char* text, PathStyle style) {
    const OwnedPath path = newPath(text, style);
    return shown(path->root) + "|" + shown(path->directory) + "|" + shown(path->base) + "|" +
           shown(path->extension);
}

PathStyle styleDecidedFor(const char* text) {
    return newPath(text, PathStyle_Unknown)->style;
}

struct PartsCase {
    const char* name;
    const char* text;
    PathStyle style;
    const char* parts;
};

class PathParts : public testing::TestWithParam<PartsCase> {};

TEST_P(PathParts, AreSplit) {
    EXPECT_EQ(partsOf(GetParam().text, GetParam().style), GetParam().parts);
}

constexpr PartsCase partsCases[] = {
    {"Null", nullptr, PathStyle_Posix, "(null)|(null)|(null)|(null)"},
    {"Empty", "", PathStyle_Windows, "(null)|(null)|(null)|(null)"},
    {"ExtensionFromFirstDot", "a.b.c", PathStyle_Posix, "(null)|(null)|a|b.c"},
    {"NoDot", "readme", PathStyle_Posix, "(null)|(null)|readme|(null)"},
    {"DotAtStart", ".profile", PathStyle_Posix, "(null)|(null)|(null)|profile"},
    {"DotAtEnd", "a.", PathStyle_Posix, "(null)|(null)|a|"},
    {"TopDirectory", "/", PathStyle_Posix, "(null)|/|(null)|(null)"},
    {"FileInTopDirectory", "/x.o", PathStyle_Posix, "(null)|/|x|o"},
    {"DirectoryAlone", "dir/", PathStyle_Posix, "(null)|dir|(null)|(null)"},
    {"DirectoryAndFile", "a/b/x.o", PathStyle_Posix, "(null)|a/b|x|o"},
    {"PosixHasNoRoot", "C:/x.o", PathStyle_Posix, "(null)|C:|x|o"},
    {"PosixBackslashIsNoSeparator", "a\\x.o", PathStyle_Posix, "(null)|(null)|a\\x|o"},
    {"PosixDirectoryIsRendered", "a\\b/x.o", PathStyle_Posix, "(null)|a/b|x|o"},
    {"DriveAlone", "C:", PathStyle_Windows, "C:|(null)|(null)|(null)"},
    {"DriveAndFile", "C:a.o", PathStyle_Windows, "C:|(null)|a|o"},
    {"DriveAndTop", "C:\\a.o", PathStyle_Windows, "C:|\\|a|o"},
    {"DriveAndDirectory", "C:/d/e/a.o", PathStyle_Windows, "C:|\\d\\e|a|o"},
    {"UncRoot", "//server/share/d/a.o", PathStyle_Windows, "\\\\server\\share\\|d|a|o"},
    {"UncWithoutSecondSeparator", "\\\\server\\a.o", PathStyle_Windows, "(null)|\\\\server|a|o"},
    {"UncRootMixed", "\\\\server\\share\\d/a.o", PathStyle_Mixed, "//server/share/|d|a|o"},
    {"WindowsTakesTheLaterSeparator", "a/b\\c.o", PathStyle_Windows, "(null)|a\\b|c|o"},
    {"MixedTakesTheSlash", "a/b\\c.o", PathStyle_Mixed, "(null)|a|b\\c|o"},
};

INSTANTIATE_TEST_SUITE_P(Path, PathParts, testing::ValuesIn(partsCases),
                         [](const auto& tested) { return tested.param.name; });

TEST(PathName, StyleIsDecidedByTheText) {
    EXPECT_EQ(styleDecidedFor("C:x"), PathStyle_Windows);
    EXPECT_EQ(styleDecidedFor("//server/share/x"), PathStyle_Windows);
    EXPECT_EQ(styleDecidedFor("\\x"), PathStyle_Windows);
    EXPECT_EQ(styleDecidedFor("/usr/x"), PathStyle_Posix);
    EXPECT_EQ(styleDecidedFor("a\\x"), PathStyle_Windows);
    EXPECT_EQ(styleDecidedFor("a/x"), PathStyle_Mixed);
    EXPECT_EQ(styleDecidedFor("x"), PathStyle_Mixed);
}

TEST(PathName, RootIsRenderedOnlyWhereRootsExist) {
    const OwnedPath windows = newPath("C:\\d\\a.o", PathStyle_Windows);
    EXPECT_EQ(shown(rootOf(*windows, PathStyle_Windows)), "C:");
    EXPECT_EQ(shown(rootOf(*windows, PathStyle_Mixed)), "C:");
    EXPECT_EQ(shown(rootOf(*windows, PathStyle_Posix)), "(null)");
    EXPECT_EQ(shown(rootOf(*windows, PathStyle_Unknown)), "C:");

    PathName posix;
    posix.style = PathStyle_Posix;
    posix.root.reset(strdup("C:"));
    EXPECT_EQ(shown(rootOf(posix, PathStyle_Windows)), "(null)");
    EXPECT_EQ(shown(rootOf(posix, PathStyle_Mixed)), "(null)");
}

TEST(PathName, RenderingReplacesSeparators) {
    const OwnedPath path = newPath("a/b/c/x.o", PathStyle_Posix);
    EXPECT_EQ(shown(directoryOf(*path, PathStyle_Windows)), "a\\b\\c");
    EXPECT_EQ(shown(directoryOf(*path, PathStyle_Mixed)), "a/b/c");
    EXPECT_EQ(shown(directoryOf(*path, PathStyle_Unknown)), "a/b/c");
    EXPECT_EQ(shown(directoryOf(*newPath("x.o", PathStyle_Posix), PathStyle_Posix)), "(null)");
}

TEST(PathName, DoubledBackslashStaysInPosixStyle) {
    PathName path;
    path.style = PathStyle_Posix;
    path.directory.reset(strdup("a\\\\b\\c"));
    EXPECT_EQ(shown(directoryOf(path, PathStyle_Posix)), "a\\/b/c");
    EXPECT_EQ(shown(directoryOf(path, PathStyle_Windows)), "a\\\\b\\c");
    EXPECT_EQ(shown(directoryOf(path, PathStyle_Mixed)), "a//b/c");
}

TEST(PathName, LeafNameJoinsBaseAndExtension) {
    EXPECT_EQ(shown(leafName(*newPath("d/.profile", PathStyle_Posix))), ".profile");
    EXPECT_EQ(shown(leafName(*newPath("d/a.b.c", PathStyle_Posix))), "a.b.c");
    EXPECT_EQ(shown(leafName(*newPath("d/a.", PathStyle_Posix))), "a.");
    EXPECT_EQ(shown(leafName(*newPath("d/", PathStyle_Posix))), "");
}

TEST(PathName, SetLeafNameReplacesIt) {
    const OwnedPath path = newPath("d/*.o", PathStyle_Posix);
    setLeafName(*path, "one.two.o");
    EXPECT_EQ(shown(fullPath(*path, PathStyle_Unknown)), "d/one.two.o");
    setLeafName(*path, "");
    EXPECT_EQ(shown(fullPath(*path, PathStyle_Unknown)), "d");
    setLeafName(*path, nullptr);
    EXPECT_EQ(shown(leafName(*path)), "");
}

TEST(PathName, RootAndDirectoryAreJoined) {
    EXPECT_EQ(shown(rootAndDirectory(*newPath("C:\\d\\x", PathStyle_Windows), PathStyle_Windows)),
              "C:\\d");
    EXPECT_EQ(shown(rootAndDirectory(*newPath("x", PathStyle_Posix), PathStyle_Posix)), "");
}

TEST(PathName, FullPath) {
    const auto full = [](const char* text, PathStyle own, PathStyle target) {
        return shown(fullPath(*newPath(text, own), target));
    };
    EXPECT_EQ(full("C:a.o", PathStyle_Windows, PathStyle_Windows), "C:a.o");
    // Only a text that is nothing but the separator goes without a further one.
    EXPECT_EQ(full("C:\\a.o", PathStyle_Windows, PathStyle_Windows), "C:\\\\a.o");
    EXPECT_EQ(full("\\a.o", PathStyle_Windows, PathStyle_Windows), "\\a.o");
    EXPECT_EQ(full("d\\a.o", PathStyle_Windows, PathStyle_Posix), "d/a.o");
    EXPECT_EQ(full("/a.o", PathStyle_Posix, PathStyle_Posix), "/a.o");
    EXPECT_EQ(full("d/a.o", PathStyle_Posix, PathStyle_Windows), "d\\a.o");
    EXPECT_EQ(full("a.o", PathStyle_Posix, PathStyle_Posix), "a.o");
    EXPECT_EQ(full("d/", PathStyle_Posix, PathStyle_Posix), "d");
}

class CurrentFolder : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(getcwd(m_Before, sizeof m_Before), nullptr); }
    void TearDown() override { ASSERT_EQ(chdir(m_Before), 0); }

    char m_Before[4096] = {};
};

TEST_F(CurrentFolder, CompletesRelativePaths) {
    ASSERT_EQ(chdir("/usr/lib"), 0);
    const auto absolute = [](const char* text) {
        const OwnedPath path = newPath(text, PathStyle_Posix);
        EXPECT_TRUE(makeAbsolute(*path));
        return shown(fullPath(*path, PathStyle_Posix));
    };
    EXPECT_EQ(absolute("a.o"), "/usr/lib/a.o");
    EXPECT_EQ(absolute("d/./e/../a.o"), "/usr/lib/d/a.o");
    EXPECT_EQ(absolute("../../../../a.o"), "/a.o");
    EXPECT_EQ(absolute("/d//e/a.o"), "/d/e/a.o");
    EXPECT_EQ(absolute(".."), "/usr");
    EXPECT_EQ(absolute("."), "/usr/lib");
}

TEST(PathName, DotsBehindAUncRootAreResolved) {
    const auto absolute = [](const char* text) {
        const OwnedPath path = newPath(text, PathStyle_Windows);
        EXPECT_TRUE(makeAbsolute(*path));
        return shown(fullPath(*path, PathStyle_Windows));
    };
    EXPECT_EQ(absolute("\\\\s\\sh\\d\\x.o"), "\\\\s\\sh\\d\\x.o");
    EXPECT_EQ(absolute("\\\\s\\sh\\x.o"), "\\\\s\\sh\\x.o");
    EXPECT_EQ(absolute("\\\\s\\sh\\a\\..\\x.o"), "\\\\s\\sh\\x.o");
    EXPECT_EQ(absolute("C:\\a\\..\\b\\x.o"), "C:\\b\\x.o");
}

TEST(JoinAndNormalise, Cases) {
    const auto joined = [](const char* base, const char* name) {
        return shown(joinAndNormalise(base, name));
    };
    EXPECT_EQ(joined("C:\\x", "a/./b/../c"), "C:\\x\\a\\c");
    EXPECT_EQ(joined("C:\\x", "..\\.."), "C:\\");
    EXPECT_EQ(joined("C:\\x", "\\y\\\\z"), "\\y\\z");
    EXPECT_EQ(joined("C:\\x", "D:\\y/"), "D:\\y");
    EXPECT_EQ(joined("C:\\x", "D:y"), "D:y");
    EXPECT_EQ(joined("C:\\x", "//server/share/f"), "\\\\server\\share\\f");
    EXPECT_EQ(joined("C:\\x", "a//b///"), "C:\\x\\a\\b");
    EXPECT_EQ(joined("C:\\x", "d/e:f"), "C:\\x\\d\\e:f");
}

TEST(LongSystemPath, WindowsRules) {
    const auto longPath = [](const char* name) { return shown(longWindowsPath("C:\\x", name)); };
    EXPECT_EQ(longPath("a/./b/../c"), "\\\\?\\C:\\x\\a\\c");
    EXPECT_EQ(longPath("\\\\.\\COM1"), "\\\\.\\COM1");
    EXPECT_EQ(longPath("//?/C:/x"), "//?/C:/x");
    EXPECT_EQ(longPath("C:x"), "C:x");
    EXPECT_EQ(longPath(""), "");
    EXPECT_EQ(longPath("\\\\server\\share\\f"), "\\\\?\\UNC\\server\\share\\f");
}

TEST(LongSystemPath, IsACopyOnThisHost) {
    EXPECT_EQ(shown(longSystemPath("a/../b")), "a/../b");
}

TEST(FileNameLeaf, IsBehindTheLastSeparatorOfEitherKind) {
    EXPECT_STREQ(fileNameLeaf("a.o"), "a.o");
    EXPECT_STREQ(fileNameLeaf("d/e\\a.o"), "a.o");
    EXPECT_STREQ(fileNameLeaf("d\\e/a.o"), "a.o");
    EXPECT_STREQ(fileNameLeaf("d/"), "");
}

TEST(ProgramName, Cases) {
    const auto named = [](const char* argument0) {
        char buffer[programNameSize];
        return std::string(programName(argument0, buffer));
    };
    EXPECT_EQ(named("tomex"), "tomex");
    EXPECT_EQ(named("/usr/bin/tomex"), "tomex");
    EXPECT_EQ(named("C:\\bin\\tomex.exe"), "tomex");
    EXPECT_EQ(named("C:tomex.EXE"), "tomex");
    EXPECT_EQ(named("tomex.dll.exe"), "tomex");
    EXPECT_EQ(named(".exe"), "exe");
    EXPECT_EQ(named("tomex-1.2"), "2");
    EXPECT_EQ(named("rvtomex"), "tomex");
    EXPECT_EQ(named("x/"), "x/");
    EXPECT_EQ(named(""), "");
    EXPECT_EQ(named("a23456789012345678901234567890123456789"), "a234567890123456789012345678901");
    const char* argument0 = "/usr/bin/tomex";
    EXPECT_EQ(programName(argument0, nullptr), argument0);
}

} // namespace
} // namespace platform
