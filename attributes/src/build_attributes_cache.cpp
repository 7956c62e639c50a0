#include "attributes/interface/build_attributes_cache.h"

#include <cstring>
#include <memory>
#include <new>

#include "elfext/interface/fast_hash_set.h"
#include "platform/interface/text_hash.h"

namespace attributes {

namespace {

using platform::foldHash;
using platform::mixBytes;
using platform::mixHash;
using platform::mixText;

// Bytes with their hash; the bytes belong to somebody else.
struct BytesKey {
    bool operator==(const BytesKey& other) const {
        return hash == other.hash && length == other.length &&
               std::memcmp(bytes, other.bytes, length) == 0;
    }
    static uint32_t hashOf(const BytesKey* key) { return foldHash(key->hash); }

    const uint8_t* bytes;
    uint32_t length;
    uint64_t hash;
};

// A vendor name with its hash.
struct NameKey {
    explicit NameKey(const char* text) : name(text), hash(mixText(0, text)) {}
    bool operator==(const NameKey& other) const {
        return hash == other.hash && std::strcmp(name, other.name) == 0;
    }
    static uint32_t hashOf(const NameKey* key) { return foldHash(key->hash); }

    const char* name;
    uint64_t hash;
};

// A block by the interned name and the interned bytes.
struct BlockKey {
    bool operator==(const BlockKey&) const = default;
    static uint32_t hashOf(const BlockKey* key) {
        const uint64_t name = reinterpret_cast<uintptr_t>(key->vendorName);
        return foldHash(mixHash(name, reinterpret_cast<uintptr_t>(key->bytes)));
    }

    const char* vendorName;
    const uint8_t* bytes;
};

// Texts of symbols, which an attacker may choose so that all have the same hash of their own kind.
uint32_t hashOfText(const elfext::Stringlett* key) {
    return foldHash(mixText(0, key->getString()));
}

// A record with its hash.
struct RecordKey {
    bool operator==(const RecordKey& other) const {
        return hash == other.hash && record->equals(*other.record);
    }
    static uint32_t hashOf(const RecordKey* key) { return foldHash(key->hash); }

    const BuildAttributes* record;
    uint64_t hash;
};

template <typename Object, typename... Arguments>
Object* makeIn(alloclib::Region& region, Arguments&&... arguments) {
    static_assert(alignof(Object) <= 8, "blocks of a region are 8-aligned");
    return new (alloclib::allocate(region, sizeof(Object), 8))
        Object(std::forward<Arguments>(arguments)...);
}

} // namespace

// Equal things are found by hash in place of a walk along the arrays: how many of them there are is
// up to the file. What is found is the same, since no two entries of an array are equal.
struct BuildAttributesCache::Indexes {
    explicit Indexes(alloclib::Region* region)
        : names(region, &NameKey::hashOf), bytes(region, &BytesKey::hashOf),
          blocks(region, &BlockKey::hashOf), records(region, &RecordKey::hashOf),
          internedNames(region), internedBytes(region), internedRecords(region) {}

