// The keys of all texts that the tool can report, by name.
//
// A key is a contract with users' scripts: the letter and number that it prints as (in the comment
// beside each) are quoted in build logs and in --diag_ options. So a key never changes and is
// never given to another text; one that lost its caller stays in its place. The texts stand in
// the catalogues, one row a key and a language.
#pragma once

#include <cstdint>

namespace messages {

// Diagnostics of the command.
enum CommandMessage : uint32_t {
    MessageKey_OutOfMemory = 20031754,                  // L6800U
    MessageKey_NotArchiveFormat = 20032166,             // L6826E
    MessageKey_MalformedArchive = 20032214,             // L6829E
    MessageKey_WriteError = 20032230,                   // L6830E
    MessageKey_MemberNotPresent = 20032246,             // L6831E
    MessageKey_ArchiveNotFound = 20032262,              // L6832E
    MessageKey_FileDoesNotExist = 20032278,             // L6833E
    MessageKey_ReadError = 20032310,                    // L6835E
    MessageKey_FileAlreadyExists = 20032326,            // L6836E
    MessageKey_NoArchiveSpecified = 20032358,           // L6838E
    MessageKey_ActionRequired = 20032374,               // L6839E
    MessageKey_OneActionOnly = 20032390,                // L6840E
    MessageKey_PositionNotFound = 20032406,             // L6841E
    MessageKey_FileNameTooLong = 20032422,              // L6842E
    MessageKey_ExtractWriteError = 20032438,            // L6843E
    MessageKey_NoSymbolTable = 20032898,                // L6872I
    MessageKey_CreatingArchive = 20032914,              // L6873I
    MessageKey_NoBaseVariant = 20032932,                // L6874W
    MessageKey_NonElfObject = 20032948,                 // L6875W
    MessageKey_MultipleBaseVariants = 20032964,         // L6876W
    MessageKey_AttributesNotDecorable = 20032980,       // L6877W
    MessageKey_CommonAttributesIncompatible = 20032996, // L6878W
    MessageKey_MemberAttributesIncompatible = 20033012, // L6879W
    MessageKey_IdenticalVariants = 20033028,            // L6880W
    MessageKey_MalformedArchiveWarning = 20034532,      // L6974W
    MessageKey_SeekError = 20034566,                    // L6976E
    MessageKey_CloseError = 20034582,                   // L6977E
    MessageKey_DeleteError = 20034598,                  // L6978E
    MessageKey_OutputReadOnly = 20034614,               // L6979E
    MessageKey_NoMembersForCreate = 20034630,           // L6980E
};

// The usage text, in the order in which it is printed.
enum UsageMessage : uint32_t {
    MessageKey_UsageFormat = 20033042,       // L6881I
    MessageKey_UsageWildcards = 20033058,    // L6882I
    MessageKey_UsageEditOptions = 20033074,  // L6883I
    MessageKey_UsageOtherOptions = 20033090, // L6884I
    MessageKey_UsageExamples = 20033106,     // L6885I
};

// Lines of listings and reports, printed on the standard output with no prefix.
enum ReportLineMessage : uint32_t {
    MessageKey_ListName = 20034146,           // L6950I
    MessageKey_ListVerbose = 20034162,        // L6951I
    MessageKey_ListSymbol = 20034178,         // L6952I
    MessageKey_ExtractedMember = 20034194,    // L6953I
    MessageKey_PrintedMember = 20034210,      // L6954I
    MessageKey_ReplacedMember = 20034226,     // L6955I
    MessageKey_AddedMember = 20034242,        // L6956I
    MessageKey_MovedMember = 20034258,        // L6957I
    MessageKey_DeletedMember = 20034274,      // L6958I
    MessageKey_ListWithAttributes = 20034418, // L6967I
    MessageKey_SizesRow = 20034434,           // L6968I
    MessageKey_SizesHeading = 20034450,       // L6969I
    MessageKey_NoEntryPoints = 20034466,      // L6970I
    MessageKey_EntryPoint = 20034482,         // L6971I
};

// Messages of the command that nothing raises any more, or not yet.
enum UncalledMessage : uint32_t {
    MessageKey_CannotOpenFile = 20032294,           // L6834E
    MessageKey_UnrecognizedLetterOption = 20032342, // L6837E
    MessageKey_MissingOptionArgument = 20032454,    // L6844E
    MessageKey_CannotDeleteVariant = 20032470,      // L6845E
    MessageKey_NoCompatibleBase = 20032486,         // L6846E
    MessageKey_IncompatibleAttributes = 20032502,   // L6847E
    MessageKey_CannotReplaceWithVariant = 20032518, // L6848E
    MessageKey_UnrecognizedLongOption = 20032534,   // L6849E
    MessageKey_ContainsNonElfObject = 20032550,     // L6850E
    MessageKey_BadErrorMessageList = 20032566,      // L6851E
    MessageKey_EmptyViaFile = 20032868,             // L6870W
    MessageKey_AttributesAgainstName = 20032884,    // L6871W
    MessageKey_UnknownDiagnosticValue = 20034500,   // L6972W
    MessageKey_ReadingMember = 20034518,            // L6973E
    MessageKey_MalformedSymbolTable = 20034548,     // L6975W
};

// Messages of the command-line parser and its via files.
enum ParserMessage : uint32_t {
    MessageKey_UnrecognizedOption = 23131082,    // X3900U
    MessageKey_MissingArgument = 23131098,       // X3901U
    MessageKey_ViaFileTooDeep = 23131114,        // X3902U
    MessageKey_ArgumentNotPermitted = 23131130,  // X3903U
    MessageKey_CouldNotOpenViaFile = 23131146,   // X3904U
    MessageKey_ViaFileReadError = 23131162,      // X3905U
    MessageKey_MalformedViaFile = 23131178,      // X3906U
    MessageKey_ViaFileCommandTooLong = 23131194, // X3907U
    MessageKey_IntegerOverflow = 23131210,       // X3908U
    MessageKey_OldSyntax = 23131236,             // X3910W
    MessageKey_DeprecatedOption = 23131268,      // X3912W
    MessageKey_CouldNotCloseViaFile = 23131284,  // X3913W
    MessageKey_SelectableArguments = 23131298,   // X3914I
    MessageKey_DeprecatedArgument = 23131316,    // X3915W
    MessageKey_UnexpectedArgument = 23131338,    // X3916U
    MessageKey_ConcatenatedArgument = 23131354,  // X3917U
    MessageKey_NullInViaFile = 23131370,         // X3918U
    MessageKey_PossibleMatches = 23131378,       // X3919I
    MessageKey_RepeatedOption = 23131396,        // X3920W
};

// Banner of the tool.
enum BannerMessage : uint32_t {
    MessageKey_Banner = 23223906,             // X9702I
    MessageKey_BannerShort = 23223922,        // X9703I
    MessageKey_EngineeringRelease = 23223938, // X9704I
    MessageKey_BannerExtraText = 23223954,    // X9705I
    MessageKey_BannerSupplier = 23223970,     // X9706I
};

// What the message library says itself.
enum MessageLibraryMessage : uint32_t {
    MessageKey_BadMessageLocale = 23225158,        // X9780E
    MessageKey_UnknownDiagnosticNumber = 23228066, // X9962I
    MessageKey_Summary = 23228178,                 // X9969I
    MessageKey_SummaryError = 23228194,            // X9970I
    MessageKey_SummaryErrors = 23228210,           // X9971I
    MessageKey_SummaryWarning = 23228226,          // X9972I
    MessageKey_SummaryWarnings = 23228242,         // X9973I
};

// Prefixes of a diagnostic: where it is, by style and by how much of the place is known.
enum LocationMessage : uint32_t {
    MessageKey_GnuLocationColumn = 23227970,   // X9956I
    MessageKey_GnuLocationLine = 23227986,     // X9957I
    MessageKey_GnuLocationFile = 23228002,     // X9958I
    MessageKey_GnuLocationNone = 23228018,     // X9959I
    MessageKey_IdeLocationColumn = 23228546,   // X9992I
    MessageKey_IdeLocationLine = 23228562,     // X9993I
    MessageKey_IdeLocationFile = 23228578,     // X9994I
    MessageKey_IdeLocationNone = 23228594,     // X9995I
    MessageKey_PlainLocationColumn = 23228610, // X9996I
    MessageKey_PlainLocationLine = 23228626,   // X9997I
    MessageKey_PlainLocationFile = 23228642,   // X9998I
    MessageKey_PlainLocationNone = 23228658,   // X9999I
};

// Prefixes of a diagnostic: how bad it is.
enum SeverityWordMessage : uint32_t {
    MessageKey_IdeInternalFault = 23228274,   // X9975I
    MessageKey_IdeFatalError = 23228290,      // X9976I
    MessageKey_IdeError = 23228306,           // X9977I
    MessageKey_IdeWarning = 23228322,         // X9978I
    MessageKey_IdeRemark = 23228338,          // X9979I
    MessageKey_PlainInternalFault = 23228434, // X9985I
    MessageKey_PlainFatalError = 23228450,    // X9986I
    MessageKey_PlainError = 23228466,         // X9987I
    MessageKey_PlainWarning = 23228482,       // X9988I
    MessageKey_PlainRemark = 23228498,        // X9989I
};

} // namespace messages
