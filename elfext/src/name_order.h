// How names sort: no name before every name, otherwise by their bytes, unsigned.
#pragma once

#include <cstring>

namespace elfext {

inline int compareNames(const char* left, const char* right) {
    if (left == nullptr || right == nullptr) {
        return static_cast<int>(left != nullptr) - static_cast<int>(right != nullptr);
    }
    return std::strcmp(left, right);
}

} // namespace elfext
