// Objects as compilers make them for machines of both classes and both byte orders, and a library
// of objects that the host's linkers use.
#include "tests/command/object_witness.h"

#include "tests/support/retarget.h"

namespace commandtest {
namespace {

using testsupport::GenericTarget;

// Functions, data, commons, weak and local symbols, thread-local storage.
const char* const plainSource = R"(
int initialised = 1;
int uninitialised;
const char constants[] = "text";
extern int elsewhere;
static int local_data = 2;
__thread int per_thread;
__thread int per_thread_set = 3;
__attribute__((weak)) int weak_data = 4;
__attribute__((visibility("hidden"))) int hidden_data;
static int local_function(int a) { return a + local_data; }
int function(int a) { return local_function(a) + elsewhere; }
__attribute__((weak)) int weak_function(void) { return function(uninitialised); }
extern int weak_reference(void) __attribute__((weak));
int calls(void) { return weak_reference ? weak_reference() : per_thread; }
extern int other_name(int) __attribute__((alias("function")));
__attribute__((section("own_section"))) int in_own_section = 5;
)";

// Inline functions and templates, which stand in groups.
const char* const groupedSource = R"(
template <class T> struct Box { T value; T get() const { return value; } static int count; };
template <class T> int Box<T>::count = 1;
inline int shared(int a) { static int calls; return a + ++calls; }
int first(int a) { return Box<int>{a}.get() + Box<int>::count + shared(a); }
long second(long a) { return Box<long>{a}.get() + Box<long>::count; }
)";

// Symbols that no compiler makes by itself.
const char* const assembledSource = R"(
__asm__(".globl absolute\n.set absolute, 0x1234\n"
        ".globl strong\n.globl \"a name with blanks\"\n"
        "strong:\n\"a name with blanks\":\n.byte 1\n"
        ".comm common_block,64,16\n.local local_block\n.comm local_block,8,8\n"
        ".section .debug_made,\"\",@progbits\n.globl in_debug\nin_debug:\n.byte 2\n"
        ".section .text.group,\"axG\",@progbits,signature,comdat\n"
        ".globl signature\nsignature:\n.byte 3\n");
)";

struct Compilation {
    const char* name;
    const char* source;
    Words flags;
};

const std::vector<Compilation>& compilations() {
    static const std::vector<Compilation> all = {
        {"plain.o", plainSource, {}},
        {"optimised.o", plainSource, {"-O2"}},
        {"debug.o", plainSource, {"-g", "-O1"}},
        {"commons.o", plainSource, {"-fcommon"}},
        {"a_section_for_each_of_them.o", plainSource, {"-ffunction-sections", "-fdata-sections"}},
        {"independent.o", plainSource, {"-fPIC", "-g3"}},
        {"grouped.o", groupedSource, {"-x", "c++"}},
        {"grouped_sections.o", groupedSource, {"-x", "c++", "-g", "-O2", "-ffunction-sections"}},
        {"unwinding.o", groupedSource, {"-x", "c++", "-fasynchronous-unwind-tables"}},
        {"assembled.o", assembledSource, {}},
        {"empty.o", "", {}},
    };
    return all;
}

class ObjectCompiled : public ObjectWitnessCase,
                       public testing::WithParamInterface<GenericTarget> {};

std::string targetName(const testing::TestParamInfo<GenericTarget>& info) {
    return std::string(info.param.format.is64 ? "Wide" : "Narrow") +
           (info.param.format.littleEndian ? "Little" : "Big");
}

INSTANTIATE_TEST_SUITE_P(Formats, ObjectCompiled, testing::ValuesIn(testsupport::genericTargets()),
                         targetName);

