// The stack of objects to be destroyed.
#include "elfext/interface/destruction_manager.h"

namespace elfext {

void DestructionManager::run() {
    while (m_Top != nullptr) {
        const std::unique_ptr<Record> record(m_Top);
        m_Top = record->m_Next;
        record->destroyObject();
    }
}

void DestructionManager::run(const alloclib::Region* region) {
    for (Record** link = &m_Top; *link != nullptr;) {
        if ((*link)->m_Region != region) {
            link = &(*link)->m_Next;
            continue;
        }
        const std::unique_ptr<Record> record(*link);
        *link = record->m_Next;
        const Record* const top = m_Top;
        record->destroyObject();
        if (m_Top != top) {
            link = &m_Top; // the destructor registered more
        }
    }
}

} // namespace elfext
