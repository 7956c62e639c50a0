// Bytes in the file's byte order.
#include "elfext/interface/buffer.h"

#include "tests/elfext/container_fixtures.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

namespace elfext::test {
namespace {

class ChangingOrder : public ByteOrderSource {
public:
    using ByteOrderSource::ByteOrderSource;
    void setLittleEndian(bool littleEndian) { m_IsLittleEndian = littleEndian ? 1 : 0; }
};

// Bytes that are held outside of a buffer and come in small pieces.
struct External {
    std::vector<uint8_t> bytes;
    uint64_t pieceSize = 3;
    uint32_t calls = 0;

    static uint64_t fetch(void* context, uint64_t offset, void* destination, uint64_t count) {
        auto& self = *static_cast<External*>(context);
        ++self.calls;
        const uint64_t given = std::min(count, self.pieceSize);
        std::copy_n(self.bytes.data() + offset, given, static_cast<uint8_t*>(destination));
        return given;
    }
};

std::vector<uint8_t> countedBytes(uint64_t count) {
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t{1});
    return bytes;
}

class BufferTest : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        m_big = std::make_unique<Buffer>(region(), &m_bigOrder);
        m_little = std::make_unique<Buffer>(region(), &m_littleOrder);
        m_external = std::make_unique<Buffer>(region(), &m_bigOrder);
        const std::vector<uint8_t> bytes = countedBytes(16);
        for (Buffer* const buffer : {m_big.get(), m_little.get()}) {
            buffer->setSize(16);
            buffer->writeBytes(0, bytes.data(), 16);
        }
        m_source.bytes = bytes;
        m_external->setExternalData(External::fetch, &m_source, 16);
    }
    void TearDown() override {
        m_big.reset();
        m_little.reset();
        m_external.reset();
        ContainerTest::TearDown();
    }

    ByteOrderSource m_bigOrder{false};
    ByteOrderSource m_littleOrder{true};
    External m_source;
    std::unique_ptr<Buffer> m_big;
    std::unique_ptr<Buffer> m_little;
    std::unique_ptr<Buffer> m_external;
};
using BufferDeathTest = BufferTest;

constexpr const char* header = "elfext/interface/buffer";
constexpr const char* source = "elfext/src/buffer";

TEST_F(BufferTest, AlignedReadsAreInTheFilesOrder) {
    EXPECT_EQ(m_big->getUint8(15), 16U);
    EXPECT_EQ(m_big->getUint16(2), 0x0304U);
    EXPECT_EQ(m_big->getUint32(4), 0x05060708U);
    EXPECT_EQ(m_big->getUint64(8), 0x090A0B0C0D0E0F10U);
    EXPECT_EQ(m_little->getUint8(15), 16U);
    EXPECT_EQ(m_little->getUint16(2), 0x0403U);
    EXPECT_EQ(m_little->getUint32(4), 0x08070605U);
    EXPECT_EQ(m_little->getUint64(8), 0x100F0E0D0C0B0A09U);
}

TEST_F(BufferTest, UnalignedReadsAreLegalAtAnyOffset) {
    for (uint64_t offset = 0; offset <= 8; ++offset) {
        uint64_t big = 0;
        uint64_t little = 0;
        for (uint64_t i = 0; i < 8; ++i) {
            big = big << 8 | (offset + i + 1);
            little |= (offset + i + 1) << 8 * i;
        }
        EXPECT_EQ(m_big->getUnalignedUint64(offset), big);
        EXPECT_EQ(m_big->getUnalignedUint32(offset), big >> 32);
        EXPECT_EQ(m_big->getUnalignedUint16(offset), big >> 48);
        EXPECT_EQ(m_little->getUnalignedUint64(offset), little);
        EXPECT_EQ(m_little->getUnalignedUint32(offset), little & 0xFFFFFFFF);
        EXPECT_EQ(m_little->getUnalignedUint16(offset), little & 0xFFFF);
    }
}

