// The two tags that an object may state more than once.
//
// `Tag_compatibility` names a tool chain whose conventions the object follows: a flag and a vendor
// name, e.g. 2 and "QEL". `Tag_also_compatible_with` holds a whole second attribute, e.g. another
// architecture that the object can run on. Both are kept in order of arrival.
#pragma once

#include "attributes/interface/owned_text.h"
#include "elfext/interface/array.h"
#include "elfext/interface/hash_set.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <memory>

namespace attributes {

// One `Tag_compatibility`. The name belongs to whoever made the entry: a module's cache, the bytes
// of a section while it is walked, or the program.
struct CompatibilityTag {
    CompatibilityTag() = default;
    // `name` is not null.
    CompatibilityTag(uint32_t entryFlag, const char* name) : flag(entryFlag), vendorName(name) {
        TOMEX_CHECK_TEXT(name != nullptr, "vendorName != NULL");
    }

    // Names are compared by contents.
    bool operator==(const CompatibilityTag& other) const;

    uint32_t flag = 0;
    const char* vendorName = nullptr;
};

// Entries in order of arrival, no two of them equal. Adding is independent of the length, and so is
// a removal that finds nothing or the last entry.
class CompatibilityTagList {
public:
    CompatibilityTagList() = default;
    CompatibilityTagList(const CompatibilityTagList& other) : m_Entries(other.m_Entries) {}
    CompatibilityTagList& operator=(const CompatibilityTagList& other);

    uint32_t getCount() const { return m_Entries.getSize(); }
    const CompatibilityTag& operator[](uint32_t index) const { return m_Entries[index]; }
    const CompatibilityTag* begin() const { return m_Entries.begin(); }
    const CompatibilityTag* end() const { return m_Entries.end(); }

    bool contains(const CompatibilityTag& entry) const;

    // The place of the equal entry, or null.
    const CompatibilityTag* find(const CompatibilityTag& entry) const;

    // Appends `entry` unless it is there. True if it was appended.
    bool add(const CompatibilityTag& entry);

    // Takes out the equal entry. False if there was none.
    bool remove(const CompatibilityTag& entry);

    // Takes out all entries of a vendor, and says how many there were.
    uint32_t removeVendor(const char* vendorName);

    // Lets the entry at `index` refer to another copy of its name.
    void setVendorName(uint32_t index, const char* vendorName);

    bool operator==(const CompatibilityTagList& other) const {
        return m_Entries == other.m_Entries;
    }

private:
    // Up to this many entries a walk is as fast as the index.
    static constexpr uint32_t UnindexedCount = 16;

    void makeIndex();
    bool isThere(const CompatibilityTag& entry);

    elfext::array<CompatibilityTag> m_Entries;
    // All entries; made by the first `add` to a list that is long, or `remove` from it.
    std::unique_ptr<elfext::hash_set<CompatibilityTag>> m_Index;
};

// One `Tag_also_compatible_with`: the attribute in it.
class AlsoCompatibilityTag {
public:
    AlsoCompatibilityTag() = default;
    // An attribute with a number, with a text, with both. The text is copied and not null.
    AlsoCompatibilityTag(uint32_t nestedTag, uint32_t number);
    AlsoCompatibilityTag(uint32_t nestedTag, const char* textParameter);
    AlsoCompatibilityTag(uint32_t nestedTag, uint32_t number, const char* textParameter);

    // The number of the nested tag: seven bits, the others are lost.
    uint32_t getTag() const { return tag; }

    bool hasNumber() const { return m_HasNumericParameter; }
    // The number. There must be one.
    uint32_t getNumber() const {
        TOMEX_CHECK(m_HasNumericParameter);
        return parameter;
    }

    bool hasText() const { return hasStringParameter; }
    // The text, null when there is none.
    const char* getText() const { return text.get(); }

    bool operator==(const AlsoCompatibilityTag&) const = default;

private:
    static constexpr uint32_t TagMask = 127;

    uint32_t tag = 0;
    bool m_HasNumericParameter = false;
    bool hasStringParameter = false;
    uint32_t parameter = 0;
    OwnedText text;
};

// Entries in order of arrival; equal ones may stand there twice.
class AlsoCompatibilityTagList {
public:
    static constexpr uint32_t NotFound = UINT32_MAX;

    uint32_t getCount() const { return m_Entries.getSize(); }
    const AlsoCompatibilityTag& operator[](uint32_t index) const { return m_Entries[index]; }
    const AlsoCompatibilityTag* begin() const { return m_Entries.begin(); }
    const AlsoCompatibilityTag* end() const { return m_Entries.end(); }

    void add(const AlsoCompatibilityTag& entry) { m_Entries.add(entry); }
    // The index of the first equal entry, or `NotFound`. Linear.
    uint32_t find(const AlsoCompatibilityTag& entry) const;
    void remove(uint32_t index) { m_Entries.remove(index); }
    void clear() { m_Entries.clear(); }

    // Appends each entry of `base` that this list did not have before the call. Takes time in
    // proportion to both lengths.
    void addMissing(const AlsoCompatibilityTagList& base);

    bool operator==(const AlsoCompatibilityTagList& other) const {
        return m_Entries == other.m_Entries;
    }

private:
    elfext::array<AlsoCompatibilityTag> m_Entries;
};

} // namespace attributes
