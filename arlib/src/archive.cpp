#include "arlib/interface/archive.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <new>
#include <vector>

#include "arlib/interface/archive_format.h"
#include "arlib/interface/contents_location.h"
#include "arlib/interface/symbol.h"
#include "arlib/src/contents_source.h"
#include "arlib/src/member_index.h"
#include "platform/interface/input_file.h"
#include "platform/interface/internal_check.h"
#include "platform/interface/path_name.h"

namespace arlib {

Archive::Archive()
    : m_ObjectRegion(1024, "arlib::Archive::ObjectRegion"),
      m_ContainerRegion(1024, "arlib::Archive::ContainerRegion"),
      m_ArchiveMembers(m_ContainerRegion.get()), m_Symbols(m_ContainerRegion.get()),
      m_SortedSymbols(m_ContainerRegion.get()), m_SymbolMembers(m_ContainerRegion.get()),
      m_Sources(std::make_unique<ContentsSources>()) {
}

// Only what members hold outside the regions is released one by one; the regions take the rest.
Archive::~Archive() {
    for (ArchiveMember* member : m_ArchiveMembers) {
        member->dropLocation();
        member->m_Contents.reset();
    }
}

void Archive::requireWritable() const {
    TOMEX_CHECK_TEXT(!m_ReadOnly, "!isReadOnly()");
}

const char* Archive::copyName(const char* name) {
    return alloclib::copyString(*m_ObjectRegion.get(), name);
}

void Archive::setFileName(const char* fileName) {
    m_ReadOnly = false;
    if (fileName == nullptr) {
        m_FileName = nullptr;
    } else if (m_FileName == nullptr || std::strcmp(m_FileName, fileName) != 0) {
        m_FileName = copyName(fileName);
    }
}

void Archive::setSymbolTableMode(SymbolTableMode mode) {
    requireWritable();
    m_SymbolTableMode = mode;
}

void Archive::markSymbolTableStale() {
    requireWritable();
    m_SymbolTableUpToDate = false;
}

void Archive::setDebugSymbols(bool on) {
    requireWritable();
    m_DebugSymbols = on;
}

void Archive::setUniqueSymbols(bool on) {
    requireWritable();
    m_UniqueSymbols = on;
}

void Archive::setBuildAttributesFromSection(bool on) {
    requireWritable();
    m_BuildAttributesFromSection = on;
}

void Archive::setLibraryAttributes(const attributes::FullAttr& libraryAttributes) {
    requireWritable();
    m_HasLibraryAttributes = true;
    m_LibraryAttributes = libraryAttributes;
    m_SymbolTableUpToDate = false;
}

void Archive::clear() {
    for (ArchiveMember* member : m_ArchiveMembers) {
        member->~ArchiveMember();
    }
    m_MemberIndex.reset();
    m_ArchiveMembers.clear();
    m_Symbols.clear();
    m_SortedSymbols.clear();
    m_SymbolMembers.clear();
    m_SymbolsLoaded = true;
    m_ReadSymbolTable.reset();
    m_FileNameTable = nullptr;
    m_SymbolTable = nullptr;
    m_SortedSymbolsUpToDate = true;
    m_ArchiveMemberOffsetsUpToDate = true;
    m_FileNameTableUpToDate = true;
    m_SymbolTableUpToDate = true;
    m_Sources->closeAll();
}

bool Archive::closeSources() {
    if (m_Sources->closeAll()) {
        return true;
    }
    const int error = errno;
    if (m_ErrorHandler != nullptr) {
        m_ErrorHandler->closeError(this, m_FileName, error);
    }
    errno = error;
    return false;
}

uint32_t Archive::getIndex(const ArchiveMember* member) const {
    // From the end: the member asked for is most often the one that was added last.
    for (uint32_t i = m_ArchiveMembers.getSize(); i-- > 0;) {
        if (m_ArchiveMembers[i] == member) {
            return i;
        }
    }
    return notThere;
}

uint32_t Archive::getSymbolIndex(const Symbol* symbol) {
    loadSymbols();
    const auto* const found = std::find(m_Symbols.begin(), m_Symbols.end(), symbol);
    return found == m_Symbols.end() ? notThere : static_cast<uint32_t>(found - m_Symbols.begin());
}

void Archive::markTablesStale() {
    m_FileNameTableUpToDate = false;
    m_SymbolTableUpToDate = false;
}

void Archive::shiftMember(uint32_t oldIndex, uint32_t newIndex) {
    ArchiveMember** members = m_ArchiveMembers.begin();
    if (oldIndex < newIndex) {
        std::rotate(members + oldIndex, members + oldIndex + 1, members + newIndex + 1);
    } else {
        std::rotate(members + newIndex, members + oldIndex, members + oldIndex + 1);
    }
}

void Archive::moveMember(ArchiveMember* member, uint32_t newIndex) {
    requireWritable();
    TOMEX_CHECK_TEXT(member != nullptr, "member != NULL");
    const uint32_t count = m_ArchiveMembers.getSize();
    TOMEX_CHECK(newIndex <= count);
    const uint32_t oldIndex = getIndex(member);
    TOMEX_CHECK(oldIndex < count);
    newIndex = std::min(newIndex, count - 1);
    if (newIndex == oldIndex) {
        return;
    }
    shiftMember(oldIndex, newIndex);
    reorderInIndex(member, newIndex);
    markTablesStale();
}

namespace {

// Members to be told from the others in a walk over the list.
class MemberSet {
public:
    explicit MemberSet(std::span<ArchiveMember* const> members)
        : m_Sorted(members.begin(), members.end()) {
        std::sort(m_Sorted.begin(), m_Sorted.end());
    }
    bool contains(const ArchiveMember* member) const {
        return std::binary_search(m_Sorted.begin(), m_Sorted.end(), member);
    }

private:
    std::vector<const ArchiveMember*> m_Sorted;
};

} // namespace

void Archive::moveMembers(std::span<ArchiveMember* const> members, uint32_t gap) {
    requireWritable();
    const uint32_t count = m_ArchiveMembers.getSize();
    TOMEX_CHECK(gap <= count);
    const MemberSet moved(members);
    const auto stays = [&moved](const ArchiveMember* member) { return !moved.contains(member); };
    std::vector<ArchiveMember*> order;
    order.reserve(count);
    ArchiveMember* const* list = m_ArchiveMembers.begin();
    std::copy_if(list, list + gap, std::back_inserter(order), stays);
    const auto firstMoved = static_cast<uint32_t>(order.size());
    order.insert(order.end(), members.begin(), members.end());
    std::copy_if(list + gap, list + count, std::back_inserter(order), stays);
    TOMEX_CHECK(order.size() == count);
    std::copy(order.begin(), order.end(), m_ArchiveMembers.begin());
    for (uint32_t i = 0; i < members.size(); ++i) {
        reorderInIndex(members[i], firstMoved + i);
    }
    markTablesStale();
}

// The name is the archive's own already.
ArchiveMember* Archive::appendMember(const char* ownName, uint32_t length) {
    void* memory =
        alloclib::allocate(*m_ObjectRegion.get(), sizeof(ArchiveMember), alignof(ArchiveMember));
    auto* member = new (memory) ArchiveMember(this, ownName, length);
    m_ArchiveMembers.add(member);
    addToIndex(member);
    return member;
}

ArchiveMember* Archive::addMember(const char* name, int64_t date, int32_t uid, int32_t gid,
                                  uint32_t mode) {
    TOMEX_CHECK_TEXT(name != nullptr, "name != NULL");
    requireWritable();
    ArchiveMember* member = appendMember(copyName(name), static_cast<uint32_t>(std::strlen(name)));
    member->m_Changed = true;
    member->m_Date = date;
    member->m_Uid = uid;
    member->m_Gid = gid;
    member->m_Mode = mode;
    member->m_Contents = std::make_unique<MemberContents>();
    member->m_Type = ArchiveMemberType::computeType(*member);
    markTablesStale();
    return member;
}

namespace {

// User and group numbers that the fields of a member hold.
bool isOwner(int64_t number) {
    return number >= 0 && number <= INT32_MAX;
}

} // namespace

std::shared_ptr<SourceFile> Archive::acceptFile(const char* fileName,
                                                const platform::FileStatus& status, int error) {
    const bool hasContents = status.isRegular || status.kind == platform::FileKind_Directory;
    const bool isGood = hasContents && status.date >= 0 && status.size >= 0 &&
                        isOwner(status.uid) && isOwner(status.gid) && status.mode != 0;
    if (!isGood) {
        if (m_ErrorHandler != nullptr) {
            m_ErrorHandler->readError(this, fileName, error);
        }
        return nullptr;
    }
    auto source = std::make_shared<SourceFile>();
    source->name = fileName;
    source->status = status;
    return source;
}

namespace {

// Why a file that was found cannot be a member, where no host call has failed: a pipe or a device
// has no contents at an offset, and what other number is negative does not fit the format.
int errorOfStatus(const platform::FileStatus& status) {
    const bool hasContents = status.isRegular || status.kind == platform::FileKind_Directory;
    return hasContents ? EOVERFLOW : ESPIPE;
}

} // namespace

Archive::SourceFilePointer Archive::describeFile(const char* fileName) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    errno = 0;
    const platform::FileStatus status = platform::queryFile(fileName);
    const int error = errno;
    const bool isThere = status.kind != platform::FileKind_None;
    return acceptFile(fileName, status, isThere ? errorOfStatus(status) : error);
}

