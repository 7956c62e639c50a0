// Build attributes of one object: its own ones, and what it inherits.
//
// Blocks are found by vendor, whose name the cache keeps once: equal names are one address. A file
// may name as many vendors as it likes, so beyond a few of them a table takes over from the walk.
#include "elfext/interface/object_with_build_attributes.h"

#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/build_attributes.h"
#include "attributes/interface/build_attributes_cache.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/object_module.h"

namespace elfext {

struct ObjectWithBuildAttributes::BlockList {
    using Index = fast_hash_table<const char*, uint32_t>;
    static constexpr uint32_t WalkedCount = 8;
    static constexpr uint32_t NotThere = UINT32_MAX;

    explicit BlockList(alloclib::Region* region) : m_Blocks(region) {}

    // `vendorName` is the copy of the module's cache, as those of the blocks are; or null.
    uint32_t find(const char* vendorName) {
        if (m_Blocks.getSize() > WalkedCount) {
            makeIndex();
            const uint32_t* const place = m_Index->find(vendorName);
            return place != nullptr ? *place : NotThere;
        }
        for (uint32_t i = 0; i < m_Blocks.getSize(); ++i) {
            if (m_Blocks[i]->getVendorName() == vendorName) {
                return i;
            }
        }
        return NotThere;
    }

    void add(const attributes::BuildAttributesBlock* block) {
        if (m_Index != nullptr) {
            m_Index->set(block->getVendorName(), m_Blocks.getSize());
        }
        m_Blocks.add(block);
    }

    // Later ones move up, so the table is made anew when it is needed.
    void remove(uint32_t index) {
        m_Blocks.remove(index);
        m_Index = nullptr;
    }

    fast_array<const attributes::BuildAttributesBlock*> m_Blocks;

private:
    void makeIndex() {
        if (m_Index == nullptr) {
            alloclib::Region* const region = m_Blocks.getRegion();
            m_Index = new (alloclib::allocate(*region, sizeof(Index), 8)) Index(region);
            for (uint32_t i = 0; i < m_Blocks.getSize(); ++i) {
                m_Index->set(m_Blocks[i]->getVendorName(), i);
            }
        }
    }

    Index* m_Index = nullptr;
};

void ObjectWithBuildAttributes::getBuildAttributes(attributes::BuildAttributes& result) const {
    if (m_BuildAttributes == nullptr) {
        getParentBuildAttributes(result);
        return;
    }
    if (m_BuildAttributes->isPresent(attributes::Tag_nodefaults)) {
        result = attributes::BuildAttributes();
        return;
    }
    if (!inheritsBuildAttributes()) {
        result = *m_BuildAttributes;
        return;
    }
    attributes::BuildAttributes parent;
    getParentBuildAttributes(parent);
    attributes::overlay(result, parent, *m_BuildAttributes);
}

void ObjectWithBuildAttributes::setBuildAttributes(const attributes::BuildAttributes& attributes) {
    m_BuildAttributes = m_BuildAttributesCache->internRecord(attributes);
    m_ObjectModule->markChanged();
}

uint32_t ObjectWithBuildAttributes::getBuildAttributesBlockCount() const {
    return m_BuildAttributesBlocks != nullptr ? m_BuildAttributesBlocks->m_Blocks.getSize() : 0;
}

const attributes::BuildAttributesBlock*
ObjectWithBuildAttributes::getBuildAttributesBlock(uint32_t index) const {
    TOMEX_CHECK(index < getBuildAttributesBlockCount());
    return m_BuildAttributesBlocks->m_Blocks[index];
}

const attributes::BuildAttributesBlock*
ObjectWithBuildAttributes::findBuildAttributesBlock(const char* vendorName) const {
    TOMEX_CHECK_TEXT(vendorName != nullptr, "vendorName != NULL");
    if (m_BuildAttributesBlocks == nullptr) {
        return nullptr;
    }
    const uint32_t index =
        m_BuildAttributesBlocks->find(m_BuildAttributesCache->findVendorName(vendorName));
    return index != BlockList::NotThere ? m_BuildAttributesBlocks->m_Blocks[index] : nullptr;
}

void ObjectWithBuildAttributes::addBuildAttributesBlock(const char* vendorName, const uint8_t* data,
                                                        uint32_t length) {
    TOMEX_CHECK_TEXT(vendorName != nullptr, "vendorName != NULL");
    TOMEX_CHECK_TEXT(data != nullptr, "data != NULL");
    const attributes::BuildAttributesBlock* const block =
        m_BuildAttributesCache->internBlock(vendorName, data, length);
    if (m_BuildAttributesBlocks == nullptr) {
        alloclib::Region* const region = m_ObjectModule->getContainerRegion();
        m_BuildAttributesBlocks =
            new (alloclib::allocate(*region, sizeof(BlockList), 8)) BlockList(region);
    }
    const uint32_t index = m_BuildAttributesBlocks->find(block->getVendorName());
    if (index != BlockList::NotThere) {
        m_BuildAttributesBlocks->m_Blocks[index] = block;
    } else {
        m_BuildAttributesBlocks->add(block);
    }
    m_ObjectModule->markChanged();
}

bool ObjectWithBuildAttributes::removeBuildAttributesBlock(const char* vendorName) {
    TOMEX_CHECK_TEXT(vendorName != nullptr, "vendorName != NULL");
    const uint32_t index =
        m_BuildAttributesBlocks != nullptr
            ? m_BuildAttributesBlocks->find(m_BuildAttributesCache->findVendorName(vendorName))
            : BlockList::NotThere;
    if (index == BlockList::NotThere) {
        return false;
    }
    m_BuildAttributesBlocks->remove(index);
    m_ObjectModule->markChanged();
    return true;
}

void ObjectWithBuildAttributes::dropBuildAttributes() {
    if (hasBuildAttributes()) {
        m_BuildAttributes = nullptr;
        m_BuildAttributesBlocks = nullptr;
        m_ObjectModule->markChanged();
    }
}

} // namespace elfext
