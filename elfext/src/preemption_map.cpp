#include "elfext/src/preemption_map.h"

#include "elfext/interface/dynamic_records.h"
#include "elfext/src/read_state.h"

#include <algorithm>

namespace elfext {
namespace {

constexpr uint64_t wordSize = 4;
constexpr uint64_t firstNames = 3; // words in front of the preempted libraries' names

class PreemptionMapReader {
public:
    PreemptionMapReader(ReadState& state, std::span<const uint8_t> map, const TextTable& texts)
        : m_State(state), m_Map(map), m_Texts(texts) {}

    bool run() {
        while (m_Map.size() >= wordSize) {
            const uint64_t count = word(0);
            const uint64_t size = wordSize * (firstNames + count);
            if (count == 0 || size > m_Map.size() || !hasNames(count)) {
                return true;
            }
            if (!m_State.spendBytes(size) || !spendNames(count)) {
                return false;
            }
            addPreemption(static_cast<uint32_t>(count));
            m_Map = m_Map.subspan(static_cast<size_t>(size));
        }
        return true;
    }

private:
    uint32_t word(uint64_t index) const {
        return assembleBytes<uint32_t>(m_Map.data() + wordSize * index, m_State.m_IsLittleEndian);
    }
    const char* name(uint64_t index) const { return m_Texts.findOrEmpty(word(index)); }

    bool hasNames(uint64_t count) const {
        for (uint64_t i = 1; i < firstNames + count; ++i) {
            if (name(i) == nullptr) {
                return false;
            }
        }
        return true;
    }

    bool spendNames(uint64_t count) {
        for (uint64_t i = 1; i < firstNames + count; ++i) {
            if (!m_State.spendText(name(i))) {
                return false;
            }
        }
        return true;
    }

    void addPreemption(uint32_t count) {
        Preemption* const preemption = m_State.m_Module.addPreemption(name(1), name(2));
        preemption->reservePreemptedDlls(count);
        for (uint32_t i = 0; i < count; ++i) {
            preemption->addPreemptedDll(name(firstNames + i));
        }
    }

    ReadState& m_State;
    std::span<const uint8_t> m_Map; // what is left of it
    const TextTable& m_Texts;
};

} // namespace

bool readPreemptionMap(ReadState& state, const Section* preemptionMapSection,
                       std::span<const uint8_t> contents, uint64_t preemptionMapStartOffset,
                       const TextTable& texts) {
    TOMEX_CHECK_TEXT(preemptionMapSection != nullptr, "preemptionMapSection != NULL");
    TOMEX_CHECK(preemptionMapStartOffset < preemptionMapSection->getSize());
    const uint64_t start = std::min<uint64_t>(preemptionMapStartOffset, contents.size());
    return PreemptionMapReader(state, contents.subspan(static_cast<size_t>(start)), texts).run();
}

} // namespace elfext
