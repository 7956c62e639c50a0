#include "arlib/src/minor_variant_groups.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "arlib/interface/archive.h"
#include "arlib/src/marker_attributes.h"
#include "attributes/interface/decoration.h"
#include "platform/interface/internal_check.h"

namespace arlib {
namespace {

using Hosts = elfext::fast_array<HostingMember>;
using SortedNames = std::vector<std::string_view>;
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

uint64_t mixed(uint64_t hash, uint64_t word) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15;
    return hash ^ (hash >> 32);
}

uint64_t hashOf(std::string_view name) {
    constexpr size_t wordSize = sizeof(uint64_t);
    uint64_t hash = mixed(0, name.size());
    const char* next = name.data();
    size_t left = name.size();
    for (; left >= wordSize; left -= wordSize, next += wordSize) {
        uint64_t word = 0;
        std::memcpy(&word, next, wordSize);
        hash = mixed(hash, word);
    }
    uint64_t rest = 0;
    for (size_t i = 0; i < left; ++i) {
        rest = rest << 8 | static_cast<unsigned char>(next[i]);
    }
    return mixed(mixed(hash, rest), wordSize);
}

SortedNames sortedNames(const SymbolNameList& list) {
    SortedNames names;
    names.reserve(list.getSize());
    for (uint32_t i = 0; i < list.getSize(); ++i) {
        names.push_back(list.get(i));
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool isSameSequence(const SymbolNameList& first, const SymbolNameList& second) {
    for (uint32_t i = 0; i < first.getSize(); ++i) {
        if (first.get(i) != second.get(i)) {
            return false;
        }
    }
    return true;
}

// Finds the groups among the hosting members of one archive.
class GroupSearch {
public:
    explicit GroupSearch(const Hosts& hosting) : m_Hosting(hosting) {}

    // The groups, in the order of their first members.
    const std::vector<MemberIndexes>& run();

private:
    void sortIntoBuckets();
    void searchBucket(std::span<Candidate> bucket);
    void divide(MemberIndexes run);
    void divideByNames(const MemberIndexes& run);

    const Hosts& m_Hosting;
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
    for (const HostingMember& host : m_Hosting) {
        ++m_BucketEnds[bucketOf(host.fingerprint)];
    }
    std::partial_sum(m_BucketEnds.begin(), m_BucketEnds.end(), m_BucketEnds.begin());
    m_Candidates.resize(count);
    std::vector<uint32_t> places(m_BucketEnds);
    for (uint32_t i = count; i-- > 0;) {
        const uint64_t fingerprint = m_Hosting[i].fingerprint;
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
    const SymbolNameList& first = *m_Hosting[run[0]].names;
    const bool isGroup = std::all_of(run.begin() + 1, run.end(), [&](uint32_t index) {
        return symbolCompatible(first, *m_Hosting[index].names);
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
    std::vector<std::pair<SortedNames, uint32_t>> lists;
    lists.reserve(run.size());
    for (const uint32_t index : run) {
        lists.emplace_back(sortedNames(*m_Hosting[index].names), index);
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
    if (!fromSection && host.names->knowsMarkers()) {
        MarkerAttributes markers(result);
        for (const auto* marker = host.names->getMarkers(); marker != nullptr;
             marker = marker->next) {
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

uint64_t symbolFingerprint(const SymbolNameList& names) {
    uint64_t sum = names.getSize();
    for (uint32_t i = 0; i < names.getSize(); ++i) {
        sum += hashOf(names.get(i));
    }
    return sum;
}

bool symbolCompatible(const SymbolNameList& first, const SymbolNameList& second) {
    if (first.getSize() != second.getSize()) {
        return false;
    }
    // Builds of one source mostly list their names in one order.
    return isSameSequence(first, second) || sortedNames(first) == sortedNames(second);
}

void MinorVariantGroups::collect(const Archive& archive, const Hosts& hosting) {
    m_IsGrouped.setSize(hosting.getSize());
    GroupSearch search(hosting);
    for (const MemberIndexes& group : search.run()) {
        m_Starts.add(m_Variants.getSize());
        for (const uint32_t index : group) {
            const HostingMember& host = hosting[index];
            m_IsGrouped[index] = true;
            m_Variants.add({host.member, host.names, attributesOf(archive, host)});
        }
    }
}

} // namespace arlib