Archive::SourceFilePointer Archive::describeFile(const char* fileName,
                                                 const platform::FileProbe& probe) {
    if (probe.closeError != 0) {
        if (m_ErrorHandler != nullptr) {
            m_ErrorHandler->closeError(this, fileName, probe.closeError);
        }
        return nullptr;
    }
    const int error = probe.exists ? errorOfStatus(probe.status) : probe.error;
    std::shared_ptr<SourceFile> source = acceptFile(fileName, probe.status, error);
    const size_t size = probe.head.size();
    const bool isWhole = source && probe.status.isRegular && size != 0 &&
                         size == static_cast<uint64_t>(probe.status.size);
    if (isWhole && size <= KeptBytes::largestFile &&
        m_KeptByteCount + size <= KeptBytes::largestSum) {
        m_KeptByteCount += size;
        source->keptBytes = keepBytes(probe.head);
    }
    return source;
}

// Copies the bytes to where others are kept already. They are taken from the region in pieces that
// no other object shares, so that little is lost between them.
const uint8_t* Archive::keepBytes(std::span<const uint8_t> bytes) {
    if (bytes.size() > m_KeptBytesRoom.size()) {
        void* const room = alloclib::allocate(*m_ObjectRegion.get(), KeptBytes::piece, 1);
        m_KeptBytesRoom = {static_cast<uint8_t*>(room), KeptBytes::piece};
    }
    uint8_t* const kept = m_KeptBytesRoom.data();
    std::memcpy(kept, bytes.data(), bytes.size());
    m_KeptBytesRoom = m_KeptBytesRoom.subspan(bytes.size());
    return kept;
}

