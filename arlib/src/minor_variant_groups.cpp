#include "arlib/src/minor_variant_groups.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "arlib/interface/archive.h"
#include "arlib/src/marker_attributes.h"
#include "attributes/interface/decoration.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/text_hash.h"

namespace arlib {
namespace {

using MemberIndexes = std::vector<uint32_t>; // of hosting members, ascending

// A hosting member in the order of fingerprints.
struct Candidate {
    uint64_t fingerprint = 0;
    uint32_t index = 0;

    bool operator<(const Candidate& other) const {
        return fingerprint != other.fingerprint ? fingerprint < other.fingerprint
                                                : index < other.index;
    }
};

std::vector<std::string_view> sortedNames(SymbolNames names) {
    std::vector<std::string_view> sorted(names.begin(), names.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

// Finds the groups among the hosting members of one archive.
class GroupSearch {
public:
    explicit GroupSearch(const HostingMembers& hosting) : m_Hosting(hosting) {}

    // The groups, in the order of their first members.
    const std::vector<MemberIndexes>& run();

private:
    void sortIntoBuckets();
    void searchBucket(std::span<Candidate> bucket);
    void divide(MemberIndexes run);
    void divideByNames(const MemberIndexes& run);

    const HostingMembers& m_Hosting;
    std::vector<Candidate> m_Candidates; // bucket by bucket
    std::vector<uint32_t> m_BucketEnds;
    std::vector<MemberIndexes> m_Groups;
};

const std::vector<MemberIndexes>& GroupSearch::run() {
    if (m_Hosting.getSize() > 1) {
        sortIntoBuckets();
        uint32_t start = 0;
        for (const uint32_t end : m_BucketEnds) {
            if (end - start > 1) {
                searchBucket({m_Candidates.data() + start, end - start});
            }
            start = end;
        }
        std::sort(m_Groups.begin(), m_Groups.end());
    }
    return m_Groups;
}

// Puts the candidates into buckets, up to twice as many as there are members, by the upper bits of
// their fingerprints. Most buckets get one at most, and are done with.
void GroupSearch::sortIntoBuckets() {
    const uint32_t count = m_Hosting.getSize();
    const auto bits = static_cast<uint32_t>(std::bit_width(count));
    const auto bucketOf = [bits](uint64_t fingerprint) { return fingerprint >> (64 - bits); };
    m_BucketEnds.assign(size_t{1} << bits, 0);
    for (uint32_t i = 0; i < count; ++i) {
        ++m_BucketEnds[bucketOf(m_Hosting.get(i).fingerprint)];
    }
    std::partial_sum(m_BucketEnds.begin(), m_BucketEnds.end(), m_BucketEnds.begin());
    m_Candidates.resize(count);
    std::vector<uint32_t> places(m_BucketEnds);
    for (uint32_t i = count; i-- > 0;) {
        const uint64_t fingerprint = m_Hosting.get(i).fingerprint;
        m_Candidates[--places[bucketOf(fingerprint)]] = {fingerprint, i};
    }
}

void GroupSearch::searchBucket(std::span<Candidate> bucket) {
    std::sort(bucket.begin(), bucket.end());
    for (auto start = bucket.begin(); start != bucket.end();) {
        const auto end = std::find_if(start, bucket.end(), [start](const Candidate& other) {
            return other.fingerprint != start->fingerprint;
        });
        if (end - start > 1) {
            MemberIndexes run;
            std::transform(start, end, std::back_inserter(run),
                           [](const Candidate& candidate) { return candidate.index; });
            divide(std::move(run));
        }
        start = end;
    }
}

// Takes members with one fingerprint for a group if their names say the same.
void GroupSearch::divide(MemberIndexes run) {
    SymbolComparison first(m_Hosting.namesOf(run[0]));
    const bool isGroup = std::all_of(run.begin() + 1, run.end(), [&](uint32_t index) {
        return first.symbolCompatible(m_Hosting.namesOf(index));
    });
    if (isGroup) {
        m_Groups.push_back(std::move(run));
    } else {
        divideByNames(run);
    }
}

// Different lists with one fingerprint: somebody has set out to find such. Sorting puts equal ones
// together however many there are.
void GroupSearch::divideByNames(const MemberIndexes& run) {
    std::vector<std::pair<std::vector<std::string_view>, uint32_t>> lists;
    lists.reserve(run.size());
    for (const uint32_t index : run) {
        lists.emplace_back(sortedNames(m_Hosting.namesOf(index)), index);
    }
    std::sort(lists.begin(), lists.end());
    for (auto start = lists.begin(); start != lists.end();) {
        MemberIndexes group;
        auto end = start;
        for (; end != lists.end() && end->first == start->first; ++end) {
            group.push_back(end->second);
        }
        if (group.size() > 1) {
            m_Groups.push_back(std::move(group));
        }
        start = end;
    }
}

// How a member was built, as it states it; for one that states nothing, what no text says.
attributes::FullAttr attributesOf(const Archive& archive, const HostingMember& host) {
    ArchiveMember& minorVariantMember = *host.member;
    TOMEX_CHECK_TEXT(minorVariantMember.getType()->isObjectModule(),
                     "minorVariantMember->getType()->isObjectModule()");
    const bool fromSection = archive.getBuildAttributesFromSection();
    attributes::FullAttr result;
    bool isFound = false;
    if (!fromSection && host.knowsMarkers) {
        MarkerAttributes markers(result);
        for (const auto* marker = host.markers; marker != nullptr; marker = marker->next) {
            markers.add(marker->decoration);
        }
        isFound = markers.isFound();
    } else {
        const auto* type =
            static_cast<const ObjectModuleArchiveMemberType*>(minorVariantMember.getType());
        isFound = type->getBuildAttributes(minorVariantMember, result, fromSection);
    }
    if (!isFound) {
        attributes::parseDecoration(result, "");
    }
    return result;
}

} // namespace

uint64_t symbolFingerprint(SymbolNames names) {
    uint64_t sum = names.size();
    for (const std::string_view name : names) {
        sum += platform::mixBytes(0, name.data(), name.size());
    }
    return sum;
}

bool SymbolComparison::symbolCompatible(SymbolNames second) {
    if (m_First.size() != second.size()) {
        return false;
    }
    // Builds of one source mostly list their names in one order.
    if (std::equal(m_First.begin(), m_First.end(), second.begin())) {
        return true;
    }
    if (m_Sorted.empty()) {
        m_Sorted = sortedNames(m_First);
    }
    return m_Sorted == sortedNames(second);
}

void MinorVariantGroups::collect(const Archive& archive, const HostingMembers& hosting) {
    m_IsGrouped.setSize(hosting.getSize());
    GroupSearch search(hosting);
    const std::vector<MemberIndexes>& groups = search.run();
    // Large blocks that are grown out of cost memory twice.
    m_Variants.reserve(std::accumulate(groups.begin(), groups.end(), uint32_t{0},
                                       [](uint32_t count, const MemberIndexes& group) {
                                           return count + static_cast<uint32_t>(group.size());
                                       }));
    for (const MemberIndexes& group : groups) {
        m_Starts.add(m_Variants.getSize());
        for (const uint32_t index : group) {
            const HostingMember& host = hosting.get(index);
            m_IsGrouped[index] = true;
            m_Variants.add({host.member, hosting.namesOf(index), attributesOf(archive, host)});
        }
    }
}

} // namespace arlib
