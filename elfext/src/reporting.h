// How the reader puts problems to the module's error handler.
#pragma once

#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"
#include "elfext/src/low_level.h"
#include "platform/interface/internal_check.h"

namespace elfext {

// Reports through `operation` and gives the answer: true to go on. Without a handler it is false.
template <typename... Parameters, typename... Arguments>
bool askHandler(ObjectModule& objectModule,
                bool (ErrorHandler::*operation)(ObjectModule*, Parameters...),
                Arguments... arguments) {
    ErrorHandler* const handler = objectModule.getErrorHandler();
    return handler != nullptr && (handler->*operation)(&objectModule, arguments...);
}

// Reports a problem after which going on is impossible. Always false, so that a pass can return
// it.
template <typename... Parameters, typename... Arguments>
bool reportFatal(ObjectModule& objectModule,
                 bool (ErrorHandler::*operation)(ObjectModule*, Parameters...),
                 Arguments... arguments) {
    const bool goOn = askHandler(objectModule, operation, arguments...);
    TOMEX_CHECK_TEXT(!goOn, "!err_response");
    return false;
}

// The same for a status of the low-level layer other than a good one.
bool reportStatus(ObjectModule& objectModule, LowLevelStatus status);

} // namespace elfext
