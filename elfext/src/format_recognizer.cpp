#include "elfext/interface/format_recognizer.h"

#include "elfext/src/file_layout.h"
#include "elfext/src/low_level.h"

#include <algorithm>
#include <memory>

#include <sys/types.h>

namespace elfext {
namespace {

bool hasElfHeader() {
    Elf64_Ehdr header;
    return lowlevel::readElfHeader(header) == LowLevelStatus_Good;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

bool readAt(std::FILE* file, uint64_t offset, uint8_t* buffer, size_t count) {
    return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0 &&
           std::fread(buffer, 1, count, file) == count;
}

} // namespace

bool isElfFile(const void* data, uint64_t size) {
    if (data == nullptr) {
        return false;
    }
    const OpenInput input(static_cast<const uint8_t*>(data), size);
    return hasElfHeader();
}

// The header decides, so of a file that may be large only the header is read, and the last byte
// to see that the stretch is all there.
bool isElfFile(const char* fileName, uint64_t offset, uint64_t size) {
    uint8_t head[recordSizes64.elfHeader];
    const auto headSize = static_cast<size_t>(std::min<uint64_t>(size, sizeof head));
    if (headSize == 0 || offset > INT64_MAX || size > INT64_MAX - offset) {
        return false;
    }
    const OwnedFile file(std::fopen(fileName, "rb"));
    uint8_t last = 0;
    return file != nullptr && readAt(file.get(), offset, head, headSize) &&
           readAt(file.get(), offset + size - 1, &last, 1) && isElfFile(head, headSize);
}

bool isElfFile(std::FILE* elfFile) {
    const off_t position = ftello(elfFile);
    if (position < 0) {
        return false;
    }
    bool isElf = false;
    {
        const OpenInput input(elfFile, lowlevel::UnknownSize);
        isElf = hasElfHeader();
    }
    return fseeko(elfFile, position, SEEK_SET) == 0 && isElf;
}

} // namespace elfext
