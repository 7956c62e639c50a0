// Headers and bytes of the file that is being read.
#include "elfext/src/low_level.h"

#include "elfext/src/file_layout.h"
#include "platform/interface/internal_check.h"

#include <sys/types.h>

namespace elfext::lowlevel {
namespace {

std::FILE* elfg_file = nullptr;
const uint8_t* elfg_readbuffer = nullptr;
uint64_t inputSize = 0;
bool classIs64 = false;
bool littleEndianFlag = false;
ReadMode readMode = ReadMode_Plain;
bool plainMagicInUse = false;

constexpr uint8_t plainMagic[] = {0x7F, 'E', 'L', 'F'};
constexpr uint8_t secondMagic[] = {0xF7, 'O', 'R', 'C'};

// The words behind the header of the second form: its version, and the size of both.
constexpr uint32_t secondFormVersion = 2;
constexpr uint32_t secondFormExtraSize = 8;

void checkClosed() {
    TOMEX_CHECK_TEXT(elfg_file == nullptr, "elfg_file == NULL");
    TOMEX_CHECK_TEXT(elfg_readbuffer == nullptr, "elfg_readbuffer == NULL");
}

bool hasMagic(const uint8_t* ident, const uint8_t (&magic)[4]) {
    return std::memcmp(ident, magic, sizeof magic) == 0;
}

LowLevelStatus readFromStream(uint8_t* destination, uint64_t offset, uint64_t count) {
    if (fseeko(elfg_file, static_cast<off_t>(offset), SEEK_SET) != 0) {
        return LowLevelStatus_ReadFailed;
    }
    uint64_t done = 0;
    while (done < count) {
        const size_t got =
            std::fread(destination + done, 1, static_cast<size_t>(count - done), elfg_file);
        if (got == 0) {
            return std::ferror(elfg_file) != 0 ? LowLevelStatus_ReadFailed : LowLevelStatus_Short;
        }
        done += got;
    }
    return LowLevelStatus_Good;
}

// The 64-bit header. Its magic number is not looked at: files of this class are told by their
// type, version and machine alone, and always were.
LowLevelStatus readWideHeader(Elf64_Ehdr& header) {
    uint8_t bytes[recordSizes64.elfHeader];
    const LowLevelStatus status = readBytes(bytes, 0, sizeof bytes);
    if (status != LowLevelStatus_Good) {
        return status;
    }
    readMode = ReadMode_Plain;
    header = withLayout(true, littleEndianFlag,
                        [&bytes](auto layout) { return layout.elfHeader(bytes); });
    return LowLevelStatus_Good;
}

// What follows the header of the second form.
LowLevelStatus readSecondFormWords() {
    uint8_t bytes[secondFormExtraSize];
    const LowLevelStatus status = readBytes(bytes, recordSizes32.elfHeader, sizeof bytes);
    if (status != LowLevelStatus_Good) {
        return status;
    }
    const auto version = assembleBytes<uint32_t>(bytes, littleEndianFlag);
    const auto extraSize = assembleBytes<uint32_t>(bytes + 4, littleEndianFlag);
    return version == secondFormVersion && extraSize == secondFormExtraSize
               ? LowLevelStatus_Good
               : LowLevelStatus_BadMagic;
}

LowLevelStatus readNarrowHeader(Elf64_Ehdr& header) {
    uint8_t bytes[recordSizes32.elfHeader];
    if (readBytes(bytes, 0, sizeof bytes) != LowLevelStatus_Good) {
        return LowLevelStatus_ReadFailed;
    }
    const bool isPlain = hasMagic(bytes, plainMagic);
    if (!isPlain && !hasMagic(bytes, secondMagic)) {
        return LowLevelStatus_BadMagic;
    }
    if (bytes[EI_CLASS] != ELFCLASS32) {
        return LowLevelStatus_BadClass;
    }
    if (!isPlain) {
        const LowLevelStatus status = readSecondFormWords();
        if (status != LowLevelStatus_Good) {
            return status;
        }
    }
    readMode = isPlain ? ReadMode_Plain : ReadMode_SecondForm;
    header = withLayout(false, littleEndianFlag,
                        [&bytes](auto layout) { return layout.elfHeader(bytes); });
    if (!isPlain) {
        header.e_machine = EM_QEL;
    }
    return LowLevelStatus_Good;
}

// The status of reading `count` records of `stride` bytes one by one.
LowLevelStatus checkTable(uint64_t offset, uint64_t stride, uint64_t count) {
    if (count == 0) {
        return LowLevelStatus_Good;
    }
    if (offset > inputSize || count > (inputSize - offset) / stride) {
        return LowLevelStatus_Short;
    }
    return checkBytes(offset + (count - 1) * stride, stride);
}

// Reads a table record by record; `decode` makes a record of its bytes.
template <typename Record, typename Decode>
LowLevelStatus readTable(uint64_t offset, uint64_t stride, uint64_t count, Record* records,
                         Decode decode) {
    LowLevelStatus status = checkTable(offset, stride, count);
    for (uint64_t i = 0; i < count && status == LowLevelStatus_Good; ++i) {
        uint8_t bytes[sizeof(Record)];
        const uint8_t* place = bufferBytes(offset + i * stride);
        if (place == nullptr) {
            status = readBytes(bytes, offset + i * stride, stride);
            place = bytes;
        }
        if (status == LowLevelStatus_Good) {
            records[i] = decode(place);
        }
    }
    return status;
}

} // namespace

void openFile(std::FILE* file, uint64_t size) {
    checkClosed();
    elfg_file = file;
    inputSize = size;
}

void openBuffer(const uint8_t* data, uint64_t size) {
    checkClosed();
    elfg_readbuffer = data;
    inputSize = size;
}

void close() {
    TOMEX_CHECK_TEXT(elfg_file != nullptr || elfg_readbuffer != nullptr,
                     "elfg_file != NULL || elfg_readbuffer != NULL");
    elfg_file = nullptr;
    elfg_readbuffer = nullptr;
}

bool is64Bit() {
    return classIs64;
}

bool isLittleEndian() {
    return littleEndianFlag;
}

ReadMode getReadMode() {
    return readMode;
}

void setLittleEndian(bool littleEndian) {
    littleEndianFlag = littleEndian;
}

LowLevelStatus checkBytes(uint64_t offset, uint64_t count) {
    if (count > UINT32_MAX) {
        return LowLevelStatus_Short;
    }
    if (elfg_file != nullptr && offset > LastStreamOffset) {
        return LowLevelStatus_Short;
    }
    return count <= inputSize && offset <= inputSize - count ? LowLevelStatus_Good
                                                             : LowLevelStatus_Short;
}

LowLevelStatus readBytes(void* buffer, uint64_t offset, uint64_t count) {
    const LowLevelStatus status = checkBytes(offset, count);
    if (status != LowLevelStatus_Good) {
        return status;
    }
    if (elfg_file != nullptr) {
        return readFromStream(static_cast<uint8_t*>(buffer), offset, count);
    }
    std::memcpy(buffer, elfg_readbuffer + offset, static_cast<size_t>(count));
    return LowLevelStatus_Good;
}

const uint8_t* bufferBytes(uint64_t offset) {
    return elfg_readbuffer != nullptr ? elfg_readbuffer + offset : nullptr;
}

LowLevelStatus readElfHeader(Elf64_Ehdr& header) {
    uint8_t ident[EI_NIDENT];
    const LowLevelStatus status = readBytes(ident, 0, sizeof ident);
    if (status != LowLevelStatus_Good) {
        return status;
    }
    classIs64 = ident[EI_CLASS] == ELFCLASS64;
    littleEndianFlag = ident[EI_DATA] == ELFDATA2LSB;
    return classIs64 ? readWideHeader(header) : readNarrowHeader(header);
}

LowLevelStatus checkSectionHeaders(const Elf64_Ehdr& elfHeader, uint64_t count) {
    return checkTable(elfHeader.e_shoff, recordSizes(classIs64).sectionHeader, count);
}

LowLevelStatus checkProgramHeaders(const Elf64_Ehdr& elfHeader, uint64_t count) {
    return checkTable(elfHeader.e_phoff, recordSizes(classIs64).programHeader, count);
}

LowLevelStatus readSectionHeaders(const Elf64_Ehdr& elfHeader, uint64_t count,
                                  Elf64_Shdr* headers) {
    return withLayout(classIs64, littleEndianFlag, [&](auto layout) {
        return readTable(elfHeader.e_shoff, layout.sizes.sectionHeader, count, headers,
                         [layout](const uint8_t* bytes) { return layout.sectionHeader(bytes); });
    });
}

LowLevelStatus readProgramHeaders(const Elf64_Ehdr& elfHeader, uint64_t count,
                                  Elf64_Phdr* headers) {
    return withLayout(classIs64, littleEndianFlag, [&](auto layout) {
        return readTable(elfHeader.e_phoff, layout.sizes.programHeader, count, headers,
                         [layout](const uint8_t* bytes) { return layout.programHeader(bytes); });
    });
}

bool isPlainMagicInUse() {
    return plainMagicInUse;
}

void setPlainMagicInUse(bool inUse) {
    plainMagicInUse = inUse;
}

} // namespace elfext::lowlevel
