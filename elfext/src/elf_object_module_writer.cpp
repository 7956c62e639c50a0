// Copies what has been laid out to its places.
#include "elfext/interface/elf_object_module_writer.h"

#include "elfext/interface/elf_layout.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/raw_data_block.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/memory_guard.h"
#include "elfext/src/record_bytes.h"
#include "elfext/src/reporting.h"
#include "elfext/src/write_buffer.h"
#include "platform/interface/file_replacement.h"

#include <algorithm>
#include <cerrno>

namespace elfext {
namespace {

constexpr uint8_t plainMagic[] = {0x7F, 'E', 'L', 'F'};

class ElfWriter {
public:
    explicit ElfWriter(ObjectModule& objectModule)
        : m_Module(objectModule), m_Sizes(recordSizes(objectModule.is64Bit())),
          m_NameTable(objectModule.getSectionNameTable()) {}

    // A table that has grown may lie over raw data that are zeros, so it comes later.
    bool run() {
        return writeRawData() && writeSections() && writeSectionHeaders() &&
               writeProgramHeaders() && writeElfHeader();
    }

    // How long the file will be.
    uint64_t fileSize() const {
        uint64_t end = m_Sizes.elfHeader;
        const auto reach = [&end](const FileRegion& region) {
            uint64_t offset = 0;
            uint64_t size = 0;
            region.getFileRange(&offset, &size);
            end = size != 0 ? std::max(end, offset + size) : end;
        };
        for (const Section* const section : m_Module.getSections()) {
            if (section->getType() != SHT_NULL) {
                reach(*section);
            }
        }
        for (const Segment* const segment : m_Module.getSegments()) {
            reach(*segment);
        }
        for (const RawDataBlock* const block : m_Module.getRawDataBlocks()) {
            reach(*block);
        }
        reach(m_Module.getSectionHeaderTable());
        reach(m_Module.getProgramHeaderTable());
        return end;
    }

private:
    RecordBytes makeBytes() const { return {m_Module.is64Bit(), m_Module.isLittleEndian()}; }

    bool put(uint64_t offset, const void* bytes, uint64_t count) {
        uint8_t* const place = lowlevel::writePlace(offset, count);
        if (place == nullptr) {
            return reportFatal(m_Module, &ErrorHandler::outOfMemory);
        }
        if (count != 0) {
            std::memcpy(place, bytes, static_cast<size_t>(count));
        }
        return true;
    }
    bool put(uint64_t offset, const RecordBytes& bytes) {
        return put(offset, bytes.data(), bytes.size());
    }

    // --- Bytes

    // A section may be larger than its contents, as in a module that has been made in parts:
    // zeros follow.
    bool writeStore(const DataStore& store, uint64_t offset, uint64_t held) {
        uint8_t* const place = lowlevel::writePlace(offset, store.getDataSize());
        if (place == nullptr) {
            return reportFatal(m_Module, &ErrorHandler::outOfMemory);
        }
        const uint64_t count = std::min(store.getDataSize(), held);
        if (count != 0) {
            store.read(0, place, count);
        }
        return true;
    }

    bool writeSections() {
        for (Section* const section : m_Module.getSections()) {
            if (section->getType() == SHT_NULL || section->getContentsSize() == 0) {
                continue;
            }
            const Buffer* const contents = section->getContents();
            if (contents == nullptr ||
                !writeStore(*section, section->getFileOffset(), contents->getSize())) {
                return false;
            }
        }
        return true;
    }

    // Segments reach to their ends in the file, whatever they hold there.
    bool writeRawData() {
        for (RawDataBlock* const block : m_Module.getRawDataBlocks()) {
            uint64_t offset = 0;
            uint64_t size = 0;
            block->getFileRange(&offset, &size);
            if (!writeStore(*block, offset, size)) {
                return false;
            }
        }
        for (const Segment* const segment : m_Module.getSegments()) {
            const uint64_t size = segment->getFileSize();
            if (size != 0 && !put(segment->getFileOffset() + size, nullptr, 0)) {
                return false;
            }
        }
        return true;
    }

    // --- Headers

    bool writeSectionHeaders() {
        if (m_Module.getSectionCount() == 0) {
            return true;
        }
        if (!checkExtension()) {
            return false;
        }
        RecordBytes bytes = makeBytes();
        bytes.reserve(uint64_t{m_Module.getSectionCount()} * m_Sizes.sectionHeader);
        for (const Section* const section : m_Module.getSections()) {
            Elf64_Shdr header = headerOf(*section);
            header.sh_name = m_NameTable != nullptr ? section->getNameOffset() : 0;
            if (section == m_Module.getSection(0)) {
                extend(header);
            }
            bytes.sectionHeader(header);
        }
        return put(m_Module.getSectionHeaderOffset(), bytes);
    }

    static Elf64_Shdr headerOf(const Section& section) {
        Elf64_Shdr header = {};
        header.sh_type = section.getType();
        header.sh_flags = uint64_t{section.getUpperFlags()} << 32 | section.getFlags();
        header.sh_addr = section.getAddress();
        header.sh_offset = section.getFileOffset();
        header.sh_size = section.getSize();
        header.sh_link = section.getLink() != nullptr ? section.getLink()->getIndex() : 0;
        header.sh_info = section.getInfo();
        header.sh_addralign = section.getAlignment();
        header.sh_entsize = section.getEntrySize();
        return header;
    }

    // Only a null section has fields to spare. Whatever the handler says, there is no other place
    // for the number of the sections.
    bool checkExtension() const {
        const uint32_t type = m_Module.getSection(0)->getType();
        if (m_Module.getSectionCount() < SHN_LORESERVE || type == SHT_NULL) {
            return true;
        }
        askHandler(m_Module, &ErrorHandler::firstSectionNotNull, type);
        return false;
    }

