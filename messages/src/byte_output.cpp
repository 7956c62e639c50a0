#include "messages/interface/byte_output.h"

#include <cstdio>

#include <unistd.h>

#include "messages/src/stream_output.h"

namespace messages {

bool printBytesToStandardOutput(const void* bytes, size_t count) {
    beginOutput(stdout);
    const bool isWritten = writeBytes(stdout, static_cast<const char*>(bytes), count) >= 0;
    endOutput(stdout);
    return isWritten;
}

int duplicateStandardOutput() {
    flushStream(stdout);
    return ::dup(STDOUT_FILENO);
}

void noteLostOutput(int error) {
    noteLost(stdout, error);
}

} // namespace messages
