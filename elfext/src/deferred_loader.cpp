#include "elfext/src/deferred_loader.h"

#include "elfext/interface/deferred_contents.h"
#include "elfext/src/reporting.h"

#include <sys/types.h>

namespace elfext {
namespace {

// The size of an open file; 0 if it cannot be told, as if there were nothing in it.
uint64_t sizeOf(std::FILE* file) {
    if (fseeko(file, 0, SEEK_END) != 0) {
        return 0;
    }
    const off_t size = ftello(file);
    return size < 0 ? 0 : static_cast<uint64_t>(size);
}

// The file may have become shorter since its headers were read, so its size is looked at before
// memory is taken. The buffer stays empty unless all bytes come in.
LowLevelStatus readInto(Buffer& buffer, std::FILE* file, const Elf64_Shdr& header) {
    const uint64_t fileSize = sizeOf(file);
    const OpenInput input(file, fileSize);
    LowLevelStatus status = lowlevel::checkBytes(header.sh_offset, header.sh_size);
    if (status == LowLevelStatus_Good) {
        buffer.setSize(header.sh_size);
        status = lowlevel::readBytes(buffer.getData(), header.sh_offset, header.sh_size);
    }
    if (status != LowLevelStatus_Good) {
        buffer.setSize(0);
    }
    return status;
}

} // namespace

bool loadDeferredContents(Section& section, const DeferredContents& deferredContents) {
    ObjectModule& objectModule = *section.getObjectModule();
    ReferenceCountedFile* const file = deferredContents.getReferenceCountedFile();
    LowLevelStatus status = LowLevelStatus_ReadFailed;
    // After a failure of another section the file is closed already.
    if (file->getFile() != nullptr) {
        lowlevel::setLittleEndian(objectModule.isLittleEndian());
        status = readInto(section.getLoadedContents(), file->getFile(),
                          deferredContents.getSectionHeader());
    }
    return status == LowLevelStatus_Good || reportStatus(objectModule, status);
}

} // namespace elfext
