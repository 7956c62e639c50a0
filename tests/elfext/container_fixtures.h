// What the container tests share: a region, faults as texts, and an element with a life to count.
#pragma once

#include "alloclib/interface/default_region.h"
#include "platform/interface/internal_check.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace elfext::test {

// The allocators, up for one test.
class ContainerTest : public testing::Test {
protected:
    void SetUp() override { alloclib::startAllocators(); }
    void TearDown() override {
        platform::setCheckLevel("low");
        alloclib::finishAllocators();
    }
    static alloclib::RegionGeneral* region() { return &alloclib::defaultRegion(); }
};

// The report of a failed check of `condition` in the source `file`.
inline auto faultReport(const std::string& file, const std::string& condition) {
    std::string pattern = "^Internal fault: .*Assertion failed: " + file + " line [0-9]+ \\(";
    for (const char c : condition) {
        if (std::string("()[]{}*+?.|^$\\").find(c) != std::string::npos) {
            pattern += '\\';
        }
        pattern += c;
    }
    return testing::ContainsRegex(pattern + "\\)\n$");
}

#define EXPECT_FAULT(statement, file, condition)                                                   \
    EXPECT_EXIT(statement, testing::ExitedWithCode(1), ::elfext::test::faultReport(file, condition))

// An element that holds memory outside of any region, and counts how many of it there are.
class Counted {
public:
    Counted() : Counted(0) {}
    explicit Counted(uint32_t number) : m_Number(new uint32_t(number)) { ++live; }
    Counted(const Counted& other) : Counted(*other.m_Number) {}
    Counted& operator=(const Counted& other) {
        if (this != &other) {
            *m_Number = *other.m_Number;
        }
        return *this;
    }
    ~Counted() {
        delete m_Number;
        --live;
    }
    uint32_t number() const { return *m_Number; }
    bool operator==(const Counted& other) const { return *m_Number == *other.m_Number; }

    static inline int live = 0;

private:
    uint32_t* m_Number;
};

} // namespace elfext::test
