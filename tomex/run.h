// One run of the command, from the words of the command line to the written archive.
#pragma once

namespace tomex {

// What went wrong has been reported and counted when it returns. May end the process.
void run(int argc, char** argv);

} // namespace tomex
