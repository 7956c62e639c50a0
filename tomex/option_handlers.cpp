#include "tomex/option_handlers.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "alloclib/interface/default_region.h"
#include "attributes/interface/library_attribute_map.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"
#include "messages/interface/stream_switch.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/tool_identity.h"
#include "tomex/command_state.h"
#include "tomex/option_table.h"
#include "tomex/shown_command_line.h"

namespace tomex {
namespace {

using tabledrivenparser::Parameters;

// What an option that starts an action asks for.
struct ActionOption {
    Slot slot;
    Action action;
    AccessLevel level;
};

void setAction(Action value) {
    TOMEX_CHECK_TEXT(value != Action_None, "value != 0");
    CommandState& state = commandState();
    if (state.action != Action_None && state.action != value) {
        messages::report(messages::Severity_Error, messages::MessageKey_OneActionOnly);
        return;
    }
    state.action = value;
}

void raiseAccessLevel(AccessLevel level) {
    int32_t& present = commandState().accessLevel;
    present = std::max<int32_t>(present, level);
}

void takeAction(const Parameters& parameters, const ActionOption& option) {
    if (parameters.boolValue(option.slot)) {
        setAction(option.action);
        raiseAccessLevel(option.level);
    }
}

[[noreturn]] void printVersionNumberAndLeave() {
    {
        const messages::SavedOutSwitch toStandardOutput;
        messages::printText("%s\n", platform::versionNumberText());
    }
    std::exit(messages::finalStatus(0));
}

void takeGeneralOptions(const Parameters& parameters, CommandState& state) {
    state.helpRequested = parameters.boolValue(Slot_Help);
    state.versionShown = parameters.boolValue(Slot_Version);
    if (parameters.boolValue(Slot_VersionNumber)) {
        printVersionNumberAndLeave();
    }
    state.verbose = parameters.boolValue(Slot_Verbose);
    state.warnOnCreate = !parameters.boolValue(Slot_NoCreateWarning);
}

void takeActions(const Parameters& parameters, CommandState& state) {
    if (parameters.boolValue(Slot_Create)) {
        takeAction(parameters, {Slot_Create, Action_Insert, AccessLevel_Modify});
        state.forceCreate = true;
        state.warnOnCreate = false;
    }
    takeAction(parameters, {Slot_Delete, Action_Delete, AccessLevel_Modify});
    takeAction(parameters, {Slot_Entries, Action_Entries, AccessLevel_Contents});
    takeAction(parameters, {Slot_Extract, Action_Extract, AccessLevel_Contents});
    state.overwriteOnExtract = !parameters.boolValue(Slot_NoOverwrite);
    takeAction(parameters, {Slot_Move, Action_Move, AccessLevel_Modify});
    takeAction(parameters, {Slot_Print, Action_Print, AccessLevel_Contents});
    takeAction(parameters, {Slot_List, Action_List,
                            state.verbose ? AccessLevel_Contents : AccessLevel_TableOfContents});
    if (parameters.boolValue(Slot_RegenerateSymbolTable)) {
        state.regenerateSymbolTable = true;
        raiseAccessLevel(AccessLevel_Modify);
    }
    takeAction(parameters, {Slot_Insert, Action_Insert, AccessLevel_Modify});
    takeAction(parameters, {Slot_Sizes, Action_Sizes, AccessLevel_Contents});
    takeAction(parameters, {Slot_Summary, Action_Summary, AccessLevel_Contents});
    takeAction(parameters, {Slot_SymbolReport, Action_SymbolTable, AccessLevel_Contents});
}

void takePosition(const Parameters& parameters, CommandState& state) {
    if (const char* before = parameters.textValue(Slot_Before); before != nullptr) {
        state.positionKind = PositionKind_Before;
        state.positionName = before;
    } else if (const char* after = parameters.textValue(Slot_After); after != nullptr) {
        state.positionKind = PositionKind_After;
        state.positionName = after;
    }
}

const attributes::LibraryAttributeMap* newLibraryAttributeMap(const char* fileName) {
    using attributes::LibraryAttributeMap;
    alloclib::Region& region = alloclib::defaultRegion();
    void* memory = region.Alloc(sizeof(LibraryAttributeMap), alignof(LibraryAttributeMap), nullptr);
    auto* map = new (memory) LibraryAttributeMap(&region);
    attributes::loadLibraryAttributeMap(*map, fileName);
    return map;
}

void takeModifiers(const Parameters& parameters, CommandState& state) {
    if (parameters.boolValue(Slot_NoSymbolTable)) {
        state.noSymbolTable = true;
        raiseAccessLevel(AccessLevel_Modify);
    }
    state.truncateNames = parameters.boolValue(Slot_TruncateNames);
    if (parameters.boolValue(Slot_UpdateNotOlder)) {
        state.updateMode = UpdateMode_NotOlder;
    }
    if (parameters.boolValue(Slot_NewFilesOnly)) {
        state.updateMode = UpdateMode_Newer;
    }
    if (const char* map = parameters.textValue(Slot_LibraryAttributeMap); map != nullptr) {
        state.libraryAttributeMap = newLibraryAttributeMap(map);
    }
    if (const int32_t date = parameters.intValue(Slot_Normalise); date != 0) {
        state.normaliseRequested = true;
        state.normaliseTime = date;
    }
    state.debugSymbols = parameters.boolValue(Slot_DebugSymbols);
    state.uniqueSymbols = parameters.boolValue(Slot_UniqueSymbols);
    state.attributesFromSection = parameters.boolValue(Slot_AttributesFromSection);
}

} // namespace

TomexListener::TomexListener()
    : m_LocaleListener(messages::libReportFatal), m_MsgLibListener({.style = Slot_DiagStyle,
                                                                    .suppress = Slot_DiagSuppress,
                                                                    .error = Slot_DiagError,
                                                                    .warning = Slot_DiagWarning,
                                                                    .remark = Slot_DiagRemark}) {
}

bool TomexListener::parameterSet(Parameters& parameters, uint32_t parameter, uint64_t value) {
    switch (parameter) {
    case Slot_DiagStyle:
    case Slot_DiagSuppress:
    case Slot_DiagError:
    case Slot_DiagWarning:
    case Slot_DiagRemark:
        return m_MsgLibListener.parameterSet(parameters, parameter, value);
    case Slot_MessageLocale:
        return m_LocaleListener.parameterSet(parameters, parameter, value);
    default:
        return false;
    }
}

void processOptions(tabledrivenparser::Parser& parser, const char* toolName) {
    const Parameters& parameters = parser.parameters();
    CommandState& state = commandState();
    if (parameters.boolValue(Slot_ShowCommandLine)) {
        showCommandLine(parser, toolName);
    }
    takeGeneralOptions(parameters, state);
    takeActions(parameters, state);
    takePosition(parameters, state);
    takeModifiers(parameters, state);
    platform::setCheckLevel(parameters.textValue(Slot_CheckLevel));
}

} // namespace tomex
