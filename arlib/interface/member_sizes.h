// Measures the members of an archive while it is being read.
//
// A report on sizes looks at every member of a library, and nearly all of them are plain objects.
// Those are measured where they lie in the file, a stretch of it at a time, by as many threads as
// the host has processors: the first stretches while the headers of later members are still being
// read. All other members, and all of a file that changed meanwhile, are left to be read one by
// one.
//
// The threads look at files by way of platform::MappedStretch; what that demands of the process
// goes for them. They use no region and report nothing.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "arlib/interface/read_observer.h"
#include "elfext/interface/sizes_statistics.h"
#include "platform/interface/input_file.h"

namespace arlib {

struct SourceFile;

class MemberSizes : public ReadObserver {
public:
    MemberSizes() = default;
    ~MemberSizes() override;
    MemberSizes(const MemberSizes&) = delete;
    MemberSizes& operator=(const MemberSizes&) = delete;

    // Takes a member to be measured. All of them come from one archive.
    void memberRead(const ArchiveMember& member) override;

    // Ends the measuring; to be called before find(). Nothing is reported: what could not be
    // measured, also for want of memory, is to be read.
    void finish();

    // The sizes of a member, as its module would give them, or null if it is to be read. A member
    // that has sizes can be read and holds no section with an entry point. `place` is the member's
    // in the archive's list.
    const elfext::SizeStatistics* find(const ArchiveMember& member, uint32_t place) const;

private:
    struct Entry {
        const ArchiveMember* member;
        uint64_t offset; // of the contents in the archive
        uint32_t size;
        uint32_t place; // among the members that were read
        bool isMeasured;
        elfext::SizeStatistics sizes;
    };
    // Members that lie in one stretch of the file, in order. Each batch is one thread's.
    using Batch = std::vector<Entry>;

    bool openSource(const ArchiveMember& member);
    bool isSourceAsItWas() const;
    void take(const ArchiveMember& member, uint32_t place);
    void closeBatch();
    void addThread();
    Batch* nextBatch();
    void work();
    void finishWork();
    void stop();
    void giveUp();

    std::shared_ptr<const SourceFile> m_Source; // the archive file, as it was when it was read
    platform::InputFile m_File;
    uint32_t m_PlaceCount = 0;
    bool m_IsGivenUp = false;
    Batch m_Open; // still growing

    std::vector<std::thread> m_Threads;
    std::mutex m_Mutex; // for what follows
    std::condition_variable m_Change;
    std::deque<Batch> m_Batches;
    size_t m_NextBatch = 0;
    bool m_IsComplete = false;

    std::vector<const Entry*> m_Found; // by place; null for what is to be read
};

} // namespace arlib
