// What loaders and other tools make of libraries that parts were taken out of. The host's linker
// made the libraries.
#include "elfext/interface/prune_criteria.h"
#include "elfext/interface/relocation.h"
#include "tests/elfext/round_trip_fixtures.h"
#include "tests/support/retarget.h"
#include "tests/support/witness_presence.h"

namespace elfext::test {
namespace {

using testsupport::CommandResult;
using testsupport::HeaderField;
using testsupport::Witness;

// Prints what the functions give whose names follow that of the library; a name may have a version
// behind an "@".
constexpr const char* loaderSource = R"(
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
int main(int count, char** words) {
    void* library = dlopen(words[1], RTLD_LAZY);
    if (library == NULL) { puts(dlerror()); return 1; }
    for (int i = 2; i < count; ++i) {
        char* version = strchr(words[i], '@');
        if (version != NULL) { *version++ = '\0'; }
        int (*function)(void) = version != NULL ? dlvsym(library, words[i], version)
                                                : dlsym(library, words[i]);
        if (function != NULL) { printf("%s=%d ", words[i], function()); }
        else { printf("%s ", words[i]); }
    }
    return 0;
}
)";

class SymbolNamed : public PruneCriteria {
public:
    explicit SymbolNamed(std::string name) : m_Name(std::move(name)) {}
    bool matchesSymbol(const Symbol* symbol) override {
        return symbol->isDynamic() && textOf(symbol->getName()) == m_Name;
    }

private:
    std::string m_Name;
};

class SectionNamed : public PruneCriteria {
public:
    explicit SectionNamed(std::string name) : m_Name(std::move(name)) {}
    bool matchesSection(const Section* section) override {
        return textOf(section->getName()) == m_Name;
    }

private:
    std::string m_Name;
};

// Dynamic relocations, all of them or those at one address.
class DynamicRelocations : public PruneCriteria {
public:
    explicit DynamicRelocations(std::optional<uint64_t> address = {}) : m_Address(address) {}
    bool matchesRelocation(const Relocation* relocation) override {
        return relocation->isDynamic() &&
               relocation->getOffset() == m_Address.value_or(relocation->getOffset());
    }

private:
    std::optional<uint64_t> m_Address;
};

class PruneWitnessTest : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        if (!testsupport::present(compiler) || !testsupport::present(readelf)) {
            GTEST_SKIP() << "needs a compiler and readelf";
        }
        folder.write("loader.c", loaderSource);
        expectOutput("cc loader.c -o loader -ldl", "");
    }

    // Makes "lib.so" of a C source.
    void makeLibrary(const std::string& source, const std::string& options) {
        folder.write("lib.c", source);
        expectOutput("cc -O1 -shared -fPIC " + options + " lib.c -o lib.so", "");
        m_FaultsBefore = faults();
    }
    // Takes out what the criteria match. What is read again is what was left in memory.
    void prune(PruneCriteria& criteria) {
        std::string bytes = folder.read("lib.so");
        const std::optional<uint16_t> machine = testsupport::retargetElf(bytes);
        ASSERT_TRUE(machine.has_value());
        RecordingHandler handler(true);
        ObjectModule module;
        ASSERT_TRUE(readBytes(bytes, module, handler));
        module.prune(criteria);
        std::string written = writtenBytes(module);
        ObjectModule again;
        ASSERT_TRUE(readBytes(written, again, handler));
        EXPECT_EQ(differenceAfterRemoval(module, again), "");
        EXPECT_EQ(handler.m_Reports, Reports());
        setHeaderField(written, HeaderField::Machine, *machine);
        folder.write("lib.so", written);
        EXPECT_EQ(faults(), m_FaultsBefore);
    }

    std::string outputOf(const std::string& line) {
        const CommandResult result = shell.run(folder, {"-c", line});
        EXPECT_EQ(result.status, 0) << line << "\n" << result.error;
        return result.output;
    }
    void expectOutput(const std::string& line, const std::string& output) {
        EXPECT_EQ(outputOf(line), output) << line;
    }
    // What readelf finds fault with.
    std::string faults() {
        return outputOf("readelf -a -W lib.so 2>&1 | grep -i -e corrupt -e warning: -e error: "
                        "-e '<unknown>' || true");
    }
    // True if the dynamic section has the tag of this name.
    bool hasTag(const std::string& name) {
        return outputOf("readelf -d -W lib.so").find("(" + name + ")") != std::string::npos;
    }
    uint64_t countLines(const std::string& command, const std::string& word) {
        return std::stoull(outputOf(command + " | grep -c -e '" + word + "' || true"));
    }

    testsupport::ScratchFolder folder;
    const Witness shell{"sh"};
    const Witness compiler{"cc"};
    const Witness readelf{"readelf"};

private:
    std::string m_FaultsBefore;
};

TEST_F(PruneWitnessTest, APrunedDynamicSymbolIsGoneAndTheOthersAreFound) {
    std::string source;
    for (int i = 0; i < 30; ++i) {
        const std::string number = std::to_string(i);
        source += "int f" + number + "(void) { return " + number + "; }\n";
    }
    source += "extern int missing(void); int g(void) { return missing(); }\n";
    for (const char* const style : {"gnu", "sysv", "both"}) {
        makeLibrary(source, std::string("-Wl,--hash-style=") + style);
        for (const int gone : {7, 0, 29}) {
            SymbolNamed criteria("f" + std::to_string(gone));
            prune(criteria);
        }
        std::string names;
        std::string expected;
        for (int i = 0; i < 30; ++i) {
            const std::string number = std::to_string(i);
            const bool isGone = i == 7 || i == 0 || i == 29;
            names += " f" + number;
            expected += "f" + number + (isGone ? " " : "=" + number + " ");
        }
        expectOutput("./loader ./lib.so" + names, expected);
        EXPECT_EQ(countLines("readelf --dyn-syms -W lib.so", " f7$"), 0U) << style;
    }
}

