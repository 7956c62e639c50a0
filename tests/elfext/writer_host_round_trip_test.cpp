// Real files: every object of the host's static libraries, and some of its programs and shared
// libraries, with their machine made one that the library takes.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <set>

#include "tests/elfext/round_trip_fixtures.h"
#include "tests/support/command_runner.h"
#include "tests/support/host_libraries.h"
#include "tests/support/retarget.h"
#include "tests/support/whole_file.h"

namespace elfext::test {
namespace {

namespace fs = std::filesystem;

using testsupport::HeaderField;

// Of the objects; under the sanitizers all would take minutes.
constexpr size_t everyOnly = testsupport::sanitizedBuild ? 40 : 1;

constexpr size_t shardCount = 8;

// The libraries, so dealt out that each shard has about as many bytes as the others.
std::vector<std::string> librariesOfShard(size_t shard) {
    std::vector<std::pair<uint64_t, std::string>> libraries;
    for (const std::string& path : testsupport::hostLibraries()) {
        libraries.emplace_back(fs::file_size(path), path);
    }
    std::sort(libraries.rbegin(), libraries.rend());
    std::vector<uint64_t> sizes(shardCount);
    std::vector<std::string> chosen;
    for (const auto& [size, path] : libraries) {
        const auto least =
            static_cast<size_t>(std::min_element(sizes.begin(), sizes.end()) - sizes.begin());
        sizes[least] += size;
        if (least == shard) {
            chosen.push_back(path);
        }
    }
    return chosen;
}

class WriterHostTest : public ContainerTest, public testing::WithParamInterface<size_t> {};

TEST_P(WriterHostTest, EveryObjectOfTheStaticLibrariesComesBack) {
    size_t objects = 0;
    size_t seen = 0;
    for (const std::string& library : librariesOfShard(GetParam())) {
        std::string bytes = testsupport::wholeFile(library);
        testsupport::forEachMember(
            bytes, [&](std::string& archive, uint64_t offset, uint64_t size) {
                std::string member = archive.substr(offset, size);
                if (!testsupport::retargetElf(member) || seen++ % everyOnly != 0) {
                    return;
                }
                ++objects;
                EXPECT_EQ(roundTrip(member).difference, "") << library << " at " << offset;
            });
    }
    RecordProperty("objects", static_cast<int>(objects));
    EXPECT_TRUE(objects != 0 || testsupport::hostLibraries().size() < shardCount);
}

INSTANTIATE_TEST_SUITE_P(Shards, WriterHostTest, testing::Range(size_t{0}, shardCount));

// --- Programs and shared libraries

// Those below the system's folders of at most 2 MiB, each once.
std::vector<std::string> hostImages() {
    std::set<std::string> found;
    for (const char* const folder : {"/usr/bin", "/usr/lib"}) {
        std::error_code failure;
        fs::recursive_directory_iterator entry(
            folder, fs::directory_options::skip_permission_denied, failure);
        for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
            std::error_code ignored;
            if (!entry->is_regular_file(ignored) || entry->file_size(ignored) > 2U << 20U) {
                continue;
            }
            std::ifstream file(entry->path(), std::ios::binary);
            std::string head(64, '\0');
            file.read(head.data(), static_cast<std::streamsize>(head.size()));
            if (file && testsupport::isElf(head) &&
                testsupport::headerField(head, HeaderField::Type) >= 2) {
                found.insert(fs::canonical(entry->path(), ignored).string());
            }
        }
    }
    return {found.begin(), found.end()};
}

class WriterHostImageTest : public ContainerTest {};

TEST_F(WriterHostImageTest, ProgramsAndSharedLibrariesComeBack) {
    const std::vector<std::string> images = hostImages();
    const size_t step = std::max<size_t>(1, images.size() / (everyOnly == 1 ? 400 : 40));
    size_t count = 0;
    for (size_t i = 0; i < images.size(); i += step) {
        std::string bytes = testsupport::wholeFile(images[i]);
        if (!testsupport::retargetElf(bytes)) {
            continue;
        }
        ++count;
        EXPECT_EQ(roundTrip(bytes).difference, "") << images[i];
    }
    RecordProperty("images", static_cast<int>(count));
    EXPECT_GT(count, 0U);
}

} // namespace
} // namespace elfext::test
