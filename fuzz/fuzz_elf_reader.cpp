// Feeds any bytes to the ELF reader, and asks what it makes of them for everything that it has.
//
// Without a word said there is a module, and with one there is none. A handler that lets the read
// go on wherever it can gets modules of damaged files, which must be sound all the same. What is
// measured without a module must be what the module says, and is never a file that cannot be read
// without a report.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "alloclib/interface/default_region.h"
#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/quick_sizes.h"
#include "tests/support/module_walk.h"

namespace {

class CountingHandler final : public elfext::ErrorHandler {
public:
    explicit CountingHandler(bool goesOn) : m_GoesOn(goesOn) {}

    bool report(elfext::ObjectModule*, elfext::Severity severity, const char* message) override {
        last = message;
        ++reports;
        return m_GoesOn && severity != elfext::Severity_Fatal;
    }

    int reports = 0;
    std::string last;

private:
    bool m_GoesOn;
};

// Gives what it saw of the module.
uint64_t read(const uint8_t* data, size_t size, bool goesOn) {
    CountingHandler handler(goesOn);
    elfext::ObjectModule module;
    module.setErrorHandler(&handler);
    const bool isRead = elfext::readElfBuffer("input", data, size, &module, nullptr);
    const bool isTold = isRead ? goesOn || handler.reports == 0 : handler.reports != 0;
    if (!isTold || (!isRead && !module.isEmpty())) {
        std::fprintf(stderr, "answer and reports differ: %s\n", handler.last.c_str());
        std::abort();
    }
    return isRead ? testsupport::walkModule(module) : 0;
}

// The reader gives up where hostile files ask for too much work; measuring asks for less.
bool gaveUp(const CountingHandler& handler) {
    return handler.last == "Out of memory";
}

void compareSizes(const uint8_t* data, size_t size) {
    static elfext::QuickSizes quickSizes;
    elfext::SizeStatistics sizes;
    if (!quickSizes.measure(data, size, sizes)) {
        return;
    }
    CountingHandler handler(false);
    elfext::ObjectModule module;
    module.setErrorHandler(&handler);
    const bool isRead = elfext::readElfBuffer("input", data, size, &module, nullptr);
    if (isRead ? sizes != elfext::computeSizeStatistics(module) : !gaveUp(handler)) {
        std::fprintf(stderr, "sizes differ: %s\n", handler.last.c_str());
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    alloclib::startAllocators();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    compareSizes(data, size);
    const uint64_t first = read(data, size, true);
    if (read(data, size, false) > first) {
        std::fprintf(stderr, "the stricter read saw more\n");
        std::abort();
    }
    return 0;
}
