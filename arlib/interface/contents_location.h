// Where a member's contents lie on disk: a file and the offset in it. Their size is the member's.
#pragma once

#include <cstdint>
#include <memory>

namespace arlib {

class ArchiveMember;
struct SourceFile;

class ContentsLocation {
public:
    // With deleteFile the file is a temporary one, which is to be removed with the location.
    ContentsLocation(ArchiveMember* member, std::shared_ptr<const SourceFile> source,
                     bool deleteFile, uint64_t offset);
    virtual ~ContentsLocation();
    ContentsLocation(const ContentsLocation&) = delete;
    ContentsLocation& operator=(const ContentsLocation&) = delete;

    ArchiveMember* getArchiveMember() const { return m_ArchiveMember; }
    // Valid as long as the location.
    const char* getFileName() const;
    bool deletesFile() const { return m_DeleteFile; }
    uint64_t getOffset() const { return m_Offset; }

    // The file, shared by all locations in it.
    const std::shared_ptr<const SourceFile>& getSource() const { return m_Source; }

private:
    ArchiveMember* m_ArchiveMember;
    std::shared_ptr<const SourceFile> m_Source;
    bool m_DeleteFile;
    uint64_t m_Offset;
};

} // namespace arlib
