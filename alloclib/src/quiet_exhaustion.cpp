#include "alloclib/interface/quiet_exhaustion.h"

#include <cstdint>

namespace alloclib {
namespace {

thread_local uint32_t depth = 0; // NOLINT: there is no other way to know of one's callers

} // namespace

QuietExhaustion::QuietExhaustion() {
    ++depth;
}

QuietExhaustion::~QuietExhaustion() {
    --depth;
}

bool QuietExhaustion::isActive() {
    return depth != 0;
}

} // namespace alloclib