TEST_F(BufferTest, WritesReadBack) {
    for (Buffer* const buffer : {m_big.get(), m_little.get()}) {
        buffer->setUint8(0, 0xAB);
        buffer->setUint16(2, 0x1122);
        buffer->setUint32(4, 0x33445566);
        buffer->setUint64(8, 0x778899AABBCCDDEE);
        EXPECT_EQ(buffer->getUint8(0), 0xABU);
        EXPECT_EQ(buffer->getUint8(1), 2U);
        EXPECT_EQ(buffer->getUint16(2), 0x1122U);
        EXPECT_EQ(buffer->getUint32(4), 0x33445566U);
        EXPECT_EQ(buffer->getUint64(8), 0x778899AABBCCDDEEU);
    }
    EXPECT_EQ(m_big->getUint8(4), 0x33U);
    EXPECT_EQ(m_little->getUint8(4), 0x66U);
}

TEST_F(BufferTest, ByteOrderIsLookedUpAtEachAccess) {
    ChangingOrder order(true);
    Buffer buffer(region(), &order);
    buffer.addUint32(0x01020304);
    order.setLittleEndian(false);
    EXPECT_EQ(buffer.getUint32(0), 0x04030201U);
    EXPECT_EQ(buffer.getUnalignedUint32(0), 0x04030201U);
}

TEST_F(BufferTest, AddGrowsByTheWidthAndGivesTheOffset) {
    Buffer buffer(region(), &m_bigOrder);
    EXPECT_EQ(buffer.getSize(), 0U);
    EXPECT_EQ(buffer.addUint16(0x0102), 0U);
    EXPECT_EQ(buffer.addUint16(0x0304), 2U);
    EXPECT_EQ(buffer.addUint32(0x05060708), 4U);
    EXPECT_EQ(buffer.addUint64(0x090A0B0C0D0E0F10), 8U);
    EXPECT_EQ(buffer.getSize(), 16U);
    const std::vector<uint8_t> bytes = countedBytes(16);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), buffer.getData()));
}

TEST_F(BufferTest, NewBytesAreZero) {
    Buffer buffer(region(), &m_bigOrder);
    buffer.setSize(3);
    buffer.setUint8(2, 9);
    buffer.setSize(2);
    buffer.reserve(1000);
    EXPECT_EQ(buffer.getSize(), 2U);
    buffer.setSize(8);
    EXPECT_EQ(buffer.getUint64(0), 0U);
}

TEST_F(BufferTest, BytesAreCopiedInAndOut) {
    const std::vector<uint8_t> bytes{9, 8, 7};
    m_big->writeBytes(13, bytes.data(), 3);
    uint8_t read[4] = {};
    m_big->readBytes(12, read, 4);
    EXPECT_EQ(read[0], 13U);
    EXPECT_EQ(read[3], 7U);
    m_big->readBytes(16, read, 0);
    m_big->writeBytes(16, read, 0);
}

TEST_F(BufferTest, ExternalReadsGoThroughTheFunction) {
    EXPECT_TRUE(m_external->isExternal());
    EXPECT_EQ(m_external->getSize(), 16U);
    EXPECT_EQ(m_external->getUint8(3), 4U);
    EXPECT_EQ(m_external->getUint16(2), 0x0304U);
    EXPECT_EQ(m_external->getUint32(4), 0x05060708U);
    EXPECT_EQ(m_external->getUint64(8), 0x090A0B0C0D0E0F10U);
    EXPECT_EQ(m_external->getUnalignedUint16(1), 0x0203U);
    EXPECT_EQ(m_external->getUnalignedUint32(1), 0x02030405U);
    EXPECT_EQ(m_external->getUnalignedUint64(1), 0x0203040506070809U);
}

TEST_F(BufferTest, ExternalReadGoesOnUntilAllIsRead) {
    uint8_t read[16] = {};
    m_external->readBytes(0, read, 16);
    EXPECT_EQ(m_source.calls, 6U); // five pieces of three bytes and one
    EXPECT_TRUE(std::equal(m_source.bytes.begin(), m_source.bytes.end(), read));
    m_external->readBytes(16, read, 0);
    EXPECT_EQ(m_source.calls, 6U);
}

TEST_F(BufferTest, ExternalDataMayLieBehind32Bits) {
    Buffer buffer(region(), &m_bigOrder);
    uint64_t asked = 0;
    buffer.setExternalData(
        [](void* context, uint64_t offset, void* destination, uint64_t count) {
            *static_cast<uint64_t*>(context) = offset;
            std::memset(destination, 1, count);
            return count;
        },
        &asked, uint64_t{1} << 40);
    EXPECT_EQ(buffer.getUint32(uint64_t{1} << 39), 0x01010101U);
    EXPECT_EQ(asked, uint64_t{1} << 39);
}

