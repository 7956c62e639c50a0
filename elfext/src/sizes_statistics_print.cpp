// The printed form of a module's sizes.
#include "elfext/interface/sizes_statistics.h"

#include "platform/interface/internal_check.h"

namespace elfext {
namespace {

struct Row {
    const char* m_Name;
    uint64_t SizeStatistics::*m_Field;
};

constexpr Row rows[] = {
    {"Code", &SizeStatistics::m_Code},
    {"Literal pools", &SizeStatistics::m_LiteralPools},
    {"RW data (uncompressed)", &SizeStatistics::m_RwDataUncompressed},
    {"RW data (compressed)", &SizeStatistics::m_RwDataCompressed},
    {"RO data", &SizeStatistics::m_RoData},
    {"ZI data", &SizeStatistics::m_ZiData},
    {"Debug info", &SizeStatistics::m_DebugInfo},
    {"Internal padding", &SizeStatistics::m_InternalPadding},
};

constexpr char ruler[] = "==========================================\n";

} // namespace

void printSizeStatistics(std::FILE* f, const SizeStatistics& statistics) {
    TOMEX_CHECK_TEXT(f != nullptr, "f != NULL");
    std::fputs(ruler, f);
    for (const Row& row : rows) {
        std::fprintf(f, "%-24s: %10u bytes\n", row.m_Name,
                     static_cast<uint32_t>(statistics.*row.m_Field));
    }
    std::fputs(ruler, f);
}

} // namespace elfext
