// Contents of a section that stay in the file until somebody asks for them.
//
// All deferred sections of a module share one open file, which counts them and is closed when the
// last has been read or forgotten.
#pragma once

#include "elfext/interface/elf_records.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <cstdio>

namespace elfext {

class Section;

// An open file that closes itself. It lives in the module's object region; whoever holds one of
// the counted references must give it back with `release`.
class ReferenceCountedFile {
public:
    // Takes `file`, which is open for reading, over. There are no references yet.
    explicit ReferenceCountedFile(std::FILE* file) : m_File(file) {}
    ReferenceCountedFile(const ReferenceCountedFile&) = delete;
    ReferenceCountedFile& operator=(const ReferenceCountedFile&) = delete;

    // Null once the file has been closed.
    std::FILE* getFile() const { return m_File; }
    uint32_t getReferenceCount() const { return m_ReferenceCount; }

    void addReference() { ++m_ReferenceCount; }
    // Adds a reference that is the caller's, who opened the stream and will close it: from now on
    // nobody else does.
    void shareWithCaller() {
        addReference();
        m_IsCallers = true;
    }
    // Closes the file if this was the last reference.
    void release();
    // Closes the file whatever the count: after a failure it is of no use to anyone. References
    // are still to be given back. A stream that the caller will close is only let go of.
    void close();

private:
    std::FILE* m_File;
    uint32_t m_ReferenceCount = 0;
    bool m_IsCallers = false;
};

// What is kept of a section until its contents are read.
class DeferredContents {
public:
    // Reads the contents of `section` into its buffer and reports what goes wrong. The section's
    // own reference to the file is given back by the section.
    using LoadFunction = bool (*)(Section& section, const DeferredContents& deferredContents);

    // `referenceCountedFile` is not null; one reference is added. The object lives in the module's
    // object region.
    DeferredContents(ReferenceCountedFile* referenceCountedFile, const Elf64_Shdr& sectionHeader,
                     LoadFunction loadFunction)
        : m_File(referenceCountedFile), m_SectionHeader(sectionHeader), m_Load(loadFunction) {
        TOMEX_CHECK_TEXT(referenceCountedFile != nullptr, "referenceCountedFile != NULL");
        m_File->addReference();
    }
    DeferredContents(const DeferredContents&) = delete;
    DeferredContents& operator=(const DeferredContents&) = delete;

    ReferenceCountedFile* getReferenceCountedFile() const { return m_File; }
    const Elf64_Shdr& getSectionHeader() const { return m_SectionHeader; }

    bool load(Section& section) const { return m_Load(section, *this); }

private:
    ReferenceCountedFile* m_File;
    Elf64_Shdr m_SectionHeader;
    LoadFunction m_Load;
};

} // namespace elfext
