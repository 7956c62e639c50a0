// The libraries are installed into a scratch folder; the example is configured, built and run
// against what is there.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/archive_builder.h"
#include "tests/support/witness.h"

namespace packagetest {
namespace {

namespace fs = std::filesystem;

using testsupport::CommandResult;

class PackageTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<testsupport::ScratchFolder>();
        run(std::string(TOMEX_CMAKE) + " --install " + TOMEX_BUILD_FOLDER +
            " --component development --prefix installed");
    }
    static void TearDownTestSuite() { folder.reset(); }

    static CommandResult sh(const std::string& line) {
        return testsupport::Witness("sh").run(*folder, {"-c", line});
    }
    static void run(const std::string& line) {
        const CommandResult result = sh(line);
        ASSERT_EQ(result.status, 0) << line << "\n" << result.output << result.error;
    }
    // Configures and builds a project's folder as `name`.
    static void build(const std::string& project, const std::string& name) {
        run(std::string(TOMEX_CMAKE) + " -S " + project + " -B " + name +
            " -DCMAKE_PREFIX_PATH=" + folder->pathOf("installed") +
            " -DCMAKE_CXX_COMPILER=" + TOMEX_COMPILER + " -DCMAKE_CXX_FLAGS='" +
            TOMEX_COMPILER_FLAGS + "' && " + TOMEX_CMAKE + " --build " + name);
    }

    static inline std::unique_ptr<testsupport::ScratchFolder> folder;
};

TEST_F(PackageTest, TheExamplePrintsTheVariantsOfASymbol) {
    build(std::string(TOMEX_SOURCE_FOLDER) + "/examples/linking", "example");
    testsupport::ArchiveBuilder builder;
    builder.add("plain.o", "1").add("fast.o", "22").add("other.o", "333");
    builder.symbol("sine", 0).symbol("sine$$BuildAttributes$$IEEE1", 1).symbol("cosine", 2);
    folder->write("lib.a", builder.bytes());

    const CommandResult found = sh("example/variants lib.a sine");
    EXPECT_EQ(found.status, 0) << found.error;
    EXPECT_EQ(found.output, "plain.o\nfast.o $IEEE1\n");
    EXPECT_EQ(found.error, "");
    EXPECT_EQ(sh("example/variants lib.a cosine").output, "other.o\n");
    const CommandResult missing = sh("example/variants lib.a tangent");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "");
    const CommandResult unreadable = sh("example/variants no.a sine");
    EXPECT_EQ(unreadable.status, 2);
    EXPECT_NE(unreadable.error.find("No such file"), std::string::npos);
    EXPECT_EQ(sh("example/variants").status, 2);
}

// Each public header stands on its own, with nothing but what is installed.
TEST_F(PackageTest, EveryInstalledHeaderCompiles) {
    const std::string root = folder->pathOf("installed/include/tomex");
    std::string source;
    size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) {
            source += "#include \"" + fs::relative(entry.path(), root).string() + "\"\n";
            ++count;
        }
    }
    EXPECT_GT(count, 80U);
    folder->write("headers/all.cpp", source + "int main() {}\n");
    folder->write("headers/CMakeLists.txt",
                  "cmake_minimum_required(VERSION 3.21)\nproject(headers LANGUAGES CXX)\n"
                  "find_package(tomex 1.0 REQUIRED)\nadd_executable(headers all.cpp)\n"
                  "target_link_libraries(headers PRIVATE tomex::arlib tomex::elfext)\n");
    build("headers", "headers/build");
}

TEST_F(PackageTest, AnotherMajorVersionIsNotFound) {
    folder->write("later/CMakeLists.txt",
                  "cmake_minimum_required(VERSION 3.21)\nproject(later LANGUAGES CXX)\n"
                  "find_package(tomex 2.0 REQUIRED)\n");
    const CommandResult result =
        sh(std::string(TOMEX_CMAKE) + " -S later -B later/build -DCMAKE_PREFIX_PATH=" +
           folder->pathOf("installed") + " -DCMAKE_CXX_COMPILER=" + TOMEX_COMPILER);
    EXPECT_NE(result.status, 0);
}

} // namespace
} // namespace packagetest
