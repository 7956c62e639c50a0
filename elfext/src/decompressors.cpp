// The table of the ways in which data are compressed.
#include "elfext/interface/decompressors.h"

#include "platform/interface/internal_check.h"

#include <cstring>

namespace elfext {
namespace {

struct Row {
    const char* m_Symbol;
    const char* m_Description;
    Decompressor m_Routine;
};

Row g_rows[decompressorCount] = {
    {"__decompress0", "Run-length encoding", nullptr},
    {"__decompress1", "Run-length encoding, with LZ77 on small repeats", nullptr},
    {"__decompress2", "Complex LZ77 compression", nullptr},
};

bool isVariant(int32_t id) {
    return id >= 0 && id < decompressorCount;
}

Row& row(int32_t id) {
    TOMEX_CHECK_TEXT(isVariant(id), "id >= 0 && id < decompressorCount");
    return g_rows[id];
}

} // namespace

int32_t decompressorOfSymbol(const char* symbolName) {
    if (symbolName != nullptr) {
        for (int32_t id = 0; id < decompressorCount; ++id) {
            if (std::strcmp(symbolName, g_rows[id].m_Symbol) == 0) {
                return id;
            }
        }
    }
    return unknownDecompressor;
}

const char* decompressorDescription(int32_t id) {
    return row(id).m_Description;
}

const char* decompressorSymbol(int32_t id) {
    return row(id).m_Symbol;
}

void registerDecompressor(int32_t id, Decompressor routine) {
    row(id).m_Routine = routine;
}

Decompressor findDecompressor(int32_t id) {
    return isVariant(id) ? g_rows[id].m_Routine : nullptr;
}

} // namespace elfext
