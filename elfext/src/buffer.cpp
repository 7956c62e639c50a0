// Size, byte-wise access, and external and borrowed data of buffers.
#include "elfext/interface/buffer.h"

#include "alloclib/interface/alloclib.h"

#include <algorithm>

namespace elfext {

namespace {

// The size as an array counts it. What does not fit ends the process also with checks switched
// off: a cut size would make later writes run over.
uint32_t arraySize(uint64_t size) {
    TOMEX_CHECK(size <= UINT32_MAX);
    if (size > UINT32_MAX) {
        alloclib::endOutOfMemory(size);
    }
    return static_cast<uint32_t>(size);
}

} // namespace

void Buffer::setExternalData(ExternalDataFunction function, void* context, uint64_t size) {
    m_BorrowedData = nullptr;
    m_BorrowedSize = 0;
    m_ExternalDataFunction = function;
    m_ExternalDataContext = context;
    m_ExternalDataSize = size;
}

void Buffer::setBorrowedData(const uint8_t* data, uint64_t size) {
    TOMEX_CHECK_TEXT(data != nullptr || size == 0, "data != NULL || size == 0");
    m_ExternalDataFunction = nullptr;
    m_Contents.clear();
    m_BorrowedData = size != 0 ? data : nullptr;
    m_BorrowedSize = size;
}

void Buffer::copyBorrowedData() {
    const uint8_t* const data = m_BorrowedData;
    const uint32_t size = arraySize(m_BorrowedSize);
    m_BorrowedData = nullptr;
    m_BorrowedSize = 0;
    m_Contents.setSize(size);
    std::memcpy(m_Contents.begin(), data, size);
}

void Buffer::setSize(uint64_t size) {
    if (m_ExternalDataFunction != nullptr) {
        m_ExternalDataSize = size;
        return;
    }
    ownData();
    m_Contents.setSize(arraySize(size));
}

void Buffer::reserve(uint64_t size) {
    ownData();
    m_Contents.reserve(arraySize(size));
}

// The names in these conditions appear in the fault's text.
void Buffer::checkBytes(uint64_t offset, uint64_t count) const {
    TOMEX_CHECK(offset <= UINT32_MAX);
    TOMEX_CHECK(count <= UINT32_MAX);
    TOMEX_CHECK_TEXT(offset <= heldSize(), "offset <= m_Contents.getSize()");
    TOMEX_CHECK_TEXT(count <= heldSize(), "count <= m_Contents.getSize()");
    TOMEX_CHECK(offset + count >= offset);
    TOMEX_CHECK(offset + count >= count);
    TOMEX_CHECK_TEXT(offset + count <= heldSize(), "offset + count <= m_Contents.getSize()");
}

void Buffer::readBytes(uint64_t offset, void* buffer, uint64_t count) const {
    TOMEX_CHECK_TEXT(buffer != nullptr, "buffer != NULL");
    if (m_ExternalDataFunction != nullptr) {
        readExternal(offset, static_cast<uint8_t*>(buffer), count);
        return;
    }
    checkBytes(offset, count);
    std::memcpy(buffer, heldData() + offset, static_cast<size_t>(count));
}

void Buffer::writeBytes(uint64_t offset, const void* buffer, uint64_t count) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    TOMEX_CHECK_TEXT(buffer != nullptr, "buffer != NULL");
    checkBytes(offset, count);
    ownData();
    std::memcpy(m_Contents.begin() + offset, buffer, static_cast<size_t>(count));
}

void Buffer::readExternal(uint64_t offset, uint8_t* destination, uint64_t count) const {
    TOMEX_CHECK(count <= m_ExternalDataSize);
    TOMEX_CHECK(offset + count >= offset);
    TOMEX_CHECK(offset + count <= m_ExternalDataSize);
    while (count > 0) {
        const uint64_t ret =
            m_ExternalDataFunction(m_ExternalDataContext, offset, destination, count);
        TOMEX_CHECK(ret > 0);
        if (ret == 0) {
            // Checks are off; a source that gives nothing more must not hang the tool.
            std::fill_n(destination, count, uint8_t{0});
            return;
        }
        const uint64_t copied = std::min(ret, count);
        offset += copied;
        destination += copied;
        count -= copied;
    }
}

template <typename Integer>
uint64_t Buffer::append(Integer value) {
    const uint64_t offset = heldSize();
    setSize(offset + sizeof(Integer));
    store(offset, value);
    return offset;
}

uint64_t Buffer::addUint16(uint16_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    ownData();
    TOMEX_CHECK_TEXT(heldSize() % 2 == 0, "m_Contents.getSize() % 2 == 0");
    return append(value);
}

uint64_t Buffer::addUint32(uint32_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    ownData();
    TOMEX_CHECK_TEXT(heldSize() % 4 == 0, "m_Contents.getSize() % 4 == 0");
    return append(value);
}

uint64_t Buffer::addUint64(uint64_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    ownData();
    TOMEX_CHECK_TEXT(heldSize() % 8 == 0, "m_Contents.getSize() % 8 == 0");
    return append(value);
}

} // namespace elfext
