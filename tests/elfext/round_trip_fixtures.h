// Reads files, writes them again, and compares what was read with what is read then.
#pragma once

#include "elfext/interface/elf_object_module_writer.h"
#include "tests/elfext/module_comparison.h"
#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {

inline bool readBytes(const std::string& bytes, ObjectModule& module, RecordingHandler& handler) {
    module.setErrorHandler(&handler);
    return readElfBuffer(testFileName, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(),
                         &module, nullptr);
}

// The bytes of a module; nothing if it cannot be written.
inline std::string writtenBytes(ObjectModule& module) {
    std::unique_ptr<uint8_t[]> image;
    uint64_t size = 0;
    if (!writeElfBuffer(&module, &image, &size)) {
        return "";
    }
    return {reinterpret_cast<const char*>(image.get()), static_cast<size_t>(size)};
}

struct RoundTrip {
    std::string bytes;      // the rewritten file
    std::string difference; // "" if nothing has changed
};

// Everything in between is gone afterwards. Expects no report on the way.
inline RoundTrip roundTrip(const std::string& bytes) {
    RoundTrip result;
    RecordingHandler handler(true);
    ObjectModule before;
    {
        ObjectModule written;
        if (!readBytes(bytes, written, handler)) {
            result.difference = "cannot be read";
            return result;
        }
        result.bytes = writtenBytes(written);
    }
    ObjectModule after;
    if (result.bytes.empty()) {
        result.difference = "cannot be written";
    } else if (!readBytes(bytes, before, handler) || !readBytes(result.bytes, after, handler)) {
        result.difference = "cannot be read again";
    } else {
        result.difference = differenceBetween(before, after);
    }
    if (result.difference.empty() && !handler.m_Reports.empty()) {
        result.difference = "reported: " + handler.m_Reports.front().message;
    }
    return result;
}

} // namespace elfext::test
