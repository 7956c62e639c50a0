#include "elfext/src/reporting.h"

namespace elfext {
namespace {

// What stands for the error number where no host call failed.
constexpr int noErrorNumber = -1;

} // namespace

bool reportStatus(ObjectModule& objectModule, LowLevelStatus status) {
    switch (status) {
    case LowLevelStatus_Good:
        break;
    case LowLevelStatus_Short:
        // Required: this has always read as a failure to write, and scripts look for it.
        return reportFatal(objectModule, &ErrorHandler::ioErrorWriting, objectModule.getFileName(),
                           noErrorNumber);
    case LowLevelStatus_ReadFailed:
        return reportFatal(objectModule, &ErrorHandler::ioErrorReading, objectModule.getFileName(),
                           noErrorNumber);
    case LowLevelStatus_BadMagic:
        return reportFatal(objectModule, &ErrorHandler::notElf);
    case LowLevelStatus_BadClass:
        return reportFatal(objectModule, &ErrorHandler::not32BitElf);
    case LowLevelStatus_OutOfMemory:
        return reportFatal(objectModule, &ErrorHandler::outOfMemory);
    }
    return false;
}

} // namespace elfext
