// What other tools make of rewritten files: the host's readelf finds no fault in them, its linkers
// link rewritten objects into programs that run, and rewritten programs and libraries run.
#include "tests/elfext/round_trip_fixtures.h"
#include "tests/support/host_libraries.h"
#include "tests/support/retarget.h"
#include "tests/support/whole_file.h"
#include "tests/support/witness_presence.h"

#include <filesystem>

namespace elfext::test {
namespace {

using testsupport::CommandResult;
using testsupport::HeaderField;
using testsupport::present;
using testsupport::Witness;

// A library and a program with what compilers make of C++: groups, constructors, thread-local
// storage, weak and common symbols, exceptions.
constexpr const char* librarySource = R"(
#include <string>
#include <stdexcept>
#include <vector>
template <typename T> struct Counter { static inline int live = 0; Counter() { ++live; } };
thread_local int perThread = 5;
static Counter<int> one;
static Counter<long> two;
int table[1000];
__attribute__((weak)) int weakValue() { return 3; }
__attribute__((aligned(1))) int oddValue() { return 4; }
std::string describe(const std::vector<int>& numbers) {
    std::string text;
    for (int number : numbers) { text += std::to_string(number) + ","; }
    if (numbers.empty()) { throw std::runtime_error("nothing"); }
    return text + std::to_string(Counter<int>::live + Counter<long>::live + perThread);
}
)";
constexpr const char* programSource = R"(
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>
std::string describe(const std::vector<int>& numbers);
int weakValue();
int oddValue();
int main() {
    try { describe({}); } catch (const std::runtime_error& error) { std::puts(error.what()); }
    std::printf("%s %d %d\n", describe({1, 2, 3}).c_str(), weakValue(), oddValue());
}
)";
constexpr const char* programOutput = "nothing\n1,2,3,7 3 4\n";

class WriterWitnessTest : public ContainerTest {
protected:
    bool canLink() const { return present(shell) && present(compiler) && present(linker); }
    // Rewrites a file of the host's own machine in place.
    void rewrite(const std::string& name) {
        std::string bytes = folder.read(name);
        const std::optional<uint16_t> machine = testsupport::retargetElf(bytes);
        ASSERT_TRUE(machine.has_value()) << name;
        RoundTrip result = roundTrip(bytes);
        ASSERT_EQ(result.difference, "") << name;
        setHeaderField(result.bytes, HeaderField::Machine, *machine);
        folder.write(name, result.bytes);
        folder.setMode(name, 0755);
    }
    CommandResult sh(const std::string& line) { return shell.run(folder, {"-c", line}); }
    void expectRun(const std::string& line, const std::string& output) {
        const CommandResult result = sh(line);
        EXPECT_EQ(result.status, 0) << line << "\n" << result.error;
        EXPECT_EQ(result.output, output) << line;
    }
    // Compiles both sources with some options and rewrites the objects.
    void makeObjects(const std::string& options) {
        folder.write("library.cpp", librarySource);
        folder.write("program.cpp", programSource);
        expectRun("c++ " + options + " -c library.cpp && c++ " + options + " -c program.cpp", "");
        rewrite("library.o");
        rewrite("program.o");
    }
    // What readelf finds fault with.
    std::string faultsOf(const std::string& bytes) {
        folder.write("file", bytes);
        const CommandResult result = readelf.run(folder, {"-a", "-W", "file"});
        EXPECT_EQ(result.status, 0);
        std::string faults = result.error;
        for (const char* const word : {"<corrupt", "Warning:", "Error:"}) {
            if (result.output.find(word) != std::string::npos) {
                faults += word;
            }
        }
        return faults;
    }

    testsupport::ScratchFolder folder;
    const Witness shell{"sh"};
    const Witness compiler{"c++"};
    const Witness linker{"ld"};
    const Witness readelf{"readelf"};
};

TEST_F(WriterWitnessTest, RewrittenObjectsLinkIntoAProgramThatRuns) {
    if (!canLink()) {
        return;
    }
    for (const char* const options : {"-O0 -g", "-O2 -ffunction-sections -fdata-sections"}) {
        makeObjects(options);
        expectRun("c++ program.o library.o -Wl,--gc-sections -o program && ./program",
                  programOutput);
    }
}

TEST_F(WriterWitnessTest, RewrittenProgramsAndLibrariesRun) {
    if (!canLink()) {
        return;
    }
    const bool canAsk = present(readelf);
    makeObjects("-fPIC -O1");
    for (const char* const style : {"-Wl,--hash-style=both", "-Wl,--hash-style=sysv -Wl,-z,now"}) {
        expectRun(std::string("c++ -shared ") + style +
                      " -Wl,-soname,liblib.so library.o "
                      "-o liblib.so && c++ " +
                      style +
                      " program.o -L. -llib -Wl,-rpath,'$ORIGIN' "
                      "-o program && ./program",
                  programOutput);
        rewrite("liblib.so");
        rewrite("program");
        expectRun("./program", programOutput);
        for (const char* const name : {"program", "liblib.so"}) {
            EXPECT_EQ(canAsk ? faultsOf(folder.read(name)) : "", "") << name;
        }
    }
}

// Linkers leave no room behind the names of a library, so a longer name does not fit.
TEST_F(WriterWitnessTest, ALibraryThatCannotGrowStaysAsItIs) {
    if (!canLink()) {
        return;
    }
    folder.write("lib.c", "int alpha(void) { return 1; }");
    expectRun("c++ -x c -fPIC -shared lib.c -o lib.so", "");
    std::string bytes = folder.read("lib.so");
    ASSERT_TRUE(testsupport::retargetElf(bytes).has_value());
    folder.write("lib.so", bytes);
    RecordingHandler handler(true);
    ObjectModule module;
    ASSERT_TRUE(readBytes(bytes, module, handler));
    module.addNeededLibrary("libanother.so.9");
    EXPECT_FALSE(writeElfFile(folder.pathOf("lib.so").c_str(), &module));
    ASSERT_EQ(handler.m_Reports.size(), 1U);
    EXPECT_NE(handler.m_Reports[0].message.find("overlap in the file"), std::string::npos)
        << handler.m_Reports[0].message;
    EXPECT_EQ(folder.read("lib.so"), bytes);
}

TEST_F(WriterWitnessTest, ReadelfFindsNoFault) {
    if (!present(readelf)) {
        return;
    }
    size_t checked = 0;
    size_t seen = 0;
    for (const std::string& library : testsupport::hostLibraries()) {
        if (checked == 40) {
            break;
        }
        if (std::filesystem::file_size(library) > 1U << 20U) {
            continue;
        }
        std::string bytes = testsupport::wholeFile(library);
        testsupport::forEachMember(
            bytes, [&](std::string& archive, uint64_t offset, uint64_t size) {
                std::string member = archive.substr(offset, size);
                const std::optional<uint16_t> machine = testsupport::retargetElf(member);
                if (!machine.has_value() || checked == 40 || seen++ % 11 != 0) {
                    return;
                }
                RoundTrip result = roundTrip(member);
                ASSERT_EQ(result.difference, "");
                setHeaderField(result.bytes, HeaderField::Machine, *machine);
                const std::string before = faultsOf(archive.substr(offset, size));
                EXPECT_EQ(faultsOf(result.bytes), before) << library << " at " << offset;
                ++checked;
            });
    }
    RecordProperty("objects", static_cast<int>(checked));
    EXPECT_NE(checked, 0U);
}

} // namespace
} // namespace elfext::test
