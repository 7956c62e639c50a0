// Files that are measured without a module while memory runs out.
#include "elfext/interface/quick_sizes.h"

#include "alloclib/interface/quiet_exhaustion.h"
#include "tests/elfext/allocation_failure.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {
namespace {

using namespace testsupport;

// Each allocation in turn: false or the sizes, and never an exception.
TEST(QuickSizesMemoryTest, NothingIsToldThen) {
    ElfBuilder builder;
    const auto text =
        static_cast<uint32_t>(builder.add({.name = ".text",
                                           .flags = elf::SHF_ALLOC | elf::SHF_EXECINSTR,
                                           .contents = std::string(100, 'c')}));
    builder.addSymbols({{.name = "$d", .section = text, .value = 50},
                        {.name = "$a.0123456789abcdef", .section = text}});
    builder.add({.name = ".QEL.attributes", .type = elf::SHT_QEL_ATTRIBUTES, .contents = "A"});
    const std::string bytes = builder.bytes();
    const auto* const data = reinterpret_cast<const uint8_t*>(bytes.data());
    for (uint64_t number = 0;; ++number) {
        QuickSizes quickSizes;
        SizeStatistics sizes;
        bool isMeasured = false;
        {
            const alloclib::QuietExhaustion quiet;
            const AllocationFailure failure(number);
            isMeasured = quickSizes.measure(data, bytes.size(), sizes);
        }
        ASSERT_EQ(isMeasured, !AllocationFailure::hasHappened()) << number;
        // The next file is measured as ever.
        ASSERT_TRUE(quickSizes.measure(data, bytes.size(), sizes));
        EXPECT_EQ(sizes, (SizeStatistics{.m_Code = 50, .m_LiteralPools = 50}));
        if (isMeasured) {
            EXPECT_GT(number, 5U);
            return;
        }
    }
}

} // namespace
} // namespace elfext::test
