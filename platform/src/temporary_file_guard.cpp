#include "platform/interface/temporary_file_guard.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace platform {
namespace {

constexpr int stoppingSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Read by the signal handler; written only while the stopping signals are held back.
const char* volatile guardedName = nullptr;

void removeAndDie(int signalNumber) {
    if (guardedName != nullptr) {
        ::unlink(guardedName);
    }
    // The handler was installed with SA_RESETHAND: this time the signal takes its usual course,
    // so that the parent sees what ended the process.
    ::raise(signalNumber);
}

} // namespace

void installTemporaryFileCleanup() {
    // A file that reaches the user's size limit is a failed write like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signalNumber : stoppingSignals) {
        struct sigaction present = {};
        ::sigaction(signalNumber, nullptr, &present);
        if (present.sa_handler == SIG_IGN) {
            continue;
        }
        struct sigaction action = {};
        action.sa_handler = removeAndDie;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigemptyset(&action.sa_mask);
        ::sigaction(signalNumber, &action, nullptr);
    }
}

StoppingSignalsHeld::StoppingSignalsHeld() {
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signalNumber : stoppingSignals) {
        ::sigaddset(&held, signalNumber);
    }
    ::sigprocmask(SIG_BLOCK, &held, &m_Before);
}

StoppingSignalsHeld::~StoppingSignalsHeld() {
    ::sigprocmask(SIG_SETMASK, &m_Before, nullptr);
}

int createGuardedFile(const char* name, mode_t permissions) {
    const StoppingSignalsHeld held;
    errno = 0;
    const int descriptor = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
    const int error = errno;
    if (descriptor >= 0) {
        guardedName = name;
    }
    errno = error;
    return descriptor;
}

bool renameGuardedFile(const char* finalName) {
    const StoppingSignalsHeld held;
    errno = 0;
    if (std::rename(guardedName, finalName) != 0) {
        return false;
    }
    guardedName = nullptr;
    return true;
}

bool removeGuardedFile() {
    const StoppingSignalsHeld held;
    const char* name = guardedName;
    guardedName = nullptr;
    errno = 0;
    return name == nullptr || ::unlink(name) == 0;
}

void releaseGuardedFile() {
    const StoppingSignalsHeld held;
    guardedName = nullptr;
}

} // namespace platform
