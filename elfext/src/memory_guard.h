// What keeps exhausted memory inside the library: a region that ends with its scope, and the frame
// of an operation, in which `std::bad_alloc` becomes a report.
//
// Regions end the process where memory runs out; what throws are the standard containers of the
// operations on whole modules.
#pragma once

#include "alloclib/interface/region_general.h"
#include "elfext/src/reporting.h"

#include <cstdint>
#include <new>

namespace elfext {

// A region for the time of one operation.
class ScratchRegion {
public:
    // Arguments as for RegionGeneral::Create.
    ScratchRegion(uint64_t initialSize, const char* name)
        : m_Region(alloclib::RegionGeneral::Create(initialSize, name)) {}
    ScratchRegion(const ScratchRegion&) = delete;
    ScratchRegion& operator=(const ScratchRegion&) = delete;
    ~ScratchRegion() { m_Region->Destroy(true); }

    alloclib::Region* get() const { return m_Region; }

private:
    alloclib::RegionGeneral* m_Region;
};

// What `action` gives, which is true if all went well; false, with a report, if it ran out of
// memory.
template <typename Action>
bool reportExhaustion(ObjectModule& objectModule, Action action) {
    try {
        return action();
    } catch (const std::bad_alloc&) {
        return reportFatal(objectModule, &ErrorHandler::outOfMemory);
    }
}

} // namespace elfext
