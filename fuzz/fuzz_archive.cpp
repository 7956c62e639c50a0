// Feeds any bytes to the archive reader, and what it makes of them to the writer.
//
// Whatever the bytes are, reading ends with an answer. What a forgiving handler lets pass must
// come out of the writer as an archive without a flaw, with the same members. The symbols of each
// archive that is read are asked for, and which variant of the first one a linker takes.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive.h"
#include "arlib/interface/archive_file_reader.h"
#include "arlib/interface/archive_file_writer.h"
#include "arlib/interface/symbol.h"
#include "arlib/interface/symbol_list.h"

namespace {

class CountingHandler final : public arlib::ErrorHandler {
public:
    explicit CountingHandler(bool goesOn) : m_GoesOn(goesOn) {}

    bool report(arlib::Archive*, arlib::ErrorKind, const char* text) override {
        last = text;
        ++reports;
        return m_GoesOn;
    }

    int reports = 0;
    std::string last;

private:
    bool m_GoesOn;
};

[[noreturn]] void fail(const char* what, const std::string& detail) {
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

struct SeenMember {
    std::string name;
    std::string contents;

    bool operator==(const SeenMember&) const = default;
};

std::vector<SeenMember> membersOf(arlib::Archive& archive) {
    std::vector<SeenMember> seen;
    for (arlib::ArchiveMember* member : archive.getMembers()) {
        if (member->isAuxiliary()) {
            continue;
        }
        if (!member->ensureContents()) {
            fail("contents cannot be read", member->getName());
        }
        const auto* bytes = reinterpret_cast<const char*>(member->getContents()->bytes());
        seen.push_back(
            {member->getName(), bytes == nullptr ? "" : std::string(bytes, member->getSize())});
        member->releaseContents();
    }
    return seen;
}

const std::string& folder() {
    static const std::string name = [] {
        // In memory where the host has that: a run is some ten file calls and little else.
        for (std::string pattern : {"/dev/shm/fuzz_archive.XXXXXX", "/tmp/fuzz_archive.XXXXXX"}) {
            if (::mkdtemp(pattern.data()) != nullptr) {
                return pattern;
            }
        }
        fail("no folder", "for the input");
    }();
    return name;
}

void writeInput(const std::string& name, const uint8_t* data, size_t size) {
    std::FILE* file = std::fopen(name.c_str(), "wb");
    if (file == nullptr || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
        fail("input cannot be written", name);
    }
}

// All symbols have names and members; a choice among the variants of one has its name, and is one
// of its symbols, each at most once.
void checkSymbols(arlib::Archive& archive) {
    for (const arlib::Symbol* symbol : archive.getSymbols()) {
        if (symbol->getName() == nullptr || symbol->getDefiningMember() == nullptr) {
            fail("a symbol lacks its name or member", archive.getFileName());
        }
    }
    if (archive.getSymbols().getSize() == 0) {
        return;
    }
    const std::string name = archive.getSymbols()[0]->getName();
    arlib::SymbolList all;
    archive.findSymbols(name.c_str(), all);
    arlib::SymbolList chosen;
    const bool isFound = archive.selectSymbolVariants(name.c_str(), attributes::FullAttr(), chosen);
    if (isFound != (chosen.getSize() != 0) || chosen.getSize() > all.getSize()) {
        fail("answer and choice differ", name);
    }
    for (uint32_t i = 0; i < chosen.getSize(); ++i) {
        if (chosen.get(i)->getName() != name) {
            fail("a variant of another symbol", name);
        }
    }
}

void checkRoundTrip(arlib::Archive& archive) {
    const std::vector<SeenMember> before = membersOf(archive);
    const std::string name = folder() + "/out.a";
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    archive.markSymbolTableStale();
    if (!arlib::ArchiveFileWriter().writeFile(name.c_str(), archive)) {
        fail("archive cannot be written", name);
    }
    CountingHandler strict(false);
    arlib::Archive again;
    again.setErrorHandler(&strict);
    if (!arlib::ArchiveFileReader().readFile(name.c_str(), again)) {
        fail("own archive cannot be read", strict.last);
    }
    checkSymbols(again);
    if (membersOf(again) != before) {
        fail("members changed", name);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    alloclib::startAllocators();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string name = folder() + "/in.a";
    writeInput(name, data, size);
    {
        CountingHandler strict(false);
        arlib::Archive archive;
        archive.setErrorHandler(&strict);
        const bool isRead = arlib::ArchiveFileReader().readFile(name.c_str(), archive);
        if (isRead != (strict.reports == 0)) {
            fail("answer and reports differ", strict.last);
        }
        if (isRead) {
            checkSymbols(archive);
        }
    }
    CountingHandler forgiving(true);
    arlib::Archive archive;
    archive.setErrorHandler(&forgiving);
    if (arlib::ArchiveFileReader().readFile(name.c_str(), archive)) {
        checkSymbols(archive);
        checkRoundTrip(archive);
    }
    return 0;
}
