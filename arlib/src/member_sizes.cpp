#include "arlib/interface/member_sizes.h"

#include <algorithm>
#include <new>
#include <system_error>

#include "alloclib/interface/quiet_exhaustion.h"
#include "arlib/interface/archive_member.h"
#include "arlib/interface/archive_member_type.h"
#include "arlib/interface/contents_location.h"
#include "arlib/src/contents_source.h"
#include "elfext/interface/quick_sizes.h"
#include "platform/interface/mapped_stretch.h"

namespace arlib {
namespace {

// Bytes of an archive that are mapped at a time, unless a single member is larger.
constexpr uint64_t stretchSize = uint64_t{8} << 20;

// With more of them the file cannot be had any faster.
constexpr size_t mostThreads = 8;

} // namespace

MemberSizes::~MemberSizes() {
    giveUp();
}

// Ends all that goes on and lets go of what has been found.
void MemberSizes::giveUp() {
    m_IsGivenUp = true;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_NextBatch = m_Batches.size();
    }
    stop();
    m_Open = {};
    m_Batches.clear();
    m_Found.clear();
}

bool MemberSizes::isSourceAsItWas() const {
    platform::FileStatus present;
    return m_File.queryStatus(present) && present.isSameState(m_Source->status);
}

// The file of the first member is that of all.
bool MemberSizes::openSource(const ArchiveMember& member) {
    m_Source = member.getLocation()->getSource();
    return m_Source->status.isRegular && m_File.open(m_Source->name.c_str()) && isSourceAsItWas();
}

void MemberSizes::memberRead(const ArchiveMember& member) {
    const uint32_t place = m_PlaceCount++;
    if (m_IsGivenUp || member.getType() != getElfImageType() || member.getSize() == 0) {
        return;
    }
    const alloclib::QuietExhaustion quiet;
    try {
        if (m_Source == nullptr && !openSource(member)) {
            m_IsGivenUp = true;
        } else {
            take(member, place);
        }
    } catch (const std::bad_alloc&) {
        giveUp();
    }
}

void MemberSizes::take(const ArchiveMember& member, uint32_t place) {
    const uint64_t offset = member.getLocation()->getOffset();
    if (!m_Open.empty() && offset + member.getSize() - m_Open.front().offset > stretchSize) {
        closeBatch();
    }
    m_Open.push_back({&member, offset, member.getSize(), place, false, {}});
}

// Hands the open batch out. There are as many threads as there is work for.
void MemberSizes::closeBatch() {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Batches.push_back(std::move(m_Open));
    }
    m_Open = {};
    m_Change.notify_one();
    if (m_Threads.size() + 1 < std::min<size_t>(std::thread::hardware_concurrency(), mostThreads)) {
        addThread();
    }
}

void MemberSizes::addThread() {
    try {
        m_Threads.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // The host has no more; those that there are do all of the work.
    }
}

// Waits for one. Null if there are no more.
MemberSizes::Batch* MemberSizes::nextBatch() {
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Change.wait(lock, [this] { return m_NextBatch < m_Batches.size() || m_IsComplete; });
    return m_NextBatch < m_Batches.size() ? &m_Batches[m_NextBatch++] : nullptr;
}

// What each thread does.
void MemberSizes::work() {
    const alloclib::QuietExhaustion quiet;
    elfext::QuickSizes quickSizes;
    platform::MappedStretch stretch;
    for (Batch* batch = nextBatch(); batch != nullptr; batch = nextBatch()) {
        const uint64_t start = batch->front().offset;
        const uint64_t end = batch->back().offset + batch->back().size;
        if (!stretch.map(m_File, start, static_cast<size_t>(end - start))) {
            continue;
        }
        for (Entry& entry : *batch) {
            entry.isMeasured = quickSizes.measure(stretch.bytes() + (entry.offset - start),
                                                  entry.size, entry.sizes);
        }
        if (stretch.hasLostBytes()) {
            for (Entry& entry : *batch) {
                entry.isMeasured = false;
            }
        }
    }
}

void MemberSizes::stop() {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_IsComplete = true;
    }
    m_Change.notify_all();
    for (std::thread& thread : m_Threads) {
        thread.join();
    }
    m_Threads.clear();
}

void MemberSizes::finish() {
    const alloclib::QuietExhaustion quiet;
    try {
        finishWork();
    } catch (const std::bad_alloc&) {
        giveUp();
    }
}

void MemberSizes::finishWork() {
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Open.empty()) {
            m_Batches.push_back(std::move(m_Open));
        }
        m_IsComplete = true;
    }
    m_Change.notify_all();
    work();
    stop();
    const bool isSound = !m_IsGivenUp && m_Source != nullptr && isSourceAsItWas();
    m_File.close(); // the archive may be written next
    if (!isSound) {
        giveUp();
        return;
    }
    m_Found.resize(m_PlaceCount);
    for (const Batch& batch : m_Batches) {
        for (const Entry& entry : batch) {
            m_Found[entry.place] = entry.isMeasured ? &entry : nullptr;
        }
    }
}

const elfext::SizeStatistics* MemberSizes::find(const ArchiveMember& member, uint32_t place) const {
    const Entry* const entry = place < m_Found.size() ? m_Found[place] : nullptr;
    return entry != nullptr && entry->member == &member ? &entry->sizes : nullptr;
}

} // namespace arlib
