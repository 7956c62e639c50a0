// Turns what the archive library reports into diagnostics of the command.
#pragma once

#include "arlib/interface/error_handler.h"

namespace tomex {

class ArlibErrorHandler final : public arlib::ErrorHandler {
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
};

} // namespace tomex
