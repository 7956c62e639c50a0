// Looking at files where the host keeps them.
#include "platform/interface/mapped_stretch.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/support/scratch_folder.h"

namespace platform {
namespace {

constexpr size_t pages = 8;

class MappedStretchTest : public testing::Test {
protected:
    void SetUp() override {
        m_PageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        for (size_t i = 0; i < pages * m_PageSize; ++i) {
            m_Bytes += static_cast<char>('a' + i / m_PageSize + i % 7);
        }
        m_Folder.write("file", m_Bytes);
        ASSERT_TRUE(m_File.open(path().c_str()));
    }
    std::string path() const { return m_Folder.pathOf("file"); }
    void cutTo(size_t size) { ASSERT_EQ(truncate(path().c_str(), static_cast<off_t>(size)), 0); }

    static std::string textOf(const MappedStretch& stretch, size_t offset, size_t size) {
        return {reinterpret_cast<const char*>(stretch.bytes()) + offset, size};
    }

    testsupport::ScratchFolder m_Folder;
    InputFile m_File;
    std::string m_Bytes;
    size_t m_PageSize = 0;
};

TEST_F(MappedStretchTest, AnyStretchOfTheFile) {
    const std::pair<size_t, size_t> cases[] = {
        {0, m_Bytes.size()}, {1, 1}, {m_PageSize, 10}, {m_PageSize - 1, 2}, {100, 3 * m_PageSize},
    };
    MappedStretch stretch;
    for (const auto& [offset, size] : cases) {
        ASSERT_TRUE(stretch.map(m_File, offset, size));
        EXPECT_EQ(textOf(stretch, 0, size), m_Bytes.substr(offset, size)) << offset;
        EXPECT_FALSE(stretch.hasLostBytes());
    }
}

TEST_F(MappedStretchTest, WithoutAMappingNothingIsLost) {
    EXPECT_FALSE(MappedStretch().hasLostBytes());
}

TEST_F(MappedStretchTest, FileThatCannotBeMapped) {
    MappedStretch stretch;
    InputFile folder;
    ASSERT_TRUE(folder.open(m_Folder.path().c_str()));
    EXPECT_FALSE(stretch.map(folder, 0, 1));
    EXPECT_NE(errno, 0);
    ASSERT_TRUE(stretch.map(m_File, 0, 1));
    EXPECT_EQ(*stretch.bytes(), m_Bytes[0]);
}

TEST_F(MappedStretchTest, BytesThatWereCutOffReadAsZeros) {
    MappedStretch stretch;
    ASSERT_TRUE(stretch.map(m_File, 10, 6 * m_PageSize));
    cutTo(2 * m_PageSize);
    EXPECT_EQ(textOf(stretch, 0, 100), m_Bytes.substr(10, 100));
    EXPECT_FALSE(stretch.hasLostBytes());
    errno = EDOM;
    const std::string zeros = textOf(stretch, 3 * m_PageSize, 100);
    EXPECT_EQ(errno, EDOM) << "the program does not know that it was interrupted";
    EXPECT_EQ(zeros, std::string(100, '\0'));
    EXPECT_TRUE(stretch.hasLostBytes());
    // All that was in front is there as before, and what is behind reads as zeros, too.
    EXPECT_EQ(textOf(stretch, 0, 100), m_Bytes.substr(10, 100));
    EXPECT_EQ(textOf(stretch, 6 * m_PageSize - 1, 1), std::string(1, '\0'));
    // The next one starts anew.
    ASSERT_TRUE(stretch.map(m_File, 0, m_PageSize));
    EXPECT_FALSE(stretch.hasLostBytes());
    EXPECT_EQ(textOf(stretch, 0, m_PageSize), m_Bytes.substr(0, m_PageSize));
}

TEST_F(MappedStretchTest, OnlyTheStretchThatWasLookedAtHasLostBytes) {
    MappedStretch first;
    MappedStretch second;
    ASSERT_TRUE(first.map(m_File, 0, 4 * m_PageSize));
    ASSERT_TRUE(second.map(m_File, 4 * m_PageSize, 4 * m_PageSize));
    cutTo(m_PageSize);
    EXPECT_EQ(textOf(second, 0, 1), std::string(1, '\0'));
    EXPECT_TRUE(second.hasLostBytes());
    EXPECT_FALSE(first.hasLostBytes());
    EXPECT_EQ(textOf(first, m_PageSize, 1), std::string(1, '\0'));
    EXPECT_TRUE(first.hasLostBytes());
}

TEST_F(MappedStretchTest, ThreadsLoseTheirOwnBytes) {
    constexpr size_t threadCount = 8;
    std::vector<std::thread> threads;
    std::vector<int> results(threadCount);
    cutTo(m_PageSize);
    for (size_t i = 0; i < threadCount; ++i) {
        threads.emplace_back([this, i, &results] {
            bool isRight = true;
            for (int round = 0; round < 100; ++round) {
                MappedStretch stretch;
                const bool isCut = (i + static_cast<size_t>(round)) % 2 == 0;
                isRight = isRight && stretch.map(m_File, 0, 2 * m_PageSize) &&
                          textOf(stretch, 0, 50) == m_Bytes.substr(0, 50) &&
                          (!isCut || textOf(stretch, m_PageSize, 50) == std::string(50, '\0')) &&
                          stretch.hasLostBytes() == isCut;
            }
            results[i] = isRight ? 1 : 0;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, std::vector<int>(threadCount, 1));
}

// Threads and processes begin with what their makers hold back.
TEST_F(MappedStretchTest, AThreadThatHeldTheSignalBack) {
    sigset_t signals;
    sigset_t before;
    sigemptyset(&signals);
    sigaddset(&signals, SIGBUS);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &signals, &before), 0);
    MappedStretch stretch;
    ASSERT_TRUE(stretch.map(m_File, 0, 2 * m_PageSize));
    cutTo(m_PageSize);
    EXPECT_EQ(textOf(stretch, m_PageSize, 10), std::string(10, '\0'));
    EXPECT_TRUE(stretch.hasLostBytes());
    ASSERT_EQ(pthread_sigmask(SIG_SETMASK, &before, nullptr), 0);
}

TEST_F(MappedStretchTest, MoreStretchesThanThereMayBe) {
    constexpr size_t most = 64;
    std::vector<std::unique_ptr<MappedStretch>> stretches;
    for (size_t i = 0; i < most; ++i) {
        stretches.push_back(std::make_unique<MappedStretch>());
        ASSERT_TRUE(stretches.back()->map(m_File, 0, 1));
    }
    MappedStretch other;
    EXPECT_FALSE(other.map(m_File, 0, 1));
    EXPECT_EQ(errno, ENOMEM);
    stretches.pop_back();
    EXPECT_TRUE(other.map(m_File, 0, 1));
}

// Whatever else fails like that ends the process as ever, and so does a signal that is sent.
TEST_F(MappedStretchTest, OtherFaultsAreNotTouched) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process without the handler as yet
    const auto die = [this](void (*last)()) {
        std::signal(SIGBUS, SIG_DFL);
        MappedStretch stretch;
        if (!stretch.map(m_File, 0, 1)) {
            std::_Exit(1);
        }
        last();
        std::_Exit(2);
    };
    EXPECT_EXIT(die([] { std::raise(SIGBUS); }), testing::KilledBySignal(SIGBUS), "");
    static const volatile char* lost;
    const int descriptor = open(path().c_str(), O_RDONLY);
    lost = static_cast<const volatile char*>(
        mmap(nullptr, 2 * m_PageSize, PROT_READ, MAP_PRIVATE, descriptor, 0));
    cutTo(m_PageSize);
    EXPECT_EXIT(die([] { std::_Exit(lost[sysconf(_SC_PAGESIZE)]); }),
                testing::KilledBySignal(SIGBUS), "");
    close(descriptor);
}

// A handler of the program's own gets what is its own, as often as it comes.
TEST_F(MappedStretchTest, AnEarlierHandlerStaysInUse) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto countSignals = [this] {
        static int count;
        std::signal(SIGBUS, [](int) { ++count; });
        MappedStretch stretch;
        const bool isMapped = stretch.map(m_File, 0, 2 * m_PageSize);
        cutTo(m_PageSize);
        std::raise(SIGBUS);
        const bool isLost = textOf(stretch, m_PageSize, 1) == std::string(1, '\0');
        std::raise(SIGBUS);
        std::_Exit(isMapped && isLost && stretch.hasLostBytes() ? 10 + count : 1);
    };
    EXPECT_EXIT(countSignals(), testing::ExitedWithCode(12), "");
}

} // namespace
} // namespace platform
