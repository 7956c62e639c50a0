#include "tabledrivenparser/src/via_file.h"

#include "tabledrivenparser/src/value_store.h"

namespace tabledrivenparser {

bool readViaFile(Parser& parser, uint32_t parameter, const char* name, bool copyName,
                 uint32_t /*filterCount*/, const uint32_t* /*filter*/) {
    if (copyName) {
        name = parser.copyString(name);
    }
    if (!appendViaFileName(parser, parameter, name)) {
        return false;
    }
    parser.bumpSequence(parameter);
    return true;
}

} // namespace tabledrivenparser
