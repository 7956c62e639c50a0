// Members of the host's static libraries, printed and extracted: to the byte what `ar` prints and
// extracts.
#include "tests/command/real_input_case.h"

namespace commandtest {
namespace {

using testsupport::ArchiveRules;

// All of them where that takes seconds.
constexpr size_t many = testsupport::sanitizedBuild ? 48 : 1000;
constexpr size_t few = testsupport::sanitizedBuild ? 12 : 48;

class RealInputContents : public RealInputCase {
protected:
    RealInputContents() : libraries(someHostLibraries(many)) {}

    // Runs in the subfolder "out", which is empty before and after.
    std::map<std::string, std::string> filesAfter(Command command) const {
        folder.makeFolder("out");
        command.folder = folder.pathOf("out");
        const CommandResult result = testsupport::run(command);
        EXPECT_TRUE(result.exitedWith(0)) << result;
        EXPECT_EQ(result.output, "");
        std::map<std::string, std::string> files;
        for (const std::string& name : folder.entries("out")) {
            files[name] = folder.read("out/" + name);
        }
        folder.remove("out");
        return files;
    }
    static ParsedArchive parsed(const std::string& library) {
        ParsedArchive result = testsupport::parseArchive(wholeFile(library), ArchiveRules::AnyTool);
        EXPECT_EQ(result.error, "") << library;
        return result;
    }

    const std::vector<std::string> libraries;
};

TEST_F(RealInputContents, PrintsTheBytesThatArPrints) {
    ASSERT_FALSE(libraries.empty());
    const bool asked = present(ar);
    for (const std::string& library : libraries) {
        const std::string bytes = prints({"-p", library});
        EXPECT_TRUE(bytes == allContents(parsed(library))) << library;
        if (asked) {
            EXPECT_TRUE(bytes == says(ar, {"p", library})) << library;
        }
    }
}

TEST_F(RealInputContents, ExtractsTheMembersBytes) {
    ASSERT_FALSE(libraries.empty());
    for (const std::string& library : libraries) {
        EXPECT_TRUE(filesAfter(testsupport::tomex(folder, {"-x", library})) ==
                    filesOf(parsed(library)))
            << library;
    }
}

TEST_F(RealInputContents, ExtractsWhatArExtracts) {
    if (!present(ar)) {
        return;
    }
    for (const std::string& library : someHostLibraries(few)) {
        EXPECT_TRUE(filesAfter(testsupport::tomex(folder, {"-x", library})) ==
                    filesAfter(testsupport::tool(folder, ar.path(), {"x", library})))
            << library;
    }
}

TEST_F(RealInputContents, ExtractsOneOfMany) {
    for (const std::string& library : someHostLibraries(few)) {
        const ParsedArchive archiveOfHost = parsed(library);
        const Words names = archiveOfHost.names();
        if (names.empty()) {
            continue;
        }
        const std::string& name = names[names.size() / 2];
        const auto files = filesAfter(testsupport::tomex(folder, {"-x", library, name}));
        ASSERT_TRUE(files.contains(name)) << library;
        EXPECT_TRUE(files.at(name) == filesOf(archiveOfHost).at(name)) << library;
    }
}

} // namespace
} // namespace commandtest
