// Texts reach the user through the message library alone. The allocators are below it and write
// their last words themselves; internal checks have an output of last resort; sizes are printed to
// whatever stream somebody hands in.

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/structure/source_files.h"

namespace structure {
namespace {

// The last one writes object files, also to streams that it is given.
const std::set<std::string> mayPrint = {"platform/src/internal_check.cpp",
                                        "elfext/src/sizes_statistics_print.cpp",
                                        "elfext/src/elf_object_module_writer.cpp"};

// Each call that is looked for has one of these in its name. The regular expression takes a
// thousand times as long to say that a line holds none.
bool mightPrint(const std::string& code) {
    static const char* const parts[] = {"print",   "put",  "write", "perror",
                                        "psignal", "cout", "cerr",  "clog"};
    return std::any_of(std::begin(parts), std::end(parts),
                       [&code](const char* part) { return code.find(part) != std::string::npos; });
}

bool prints(const std::string& line) {
    static const std::regex call(
        R"(\b(v?[fd]?w?printf|f?puts|f?putw?c|putw?char|fwrite|fputws|perror|psignal)(_unlocked)?\s*\(|\bstd::(w?cout|w?cerr|w?clog)\b|\bstd::print|\bwrite\s*\(\s*(STD(OUT|ERR)_FILENO|[12])\b)");
    const std::string code = line.substr(0, line.find("//"));
    return mightPrint(code) && std::regex_search(code, call);
}

TEST(PrintingRules, ARecogniserThatFindsCalls) {
    EXPECT_TRUE(prints("    std::printf(\"x\");"));
    EXPECT_TRUE(prints("    fputs(text, stderr);"));
    EXPECT_TRUE(prints("    std::cerr << x;"));
    EXPECT_TRUE(prints("    dprintf(2, text);"));
    EXPECT_TRUE(prints("    ::write(STDERR_FILENO, text, 3);"));
    EXPECT_TRUE(prints("    fwrite_unlocked(text, 1, 3, stdout);"));
    EXPECT_TRUE(prints("    putwchar(L'x'); perror(text); psignal(2, text);"));
    EXPECT_FALSE(prints("    m_Output.write(bytes, 1);"));
    EXPECT_FALSE(prints("    std::snprintf(text, sizeof text, \"x\");"));
    EXPECT_FALSE(prints("    // printf(\"x\")"));
    EXPECT_FALSE(prints("    messages::printText(\"x\");"));
}

TEST(PrintingRules, NobodyElsePrints) {
    for (const char* room :
         {"platform", "tabledrivenparser", "elfext", "attributes", "arlib", "tomex"}) {
        for (const SourceLine& line : linesBelow(room)) {
            EXPECT_TRUE(!prints(line.text) || mayPrint.contains(line.file))
                << line.file << ":" << line.number << ": " << line.text;
        }
    }
}

} // namespace
} // namespace structure
