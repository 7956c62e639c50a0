// The process entry: brings up allocators and messages, runs the command, leaves.

#include "alloclib/interface/default_region.h"
#include "messages/interface/message_session.h"
#include "platform/interface/temporary_file_guard.h"
#include "tomex/exit_path.h"
#include "tomex/run.h"

int main(int argc, char** argv) {
    alloclib::startAllocators();
    messages::initMessages();
    messages::setExitHandler(tomex::exitProgram);
    platform::installTemporaryFileCleanup();
    tomex::run(argc, argv);
    tomex::exitProgram(messages::errorCount() != 0 ? 1 : 0);
}
