// Buffers whose bytes are in somebody else's memory until something is changed.
#include "elfext/interface/buffer.h"

#include "tests/elfext/container_fixtures.h"

#include <algorithm>
#include <functional>

namespace elfext::test {
namespace {

class BorrowedBufferTest : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        m_Buffer = std::make_unique<Buffer>(region(), &m_Order);
        m_Buffer->setBorrowedData(m_Lender, sizeof m_Lender);
    }
    void TearDown() override {
        m_Buffer.reset();
        ContainerTest::TearDown();
    }
    const uint8_t* data() const { return std::as_const(*m_Buffer).getData(); }

    const uint8_t m_Lender[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    ByteOrderSource m_Order{false};
    std::unique_ptr<Buffer> m_Buffer;
};
using BorrowedBufferDeathTest = BorrowedBufferTest;

constexpr const char* header = "elfext/interface/buffer";

TEST_F(BorrowedBufferTest, ReadsWithoutACopy) {
    EXPECT_EQ(data(), m_Lender);
    EXPECT_EQ(m_Buffer->getSize(), 16U);
    EXPECT_FALSE(m_Buffer->isExternal());
    EXPECT_EQ(m_Buffer->getUint8(15), 16U);
    EXPECT_EQ(m_Buffer->getUint16(2), 0x0304U);
    EXPECT_EQ(m_Buffer->getUint32(4), 0x05060708U);
    EXPECT_EQ(m_Buffer->getUint64(8), 0x090A0B0C0D0E0F10U);
    EXPECT_EQ(m_Buffer->getUnalignedUint16(1), 0x0203U);
    EXPECT_EQ(m_Buffer->getUnalignedUint32(1), 0x02030405U);
    EXPECT_EQ(m_Buffer->getUnalignedUint64(1), 0x0203040506070809U);
    uint8_t read[3] = {};
    m_Buffer->readBytes(13, read, 3);
    EXPECT_EQ(read[2], 16U);
    EXPECT_EQ(data(), m_Lender);
}

// Each change goes to a copy; what is not changed is as it was.
TEST_F(BorrowedBufferTest, ChangesAreTheBuffersOwn) {
    const uint8_t bytes[2] = {0xAA, 0xBB};
    const std::function<void(Buffer&)> changes[] = {
        [](Buffer& buffer) { buffer.setUint8(1, 0xAA); },
        [](Buffer& buffer) { buffer.setUint16(2, 0xAABB); },
        [](Buffer& buffer) { buffer.setUint32(4, 0xAABBCCDD); },
        [](Buffer& buffer) { buffer.setUint64(8, 0xAABBCCDD00112233); },
        [&](Buffer& buffer) { buffer.writeBytes(3, bytes, 2); },
        [](Buffer& buffer) { buffer.getData()[7] = 0xAA; },
    };
    for (const auto& change : changes) {
        m_Buffer->setBorrowedData(m_Lender, sizeof m_Lender);
        change(*m_Buffer);
        EXPECT_NE(data(), m_Lender);
        EXPECT_EQ(m_Buffer->getSize(), 16U);
        EXPECT_FALSE(std::equal(data(), data() + 16, m_Lender));
        EXPECT_EQ(m_Buffer->getUint8(0), 1U);
        EXPECT_EQ(m_Lender[1], 2U);
    }
}

TEST_F(BorrowedBufferTest, ChangesOfSize) {
    m_Buffer->setSize(18);
    EXPECT_EQ(m_Buffer->getUint8(15), 16U);
    EXPECT_EQ(m_Buffer->getUint16(16), 0U);
    m_Buffer->setBorrowedData(m_Lender, 8);
    EXPECT_EQ(m_Buffer->addUint16(0x1234), 8U);
    EXPECT_EQ(m_Buffer->getSize(), 10U);
    EXPECT_EQ(m_Buffer->getUint16(6), 0x0708U);
    m_Buffer->setBorrowedData(m_Lender, 8);
    EXPECT_EQ(m_Buffer->addUint32(0x12345678), 8U);
    m_Buffer->setBorrowedData(m_Lender, 8);
    EXPECT_EQ(m_Buffer->addUint64(1), 8U);
    m_Buffer->setBorrowedData(m_Lender, 8);
    m_Buffer->reserve(100);
    EXPECT_EQ(m_Buffer->getSize(), 8U);
    EXPECT_EQ(m_Buffer->getUint8(7), 8U);
    m_Buffer->setSize(4);
    EXPECT_EQ(m_Buffer->getUint32(0), 0x01020304U);
}

TEST_F(BorrowedBufferTest, LoanInPlaceOfWhatWasThere) {
    m_Buffer->setSize(100);
    m_Buffer->setBorrowedData(m_Lender + 4, 2);
    EXPECT_EQ(m_Buffer->getSize(), 2U);
    EXPECT_EQ(m_Buffer->getUint16(0), 0x0506U);
    m_Buffer->setBorrowedData(nullptr, 0);
    EXPECT_EQ(m_Buffer->getSize(), 0U);
    m_Buffer->setSize(4);
    EXPECT_EQ(m_Buffer->getUint32(0), 0U);
}

TEST_F(BorrowedBufferDeathTest, Bounds) {
    uint8_t read[16];
    EXPECT_FAULT(m_Buffer->getUint8(16), header, "index < m_Used");
    EXPECT_FAULT(m_Buffer->getUint16(16), header, "offset + 2 <= m_Contents.getSize()");
    EXPECT_FAULT(m_Buffer->getUnalignedUint32(13), header, "offset + 4 <= m_Contents.getSize()");
    EXPECT_FAULT(m_Buffer->setUint64(16, 0), header, "offset + 8 <= m_Contents.getSize()");
    EXPECT_FAULT(m_Buffer->readBytes(8, read, 9), "elfext/src/buffer",
                 "offset + count <= m_Contents.getSize()");
}

} // namespace
} // namespace elfext::test
