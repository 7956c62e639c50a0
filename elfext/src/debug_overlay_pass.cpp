// Reads the debug overlay sections: records that tie a debug section to the section that it
// describes, under a number. Their size is the section's entry size, and the space behind the
// number tells how wide the section numbers are.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

namespace elfext {
namespace {

constexpr uint64_t wideIndexesSize = 8;   // two section numbers of 32 bits
constexpr uint64_t narrowIndexesSize = 4; // of 16 bits

bool addRecord(ReadState& state, uint32_t section, uint64_t number, uint64_t id,
               uint32_t debugIndex, uint32_t index) {
    ObjectModule& objectModule = state.m_Module;
    if (debugIndex >= state.sectionCount() ||
        !objectModule.getSection(debugIndex)->isDebugSection()) {
        return askHandler(objectModule, &ErrorHandler::debugOverlayNotDebugSection, number, section,
                          debugIndex);
    }
    if (index >= state.sectionCount()) {
        return askHandler(objectModule, &ErrorHandler::debugOverlayNotSection, number, section,
                          index);
    }
    objectModule.addDebugOverlayRecord(
        {id, objectModule.getSection(debugIndex), objectModule.getSection(index)});
    return true;
}

// A record size that leaves no room for the fields means that there are no records.
bool readOverlay(ReadState& state, uint32_t section) {
    const uint64_t recordSize = state.m_SectionHeaders[section].sh_entsize;
    const uint64_t idSize = state.sizes().address;
    const std::span<const uint8_t> records = state.contents(section);
    if (recordSize < idSize + narrowIndexesSize) {
        return true;
    }
    if (!state.spendBytes(records.size())) {
        return false;
    }
    const bool isWide = recordSize - idSize >= wideIndexesSize;
    return withLayout(state.m_Is64, state.m_IsLittleEndian, [&](auto layout) {
        for (uint64_t i = 0; i < records.size() / recordSize; ++i) {
            const uint8_t* const record = records.data() + i * recordSize;
            const uint8_t* const indexes = record + idSize;
            const uint32_t debugIndex = isWide ? layout.word(indexes) : layout.half(indexes);
            const uint32_t index = isWide ? layout.word(indexes + 4) : layout.half(indexes + 2);
            if (!addRecord(state, section, i, layout.address(record), debugIndex, index)) {
                return false;
            }
        }
        return true;
    });
}

} // namespace

bool readDebugOverlays(ReadState& state) {
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const bool isOverlay = state.m_SectionHeaders[i].sh_type == SHT_QEL_DEBUGOVERLAY;
        if (isOverlay && !state.m_IsBadSection[i] && !readOverlay(state, i)) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
