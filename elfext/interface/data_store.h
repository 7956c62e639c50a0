// Something that holds bytes: a section, or a stretch of a file outside of all sections.
#pragma once

#include <cstdint>

namespace elfext {

class DataStore {
public:
    DataStore(const DataStore&) = delete;
    DataStore& operator=(const DataStore&) = delete;
    virtual ~DataStore() = default;

    // Copies `count` bytes from `offset` on to `buffer`. A stretch that is not wholly inside is
    // an internal fault.
    virtual void read(uint64_t offset, void* buffer, uint64_t count) const = 0;

    // The same from `buffer`. Only for stores that are writable.
    virtual void write(uint64_t offset, const void* buffer, uint64_t count) = 0;

    // How many bytes there are to read. A section also has a size in memory, which may be more.
    virtual uint64_t getDataSize() const = 0;

    virtual bool isWritable() const { return true; }

protected:
    DataStore() = default;
};

} // namespace elfext
