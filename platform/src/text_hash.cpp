// The factors of the hash, drawn once for each run.
#include "platform/interface/text_hash.h"

#include <chrono>
#include <exception>
#include <random>

namespace platform {

namespace {

uint64_t draw() {
    try {
        std::random_device device;
        const uint64_t high = device();
        return high << 32 | device();
    } catch (const std::exception&) {
        // A host without a source of random numbers; the clock is better than nothing.
        return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
}

} // namespace

const HashFactors& hashFactors() {
    static const HashFactors factors = {draw() | 1, draw() | 1};
    return factors;
}

} // namespace platform
