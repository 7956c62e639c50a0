// What segments hold beside sections and headers: padding, and data that nothing describes.
#pragma once

#include <cstdint>

namespace elfext {

class ObjectModule;
struct SizeStatistics;

// Adds the blocks of raw data: those of nothing but zeros to the padding, others to the read-only
// data.
void addRawData(const ObjectModule& objectModule, SizeStatistics& statistics);

// How many bytes of the segments' file ranges belong to nothing: to no section, no block of raw
// data, not to the ELF header nor to a table of headers. Bytes behind the last of all these do not
// count.
uint64_t countUncoveredBytes(ObjectModule& objectModule);

} // namespace elfext
