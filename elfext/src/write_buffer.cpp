#include "elfext/src/write_buffer.h"

#include "platform/interface/internal_check.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace elfext::lowlevel {
namespace {

// A growing image. All bytes behind the used ones are zero.
struct Image {
    std::unique_ptr<uint8_t[]> bytes;
    uint64_t room = 0;
    uint64_t used = 0;

    bool grow(uint64_t size) {
        if (size <= room && bytes != nullptr) {
            return true;
        }
        const uint64_t wanted = std::max({size, room + room / 2, uint64_t{1}});
        if (wanted > SIZE_MAX / 2) {
            return false;
        }
        std::unique_ptr<uint8_t[]> larger(new (std::nothrow)
                                              uint8_t[static_cast<size_t>(wanted)]());
        if (larger == nullptr) {
            return false;
        }
        if (used != 0) {
            std::memcpy(larger.get(), bytes.get(), static_cast<size_t>(used));
        }
        bytes = std::move(larger);
        room = wanted;
        return true;
    }
};

Image* elfg_writebuffer = nullptr;

void checkOpen() {
    TOMEX_CHECK_TEXT(elfg_writebuffer != nullptr, "elfg_writebuffer != NULL");
}

} // namespace

bool openWriteBuffer(uint64_t size) {
    TOMEX_CHECK_TEXT(elfg_writebuffer == nullptr, "elfg_writebuffer == NULL");
    std::unique_ptr<Image> image(new (std::nothrow) Image);
    if (image == nullptr || !image->grow(size)) {
        return false;
    }
    elfg_writebuffer = image.release();
    return true;
}

uint8_t* writePlace(uint64_t offset, uint64_t count) {
    checkOpen();
    if (offset > UINT64_MAX - count || !elfg_writebuffer->grow(offset + count)) {
        return nullptr;
    }
    elfg_writebuffer->used = std::max(elfg_writebuffer->used, offset + count);
    return elfg_writebuffer->bytes.get() + offset;
}

std::unique_ptr<uint8_t[]> takeWriteBuffer(uint64_t& size) {
    checkOpen();
    size = elfg_writebuffer->used;
    std::unique_ptr<uint8_t[]> bytes = std::move(elfg_writebuffer->bytes);
    dropWriteBuffer();
    return bytes;
}

void dropWriteBuffer() {
    checkOpen();
    delete elfg_writebuffer;
    elfg_writebuffer = nullptr;
}

} // namespace elfext::lowlevel
