// Reading via files into a parser, as if their words stood on the command line.
#pragma once

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/interface/via_file.h"

#include <cstdint>

namespace tabledrivenparser {

// As many via files may not be open one inside the other: a file that names itself ends there.
constexpr uint32_t viaDepthLimit = 10;

// Feeds the words of `viaFile` to the parser, one word ahead. For the filter of this and the
// others see Parser::parseOption.
void runViaFile(ViaFile& viaFile, Parser& parser, uint32_t filterCount = 0,
                const uint32_t* filter = nullptr);

// The parser's entry, called for each file name of a VIA_FILE parameter: stores `name` (a copy of
// it if `copyName` is set) as an element of `parameter`, reads the file, and stamps the parameter
// when all of it is read. False if the name was rejected or the files are nested too deep.
bool readViaFile(Parser& parser, uint32_t parameter, const char* name, bool copyName,
                 uint32_t filterCount, const uint32_t* filter);

// Reads `text` as the contents of a via file; texts that come from it are copied. It stays as it
// is.
void parseViaText(Parser& parser, const char* text, uint32_t filterCount = 0,
                  const uint32_t* filter = nullptr);
// The same without a copy of the whole: `text` is written into.
void parseViaTextInPlace(Parser& parser, char* text, uint32_t filterCount = 0,
                         const uint32_t* filter = nullptr);

} // namespace tabledrivenparser
