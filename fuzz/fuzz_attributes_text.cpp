// Feeds any bytes to the readers of the three small languages about attributes: decorations, option
// strings and access strings.
//
// Every text is good, so what is looked for is memory, and that the printer and the reader get
// along: the measured length is the printed one, a short buffer holds whole tokens only, and after
// a few rounds of reading and printing nothing changes any more.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "attributes/interface/access_strings.h"
#include "attributes/interface/decoration.h"
#include "attributes/interface/option_strings.h"
#include "attributes/interface/target_database.h"

namespace {

[[noreturn]] void fail(const char* what, const std::string& detail) {
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

std::string printed(const attributes::FullAttr& value) {
    const uint64_t length = attributes::printDecoration(value, nullptr, 0);
    std::vector<char> buffer(length + 1);
    if (attributes::printDecoration(value, buffer.data(), buffer.size()) != length ||
        std::strlen(buffer.data()) != length) {
        fail("measured and printed length differ", buffer.data());
    }
    return buffer.data();
}

// Forms of access come home after three rounds at most, everything else earlier.
void checkRounds(const attributes::FullAttr& first) {
    constexpr int rounds = 4;
    attributes::FullAttr value = first;
    std::string text;
    for (int round = 0; round < rounds; ++round) {
        text = printed(value);
        attributes::parseDecoration(value, text.c_str());
    }
    if (printed(value) != text) {
        fail("text does not settle", text);
    }
}

void checkShortBuffer(const attributes::FullAttr& value, uint64_t size) {
    const std::string whole = printed(value);
    std::vector<char> buffer(size, '\xEE');
    if (attributes::printDecoration(value, buffer.data(), size) != whole.size()) {
        fail("length depends on the buffer", whole);
    }
    if (size != 0 && std::memchr(buffer.data(), '\0', size) == nullptr) {
        fail("text has no end", whole);
    }
}

void checkMerge(const attributes::FullAttr& value, const char* text) {
    attributes::FullAttr merged = value;
    attributes::mergeDecoration(merged, text);
    if (merged.options != value.options || merged.requirements != value.requirements ||
        merged.abiVersion != value.abiVersion ||
        std::memcmp(merged.access, value.access, sizeof value.access) != 0) {
        fail("merging a text into what was read of it adds something", text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The text ends at the first NUL; its copy ends with the block, so that no byte behind it can
    // be read unseen.
    std::vector<char> copy(data, data + size);
    copy.push_back('\0');
    const char* const text = copy.data();

    attributes::FullAttr value;
    attributes::parseDecoration(value, text);
    checkRounds(value);
    checkShortBuffer(value, size % 128);
    checkMerge(value, text);

    // Bits that no reader sets are the printer's to cope with.
    std::memcpy(&value.isa, copy.data(), std::min(copy.size(), sizeof value.isa));
    checkShortBuffer(value, size % 61);
    checkRounds(value);

    attributes::applyOptionString(value.options, text);
    attributes::applyAccessString(value.access, text);
    checkRounds(value);

    attributes::FullAttr target;
    if (attributes::findTarget(text, target) == nullptr && !(target == attributes::FullAttr{})) {
        fail("unknown target is not zero", text);
    }
    return 0;
}
