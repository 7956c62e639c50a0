// One section: its fields, its bytes, its place in the file.
#include "elfext/interface/data_structure.h"
#include "tests/elfext/model_fixtures.h"

#include <cstring>
#include <numeric>

namespace elfext::test {
namespace {

using SectionTest = ModelTest;
using SectionDeathTest = ModelTest;

constexpr const char* source = "elfext/src/section";

TEST_F(SectionTest, StartsWithAllDetailsZero) {
    Section* const section = makeSection();
    EXPECT_EQ(section->getAddress(), 0U);
    EXPECT_EQ(section->getSize(), 0U);
    EXPECT_EQ(section->getContentsSize(), 0U);
    EXPECT_EQ(section->getAlignment(), 0U);
    EXPECT_EQ(section->getEntrySize(), 0U);
    EXPECT_EQ(section->getLink(), nullptr);
    EXPECT_EQ(section->getInfo(), 0U);
    EXPECT_EQ(section->getFileOffset(), 0U);
    EXPECT_FALSE(section->isFileOffsetKnown());
    EXPECT_EQ(section->getSegment(), nullptr);
    EXPECT_EQ(section->getGroup(), nullptr);
    EXPECT_FALSE(section->hasExternalContents());
    EXPECT_FALSE(section->isContentsDeferred());
    EXPECT_FALSE(section->hasRelocations());
    EXPECT_EQ(section->getRelocations().getSize(), 0U);
    EXPECT_EQ(section->getRelocations().getCapacity(), 4U);
    EXPECT_EQ(section->getHostedSymbols().getSize(), 0U);
    EXPECT_EQ(section->getHostedDynamicSymbols().getSize(), 0U);
    EXPECT_EQ(section->getLoadedContents().getSize(), 0U);
}

TEST_F(SectionTest, FieldsHoldWhatIsSet) {
    Section* const section = makeSection();
    Section* const other = makeSection();
    Segment* const segment = module().createSegment(SegmentFields());
    section->setName(".data");
    section->setFlags(SHF_WRITE);
    section->setAddress(0x123456789A);
    section->setSize(0x1FFFFFFFF);
    section->setAlignment(0x80000000);
    section->setEntrySize(24);
    section->setLink(other);
    section->setInfo(5);
    section->setSegment(segment);
    section->setIsAuxiliary(true);
    section->setIsRelocatable(false);
    EXPECT_STREQ(section->getName(), ".data");
    EXPECT_EQ(section->getFlags(), 1U);
    EXPECT_EQ(section->getAddress(), 0x123456789AU);
    EXPECT_EQ(section->getSize(), 0x1FFFFFFFFU);
    EXPECT_EQ(section->getContentsSize(), 0x1FFFFFFFFU);
    EXPECT_EQ(section->getAlignment(), 0x80000000U);
    EXPECT_EQ(section->getEntrySize(), 24U);
    EXPECT_EQ(section->getLink(), other);
    EXPECT_EQ(section->getInfo(), 5U);
    EXPECT_EQ(section->getSegment(), segment);
    EXPECT_TRUE(section->isAuxiliary());
    EXPECT_FALSE(section->isRelocatable());
    section->setName(nullptr);
    EXPECT_EQ(section->getName(), nullptr);
}

TEST_F(SectionTest, NobitsHaveASizeAndNoContents) {
    Section* const section = module().createSection(".bss", SHT_NOBITS, 3);
    section->setSize(100);
    section->setFileOffset(8);
    EXPECT_EQ(section->getSize(), 100U);
    EXPECT_EQ(section->getContentsSize(), 0U);
    EXPECT_EQ(section->getDataSize(), 0U);
    uint64_t offset = 1;
    uint64_t size = 1;
    EXPECT_TRUE(section->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 8U);
    EXPECT_EQ(size, 0U);
}

TEST_F(SectionTest, AlignmentsArePowersOfTwoOrZero) {
    Section* const section = makeSection();
    for (const uint64_t alignment : {uint64_t{0}, uint64_t{1}, uint64_t{4096}, uint64_t{1} << 63}) {
        section->setAlignment(alignment);
        EXPECT_EQ(section->getAlignment(), alignment);
    }
    section->setAlignmentAsRead(3);
    EXPECT_EQ(section->getAlignment(), 3U);
}

TEST_F(SectionDeathTest, OtherAlignmentsAreFaults) {
    Section* const section = makeSection();
    for (const uint64_t alignment : {3U, 6U, 0xFFFFFFFFU}) {
        EXPECT_FAULT(section->setAlignment(alignment), source,
                     "(alignment & ~(alignment & (0 - alignment))) == 0");
    }
}

TEST_F(SectionTest, DebugSectionsAreToldByName) {
    const std::pair<const char*, bool> rows[] = {
        {".debug", true},   {".debug_info", true}, {".debugger", true},  {".line", true},
        {".line_x", true},  {"C$$fpmap", true},    {"C$$fpmapx", false}, {".debu", false},
        {"x.debug", false}, {".text", false},      {"", false},          {nullptr, false},
        {".Debug", false},  {".lin", false},
    };
    for (const auto& [name, isDebug] : rows) {
        EXPECT_EQ(makeSection(name)->isDebugSection(), isDebug) << (name != nullptr ? name : "");
    }
}

// --- Place in the file

TEST_F(SectionTest, ThePlaceInTheFileIsKnownOnceItIsSet) {
    Section* const section = makeSection();
    section->setSize(10);
    uint64_t offset = 1;
    uint64_t size = 1;
    EXPECT_FALSE(section->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0U);
    EXPECT_EQ(size, 10U);
    section->setFileOffset(0x123456789A);
    EXPECT_TRUE(section->isFileOffsetKnown());
    EXPECT_TRUE(section->getFileRange(&offset, &size));
    EXPECT_EQ(offset, 0x123456789AU);
    EXPECT_EQ(section->getFileOffset(), 0x123456789AU);
    EXPECT_EQ(section->getDataStore(), static_cast<DataStore*>(section));
}

TEST_F(SectionTest, FileAlignmentIsAtMost4AndFixedForTables) {
    const auto alignmentOf = [](Section* section, uint64_t alignment) {
        section->setAlignment(alignment);
        uint64_t congruence = 1;
        uint64_t inFile = 0;
        section->getFileConstraints(&congruence, &inFile);
        EXPECT_EQ(congruence, 0U);
        return inFile;
    };
    EXPECT_EQ(alignmentOf(makeSection(), 0), 1U);
    EXPECT_EQ(alignmentOf(makeSection(), 2), 2U);
    EXPECT_EQ(alignmentOf(makeSection(), 4096), 4U);
    EXPECT_EQ(alignmentOf(module().createNullSection(0), 4), 1U);
    EXPECT_EQ(alignmentOf(module().createSection("", SHT_NOBITS, 0), 4), 1U);
    EXPECT_EQ(alignmentOf(module().createSymbolTableSection(SHT_SYMTAB), 1), 4U);
    EXPECT_EQ(alignmentOf(module().createSymbolTableSection(SHT_DYNSYM), 1), 4U);
    EXPECT_EQ(alignmentOf(module().createRelocationSection("", SHT_REL, 0), 1), 4U);
    EXPECT_EQ(alignmentOf(module().createRelocationSection("", SHT_RELA, 0), 8), 4U);
    EXPECT_EQ(alignmentOf(module().createGroupSection(""), 1), 4U);
    EXPECT_EQ(alignmentOf(module().createShndxSection(), 1), 4U);
    EXPECT_EQ(alignmentOf(module().createHashSection(), 1), 1U);
}

TEST_F(SectionTest, TheLayoutItemSaysWhatTheSectionSays) {
    Section* const section = makeSection();
    section->setSize(10);
    section->setAlignment(2);
    const DataStructure* const item = section->createDataStructure(region(), 24);
    EXPECT_EQ(item->getKind(), DataStructure::Kind_Section);
    EXPECT_EQ(static_cast<const SectionDataStructure*>(item)->getSection(), section);
    EXPECT_EQ(item->getFileRegion(), section);
    EXPECT_EQ(item->getOffset(), 24U);
    EXPECT_EQ(item->getSize(), 10U);
    EXPECT_EQ(item->getCongruence(), 0U);
    EXPECT_EQ(item->getAlignment(), 2U);
}

// --- Contents

TEST_F(SectionTest, ContentsAreReadAndWritten) {
    Section* const section = makeSection();
    section->setContents("abcdef", 6);
    EXPECT_EQ(section->getSize(), 6U);
    DataStore& store = *section;
    EXPECT_EQ(store.getDataSize(), 6U);
    char bytes[3] = {};
    store.read(2, bytes, 3);
    EXPECT_EQ(std::string(bytes, 3), "cde");
    EXPECT_TRUE(store.isWritable());
    store.write(4, "XY", 2);
    section->getContents()->readBytes(3, bytes, 3);
    EXPECT_EQ(std::string(bytes, 3), "dXY");
}

TEST_F(SectionTest, ContentsFollowTheModulesByteOrder) {
    Section* const section = makeSection();
    section->setContents("\1\2", 2);
    EXPECT_EQ(section->getLoadedContents().getUint16(0), 0x201U);
    module().setEndianness(2);
    EXPECT_EQ(section->getLoadedContents().getUint16(0), 0x102U);
}

TEST_F(SectionDeathTest, ReadsAndWritesEndAtTheContents) {
    Section* const section = makeSection();
    section->setContents("abcdef", 6);
    char bytes[8] = {};
    EXPECT_FAULT(section->read(4, bytes, 3), "elfext/src/buffer",
                 "offset + count <= m_Contents.getSize()");
    EXPECT_FAULT(section->write(7, bytes, 1), "elfext/src/buffer",
                 "offset <= m_Contents.getSize()");
}

uint64_t fetchOnes(void* /*context*/, uint64_t /*offset*/, void* destination, uint64_t count) {
    std::memset(destination, 1, count);
    return count;
}

TEST_F(SectionTest, ExternalContentsAreReadOnly) {
    Section* const section = makeSection();
    section->setExternalContents(fetchOnes, nullptr, 4);
    EXPECT_TRUE(section->hasExternalContents());
    EXPECT_FALSE(section->isWritable());
    EXPECT_EQ(section->getSize(), 4U);
    EXPECT_EQ(section->getLoadedContents().getUint32(0), 0x01010101U);
    section->setContents("ab", 2);
    EXPECT_FALSE(section->hasExternalContents());
    EXPECT_TRUE(section->isWritable());
    EXPECT_EQ(section->getLoadedContents().getUint8(1), 'b');
}

TEST_F(SectionDeathTest, WhatIsNotWritableIsNotWritten) {
    Section* const section = makeSection();
    section->setExternalContents(fetchOnes, nullptr, 4);
    EXPECT_FAULT(section->write(0, "x", 1), source, "isWritable()");
    Section* const table = module().createStringTableSection("");
    EXPECT_FAULT(table->write(0, "x", 1), source, "isWritable()");
}

TEST_F(SectionTest, AnAuxiliarySectionCanBeMendedAfterAll) {
    Section* const table = module().createStringTableSection("");
    table->setContents("xa", 2);
    table->setIsAuxiliary(false);
    table->write(0, "\0", 1);
    table->setIsAuxiliary(true);
    EXPECT_EQ(table->getLoadedContents().getUint8(0), 0U);
}

// --- Borrowed contents

TEST_F(SectionTest, BorrowedContentsAreCopiedBeforeTheyChange) {
    uint8_t bytes[8] = {};
    std::iota(bytes, bytes + 8, uint8_t{1});
    Section* const section = makeSection();
    section->setSize(8);
    Buffer& contents = section->getLoadedContents();
    contents.setBorrowedData(bytes, 8);
    EXPECT_TRUE(contents.isBorrowed());
    EXPECT_TRUE(section->isWritable());
    EXPECT_EQ(contents.getSize(), 8U);
    EXPECT_EQ(static_cast<const Buffer&>(contents).getData(), bytes);
    EXPECT_EQ(contents.getUint8(7), 8U);
    EXPECT_EQ(contents.getUint16(2), 0x0403U);
    EXPECT_EQ(contents.getUint32(4), 0x08070605U);
    EXPECT_EQ(contents.getUint64(0), 0x0807060504030201U);
    EXPECT_EQ(contents.getUnalignedUint32(1), 0x05040302U);
    uint8_t read[3] = {};
    section->read(5, read, 3);
    EXPECT_EQ(read[2], 8U);
    EXPECT_TRUE(contents.isBorrowed());
    section->write(0, "\x77", 1);
    EXPECT_FALSE(contents.isBorrowed());
    EXPECT_EQ(bytes[0], 1U);
    EXPECT_EQ(contents.getUint16(0), 0x0277U);
    EXPECT_EQ(contents.getSize(), 8U);
}

TEST_F(SectionTest, EveryKindOfChangeEndsBorrowing) {
    const uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const auto ends = [&bytes, this](auto&& change) {
        Buffer buffer(region(), &module());
        buffer.setBorrowedData(bytes, 8);
        change(buffer);
        EXPECT_EQ(static_cast<const Buffer&>(buffer).getUint8(1), 2U);
        return !buffer.isBorrowed();
    };
    EXPECT_TRUE(ends([](Buffer& b) { b.setUint8(0, 9); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.setUint16(2, 9); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.setUint32(4, 9); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.setUint64(0, 0x200); }));
    EXPECT_TRUE(ends([](Buffer& b) { EXPECT_EQ(b.addUint16(9), 8U); }));
    EXPECT_TRUE(ends([](Buffer& b) { EXPECT_EQ(b.addUint32(9), 8U); }));
    EXPECT_TRUE(ends([](Buffer& b) { EXPECT_EQ(b.addUint64(9), 8U); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.setSize(4); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.reserve(20); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.getData(); }));
    EXPECT_TRUE(ends([](Buffer& b) { b.writeBytes(7, "x", 1); }));
    EXPECT_FALSE(ends([](const Buffer& b) { b.getData(); }));
}

TEST_F(SectionDeathTest, BorrowedContentsEndWhereTheyEnd) {
    const uint8_t bytes[8] = {};
    Buffer buffer(region(), &module());
    buffer.setBorrowedData(bytes, 6);
    constexpr const char* header = "elfext/interface/buffer";
    EXPECT_FAULT(buffer.getUint16(6), header, "offset + 2 <= m_Contents.getSize()");
    EXPECT_FAULT(buffer.getUint32(4), header, "offset + 4 <= m_Contents.getSize()");
    EXPECT_FAULT(buffer.getUint64(0), header, "offset + 8 <= m_Contents.getSize()");
    EXPECT_FAULT(buffer.getUint8(6), header, "index < m_Used");
    EXPECT_FAULT(buffer.addUint32(0), "elfext/src/buffer", "m_Contents.getSize() % 4 == 0");
}

} // namespace
} // namespace elfext::test
