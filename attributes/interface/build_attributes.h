// One set of build attributes: how an object, a section or a symbol was built.
//
// The record has two faces. The slots and lists are faithful to the file: they say which tags were
// written there, and with what. `fullAttr` is the meaning: what is compared, merged and printed.
// It is derived from the tags lazily, by `rebuildFullAttr`; `derivedStale` says that it has to be.
// The way back, `fromFullAttr`, serves objects that state their attributes by a decorated symbol.
//
// Records are values while they are filled, and immutable once a `BuildAttributesCache` has
// interned them. A record owns its lists and tables but not the vendor names in them; those of an
// interned record belong to its cache.
#pragma once

#include "attributes/interface/compatibility_tags.h"
#include "attributes/interface/full_attr.h"
#include "attributes/interface/standard_tags.h"
#include "elfext/interface/hash_table.h"

#include <cstdint>
#include <memory>

namespace attributes {

class BuildAttributesCache;
class BuildAttributesMemo;

// The value of a record that states nothing. Made on first use.
const FullAttr& defaultFullAttr();

class BuildAttributes {
public:
    using NumericTagTable = elfext::hash_table<uint32_t, uint32_t>;
    using StringTagTable = elfext::hash_table<uint32_t, OwnedText>;

    struct EmptyRecord {};

    // A record that states nothing; its value is the default one.
    BuildAttributes();
    // The empty record, which is what an operation yields when an operand is empty: not present,
    // all zero.
    explicit BuildAttributes(EmptyRecord);
    // The record that belongs to a decoration (a text of "$" tokens, not null). It is taken from
    // `memo`, or made and put there.
    BuildAttributes(const char* buildAttributesString, BuildAttributesMemo& memo,
                    BuildAttributesCache& cache);
    BuildAttributes(const BuildAttributes& other);
    BuildAttributes(BuildAttributes&&) noexcept = default;
    BuildAttributes& operator=(const BuildAttributes& other);
    BuildAttributes& operator=(BuildAttributes&&) noexcept = default;
    ~BuildAttributes() = default;

    // Derives `fullAttr` from the tags. Tags of any value are good; a value without a meaning has
    // none.
    void rebuildFullAttr();

    // Takes `value` over and sets the tags to what it means.
    void fromFullAttr(const FullAttr& value);

    // Whether both say the same. `fullAttr` takes no part in it, nor do the tags whose rows say
    // so. A list that is there and empty is not equal to none.
    bool equals(const BuildAttributes& other) const;

    // A number that is the same for equal records.
    uint64_t hash() const;

    bool isPresent(Tag tag) const { return m_StandardTags.isPresent(tag); }
    // What a slot holds; 0 or "" when it is absent.
    uint32_t getNumber(Tag tag) const { return m_StandardTags.getNumber(tag); }
    const char* getText(Tag tag) const { return m_StandardTags.getText(tag); }

    // Sets a tag with a number, which is cut to the slot's width, with all that hangs on it:
    //  - `derivedStale`, as the tag's row says;
    //  - `Tag_ABI_optimization_goals` updates the options of `fullAttr` at once;
    //  - `Tag_AV_interworking` and `Tag_AV_mdivide` add or remove the compatibility with "QEL";
    //  - `Tag_AV_require8` and `Tag_AV_eba` settle `Tag_ABI_align_needed`.
    void setTag(Tag tag, uint32_t value);

    // The texts; `name` is not null and has at most 31 characters. With checks switched off a
    // longer one is cut.
    void setCpuRawName(const char* name);
    void setCpuName(const char* name);
    // Does nothing if there are compatibility entries: a list of them replaces the claim.
    void setConformance(const char* conformance);
    // Claims conformance to the current public version, "2.09", unless there are compatibility
    // entries.
    void setDefaultConformance();

    // Adds a compatibility entry unless it is there, and says whether it was added; clears
    // `Tag_conformance` either way. `vendorName` is not null and must outlive the record, or the
    // record's interning.
    bool addCompatibilityTag(uint32_t flag, const char* vendorName);
    // The entry, or null.
    const CompatibilityTag* findCompatibilityTag(uint32_t flag, const char* vendorName) const;
    // Removes all entries of a vendor and says how many there were.
    uint32_t removeCompatibilityTag(const char* vendorName);
    // How many compatibility entries there are.
    uint32_t getCompatibilityTagCount() const {
        return m_CompatibilityTags != nullptr ? m_CompatibilityTags->getCount() : 0;
    }

    void addAlsoCompatibilityTag(const AlsoCompatibilityTag& entry);
    uint32_t getAlsoCompatibilityTagCount() const {
        return m_AlsoCompatibilityTags != nullptr ? m_AlsoCompatibilityTags->getCount() : 0;
    }

    // Tags without a slot. The texts are copied.
    void setOtherNumericTag(uint32_t number, uint32_t value);
    void setOtherStringTag(uint32_t number, const char* text);

    bool present = true;
    FullAttr fullAttr;         // good while `derivedStale` is false
    bool derivedStale = false; // a tag changed since `rebuildFullAttr`
    StandardTags m_StandardTags;
    std::unique_ptr<CompatibilityTagList> m_CompatibilityTags;         // may be null
    std::unique_ptr<AlsoCompatibilityTagList> m_AlsoCompatibilityTags; // may be null
    std::unique_ptr<NumericTagTable> otherNumericTags;                 // may be null
    std::unique_ptr<StringTagTable> otherStringTags;                   // may be null

    // The parts of `setTag` that a merge does again for tags that it took over, and a conversion
    // for tags that it set: the entry of "QEL" that stands for two tags, and the alignment that
    // follows from two others, which makes `fullAttr` stale.
    void updateQelCompatibility();
    void updateAlignmentNeeded();
};

} // namespace attributes