TEST_F(PruneWitnessTest, ALibraryWithoutAnythingToFindStillLoads) {
    makeLibrary("int only(void) { return 1; }", "-nostdlib -Wl,--hash-style=gnu");
    SymbolNamed criteria("only");
    prune(criteria);
    expectOutput("./loader ./lib.so only", "only ");
}

TEST_F(PruneWitnessTest, VersionsStayHiddenWhenASymbolGoes) {
    folder.write("versions", "V1 { global: foo; bar; local: *; };\nV2 { } V1;\n");
    makeLibrary(R"(
__asm__(".symver foo_old,foo@V1");
__asm__(".symver foo_new,foo@@V2");
int foo_old(void) { return 1; }
int foo_new(void) { return 2; }
int bar(void) { return 3; }
)",
                "-nostdlib -Wl,--version-script=versions");
    SymbolNamed criteria("bar");
    prune(criteria);
    expectOutput("./loader ./lib.so foo foo@V1 foo@V2 bar", "foo=2 foo=1 foo=2 bar ");
    EXPECT_EQ(countLines("readelf --dyn-syms -W lib.so", " foo@V1"), 1U);
    EXPECT_EQ(countLines("readelf --dyn-syms -W lib.so", " foo@@V2"), 1U);
}

TEST_F(PruneWitnessTest, ADynamicRelocationGoesByItself) {
    makeLibrary(R"(
static int cells[3] = {5, 6, 7};
int* a = &cells[0];
int* b = &cells[1];
int* c = &cells[2];
static int* volatile hidden_a = &cells[0];
static int* volatile hidden_b = &cells[1];
static int* volatile hidden_c = &cells[2];
int get_a(void) { return *hidden_a; }
int get_b(void) { return (unsigned long)hidden_b > 0xFFFFFF; } // not as it is in the file
int get_c(void) { return *hidden_c + *c; }
)",
                "");
    std::string place = outputOf("readelf -s -W lib.so | grep ' hidden_b$' | awk '{print $2}'");
    const uint64_t before = countLines("readelf -r -W lib.so", "_RELATIVE");
    DynamicRelocations criteria(std::stoull(place, nullptr, 16));
    prune(criteria);
    expectOutput("./loader ./lib.so get_a get_b get_c", "get_a=5 get_b=0 get_c=14 ");
    EXPECT_EQ(countLines("readelf -r -W lib.so", "_RELATIVE"), before - 1);
    expectOutput("readelf -d -W lib.so | grep -e '(REL[A]*COUNT)' | awk '{print $3}'",
                 std::to_string(before - 1) + "\n");
}

TEST_F(PruneWitnessTest, TagsOfRelocationsGoWithTheLastOne) {
    makeLibrary(R"(
static int cell = 5;
int* volatile pointer = &cell;
extern int missing(void);
int call(void) { return missing(); }
int get(void) { return 4; }
)",
                "-nostartfiles -Wl,-z,lazy");
    ASSERT_TRUE(hasTag("JMPREL"));
    ASSERT_TRUE(hasTag("RELA") || hasTag("REL"));
    DynamicRelocations criteria;
    prune(criteria);
    for (const char* const tag : {"RELA", "RELASZ", "RELAENT", "RELACOUNT", "REL", "RELSZ",
                                  "RELENT", "RELCOUNT", "JMPREL", "PLTRELSZ", "PLTREL"}) {
        EXPECT_FALSE(hasTag(tag)) << tag;
    }
    EXPECT_TRUE(hasTag("SYMTAB"));
    expectOutput("./loader ./lib.so get", "get=4 ");
}

TEST_F(PruneWitnessTest, ATableOfCallsGoesAlone) {
    makeLibrary(R"(
static int cell = 5;
static int* volatile pointer = &cell;
extern int missing(void);
int call(void) { return missing(); }
int get(void) { return *pointer; }
)",
                "-nostartfiles -Wl,-z,lazy");
    std::string place = outputOf("readelf -r -W lib.so | grep ' missing ' | awk '{print $1}'");
    DynamicRelocations criteria(std::stoull(place, nullptr, 16));
    prune(criteria);
    EXPECT_FALSE(hasTag("JMPREL") || hasTag("PLTRELSZ") || hasTag("PLTREL"));
    EXPECT_TRUE(hasTag("RELA") || hasTag("REL"));
    expectOutput("./loader ./lib.so get", "get=5 ");
}

TEST_F(PruneWitnessTest, AHashTableThatIsRemovedTakesItsTagAlong) {
    const std::string source = "int one(void) { return 1; } int two(void) { return 2; }";
    for (const auto& [section, tag, other] :
         {std::tuple{".gnu.hash", "GNU_HASH", "HASH"}, std::tuple{".hash", "HASH", "GNU_HASH"}}) {
        makeLibrary(source, "-Wl,--hash-style=both");
        SectionNamed criteria(section);
        prune(criteria);
        EXPECT_FALSE(hasTag(tag));
        EXPECT_TRUE(hasTag(other));
        expectOutput("./loader ./lib.so one two", "one=1 two=2 ");
    }
}

} // namespace
} // namespace elfext::test
