#include "messages/interface/stream_switch.h"

#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"

namespace messages {

namespace {

void changeStream(std::FILE* stream) {
    std::FILE*& current = messageState().stream;
    if (current != stream) {
        flushStream(current);
        current = stream;
    }
}

std::FILE* openOr(std::FILE* stream, std::FILE* standard) {
    return stream != nullptr ? stream : standard;
}

} // namespace

std::FILE* currentStream() {
    return outputStream();
}

StreamSwitch::StreamSwitch(std::FILE* stream) : m_Previous(messageState().stream) {
    changeStream(stream);
}

StreamSwitch::~StreamSwitch() {
    flushStream(messageState().stream);
    messageState().stream = m_Previous;
}

SavedOutSwitch::SavedOutSwitch() : StreamSwitch(openOr(messageState().savedOut, stdout)) {
}

SavedErrSwitch::SavedErrSwitch() : StreamSwitch(openOr(messageState().savedErr, stderr)) {
}

} // namespace messages
