#include "attributes/interface/compatibility_tags.h"

#include <cstring>
#include <unordered_set>

#include "platform/interface/text_hash.h"

namespace attributes {

namespace {

using platform::foldHash;
using platform::mixHash;
using platform::mixText;

uint32_t hashOfEntry(const CompatibilityTag* entry) {
    return foldHash(mixText(mixHash(0, entry->flag), entry->vendorName));
}

// A key that refers to an entry of a list.
struct AlsoCompatibilityKey {
    const AlsoCompatibilityTag* entry;

    bool operator==(const AlsoCompatibilityKey& other) const { return *entry == *other.entry; }
};

struct AlsoCompatibilityKeyHash {
    size_t operator()(const AlsoCompatibilityKey& key) const {
        uint64_t hash = mixHash(0, key.entry->getTag());
        if (key.entry->hasNumber()) {
            hash = mixHash(hash, key.entry->getNumber());
        }
        if (key.entry->getText() != nullptr) {
            hash = mixText(hash, key.entry->getText());
        }
        return static_cast<size_t>(hash);
    }
};

} // namespace

bool CompatibilityTag::operator==(const CompatibilityTag& other) const {
    if (flag != other.flag) {
        return false;
    }
    if (vendorName == nullptr || other.vendorName == nullptr) {
        return vendorName == other.vendorName;
    }
    return vendorName == other.vendorName || std::strcmp(vendorName, other.vendorName) == 0;
}

CompatibilityTagList& CompatibilityTagList::operator=(const CompatibilityTagList& other) {
    if (this != &other) {
        m_Entries = other.m_Entries;
        m_Index.reset();
    }
    return *this;
}

void CompatibilityTagList::makeIndex() {
    m_Index = std::make_unique<elfext::hash_set<CompatibilityTag>>(&hashOfEntry);
    for (const CompatibilityTag& entry : m_Entries) {
        m_Index->add(entry);
    }
}

bool CompatibilityTagList::contains(const CompatibilityTag& entry) const {
    return m_Index != nullptr ? m_Index->contains(entry) : find(entry) != nullptr;
}

const CompatibilityTag* CompatibilityTagList::find(const CompatibilityTag& entry) const {
    // From the last on: what is looked for is most often what was just added.
    for (const CompatibilityTag* last = end(); last != begin();) {
        --last;
        if (*last == entry) {
            return last;
        }
    }
    return nullptr;
}

bool CompatibilityTagList::isThere(const CompatibilityTag& entry) {
    if (m_Index == nullptr && getCount() >= UnindexedCount) {
        makeIndex();
    }
    return contains(entry);
}

bool CompatibilityTagList::add(const CompatibilityTag& entry) {
    if (isThere(entry)) {
        return false;
    }
    m_Entries.add(entry);
    if (m_Index != nullptr) {
        m_Index->add(entry);
    }
    return true;
}

bool CompatibilityTagList::remove(const CompatibilityTag& entry) {
    const CompatibilityTag* const place = isThere(entry) ? find(entry) : nullptr;
    if (place == nullptr) {
        return false;
    }
    if (m_Index != nullptr) {
        m_Index->remove(entry);
    }
    m_Entries.remove(static_cast<uint32_t>(place - begin()));
    return true;
}

uint32_t CompatibilityTagList::removeVendor(const char* vendorName) {
    uint32_t kept = 0;
    for (const CompatibilityTag& entry : m_Entries) {
        if (std::strcmp(entry.vendorName, vendorName) != 0) {
            m_Entries[kept++] = entry;
        }
    }
    const uint32_t removed = getCount() - kept;
    m_Entries.setSize(kept);
    m_Index.reset();
    return removed;
}

void CompatibilityTagList::setVendorName(uint32_t index, const char* vendorName) {
    m_Index.reset(); // its keys refer to the other copy
    m_Entries[index].vendorName = vendorName;
}

AlsoCompatibilityTag::AlsoCompatibilityTag(uint32_t nestedTag, uint32_t number)
    : tag(nestedTag & TagMask), m_HasNumericParameter(true), parameter(number) {
}

AlsoCompatibilityTag::AlsoCompatibilityTag(uint32_t nestedTag, const char* textParameter)
    : tag(nestedTag & TagMask), hasStringParameter(true), text(textParameter) {
    TOMEX_CHECK_TEXT(textParameter != nullptr, "parameter != NULL");
}

AlsoCompatibilityTag::AlsoCompatibilityTag(uint32_t nestedTag, uint32_t number,
                                           const char* textParameter)
    : tag(nestedTag & TagMask), m_HasNumericParameter(true), hasStringParameter(true),
      parameter(number), text(textParameter) {
    TOMEX_CHECK_TEXT(textParameter != nullptr, "parameter2 != NULL");
}

uint32_t AlsoCompatibilityTagList::find(const AlsoCompatibilityTag& entry) const {
    for (uint32_t i = 0; i < getCount(); ++i) {
        if (m_Entries[i] == entry) {
            return i;
        }
    }
    return NotFound;
}

void AlsoCompatibilityTagList::addMissing(const AlsoCompatibilityTagList& base) {
    // The keys refer to a copy, since adding moves the entries.
    const AlsoCompatibilityTagList before(*this);
    std::unordered_set<AlsoCompatibilityKey, AlsoCompatibilityKeyHash> known;
    for (const AlsoCompatibilityTag& entry : before) {
        known.insert({&entry});
    }
    for (const AlsoCompatibilityTag& entry : base) {
        if (!known.contains({&entry})) {
            add(entry);
        }
    }
}

} // namespace attributes
