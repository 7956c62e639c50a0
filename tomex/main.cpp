// The process entry: brings up allocators and messages, runs the command, leaves.

#include <new>

#include "alloclib/interface/default_region.h"
#include "alloclib/interface/quiet_exhaustion.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"
#include "platform/interface/temporary_file_guard.h"
#include "tomex/exit_path.h"
#include "tomex/run.h"

namespace {

// The heap is at its end: says so and leaves, with the temporary file cleaned up, unless what goes
// on can be given up.
void reportOutOfMemory() {
    if (alloclib::QuietExhaustion::isActive()) {
        throw std::bad_alloc();
    }
    std::set_new_handler(nullptr);
    messages::report(messages::Severity_Fatal, messages::MessageKey_OutOfMemory);
}

} // namespace

int main(int argc, char** argv) {
    alloclib::startAllocators();
    messages::initMessages();
    messages::setExitHandler(tomex::exitProgram);
    std::set_new_handler(reportOutOfMemory);
    platform::installTemporaryFileCleanup();
    tomex::run(argc, argv);
    tomex::exitProgram(messages::errorCount() != 0 ? 1 : 0);
}