size_t Archive::getProbeSize() const {
    static_assert(largestProbeSize == KeptBytes::largestFile);
    return m_KeptByteCount < KeptBytes::largestSum ? largestProbeSize
                                                   : ArchiveMemberType::recognisableSize;
}

// Tests a stretch against its file, and cuts it if the handler says to go on.
bool Archive::acceptRegion(const char* memberName, ContentsRegion& region) {
    const auto fileSize = static_cast<uint64_t>(region.source->status.size);
    const bool isInside = region.offset <= fileSize && region.size <= fileSize - region.offset;
    if (!isInside) {
        const bool goesOn =
            m_ErrorHandler != nullptr &&
            m_ErrorHandler->regionBeyondFile(this, memberName, region.source->name.c_str(),
                                             region.offset, region.size, fileSize);
        if (!goesOn) {
            return false;
        }
        region.offset = std::min(region.offset, fileSize);
        region.size = std::min(region.size, fileSize - region.offset);
        region.type = nullptr;
    }
    if (region.size >= archiveSizeLimit) {
        if (m_ErrorHandler != nullptr) {
            m_ErrorHandler->writeError(this, region.source->name.c_str(), EFBIG);
        }
        return false;
    }
    return true;
}

ArchiveMember* Archive::appendFromRegion(const char* memberName, ContentsRegion region) {
    if (!region.source || !acceptRegion(memberName, region)) {
        return nullptr;
    }
    const char* leaf = platform::fileNameLeaf(memberName);
    return appendAccepted(copyName(leaf), static_cast<uint32_t>(std::strlen(leaf)),
                          std::move(region));
}

