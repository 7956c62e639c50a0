#include "platform/interface/mapped_stretch.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <iterator>

#include <sys/mman.h>
#include <unistd.h>

namespace platform {

// What the handler of a failed look knows of one mapping. The handler runs in the thread that
// looked, so it finds the numbers of its own mappings whole.
struct Guard {
    std::atomic<bool> isTaken = false;
    std::atomic<pid_t> thread = 0;
    std::atomic<uint8_t*> begin = nullptr; // whole pages
    std::atomic<uint8_t*> end = nullptr;   // equal to begin if nothing is mapped
    std::atomic<bool> hasLostBytes = false;
};

namespace {

constexpr size_t guardCount = 64;
std::array<Guard, guardCount> guards; // NOLINT: signal handlers can reach nothing else

struct sigaction actionBefore; // NOLINT: as above

size_t pageSize() {
    static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// Puts zeros in the place of what is left of the mapping. Only calls that a handler may make.
bool putZeros(Guard& guard, const uint8_t* address) {
    uint8_t* const begin = guard.begin.load();
    uint8_t* const end = guard.end.load();
    if (guard.thread.load() != gettid() || address < begin || address >= end) {
        return false;
    }
    const auto distance = static_cast<size_t>(address - begin);
    uint8_t* const page = begin + (distance - distance % pageSize());
    guard.hasLostBytes.store(true);
    return mmap(page, static_cast<size_t>(end - page), PROT_READ,
                MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
}

// What would have become of a signal without the handler below.
void handOn(int signal, siginfo_t* info, void* context) {
    const bool hasInfo = (actionBefore.sa_flags & SA_SIGINFO) != 0;
    if (hasInfo) {
        actionBefore.sa_sigaction(signal, info, context);
    } else if (actionBefore.sa_handler == SIG_DFL ||
               (actionBefore.sa_handler == SIG_IGN && info->si_code > 0)) {
        // A look is made again after the return and ends the process; a signal that somebody sent
        // is sent again.
        std::signal(signal, SIG_DFL);
        if (info->si_code <= 0) {
            std::raise(signal);
        }
    } else if (actionBefore.sa_handler != SIG_IGN) {
        actionBefore.sa_handler(signal);
    }
}

// The look is made again after the return.
void onLostBytes(int signal, siginfo_t* info, void* context) {
    const int error = errno;
    const auto* const address = static_cast<const uint8_t*>(info->si_addr);
    const bool isOurs = std::any_of(guards.begin(), guards.end(),
                                    [address](Guard& guard) { return putZeros(guard, address); });
    if (!isOurs) {
        handOn(signal, info, context);
    }
    errno = error;
}

bool installHandler() {
    pageSize();
    struct sigaction action = {};
    action.sa_sigaction = onLostBytes;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    return sigaction(SIGBUS, &action, &actionBefore) == 0;
}

// To this thread.
bool letThrough() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGBUS);
    return pthread_sigmask(SIG_UNBLOCK, &signals, nullptr) == 0;
}

Guard* takeGuard() {
    static const bool isInstalled = installHandler();
    if (!isInstalled || !letThrough()) {
        return nullptr;
    }
    const auto free = std::find_if(guards.begin(), guards.end(),
                                   [](Guard& guard) { return !guard.isTaken.exchange(true); });
    return free != guards.end() ? std::to_address(free) : nullptr;
}

} // namespace

MappedStretch::~MappedStretch() {
    unmap();
    if (m_Guard != nullptr) {
        m_Guard->isTaken.store(false);
    }
}

void MappedStretch::unmap() {
    if (m_Bytes == nullptr) {
        return;
    }
    uint8_t* const begin = m_Guard->begin.load();
    uint8_t* const end = m_Guard->end.load();
    m_Guard->end.store(begin);
    munmap(begin, static_cast<size_t>(end - begin));
    m_Bytes = nullptr;
}

bool MappedStretch::map(const InputFile& file, uint64_t offset, size_t size) {
    unmap();
    if (m_Guard == nullptr) {
        m_Guard = takeGuard();
    }
    if (m_Guard == nullptr) {
        errno = ENOMEM;
        return false;
    }
    const uint64_t lead = offset % pageSize();
    const uint64_t pages = (lead + size + pageSize() - 1) / pageSize();
    if (pages > SIZE_MAX / pageSize()) {
        errno = ENOMEM;
        return false;
    }
    const auto room = static_cast<size_t>(pages * pageSize());
    errno = 0;
    void* const place = mmap(nullptr, room, PROT_READ, MAP_PRIVATE, file.descriptor(),
                             static_cast<off_t>(offset - lead));
    if (place == MAP_FAILED) {
        return false;
    }
    auto* const begin = static_cast<uint8_t*>(place);
    m_Guard->hasLostBytes.store(false);
    m_Guard->thread.store(gettid());
    m_Guard->begin.store(begin);
    m_Guard->end.store(begin + room);
    m_Bytes = begin + lead;
    return true;
}

bool MappedStretch::hasLostBytes() const {
    return m_Guard != nullptr && m_Guard->hasLostBytes.load();
}

} // namespace platform
