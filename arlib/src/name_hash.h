// The hash of tables that are keyed by names out of files.
//
// The hash that a `Stringlett` carries is the same in every run, so anyone can make thousands of
// names that have the same, and a look-up among them a walk.
#pragma once

#include <cstdint>

#include "elfext/interface/stringlett.h"
#include "platform/interface/text_hash.h"

namespace arlib {

// The key is not the null key.
inline uint32_t nameHash(const elfext::Stringlett* key) {
    return platform::foldHash(platform::mixText(0, key->getString()));
}

} // namespace arlib
