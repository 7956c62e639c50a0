// Something that occupies bytes of the file, and may contain other such regions: a segment
// contains sections, tables and the ELF header; overlapping sections contain one another.
//
// Which region contains which is told by the file's own numbers, so in a hostile file everything
// may contain everything. Therefore a reader need not write the relations down: it can attach a
// `FileRegionLinker`, which finds those of one region when somebody first asks for them.
#pragma once

#include "alloclib/interface/region.h"
#include "elfext/interface/fast_array.h"

#include <cstdint>

namespace elfext {

class DataStore;
class DataStructure;
class FileRegion;

// A region inside of another, and where its first byte lies relative to that one's.
struct ContainedRegion {
    FileRegion* m_Region = nullptr;
    uint64_t m_Offset = 0;

    bool operator==(const ContainedRegion& other) const = default;
};

// Finds the relations of regions that have not been written down yet. Must give for two regions
// answers that fit together.
class FileRegionLinker {
public:
    FileRegionLinker(const FileRegionLinker&) = delete;
    FileRegionLinker& operator=(const FileRegionLinker&) = delete;

    // Appends what `region` contains, and what contains it, in the order in which it is to be
    // seen.
    virtual void findLinks(FileRegion& region, fast_array<ContainedRegion>& contained,
                           fast_array<FileRegion*>& containers) = 0;

protected:
    FileRegionLinker() = default;
    ~FileRegionLinker() = default;
};

class FileRegion {
public:
    FileRegion(const FileRegion&) = delete;
    FileRegion& operator=(const FileRegion&) = delete;

    // Fills in where the region lies in the file and how many bytes it takes there. False if it
    // has no place yet: then the offset is 0.
    virtual bool getFileRange(uint64_t* offset, uint64_t* size) const = 0;

    // Fills in what a file offset must be: `congruence` modulo `alignment`. Alignments 0 and 1
    // ask for nothing.
    virtual void getFileConstraints(uint64_t* congruence, uint64_t* alignment) const = 0;

    virtual void setFileOffset(uint64_t offset) = 0;

    // The size that the region had in a file, as of the last read or layout; 0 if it has been in
    // none. Layout lets nothing grow out of what holds it, and leaves what was too long already.
    uint64_t getSettledSize() const { return m_SettledSize; }
    // The present size is that of a file.
    void settleSize() {
        uint64_t offset = 0;
        getFileRange(&offset, &m_SettledSize);
    }

    // A power of two or 0. Without effect on regions that have no alignment of their own.
    virtual void setAlignment(uint64_t alignment) = 0;

    // The bytes of this region, if it holds them; otherwise null.
    virtual DataStore* getDataStore() { return nullptr; }

    // Makes the layout item of this region in `region`; it is to lie at `offset`.
    virtual DataStructure* createDataStructure(alloclib::Region* region, uint64_t offset) = 0;

    virtual ~FileRegion() = default;

    // The regions inside of this one, and those that it lies in, in the order in which they were
    // found. An index past the last is an internal fault. Both see what was there at the time of
    // the call.
    uint32_t getContainedCount() { return linkedContained().getSize(); }
    const ContainedRegion& getContained(uint32_t index) { return linkedContained()[index]; }
    uint32_t getContainerCount() { return linkedContainers().getSize(); }
    FileRegion* getContainer(uint32_t index) { return linkedContainers()[index]; }

    // Puts `contained`, which is not null and not this region, `offset` bytes into this one.
    // Regions that are related already get a second entry: the reader relates each pair once.
    void addContained(FileRegion* contained, uint64_t offset);

    // From now on `linker` is asked for the relations that come before those of `addContained`;
    // null for none. It must live as long as the region, and is asked once.
    void setLinker(FileRegionLinker* linker) { m_Linker = linker; }

    // Ends all relations of this region on its own side, and drops the linker.
    void forgetLinks();

    // Marks a region that is removed from its module: linkers leave it out from now on, and every
    // region that stays must be told to drop it by `dropDetached`.
    void detach() { m_IsDetached = true; }
    bool isDetached() const { return m_IsDetached; }
    // Forgets the relations to regions that have been marked.
    void dropDetached();

protected:
    // The lists of relations will lie in `region`, which must outlive this object.
    explicit FileRegion(alloclib::Region* region) : m_Region(region) {}

private:
    using ContainedList = fast_array<ContainedRegion>;
    using ContainerList = fast_array<FileRegion*>;

    const ContainedList& linkedContained();
    const ContainerList& linkedContainers();
    void link();
    template <typename List>
    List& listMadeOnDemand(List*& list);

    alloclib::Region* m_Region;
    ContainedList* m_Contained = nullptr; // both made when they are needed first
    ContainerList* m_Containers = nullptr;
    FileRegionLinker* m_Linker = nullptr;
    uint64_t m_SettledSize = 0;
    bool m_IsDetached = false;
};

} // namespace elfext
