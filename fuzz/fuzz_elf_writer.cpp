// Feeds any bytes to the ELF reader, and lets the library work on what was read: it is validated,
// laid out and written, read again, changed in a way that cannot be written, changed back, cut down
// and written once more.
//
// A handler that lets the read go on wherever it can gets modules of damaged files. Whatever they
// say, nothing here may crash. A file that neither the reader nor validation had a word on must be
// one that the reader takes again once it was written. Of others, and of modules that were cut down
// at will, this is not asked: tables that lie on each other overwrite each other.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "alloclib/interface/default_region.h"
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/elf_object_module_writer.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/prune_criteria.h"
#include "elfext/interface/relocation.h"
#include "tests/support/module_walk.h"

namespace {

// Lets everything pass that can be let pass.
class LenientHandler final : public elfext::ErrorHandler {
public:
    bool report(elfext::ObjectModule* /*objectModule*/, elfext::Severity severity,
                const char* message) override {
        ++reports;
        last = message;
        return severity != elfext::Severity_Fatal;
    }

    uint64_t reports = 0;
    std::string last;
};

// Wants every object gone whose turn it is.
class TurnCriteria final : public elfext::PruneCriteria {
public:
    explicit TurnCriteria(uint32_t turn) : m_Turn(turn) {}

    bool matchesSection(const elfext::Section*) override { return isTurn(); }
    bool matchesSegment(const elfext::Segment*) override { return isTurn(); }
    bool matchesSymbol(const elfext::Symbol*) override { return isTurn(); }
    bool matchesRelocation(const elfext::Relocation*) override { return isTurn(); }
    bool matchesGroup(const elfext::Group*) override { return isTurn(); }

private:
    bool isTurn() { return ++m_Count % m_Turn == 0; }

    uint32_t m_Turn;
    uint32_t m_Count = 0;
};

// Each rule speaks of a part of the file no more than a few times.
void validate(elfext::ObjectModule& module, LenientHandler& handler, size_t size) {
    const uint64_t before = handler.reports;
    module.validate();
    if (handler.reports - before > 1000 + 16 * uint64_t{size}) {
        std::fprintf(stderr, "%llu reports for %zu bytes\n",
                     static_cast<unsigned long long>(handler.reports - before), size);
        std::abort();
    }
}

// Writes the module and reads what was written.
void writeAndRead(elfext::ObjectModule& module, bool isSound) {
    std::unique_ptr<uint8_t[]> image;
    uint64_t size = 0;
    const bool isWritten = elfext::writeElfBuffer(&module, &image, &size);
    LenientHandler handler;
    elfext::ObjectModule again;
    again.setErrorHandler(&handler);
    if (!isWritten) {
        return;
    }
    if (elfext::readElfBuffer("written", image.get(), size, &again, nullptr)) {
        testsupport::walkModule(again);
        validate(again, handler, size);
    } else if (isSound) {
        std::fprintf(stderr, "a sound module was written and cannot be read: %s\n",
                     handler.last.c_str());
        std::abort();
    }
}

void addLibraries(elfext::ObjectModule& module, elfext::ManualPruneCriteria& added) {
    for (const size_t length : {size_t{1}, size_t{64}, size_t{4096}}) {
        added.addNeededLibrary(module.addNeededLibrary(std::string(length, 'n').c_str()));
    }
}

void addPreemptions(elfext::ObjectModule& module, elfext::ManualPruneCriteria& added) {
    for (const char* const name : {"f", "g"}) {
        elfext::Preemption* const preemption = module.addPreemption(name, "n");
        preemption->addPreemptedDll("n");
        added.addPreemption(preemption);
    }
}

// One more like the first of each section that has any for the loader.
void addRelocations(elfext::ObjectModule& module, elfext::ManualPruneCriteria& added) {
    for (elfext::Section* const section : module.getSections()) {
        if (section->getDynamicRelocationSections().getSize() == 0 ||
            section->getRelocations().getSize() == 0) {
            continue;
        }
        const elfext::Relocation& first = *section->getRelocations()[0];
        elfext::Section::RelocationAsRead relocation;
        relocation.m_Type = first.getType();
        relocation.m_TableNumber = first.getTableNumber();
        relocation.m_HasAddend = first.hasAddend();
        relocation.m_IsDynamic = first.isDynamic();
        section->addRelocationAsRead(relocation);
        added.addRelocation(section->getRelocations()[section->getRelocations().getSize() - 1]);
    }
    module.markChanged();
}

// Gives a module that could be written more texts and entries than a loaded image has room for,
// and takes them back. Then it can be written again.
void growAndShrink(elfext::ObjectModule& module) {
    std::unique_ptr<uint8_t[]> image;
    uint64_t size = 0;
    for (const auto add : {addLibraries, addPreemptions, addRelocations}) {
        if (module.getDynamicSections().getSize() == 0 ||
            !elfext::writeElfBuffer(&module, &image, &size)) {
            return;
        }
        elfext::ManualPruneCriteria added;
        add(module, added);
        const bool isRefused = !elfext::writeElfBuffer(&module, &image, &size);
        module.prune(added);
        if (isRefused && !elfext::writeElfBuffer(&module, &image, &size)) {
            std::fprintf(stderr, "what was written cannot be written again\n");
            std::abort();
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    alloclib::startAllocators();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    LenientHandler handler;
    elfext::ObjectModule module;
    module.setErrorHandler(&handler);
    if (size == 0 || !elfext::readElfBuffer("input", data, size, &module, nullptr)) {
        return 0;
    }
    // As it was read, with its own tables, and then with those that are made for it.
    module.setAuxiliarySectionsUpToDate(true);
    const uint64_t ofReading = handler.reports;
    validate(module, handler, size);
    module.markChanged();
    handler.reports = ofReading;
    validate(module, handler, size);
    writeAndRead(module, handler.reports == 0);
    growAndShrink(module);
    TurnCriteria criteria(2 + data[size / 2] % 5);
    module.prune(criteria);
    module.imposeSectionOrder();
    validate(module, handler, size);
    writeAndRead(module, false);
    return 0;
}
