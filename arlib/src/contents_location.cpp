#include "arlib/interface/contents_location.h"

#include <utility>

#include "arlib/src/contents_source.h"

namespace arlib {

ContentsLocation::ContentsLocation(ArchiveMember* member, SourceFilePointer source, bool deleteFile,
                                   uint64_t offset)
    : m_ArchiveMember(member), m_Source(std::move(source)), m_DeleteFile(deleteFile),
      m_Offset(offset) {
}

ContentsLocation::~ContentsLocation() = default;

const char* ContentsLocation::getFileName() const {
    return m_Source->name.c_str();
}

} // namespace arlib
