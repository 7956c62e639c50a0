#include "tomex/attribute_clashes.h"

#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/isa_operations.h"
#include "messages/interface/report.h"

namespace tomex {
namespace {

using attributes::FullAttr;

// The forms of access that need alignment; unaligned ones are the bits above.
constexpr uint16_t alignedForms = 0x3FF;

void printClash(const char* first, const char* second) {
    messages::printText(" * %s clashes with %s\n", first, second);
}

// Each of these prints the first clash of its kind and takes it out of the set. False if there is
// none left.
bool takeIsaClash(FullAttr& rest) {
    for (const attributes::IsaConflict& conflict : attributes::isaConflicts) {
        if (attributes::hasAll(rest.isa, conflict.mask)) {
            printClash(conflict.first, conflict.second);
            attributes::clearWord(rest.isa, conflict.mask);
            return true;
        }
    }
    return false;
}

bool takeOptionClash(FullAttr& rest) {
    for (const attributes::OptionConflict& conflict : attributes::optionConflicts) {
        if ((rest.options & conflict.mask) == conflict.mask) {
            printClash(conflict.first, conflict.second);
            rest.options &= ~conflict.mask;
            return true;
        }
    }
    return false;
}

bool takeAccessClash(FullAttr& rest) {
    const attributes::ConflictNames names = attributes::findAccessConflict(rest);
    if (names.first == nullptr) {
        return false;
    }
    printClash(names.first, names.second);
    for (uint16_t& forms : rest.access) {
        forms &= alignedForms;
    }
    return true;
}

} // namespace

void listAttributeClashes(const FullAttr& attributes) {
    FullAttr rest = attributes;
    while (takeIsaClash(rest) || takeOptionClash(rest) || takeAccessClash(rest)) {
    }
}

} // namespace tomex
