// Gives each section its contents.
//
// Where the file is in memory, sections refer to its bytes; they are copied only if something must
// be changed. From a stream they are read one by one, unless the caller's selector leaves them in
// the file. A section in a loaded segment is part of that segment's image, and the image must be
// there as a whole.
#include "elfext/src/contents_pass.h"

#include "elfext/interface/deferred_contents.h"
#include "elfext/src/deferred_loader.h"
#include "elfext/src/read_state.h"
#include "elfext/src/reader_passes.h"
#include "elfext/src/section_kinds.h"

#include <algorithm>
#include <new>

namespace elfext {
namespace {

class ContentsPass {
public:
    explicit ContentsPass(ReadState& state) : m_State(state) {}

    bool run() {
        listLoadedSegments();
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const Elf64_Shdr& header = m_State.m_SectionHeaders[i];
            m_State.m_Module.getSection(i)->setSize(header.sh_size);
            if (hasContents(header) && !readSection(i)) {
                return false;
            }
        }
        return true;
    }

private:
    static bool hasContents(const Elf64_Shdr& header) {
        return header.sh_type != SHT_NULL && header.sh_type != SHT_NOBITS && header.sh_size != 0;
    }

    void listLoadedSegments() {
        m_LoadedSegments = m_State.takeTable<uint32_t>(m_State.segmentCount());
        size_t count = 0;
        for (uint32_t i = 0; i < m_State.segmentCount(); ++i) {
            if (m_State.m_ProgramHeaders[i].p_type == PT_LOAD) {
                m_LoadedSegments[count++] = i;
            }
        }
        m_LoadedSegments = m_LoadedSegments.first(count);
    }

    bool readSection(uint32_t index) {
        const Elf64_Shdr& header = m_State.m_SectionHeaders[index];
        bool isInImage = false;
        if (!m_LoadedSegments.empty() && !findImage(header, isInImage)) {
            return false;
        }
        const SectionKind& kind = sectionKind(header.sh_type);
        if (kind.mayBeDeferred && shouldDefer(header)) {
            defer(index);
            return true;
        }
        // Tables are read entry by entry: what is left behind the last whole one is zero.
        const uint64_t entrySize =
            isInImage || kind.entrySize == nullptr ? 1 : m_State.sizes().*kind.entrySize;
        return load(index, header.sh_size - header.sh_size % entrySize) &&
               (header.sh_type != SHT_STRTAB || checkStringTable(m_State, index));
    }

    // Looks for the segment whose image the section is a part of.
    bool findImage(const Elf64_Shdr& header, bool& isInImage) {
        uint64_t steps = 0;
        for (const uint32_t segment : m_LoadedSegments) {
            ++steps;
            if (liesInFileImage(header, m_State.m_ProgramHeaders[segment])) {
                isInImage = true;
                return m_State.spendSteps(steps) && fetchSegment(m_State, segment);
            }
        }
        return m_State.spendSteps(steps);
    }

    bool shouldDefer(const Elf64_Shdr& header) const {
        return m_State.m_Stream.m_File != nullptr && m_State.m_Selector != nullptr &&
               m_State.m_Selector->shouldDefer(header.sh_type, header.sh_size);
    }

    void defer(uint32_t index) {
        ObjectModule& objectModule = m_State.m_Module;
        ReferenceCountedFile* file = objectModule.getReferenceCountedFile();
        if (file == nullptr) {
            file = objectModule.keepFile(m_State.m_Stream.m_File);
            if (m_State.m_Stream.m_IsCallers) {
                file->shareWithCaller();
            }
            m_State.m_IsFileKept = true;
        }
        void* const place = alloclib::allocate(*objectModule.getObjectRegion(),
                                               sizeof(DeferredContents), alignof(DeferredContents));
        objectModule.getSection(index)->deferContents(new (place) DeferredContents(
            file, m_State.m_SectionHeaders[index], loadDeferredContents));
    }

    // The first `readable` bytes are in the file, zeros follow.
    bool load(uint32_t index, uint64_t readable) {
        const Elf64_Shdr& header = m_State.m_SectionHeaders[index];
        LowLevelStatus status = LowLevelStatus_Good;
        if (header.sh_size > UINT32_MAX) {
            status = LowLevelStatus_Short;
        } else if (readable != 0) {
            status = lowlevel::checkBytes(header.sh_offset, readable);
        }
        if (status != LowLevelStatus_Good) {
            return reportStatus(m_State.m_Module, status);
        }
        Buffer& buffer = m_State.m_Module.getSection(index)->getLoadedContents();
        const uint8_t* const place =
            readable == header.sh_size ? lowlevel::bufferBytes(header.sh_offset) : nullptr;
        if (place != nullptr) {
            buffer.setBorrowedData(place, readable);
            return true;
        }
        if (!m_State.spendBytes(header.sh_size)) {
            return false;
        }
        buffer.setSize(header.sh_size);
        if (readable != 0) {
            status = lowlevel::readBytes(buffer.getData(), header.sh_offset, readable);
        }
        return status == LowLevelStatus_Good || reportStatus(m_State.m_Module, status);
    }

    ReadState& m_State;
    std::span<uint32_t> m_LoadedSegments; // of type PT_LOAD, in order
};

// Makes the first and the last byte of a string table zero.
bool mendStringTable(ReadState& state, Section& section) {
    const uint64_t size = section.getContentsSize();
    if (!state.spendBytes(size)) {
        return false;
    }
    const uint8_t zero = 0;
    section.setIsAuxiliary(false); // only then may it be written
    section.write(0, &zero, 1);
    section.write(size - 1, &zero, 1);
    section.setIsAuxiliary(true);
    return true;
}

} // namespace

bool liesInFileImage(const Elf64_Shdr& section, const Elf64_Phdr& segment) {
    return segment.p_offset <= section.sh_offset && section.sh_size <= segment.p_filesz &&
           section.sh_offset - segment.p_offset <= segment.p_filesz - section.sh_size;
}

bool fetchSegment(ReadState& state, uint32_t segment) {
    if (state.m_IsSegmentFetched[segment]) {
        return true;
    }
    const Elf64_Phdr& header = state.m_ProgramHeaders[segment];
    const LowLevelStatus status = lowlevel::checkBytes(header.p_offset, header.p_filesz);
    if (status != LowLevelStatus_Good) {
        return reportStatus(state.m_Module, status);
    }
    state.m_IsSegmentFetched[segment] = true;
    return true;
}

bool checkStringTable(ReadState& state, uint32_t section) {
    Section& table = *state.m_Module.getSection(section);
    const std::span<const uint8_t> bytes = state.contents(section);
    if (bytes.empty()) {
        if (!askHandler(state.m_Module, &ErrorHandler::stringTableEmpty, section)) {
            return false;
        }
        table.getLoadedContents().setSize(1);
        table.setSize(1);
        return true;
    }
    const bool starts = bytes.front() != 0;
    const bool ends = bytes.back() != 0;
    if (!starts && !ends) {
        return true;
    }
    return askHandler(state.m_Module, &ErrorHandler::stringTableNotTerminated, section, starts,
                      ends) &&
           mendStringTable(state, table);
}

bool readContents(ReadState& state) {
    return ContentsPass(state).run();
}

} // namespace elfext
