// Work that is given up where memory runs out.
#include "alloclib/interface/quiet_exhaustion.h"

#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "alloclib/interface/alloclib.h"

namespace alloclib {
namespace {

TEST(QuietExhaustionTest, LastsAsLongAsOneLives) {
    EXPECT_FALSE(QuietExhaustion::isActive());
    {
        const QuietExhaustion outer;
        {
            const QuietExhaustion inner;
            EXPECT_TRUE(QuietExhaustion::isActive());
        }
        EXPECT_TRUE(QuietExhaustion::isActive());
    }
    EXPECT_FALSE(QuietExhaustion::isActive());
}

TEST(QuietExhaustionTest, IsOneThreadsOwn) {
    const QuietExhaustion quiet;
    bool isActiveElsewhere = true;
    std::thread([&] { isActiveElsewhere = QuietExhaustion::isActive(); }).join();
    EXPECT_FALSE(isActiveElsewhere);
}

TEST(QuietExhaustionTest, WhatWouldEndTheProcessIsThrown) {
    const QuietExhaustion quiet;
    EXPECT_THROW(endOutOfMemory(1), std::bad_alloc);
}

} // namespace
} // namespace alloclib
