// Where texts go: the current stream, and a way to change it for a while.
//
// Messages go to standard error. Whoever prints something that the user asked for (help, banner)
// holds a `StreamSwitch` for that time. Streams are flushed at each change, so that what is
// printed appears in the order in which it was printed, also if all goes to one place.
#pragma once

#include <cstdio>

namespace messages {

// The stream that texts go to now; standard error if there is none.
std::FILE* currentStream();

class StreamSwitch {
public:
    // Sends texts to `stream` until the object ends.
    explicit StreamSwitch(std::FILE* stream);
    ~StreamSwitch();

    StreamSwitch(const StreamSwitch&) = delete;
    StreamSwitch& operator=(const StreamSwitch&) = delete;

private:
    std::FILE* m_Previous;
};

// The same to the standard output as it was at the start of the run.
class SavedOutSwitch : public StreamSwitch {
public:
    SavedOutSwitch();
};

// The same to the standard error as it was at the start of the run.
class SavedErrSwitch : public StreamSwitch {
public:
    SavedErrSwitch();
};

} // namespace messages
