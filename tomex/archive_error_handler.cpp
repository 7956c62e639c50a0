#include "tomex/archive_error_handler.h"

#include <cstring>

#include "arlib/interface/archive.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/report.h"
#include "tomex/attribute_clashes.h"
#include "tomex/command_report.h"

namespace tomex {
namespace {

using messages::Severity_Error;
using messages::Severity_Fatal;
using messages::Severity_Warning;

// File failures name the archive that the user asked for, not the temporary file at hand.
bool reportFileError(uint32_t key, const arlib::Archive& archive, int error) {
    messages::report(Severity_Error, key, archive.getFileName(), std::strerror(error));
    return false;
}

// With -v, the members that a warning is about.
void listGroup(arlib::MemberGroup group) {
    if (!commandState().verbose) {
        return;
    }
    uint32_t index = 0;
    for (const arlib::ArchiveMember* member : group) {
        reportText(" * %s [%u] : %s", group[0]->getName(), index, member->getName());
        ++index;
    }
}

// With -v, what clashes.
void listClashes(const attributes::FullAttr& attributes) {
    if (commandState().verbose) {
        listAttributeClashes(attributes);
    }
}

} // namespace

bool ArlibErrorHandler::report(arlib::Archive* archive, arlib::ErrorKind kind, const char* text) {
    const bool isFatal = kind == arlib::ErrorKind_Fatal;
    messages::report(isFatal ? Severity_Error : Severity_Warning,
                     isFatal ? messages::MessageKey_MalformedArchive
                             : messages::MessageKey_MalformedArchiveWarning,
                     archive->getFileName(), text);
    return !isFatal;
}

bool ArlibErrorHandler::outOfMemory(arlib::Archive*) {
    messages::report(Severity_Fatal, messages::MessageKey_OutOfMemory);
    return false;
}

bool ArlibErrorHandler::readError(arlib::Archive* archive, const char*, int error) {
    return reportFileError(messages::MessageKey_ReadError, *archive, error);
}

bool ArlibErrorHandler::seekError(arlib::Archive* archive, const char*, int error) {
    return reportFileError(messages::MessageKey_SeekError, *archive, error);
}

bool ArlibErrorHandler::closeError(arlib::Archive* archive, const char*, int error) {
    return reportFileError(messages::MessageKey_CloseError, *archive, error);
}

bool ArlibErrorHandler::deleteError(arlib::Archive* archive, const char*, int error) {
    return reportFileError(messages::MessageKey_DeleteError, *archive, error);
}

bool ArlibErrorHandler::writeError(arlib::Archive* archive, const char*, int error) {
    return reportFileError(messages::MessageKey_WriteError, *archive, error);
}

bool ArlibErrorHandler::outputReadOnly(arlib::Archive* archive, const char*) {
    messages::report(Severity_Error, messages::MessageKey_OutputReadOnly, archive->getFileName());
    return false;
}

bool ArlibErrorHandler::badMagic(arlib::Archive* archive) {
    messages::report(Severity_Error, messages::MessageKey_NotArchiveFormat, archive->getFileName());
    return false;
}

bool ArlibErrorHandler::noBaseVariant(arlib::Archive*, arlib::MemberGroup group) {
    messages::report(Severity_Warning, messages::MessageKey_NoBaseVariant, group[0]->getName());
    listGroup(group);
    return true;
}

bool ArlibErrorHandler::multipleBaseVariants(arlib::Archive*, arlib::MemberGroup group) {
    messages::report(Severity_Warning, messages::MessageKey_MultipleBaseVariants,
                     group[0]->getName());
    listGroup(group);
    return true;
}

bool ArlibErrorHandler::identicalVariants(arlib::Archive*, const char* suffix,
                                          arlib::MemberGroup group) {
    messages::report(Severity_Warning, messages::MessageKey_IdenticalVariants, group[0]->getName(),
                     suffix);
    listGroup(group);
    return true;
}

bool ArlibErrorHandler::attributesNotDecorable(arlib::Archive*, arlib::ArchiveMember* member,
                                               arlib::MemberGroup group) {
    messages::report(Severity_Warning, messages::MessageKey_AttributesNotDecorable,
                     member->getName(), group[0]->getName());
    listGroup(group);
    return true;
}

bool ArlibErrorHandler::libraryCommonAttributesClash(arlib::Archive*, arlib::MemberGroup group,
                                                     const attributes::FullAttr& common) {
    messages::report(Severity_Warning, messages::MessageKey_CommonAttributesIncompatible,
                     group[0]->getName());
    listClashes(common);
    return true;
}

bool ArlibErrorHandler::libraryMemberAttributesClash(arlib::Archive*, arlib::ArchiveMember* member,
                                                     const attributes::FullAttr& combined) {
    messages::report(Severity_Warning, messages::MessageKey_MemberAttributesIncompatible,
                     member->getName());
    listClashes(combined);
    return true;
}

} // namespace tomex
