// Checks the relocations of all tables and leaves a loader with each section that has some.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"
#include "elfext/src/relocation_loader.h"

#include <algorithm>
#include <new>

namespace elfext {
namespace {

// An object in the region of lists, which lives as long as the module's contents.
template <typename Object, typename... Arguments>
Object* makeLasting(ReadState& state, const Arguments&... arguments) {
    void* const place =
        alloclib::allocate(*state.m_Module.getContainerRegion(), sizeof(Object), alignof(Object));
    return new (place) Object(arguments...);
}

class RelocationsPass {
public:
    explicit RelocationsPass(ReadState& state)
        : m_State(state),
          m_Loaders(state.takeTable<TargetRelocationLoader*>(state.sectionCount())) {}

    bool run() {
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const uint32_t type = m_State.m_SectionHeaders[i].sh_type;
            const bool isTable = type == SHT_REL || type == SHT_RELA;
            if (isTable && !m_State.m_IsBadSection[i] && !readTable(i)) {
                return false;
            }
        }
        return true;
    }

private:
    bool readTable(uint32_t table) {
        const std::span<const uint8_t> entries = m_State.contents(table);
        if (!m_State.spendBytes(entries.size())) {
            return false;
        }
        const bool hasAddends = m_State.m_SectionHeaders[table].sh_type == SHT_RELA;
        const uint64_t entrySize = hasAddends ? m_State.sizes().rela : m_State.sizes().rel;
        const uint64_t count = entries.size() / entrySize;
        if (count == 0) {
            return true;
        }
        uint64_t goodCount = count;
        const uint64_t symbolCount = symbolsOf(table).m_Count;
        if (greatestSymbol(entries.data(), count, entrySize) >= symbolCount &&
            !reportBadEntries(table, entries.data(), count, entrySize, goodCount)) {
            return false;
        }
        if (goodCount != 0) {
            addToTarget(table);
        }
        return true;
    }

    uint32_t linkOf(uint32_t table) const { return m_State.m_SectionHeaders[table].sh_link; }
    const SymbolsByNumber& symbolsOf(uint32_t table) const {
        return m_State.m_SymbolsByTable[linkOf(table)];
    }

    // One look at all entries, without a branch in the loop, tells whether any is bad.
    uint32_t greatestSymbol(const uint8_t* entries, uint64_t count, uint64_t entrySize) const {
        return withLayout(m_State.m_Is64, m_State.m_IsLittleEndian, [&](auto layout) {
            uint32_t greatest = 0;
            for (uint64_t i = 0; i < count; ++i) {
                greatest = std::max(greatest, layout.relocationSymbol(entries + i * entrySize));
            }
            return greatest;
        });
    }

    bool reportBadEntries(uint32_t table, const uint8_t* entries, uint64_t count,
                          uint64_t entrySize, uint64_t& goodCount) {
        const uint64_t symbolCount = symbolsOf(table).m_Count;
        return withLayout(m_State.m_Is64, m_State.m_IsLittleEndian, [&](auto layout) {
            for (uint64_t i = 0; i < count; ++i) {
                const uint32_t symbol = layout.relocationSymbol(entries + i * entrySize);
                if (symbol < symbolCount) {
                    continue;
                }
                --goodCount;
                if (!askHandler(m_State.m_Module, &ErrorHandler::relocationSymbolIndexBad, i, table,
                                symbol, linkOf(table), symbolCount)) {
                    return false;
                }
            }
            return true;
        });
    }

    void addToTarget(uint32_t table) {
        const uint32_t target = m_State.m_SectionHeaders[table].sh_info;
        TargetRelocationLoader*& loader = m_Loaders[target];
        if (loader == nullptr) {
            loader = makeLasting<TargetRelocationLoader>(m_State, m_State.m_Is64,
                                                         m_State.m_IsLittleEndian);
            m_State.m_Module.getSection(target)->setRelocationLoader(loader);
        }
        auto* const entry = makeLasting<RelocationTable>(m_State);
        entry->m_Section = static_cast<RelocationSection*>(m_State.m_Module.getSection(table));
        entry->m_Symbols = symbolsOf(table);
        loader->addTable(entry);
    }

    ReadState& m_State;
    std::span<TargetRelocationLoader*> m_Loaders; // by the number of the target
};

} // namespace

bool readRelocations(ReadState& state) {
    return RelocationsPass(state).run();
}

} // namespace elfext
