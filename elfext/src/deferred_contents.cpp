// The life of the file that deferred contents come from.
#include "elfext/interface/deferred_contents.h"

namespace elfext {

void ReferenceCountedFile::release() {
    TOMEX_CHECK(m_ReferenceCount != 0);
    if (--m_ReferenceCount == 0) {
        close();
    }
}

void ReferenceCountedFile::close() {
    if (m_File != nullptr && !m_IsCallers) {
        std::fclose(m_File);
    }
    m_File = nullptr;
}

} // namespace elfext
