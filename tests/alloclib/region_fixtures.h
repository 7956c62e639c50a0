// Regions that note what is asked of them, and the library's state for one test.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region.h"
#include "alloclib/interface/region_general.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace alloclib {

// Reaches what no caller may touch.
class RegionGeneralProbe {
public:
    static void setState(RegionGeneral& region, uint32_t state) { region.state = state; }
    static void setNextBehindEnd(RegionGeneral& region) { region.next = region.end + 8; }
    static void setBlockWorkingState(RegionGeneral& region) { region.SetBlockWorkingState(); }
    static void giveBackSkipped(RegionGeneral& region, void* block, uint64_t size) {
        region.giveBackSkipped(block, size);
    }
    static const char* next(const RegionGeneral& region) { return region.next; }
    static const char* limit(const RegionGeneral& region) { return region.limit; }
};

} // namespace alloclib

namespace alloclib::test {

// A parent over the heap that keeps a log of requests. Its blocks are page-aligned, so that tests
// know how addresses in them are aligned.
class LoggingRegion final : public Region {
public:
    struct Request {
        void* block;
        uint64_t size;
        uint64_t align;
        std::string typeName;
        bool operator==(const Request&) const = default;
    };

    explicit LoggingRegion(uint64_t granule = 4096) : m_granule(granule) {}
    LoggingRegion(const LoggingRegion&) = delete;
    LoggingRegion& operator=(const LoggingRegion&) = delete;
    ~LoggingRegion() {
        for (void* const block : m_live) {
            std::free(block);
        }
    }

    void* Alloc(uint64_t size, uint64_t align, const char* typeName) override {
        const uint64_t whole = (size + 4095) / 4096 * 4096;
        void* const block = std::aligned_alloc(4096, static_cast<size_t>(whole));
        m_live.push_back(block);
        allocs.push_back({block, size, align, typeName != nullptr ? typeName : "null"});
        return block;
    }
    void Discard(void* block, uint64_t size, uint64_t extra) override {
        const auto found = std::find(m_live.begin(), m_live.end(), block);
        ASSERT_NE(found, m_live.end());
        m_live.erase(found);
        discards.push_back({block, size, extra, ""});
        std::free(block);
    }
    void Destroy(bool freeMemory) override { destroyed += freeMemory ? "freed;" : "kept;"; }
    uint64_t Granule() const override { return m_granule; }

    size_t liveBlocks() const { return m_live.size(); }

    std::vector<Request> allocs;
    std::vector<Request> discards;
    std::string destroyed;

private:
    uint64_t m_granule;
    std::vector<void*> m_live;
};

// A factory of debugging regions: slot 0 gives a region, or none.
class FactoryRegion final : public Region {
public:
    explicit FactoryRegion(Region* made) : m_made(made) {}
    void* Alloc(uint64_t size, uint64_t /*align*/, const char* typeName) override {
        asked.push_back({size, typeName});
        return m_made;
    }
    void Discard(void* /*block*/, uint64_t /*size*/, uint64_t /*extra*/) override {}
    void Destroy(bool /*freeMemory*/) override {}

    struct Asked {
        uint64_t initialSize;
        std::string name;
    };
    std::vector<Asked> asked;

private:
    Region* m_made;
};

// The library, up for one test.
class LibraryTest : public testing::Test {
protected:
    void SetUp() override { InitAlloclib(); }
    void TearDown() override {
        setDebugMode(DebugMode_None, nullptr);
        FinishAlloclib();
    }
};

// A general region over a logging parent.
class GeneralRegionTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        PushDefaultParent(&m_parent);
        m_region = RegionGeneral::Create(0, "test region");
    }
    void TearDown() override {
        m_region->Destroy(true);
        EXPECT_EQ(m_parent.liveBlocks(), 0U);
        LibraryTest::TearDown();
    }

    // Takes what is left of the working block but for `room` bytes.
    void fillWorkingBlock(uint64_t room = 8) {
        while (m_region->workingBlockRoom() > room) {
            const uint64_t left = m_region->workingBlockRoom() - room;
            m_region->Alloc(std::min<uint64_t>(left, 4096), 8, nullptr);
        }
    }

    // Discards single small blocks of `size` bytes, fresh ones, `count` times.
    void discardFresh(uint64_t size, uint32_t count) {
        std::vector<void*> blocks;
        for (uint32_t i = 0; i < count; ++i) {
            blocks.push_back(allocate(*m_region, size, 8));
        }
        for (void* const block : blocks) {
            m_region->Discard(block, size, 8);
        }
    }

    LoggingRegion m_parent;
    RegionGeneral* m_region = nullptr;
};

inline char* bytesAt(void* block) {
    return static_cast<char*>(block);
}

} // namespace alloclib::test
