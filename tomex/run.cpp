#include "tomex/run.h"

#include <cerrno>
#include <span>
#include <string>
#include <string_view>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/archive_file_writer.h"
#include "attributes/interface/library_attribute_map.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_session.h"
#include "messages/interface/parse_reporter.h"
#include "messages/interface/report.h"
#include "platform/interface/file_query.h"
#include "platform/interface/folder_search.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/path_name.h"
#include "platform/interface/program_name.h"
#include "platform/interface/wildcard.h"
#include "tabledrivenparser/interface/parser.h"
#include "tomex/archive_error_handler.h"
#include "tomex/banner.h"
#include "tomex/command_report.h"
#include "tomex/command_state.h"
#include "tomex/edit_actions.h"
#include "tomex/exit_path.h"
#include "tomex/extract_actions.h"
#include "tomex/insert_action.h"
#include "tomex/member_selection.h"
#include "tomex/option_handlers.h"
#include "tomex/option_table.h"
#include "tomex/size_report.h"
#include "tomex/symbol_report.h"

namespace tomex {
namespace {

using tabledrivenparser::Parameters;
using tabledrivenparser::StrList;

// The letters of the actions, as the message about a missing action shows them.
constexpr char actionLetters[] = "dmpqrtx";

bool hasErrors() {
    return messages::errorCount() != 0;
}

BannerKind bannerOfVersion() {
    return commandState().versionShown ? BannerKind_Version : BannerKind_Usage;
}

// The first positional word, or null.
const char* archiveNameOf(const Parameters& parameters) {
    const StrList* words = parameters.textList(Slot_Positional);
    return words == nullptr || words->empty() ? nullptr : *words->begin();
}

// True if there is an archive to work on; otherwise the user has got the usage, the banner or a
// word on what is missing.
bool checkArchiveName(const char* archiveName, int argc, const char* toolName) {
    const CommandState& state = commandState();
    if (state.helpRequested || (argc < 2 && !state.forceCreate)) {
        printBanner(BannerKind_Usage, toolName);
        return false;
    }
    if (archiveName == nullptr || *archiveName == '\0') {
        if (!state.versionShown) {
            messages::report(messages::Severity_Error, messages::MessageKey_NoArchiveSpecified);
        }
        printBanner(bannerOfVersion(), toolName);
        return false;
    }
    return true;
}

// Puts the files that a word means on the list: all matches in the word's folder, in byte order.
// Only wildcards are looked up: a plain word stands for itself whether or not there is such a file.
void expandWord(const char* word, StrList& list) {
    const platform::OwnedPath path = platform::newPath(word, platform::hostPathStyle);
    const platform::OwnedText leaf = platform::leafName(*path);
    const std::string_view leafText = platform::viewOf(leaf);
    // The folder as the user wrote it: a rendered one may be another.
    std::string_view folder(word);
    folder.remove_suffix(leafText.size());
    platform::MatchIterator matches;
    const char* name = platform::hasWildcard(leafText)
                           ? platform::firstMatch(std::string(folder).c_str(), leaf.get(), matches)
                           : nullptr;
    if (name == nullptr) {
        list.append(word);
        return;
    }
    for (; name != nullptr; name = platform::nextMatch(matches)) {
        list.append(alloclib::copyString(alloclib::defaultRegion(), std::string(folder) + name));
    }
}

// Fills the file list from the words behind the archive's name. They are names of files only when
// something is inserted, and patterns of members otherwise.
void expandFileList(const Parameters& parameters) {
    const bool isInserting = parameters.boolValue(Slot_Create) ||
                             parameters.boolValue(Slot_Insert) || parameters.isSet(Slot_After) ||
                             parameters.isSet(Slot_Before);
    StrList& list = commandState().fileList;
    bool isArchiveName = true;
    for (const char* word : *parameters.textList(Slot_Positional)) {
        if (isArchiveName) {
            isArchiveName = false;
        } else if (isInserting) {
            expandWord(word, list);
        } else {
            list.append(word);
        }
    }
}

bool checkAction(const char* toolName) {
    const CommandState& state = commandState();
    if (state.action != Action_None || state.regenerateSymbolTable) {
        return true;
    }
    messages::report(messages::Severity_Error, messages::MessageKey_ActionRequired, actionLetters);
    printBanner(bannerOfVersion(), toolName);
    return false;
}

void prepareArchive(arlib::Archive& archive, arlib::ErrorHandler& handler,
                    ArchiveReadStatus& status, const char* archiveName) {
    const CommandState& state = commandState();
    archive.setErrorHandler(&handler);
    archive.setDebugSymbols(state.debugSymbols);
    archive.setUniqueSymbols(state.uniqueSymbols);
    archive.setBuildAttributesFromSection(state.attributesFromSection);
    archive.setFileName(archiveName);
    if (state.libraryAttributeMap != nullptr) {
        attributes::FullAttr promised;
        attributes::attributesForName(*state.libraryAttributeMap, archiveName, promised);
        archive.setLibraryAttributes(promised);
    }
    archive.setReadStatus(&status);
}

bool reportsSizes(uint32_t action) {
    return action == Action_Entries || action == Action_Sizes || action == Action_Summary;
}

// False if there is an archive that cannot be read. Under --create the old file is not looked at.
bool openArchive(arlib::Archive& archive, arlib::MemberSizes& sizes, ArchiveReadStatus& status,
                 const char* archiveName) {
    if (platform::isAbsent(archiveName)) {
        status.errorNumber = ENOENT;
        status.missing = true;
        return true;
    }
    if (commandState().forceCreate) {
        status.missing = true;
        return true;
    }
    return arlib::ArchiveFileReader().readFile(
        archiveName, archive, reportsSizes(commandState().action) ? &sizes : nullptr);
}

bool checkWritable(const arlib::Archive& archive) {
    if (commandState().accessLevel != AccessLevel_Modify || !archive.isReadOnly()) {
        return true;
    }
    messages::report(messages::Severity_Error, messages::MessageKey_OutputReadOnly,
                     archive.getFileName());
    return false;
}

bool findPosition(const arlib::Archive& archive, int64_t& position) {
    position = resolvePosition(archive);
    if (position == positionNotFound) {
        messages::report(messages::Severity_Error, messages::MessageKey_PositionNotFound,
                         commandState().positionName);
        return false;
    }
    return true;
}

void visitMembers(arlib::Archive& archive, const ArchiveReadStatus& status,
                  MemberOperation operation) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    forEachNamedMember(archive, commandState().fileList, operation);
}

void dispatch(arlib::Archive& archive, arlib::MemberSizes& sizes, ArchiveReadStatus& status,
              int64_t position) {
    switch (commandState().action) {
    case Action_None:
        return;
    case Action_Entries:
        reportSizes(archive, status, sizes, ReportFlag_Entries);
        return;
    case Action_Sizes:
        reportSizes(archive, status, sizes, ReportFlag_Sizes);
        return;
    case Action_Summary:
        reportSizes(archive, status, sizes, ReportFlag_Sizes | ReportFlag_Entries);
        return;
    case Action_SymbolTable:
        reportSymbols(archive, status);
        return;
    case Action_Insert:
        insertFiles(archive, status, position);
        return;
    case Action_Delete:
        deleteMembers(archive, status);
        return;
    case Action_Extract:
        visitMembers(archive, status, extractMember);
        return;
    case Action_Move:
        moveMembers(archive, status, position);
        return;
    case Action_Print:
        visitMembers(archive, status, printMember);
        return;
    case Action_List:
        visitMembers(archive, status, listMember);
        return;
    default:
        // The place by which users' reports know this fault.
        platform::checkFailed("tomex/tomex", 1727, "false");
    }
}

// Every run that may write makes the symbol table anew, whatever has changed.
void decideOnSymbolTable(arlib::Archive& archive) {
    const CommandState& state = commandState();
    if (state.noSymbolTable) {
        archive.setSymbolTableMode(arlib::SymbolTableMode_None);
        archive.markSymbolTableStale();
    } else if (state.accessLevel == AccessLevel_Modify) {
        archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
        archive.markSymbolTableStale();
    }
}

void writeArchive(arlib::Archive& archive, const ArchiveReadStatus& status,
                  const char* archiveName) {
    const CommandState& state = commandState();
    if (state.accessLevel < AccessLevel_Modify && !status.missing) {
        return;
    }
    if (status.missing && state.warnOnCreate) {
        messages::report(messages::Severity_Remark, messages::MessageKey_CreatingArchive,
                         archiveName);
    }
    arlib::ArchiveFileWriter().writeFile(archiveName, archive);
}

void workOnArchive(const char* archiveName) {
    ArlibErrorHandler handler;
    ArchiveReadStatus status;
    arlib::Archive archive;
    const ArchiveInUse inUse(archive);
    arlib::MemberSizes sizes;
    prepareArchive(archive, handler, status, archiveName);
    int64_t position = noPosition;
    if (!openArchive(archive, sizes, status, archiveName) || hasErrors() ||
        !checkWritable(archive) || !findPosition(archive, position)) {
        return;
    }
    dispatch(archive, sizes, status, position);
    archive.closeSources();
    decideOnSymbolTable(archive);
    // A run with an error never touches the archive file.
    if (!hasErrors()) {
        writeArchive(archive, status, archiveName);
    }
}

} // namespace

void run(int argc, char** argv) {
    resetCommandState();
    char toolName[platform::programNameSize];
    platform::programName(argc > 0 ? argv[0] : "", toolName);

    messages::ParseReporter reporter;
    TomexListener listener;
    tabledrivenparser::Parser parser(optionTable(), slotValues(), slotDescriptors(), reporter,
                                     &listener);
    const int wordCount = argc > 1 ? argc - 1 : 0;
    tabledrivenparser::WordArray words(
        std::span<const char* const>(argv + 1, static_cast<size_t>(wordCount)));
    parser.parseWords(words);
    const Parameters& parameters = parser.parameters();
    processOptions(parser, toolName);
    if (hasErrors()) {
        return;
    }
    const char* archiveName = archiveNameOf(parameters);
    if (!checkArchiveName(archiveName, argc, toolName)) {
        return;
    }
    expandFileList(parameters);
    if (hasErrors() || !checkAction(toolName)) {
        return;
    }
    workOnArchive(archiveName);
}

} // namespace tomex
