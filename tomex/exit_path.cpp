#include "tomex/exit_path.h"

#include <cstdlib>
#include <memory>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "messages/interface/message_session.h"
#include "platform/interface/temporary_file_guard.h"

namespace tomex {
namespace {

ArchiveInUse* innermost = nullptr;

} // namespace

ArchiveInUse::ArchiveInUse(arlib::Archive& archive) : m_archive(archive), m_outer(innermost) {
    innermost = this;
}

ArchiveInUse::~ArchiveInUse() {
    innermost = m_outer;
}

void ArchiveInUse::destroyArchives() {
    while (innermost != nullptr) {
        arlib::Archive& archive = innermost->m_archive;
        innermost = innermost->m_outer;
        std::destroy_at(&archive);
    }
}

void exitProgram(int status) {
    messages::closeMessages();
    const int finalStatus = messages::finalStatus(status);
    platform::removeGuardedFile();
    ArchiveInUse::destroyArchives();
    alloclib::finishAllocators();
    std::exit(finalStatus);
}

} // namespace tomex
