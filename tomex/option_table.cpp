#include "tomex/option_table.h"

#include <array>
#include <string_view>

#include "messages/interface/msg_lib_listener.h"

namespace tomex {
namespace {

using namespace tabledrivenparser;

constexpr uint8_t usual = OptionFlag_Public;
constexpr uint8_t oldStyle = OptionFlag_Public | OptionFlag_OldSyntax;

constexpr OptionRow positional(uint32_t slot) {
    return {.name = "", .parameter = slot, .argument = OptionArgument_Required, .flags = usual};
}

// An option that stands alone and stores a value in its slot.
constexpr OptionRow flag(const char* name, uint32_t slot, uint8_t flags, uint64_t value = 1) {
    return {.name = name,
            .parameter = slot,
            .argument = OptionArgument_None,
            .impliedValue = value,
            .flags = flags};
}

// An option with an argument.
constexpr OptionRow taking(const char* name, uint32_t slot, uint8_t flags, char separator = 0) {
    return {.name = name,
            .parameter = slot,
            .argument = OptionArgument_Required,
            .separator = separator,
            .flags = flags};
}

// Grouped by first letter from a to z, as the search for a row requires.
constexpr std::array optionRows = {
    positional(Slot_Positional),
    taking("a", Slot_After, oldStyle),
    taking("b", Slot_Before, oldStyle),
    flag("C", Slot_NoOverwrite, usual),
    flag("c", Slot_NoCreateWarning, usual),
    flag("create", Slot_Create, oldStyle),
    flag("d", Slot_Delete, oldStyle),
    taking("db_check", Slot_CheckLevel, usual),
    flag("debug_symbols", Slot_DebugSymbols, usual),
    taking("diag_error", Slot_DiagError, usual, ','),
    taking("diag_remark", Slot_DiagRemark, usual, ','),
    taking("diag_style", Slot_DiagStyle, usual),
    taking("diag_suppress", Slot_DiagSuppress, usual, ','),
    taking("diag_warning", Slot_DiagWarning, usual, ','),
    flag("entries", Slot_Entries, oldStyle),
    flag("h", Slot_Help, oldStyle),
    flag("help", Slot_Help, oldStyle),
    taking("i", Slot_Before, oldStyle),
    taking("libattrmap", Slot_LibraryAttributeMap, usual),
    flag("m", Slot_Move, oldStyle),
    taking("message_locale", Slot_MessageLocale, usual),
    flag("n", Slot_NoSymbolTable, oldStyle),
    flag("new_files_only", Slot_NewFilesOnly, oldStyle),
    flag("no_qeabi_buildattr", Slot_AttributesFromSection, usual, 0),
    flag("no_debug_symbols", Slot_DebugSymbols, usual, 0),
    taking("no_normalise", Slot_Normalise, usual),
    flag("no_unique_symbols", Slot_UniqueSymbols, usual, 0),
    taking("normalise", Slot_Normalise, usual),
    flag("p", Slot_Print, oldStyle),
    flag("q", Slot_Insert, oldStyle),
    flag("qeabi_buildattr", Slot_AttributesFromSection, usual),
    flag("r", Slot_Insert, oldStyle),
    flag("s", Slot_RegenerateSymbolTable, oldStyle),
    flag("show_cmdline", Slot_ShowCommandLine, usual),
    flag("sizes", Slot_Sizes, oldStyle),
    flag("T", Slot_TruncateNames, usual),
    flag("t", Slot_List, usual),
    flag("u", Slot_UpdateNotOlder, oldStyle),
    flag("unique_symbols", Slot_UniqueSymbols, usual),
    flag("V", Slot_Version, usual),
    flag("v", Slot_Verbose, usual),
    flag("version", Slot_Version, oldStyle),
    flag("version_number", Slot_VersionNumber, usual),
    taking("via", Slot_ViaFile, oldStyle),
    flag("vsn", Slot_Version, oldStyle),
    flag("x", Slot_Extract, oldStyle),
    flag("zs", Slot_SymbolReport, oldStyle),
    flag("zt", Slot_Summary, oldStyle),
};

constexpr std::array letterIndex = makeLetterIndex(optionRows);

constexpr OptionTable table = {
    .rowCount = static_cast<uint32_t>(optionRows.size()),
    .rows = optionRows.data(),
    .letterIndex = letterIndex.data(),
    .oldSyntaxPolicy = SyntaxPolicy_Warn,
    .deprecatedPolicy = SyntaxPolicy_Warn,
    .activeMask = 0xFFFFFFFF,
    .unknownOptionHandler = nullptr,
};

// The spelling in which a slot is shown where several rows of equal standing set it.
constexpr std::array plainForms = {"r", "b", "version", "help", "normalise"};

constexpr bool isPlainForm(std::string_view name) {
    for (const std::string_view plain : plainForms) {
        if (name == plain) {
            return true;
        }
    }
    return false;
}

// For each slot the rows that set it, ended by null: plain forms first, then table order.
constexpr size_t rowsOfSlotCapacity = 6;
using RowsOfSlot = std::array<const OptionRow*, rowsOfSlotCapacity>;

constexpr std::array<RowsOfSlot, slotCount> makeRowsOfSlots() {
    std::array<RowsOfSlot, slotCount> rowsOfSlots{};
    std::array<size_t, slotCount> used{};
    for (const bool plainPass : {true, false}) {
        for (const OptionRow& row : optionRows) {
            if (isPlainForm(row.name) == plainPass) {
                rowsOfSlots[row.parameter][used[row.parameter]++] = &row;
            }
        }
    }
    return rowsOfSlots;
}

constexpr std::array<RowsOfSlot, slotCount> rowsOfSlots = makeRowsOfSlots();

constexpr std::array styleRows = {
    EnumRow{.name = "list", .value = messages::DiagnosticStyle_List},
    EnumRow{.name = "qel", .value = messages::DiagnosticStyle_Qel},
    EnumRow{.name = "ide", .value = messages::DiagnosticStyle_Ide},
    EnumRow{.name = "devstudio", .value = messages::DiagnosticStyle_DevStudio},
    EnumRow{.name = "gnu", .value = messages::DiagnosticStyle_Gnu},
};

constexpr EnumTable styleTable = {static_cast<uint32_t>(styleRows.size()), styleRows.data()};

constexpr uint32_t typeOf(uint32_t slot) {
    switch (slot) {
    case Slot_Normalise:
        return ParameterType_INT;
    case Slot_After:
    case Slot_Before:
    case Slot_CheckLevel:
    case Slot_MessageLocale:
    case Slot_LibraryAttributeMap:
        return ParameterType_STRING;
    case Slot_DiagStyle:
        return ParameterType_ENUM;
    case Slot_DiagSuppress:
    case Slot_DiagError:
    case Slot_DiagWarning:
    case Slot_DiagRemark:
    case Slot_Positional:
        return ParameterType_STRING_VECTOR;
    case Slot_ViaFile:
        return ParameterType_VIA_FILE;
    default:
        return ParameterType_BOOLEAN;
    }
}

constexpr uint64_t defaultOf(uint32_t slot) {
    return slot == Slot_DiagStyle ? uint64_t{messages::DiagnosticStyle_Qel} : 0;
}

constexpr std::array<ParameterDescriptor, slotCount> makeDescriptors() {
    std::array<ParameterDescriptor, slotCount> descriptors{};
    for (uint32_t slot = 0; slot < slotCount; ++slot) {
        descriptors[slot] = {.type = typeOf(slot),
                             .defaultKind = DefaultKind_Value,
                             .defaultValue = defaultOf(slot),
                             .constraints = slot == Slot_DiagStyle ? &styleTable : nullptr,
                             .rows = rowsOfSlots[slot].data()};
    }
    return descriptors;
}

constexpr std::array<ParameterDescriptor, slotCount> descriptors = makeDescriptors();

constexpr std::array<ParameterValue, slotCount> makeValues() {
    std::array<ParameterValue, slotCount> values{};
    for (uint32_t slot = 0; slot < slotCount; ++slot) {
        values[slot].value = defaultOf(slot);
    }
    return values;
}

constinit std::array<ParameterValue, slotCount> values = makeValues();

} // namespace

const OptionTable& optionTable() {
    return table;
}

std::span<const ParameterDescriptor> slotDescriptors() {
    return descriptors;
}

std::span<ParameterValue> slotValues() {
    return values;
}

} // namespace tomex
