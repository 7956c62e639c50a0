// Writes that run out of memory: each allocation fails in turn, and every time it is a report and
// a result of false, never an exception.
#include "elfext/interface/elf_layout.h"
#include "tests/elfext/allocation_failure.h"
#include "tests/elfext/round_trip_fixtures.h"

namespace elfext::test {
namespace {

namespace elf = testsupport::elf;

// Counts what it is told; takes no memory.
class CountingHandler : public ErrorHandler {
public:
    bool report(ObjectModule* /*objectModule*/, Severity severity, const char* message) override {
        const bool isExhaustion =
            severity == Severity_Fatal && std::string_view(message) == "Out of memory";
        ++(isExhaustion ? m_Exhaustions : m_Others);
        return false;
    }

    uint32_t m_Exhaustions = 0;
    uint32_t m_Others = 0;
};

class WriterMemoryTest : public ReaderTest {
protected:
    // Runs `act` on a module with the file's contents, with each allocation failing in turn, up to
    // the first run in which none is left to fail; and `check` after each failure.
    template <typename Act, typename Check>
    void failEach(const std::string& bytes, Act act, Check check) {
        for (uint64_t number = 0;; ++number) {
            CountingHandler handler;
            startModule();
            ASSERT_TRUE(read(bytes));
            module().setErrorHandler(&handler);
            bool isGood = false;
            bool hasFailed = false;
            {
                const AllocationFailure failure(number);
                isGood = act();
                hasFailed = AllocationFailure::hasHappened();
            }
            ASSERT_EQ(isGood, !hasFailed) << number;
            ASSERT_EQ(handler.m_Exhaustions, hasFailed ? 1U : 0U) << number;
            ASSERT_EQ(handler.m_Others, 0U) << number;
            if (!hasFailed) {
                EXPECT_GT(number, 10U);
                return;
            }
            check();
            // The next write is free.
            std::unique_ptr<uint8_t[]> image;
            uint64_t size = 0;
            ObjectModule other;
            other.setType(ET_REL);
            ASSERT_TRUE(writeElfBuffer(&other, &image, &size)) << number;
        }
    }
};

TEST_F(WriterMemoryTest, InAWriteToMemory) {
    for (const uint16_t type : {elf::ET_REL, elf::ET_DYN}) {
        failEach(
            testsupport::richElf({true, true}, type).bytes(),
            [this] {
                std::unique_ptr<uint8_t[]> image;
                uint64_t size = 0;
                const bool isGood = writeElfBuffer(&module(), &image, &size);
                EXPECT_EQ(image != nullptr, isGood);
                return isGood;
            },
            [] {});
    }
}

TEST_F(WriterMemoryTest, InALayout) {
    failEach(
        testsupport::richElf({false, false}, elf::ET_EXEC).bytes(),
        [this] {
            const uint64_t before = section(1).getFileOffset();
            const bool isGood = layOutElfFile(&module());
            EXPECT_EQ(section(1).getFileOffset(), before);
            return isGood;
        },
        [] {});
}

// The file that is there stays whole, and nothing is left beside it.
TEST_F(WriterMemoryTest, InAWriteToAFile) {
    const testsupport::ScratchFolder folder;
    const std::string path = folder.pathOf("a.o");
    folder.write("a.o", "old");
    const std::string bytes = testsupport::ElfBuilder().bytes();
    failEach(
        bytes, [&] { return writeElfFile(path.c_str(), &module()); },
        [&] { EXPECT_EQ(folder.read("a.o"), "old"); });
    EXPECT_EQ(folder.read("a.o"), writtenBytes(module()));
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"a.o"});
}

TEST_F(WriterMemoryTest, ForTheImage) {
    module().createNullSection(0);
    module().createSection("large", SHT_PROGBITS, 0)->setSize(100000);
    const LargeAllocationFailure failure(100000);
    EXPECT_EQ(writtenBytes(module()), "");
    EXPECT_EQ(reports(), (Reports{{Severity_Fatal, "Out of memory"}}));
}

} // namespace
} // namespace elfext::test
