// The preemption map: which symbols of which libraries are taken over by another library.
//
// It is a sequence of records in words of 32 bits, up to a record with a count of 0:
//
//     count | symbol's name | preempting library's name | `count` names of preempted libraries
//
// Names are offsets in the dynamic string table.
#pragma once

#include "elfext/src/text_table.h"

#include <cstdint>
#include <span>

namespace elfext {

class ReadState;
class Section;

// Reads the map that starts at `start` of the section's `contents`. Whatever does not fit ends it
// without a word. False if the read has passed its limits.
bool readPreemptionMap(ReadState& state, const Section* preemptionMapSection,
                       std::span<const uint8_t> contents, uint64_t preemptionMapStartOffset,
                       const TextTable& texts);

} // namespace elfext
