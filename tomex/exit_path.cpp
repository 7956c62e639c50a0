#include "tomex/exit_path.h"

#include <cstdlib>

#include "alloclib/interface/default_region.h"
#include "messages/interface/message_session.h"
#include "platform/interface/temporary_file_guard.h"

namespace tomex {
namespace {

int archivesInUse = 0;

} // namespace

ArchiveInUse::ArchiveInUse() {
    ++archivesInUse;
}

ArchiveInUse::~ArchiveInUse() {
    --archivesInUse;
}

void exitProgram(int status) {
    messages::closeMessages();
    platform::removeGuardedFile();
    if (archivesInUse == 0) {
        alloclib::finishAllocators();
    }
    std::exit(messages::outputLost() ? 1 : status);
}

} // namespace tomex
