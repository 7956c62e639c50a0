// The lowest layer of writing: the image of the file that is being written.
//
// The state is the process's own, and there is one: between `openWriteBuffer` and
// `takeWriteBuffer` or `dropWriteBuffer` there is one image, which grows as bytes are put into it.
// Writes do not nest.
#pragma once

#include <cstdint>
#include <memory>

namespace elfext::lowlevel {

// Starts an image with room for `size` bytes. False if there is not that much memory; then nothing
// is open.
bool openWriteBuffer(uint64_t size);

// The place for `count` bytes at `offset`, which are zero unless they have been written before; it
// is good until the next call. Null if memory has run out. What lies between the bytes written
// is zero.
uint8_t* writePlace(uint64_t offset, uint64_t count);

// Ends the write and hands the image over: `size` bytes, up to the last place that was asked for.
std::unique_ptr<uint8_t[]> takeWriteBuffer(uint64_t& size);
// Ends the write without a result.
void dropWriteBuffer();

} // namespace elfext::lowlevel

namespace elfext {

// A write from opening to its end.
class OpenOutput {
public:
    explicit OpenOutput(uint64_t size) : m_IsOpen(lowlevel::openWriteBuffer(size)) {}
    OpenOutput(const OpenOutput&) = delete;
    OpenOutput& operator=(const OpenOutput&) = delete;
    ~OpenOutput() {
        if (m_IsOpen) {
            lowlevel::dropWriteBuffer();
        }
    }

    // False if there was no memory for it, and once the image has been taken.
    bool isOpen() const { return m_IsOpen; }
    std::unique_ptr<uint8_t[]> take(uint64_t& size) {
        m_IsOpen = false;
        return lowlevel::takeWriteBuffer(size);
    }

private:
    bool m_IsOpen;
};

} // namespace elfext
