// The contents of a section or of raw data: bytes, read and written in the file's byte order.
//
// A buffer holds its bytes itself, or it stands for bytes that are held elsewhere: then every read
// goes through a function that fetches them, and writing is forbidden. Or it borrows bytes in
// somebody else's memory: nobody can tell them from its own, as they are copied before the first
// change.
//
// The aligned accesses are for tables whose form is known to be good. For data whose alignment
// nothing promises there are unaligned reads. All of them are checked only by internal checks: a
// caller that reads what a file says must have compared offsets and sizes before.
#pragma once

#include "alloclib/interface/region.h"
#include "elfext/interface/byte_order.h"
#include "elfext/interface/fast_array.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <cstring>

namespace elfext {

// Copies up to `count` bytes from `offset` of the data behind `context` to `destination` and gives
// how many it copied, at least one.
using ExternalDataFunction = uint64_t (*)(void* context, uint64_t offset, void* destination,
                                          uint64_t count);

class Buffer {
public:
    // An empty buffer with its bytes in `region` and the byte order of `objectModule`; both must
    // outlive it.
    Buffer(alloclib::Region* region, const ByteOrderSource* objectModule)
        : m_Contents(region), m_ObjectModule(objectModule) {}
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    // From now on the contents are the `size` bytes that `function` fetches. A null function
    // makes the buffer hold its own bytes again.
    void setExternalData(ExternalDataFunction function, void* context, uint64_t size);
    bool isExternal() const { return m_ExternalDataFunction != nullptr; }

    // From now on the contents are the `size` bytes at `data`, which must stay as they are for as
    // long as the buffer refers to them. They are not copied before something is changed.
    void setBorrowedData(const uint8_t* data, uint64_t size);
    bool isBorrowed() const { return m_BorrowedData != nullptr; }

    // In bytes.
    uint64_t getSize() const {
        return m_ExternalDataFunction != nullptr ? m_ExternalDataSize : heldSize();
    }
    // New bytes are zero. For external data only the size is noted.
    void setSize(uint64_t size);
    // Makes room for `size` bytes in all.
    void reserve(uint64_t size);

    // The bytes themselves, good until the next change of size. Not for external data.
    uint8_t* getData() {
        TOMEX_CHECK(!m_ExternalDataFunction);
        ownData();
        return m_Contents.begin();
    }
    const uint8_t* getData() const {
        TOMEX_CHECK(!m_ExternalDataFunction);
        return heldData();
    }

    // Aligned reads: `offset` is a multiple of the width.
    uint8_t getUint8(uint64_t offset) const {
        if (m_ExternalDataFunction != nullptr) [[unlikely]] {
            return getExternal<uint8_t>(offset);
        }
        TOMEX_CHECK(offset <= UINT32_MAX);
        if (m_BorrowedData != nullptr) {
            TOMEX_CHECK_TEXT(offset < m_BorrowedSize, "index < m_Used");
            return m_BorrowedData[offset];
        }
        return m_Contents[static_cast<uint32_t>(offset)];
    }
    uint16_t getUint16(uint64_t offset) const {
        check16(offset);
        TOMEX_CHECK(offset % 2 == 0);
        return getAligned<uint16_t>(offset);
    }
    uint32_t getUint32(uint64_t offset) const {
        check32(offset);
        TOMEX_CHECK(offset % 4 == 0);
        return getAligned<uint32_t>(offset);
    }
    uint64_t getUint64(uint64_t offset) const {
        check64(offset);
        TOMEX_CHECK(offset % 8 == 0);
        return getAligned<uint64_t>(offset);
    }

    // Unaligned reads, at any offset.
    uint16_t getUnalignedUint16(uint64_t offset) const {
        check16(offset);
        return getUnaligned<uint16_t>(offset);
    }
    uint32_t getUnalignedUint32(uint64_t offset) const {
        check32(offset);
        return getUnaligned<uint32_t>(offset);
    }
    uint64_t getUnalignedUint64(uint64_t offset) const {
        check64(offset);
        return getUnaligned<uint64_t>(offset);
    }

