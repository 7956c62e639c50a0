#include "elfext/src/dynamic_entries.h"

#include "elfext/src/auxiliary_state.h"

namespace elfext {
namespace {

// All up to the one that ends the section.
std::vector<DynamicEntry> readEntries(const AuxiliaryState& state) {
    std::vector<DynamicEntry> entries;
    const Buffer& bytes = std::as_const(*state.m_Dynamic).getLoadedContents();
    const uint64_t entrySize = state.m_Sizes.dynamicEntry;
    withLayout(state.m_Is64, state.m_IsLittleEndian, [&](auto layout) {
        for (uint64_t i = 0; i < bytes.getSize() / entrySize; ++i) {
            const uint8_t* const entry = bytes.getData() + i * entrySize;
            const uint64_t tag = layout.address(entry);
            if (static_cast<uint32_t>(tag) == DT_NULL) {
                return;
            }
            entries.push_back({tag, layout.address(entry + layout.sizes.address), nullptr});
        }
    });
    return entries;
}

} // namespace

void settleDynamic(AuxiliaryState& state, std::unique_ptr<SettledDynamicSection>& settled) {
    const DynamicSection* const section = state.m_Dynamic;
    const bool isKnown = settled != nullptr && settled->section == section && section != nullptr &&
                         !section->areContentsSettled();
    if (!isKnown) {
        settled.reset();
        if (section != nullptr) {
            settled = std::make_unique<SettledDynamicSection>();
            settled->section = section;
            settled->entries = readEntries(state);
            settled->slotCount =
                section->getLoadedContents().getSize() / state.m_Sizes.dynamicEntry;
            settled->relocationTags.note(state, settled->entries);
        }
    }
    state.m_Settled = settled.get();
}

} // namespace elfext
