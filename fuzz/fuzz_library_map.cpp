// Feeds any bytes to the reader of library attribute maps, and asks the map about names.
//
// Every text is good. What is looked for is memory, rows that the format does not have, and
// patterns that take too long.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "alloclib/interface/default_region.h"
#include "attributes/interface/library_attribute_map.h"

namespace {

[[noreturn]] void fail(const char* what, const char* detail) {
    std::fprintf(stderr, "%s: %s\n", what, detail);
    std::abort();
}

bool isField(const char* text) {
    return *text != '\0' && std::strpbrk(text, " \t\n\v\f\r") == nullptr &&
           std::strlen(text) <= attributes::LongestMapLine;
}

void checkRows(const attributes::LibraryAttributeMap& map) {
    for (uint32_t i = 0; i < map.getCount(); ++i) {
        const attributes::LibraryAttributeRow& row = map.getRow(i);
        if (!isField(row.pattern) || *row.pattern == '#') {
            fail("not a pattern", row.pattern);
        }
        if (row.alias != nullptr && !isField(row.alias)) {
            fail("not an alias", row.alias);
        }
        if (row.attributes.targetClass != 0 || row.attributes.targetKind != 0) {
            fail("a decoration states no target", row.pattern);
        }
    }
    if (map.getCapacity() < map.getCount() || map.getCapacity() >= map.getCount() + 32) {
        fail("wrong number of blocks", "");
    }
}

void askFor(const attributes::LibraryAttributeMap& map, const char* name) {
    attributes::FullAttr promised;
    attributes::attributesForName(map, name, promised);
    if ((promised.access[0] & 0x10) == 0) {
        fail("plain access is missing", name);
    }
    if (!attributes::sameLibraryFamily(map, name, name)) {
        fail("not of its own family", name);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    alloclib::startAllocators();
    {
        attributes::LibraryAttributeMap map(&alloclib::defaultRegion());
        if (size != 0) {
            std::string copy(reinterpret_cast<const char*>(data), size);
            std::FILE* file = fmemopen(copy.data(), size, "rb");
            if (file == nullptr || !attributes::readMapRows(map, file)) {
                fail("cannot be read", "");
            }
            std::fclose(file);
        }
        checkRows(map);
        for (const char* name : {"", "c_a.l", "dir\\g_4.l", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}) {
            askFor(map, name);
        }
        // The end of the input as a name: often one that a pattern of it was made for.
        const size_t length = size < 64 ? size : 64;
        askFor(map,
               std::string(reinterpret_cast<const char*>(data + size - length), length).c_str());
    }
    alloclib::finishAllocators();
    return 0;
}
