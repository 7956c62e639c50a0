// Real objects: all of the host's static libraries, and its programs and shared libraries, with
// their machine made one that the tool takes.
#include "tests/command/object_witness.h"

#include <filesystem>
#include <set>

#include "tests/support/retarget.h"

namespace commandtest {
namespace {

namespace fs = std::filesystem;

using testsupport::ArchiveRules;
using testsupport::HeaderField;

class ObjectRealInput : public ObjectWitnessCase {
protected:
    // Programs and libraries below these folders of at most `largest` bytes, each once.
    static Words images(const Words& folders, uint64_t largest) {
        std::set<std::string> found;
        for (const std::string& name : folders) {
            std::error_code failure;
            fs::recursive_directory_iterator entry(
                name, fs::directory_options::skip_permission_denied, failure);
            for (; !failure && entry != fs::recursive_directory_iterator();
                 entry.increment(failure)) {
                std::error_code ignored;
                if (entry->is_regular_file(ignored) && entry->file_size(ignored) <= largest &&
                    isImage(entry->path().string())) {
                    found.insert(fs::canonical(entry->path(), ignored).string());
                }
            }
        }
        return {found.begin(), found.end()};
    }
    // At most `count` of them, evenly spread.
    static Words some(const Words& all, size_t count) {
        const size_t step = (all.size() + count - 1) / count;
        Words chosen;
        for (size_t i = 0; i < all.size(); i += step) {
            chosen.push_back(all[i]);
        }
        return chosen;
    }

private:
    static bool isImage(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::string head(64, '\0');
        file.read(head.data(), static_cast<std::streamsize>(head.size()));
        if (!file || !testsupport::isElf(head)) {
            return false;
        }
        const uint64_t type = headerField(head, HeaderField::Type);
        return type == 2 || type == 3;
    }
};

TEST_F(ObjectRealInput, HostLibrariesDefineWhatNmSays) {
    if (!present(nm)) {
        return;
    }
    // Under the sanitizers the program needs many times as long.
    const std::vector<std::string> libraries =
        testsupport::sanitizedBuild ? someHostLibraries(60) : testsupport::hostLibraries();
    size_t objects = 0;
    for (const std::string& library : libraries) {
        SCOPED_TRACE(library);
        std::string bytes = wholeFile(library);
        const size_t count = testsupport::retargetArchive(bytes);
        if (count == 0) {
            continue; // of another object format, or of none
        }
        objects += count;
        folder.write("lib.a", bytes);
        EXPECT_EQ(prints({"-s", "lib.a"}), "");
        const ParsedArchive parsed =
            testsupport::parseArchive(folder.read("lib.a"), ArchiveRules::AnyTool);
        EXPECT_EQ(parsed.error, "");
        EXPECT_TRUE(same(listedIn(parsed), definedIn(nm, library)));
    }
    EXPECT_GT(objects, 0U);
    RecordProperty("objects", static_cast<int>(objects));
}

TEST_F(ObjectRealInput, ProgramsAndSharedLibrariesAreReadWithoutAReport) {
    const Words all = images({"/usr/bin", "/usr/lib"}, 2U << 20U);
    ASSERT_FALSE(all.empty());
    Words words = {"-rc", "lib.a"};
    Words expected;
    for (const std::string& path : some(all, testsupport::sanitizedBuild ? 60 : 400)) {
        std::string bytes = wholeFile(path);
        ASSERT_TRUE(testsupport::retargetElf(bytes)) << path;
        // Names of their own: the same file name stands in several folders.
        words.push_back("image" + std::to_string(words.size()));
        folder.write(words.back(), bytes);
    }
    // Images that export the same few names count as builds of one module. That is not ours to
    // know here, and no report about what was read.
    words.insert(words.begin(), "--diag_suppress=6876");
    EXPECT_TRUE(ended(tomex(words), 0, "", ""));
    EXPECT_EQ(names().size(), words.size() - 3);
    if (present(llvmNm)) {
        EXPECT_TRUE(same(byMember(listedIn(archive())), byMember(definedIn(llvmNm, "lib.a"))));
    }
}

} // namespace
} // namespace commandtest
