// Feeds any bytes to the recogniser of ELF files.
//
// It looks at the header alone, so what it says must not depend on the bytes behind it, and it must
// say the same of a stretch of a file as of the same bytes in memory.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "elfext/interface/format_recognizer.h"

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const bool isElf = elfext::isElfFile(data, size);
    constexpr size_t longestHeader = 64;
    const std::vector<uint8_t> head(data, data + (size < longestHeader ? size : longestHeader));
    require(elfext::isElfFile(head.data(), head.size()) == isElf, "the rest of the file counts");
    require(!isElf || size >= 52, "a file without a header was recognised");
    // The same bytes as a stream, which keeps its position.
    if (size != 0) {
        std::FILE* stream = ::fmemopen(const_cast<uint8_t*>(data), size, "rb");
        require(stream != nullptr, "no stream");
        std::fseek(stream, static_cast<long>(size / 2), SEEK_SET);
        require(elfext::isElfFile(stream) == isElf, "a stream is not what memory is");
        require(std::ftell(stream) == static_cast<long>(size / 2), "the position has moved");
        std::fclose(stream);
    }
    return 0;
}
