// What the tests of records share: the allocators, faults as texts, records from lists of tags,
// and a witness of a record that compares all of it.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "alloclib/interface/default_region.h"
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/feature_words.h"
#include "tests/elfext/container_fixtures.h"

namespace attributes {

inline void PrintTo(const FullAttr& value, std::ostream* out) {
    *out << std::hex << "isa " << value.isa.high << ":" << value.isa.low << " class "
         << value.targetClass << " kind " << value.targetKind << " access";
    for (const uint16_t word : value.access) {
        *out << " " << word;
    }
    *out << " options " << value.options << " requirements " << value.requirements << " abi "
         << value.abiVersion << std::dec;
}

inline void PrintTo(const IsaSet& isa, std::ostream* out) {
    *out << std::hex << isa.high << ":" << isa.low << std::dec;
}

namespace test {

using RecordTest = elfext::test::ContainerTest;

using TagValues = std::initializer_list<std::pair<Tag, uint32_t>>;

inline BuildAttributes recordWith(TagValues values) {
    BuildAttributes record;
    for (const auto& [tag, value] : values) {
        record.setTag(tag, value);
    }
    return record;
}

inline FullAttr rebuilt(TagValues values) {
    BuildAttributes record = recordWith(values);
    record.rebuildFullAttr();
    return record.fullAttr;
}

// One of 2 ^ `pairs` texts that the usual hash of names, h * 31 + c, cannot tell apart: "Aa" and
// "BB" have the same.
inline std::string collidingText(uint32_t number, uint32_t pairs) {
    std::string text;
    for (uint32_t i = 0; i < pairs; ++i) {
        text += (number >> i & 1U) != 0 ? "Aa" : "BB";
    }
    return text;
}

// All of a record but its value, in a form that compares by contents.
struct Witness {
    explicit Witness(const BuildAttributes& record)
        : present(record.present), stale(record.derivedStale) {
        for (uint32_t tag = 0; tag < Tag_Count; ++tag) {
            slots[tag] = slotOf(record, static_cast<Tag>(tag));
        }
        if (record.m_CompatibilityTags != nullptr) {
            compatible.emplace();
            for (const CompatibilityTag& entry : *record.m_CompatibilityTags) {
                compatible->emplace_back(entry.flag, entry.vendorName);
            }
        }
        if (record.m_AlsoCompatibilityTags != nullptr) {
            alsoCompatible.emplace();
            for (const AlsoCompatibilityTag& entry : *record.m_AlsoCompatibilityTags) {
                alsoCompatible->push_back(describe(entry));
            }
        }
        if (record.otherNumericTags != nullptr) {
            numeric.emplace();
            for (const auto& node : *record.otherNumericTags) {
                numeric->emplace(node.key, node.value);
            }
        }
        if (record.otherStringTags != nullptr) {
            strings.emplace();
            for (const auto& node : *record.otherStringTags) {
                strings->emplace(node.key, node.value.get());
            }
        }
    }

    static std::string slotOf(const BuildAttributes& record, Tag tag) {
        if (!record.isPresent(tag)) {
            return "-";
        }
        return tagRows[tag].form == TagForm_Text ? std::string("'") + record.getText(tag) + "'"
                                                 : std::to_string(record.getNumber(tag));
    }

    static std::string describe(const AlsoCompatibilityTag& entry) {
        std::string text = std::to_string(entry.getTag());
        text += entry.hasNumber() ? "=" + std::to_string(entry.getNumber()) : "";
        text += entry.hasText() ? std::string("'") + entry.getText() + "'" : "";
        return text;
    }

    // Whether two records that differ in nothing else are the same record.
    bool isEquivalent(const Witness& other) const {
        if (!present || !other.present) {
            return present == other.present;
        }
        for (uint32_t tag = 0; tag < Tag_Count; ++tag) {
            const bool isGap = tag == Tag_Q64_ISA_use || tag == Tag_PAC_extension ||
                               tag == Tag_BTI_extension || tag == Tag_PACRET_use ||
                               tag == Tag_BTI_use;
            if (!isGap && slots[tag] != other.slots[tag]) {
                return false;
            }
        }
        return compatible == other.compatible && alsoCompatible == other.alsoCompatible &&
               numeric == other.numeric && strings == other.strings;
    }

