// What an installation holds, and what another project makes of it: everything is installed into a
// scratch folder, and projects outside of this tree are configured, built and run against what is
// there.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/archive_builder.h"
#include "tests/support/elf_builder.h"
#include "tests/support/witness.h"

namespace packagetest {
namespace {

namespace fs = std::filesystem;

using testsupport::CommandResult;
using Lines = std::vector<std::string>;

constexpr const char* libraries[] = {"alloclib",   "platform", "elfext_containers",
                                     "attributes", "elfext",   "arlib"};

class PackageTest : public testing::Test {
protected:
    // Where a package would be made of it: below DESTDIR, for another place. So nothing that is
    // installed may know where it was put.
    static constexpr const char* place = "stage/opt/tomex";

    static void SetUpTestSuite() {
        folder = std::make_unique<testsupport::ScratchFolder>();
        run("DESTDIR=" + folder->pathOf("stage") + " " + TOMEX_CMAKE + " --install " +
            TOMEX_BUILD_FOLDER + " --prefix /opt/tomex");
    }
    static void TearDownTestSuite() { folder.reset(); }

    // Some of these lines build all that is installed, on hosts that have more to do.
    static CommandResult sh(const std::string& line) {
        return testsupport::run({.program = "sh",
                                 .arguments = {"-c", line},
                                 .folder = folder->path(),
                                 .watchdog = std::chrono::minutes(9)});
    }
    static void run(const std::string& line) {
        const CommandResult result = sh(line);
        ASSERT_EQ(result.status, 0) << line << "\n" << result.output << result.error;
    }
    static std::string configureLine(const std::string& project) {
        return std::string(TOMEX_CMAKE) + " -G '" + TOMEX_GENERATOR + "' -S " + project + " -B " +
               project + "/build -DCMAKE_PREFIX_PATH=" + folder->pathOf(place) +
               " -DCMAKE_CXX_COMPILER=" + TOMEX_COMPILER + " -DCMAKE_CXX_FLAGS='" +
               TOMEX_COMPILER_FLAGS + "'";
    }
    // Configures and builds the project in a folder.
    static void build(const std::string& project) {
        run(configureLine(project) + " && " + TOMEX_CMAKE + " --build " + project +
            "/build --parallel 2");
    }
    static void writeProject(const std::string& name, const std::string& languages,
                             const std::string& text) {
        folder->write(name + "/CMakeLists.txt", "cmake_minimum_required(VERSION 3.21)\nproject(" +
                                                    name + " LANGUAGES " + languages + ")\n" +
                                                    text);
    }

