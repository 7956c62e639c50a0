// What the passes of one read share: the module that is being made, the file's headers, and what
// earlier passes found out for later ones.
//
// The tables lie in a region of their own, which ends with the read.
//
// A file's own numbers say how its parts overlap, so a small file can ask for much: a thousand
// symbol tables that are all the same bytes, a thousand names that all end alike, a thousand
// segments in each of which a thousand sections lie. Every part is read within limits that the size
// of the file sets, far above what a file whose parts stand side by side needs. A read that passes
// them is out of memory.
#pragma once

#include "elfext/interface/deferred_contents_selector.h"
#include "elfext/interface/elf_records.h"
#include "elfext/interface/object_module.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/reporting.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <type_traits>

namespace elfext {

// The symbols of a table by their numbers in the file. Slot 0 is null. They lie in the module's
// container region, since relocations that are made later need them too.
struct SymbolsByNumber {
    Symbol** m_Symbols = nullptr;
    uint64_t m_Count = 0;
};

// The stream that is read from, if the file is not in memory.
struct InputStream {
    std::FILE* m_File = nullptr;
    // The caller closes it. Then the caller holds one of the references to it, for good.
    bool m_IsCallers = false;
};

class ReadState {
public:
    ReadState(ObjectModule& objectModule, alloclib::Region& region, const InputStream& stream,
              uint64_t fileSize, DeferredContentsSelector* selector)
        : m_Module(objectModule), m_Region(region), m_Stream(stream), m_FileSize(fileSize),
          m_Selector(selector) {}
    ReadState(const ReadState&) = delete;
    ReadState& operator=(const ReadState&) = delete;

    ObjectModule& m_Module;
    alloclib::Region& m_Region;
    const InputStream m_Stream;
    const uint64_t m_FileSize; // in bytes
    DeferredContentsSelector* const m_Selector;

    bool m_Is64 = false;
    bool m_IsLittleEndian = false;
    Elf64_Ehdr m_ElfHeader = {};
    std::span<Elf64_Shdr> m_SectionHeaders;
    std::span<Elf64_Phdr> m_ProgramHeaders;
    std::span<bool> m_IsBadSection;              // what later passes leave out
    std::span<bool> m_IsSegmentFetched;          // whose bytes are known to be all there
    std::span<SymbolsByNumber> m_SymbolsByTable; // by the number of the table's section
    uint32_t m_Properties = 0;                   // ModuleProperty bits found so far
    bool m_IsFileKept = false;                   // contents were left in the stream

    const RecordSizes& sizes() const { return recordSizes(m_Is64); }
    uint32_t sectionCount() const { return static_cast<uint32_t>(m_SectionHeaders.size()); }
    uint32_t segmentCount() const { return static_cast<uint32_t>(m_ProgramHeaders.size()); }
    // As reports have it: one less than none wraps.
    uint32_t lastSection() const { return sectionCount() - 1; }
    uint64_t symbolCount(uint32_t table) const {
        return m_SectionHeaders[table].sh_size / sizes().symbol;
    }

    // The contents of a section as far as they have been read: nothing if they were left in the
    // file, or if the section has none.
    std::span<const uint8_t> contents(uint32_t section) const;

    // A table of `count` zeroed elements that lives as long as the read.
    template <typename Element>
    std::span<Element> takeTable(uint64_t count) {
        return takeTable<Element>(m_Region, count);
    }
    template <typename Element>
    static std::span<Element> takeTable(alloclib::Region& region, uint64_t count) {
        const std::span<Element> table = takeRoom<Element>(region, count);
        std::memset(static_cast<void*>(table.data()), 0, table.size_bytes());
        return table;
    }
    // The same for elements that are all set before they are looked at.
    template <typename Element>
    std::span<Element> takeRoom(uint64_t count) {
        return takeRoom<Element>(m_Region, count);
    }

    // What a report costs in steps, where a file can cause more of them than it has bytes.
    static constexpr uint64_t StepsPerReport = 1024;

    // Takes note of `bytes` of the file that are turned into objects or copied, and of `steps` of
    // a search. False if the read has passed its limits; that has been reported then.
    bool spendBytes(uint64_t bytes) { return spend(m_SpentBytes, bytes, BytesPerByte, FreeBytes); }
    bool spendSteps(uint64_t steps) { return spend(m_SpentSteps, steps, StepsPerByte, FreeSteps); }
    // The same for a text that is copied, hashed or compared. Texts may share their bytes, so all
    // of them together can be far longer than the file.
    bool spendText(const char* text) { return spendSteps(std::strlen(text)); }

private:
    template <typename Element>
    static std::span<Element> takeRoom(alloclib::Region& region, uint64_t count) {
        static_assert(std::is_trivially_copyable_v<Element>);
        void* const block = alloclib::allocate(region, count * sizeof(Element), alignof(Element));
        return {static_cast<Element*>(block), static_cast<size_t>(count)};
    }

    static constexpr uint64_t BytesPerByte = 8;
    static constexpr uint64_t FreeBytes = 0x100000;
    static constexpr uint64_t StepsPerByte = 16;
    static constexpr uint64_t FreeSteps = 0x1000000;

    bool spend(uint64_t& spent, uint64_t amount, uint64_t perByte, uint64_t free);

    uint64_t m_SpentBytes = 0;
    uint64_t m_SpentSteps = 0;
};

} // namespace elfext
