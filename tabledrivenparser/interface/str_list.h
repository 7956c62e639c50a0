// The list of texts that a text-vector or via-file parameter collects.
//
// It holds addresses only: the texts are words of the command line or copies that the parser owns.
#pragma once

#include "tabledrivenparser/interface/linked_list.h"

#include <cstdint>

namespace tabledrivenparser {

class StrList : public LinkedList<const char*> {
public:
    // What the look-ups give when no element fits.
    static constexpr uint32_t notFound = 0xFFFFFFFF;

    using LinkedList<const char*>::LinkedList;

    // The index (from 0) of the first element that equals `text` without regard to case, or
    // notFound.
    uint32_t indexOf(const char* text) const;
    // Whether indexOf finds one.
    bool contains(const char* text) const;
    // The index of the first element that has `text` somewhere in it, without regard to case, or
    // notFound. The empty text is in every element.
    uint32_t indexContaining(const char* text) const;

    // Removes every element that equals `text`, case and all. True if there was one.
    bool removeEqual(const char* text);
    // Removes every element that starts with `text`, case and all. True if there was one.
    bool removeStartingWith(const char* text);

private:
    template <class Predicate>
    bool removeIf(Predicate isUnwanted);
};

} // namespace tabledrivenparser
