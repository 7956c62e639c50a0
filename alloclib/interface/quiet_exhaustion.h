// For work that can be given up.
//
// Where memory runs out, the tool says so and ends the process. That is no way out of a thread that
// works beside the main one, nor of work that was only to make things faster: in its scope such
// work meets std::bad_alloc instead, and whoever started it goes on without.
#pragma once

namespace alloclib {

// As long as one lives, memory that runs out in this thread is thrown. That goes for
// endOutOfMemory(), and for the program's new-handler, which has to ask isActive().
class QuietExhaustion {
public:
    QuietExhaustion();
    ~QuietExhaustion();
    QuietExhaustion(const QuietExhaustion&) = delete;
    QuietExhaustion& operator=(const QuietExhaustion&) = delete;

    // Whether this thread has one.
    static bool isActive();
};

} // namespace alloclib
