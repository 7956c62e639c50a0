// Removes a file that is being made when the process is told to stop.
//
// While an archive is written, its temporary file stands beside it. An interrupt, a termination
// request or a lost terminal must not leave it there: the guard notes the name, and the signal
// handlers remove the file before the process dies of the signal as it would have done anyway.
#pragma once

#include <csignal>

#include <sys/types.h>

namespace platform {

// Puts the handlers for SIGINT, SIGTERM and SIGHUP in place. A signal that is ignored (as under
// nohup) stays ignored. From then on a write beyond the user's limit on file sizes fails with EFBIG
// instead of ending the process. Called once by the tool at its start.
void installTemporaryFileCleanup();

// Holds the stopping signals back as long as it lives; one that comes meanwhile acts at its end.
class StoppingSignalsHeld {
public:
    StoppingSignalsHeld();
    ~StoppingSignalsHeld();
    StoppingSignalsHeld(const StoppingSignalsHeld&) = delete;
    StoppingSignalsHeld& operator=(const StoppingSignalsHeld&) = delete;

private:
    sigset_t m_Before = {};
};

// Creates a file exclusively, with these permissions less those that the user withholds, and guards
// it in the same step: a signal finds either no file or a guarded one. The result is a descriptor
// for writing, or -1 with errno set. One file at a time can be guarded; name must live until the
// guard ends.
int createGuardedFile(const char* name, mode_t permissions = 0666);

// Gives the guarded file its final name, in one step even where a file of that name stands, and
// ends the guard. False leaves errno, the file and the guard.
bool renameGuardedFile(const char* finalName);

// Removes the guarded file, if there is one, and ends the guard. False leaves errno and the file.
bool removeGuardedFile();

// Ends the guard and leaves the file where it is.
void releaseGuardedFile();

} // namespace platform
