// Size, byte-wise access and external data of buffers.
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
    m_ExternalDataFunction = function;
    m_ExternalDataContext = context;
    m_ExternalDataSize = size;
}

void Buffer::setSize(uint64_t size) {
    if (m_ExternalDataFunction != nullptr) {
        m_ExternalDataSize = size;
        return;
    }
    m_Contents.setSize(arraySize(size));
}

void Buffer::reserve(uint64_t size) {
    m_Contents.reserve(arraySize(size));
}

// The names in these conditions appear in the fault's text.
void Buffer::checkBytes(uint64_t offset, uint64_t count) const {
    TOMEX_CHECK(offset <= UINT32_MAX);
    TOMEX_CHECK(count <= UINT32_MAX);
    TOMEX_CHECK(offset <= m_Contents.getSize());
    TOMEX_CHECK(count <= m_Contents.getSize());
    TOMEX_CHECK(offset + count >= offset);
    TOMEX_CHECK(offset + count >= count);
    TOMEX_CHECK(offset + count <= m_Contents.getSize());
}

void Buffer::readBytes(uint64_t offset, void* buffer, uint64_t count) const {
    TOMEX_CHECK_TEXT(buffer != nullptr, "buffer != NULL");
    if (m_ExternalDataFunction != nullptr) {
        readExternal(offset, static_cast<uint8_t*>(buffer), count);
        return;
    }
    checkBytes(offset, count);
    std::memcpy(buffer, m_Contents.begin() + offset, static_cast<size_t>(count));
}

void Buffer::writeBytes(uint64_t offset, const void* buffer, uint64_t count) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    TOMEX_CHECK_TEXT(buffer != nullptr, "buffer != NULL");
    checkBytes(offset, count);
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
    const uint64_t offset = m_Contents.getSize();
    setSize(offset + sizeof(Integer));
    store(offset, value);
    return offset;
}

uint64_t Buffer::addUint16(uint16_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    TOMEX_CHECK(m_Contents.getSize() % 2 == 0);
    return append(value);
}

uint64_t Buffer::addUint32(uint32_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    TOMEX_CHECK(m_Contents.getSize() % 4 == 0);
    return append(value);
}

uint64_t Buffer::addUint64(uint64_t value) {
    TOMEX_CHECK(!m_ExternalDataFunction);
    TOMEX_CHECK(m_Contents.getSize() % 8 == 0);
    return append(value);
}

} // namespace elfext
