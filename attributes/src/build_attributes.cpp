#include "attributes/interface/build_attributes.h"

#include <cstring>

#include "attributes/interface/feature_words.h"
#include "attributes/interface/option_strings.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/text_hash.h"

namespace attributes {

namespace {

using platform::mixHash;
using platform::mixText;

constexpr uint32_t QelFlag = 2; // what objects of this tool chain state as compatible with "QEL"
constexpr const char* PublicVersion = "2.09";

FullAttr makeDefaultFullAttr() {
    using namespace option_bit;
    FullAttr value;
    for (uint16_t& access : value.access) {
        access = access_bit::L11 | access_bit::L22 | access_bit::L44;
    }
    value.options = IW | USESV6 | NOT_STKCKD | USESV7 | NOT_SHL | OSPACE | EBA8;
    value.abiVersion = abi_version::EABIv2;
    return value;
}

// Whether a text can be kept in a slot as it is.
bool fits(const char* text) {
    return text != nullptr && std::strlen(text) < StandardTags::TextSize;
}

template <typename Owned>
std::unique_ptr<Owned> clone(const std::unique_ptr<Owned>& original) {
    return original != nullptr ? std::make_unique<Owned>(*original) : nullptr;
}

template <typename Key, typename Value>
std::unique_ptr<elfext::hash_table<Key, Value>>
clone(const std::unique_ptr<elfext::hash_table<Key, Value>>& original) {
    if (original == nullptr) {
        return nullptr;
    }
    auto copy = std::make_unique<elfext::hash_table<Key, Value>>();
    for (const auto& node : *original) {
        copy->set(node.key, node.value);
    }
    return copy;
}

// Whether both are null, or both set with equal contents.
template <typename List>
bool equalLists(const std::unique_ptr<List>& a, const std::unique_ptr<List>& b) {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    return *a == *b;
}

template <typename Table>
bool equalTables(const std::unique_ptr<Table>& a, const std::unique_ptr<Table>& b) {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    if (a->getCount() != b->getCount()) {
        return false;
    }
    for (const auto& node : *a) {
        const auto* const value = b->find(node.key);
        if (value == nullptr || !(*value == node.value)) {
            return false;
        }
    }
    return true;
}

uint64_t hashOfSlots(const StandardTags& tags) {
    uint64_t hash = 0;
    for (const TagRow& row : tagRows) {
        if (!row.isCompared || !tags.isPresent(row.tag)) {
            continue;
        }
        hash = mixHash(hash, row.tag);
        hash = row.form == TagForm_Text ? mixText(hash, tags.getText(row.tag))
                                        : mixHash(hash, tags.getNumber(row.tag));
    }
    return hash;
}

uint64_t hashOfValue(uint32_t value) {
    return mixHash(0, value);
}

uint64_t hashOfValue(const OwnedText& value) {
    return value.get() != nullptr ? mixText(0, value.get()) : 0;
}

// A sum, since the order of a table's nodes says nothing.
template <typename Table>
uint64_t hashOfTable(const std::unique_ptr<Table>& table) {
    if (table == nullptr) {
        return 0;
    }
    uint64_t sum = 1;
    for (const auto& node : *table) {
        sum += mixHash(hashOfValue(node.value), node.key);
    }
    return sum;
}

} // namespace

const FullAttr& defaultFullAttr() {
    static const FullAttr value = makeDefaultFullAttr();
    return value;
}

BuildAttributes::BuildAttributes() : fullAttr(defaultFullAttr()) {
}

BuildAttributes::BuildAttributes(EmptyRecord) : present(false) {
}

BuildAttributes::BuildAttributes(const BuildAttributes& other)
    : present(other.present), fullAttr(other.fullAttr), derivedStale(other.derivedStale),
      m_StandardTags(other.m_StandardTags), m_CompatibilityTags(clone(other.m_CompatibilityTags)),
      m_AlsoCompatibilityTags(clone(other.m_AlsoCompatibilityTags)),
      otherNumericTags(clone(other.otherNumericTags)),
      otherStringTags(clone(other.otherStringTags)) {
}

BuildAttributes& BuildAttributes::operator=(const BuildAttributes& other) {
    if (this != &other) {
        present = other.present;
        fullAttr = other.fullAttr;
        derivedStale = other.derivedStale;
        m_StandardTags = other.m_StandardTags;
        m_CompatibilityTags = clone(other.m_CompatibilityTags);
        m_AlsoCompatibilityTags = clone(other.m_AlsoCompatibilityTags);
        otherNumericTags = clone(other.otherNumericTags);
        otherStringTags = clone(other.otherStringTags);
    }
    return *this;
}

bool BuildAttributes::equals(const BuildAttributes& other) const {
    if (!present || !other.present) {
        return present == other.present;
    }
    for (const TagRow& row : tagRows) {
        if (!row.isCompared) {
            continue;
        }
        if (isPresent(row.tag) != other.isPresent(row.tag) ||
            !m_StandardTags.hasEqualValue(row.tag, other.m_StandardTags)) {
            return false;
        }
    }
    return equalLists(m_CompatibilityTags, other.m_CompatibilityTags) &&
           equalLists(m_AlsoCompatibilityTags, other.m_AlsoCompatibilityTags) &&
           equalTables(otherNumericTags, other.otherNumericTags) &&
           equalTables(otherStringTags, other.otherStringTags);
}

uint64_t BuildAttributes::hash() const {
    if (!present) {
        return 0;
    }
    uint64_t hash = hashOfSlots(m_StandardTags);
    if (m_CompatibilityTags != nullptr) {
        hash = mixHash(hash, m_CompatibilityTags->getCount());
        for (const CompatibilityTag& entry : *m_CompatibilityTags) {
            hash = mixText(mixHash(hash, entry.flag), entry.vendorName);
        }
    }
    if (m_AlsoCompatibilityTags != nullptr) {
        hash = mixHash(hash, m_AlsoCompatibilityTags->getCount());
        for (const AlsoCompatibilityTag& entry : *m_AlsoCompatibilityTags) {
            hash = mixHash(hash, entry.getTag());
            hash = entry.hasNumber() ? mixHash(hash, entry.getNumber()) : hash;
            hash = entry.hasText() ? mixText(hash, entry.getText()) : hash;
        }
    }
    return mixHash(mixHash(hash, hashOfTable(otherNumericTags)), hashOfTable(otherStringTags));
}

void BuildAttributes::setTag(Tag tag, uint32_t value) {
    m_StandardTags.setNumber(tag, value);
    if (tagRows[tag].setsStale) {
        derivedStale = true;
    }
    switch (tag) {
    case Tag_ABI_optimization_goals: {
        const uint32_t goals = getNumber(tag);
        applyOptionString(fullAttr.options, goals == 1 || goals == 2 ? "-otime" : "-ospace");
        break;
    }
    case Tag_AV_interworking:
    case Tag_AV_mdivide:
        updateQelCompatibility();
        break;
    case Tag_AV_require8:
    case Tag_AV_eba:
        updateAlignmentNeeded();
        break;
    default:
        break;
    }
}

void BuildAttributes::updateQelCompatibility() {
    if (getNumber(Tag_AV_interworking) != 0 || getNumber(Tag_AV_mdivide) != 0) {
        addCompatibilityTag(QelFlag, VendorName_Qel);
    } else if (m_CompatibilityTags != nullptr) {
        m_CompatibilityTags->remove({QelFlag, VendorName_Qel});
    }
}

void BuildAttributes::updateAlignmentNeeded() {
    const uint32_t eba = getNumber(Tag_AV_eba);
    uint32_t alignment = eba == 2 ? 2 : 0;
    if (eba == 0 && getNumber(Tag_AV_require8) == 0) {
        alignment = 1;
    }
    m_StandardTags.setNumber(Tag_ABI_align_needed, alignment);
    derivedStale = true;
}

void BuildAttributes::setCpuRawName(const char* name) {
    TOMEX_CHECK_TEXT(fits(name),
                     "name != NULL && strlen(name) + 1 <= sizeof(m_StandardTags.m_CpuRawName)");
    m_StandardTags.setText(Tag_CPU_raw_name, name);
}

void BuildAttributes::setCpuName(const char* name) {
    TOMEX_CHECK_TEXT(fits(name),
                     "name != NULL && strlen(name) + 1 <= sizeof(m_StandardTags.m_CpuName)");
    m_StandardTags.setText(Tag_CPU_name, name);
}

void BuildAttributes::setConformance(const char* conformance) {
    TOMEX_CHECK_TEXT(
        fits(conformance),
        "conformance != NULL && strlen(conformance) + 1 <= sizeof(m_StandardTags.m_Conformance)");
    if (getCompatibilityTagCount() == 0) {
        m_StandardTags.setText(Tag_conformance, conformance);
    }
}

void BuildAttributes::setDefaultConformance() {
    setConformance(PublicVersion);
}

bool BuildAttributes::addCompatibilityTag(uint32_t flag, const char* vendorName) {
    m_StandardTags.clear(Tag_conformance);
    if (m_CompatibilityTags == nullptr) {
        m_CompatibilityTags = std::make_unique<CompatibilityTagList>();
    }
    return m_CompatibilityTags->add({flag, vendorName});
}

const CompatibilityTag* BuildAttributes::findCompatibilityTag(uint32_t flag,
                                                              const char* vendorName) const {
    return m_CompatibilityTags != nullptr ? m_CompatibilityTags->find({flag, vendorName}) : nullptr;
}

uint32_t BuildAttributes::removeCompatibilityTag(const char* vendorName) {
    return m_CompatibilityTags != nullptr ? m_CompatibilityTags->removeVendor(vendorName) : 0;
}

void BuildAttributes::addAlsoCompatibilityTag(const AlsoCompatibilityTag& entry) {
    if (m_AlsoCompatibilityTags == nullptr) {
        m_AlsoCompatibilityTags = std::make_unique<AlsoCompatibilityTagList>();
    }
    m_AlsoCompatibilityTags->add(entry);
}

void BuildAttributes::setOtherNumericTag(uint32_t number, uint32_t value) {
    if (otherNumericTags == nullptr) {
        otherNumericTags = std::make_unique<NumericTagTable>();
    }
    otherNumericTags->set(number, value);
}

void BuildAttributes::setOtherStringTag(uint32_t number, const char* text) {
    if (otherStringTags == nullptr) {
        otherStringTags = std::make_unique<StringTagTable>();
    }
    otherStringTags->set(number, OwnedText(text));
}

} // namespace attributes
