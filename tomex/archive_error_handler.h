// Turns what the archive library reports into diagnostics of the command.
#pragma once

#include "arlib/interface/error_handler.h"

namespace tomex {

class ArlibErrorHandler : public arlib::ErrorHandler {
public:
    bool report(arlib::Archive* archive, arlib::ErrorKind kind, const char* text) override;
    bool outOfMemory(arlib::Archive* archive) override;
    bool readError(arlib::Archive* archive, const char* file, int error) override;
    bool seekError(arlib::Archive* archive, const char* file, int error) override;
    bool closeError(arlib::Archive* archive, const char* file, int error) override;
    bool deleteError(arlib::Archive* archive, const char* file, int error) override;
    bool writeError(arlib::Archive* archive, const char* file, int error) override;
    bool outputReadOnly(arlib::Archive* archive, const char* file) override;
    bool badMagic(arlib::Archive* archive) override;
    bool noBaseVariant(arlib::Archive* archive, arlib::MemberGroup group) override;
    bool multipleBaseVariants(arlib::Archive* archive, arlib::MemberGroup group) override;
    bool identicalVariants(arlib::Archive* archive, const char* suffix,
                           arlib::MemberGroup group) override;
    bool attributesNotDecorable(arlib::Archive* archive, arlib::ArchiveMember* member,
                                arlib::MemberGroup group) override;

    // Clashes with the attributes of the library, in words of their own and, with -v, pair by pair.
    // They stand behind the base's operations, which the archive library calls instead: so users
    // see the base's sentence until a caller knows this class.
    virtual bool libraryCommonAttributesClash(arlib::Archive* archive, arlib::MemberGroup group,
                                              const attributes::FullAttr& common);
    virtual bool libraryMemberAttributesClash(arlib::Archive* archive, arlib::ArchiveMember* member,
                                              const attributes::FullAttr& combined);
};

} // namespace tomex
