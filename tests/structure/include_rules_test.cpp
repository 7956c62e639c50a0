// The rooms of the house and who may enter which: every #include line is walked.

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/structure/source_files.h"

namespace structure {
namespace {

const std::vector<std::string> rooms = {"alloclib", "platform", "tabledrivenparser",
                                        "messages", "elfext",   "attributes",
                                        "arlib",    "tomex"};

// What elfext holds is two rooms: containers, which attributes may use, and the object module,
// which uses attributes.
const std::set<std::string> containers = {"array.h",
                                          "array_growth.h",
                                          "buffer.h",
                                          "byte_order.h",
                                          "destruction_manager.h",
                                          "fast_array.h",
                                          "fast_hash_set.h",
                                          "fast_hash_table.h",
                                          "fast_linked_list.h",
                                          "hash_chains.h",
                                          "hash_functions.h",
                                          "hash_set.h",
                                          "hash_table.h",
                                          "inline_list.h",
                                          "range.h",
                                          "relocation_list.h",
                                          "section_list.h",
                                          "sort.h",
                                          "stringlett.h",
                                          "symbol_list.h",
                                          "buffer.cpp",
                                          "destruction_manager.cpp",
                                          "sort.cpp"};

const std::map<std::string, std::set<std::string>> mayUse = {
    {"alloclib", {}},
    {"platform", {"alloclib"}},
    {"tabledrivenparser", {"alloclib", "platform"}},
    {"messages", {"alloclib", "platform", "tabledrivenparser"}},
    {"containers", {"alloclib", "platform"}},
    {"attributes", {"alloclib", "platform", "containers"}},
    {"elfext", {"alloclib", "platform", "containers", "attributes"}},
    {"arlib", {"alloclib", "platform", "containers", "attributes", "elfext"}},
    {"tomex",
     {"alloclib", "platform", "tabledrivenparser", "messages", "containers", "attributes", "elfext",
      "arlib"}},
};

std::string leafOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string roomOf(const std::string& path) {
    const std::string folder = path.substr(0, path.find('/'));
    return folder == "elfext" && containers.contains(leafOf(path)) ? "containers" : folder;
}

struct Include {
    SourceLine line;
    std::string target;
};

std::vector<Include> ownIncludes() {
    std::vector<Include> includes;
    for (const std::string& room : rooms) {
        for (const SourceLine& line : linesBelow(room)) {
            constexpr std::string_view directive = "#include \"";
            if (line.text.starts_with(directive)) {
                const size_t end = line.text.find('"', directive.size());
                includes.push_back(
                    {line, line.text.substr(directive.size(), end - directive.size())});
            }
        }
    }
    return includes;
}

TEST(IncludeRules, ThereAreIncludesToWalk) {
    EXPECT_GT(ownIncludes().size(), 200U);
}

TEST(IncludeRules, ARoomEntersOnlyTheRoomsAboveIt) {
    for (const Include& include : ownIncludes()) {
        const std::string from = roomOf(include.line.file);
        const std::string to = roomOf(include.target);
        ASSERT_TRUE(mayUse.contains(from)) << include.line.file << " is in no room";
        ASSERT_TRUE(mayUse.contains(to))
            << include.line.file << ":" << include.line.number << ": " << include.target;
        EXPECT_TRUE(from == to || mayUse.at(from).contains(to))
            << include.line.file << ":" << include.line.number << " includes " << include.target;
    }
}

TEST(IncludeRules, WhatARoomHoldsInSrcIsItsOwn) {
    for (const Include& include : ownIncludes()) {
        const std::string fromFolder = include.line.file.substr(0, include.line.file.find('/'));
        const std::string toFolder = include.target.substr(0, include.target.find('/'));
        const bool isPrivate = include.target.starts_with(toFolder + "/src/");
        EXPECT_TRUE(!isPrivate || fromFolder == toFolder)
            << include.line.file << ":" << include.line.number << " includes " << include.target;
    }
}

TEST(IncludeRules, InterfacesIncludeOnlyInterfaces) {
    for (const Include& include : ownIncludes()) {
        if (include.line.file.find("/interface/") != std::string::npos) {
            EXPECT_NE(include.target.find("/interface/"), std::string::npos)
                << include.line.file << ":" << include.line.number << " includes "
                << include.target;
        }
    }
}

using Graph = std::map<std::string, std::set<std::string>>;

// A way from a file back to itself, or nothing.
bool findCircle(const Graph& graph, const std::string& file, std::vector<std::string>& way,
                std::set<std::string>& done) {
    if (std::find(way.begin(), way.end(), file) != way.end()) {
        way.push_back(file);
        return true;
    }
    if (!done.insert(file).second || !graph.contains(file)) {
        return false;
    }
    way.push_back(file);
    for (const std::string& next : graph.at(file)) {
        if (findCircle(graph, next, way, done)) {
            return true;
        }
    }
    way.pop_back();
    return false;
}

TEST(IncludeRules, ThereAreNoCircles) {
    Graph graph;
    for (const Include& include : ownIncludes()) {
        graph[include.line.file].insert(include.target);
    }
    std::set<std::string> done;
    for (const auto& [file, targets] : graph) {
        std::vector<std::string> way;
        if (findCircle(graph, file, way, done)) {
            std::string text;
            for (const std::string& step : way) {
                text += step + " ";
            }
            FAIL() << text;
        }
    }
}

TEST(IncludeRules, CircleSearchFindsACircle) {
    const Graph graph = {{"a", {"b"}}, {"b", {"c"}}, {"c", {"a"}}};
    std::vector<std::string> way;
    std::set<std::string> done;
    EXPECT_TRUE(findCircle(graph, "a", way, done));
}

} // namespace
} // namespace structure