TEST_F(BufferTest, SetSizeOfExternalDataOnlyNotesIt) {
    m_external->setSize(uint64_t{1} << 40);
    EXPECT_EQ(m_external->getSize(), uint64_t{1} << 40);
    EXPECT_EQ(m_source.calls, 0U);
    m_external->setExternalData(nullptr, nullptr, 0);
    EXPECT_FALSE(m_external->isExternal());
    EXPECT_EQ(m_external->getSize(), 0U);
}

TEST_F(BufferTest, WithoutChecksASourceThatGivesNothingReadsAsZeros) {
    platform::setCheckLevel("none");
    m_source.pieceSize = 0;
    uint8_t read[4] = {1, 2, 3, 4};
    m_external->readBytes(0, read, 4);
    EXPECT_TRUE(std::all_of(read, read + 4, [](uint8_t byte) { return byte == 0; }));
}

TEST_F(BufferTest, SourceThatClaimsTooMuchIsCutShort) {
    m_external->setExternalData(
        [](void*, uint64_t, void* destination, uint64_t count) {
            std::memset(destination, 5, count);
            return UINT64_MAX;
        },
        nullptr, 16);
    EXPECT_EQ(m_external->getUint32(4), 0x05050505U);
}

TEST_F(BufferDeathTest, AlignedReadsAtOddOffsets) {
    for (const Buffer* const buffer : {m_big.get(), m_external.get()}) {
        EXPECT_FAULT(buffer->getUint16(1), header, "offset % 2 == 0");
        EXPECT_FAULT(buffer->getUint32(2), header, "offset % 4 == 0");
        EXPECT_FAULT(buffer->getUint64(4), header, "offset % 8 == 0");
    }
    EXPECT_FAULT(m_big->setUint16(1, 0), header, "offset % 2 == 0");
    EXPECT_FAULT(m_big->setUint32(2, 0), header, "offset % 4 == 0");
    EXPECT_FAULT(m_big->setUint64(4, 0), header, "offset % 8 == 0");
}

TEST_F(BufferDeathTest, ReadsBehindTheEnd) {
    const char* const end2 = "offset + 2 <= m_Contents.getSize()";
    const char* const end4 = "offset + 4 <= m_Contents.getSize()";
    const char* const end8 = "offset + 8 <= m_Contents.getSize()";
    EXPECT_FAULT(m_big->getUint8(16), "elfext/interface/fast_array", "index < m_Used");
    EXPECT_FAULT(m_big->getUint16(16), header, end2);
    EXPECT_FAULT(m_big->getUint32(16), header, end4);
    EXPECT_FAULT(m_big->getUint64(16), header, end8);
    EXPECT_FAULT(m_big->getUnalignedUint16(15), header, end2);
    EXPECT_FAULT(m_big->getUnalignedUint32(13), header, end4);
    EXPECT_FAULT(m_big->getUnalignedUint64(9), header, end8);
    EXPECT_FAULT(m_big->setUint8(16, 0), "elfext/interface/fast_array", "index < m_Used");
    EXPECT_FAULT(m_big->setUint16(16, 0), header, end2);
    EXPECT_FAULT(m_big->setUint32(16, 0), header, end4);
    EXPECT_FAULT(m_big->setUint64(16, 0), header, end8);
}

TEST_F(BufferDeathTest, OffsetsBehind32Bits) {
    const uint64_t offset = uint64_t{1} << 32;
    EXPECT_FAULT(m_big->getUint8(offset), header, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->getUint16(offset), header, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->getUint32(UINT64_MAX - 3), header, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->getUint64(offset), header, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->getUnalignedUint32(offset), header, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->setUint8(offset, 0), header, "offset <= UINT32_MAX");
}

