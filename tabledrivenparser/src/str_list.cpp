#include "tabledrivenparser/interface/str_list.h"

#include "tabledrivenparser/src/letter_case.h"

#include <cstring>

namespace tabledrivenparser {

namespace {

bool containsFolded(const char* text, const char* part) {
    for (;; ++text) {
        if (startsFolded(text, part)) {
            return true;
        }
        if (*text == 0) {
            return false;
        }
    }
}

// The index of the first element for which `isWanted` holds. An element may be null where a table
// implies no text; it is never wanted.
template <class Predicate>
uint32_t findIndex(const StrList& list, Predicate isWanted) {
    uint32_t index = 0;
    for (const char* element : list) {
        if (element != nullptr && isWanted(element)) {
            return index;
        }
        ++index;
    }
    return StrList::notFound;
}

} // namespace

uint32_t StrList::indexOf(const char* text) const {
    return findIndex(*this, [text](const char* element) { return equalFolded(element, text); });
}

bool StrList::contains(const char* text) const {
    return indexOf(text) != notFound;
}

uint32_t StrList::indexContaining(const char* text) const {
    return findIndex(*this, [text](const char* element) { return containsFolded(element, text); });
}

// Moves the values that stay to the front, then cuts the list behind the last of them. The first
// node is part of the list object, so nodes cannot simply be unlinked.
template <class Predicate>
bool StrList::removeIf(Predicate isUnwanted) {
    if (m_tail == nullptr) {
        return false;
    }
    LinkedListNode<const char*>* lastKept = nullptr;
    bool isAnyRemoved = false;
    for (LinkedListNode<const char*>* node = &m_first; node != nullptr; node = node->next) {
        if (node->value != nullptr && isUnwanted(node->value)) {
            isAnyRemoved = true;
            continue;
        }
        lastKept = lastKept == nullptr ? &m_first : lastKept->next;
        lastKept->value = node->value;
    }
    if (lastKept == nullptr) {
        clear();
    } else {
        lastKept->next = nullptr;
        m_tail = lastKept;
    }
    return isAnyRemoved;
}

bool StrList::removeEqual(const char* text) {
    return removeIf([text](const char* element) { return std::strcmp(element, text) == 0; });
}

bool StrList::removeStartingWith(const char* text) {
    size_t length = std::strlen(text);
    return removeIf([=](const char* element) { return std::strncmp(element, text, length) == 0; });
}

} // namespace tabledrivenparser
