#include "messages/interface/message_session.h"

#include "messages/interface/code_page.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "messages/src/emit.h"
#include "messages/src/message_state.h"
#include "messages/src/stream_output.h"
#include "platform/interface/internal_check.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace messages {

namespace {

constexpr int firstFreeDescriptor = 3;

void exitOnErrorLimit() {
    leaveProgram(EXIT_FAILURE);
}

void flushCurrentStream() {
    flushStream(outputStream());
}

constexpr platform::CheckOutput faultOutput{emitFaultPrefix, printTextArguments,
                                            flushCurrentStream};

// A process may be started with a standard stream closed. The next file opened would then get its
// number, and messages would be written into an archive. A stand-in that fails every write keeps
// the number, and the failure shows in the end as lost output.
void reserveStandardStreams() {
    for (int descriptor = 0; descriptor < firstFreeDescriptor; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            const int mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
            if (::open("/dev/null", mode) != descriptor) {
                return;
            }
        }
    }
}

// Listings are written in large pieces, messages a line at a time. Buffers can only be set before
// a stream's first use, so this is done once a process.
void setBuffers() {
    static bool done = false;
    static char outBuffer[size_t{256} << 10];
    static char errBuffer[4096];
    messageState().standardOutputIsTerminal = ::isatty(STDOUT_FILENO) == 1;
    if (done) {
        return;
    }
    done = true;
    if (!messageState().standardOutputIsTerminal) {
        std::setvbuf(stdout, outBuffer, _IOFBF, sizeof(outBuffer));
    }
    std::setvbuf(stderr, errBuffer, _IOLBF, sizeof(errBuffer));
}

// A second stream to the same place, which stays when the first is sent elsewhere. Null if there
// is none to be had.
std::FILE* duplicateStream(std::FILE* stream) {
    const int descriptor = ::fcntl(::fileno(stream), F_DUPFD_CLOEXEC, firstFreeDescriptor);
    if (descriptor == -1) {
        return nullptr;
    }
    std::FILE* duplicate = ::fdopen(descriptor, "w");
    if (duplicate == nullptr) {
        ::close(descriptor);
    }
    return duplicate;
}

void forget(std::FILE* stream) {
    MessageState& state = messageState();
    for (std::FILE** holder : {&state.stream, &state.savedOut, &state.savedErr}) {
        if (*holder == stream) {
            *holder = nullptr;
        }
    }
}

void releaseStream(std::FILE* stream) {
    if (stream == nullptr) {
        return;
    }
    flushStream(stream);
    if (stream != stdout && stream != stderr) {
        forget(stream);
        closeStream(stream);
    }
}

void resetDiagnostics() {
    MessageState& state = messageState();
    state.column = 0;
    state.style = 0;
    for (uint32_t i = 0; i < severityCount; ++i) {
        state.severityMap[i] = static_cast<int32_t>(i);
    }
    if (state.numberSeverityDirty) {
        state.numberSeverity->fill(0);
        state.numberSeverityDirty = false;
    }
    state.errorLimit = defaultErrorLimit;
    state.toolLetter = 'L';
    state.limitHandler = exitOnErrorLimit;
    state.toolName = "tomex";
    state.counts.fill(0);
    state.outputLost = false;
    state.standardOutputError = 0;
}

// The standard output carries what the user asked for, and nobody looks at a status alone.
void reportLostOutput() {
    MessageState& state = messageState();
    const int error = std::exchange(state.standardOutputError, 0);
    if (error != 0 && error != EPIPE) {
        state.stream = stderr;
        libReport(Severity_Error, nullptr, MessageKey_WriteError, "stdout", std::strerror(error));
    }
}

} // namespace

void initMessages() {
    MessageState& state = messageState();
    releaseStream(state.savedOut);
    releaseStream(state.savedErr);
    reserveStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);
    std::fflush(stdout);
    std::fflush(stderr);
    setBuffers();
    state.savedOut = duplicateStream(stdout);
    state.savedErr = duplicateStream(stderr);
    state.stream = stderr;
    resetDiagnostics();
    setCurrentLocale(0);
    setOverlay(nullptr);
    initCodePages();
    platform::setCheckOutput(&faultOutput);
    platform::setCheckExit(leaveProgram);
}

void closeMessages() {
    const MessageState& state = messageState();
    releaseStream(state.stream);
    releaseStream(state.savedOut);
    releaseStream(state.savedErr);
    flushStream(stdout);
    flushStream(stderr);
}

void setExitHandler(void (*exitProgram)(int status)) {
    messageState().exitHandler = exitProgram;
    platform::setCheckExit(leaveProgram);
}

bool outputLost() {
    return messageState().outputLost || std::ferror(stdout) != 0 || std::ferror(stderr) != 0;
}

int finalStatus(int status) {
    if (!outputLost()) {
        return status;
    }
    reportLostOutput();
    return EXIT_FAILURE;
}

uint32_t countAtOrAbove(uint32_t severityFlags) {
    uint32_t sum = 0;
    const uint32_t first = severityFlags >> 16;
    for (uint32_t severity = first == 0 ? 1 : first; severity < severityCount; ++severity) {
        sum += messageState().counts[severity - 1];
    }
    return sum;
}

uint32_t errorCount() {
    return messageState().counts[(Severity_Error >> 16) - 1];
}

void setErrorLimit(uint32_t errorLimit, void (*limitHandler)()) {
    messageState().errorLimit = errorLimit;
    messageState().limitHandler = limitHandler != nullptr ? limitHandler : exitOnErrorLimit;
}

void setStyle(int32_t style) {
    messageState().style = style;
}

int32_t style() {
    return messageState().style;
}

uint32_t column() {
    return messageState().column;
}

char toolLetter() {
    return messageState().toolLetter;
}

const char* toolName() {
    return messageState().toolName;
}

} // namespace messages
