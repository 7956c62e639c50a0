// The texts in English. Sorted by key; the Japanese table has the same rows.

#include "messages/interface/message_keys.h"
#include "messages/src/catalogues.h"

namespace messages {

constinit const MessageEntry g_englishEntries[messageCount] = {
    {MessageKey_OutOfMemory, "Out of memory"},
    {MessageKey_NotArchiveFormat, "'%s' not in archive format"},
    {MessageKey_MalformedArchive, "'%s': malformed archive: %s"},
    {MessageKey_WriteError, "Writing file '%s' : %s"},
    {MessageKey_MemberNotPresent, "'%s' not present in archive '%s'"},
    {MessageKey_ArchiveNotFound, "Archive '%s' not found : %s"},
    {MessageKey_FileDoesNotExist, "File '%s' does not exist"},
    {MessageKey_CannotOpenFile, "Cannot open file '%s' : %s"},
    {MessageKey_ReadError, "Reading file '%s' : %s"},
    {MessageKey_FileAlreadyExists, "'%s' already exists, so will not be extracted"},
    {MessageKey_UnrecognizedLetterOption, "Unrecognized option '%c'"},
    {MessageKey_NoArchiveSpecified, "No archive specified"},
    {MessageKey_ActionRequired, "One of the actions -[%s] must be specified"},
    {MessageKey_OneActionOnly, "Only one action option may be specified"},
    {MessageKey_PositionNotFound, "Position '%s' not found"},
    {MessageKey_FileNameTooLong, "Filename '%s' too long for file system"},
    {MessageKey_ExtractWriteError, "Writing file '%s' : %s"},
    {MessageKey_MissingOptionArgument, "Missing argument to '%s'"},
    {MessageKey_CannotDeleteVariant, "Cannot delete '%s' as  '%s' is a variant of it"},
    {MessageKey_NoCompatibleBase,
     "Cannot insert variant '%s' as there is no symbol-compatible base member"},
    {MessageKey_IncompatibleAttributes,
     "Cannot insert '%s' as it has incompatible build attributes"},
    {MessageKey_CannotReplaceWithVariant,
     "Cannot replace '%s' as new version and old version are not symbol compatible, and it has a "
     "variant member ('%s') dependant upon it"},
    {MessageKey_UnrecognizedLongOption, "Unrecognized long option '%s'"},
    {MessageKey_ContainsNonElfObject, "Archive '%s' contains non ELF object '%s'"},
    {MessageKey_BadErrorMessageList, "Bad error message list %s for command %s\n"},
    {MessageKey_EmptyViaFile, "Via file '%s' is empty"},
    {MessageKey_AttributesAgainstName,
     "Build attributes of archive members inconsistent with archive name"},
    {MessageKey_NoSymbolTable, "Archive '%s' does not have a symbol table"},
    {MessageKey_CreatingArchive, "Creating archive '%s'"},
    {MessageKey_NoBaseVariant, "Minor variants of archive member '%s' include no base variant"},
    {MessageKey_NonElfObject, "Adding non-ELF object '%s' to archive '%s'"},
    {MessageKey_MultipleBaseVariants,
     "Minor variants of archive member '%s' include multiple base variants"},
    {MessageKey_AttributesNotDecorable,
     "Attribute difference of archive member '%s' in minor variant group beginning with '%s' "
     "includes attribute(s) with no symbol decoration representation"},
    {MessageKey_CommonAttributesIncompatible,
     "Common attributes of minor variant group beginning with '%s' are incompatible with library "
     "attributes."},
    {MessageKey_MemberAttributesIncompatible,
     "Attributes of minor variant member object '%s' are incompatible with library attributes."},
    {MessageKey_IdenticalVariants,
     "Minor variants of archive member '%s' include identical variants with attribute suffix '%s'"},
    {MessageKey_UsageFormat, "\n"
                             "Archive creation and maintenance tool\n\n"
                             "Command format:\n\n"
                             "%s options archive [ file_list ]\n\n"},
    {MessageKey_UsageWildcards, "Wildcards '%c' and '*' may be used in file_list\n\n"},
    {MessageKey_UsageEditOptions,
     "Options:-\n\n"
     " -r         Insert files in <file_list>, replace existing members of the same name.\n"
     " -d         Delete the members in <file_list>.\n"
     " -x         Extract members in <file_list> placing in files of the same name.\n"
     " -m         Move files in <file_list>.\n"
     " -p         Print files to stdout.\n"
     " -a pos     Insert/move files after file named <pos>.\n"
     " -b pos     Insert/move files before file named <pos>.\n"
     " -u         Update older files only, used with -r.\n\n"},
    {MessageKey_UsageOtherOptions,
     " -n         Do not add a symbol table to an object archive.\n"
     " -s         Force regeneration of archive symbol table.\n"
     " -t         Print table of contents of archive.\n"
     "--zs        Show the symbol table.\n"
     "--zt        Summarize the archive contents (sizes + entries).\n"
     " -c         Suppress warning when a new archive is created.\n"
     " -C         Do not overwrite existing files when extracting.\n"
     " -T         Truncate file names to system maximum length.\n"
     " -v         Give verbose output.\n"
     "--create    Force creation of a new archive.\n"
     "--via file  Take additional arguments from via file.\n"
     "--sizes     List the size of each member and the library total.\n"
     "--entries   List sections containing ENTRY points.\n"
     "--vsn       Print the current Tomex Version. \n"
     "--help      Print this message. \n\n"},
    {MessageKey_UsageExamples, "Examples:-\n\n"
                               "        %s -r  mylib.a obj1 obj2 obj3...\n"
                               "        %s -x  mylib.a %csort*\n"
                               "        %s -d  mylib.a hash.o\n"
                               "        %s -tv ansilib.a\n\n"},
    {MessageKey_ListName, "%s\n"},
    {MessageKey_ListVerbose, "%s%6d/%6d%7u %s %s (offset %6d)\n"},
    {MessageKey_ListSymbol, "%-20s from %-10s at offset %6d\n"},
    {MessageKey_ExtractedMember, "x - %s\n"},
    {MessageKey_PrintedMember, "\n"
                               "<%s>\n\n"},
    {MessageKey_ReplacedMember, "r - %s\n"},
    {MessageKey_AddedMember, "a - %s\n"},
    {MessageKey_MovedMember, "m - %s\n"},
    {MessageKey_DeletedMember, "d - %s\n"},
    {MessageKey_ListWithAttributes, "%s%6d/%6d%7u %s %s (offset %6d, attributes %s)\n"},
    {MessageKey_SizesRow, "%10u %10u %10u %10u %10u   %s\n"},
    {MessageKey_SizesHeading,
     "\n"
     "      Code    RO Data    RW Data    ZI Data      Debug   Object Name\n"},
    {MessageKey_NoEntryPoints, "No ENTRY points found.\n"},
    {MessageKey_EntryPoint, "ENTRY at offset %d in section %s of %s\n"},
    {MessageKey_UnknownDiagnosticValue, "Unknown Diagnostic number (%d)"},
    {MessageKey_ReadingMember, "Reading member '%s' : %s"},
    {MessageKey_MalformedArchiveWarning, "'%s': malformed archive: %s"},
    {MessageKey_MalformedSymbolTable, "'%s': malformed symbol table"},
    {MessageKey_SeekError, "Seeking in file '%s' : %s"},
    {MessageKey_CloseError, "Closing file '%s' : %s"},
    {MessageKey_DeleteError, "Deleting file '%s' : %s"},
    {MessageKey_OutputReadOnly, "Output file '%s' is read-only"},
    {MessageKey_NoMembersForCreate, "No archive members specified with --create"},
    {MessageKey_UnrecognizedOption, "Unrecognized option '%s%s'."},
    {MessageKey_MissingArgument, "Missing argument for option '%s'."},
    {MessageKey_ViaFileTooDeep, "Recursive via file inclusion depth of %d reached in file '%s'."},
    {MessageKey_ArgumentNotPermitted, "Argument '%s' not permitted for option '%s'."},
    {MessageKey_CouldNotOpenViaFile, "Could not open via file '%s'."},
    {MessageKey_ViaFileReadError, "Error when reading from via file '%s'."},
    {MessageKey_MalformedViaFile, "Malformed via file '%s'."},
    {MessageKey_ViaFileCommandTooLong, "Via file '%s' command too long for buffer."},
    {MessageKey_IntegerOverflow, "Overflow: '%s' will not fit in an integer."},
    {MessageKey_OldSyntax, "Old syntax, please use '%s%s%s%s'."},
    {MessageKey_DeprecatedOption, "Option '%s' is deprecated."},
    {MessageKey_CouldNotCloseViaFile, "Could not close via file '%s'."},
    {MessageKey_SelectableArguments, "The following arguments to option '%s' can be selected:\n"
                                     " %s"},
    {MessageKey_DeprecatedArgument, "Argument '%s' to option '%s' is deprecated"},
    {MessageKey_UnexpectedArgument, "Unexpected argument for option '%s%s'"},
    {MessageKey_ConcatenatedArgument, "Concatenated options cannot have arguments: -%s %s"},
    {MessageKey_NullInViaFile,
     "'\\0' character found in via file '%s' - possible binary file.  Aborting via file parse."},
    {MessageKey_PossibleMatches, "Possible matches for '%s' include '%s' and '%s'."},
    {MessageKey_RepeatedOption, "Option '-%s' repeated in concatenated options '-%s%s%s'."},
    {MessageKey_Banner, "Product: %s\n"
                        "Component: %s\n"
                        "Tool: %s [%08x]"},
    {MessageKey_BannerShort, "Component: %s Tool: %s [%08x]"},
    {MessageKey_EngineeringRelease, "Engineering release. Not for production use."},
    {MessageKey_BannerExtraText, "\n"
                                 "%s"},
    {MessageKey_BannerSupplier, "\n"
                                "Software supplied by: %s"},
    {MessageKey_BadMessageLocale, "Could not initialise message locale %s"},
    {MessageKey_GnuLocationColumn, "%s:%u:%u: "},
    {MessageKey_GnuLocationLine, "%s:%u: "},
    {MessageKey_GnuLocationFile, "%s: "},
    {MessageKey_GnuLocationNone, ""},
    {MessageKey_UnknownDiagnosticNumber, "Unknown diagnostic number %s"},
    {MessageKey_Summary, "%s: %d %s, %d %s"},
    {MessageKey_SummaryError, "error"},
    {MessageKey_SummaryErrors, "errors"},
    {MessageKey_SummaryWarning, "warning"},
    {MessageKey_SummaryWarnings, "warnings"},
    {MessageKey_IdeInternalFault, "Internal fault: "},
    {MessageKey_IdeFatalError, "Fatal error "},
    {MessageKey_IdeError, "error "},
    {MessageKey_IdeWarning, "warning "},
    {MessageKey_IdeRemark, ""},
    {MessageKey_PlainInternalFault, "Internal fault: "},
    {MessageKey_PlainFatalError, "Fatal error: "},
    {MessageKey_PlainError, "Error: "},
    {MessageKey_PlainWarning, "Warning: "},
    {MessageKey_PlainRemark, ""},
    {MessageKey_IdeLocationColumn, "%s(%u,%u) : "},
    {MessageKey_IdeLocationLine, "%s(%u) : "},
    {MessageKey_IdeLocationFile, "%s : "},
    {MessageKey_IdeLocationNone, "%s : "},
    {MessageKey_PlainLocationColumn, "\"%s\", line %u (column %u): "},
    {MessageKey_PlainLocationLine, "\"%s\", line %u: "},
    {MessageKey_PlainLocationFile, "\"%s\": "},
    {MessageKey_PlainLocationNone, ""},
};

} // namespace messages