    bool operator==(const Witness&) const = default;

    bool present;
    bool stale;
    std::array<std::string, Tag_Count> slots;
    std::optional<std::vector<std::pair<uint32_t, std::string>>> compatible;
    std::optional<std::vector<std::string>> alsoCompatible;
    std::optional<std::map<uint32_t, uint32_t>> numeric;
    std::optional<std::map<uint32_t, std::string>> strings;
};

inline void PrintTo(const Witness& witness, std::ostream* out) {
    *out << (witness.present ? "present" : "empty") << (witness.stale ? " stale" : "");
    for (uint32_t tag = 0; tag < Tag_Count; ++tag) {
        if (witness.slots[tag] != "-") {
            *out << " " << tagRows[tag].name << "=" << witness.slots[tag];
        }
    }
    if (witness.compatible) {
        *out << " compatible:";
        for (const auto& [flag, name] : *witness.compatible) {
            *out << " (" << flag << "," << name << ")";
        }
    }
    if (witness.alsoCompatible) {
        *out << " also:";
        for (const std::string& entry : *witness.alsoCompatible) {
            *out << " " << entry;
        }
    }
}

// Random records and values, the same ones in each run.
class RandomSource {
public:
    explicit RandomSource(uint32_t seed) : m_Engine(seed) {}

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(m_Engine() % limit); }
    bool oneIn(uint32_t count) { return below(count) == 0; }
    uint64_t word() { return m_Engine(); }
    // About half of the bits of a random selection, so that sets share bits and differ.
    uint64_t bits() { return oneIn(8) ? 0 : m_Engine() & (oneIn(2) ? ~uint64_t{0} : m_Engine()); }

    FullAttr value() {
        FullAttr result;
        result.isa = {bits(), bits()};
        result.targetClass = below(256);
        result.targetKind = below(8) << 28;
        for (uint16_t& access : result.access) {
            access = static_cast<uint16_t>(bits());
        }
        result.options = bits() & 0x1FFFFFFFFF;
        result.requirements = below(4);
        result.abiVersion = oneIn(2) ? abi_version::EABIv2 : abi_version::UNKNOWN;
        return result;
    }

    // A value with up to two bits in each part.
    FullAttr sparseValue() {
        const auto fewBits = [this](uint32_t width) {
            uint64_t result = 0;
            for (uint32_t i = below(3); i > 0; --i) {
                result |= uint64_t{1} << below(width);
            }
            return result;
        };
        FullAttr result;
        result.isa = {fewBits(64), fewBits(17)};
        result.access[below(4)] = static_cast<uint16_t>(fewBits(16));
        result.options = fewBits(37);
        result.requirements = below(4);
        result.abiVersion = oneIn(2) ? abi_version::EABIv2 : abi_version::UNKNOWN;
        return result;
    }

    BuildAttributes record() {
        static constexpr const char* vendors[] = {"QEL", "qeabi", "gnat", "a", ""};
        static constexpr const char* texts[] = {"", "rw.wide", "m9.main", "2.09"};
        BuildAttributes result;
        const uint32_t density = 1 + below(20);
        for (const TagRow& row : tagRows) {
            if (!oneIn(density)) {
                continue;
            }
            if (row.form == TagForm_Text) {
                result.m_StandardTags.setText(row.tag, texts[below(4)]);
            } else {
                result.setTag(row.tag, oneIn(8) ? below(256) : below(24));
            }
        }
        for (uint32_t i = below(4); i > 0; --i) {
            result.addCompatibilityTag(below(3), vendors[below(5)]);
        }
        for (uint32_t i = oneIn(3) ? below(4) : 0; i > 0; --i) {
            result.addAlsoCompatibilityTag(alsoCompatible());
        }
        for (uint32_t i = oneIn(4) ? below(3) : 0; i > 0; --i) {
            result.setOtherNumericTag(below(4), below(3));
            result.setOtherStringTag(below(4), vendors[below(5)]);
        }
        return result;
    }

private:
    AlsoCompatibilityTag alsoCompatible() {
        switch (below(3)) {
        case 0:
            return {6, below(26)};
        case 1:
            return {5, "name"};
        default:
            return {32, below(2), "QEL"};
        }
    }

    std::mt19937_64 m_Engine;
};

} // namespace test
} // namespace attributes
