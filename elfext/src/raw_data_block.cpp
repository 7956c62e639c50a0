// The bytes of a raw data block. They are made when something else than zeros is to be in them.
#include "elfext/interface/raw_data_block.h"

#include "elfext/interface/object_module.h"

#include <algorithm>
#include <cstring>

namespace elfext {

namespace {

// How many bytes are looked at at a time.
constexpr uint64_t chunkSize = 4096;

} // namespace

RawDataBlock::RawDataBlock(ObjectModule* objectModule, uint64_t size)
    : FileRegion(objectModule->getContainerRegion()), m_ObjectModule(objectModule), m_Size(size),
      m_Contents(objectModule->getContainerRegion(), objectModule) {
}

Buffer& RawDataBlock::getContents() {
    if (m_Contents.getSize() != m_Size) {
        m_Contents.setSize(m_Size);
    }
    return m_Contents;
}

void RawDataBlock::borrowContents(const uint8_t* bytes) {
    m_Contents.setBorrowedData(bytes, m_Size);
}

bool RawDataBlock::isZero(uint64_t offset, uint64_t count) const {
    uint8_t chunk[chunkSize];
    for (uint64_t done = 0; done < count; done += chunkSize) {
        const uint64_t length = std::min(chunkSize, count - done);
        read(offset + done, chunk, length);
        if (std::any_of(chunk, chunk + length, [](uint8_t byte) { return byte != 0; })) {
            return false;
        }
    }
    return true;
}

bool RawDataBlock::getFileRange(uint64_t* offset, uint64_t* size) const {
    *offset = m_FileOffset;
    *size = m_Size;
    return m_FileOffsetKnown;
}

void RawDataBlock::getFileConstraints(uint64_t* congruence, uint64_t* alignment) const {
    *congruence = 0;
    *alignment = 1;
}

void RawDataBlock::setFileOffset(uint64_t offset) {
    m_FileOffset = offset;
    m_FileOffsetKnown = true;
}

void RawDataBlock::setAlignment(uint64_t /*alignment*/) {
}

DataStructure* RawDataBlock::createDataStructure(alloclib::Region* /*region*/,
                                                 uint64_t /*offset*/) {
    TOMEX_CHECK_TEXT(false, "!\"We shouldn't be here\"");
    return nullptr;
}

void RawDataBlock::read(uint64_t offset, void* buffer, uint64_t count) const {
    if (m_Contents.getSize() == m_Size) {
        m_Contents.readBytes(offset, buffer, count);
        return;
    }
    TOMEX_CHECK_TEXT(buffer != nullptr, "buffer != NULL");
    TOMEX_CHECK(offset <= m_Size);
    TOMEX_CHECK(count <= m_Size - offset);
    std::memset(buffer, 0, static_cast<size_t>(count));
}

void RawDataBlock::write(uint64_t offset, const void* buffer, uint64_t count) {
    getContents().writeBytes(offset, buffer, count);
    m_ObjectModule->markChanged();
}

} // namespace elfext
