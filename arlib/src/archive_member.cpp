#include "arlib/interface/archive_member.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/contents_location.h"
#include "arlib/src/contents_source.h"
#include "arlib/src/temporary_copy.h"
#include "elfext/interface/elf_object_module_reader.h"
#include "elfext/interface/error_handler.h"
#include "elfext/interface/object_module.h"
#include "platform/interface/input_file.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/output_file.h"

namespace arlib {

namespace {

// Memory from here on is asked for in pages as large as the host has them: getting tens of
// megabytes page by page takes longer than filling them.
constexpr size_t largeMemory = size_t{4} << 20;
constexpr size_t largePage = size_t{2} << 20;

// As realloc(). Null if there is not enough; what was there before is kept then.
void* takeMemory(void* before, size_t size) {
    if (before != nullptr || size < largeMemory) {
        return std::realloc(before, size);
    }
    void* const memory = std::aligned_alloc(largePage, (size + largePage - 1) & ~(largePage - 1));
    if (memory != nullptr) {
        madvise(memory, size, MADV_HUGEPAGE); // a wish; it costs nothing to be refused
    }
    return memory;
}

} // namespace

MemberContents::~MemberContents() {
    release();
}

void MemberContents::release() {
    std::free(m_Bytes);
    m_Bytes = nullptr;
    m_Allocated = 0;
    m_Used = 0;
}

bool MemberContents::resize(uint32_t size) {
    if (size > m_Allocated) {
        const uint64_t grown = uint64_t{m_Allocated} * 3 / 2 + 1;
        const uint64_t wanted = std::max<uint64_t>(size, std::min<uint64_t>(grown, UINT32_MAX));
        void* bytes = takeMemory(m_Bytes, wanted);
        if (bytes == nullptr) {
            return false;
        }
        m_Bytes = static_cast<uint8_t*>(bytes);
        m_Allocated = static_cast<uint32_t>(wanted);
    }
    m_Used = size;
    return true;
}

ArchiveMember::ArchiveMember(Archive* archive, const char* name, uint32_t nameLength)
    : m_Archive(archive), m_Name(name), m_NameLength(nameLength) {
}

ArchiveMember::~ArchiveMember() {
    dropLocation();
    if (m_SymbolLists != nullptr) {
        m_SymbolLists->~MemberSymbols();
    }
}

MemberSymbols& ArchiveMember::symbolLists() {
    if (m_SymbolLists == nullptr) {
        alloclib::Region* region = m_Archive->m_ContainerRegion.get();
        void* memory =
            region->Alloc(sizeof(MemberSymbols), alignof(MemberSymbols), "arlib::MemberSymbols");
        m_SymbolLists = new (memory) MemberSymbols(region);
    }
    return *m_SymbolLists;
}

void ArchiveMember::requireWritable() const {
    TOMEX_CHECK(!m_Archive->isReadOnly());
}

uint32_t ArchiveMember::getOffset() const {
    TOMEX_CHECK(m_Archive->m_ArchiveMemberOffsetsUpToDate);
    return m_Offset;
}

uint32_t ArchiveMember::getIndex() const {
    return m_Archive->getIndex(this);
}

const elfext::fast_array<Symbol*>& ArchiveMember::getSymbols() {
    m_Archive->loadSymbols();
    return symbolLists().m_Symbols;
}

const elfext::fast_array<Symbol*>& ArchiveMember::getSortedSymbols() {
    m_Archive->sortSymbols();
    return symbolLists().m_SortedSymbols;
}

void ArchiveMember::setDate(int64_t date) {
    requireWritable();
    m_Date = date;
}

void ArchiveMember::setUid(int32_t uid) {
    requireWritable();
    m_Uid = uid;
}

void ArchiveMember::setGid(int32_t gid) {
    requireWritable();
    m_Gid = gid;
}

void ArchiveMember::setMode(uint32_t mode) {
    requireWritable();
    m_Mode = mode;
}

void ArchiveMember::setName(const char* name) {
    TOMEX_CHECK_TEXT(name != nullptr, "name != NULL");
    requireWritable();
    TOMEX_CHECK_TEXT(!isAuxiliary(), "!m_Type->isAuxiliary()");
    if (std::strcmp(m_Name, name) == 0) {
        return;
    }
    m_Archive->removeFromIndex(this);
    m_Name = m_Archive->copyName(name);
    m_NameLength = static_cast<uint32_t>(std::strlen(m_Name));
    m_Archive->addToIndex(this);
    m_Archive->reorderInIndex(this, getIndex());
    m_Archive->m_FileNameTableUpToDate = false;
}

// Small contents that lie side by side in an archive share its reader's window; all others go
// straight from their file.
bool ArchiveMember::isWindowed() const {
    constexpr uint32_t largestWindowed = 32 << 10;
    return m_Size < largestWindowed && m_ContentsLocation->getSource()->isArchive;
}

bool ArchiveMember::readThroughWindow(ContentsReader& reader, uint8_t* destination) const {
    const uint8_t* bytes = reader.view(m_ContentsLocation->getOffset(), m_Size);
    if (bytes == nullptr) {
        return false;
    }
    std::copy_n(bytes, m_Size, destination);
    return true;
}

// The bytes that an earlier look at the file brought, or null.
const uint8_t* ArchiveMember::keptBytes() const {
    const SourceFile& source = *m_ContentsLocation->getSource();
    return source.keptBytes != nullptr ? source.keptBytes + m_ContentsLocation->getOffset()
                                       : nullptr;
}

bool ArchiveMember::memoryFailed() const {
    if (m_Archive->m_ErrorHandler != nullptr) {
        m_Archive->m_ErrorHandler->outOfMemory(m_Archive);
    }
    return false;
}

bool ArchiveMember::readFailed(int error) const {
    if (m_Archive->m_ErrorHandler != nullptr) {
        m_Archive->m_ErrorHandler->readError(m_Archive, m_ContentsLocation->getFileName(), error);
    }
    errno = error;
    return false;
}

// Ends the use of the file that the contents were read from.
bool ArchiveMember::closeSource() const {
    if (m_Archive->m_Sources->release()) {
        return true;
    }
    const int error = errno;
    if (m_Archive->m_ErrorHandler != nullptr) {
        m_Archive->m_ErrorHandler->closeError(m_Archive, m_ContentsLocation->getFileName(), error);
    }
    errno = error;
    return false;
}

bool ArchiveMember::loadContents(MemberContents& contents) {
    if (!contents.resize(m_Size)) {
        return memoryFailed();
    }
    if (const uint8_t* kept = keptBytes(); kept != nullptr) {
        std::copy_n(kept, m_Size, contents.bytes());
        return true;
    }
    ContentsReader* reader = m_Archive->m_Sources->open(m_ContentsLocation->getSource());
    const bool isRead =
        reader != nullptr &&
        (isWindowed() ? readThroughWindow(*reader, contents.bytes())
                      : reader->read(contents.bytes(), m_Size, m_ContentsLocation->getOffset()));
    if (!isRead) {
        const int error = errno;
        m_Archive->m_Sources->release();
        return readFailed(error);
    }
    return closeSource();
}

// The bytes, wherever they are in memory already, or else in the buffer, which they are read into.
// Null leaves errno; nothing is reported.
const uint8_t* ArchiveMember::viewContents(MemberContents& buffer) {
    if (m_Contents) {
        return m_Contents->bytes();
    }
    if (const uint8_t* kept = keptBytes(); kept != nullptr) {
        return kept;
    }
    ContentsReader* reader = m_Archive->m_Sources->open(m_ContentsLocation->getSource());
    if (reader == nullptr) {
        return nullptr;
    }
    if (isWindowed()) {
        return reader->view(m_ContentsLocation->getOffset(), m_Size);
    }
    errno = ENOMEM;
    const bool isRead = buffer.resize(m_Size) &&
                        reader->read(buffer.bytes(), m_Size, m_ContentsLocation->getOffset());
    const int error = errno;
    m_Archive->m_Sources->release();
    errno = error;
    return isRead ? buffer.bytes() : nullptr;
}

bool ArchiveMember::readObjectModule(elfext::ObjectModule& module, elfext::ErrorHandler* handler,
                                     HostFailures hostFailures) {
    TOMEX_CHECK_TEXT(m_ContentsLocation.has_value(), "location != NULL");
    const char* fileName = m_ContentsLocation->getFileName();
    module.setErrorHandler(handler);
    module.setFileName(fileName);
    const char* archiveName = m_Archive->getFileName();
    module.setMemberName(archiveName != nullptr ? archiveName : "", m_Name);
    static constexpr uint8_t noBytes = 0;
    const uint8_t* bytes = m_Size == 0 ? &noBytes : viewContents(m_Archive->m_ReadBuffer);
    if (bytes == nullptr) {
        const int error = errno;
        if (hostFailures == HostFailures::ToArchive) {
            return error == ENOMEM ? memoryFailed() : readFailed(error);
        }
        if (handler != nullptr && error == ENOMEM) {
            handler->outOfMemory(&module);
        } else if (handler != nullptr) {
            handler->ioErrorReading(&module, fileName, error);
        }
        return false;
    }
    return elfext::readElfBuffer(fileName, bytes, m_Size, &module, nullptr);
}

bool ArchiveMember::ensureContents() {
    if (m_Contents) {
        return true;
    }
    auto contents = std::make_unique<MemberContents>();
    if (!loadContents(*contents)) {
        return false;
    }
    m_Contents = std::move(contents);
    return true;
}

bool ArchiveMember::releaseContents() {
    if (!ensureLocation()) {
        return false;
    }
    m_Contents.reset();
    return true;
}

platform::CopyOutcome ArchiveMember::copyContents(platform::OutputFile& output) {
    using platform::CopyOutcome;
    const uint8_t* bytes = m_Contents ? m_Contents->bytes() : keptBytes();
    if (m_Contents || bytes != nullptr) {
        return output.write(bytes, m_Size) ? CopyOutcome::Done : CopyOutcome::OutputFailed;
    }
    ContentsReader* reader = m_Archive->m_Sources->open(m_ContentsLocation->getSource());
    int error = errno;
    CopyOutcome outcome = CopyOutcome::InputFailed;
    if (reader != nullptr && isWindowed()) {
        bytes = reader->view(m_ContentsLocation->getOffset(), m_Size);
        error = errno;
        if (bytes != nullptr) {
            outcome = output.write(bytes, m_Size) ? CopyOutcome::Done : CopyOutcome::OutputFailed;
        }
    } else if (reader != nullptr) {
        outcome = output.copyFrom(reader->file(), m_ContentsLocation->getOffset(), m_Size);
        error = output.error();
    }
    if (outcome != CopyOutcome::Done) {
        m_Archive->m_Sources->release();
    }
    if (outcome == CopyOutcome::InputFailed) {
        readFailed(error);
    } else if (outcome == CopyOutcome::Done && !closeSource()) {
        outcome = CopyOutcome::InputFailed;
    }
    return outcome;
}

bool ArchiveMember::ensureLocation() {
    if (m_ContentsLocation) {
        return true;
    }
    TemporaryCopy copy;
    if (!copy.write(m_Contents->bytes(), m_Size)) {
        const int error = errno;
        if (ErrorHandler* handler = m_Archive->m_ErrorHandler; handler != nullptr) {
            if (copy.failedToClose()) {
                handler->closeError(m_Archive, copy.nameOrNull(), error);
            } else {
                handler->writeError(m_Archive, copy.nameOrNull(), error);
            }
        }
        return false;
    }
    auto source = std::make_shared<SourceFile>();
    source->name = copy.nameOrNull();
    m_ContentsLocation.emplace(this, std::move(source), true, 0);
    return true;
}

bool ArchiveMember::dropLocation() {
    if (!m_ContentsLocation) {
        return true;
    }
    bool isDone = true;
    if (m_ContentsLocation->deletesFile()) {
        errno = 0;
        isDone = std::remove(m_ContentsLocation->getFileName()) == 0;
        if (!isDone && m_Archive->m_ErrorHandler != nullptr) {
            m_Archive->m_ErrorHandler->deleteError(m_Archive, m_ContentsLocation->getFileName(),
                                                   errno);
        }
    }
    m_ContentsLocation.reset();
    return isDone;
}

void ArchiveMember::contentsChanged() {
    m_Changed = true;
    m_Archive->markTablesStale();
    m_Archive->m_ArchiveMemberOffsetsUpToDate = false;
}

void ArchiveMember::takeRegion(ContentsRegion region) {
    const platform::FileStatus& status = region.source->status;
    m_Contents.reset();
    m_Date = status.date;
    m_Uid = static_cast<int32_t>(status.uid);
    m_Gid = static_cast<int32_t>(status.gid);
    m_Mode = status.mode;
    m_Size = static_cast<uint32_t>(region.size);
    m_ContentsLocation.emplace(this, std::move(region.source), false, region.offset);
    const size_t needed = std::min<size_t>(m_Size, ArchiveMemberType::recognisableSize);
    if (region.type != nullptr) {
        m_Type = region.type;
    } else if (region.head.size() >= needed) {
        m_Type = ArchiveMemberType::typeOfHead(region.head.data(), needed);
    } else {
        m_Type = ArchiveMemberType::computeType(*this);
    }
    contentsChanged();
}

bool ArchiveMember::setContents(const void* bytes, uint32_t size) {
    requireWritable();
    auto contents = std::make_unique<MemberContents>();
    if (!contents->resize(size)) {
        return memoryFailed();
    }
    if (size != 0) {
        std::memcpy(contents->bytes(), bytes, size);
    }
    m_Contents = std::move(contents);
    m_Size = size;
    m_Type = ArchiveMemberType::computeType(*this);
    contentsChanged();
    dropLocation();
    return true;
}

bool ArchiveMember::replaceFromFile(const char* fileName) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    requireWritable();
    return m_Archive->replaceMember(this, fileName, platform::probeFile(fileName, {}));
}

bool ArchiveMember::replaceFromFileRegion(const char* fileName, uint64_t offset, uint64_t size) {
    requireWritable();
    return m_Archive->replaceFromRegion(
        this, {.source = m_Archive->describeFile(fileName), .offset = offset, .size = size});
}

bool ArchiveMember::clearContents() {
    requireWritable();
    TOMEX_CHECK_TEXT(!isAuxiliary(), "!m_Type->isAuxiliary()");
    if (!ensureContents()) {
        return false;
    }
    dropLocation();
    m_Type = nullptr;
    contentsChanged();
    return true;
}

void ArchiveMember::recomputeType() {
    TOMEX_CHECK_TEXT(m_Type == nullptr, "m_Type == NULL");
    m_Type = ArchiveMemberType::computeType(*this);
}

} // namespace arlib