TEST_P(ObjectCompiled, ObjectsDefineWhatNmSays) {
    const Witness compiler{"clang"};
    if (!present(compiler) || !present(llvmNm)) {
        return;
    }
    Words words = {"-rc", "lib.a"};
    for (const Compilation& compilation : compilations()) {
        const ScratchFolder own;
        file(compilation.name,
             compileRetargeted(own, GetParam(), compilation.source, compilation.flags));
        words.emplace_back(compilation.name);
    }
    // Builds of one source, of which none says how it was built.
    const std::string warnings =
        "Warning: L6876W: Minor variants of archive member 'plain.o' include multiple base "
        "variants\n"
        "Warning: L6876W: Minor variants of archive member 'grouped.o' include multiple base "
        "variants\n";
    EXPECT_TRUE(ended(tomex(words), 0, "", warnings));
    Words expected = byMember(definedIn(llvmNm, "lib.a"));
    EXPECT_GT(expected.size(), 60U);
    Words withDebug = expected;
    std::erase(expected, "in_debug in assembled.o");
    EXPECT_EQ(withDebug.size(), expected.size() + 1);
    EXPECT_TRUE(same(byMember(listedIn(archive())), expected));
    EXPECT_TRUE(ended(tomex({"--debug_symbols", "-s", "lib.a"}), 0, "", warnings));
    EXPECT_TRUE(same(byMember(listedIn(archive())), withDebug));
}

// A program whose parts are found through the table alone: each of them needs the next one.
class ObjectLinked : public ObjectWitnessCase {
protected:
    const Witness compiler{"clang"};

    struct Part {
        const char* file;
        const char* source;
    };
    static const std::vector<Part>& parts() {
        static const std::vector<Part> all = {
            {"chain_one.c",
             "int chain_two(int); int chain_one(int a) { return chain_two(a) + 1; }"},
            {"chain_two_with_a_long_name.c",
             "extern int counter; __attribute__((weak)) int chain_three(int);"
             "int chain_two(int a) { return chain_three(a) + counter; }"},
            {"three.c",
             "int common_block[4]; int chain_three(int a) { return a + common_block[2]; }"
             "void three_is_wanted(void) {}"},
            {"data.c", "int counter = 20;"},
            {"unused.c", "int no_such_function(void); int unused(void) { return "
                         "no_such_function(); }"},
        };
        return all;
    }

    // Makes "lib.a" of retargeted objects and sets their machine back in the finished file.
    void makeLibrary(const Words& options) const {
        Words words = options;
        words.insert(words.end(), {"-rc", "lib.a"});
        uint16_t machine = 0;
        for (const Part& part : parts()) {
            folder.write(part.file, part.source);
            const std::string object = stem(part.file) + ".o";
            says(compiler, {"-c", "-fcommon", part.file, "-o", object});
            std::string bytes = folder.read(object);
            machine = testsupport::retargetElf(bytes).value_or(0);
            folder.write(object, bytes);
            words.push_back(object);
        }
        EXPECT_TRUE(ended(tomex(words), 0, "", ""));
        std::string library = folder.read("lib.a");
        testsupport::setArchiveMachine(library, machine);
        folder.write("lib.a", library);
    }
    CommandResult link(const std::string& linker) const {
        folder.write("main.c", "int chain_one(int); void three_is_wanted(void);"
                               "int main(void) { three_is_wanted(); return chain_one(3) - 24; }");
        return compiler.run(folder, {"main.c", "lib.a", "-fuse-ld=" + linker, "-o", "program"});
    }
    void linksAndRuns(const std::string& linker) const {
        makeLibrary({});
        const CommandResult linked = link(linker);
        EXPECT_TRUE(linked.exitedWith(0)) << linked;
        const CommandResult ran = testsupport::runTool(folder, folder.pathOf("program"), {});
        EXPECT_TRUE(ran.exitedWith(0)) << ran;
    }

private:
    static std::string stem(const std::string& source) {
        return source.substr(0, source.size() - 2);
    }
};

TEST_F(ObjectLinked, ByTheUsualLinker) {
    if (present(compiler) && present(Witness("ld"))) {
        linksAndRuns("bfd");
    }
}

TEST_F(ObjectLinked, ByLld) {
    if (present(compiler) && present(Witness("ld.lld"))) {
        linksAndRuns("lld");
    }
}

// What the two tests above show: without the table there is no program.
TEST_F(ObjectLinked, NothingIsFoundWithoutTheTable) {
    if (!present(compiler) || !present(Witness("ld"))) {
        return;
    }
    makeLibrary({"-n"});
    const CommandResult linked = link("bfd");
    EXPECT_FALSE(linked.exitedWith(0)) << linked;
    EXPECT_NE(linked.error.find("index"), std::string::npos) << linked;
}

} // namespace
} // namespace commandtest
