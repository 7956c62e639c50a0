// Whether a witness is there to be asked, for tests that go without it where it is not.
//
// One that is absent is told on standard error, and where tests have to be complete (the
// environment variable CI is set) it is a failure.
#pragma once

#include <cstdlib>
#include <iostream>

#include <gtest/gtest.h>

#include "tests/support/witness.h"

namespace testsupport {

inline bool present(const Witness& witness) {
    if (witness.present()) {
        return true;
    }
    const bool mustBeComplete = std::getenv("CI") != nullptr; // NOLINT(concurrency-mt-unsafe)
    EXPECT_FALSE(mustBeComplete) << witness.absence();
    std::cerr << "[  NOTE    ] " << witness.absence() << '\n';
    return false;
}

} // namespace testsupport
