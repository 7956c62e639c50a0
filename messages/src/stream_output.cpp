#include "messages/src/stream_output.h"

#include "messages/src/message_state.h"

#include <cerrno>

namespace messages {

void noteLost(const std::FILE* stream, int error) {
    MessageState& state = messageState();
    state.outputLost = true;
    if ((stream == stdout || stream == state.savedOut) && state.standardOutputError == 0) {
        state.standardOutputError = error;
    }
}

std::FILE* outputStream() {
    std::FILE* stream = messageState().stream;
    return stream != nullptr ? stream : stderr;
}

void beginOutput(std::FILE* stream) {
    if (stream != stdout) {
        flushStream(stdout);
    }
}

void endOutput(std::FILE* stream) {
    if (stream != stdout || messageState().standardOutputIsTerminal) {
        flushStream(stream);
    }
}

int64_t writeBytes(std::FILE* stream, const char* bytes, uint64_t length) {
    if (length == 0) {
        return 0;
    }
    errno = 0;
    if (std::fwrite(bytes, 1, length, stream) != length) {
        noteLost(stream, errno);
        return -1;
    }
    return static_cast<int64_t>(length);
}

void flushStream(std::FILE* stream) {
    errno = 0;
    if (stream != nullptr && std::fflush(stream) != 0) {
        noteLost(stream, errno);
    }
}

void closeStream(std::FILE* stream) {
    if (std::fclose(stream) != 0) {
        messageState().outputLost = true;
    }
}

} // namespace messages