TEST_F(BufferDeathTest, StretchesBehindTheEnd) {
    uint8_t bytes[32] = {};
    const uint64_t beyond = uint64_t{1} << 32;
    EXPECT_FAULT(m_big->readBytes(beyond, bytes, 1), source, "offset <= UINT32_MAX");
    EXPECT_FAULT(m_big->readBytes(0, bytes, beyond), source, "count <= UINT32_MAX");
    EXPECT_FAULT(m_big->readBytes(17, bytes, 0), source, "offset <= m_Contents.getSize()");
    EXPECT_FAULT(m_big->readBytes(0, bytes, 17), source, "count <= m_Contents.getSize()");
    EXPECT_FAULT(m_big->readBytes(8, bytes, 9), source, "offset + count <= m_Contents.getSize()");
    EXPECT_FAULT(m_big->readBytes(0, nullptr, 1), source, "buffer != NULL");
    EXPECT_FAULT(m_big->writeBytes(8, bytes, 9), source, "offset + count <= m_Contents.getSize()");
    EXPECT_FAULT(m_big->writeBytes(0, nullptr, 1), source, "buffer != NULL");
}

TEST_F(BufferDeathTest, StretchesBehindTheEndOfExternalData) {
    uint8_t bytes[32] = {};
    EXPECT_FAULT(m_external->readBytes(0, bytes, 17), source, "count <= m_ExternalDataSize");
    EXPECT_FAULT(m_external->readBytes(8, bytes, 9), source,
                 "offset + count <= m_ExternalDataSize");
    EXPECT_FAULT(m_external->readBytes(UINT64_MAX, bytes, 2), source, "offset + count >= offset");
    EXPECT_FAULT(m_external->getUint32(16), source, "offset + count <= m_ExternalDataSize");
}

TEST_F(BufferDeathTest, ExternalSourceThatGivesNothing) {
    m_source.pieceSize = 0;
    EXPECT_FAULT(m_external->getUint8(0), source, "ret > 0");
}

TEST_F(BufferDeathTest, ExternalDataCannotBeWritten) {
    const char* const text = "!m_ExternalDataFunction";
    const Buffer& constant = *m_external;
    uint8_t byte = 0;
    EXPECT_FAULT(m_external->setUint8(0, 1), header, text);
    EXPECT_FAULT(m_external->setUint16(0, 1), header, text);
    EXPECT_FAULT(m_external->setUint32(0, 1), header, text);
    EXPECT_FAULT(m_external->setUint64(0, 1), header, text);
    EXPECT_FAULT(m_external->getData(), header, text);
    EXPECT_FAULT(constant.getData(), header, text);
    EXPECT_FAULT(m_external->writeBytes(0, &byte, 1), source, text);
    EXPECT_FAULT(m_external->addUint16(1), source, text);
    EXPECT_FAULT(m_external->addUint32(1), source, text);
    EXPECT_FAULT(m_external->addUint64(1), source, text);
}

TEST_F(BufferDeathTest, AddAtAnUnalignedSize) {
    m_big->setSize(17);
    EXPECT_FAULT(m_big->addUint16(1), source, "m_Contents.getSize() % 2 == 0");
    EXPECT_FAULT(m_big->addUint32(1), source, "m_Contents.getSize() % 4 == 0");
    EXPECT_FAULT(m_big->addUint64(1), source, "m_Contents.getSize() % 8 == 0");
}

TEST_F(BufferDeathTest, SizesBehind32Bits) {
    const uint64_t size = uint64_t{1} << 32;
    EXPECT_FAULT(m_big->setSize(size), source, "size <= UINT32_MAX");
    EXPECT_FAULT(m_big->reserve(size), source, "size <= UINT32_MAX");
    // Without checks the size is not cut but refused.
    platform::setCheckLevel("none");
    EXPECT_EXIT(m_big->setSize(size), testing::ExitedWithCode(1),
                testing::ContainsRegex("^Out of memory\\. "));
}

TEST(ByteOrder, ReversesAnyWidth) {
    EXPECT_EQ(reverseBytes(uint8_t{0x12}), 0x12U);
    EXPECT_EQ(reverseBytes(uint16_t{0x1234}), 0x3412U);
    EXPECT_EQ(reverseBytes(uint32_t{0x12345678}), 0x78563412U);
    EXPECT_EQ(reverseBytes(uint64_t{0x0102030405060708}), 0x0807060504030201U);
}

} // namespace
} // namespace elfext::test