ArchiveMember* Archive::appendAccepted(const char* ownName, uint32_t length,
                                       ContentsRegion region) {
    ArchiveMember* member = appendMember(ownName, length);
    member->takeRegion(std::move(region));
    return member;
}

bool Archive::replaceFromRegion(ArchiveMember* member, ContentsRegion region) {
    if (!region.source || !acceptRegion(nullptr, region)) {
        return false;
    }
    member->dropLocation();
    member->takeRegion(std::move(region));
    return true;
}

ContentsRegion Archive::wholeFile(SourceFilePointer source, std::span<const uint8_t> head) {
    const uint64_t size = source ? static_cast<uint64_t>(source->status.size) : 0;
    return {std::move(source), 0, size, nullptr, head};
}

ContentsRegion Archive::regionOf(const ArchiveMember& member) {
    const ContentsLocation* location = member.getLocation();
    TOMEX_CHECK_TEXT(location != nullptr, "location != NULL");
    return {location->getSource(), location->getOffset(), member.getSize(), member.getType()};
}

ArchiveMember* Archive::addMemberFromFile(const char* fileName) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    requireWritable();
    return appendFromRegion(fileName, wholeFile(describeFile(fileName)));
}

ArchiveMember* Archive::addMemberFromFile(const char* fileName, const platform::FileProbe& probe) {
    requireWritable();
    return appendFromRegion(fileName, wholeFile(describeFile(fileName, probe), probe.head));
}

ArchiveMember* Archive::addMemberFromFileRegion(const char* memberName, const char* fileName,
                                                uint64_t offset, uint64_t size) {
    TOMEX_CHECK_TEXT(memberName != nullptr, "memberName != NULL");
    requireWritable();
    return appendFromRegion(memberName,
                            {.source = describeFile(fileName), .offset = offset, .size = size});
}

ArchiveMember* Archive::addMemberFromFileRegion(const char* memberName,
                                                const ArchiveMember& source) {
    requireWritable();
    return appendFromRegion(memberName, regionOf(source));
}

bool Archive::replaceMember(ArchiveMember* member, const char* fileName,
                            const platform::FileProbe& probe) {
    requireWritable();
    return replaceFromRegion(member, wholeFile(describeFile(fileName, probe), probe.head));
}

bool Archive::replaceMember(ArchiveMember* member, const ArchiveMember& source) {
    requireWritable();
    return replaceFromRegion(member, regionOf(source));
}

namespace {

template <class T, class Predicate>
void removeIf(elfext::fast_array<T>& array, Predicate predicate) {
    T* end = std::remove_if(array.begin(), array.end(), predicate);
    array.setSize(static_cast<uint32_t>(end - array.begin()));
}

} // namespace

void Archive::deleteMember(ArchiveMember* member) {
    TOMEX_CHECK_TEXT(member != nullptr, "member != NULL");
    deleteMembers({&member, 1});
}

void Archive::deleteMembers(std::span<ArchiveMember* const> members) {
    requireWritable();
    if (members.empty()) {
        return;
    }
    const MemberSet doomed(members);
    const auto isDoomed = [&doomed](const ArchiveMember* member) {
        return doomed.contains(member);
    };
    removeIf(m_ArchiveMembers, isDoomed);
    removeIf(m_Symbols,
             [&isDoomed](const Symbol* symbol) { return isDoomed(symbol->getDefiningMember()); });
    m_SortedSymbolsUpToDate = false;
    for (ArchiveMember*& member : m_SymbolMembers) {
        if (member != nullptr && isDoomed(member)) {
            member = nullptr;
        }
    }
    for (ArchiveMember* member : members) {
        if (member == m_SymbolTable) {
            keepReadSymbolTable();
            m_SymbolTable = nullptr;
        }
        if (member == m_FileNameTable) {
            m_FileNameTable = nullptr;
        }
        removeFromIndex(member);
        member->~ArchiveMember();
    }
    markTablesStale();
}

} // namespace arlib