    // Numbers that do not fit into the ELF header stand in the first section's.
    void extend(Elf64_Shdr& header) const {
        if (m_Module.getSectionCount() >= SHN_LORESERVE) {
            header.sh_size = m_Module.getSectionCount();
        }
        if (nameTableIndex() >= SHN_LORESERVE) {
            header.sh_link = nameTableIndex();
        }
    }

    uint32_t nameTableIndex() const { return m_NameTable != nullptr ? m_NameTable->getIndex() : 0; }

    bool writeProgramHeaders() {
        RecordBytes bytes = makeBytes();
        for (const Segment* const segment : m_Module.getSegments()) {
            Elf64_Phdr header = {};
            header.p_type = segment->getType();
            header.p_flags = segment->getFlags();
            header.p_offset = segment->getFileOffset();
            header.p_vaddr = segment->getVirtualAddress();
            header.p_paddr = segment->getPhysicalAddress();
            header.p_filesz = segment->getFileSize();
            header.p_memsz = segment->getMemorySize();
            header.p_align = segment->getAlignment();
            bytes.programHeader(header);
        }
        return bytes.size() == 0 || put(m_Module.getProgramHeaderOffset(), bytes);
    }

    bool writeElfHeader() {
        Elf64_Ehdr header = {};
        std::copy(std::begin(plainMagic), std::end(plainMagic), header.e_ident);
        header.e_ident[EI_CLASS] = static_cast<uint8_t>(m_Module.getClass());
        header.e_ident[EI_DATA] = static_cast<uint8_t>(m_Module.getEndianness());
        header.e_ident[EI_VERSION] = static_cast<uint8_t>(m_Module.getIdentVersion());
        header.e_ident[EI_OSABI] = static_cast<uint8_t>(m_Module.getOsAbi());
        header.e_ident[EI_ABIVERSION] = m_Module.getAbiVersion();
        header.e_type = static_cast<uint16_t>(m_Module.getType());
        header.e_machine = static_cast<uint16_t>(m_Module.getMachine());
        header.e_version = m_Module.getVersion();
        header.e_entry = m_Module.getEntryPoint();
        header.e_phoff = m_Module.getProgramHeaderOffset();
        header.e_shoff = m_Module.getSectionHeaderOffset();
        header.e_flags = m_Module.getFlags();
        header.e_ehsize = static_cast<uint16_t>(m_Sizes.elfHeader);
        header.e_phentsize =
            static_cast<uint16_t>(m_Module.getSegmentCount() != 0 ? m_Sizes.programHeader : 0);
        header.e_phnum = static_cast<uint16_t>(m_Module.getSegmentCount());
        header.e_shentsize = static_cast<uint16_t>(m_Sizes.sectionHeader);
        header.e_shnum = m_Module.getSectionHeaderCount();
        header.e_shstrndx = static_cast<uint16_t>(
            nameTableIndex() < SHN_LORESERVE ? nameTableIndex() : uint32_t{SHN_XINDEX});
        RecordBytes bytes = makeBytes();
        bytes.elfHeader(header);
        return put(0, bytes);
    }

    ObjectModule& m_Module;
    const RecordSizes& m_Sizes;
    const Section* m_NameTable;
};

bool failWriting(ObjectModule& objectModule, const char* fileName, int error) {
    return reportFatal(objectModule, &ErrorHandler::ioErrorWriting, fileName, error);
}

// False leaves errno.
bool writeAll(std::FILE* file, const uint8_t* bytes, uint64_t size) {
    errno = 0;
    return std::fwrite(bytes, 1, static_cast<size_t>(size), file) == size && std::fflush(file) == 0;
}

bool writeImage(ObjectModule& objectModule, std::unique_ptr<uint8_t[]>& image, uint64_t& size) {
    if (!objectModule.updateAuxiliarySections() || !layOutElfFile(&objectModule)) {
        return false;
    }
    ElfWriter writer(objectModule);
    OpenOutput output(writer.fileSize());
    if (!output.isOpen()) {
        return reportFatal(objectModule, &ErrorHandler::outOfMemory);
    }
    if (!writer.run()) {
        return false;
    }
    image = output.take(size);
    return true;
}

// What a loader runs or maps, linkers make so that it may be executed.
bool isExecutable(const ObjectModule& objectModule) {
    return objectModule.getType() == ET_EXEC || objectModule.getType() == ET_DYN;
}

} // namespace

bool writeElfBuffer(ObjectModule* objectModule, std::unique_ptr<uint8_t[]>* image, uint64_t* size) {
    TOMEX_CHECK_TEXT(objectModule != nullptr, "objectModule != NULL");
    return reportExhaustion(*objectModule,
                            [&] { return writeImage(*objectModule, *image, *size); });
}

bool writeElfFile(const char* fileName, ObjectModule* objectModule) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    std::unique_ptr<uint8_t[]> image;
    uint64_t size = 0;
    if (!writeElfBuffer(objectModule, &image, &size)) {
        return false;
    }
    return reportExhaustion(*objectModule, [&] {
        const int error =
            platform::replaceFile(fileName, image.get(), size, isExecutable(*objectModule));
        return error == 0 || failWriting(*objectModule, fileName, error);
    });
}

bool writeElfFile(std::FILE* elfFile, ObjectModule* objectModule) {
    TOMEX_CHECK_TEXT(elfFile != nullptr, "elfFile != NULL");
    std::unique_ptr<uint8_t[]> image;
    uint64_t size = 0;
    if (!writeElfBuffer(objectModule, &image, &size)) {
        return false;
    }
    return writeAll(elfFile, image.get(), size) || failWriting(*objectModule, nullptr, errno);
}

} // namespace elfext
