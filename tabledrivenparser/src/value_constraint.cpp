#include "tabledrivenparser/src/value_constraint.h"

#include "tabledrivenparser/src/letter_case.h"
#include "tabledrivenparser/src/mask_list.h"

namespace tabledrivenparser {

namespace {

// `pairs` are (low, high); the first one turned round ends them.
template <class Integer>
bool liesInPair(const void* pairs, uint64_t value) {
    const auto* pair = static_cast<const Integer*>(pairs);
    const auto number = static_cast<Integer>(value);
    for (; pair[0] <= pair[1]; pair += 2) {
        if (number >= pair[0] && number <= pair[1]) {
            return true;
        }
    }
    return false;
}

bool endsAlternative(char character) {
    return character == 0 || character == '|';
}

// Whether `text` satisfies the one alternative that begins at `pattern`.
bool matchesAlternative(const char* pattern, const char* text) {
    bool isCaseSensitive = *pattern == 'C';
    if (isCaseSensitive) {
        ++pattern;
    }
    for (;; ++pattern, ++text) {
        if (*pattern == '*') {
            return true;
        }
        if (endsAlternative(*pattern)) {
            return *text == 0;
        }
        if (*pattern != (isCaseSensitive ? *text : foldCase(*text))) {
            return false; // also at the end of the text
        }
    }
}

bool isAllowed(const void* allowed, uint32_t type, uint64_t value) {
    switch (type) {
    case ParameterType_ADDRESS:
    case ParameterType_INT:
    case ParameterType_INT_VECTOR:
        return liesInPair<int32_t>(allowed, value);
    case ParameterType_ADDRESS64:
    case ParameterType_INT64_VECTOR:
        return liesInPair<int64_t>(allowed, value);
    case ParameterType_BOOLEAN:
        return matchesPattern(static_cast<const char*>(allowed), value != 0 ? "true" : "false");
    default:
        return matchesPattern(static_cast<const char*>(allowed), textOfValue(value));
    }
}

} // namespace

bool matchesPattern(const char* pattern, const char* text) {
    bool isPatternEmpty = pattern == nullptr || *pattern == 0;
    if (isPatternEmpty || text == nullptr) {
        return isPatternEmpty && (text == nullptr || *text == 0);
    }
    for (;;) {
        if (matchesAlternative(pattern, text)) {
            return true;
        }
        while (!endsAlternative(*pattern)) {
            ++pattern;
        }
        if (*pattern == 0) {
            return false;
        }
        ++pattern;
    }
}

bool passesConstraints(const ValueConstraint* constraints, uint32_t type, uint64_t value,
                       uint32_t activeMask) {
    bool doesAnyApply = false;
    for (const ValueConstraint* node = constraints; node != nullptr; node = node->next) {
        if (!masksPass(node->masks, activeMask)) {
            continue;
        }
        if (isAllowed(node->allowed, type, value)) {
            return true;
        }
        doesAnyApply = true;
    }
    return !doesAnyApply;
}

} // namespace tabledrivenparser
