// The keys of the messages that the parser reports, each with its text.
//
// The texts live in the message catalogue under these keys; a key holds the series letter "X", the
// number and the class of its code: ((letter * 16384) + number) * 16 + 2 * class.
#pragma once

#include <cstdint>

namespace tabledrivenparser {

enum ParserMessage : uint32_t {
    // "Unrecognized option '%s%s'."
    ParserMessage_UnrecognizedOption = 23131082,
    // "Missing argument for option '%s'."
    ParserMessage_MissingArgument = 23131098,
    // "Recursive via file inclusion depth of %d reached in file '%s'."
    ParserMessage_ViaFileTooDeep = 23131114,
    // "Argument '%s' not permitted for option '%s'."
    ParserMessage_ArgumentNotPermitted = 23131130,
    // "Could not open via file '%s'."
    ParserMessage_ViaFileNotOpened = 23131146,
    // "Error when reading from via file '%s'."
    ParserMessage_ViaFileNotRead = 23131162,
    // "Malformed via file '%s'."
    ParserMessage_ViaFileMalformed = 23131178,
    // "Via file '%s' command too long for buffer."
    ParserMessage_ViaFileWordTooLong = 23131194,
    // "Overflow: '%s' will not fit in an integer."
    ParserMessage_Overflow = 23131210,
    // "Old syntax, please use '%s%s%s%s'."
    ParserMessage_OldSyntax = 23131236,
    // "Option '%s' is deprecated."
    ParserMessage_DeprecatedOption = 23131268,
    // "Could not close via file '%s'."
    ParserMessage_ViaFileNotClosed = 23131284,
    // "The following arguments to option '%s' can be selected:\n %s"
    ParserMessage_SelectableArguments = 23131298,
    // "Argument '%s' to option '%s' is deprecated"
    ParserMessage_DeprecatedArgument = 23131316,
    // "Unexpected argument for option '%s%s'"
    ParserMessage_UnexpectedArgument = 23131338,
    // "Concatenated options cannot have arguments: -%s %s"
    ParserMessage_ConcatenatedArgument = 23131354,
    // "'\0' character found in via file '%s' - possible binary file.  Aborting via file parse."
    ParserMessage_ViaFileBinary = 23131370,
    // "Possible matches for '%s' include '%s' and '%s'."
    ParserMessage_PossibleMatches = 23131378,
    // "Option '-%s' repeated in concatenated options '-%s%s%s'."
    ParserMessage_RepeatedOption = 23131396,
};

} // namespace tabledrivenparser