    elfext::fast_hash_table<NameKey, const char*> names;
    elfext::fast_hash_table<BytesKey, ByteBlock> bytes;
    elfext::fast_hash_table<BlockKey, const BuildAttributesBlock*> blocks;
    elfext::fast_hash_table<RecordKey, const BuildAttributes*> records;
    // What belongs to the cache, by address.
    elfext::fast_hash_set<const char*> internedNames;
    elfext::fast_hash_table<const uint8_t*, uint32_t> internedBytes; // to their lengths
    elfext::fast_hash_set<const BuildAttributes*> internedRecords;
};

BuildAttributesMemo::BuildAttributesMemo(alloclib::Region* region)
    : m_Region(region), m_Records(region, &hashOfText) {
}

const BuildAttributes* BuildAttributesMemo::find(const char* text) const {
    return m_Records.find(elfext::Stringlett(text));
}

void BuildAttributesMemo::add(const char* text, const BuildAttributes& record) {
    m_Records.set(elfext::Stringlett(alloclib::copyString(*m_Region, text)), record);
}

BuildAttributesCache::BuildAttributesCache(alloclib::Region* region)
    : m_Region(region), m_VendorNames(region), m_ByteBlocks(region), m_Blocks(region),
      m_Records(region) {
}

BuildAttributesCache::~BuildAttributesCache() {
    for (BuildAttributes* record : m_Records) {
        std::destroy_at(record);
    }
    if (m_Memo != nullptr) {
        std::destroy_at(m_Memo);
    }
    // The indexes hold nothing outside of the region.
}

BuildAttributesCache::Indexes& BuildAttributesCache::indexes() {
    if (m_Indexes == nullptr) {
        m_Indexes = makeIn<Indexes>(*m_Region, m_Region);
    }
    return *m_Indexes;
}

BuildAttributesMemo& BuildAttributesCache::getMemo() {
    if (m_Memo == nullptr) {
        m_Memo = makeIn<BuildAttributesMemo>(*m_Region, m_Region);
    }
    return *m_Memo;
}

const char* BuildAttributesCache::findVendorName(const char* vendorName) const {
    TOMEX_CHECK_TEXT(vendorName != nullptr, "vendorName != NULL");
    if (m_Indexes == nullptr) {
        return nullptr;
    }
    if (m_Indexes->internedNames.contains(vendorName)) {
        return vendorName;
    }
    const char* const* const name = m_Indexes->names.find(NameKey(vendorName));
    return name != nullptr ? *name : nullptr;
}

const char* BuildAttributesCache::internVendorName(const char* vendorName) {
    if (const char* const known = findVendorName(vendorName)) {
        return known;
    }
    Indexes& known = indexes();
    const char* const copy = alloclib::copyString(*m_Region, vendorName);
    m_VendorNames.add(copy);
    known.names.set(NameKey(copy), copy);
    known.internedNames.add(copy);
    return copy;
}

BuildAttributesCache::ByteBlock BuildAttributesCache::internBytes(const uint8_t* data,
                                                                  uint32_t length) {
    Indexes& known = indexes();
    const uint32_t* const internedLength = known.internedBytes.find(data);
    if (internedLength != nullptr && *internedLength == length) {
        return {data, length};
    }
    BytesKey key{data, length, mixBytes(0, data, length)};
    if (const ByteBlock* const found = known.bytes.find(key)) {
        return *found;
    }
    // At least one byte, so that each block has an address of its own.
    auto* const copy =
        static_cast<uint8_t*>(alloclib::allocate(*m_Region, length + uint64_t{1}, 1));
    std::memcpy(copy, data, length);
    const ByteBlock block{copy, length};
    m_ByteBlocks.add(block);
    key.bytes = copy;
    known.bytes.set(key, block);
    known.internedBytes.set(copy, length);
    return block;
}

const BuildAttributesBlock*
BuildAttributesCache::internBlock(const char* vendorName, const uint8_t* data, uint32_t length) {
    TOMEX_CHECK_TEXT(data != nullptr, "data != NULL");
    const char* const name = internVendorName(vendorName);
    const ByteBlock bytes = internBytes(data, length);
    const BlockKey key{name, bytes.bytes};
    if (const auto* const found = indexes().blocks.find(key)) {
        return *found;
    }
    auto* const block = makeIn<BuildAttributesBlock>(*m_Region, name, bytes.bytes, bytes.length);
    m_Blocks.add(block);
    indexes().blocks.set(key, block);
    return block;
}

const BuildAttributes* BuildAttributesCache::internRecord(const BuildAttributes& attributes) {
    Indexes& known = indexes();
    if (known.internedRecords.contains(&attributes)) {
        return &attributes;
    }
    const RecordKey key{&attributes, attributes.hash()};
    if (const auto* const found = known.records.find(key)) {
        return *found;
    }
    const BuildAttributes* const record = addRecord(attributes);
    known.records.set({record, key.hash}, record);
    known.internedRecords.add(record);
    return record;
}

const BuildAttributes* BuildAttributesCache::addRecord(const BuildAttributes& attributes) {
    auto* const record = makeIn<BuildAttributes>(*m_Region, attributes);
    m_Records.add(record);
    if (record->derivedStale) {
        record->rebuildFullAttr();
    }
    for (uint32_t i = 0; i < record->getCompatibilityTagCount(); ++i) {
        const char* const name = (*record->m_CompatibilityTags)[i].vendorName;
        record->m_CompatibilityTags->setVendorName(i, internVendorName(name));
    }
    return record;
}

} // namespace attributes
