// A process of its own for work that may not come back.
//
// Some code cannot be trusted with every input: it ends the process that calls it, runs in circles
// or takes all memory there is. A worker is a copy of this process that does nothing but such work:
// it gets requests, one after another, and sends an answer to each. When it dies of one, the caller
// is told what it said last, and the next request gets a new worker.
//
// The worker starts at the first request and sees the caller's memory as it was then. It ends when
// its owner or the whole process goes. What it writes to the standard streams is not shown.
//
// On the wire between the two: four numbers (the sizes of the request's two parts, the limits), the
// two parts; and back the answer's size and the answer. Numbers are as in memory, since both ends
// are the same program.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace platform {

// What one request may use. The host may be unable to enforce a limit on memory.
struct WorkLimits {
    uint64_t memory = 0;  // bytes beside what the worker has when the work begins
    uint32_t seconds = 0; // of the processor
};

struct WorkAnswer {
    // The work came to its end, and `text` is its answer.
    bool isWhole = false;
    // Otherwise the last line that the worker wrote to the standard error stream, or else the
    // host's text for what ended it or kept it from starting.
    std::string text;
};

class WorkerProcess {
public:
    // Runs in the worker. The parts live for the length of the call.
    using Work = std::string (*)(std::string_view head, std::string_view body);

    explicit WorkerProcess(Work work) : m_Work(work) {}
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;
    ~WorkerProcess() { stop(); }

    // Has the worker do the work on a request of two parts, and waits for it. The outcome depends
    // on the request alone: if a worker dies that has served before, a new one tries once more, as
    // the cause may lie in what came before.
    WorkAnswer ask(std::string_view head, std::string_view body, const WorkLimits& limits);

private:
    bool isRunning() const { return m_Process > 0; }
    bool start();
    WorkAnswer askOnce(std::string_view head, std::string_view body, const WorkLimits& limits);
    bool receiveAnswer(std::string& answer);
    void takeWords();
    void stop();
    std::string bury();

    Work m_Work;
    pid_t m_Process = 0;
    int m_Socket = -1;    // requests and answers
    int m_Words = -1;     // what the worker writes to the standard streams; does not block
    std::string m_Spoken; // its last part
};

} // namespace platform
