// Groups of members that define the same names: builds of one module, such as one for each way of
// floating-point arithmetic.
//
// Members are alike if their names are the same multiset; the order of names does not count, the
// case of letters does. A group is two or more of them. Comparing each member with each other
// would be quadratic, so a fingerprint that does not depend on the order decides first: only
// members with equal ones are compared by name.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "arlib/src/hosting_members.h"
#include "attributes/interface/full_attr.h"
#include "elfext/interface/fast_array.h"

namespace arlib {

class Archive;

// A number that is the same for lists that hold the same names in any order, and hardly ever for
// others. Each run has its own.
uint64_t symbolFingerprint(SymbolNames names);

// Compares the names of one member with those of others, and sorts its own at most once.
class SymbolComparison {
public:
    // The names must outlive this.
    explicit SymbolComparison(SymbolNames first) : m_First(first) {}

    // True if both hold the same names, each as often.
    bool symbolCompatible(SymbolNames second);

private:
    SymbolNames m_First;
    std::vector<std::string_view> m_Sorted; // empty until it is needed
};

// A member of a group.
struct MinorVariant {
    ArchiveMember* member = nullptr;
    SymbolNames names;
    attributes::FullAttr attributes; // as the member states them
};

class MinorVariantGroups {
public:
    explicit MinorVariantGroups(alloclib::Region* scratch)
        : m_Variants(scratch), m_Starts(scratch), m_IsGrouped(scratch) {}

    // Finds the groups of an archive's hosting members, which stand in list order with their
    // fingerprints, and how the members in groups were built. Their names must outlive this.
    void collect(const Archive& archive, const HostingMembers& hosting);

    // The groups, in the order of their first members; a group's members are in list order.
    uint32_t getCount() const { return m_Starts.getSize(); }
    std::span<const MinorVariant> get(uint32_t group) const {
        const uint32_t start = m_Starts[group];
        const uint32_t end =
            group + 1 < m_Starts.getSize() ? m_Starts[group + 1] : m_Variants.getSize();
        return {m_Variants.begin() + start, m_Variants.begin() + end};
    }

    // True if the hosting member of that index is in a group.
    bool isGrouped(uint32_t index) const { return m_IsGrouped[index]; }

private:
    elfext::fast_array<MinorVariant> m_Variants; // group by group
    elfext::fast_array<uint32_t> m_Starts;       // where each group begins there
    elfext::fast_array<bool> m_IsGrouped;
};

} // namespace arlib