    // The files below a folder, relative to it, sorted.
    static Lines filesBelow(const std::string& name) {
        Lines files;
        for (const auto& entry : fs::recursive_directory_iterator(folder->pathOf(name))) {
            if (!entry.is_directory()) {
                files.push_back(fs::relative(entry.path(), folder->pathOf(name)).string());
            }
        }
        std::sort(files.begin(), files.end());
        return files;
    }
    static bool contains(const Lines& lines, const std::string& line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    static inline std::unique_ptr<testsupport::ScratchFolder> folder;
};

// --- What is there

TEST_F(PackageTest, AllPartsAreInstalled) {
    const Lines files = filesBelow("stage");
    const std::string root = "opt/tomex/";
    const std::string libraryFolder = root + TOMEX_LIBRARY_FOLDER;
    EXPECT_TRUE(contains(files, root + "bin/tomex"));
    EXPECT_TRUE(contains(files, root + "share/man/man1/tomex.1"));
    for (const char* library : libraries) {
        EXPECT_TRUE(contains(files, libraryFolder + "/tomex/lib" + library + ".a")) << library;
    }
    for (const char* file :
         {"tomexConfig.cmake", "tomexConfigVersion.cmake", "tomexTargets.cmake"}) {
        EXPECT_TRUE(contains(files, libraryFolder + "/cmake/tomex/" + file)) << file;
    }
}

// Those of the tree, and no others.
TEST_F(PackageTest, TheHeadersOfTheLibrariesAreInstalled) {
    Lines expected;
    for (const char* library : {"alloclib", "platform", "attributes", "elfext", "arlib"}) {
        const std::string headers = std::string(library) + "/interface";
        for (const auto& entry :
             fs::directory_iterator(std::string(TOMEX_SOURCE_FOLDER) + "/" + headers)) {
            expected.push_back(headers + "/" + entry.path().filename().string());
        }
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(filesBelow(std::string(place) + "/include/tomex"), expected);
}

TEST_F(PackageTest, NothingKnowsWhereItWasBuiltOrPut) {
    const std::string configuration =
        std::string(place) + "/" + TOMEX_LIBRARY_FOLDER + "/cmake/tomex";
    for (const std::string& file : filesBelow(configuration)) {
        const std::string text = folder->read(configuration + "/" + file);
        EXPECT_EQ(text.find(TOMEX_SOURCE_FOLDER), std::string::npos) << file;
        EXPECT_EQ(text.find(TOMEX_BUILD_FOLDER), std::string::npos) << file;
        EXPECT_EQ(text.find("/opt/tomex"), std::string::npos) << file;
    }
}

TEST_F(PackageTest, TheInstalledProgramRuns) {
    folder->write("member.txt", "text");
    const std::string tomex = std::string(place) + "/bin/tomex ";
    const CommandResult made = sh(tomex + "-r made.a member.txt");
    EXPECT_EQ(made.status, 0) << made.error;
    EXPECT_EQ(sh(tomex + "-t made.a").output, "member.txt\n");
}

TEST_F(PackageTest, TheDevelopmentPartsAloneAreInstalledToo) {
    run(std::string(TOMEX_CMAKE) + " --install " + TOMEX_BUILD_FOLDER +
        " --component development --prefix development");
    Lines expected;
    for (const std::string& file : filesBelow(place)) {
        if (!file.starts_with("bin/") && !file.starts_with("share/")) {
            expected.push_back(file);
        }
    }
    EXPECT_EQ(filesBelow("development"), expected);
}

// The manual page names no file that is not there, and its formatter has nothing to say of it.
TEST_F(PackageTest, TheManualPageIsSound) {
    const std::string page = std::string(place) + "/share/man/man1/tomex.1";
    EXPECT_EQ(folder->read(page).find(".TH "), 0U);
    const testsupport::Witness formatter("groff");
    if (!formatter.present()) {
        GTEST_SKIP() << formatter.absence();
    }
    const CommandResult result =
        formatter.run(*folder, {"-man", "-Tascii", "-ww", "-z", folder->pathOf(page)});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
}

// --- Who may use it

TEST_F(PackageTest, VersionsAreHeldAgainstWhatIsInstalled) {
    const auto isFound = [](const std::string& wanted) {
        writeProject("version", "CXX",
                     "find_package(tomex " + wanted +
                         ")\nfile(WRITE ${CMAKE_SOURCE_DIR}/answer \"${tomex_FOUND} "
                         "${tomex_VERSION}\")\n");
        run(configureLine("version"));
        const std::string answer = folder->read("version/answer");
        folder->remove("version");
        return answer;
    };
    const std::string found = std::string("1 ") + TOMEX_VERSION;
    EXPECT_EQ(isFound(""), found);
    EXPECT_EQ(isFound("1"), found);
    EXPECT_EQ(isFound(TOMEX_VERSION), found);
    EXPECT_EQ(isFound(std::string(TOMEX_VERSION) + " EXACT"), found);
    EXPECT_TRUE(isFound("0.9").starts_with("0 ")) << "an older interface";
    EXPECT_TRUE(isFound("1.99").starts_with("0 ")) << "a newer one";
    EXPECT_TRUE(isFound("2.0").starts_with("0 ")) << "another one";
}

// Each public header stands on its own, with nothing but what is installed: it is all that a file
// of its own includes, twice.
TEST_F(PackageTest, EveryInstalledHeaderCompilesAlone) {
    const Lines headers = filesBelow(std::string(place) + "/include/tomex");
    ASSERT_GT(headers.size(), 80U);
    std::string sources;
    for (size_t i = 0; i < headers.size(); ++i) {
        const std::string source = "header" + std::to_string(i) + ".cpp";
        const std::string include = "#include \"" + headers[i] + "\"\n";
        folder->write("headers/" + source, include + include);
        sources += " " + source;
    }
    writeProject("headers", "CXX",
                 "find_package(tomex 1.0 REQUIRED)\nadd_library(headers OBJECT" + sources +
                     ")\ntarget_link_libraries(headers PRIVATE tomex::arlib)\n"
                     "target_compile_options(headers PRIVATE -fsyntax-only)\n");
    build("headers");
}

// With all of a library in a program, all that it needs of others must come with it.
TEST_F(PackageTest, EveryLibraryBringsWhatItNeeds) {
    std::string text = "find_package(tomex 1.0 REQUIRED)\n";
    for (const std::string library : libraries) {
        text += "add_executable(with_" + library + " main.cpp)\ntarget_link_libraries(with_" +
                library + " PRIVATE -Wl,--whole-archive $<TARGET_FILE:tomex::" + library +
                "> -Wl,--no-whole-archive tomex::" + library + ")\n";
    }
    writeProject("wholes", "CXX", text);
    folder->write("wholes/main.cpp", "int main() {}\n");
    build("wholes");
    for (const std::string library : libraries) {
        run("wholes/build/with_" + library);
    }
}

// --- The example, outside of this tree

class LinkingExample : public PackageTest {
protected:
    static void SetUpTestSuite() {
        PackageTest::SetUpTestSuite();
        fs::copy(fs::path(TOMEX_SOURCE_FOLDER) / "examples/linking", folder->pathOf("linking"));
        build("linking");
    }
    static CommandResult variants(const std::string& words) {
        return sh("linking/build/variants " + words);
    }
    // The library of the user's guide, made by the installed program.
    static void makeLibrary() {
        run(std::string(TOMEX_VARIANT_OBJECTS) + " . && " + place +
            "/bin/tomex -rc libvector.a vector_plain.o vector_fpu.o vector_media.o vector_wide.o");
    }
};

TEST_F(LinkingExample, PrintsTheVariantsOfASymbol) {
    makeLibrary();
    const CommandResult found = variants("libvector.a vector_length");
    EXPECT_EQ(found.status, 0) << found.error;
    EXPECT_EQ(found.output, "vector_plain.o  yes   -                                      "
                            "$FCH_ISAv2$QEL_ISAv5$IEEE1$IW\n"
                            "vector_fpu.o    no    $QEL_ISAv3$ZLTv2$PE$IEEE1              "
                            "$FCH_ISAv2$QEL_ISAv5$ZLTv2$PE$IEEE1$IW\n"
                            "vector_media.o  no    $QEL_ISAv3$WMMX$IEEE1                  "
                            "$FCH_ISAv2$QEL_ISAv5$WMMX$IEEE1$IW\n"
                            "vector_wide.o   no    $FCH_ISAv4$QEL_ISAv7$N$ZLTv3$PE$IEEE1  "
                            "$FCH_ISAv4$QEL_ISAv7$N$ZLTv3$PE$IEEE1$IW\n");
    EXPECT_EQ(found.error, "");
}

TEST_F(LinkingExample, PrintsThatNoVariantIsTheBase) {
    makeLibrary();
    run(std::string(place) + "/bin/tomex -d libvector.a vector_plain.o vector_wide.o");
    const CommandResult found = variants("libvector.a dot_product");
    EXPECT_EQ(found.status, 0) << found.error;
    EXPECT_EQ(found.output, "vector_fpu.o    no    $QEL_ISAv3$ZLTv2$PE$IEEE1  "
                            "$FCH_ISAv2$QEL_ISAv5$ZLTv2$PE$IEEE1$IW\n"
                            "vector_media.o  no    $QEL_ISAv3$WMMX$IEEE1      "
                            "$FCH_ISAv2$QEL_ISAv5$WMMX$IEEE1$IW\n");
}

// The base may have a decoration, too: it is the one that has nothing beyond what all have.
TEST_F(LinkingExample, PrintsADecoratedBase) {
    testsupport::ArchiveBuilder builder;
    builder.add("small.o", "1").add("large.o", "22");
    builder.symbol("sine$$BuildAttributes$$QEL_ISAv3$ZLTv2$PE$IEEE1", 1);
    builder.symbol("sine$$BuildAttributes$$QEL_ISAv3$IEEE1", 0);
    folder->write("lib.a", builder.bytes());
    EXPECT_EQ(variants("lib.a sine").output, "large.o  no    $QEL_ISAv3$ZLTv2$PE$IEEE1  -\n"
                                             "small.o  yes   $QEL_ISAv3$IEEE1           -\n");
}

// An object may state how it was built in its attributes section, or not at all.
TEST_F(LinkingExample, PrintsWhatObjectsStateInTheirSections) {
    testsupport::ElfBuilder silent;
    const size_t text = silent.add({.name = ".text", .flags = 6, .contents = "code"});
    silent.addSymbols({{.name = "f", .section = static_cast<uint32_t>(text)}});
    testsupport::ElfBuilder telling = silent;
    // One scope, the file, with one attribute, its architecture (6), with the value 2.
    const std::string scope("\x01\x07\0\0\0\x06\x02", 7);
    const std::string subsection = std::string("\x11\0\0\0qeabi\0", 10) + scope;
    telling.add({.name = ".QEL.attributes", .type = 0x70000003, .contents = "A" + subsection});
    folder->write("silent.o", silent.bytes());
    folder->write("telling.o", telling.bytes());
    run(std::string(place) + "/bin/tomex -rc lib2.a silent.o telling.o 2>/dev/null");
    EXPECT_EQ(variants("lib2.a f").output,
              "silent.o   yes   -  -\n"
              "telling.o  yes   -  $S$A:L22$X:L11$S22$IEEE1$IW$USESV6$~STKCKD$USESV7$~SHL$OSPACE"
              "$EBA8$REQ8$EABIv2\n");
}

// Members that are no objects.
TEST_F(LinkingExample, PrintsWhatTheTableSaysOfOtherMembers) {
    testsupport::ArchiveBuilder builder;
    builder.add("plain.o", "1").add("fast.o", "22").add("other.o", "333");
    builder.symbol("sine", 0).symbol("sine$$BuildAttributes$$IEEE1", 1).symbol("cosine", 2);
    folder->write("lib.a", builder.bytes());
    EXPECT_EQ(variants("lib.a sine").output, "plain.o  yes   -       -\n"
                                             "fast.o   no    $IEEE1  -\n");
    EXPECT_EQ(variants("lib.a cosine").output, "other.o  yes   -  -\n");
}

TEST_F(LinkingExample, SaysWhatIsWrong) {
    folder->write("empty.a", testsupport::ArchiveBuilder().bytes());
    const CommandResult missing = variants("empty.a tangent");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "");
    EXPECT_EQ(missing.error, "variants: no symbol 'tangent' in 'empty.a'\n");
    const CommandResult unreadable = variants("no.a sine");
    EXPECT_EQ(unreadable.status, 2);
    EXPECT_EQ(unreadable.output, "");
    EXPECT_NE(unreadable.error.find("No such file"), std::string::npos) << unreadable.error;
    const CommandResult unused = variants("");
    EXPECT_EQ(unused.status, 2);
    EXPECT_EQ(unused.error, "usage: variants LIBRARY SYMBOL\n");
}

} // namespace
} // namespace packagetest
