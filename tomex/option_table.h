// The options of the command: which words there are, and the slot in which each leaves its value.
#pragma once

#include <cstdint>
#include <span>

#include "tabledrivenparser/interface/option_table.h"
#include "tabledrivenparser/interface/parameters.h"

namespace tomex {

// The result slots. Options that share one overrule each other: the last one given counts.
enum Slot : uint32_t {
    Slot_Create = 0,
    Slot_Help = 1,
    Slot_ShowCommandLine = 2,
    Slot_Version = 3,
    Slot_Sizes = 4,
    Slot_Entries = 5,
    Slot_SymbolReport = 6,
    Slot_Summary = 7,
    Slot_NoCreateWarning = 8,
    Slot_NoOverwrite = 9,
    Slot_Delete = 10,
    Slot_Move = 11,
    Slot_NoSymbolTable = 12,
    Slot_Print = 13,
    Slot_Insert = 14,
    Slot_RegenerateSymbolTable = 15,
    Slot_List = 16,
    Slot_TruncateNames = 17,
    Slot_UpdateNotOlder = 18,
    Slot_Verbose = 19,
    Slot_Extract = 20,
    Slot_NewFilesOnly = 21,
    Slot_DebugSymbols = 22,
    Slot_UniqueSymbols = 23,
    Slot_Normalise = 24,
    Slot_AttributesFromSection = 25,
    Slot_After = 26,
    Slot_Before = 27,
    Slot_CheckLevel = 28,
    Slot_DiagStyle = 29,
    Slot_DiagSuppress = 30,
    Slot_DiagError = 31,
    Slot_DiagWarning = 32,
    Slot_DiagRemark = 33,
    Slot_VersionNumber = 34,
    Slot_MessageLocale = 35,
    Slot_Positional = 36,
    Slot_LibraryAttributeMap = 37,
    Slot_ViaFile = 48,

    slotCount = 50, // the slots between are spare
};

const tabledrivenparser::OptionTable& optionTable();

// The slots' types and rows, and their values, which parsing writes.
std::span<const tabledrivenparser::ParameterDescriptor> slotDescriptors();
std::span<tabledrivenparser::ParameterValue> slotValues();

} // namespace tomex
