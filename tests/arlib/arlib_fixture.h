// What the tests of the archive library share: allocators for each test, a folder, and a handler
// that keeps what it is told.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/archive_file_writer.h"
#include "arlib/interface/symbol.h"
#include "tests/support/archive_builder.h"
#include "tests/support/archive_parser.h"
#include "tests/support/scratch_folder.h"

namespace arlibtest {

// Keeps "kind: text" of each report and answers what it is set to.
class KeepingHandler final : public arlib::ErrorHandler {
public:
    bool report(arlib::Archive*, arlib::ErrorKind kind, const char* text) override {
        reports.push_back(std::to_string(kind) + ": " + text);
        return goesOn;
    }

    bool goesOn = false;
    std::vector<std::string> reports;
};

class ArlibTest : public testing::Test {
protected:
    void SetUp() override { alloclib::startAllocators(); }
    // Fails loudly if a test's archive is still alive.
    void TearDown() override { alloclib::finishAllocators(); }

    std::string pathOf(const std::string& name) const { return folder.pathOf(name); }

    bool read(const std::string& name, arlib::Archive& archive) {
        archive.setErrorHandler(&handler);
        return arlib::ArchiveFileReader().readFile(pathOf(name).c_str(), archive);
    }
    bool write(const std::string& name, arlib::Archive& archive) {
        archive.setErrorHandler(&handler);
        return arlib::ArchiveFileWriter().writeFile(pathOf(name).c_str(), archive);
    }

    testsupport::ScratchFolder folder;
    KeepingHandler handler;
};

using Names = std::vector<std::string>;

inline Names namesOf(const arlib::Archive& archive) {
    Names names;
    for (const arlib::ArchiveMember* member : archive.getMembers()) {
        names.push_back(member->isAuxiliary() ? (member == archive.getSymbolTable() ? "/" : "//")
                                              : member->getName());
    }
    return names;
}

inline std::string contentsOf(arlib::ArchiveMember* member) {
    EXPECT_TRUE(member->ensureContents());
    const auto* bytes = reinterpret_cast<const char*>(member->getContents()->bytes());
    return std::string(bytes, member->getContents()->size());
}

inline arlib::ArchiveMember* add(arlib::Archive& archive, const char* name,
                                 const std::string& contents = "") {
    arlib::ArchiveMember* member = archive.addMember(name, 1, 2, 3, 0100644);
    member->setContents(contents.data(), static_cast<uint32_t>(contents.size()));
    return member;
}

} // namespace arlibtest
