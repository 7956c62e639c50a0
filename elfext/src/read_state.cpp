#include "elfext/src/read_state.h"

namespace elfext {

std::span<const uint8_t> ReadState::contents(uint32_t section) const {
    const Section* const object = m_Module.getSection(section);
    if (object->isContentsDeferred()) {
        return {};
    }
    const Buffer& buffer = object->getLoadedContents();
    return {buffer.getData(), static_cast<size_t>(buffer.getSize())};
}

bool ReadState::spend(uint64_t& spent, uint64_t amount, uint64_t perByte, uint64_t free) {
    const uint64_t limit =
        m_FileSize < (UINT64_MAX - free) / perByte ? m_FileSize * perByte + free : UINT64_MAX;
    if (amount > limit - spent) {
        return reportFatal(m_Module, &ErrorHandler::outOfMemory);
    }
    spent += amount;
    return true;
}

} // namespace elfext
