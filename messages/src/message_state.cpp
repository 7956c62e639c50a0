#include "messages/src/message_state.h"

#include "messages/interface/message_session.h"

#include <cstdlib>

namespace messages {

namespace {

constinit std::array<uint32_t, numberedSeverities> g_numberSeverity{};
constinit MessageState g_state{.numberSeverity = &g_numberSeverity};

} // namespace

MessageState& messageState() {
    return g_state;
}

void leaveProgram(int status) {
    if (g_state.exitHandler != nullptr) {
        g_state.exitHandler(status);
    }
    closeMessages();
    std::exit(finalStatus(status));
}

} // namespace messages
