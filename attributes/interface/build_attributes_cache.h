// What all records of a module share.
//
// Most sections and symbols of a module have equal attributes, so each distinct record is kept
// once, and objects point to it. The same holds for the raw blocks of bytes that the records were
// decoded from, and for vendor names. All of it lies in a region of the module and is never given
// back before the module goes: what was interned for one file is met again by the next file that is
// read into the same module. Required: records stay good as long as their module, whatever becomes
// of the objects that had them.
#pragma once

#include "alloclib/interface/region.h"
#include "attributes/interface/build_attributes.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/stringlett.h"
#include "platform/interface/internal_check.h"

#include <cstdint>

namespace attributes {

// The attributes of one vendor as they stand in a section: bytes, not interpreted. Owns neither
// the name nor the bytes.
class BuildAttributesBlock {
public:
    BuildAttributesBlock(const char* name, const uint8_t* bytes, uint32_t byteCount)
        : vendorName(name), length(byteCount), data(bytes) {
        TOMEX_CHECK_TEXT(name != nullptr, "vendorName != NULL");
        TOMEX_CHECK_TEXT(bytes != nullptr, "data != NULL");
    }
    BuildAttributesBlock(const BuildAttributesBlock&) = delete;
    BuildAttributesBlock& operator=(const BuildAttributesBlock&) = delete;
    virtual ~BuildAttributesBlock() = default;

    const char* getVendorName() const { return vendorName; }
    uint32_t getLength() const { return length; } // in bytes
    const uint8_t* getData() const { return data; }

private:
    const char* vendorName;
    uint32_t length;
    const uint8_t* data;
};

// The records of decorations that were met before, by their text.
class BuildAttributesMemo {
public:
    // `region` is not null and must outlive the memo.
    explicit BuildAttributesMemo(alloclib::Region* region);
    BuildAttributesMemo(const BuildAttributesMemo&) = delete;
    BuildAttributesMemo& operator=(const BuildAttributesMemo&) = delete;

    // The record of a text, or null. Good as long as the memo.
    const BuildAttributes* find(const char* text) const;
    // Keeps copies of both. `text` must not be there.
    void add(const char* text, const BuildAttributes& record);
    uint32_t getCount() const { return m_Records.getCount(); }

private:
    alloclib::Region* m_Region;
    elfext::fast_hash_table<elfext::Stringlett, BuildAttributes> m_Records;
};

// The cache of one module. Whoever makes it in a region must run its destructor before the region
// goes.
class BuildAttributesCache {
public:
    // `region` is not null and must outlive the cache.
    explicit BuildAttributesCache(alloclib::Region* region);
    BuildAttributesCache(const BuildAttributesCache&) = delete;
    BuildAttributesCache& operator=(const BuildAttributesCache&) = delete;
    ~BuildAttributesCache();

    // The cache's own copy of a name. `vendorName` is not null.
    const char* internVendorName(const char* vendorName);
    // The same, or null if there is none yet.
    const char* findVendorName(const char* vendorName) const;

    // The block with this vendor name and these bytes, which are copied the first time. Neither
    // pointer is null. Asking with the name and the bytes of a block that is interned already is
    // a single look-up, however long it is.
    const BuildAttributesBlock* internBlock(const char* vendorName, const uint8_t* data,
                                            uint32_t length);

    // The first record that equals `attributes`. If there is none, a copy is made, with its
    // `fullAttr` rebuilt if it was stale, and with vendor names of the cache. Asking with a record
    // that is interned already is a single look-up.
    const BuildAttributes* internRecord(const BuildAttributes& attributes);

    // The records of decorations in this module. Made on first use.
    BuildAttributesMemo& getMemo();

    // The highest `Tag_AV_version` that any part of the module stated; 0 at first.
    uint8_t getHighestVersion() const { return m_HighestVersion; }
    void raiseHighestVersion(uint8_t version) {
        m_HighestVersion = version > m_HighestVersion ? version : m_HighestVersion;
    }

    // What is interned, in order of arrival.
    uint32_t getVendorNameCount() const { return m_VendorNames.getSize(); }
    const char* getVendorName(uint32_t index) const { return m_VendorNames[index]; }
    uint32_t getByteBlockCount() const { return m_ByteBlocks.getSize(); }
    uint32_t getBlockCount() const { return m_Blocks.getSize(); }
    const BuildAttributesBlock* getBlock(uint32_t index) const { return m_Blocks[index]; }
    uint32_t getRecordCount() const { return m_Records.getSize(); }
    const BuildAttributes* getRecord(uint32_t index) const { return m_Records[index]; }

private:
    struct ByteBlock {
        const uint8_t* bytes = nullptr;
        uint32_t length = 0;
    };
    struct Indexes; // where everything is found fast; made on first use

    Indexes& indexes();
    ByteBlock internBytes(const uint8_t* data, uint32_t length);
    const BuildAttributes* addRecord(const BuildAttributes& attributes);

    alloclib::Region* m_Region;
    elfext::fast_array<const char*> m_VendorNames;
    elfext::fast_array<ByteBlock> m_ByteBlocks;
    elfext::fast_array<BuildAttributesBlock*> m_Blocks;
    elfext::fast_array<BuildAttributes*> m_Records;
    Indexes* m_Indexes = nullptr;
    BuildAttributesMemo* m_Memo = nullptr;
    uint8_t m_HighestVersion = 0;
};

} // namespace attributes