    // Aligned writes inside the present size.
    void setUint8(uint64_t offset, uint8_t value) {
        TOMEX_CHECK(!m_ExternalDataFunction);
        TOMEX_CHECK(offset <= UINT32_MAX);
        ownData();
        m_Contents[static_cast<uint32_t>(offset)] = value;
    }
    void setUint16(uint64_t offset, uint16_t value) {
        TOMEX_CHECK(!m_ExternalDataFunction);
        check16(offset);
        TOMEX_CHECK(offset % 2 == 0);
        store(offset, value);
    }
    void setUint32(uint64_t offset, uint32_t value) {
        TOMEX_CHECK(!m_ExternalDataFunction);
        check32(offset);
        TOMEX_CHECK(offset % 4 == 0);
        store(offset, value);
    }
    void setUint64(uint64_t offset, uint64_t value) {
        TOMEX_CHECK(!m_ExternalDataFunction);
        check64(offset);
        TOMEX_CHECK(offset % 8 == 0);
        store(offset, value);
    }

    // Copies `count` bytes from `offset` on to `buffer`, or from `buffer`. It is not null.
    void readBytes(uint64_t offset, void* buffer, uint64_t count) const;
    void writeBytes(uint64_t offset, const void* buffer, uint64_t count);

    // Appends a value, before which the size must be a multiple of its width. Gives the value's
    // offset.
    uint64_t addUint16(uint16_t value);
    uint64_t addUint32(uint32_t value);
    uint64_t addUint64(uint64_t value);

private:
    // The bounds of a read or write of two, four or eight bytes that the buffer itself holds.
    // External data are checked where they are fetched.
    void check16(uint64_t offset) const {
        if (m_ExternalDataFunction == nullptr) [[likely]] {
            TOMEX_CHECK(offset <= UINT32_MAX);
            TOMEX_CHECK_TEXT(offset + 2 <= heldSize(), "offset + 2 <= m_Contents.getSize()");
        }
    }
    void check32(uint64_t offset) const {
        if (m_ExternalDataFunction == nullptr) [[likely]] {
            TOMEX_CHECK(offset <= UINT32_MAX);
            TOMEX_CHECK_TEXT(offset + 4 <= heldSize(), "offset + 4 <= m_Contents.getSize()");
        }
    }
    void check64(uint64_t offset) const {
        if (m_ExternalDataFunction == nullptr) [[likely]] {
            TOMEX_CHECK(offset <= UINT32_MAX);
            TOMEX_CHECK_TEXT(offset + 8 <= heldSize(), "offset + 8 <= m_Contents.getSize()");
        }
    }

    bool isLittleEndian() const { return m_ObjectModule->isLittleEndian(); }

    // The bytes that are not external, wherever they are, and how many there are.
    const uint8_t* heldData() const {
        return m_BorrowedData != nullptr ? m_BorrowedData : m_Contents.begin();
    }
    uint64_t heldSize() const {
        return m_BorrowedData != nullptr ? m_BorrowedSize : m_Contents.getSize();
    }
    // Makes borrowed bytes the buffer's own.
    void ownData() {
        if (m_BorrowedData != nullptr) [[unlikely]] {
            copyBorrowedData();
        }
    }
    void copyBorrowedData();

    template <typename Integer>
    Integer getAligned(uint64_t offset) const {
        if (m_ExternalDataFunction != nullptr) [[unlikely]] {
            return getExternal<Integer>(offset);
        }
        Integer value = 0;
        std::memcpy(&value, heldData() + offset, sizeof value);
        return convertByteOrder(value, isLittleEndian());
    }

    template <typename Integer>
    Integer getUnaligned(uint64_t offset) const {
        if (m_ExternalDataFunction != nullptr) [[unlikely]] {
            return getExternal<Integer>(offset);
        }
        return assembleBytes<Integer>(heldData() + offset, isLittleEndian());
    }

    template <typename Integer>
    Integer getExternal(uint64_t offset) const {
        uint8_t bytes[sizeof(Integer)];
        readExternal(offset, bytes, sizeof bytes);
        return assembleBytes<Integer>(bytes, isLittleEndian());
    }

    template <typename Integer>
    void store(uint64_t offset, Integer value) {
        ownData();
        const Integer stored = convertByteOrder(value, isLittleEndian());
        std::memcpy(m_Contents.begin() + offset, &stored, sizeof stored);
    }

    template <typename Integer>
    uint64_t append(Integer value);

    void checkBytes(uint64_t offset, uint64_t count) const;
    void readExternal(uint64_t offset, uint8_t* destination, uint64_t count) const;

    fast_array<uint8_t> m_Contents;
    const ByteOrderSource* m_ObjectModule;
    ExternalDataFunction m_ExternalDataFunction = nullptr;
    void* m_ExternalDataContext = nullptr;
    uint64_t m_ExternalDataSize = 0;
    const uint8_t* m_BorrowedData = nullptr; // null if nothing is borrowed
    uint64_t m_BorrowedSize = 0;
};

} // namespace elfext
