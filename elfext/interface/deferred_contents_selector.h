// Chooses the sections whose contents stay in the file when a module is read.
#pragma once

#include <cstdint>

namespace elfext {

class DeferredContentsSelector {
public:
    DeferredContentsSelector() = default;
    DeferredContentsSelector(const DeferredContentsSelector&) = delete;
    DeferredContentsSelector& operator=(const DeferredContentsSelector&) = delete;
    virtual ~DeferredContentsSelector() = default;

    // True if the contents of a section of this type and size in bytes should be left in the file
    // until they are asked for. Asked only for sections that the reader itself does not look into.
    virtual bool shouldDefer(uint32_t sectionType, uint64_t sectionSize) = 0;
};

// Leaves every section of more than a given size.
class BySizeDeferredContentsSelector : public DeferredContentsSelector {
public:
    explicit BySizeDeferredContentsSelector(uint64_t threshold) : m_Threshold(threshold) {}

    bool shouldDefer(uint32_t /*sectionType*/, uint64_t sectionSize) override {
        return sectionSize > m_Threshold;
    }

private:
    uint64_t m_Threshold; // in bytes
};

} // namespace elfext
