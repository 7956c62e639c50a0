#include "elfext/src/relocation_tags.h"

#include "elfext/src/auxiliary_state.h"
#include "elfext/src/dynamic_entries.h"
#include "elfext/src/file_layout.h"

#include <algorithm>

namespace elfext {
namespace {

// The types of the relocations of a table, up to `limit` of them.
std::vector<uint32_t> typesOf(const RelocationSection& table, uint64_t limit) {
    const ObjectModule& objectModule = *table.getObjectModule();
    const Buffer& bytes = table.getLoadedContents();
    std::vector<uint32_t> types;
    withLayout(objectModule.is64Bit(), objectModule.isLittleEndian(), [&](auto layout) {
        const uint64_t entrySize = entrySizeOf(table);
        for (uint64_t i = 0; i < std::min(limit, bytes.getSize() / entrySize); ++i) {
            types.push_back(
                layout.relocation(bytes.getData() + i * entrySize, table.hasAddends()).type);
        }
    });
    return types;
}

} // namespace

void RelocationTags::note(const AuxiliaryState& state, const std::vector<DynamicEntry>& entries) {
    const auto valueOfTag = [&entries](uint64_t tag) {
        const auto entry = std::find_if(entries.begin(), entries.end(), [tag](const auto& other) {
            return other.tag == tag && tag != DT_NULL;
        });
        return entry != entries.end() ? entry->value : 0;
    };
    for (size_t group = 0; group < std::size(relocationTagGroups); ++group) {
        Stretch stretch;
        stretch.group = group;
        stretch.noted.address = valueOfTag(relocationTagGroups[group].address);
        stretch.noted.size = valueOfTag(relocationTagGroups[group].size);
        stretch.noted.count = valueOfTag(relocationTagGroups[group].count);
        if (stretch.noted.address == 0) {
            continue;
        }
        for (Section* const section : state.m_Module.getSections()) {
            RelocationSection* const table = section->asRelocationSection();
            if (table != nullptr && table->isDynamic() && stretch.contains(table->getAddress())) {
                const std::vector<uint32_t> types = typesOf(*table, 1);
                stretch.tables.push_back(
                    {table, table->getSize(), types.empty() ? 0 : types.front()});
            }
        }
        stretch.relativeCount = countRelative(stretch);
        m_Stretches.push_back(std::move(stretch));
    }
}

void RelocationTags::settle(const AuxiliaryState& state) {
    for (Stretch& stretch : m_Stretches) {
        const uint64_t relativeCount = countRelative(stretch);
        stretch.isCut |=
            state.wasRemoved(stretch.noted.address, std::max<uint64_t>(stretch.noted.size, 1));
        stretch.hasChanged =
            relativeCount < stretch.relativeCount || stretch.isCut ||
            std::any_of(stretch.tables.begin(), stretch.tables.end(), [](const Table& table) {
                return table.section->isDetached() || table.section->getSize() != table.size;
            });
        if (stretch.hasChanged) {
            stretch.present.count = relativeCount;
            measure(stretch);
        }
    }
}

// The table at the lowest address of those that are left and have relocations; null for none.
const RelocationTags::Table* RelocationTags::findFirst(const Stretch& stretch) {
    const Table* first = nullptr;
    for (const Table& table : stretch.tables) {
        if (!table.section->isDetached() && table.section->getSize() != 0 &&
            (first == nullptr || table.section->getAddress() < first->section->getAddress())) {
            first = &table;
        }
    }
    return first;
}

// Those that are counted are the first of all, and of one type: up to their number as it was, so
// many are of the type that the first one had.
uint64_t RelocationTags::countRelative(const Stretch& stretch) {
    const Table* const first = findFirst(stretch);
    if (first == nullptr || first->section->getAddress() != stretch.noted.address) {
        return 0;
    }
    const std::vector<uint32_t> types = typesOf(*first->section, stretch.noted.count);
    const auto other = std::find_if(types.begin(), types.end(),
                                    [first](uint32_t type) { return type != first->firstType; });
    return static_cast<uint64_t>(other - types.begin());
}

void RelocationTags::measure(Stretch& stretch) {
    const Table* const first = findFirst(stretch);
    stretch.isGone = first == nullptr;
    if (stretch.isGone) {
        return;
    }
    Extent& present = stretch.present;
    present.address = first->section->getAddress();
    present.size = 0;
    for (const Table& table : stretch.tables) {
        if (!table.section->isDetached() && table.section->getSize() != 0) {
            const uint64_t end = table.section->getAddress() + table.section->getSize();
            present.size = std::max(present.size, end - present.address);
        }
    }
}

std::optional<uint64_t> RelocationTags::valueOf(uint64_t tag, uint64_t value) const {
    for (const Stretch& stretch : m_Stretches) {
        const RelocationTagGroup& tags = relocationTagGroups[stretch.group];
        const bool isOfGroup = tag == tags.address || tag == tags.size || tag == tags.form ||
                               (tag == tags.count && tag != DT_NULL);
        if (!isOfGroup || !stretch.hasChanged) {
            continue;
        }
        if (stretch.isGone) {
            return std::nullopt;
        }
        return tag == tags.address ? stretch.present.address
               : tag == tags.size  ? stretch.present.size
               : tag == tags.count ? stretch.present.count
                                   : value;
    }
    return value;
}

} // namespace elfext
