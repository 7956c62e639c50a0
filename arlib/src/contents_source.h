// Where the bytes of members are read from.
//
// Thousands of members lie in one archive file. It is opened once for all of them, and a window of
// its bytes is kept that grows while members are read one behind the other, so that small members
// cost a fraction of a host call each. Plain files are opened and closed one at a time.
//
// A location in an archive means something only as long as the file is the one that was read. It is
// checked on opening: a file that has been replaced or changed since is refused with ESTALE, where
// taking bytes from the old places would make a damaged archive.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/interface/input_file.h"

namespace arlib {

class ArchiveMemberType;

// A file that holds contents of members, as it was when it was looked at.
struct SourceFile {
    std::string name;
    platform::FileStatus status;
    bool isArchive = false;
    // All of its bytes, in the archive's region, or null: see KeptBytes.
    const uint8_t* keptBytes = nullptr;
};

// A file is looked at to be recognised, to find its symbols, and to be written. What the first look
// reads of a small file is kept for the others, up to so many bytes in all: opening, reading and
// closing files is most of the cost of making an archive of many. The archive then holds just the
// bytes whose symbols its table lists, whatever has become of the file meanwhile.
struct KeptBytes {
    static constexpr uint64_t largestFile = 8 << 10;
    static constexpr uint64_t largestSum = 24 << 20;
    static constexpr size_t piece = 256 << 10; // what is taken of the region at a time
};

using SourceFilePointer = std::shared_ptr<const SourceFile>;

// Contents that a member is to get. What is known of them already spares a look at the file: their
// type, or else their first bytes, which need to live during the call only.
struct ContentsRegion {
    SourceFilePointer source;
    uint64_t offset = 0;
    uint64_t size = 0;
    const ArchiveMemberType* type = nullptr;
    std::span<const uint8_t> head = {};
};

// An open file and the window on it. Failures leave errno, EIO where the file ended early.
class ContentsReader {
public:
    bool open(const char* name) { return m_File.open(name); }
    bool close();
    const platform::InputFile& file() const { return m_File; }

    // count bytes at offset, or null. Valid until the next call.
    const uint8_t* view(uint64_t offset, size_t count);

    // As many bytes at offset as there are, up to count; sets got. Null if the host fails.
    const uint8_t* viewSome(uint64_t offset, size_t count, size_t& got);

    // Reads count bytes into a buffer; false unless it gets all of them.
    bool read(void* buffer, size_t count, uint64_t offset) const;

private:
    bool moveWindow(uint64_t offset, size_t count);

    platform::InputFile m_File;
    std::vector<uint8_t> m_Window;
    size_t m_WindowUsed = 0;
    uint64_t m_WindowStart = 0;
    size_t m_NextWindowSize = 0;
    uint32_t m_ViewsInWindow = 0;
};

// The readers that are open at a time.
class ContentsSources {
public:
    // A reader on the file, or null with errno set. Valid until the next call.
    ContentsReader* open(const SourceFilePointer& source);

    // Ends the use of what open gave last: a plain file is closed. False leaves errno.
    bool release();

    // Closes all. False leaves errno of the last failure, which may be that of a file that was
    // closed earlier to make room for another.
    bool closeAll();

private:
    struct Entry {
        SourceFilePointer source;
        std::unique_ptr<ContentsReader> reader;
        uint64_t lastUse = 0;
    };
    static constexpr size_t capacity = 8;

    Entry& entryFor(const SourceFilePointer& source);
    void closeReader(ContentsReader& reader);

    std::vector<Entry> m_Entries;
    Entry* m_Current = nullptr;
    uint64_t m_Uses = 0;
    int m_CloseError = 0;
};

} // namespace arlib
