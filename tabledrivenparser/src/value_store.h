// Storing one value into its parameter.
//
// Whatever the type, a value goes the same way: the descriptor's filter and constraints may reject
// it, the listener may take it, else it is written, and in the end the setting is stamped.
#pragma once

#include "tabledrivenparser/interface/parser.h"

#include <cstdint>

namespace tabledrivenparser {

// Stores `value`, held as ParameterType tells, into `parameter`, whose type is neither a vector nor
// VIA_FILE nor ENUM (an ENUM's constraints are its rows, see enum_choice.h). False if it was
// rejected; nothing is stamped then.
bool storeValue(Parser& parser, uint32_t parameter, uint64_t value);

// The same without filter and constraints.
void storeAcceptedValue(Parser& parser, uint32_t parameter, uint64_t value);

// Asks the listener, if there is one, whether it takes `value` itself.
bool doesListenerTake(Parser& parser, uint32_t parameter, uint64_t value);

// Stores one element into the list of an INT_VECTOR, INT64_VECTOR or STRING_VECTOR parameter.
bool appendInt(Parser& parser, uint32_t parameter, int32_t element);
bool appendInt64(Parser& parser, uint32_t parameter, int64_t element);
bool appendText(Parser& parser, uint32_t parameter, const char* element);

// Stores `name` into the list of a VIA_FILE parameter, which is stamped only when the file has been
// read: the caller does it.
bool appendViaFileName(Parser& parser, uint32_t parameter, const char* name);

} // namespace tabledrivenparser
