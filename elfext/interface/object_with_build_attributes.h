// Anything that can carry build attributes: a module, a section, a symbol.
//
// Attributes come in two forms. The raw blocks are what a file holds, one for each vendor, byte by
// byte. The resolved record is their meaning, and is shared: equal records of a module are one
// object in the module's cache. A section inherits what it does not state from its module, a
// symbol from its section or, without one, from its module.
#pragma once

#include "platform/interface/internal_check.h"

#include <cstdint>

namespace attributes {
class BuildAttributes;
class BuildAttributesBlock;
class BuildAttributesCache;
} // namespace attributes

namespace elfext {

class ObjectModule;

class ObjectWithBuildAttributes {
public:
    ObjectWithBuildAttributes(const ObjectWithBuildAttributes&) = delete;
    ObjectWithBuildAttributes& operator=(const ObjectWithBuildAttributes&) = delete;

    virtual ~ObjectWithBuildAttributes() = default;

    // True for what takes over attributes of a parent: a section, a symbol.
    virtual bool inheritsBuildAttributes() const = 0;

    // Fills in the attributes that hold where the object states nothing itself: for a section the
    // module's, for a symbol those of the section that defines it or else the module's, for a
    // module the default record.
    virtual void getParentBuildAttributes(attributes::BuildAttributes& result) const = 0;

    // Fills in the attributes that hold for the object. With no record of its own they are the
    // parent's; with one they are its own, laid over the parent's if it inherits. A record that
    // says that there are no defaults yields the default record, whatever else it holds.
    void getBuildAttributes(attributes::BuildAttributes& result) const;

    // The object's own record as it stands in the module's cache, or null.
    const attributes::BuildAttributes* getOwnBuildAttributes() const { return m_BuildAttributes; }

    // Makes `attributes` the object's own record: the module's equal one if it has one, otherwise
    // a copy with its derived value brought up to date.
    void setBuildAttributes(const attributes::BuildAttributes& attributes);

    // The raw blocks, in the order in which their vendors came first. An index past the last is an
    // internal fault.
    uint32_t getBuildAttributesBlockCount() const;
    const attributes::BuildAttributesBlock* getBuildAttributesBlock(uint32_t index) const;
    // The block of a vendor, or null.
    const attributes::BuildAttributesBlock* findBuildAttributesBlock(const char* vendorName) const;

    // Keeps a copy of `length` bytes for the vendor, in place of what was there for it. Neither
    // pointer is null.
    void addBuildAttributesBlock(const char* vendorName, const uint8_t* data, uint32_t length);

    // Forgets the block of the vendor. False if there was none.
    bool removeBuildAttributesBlock(const char* vendorName);

    // True if there is a record, or if there has been a block.
    bool hasBuildAttributes() const {
        return m_BuildAttributes != nullptr || m_BuildAttributesBlocks != nullptr;
    }

    // Forgets record and blocks.
    void dropBuildAttributes();

protected:
    // `objectModule` is the module that the object belongs to or, for a module, itself; it may be
    // under construction. Neither is null, both outlive the object.
    ObjectWithBuildAttributes(ObjectModule* objectModule,
                              attributes::BuildAttributesCache* buildAttributesCache)
        : m_ObjectModule(objectModule), m_BuildAttributesCache(buildAttributesCache) {
        TOMEX_CHECK_TEXT(buildAttributesCache != nullptr, "buildAttributesCache != NULL");
    }

    ObjectModule* m_ObjectModule; // the owner

private:
    struct BlockList; // a fast_array of blocks, with what finds one by its vendor

    attributes::BuildAttributesCache* m_BuildAttributesCache;
    BlockList* m_BuildAttributesBlocks = nullptr; // made on demand
    const attributes::BuildAttributes* m_BuildAttributes = nullptr;
};

} // namespace elfext
