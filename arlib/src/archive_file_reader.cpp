#include "arlib/interface/archive_file_reader.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/read_observer.h"
#include "arlib/src/contents_source.h"
#include "arlib/src/long_names.h"
#include "arlib/src/number_field.h"
#include "platform/interface/internal_check.h"

namespace arlib {
namespace {

constexpr uint32_t decimal = 10;
constexpr uint32_t octal = 8;

// What a name field says about its member.
enum class NameForm {
    SymbolTable,   // "/"
    FileNameTable, // "//"
    Long,          // "/" and digits
    Short,         // anything else
};

template <size_t width>
std::string_view viewOf(const char (&field)[width]) {
    return {field, width};
}

NameForm formOf(std::string_view name) {
    if (name[0] != '/') {
        return NameForm::Short;
    }
    if (name[1] >= '0' && name[1] <= '9') {
        return NameForm::Long;
    }
    if (isBlankField(name.substr(1))) {
        return NameForm::SymbolTable;
    }
    return name[1] == '/' && isBlankField(name.substr(2)) ? NameForm::FileNameTable
                                                          : NameForm::Short;
}

// The fields of a header as numbers.
struct HeaderValues {
    uint32_t date = 0;
    uint32_t uid = 0;
    uint32_t gid = 0;
    uint32_t mode = 0;
    uint32_t size = 0;
    uint32_t longNameOffset = 0xFFFFFFFF;
    std::string name;          // a short one, folders and all
    std::string_view longName; // a long one, the archive's own; null data if there is none
};

} // namespace

// One run of the reader over one file.
class ArchiveFileReader::Pass {
public:
    Pass(const char* fileName, Archive& archive, ReadObserver* observer)
        : m_FileName(fileName), m_Archive(archive), m_Handler(archive.m_ErrorHandler),
          m_Observer(observer) {}

    bool open();
    bool readMembers();
    bool close();
    void abandon();

private:
    enum class Step { Done, End, Failed };

    using FieldFlaw = bool (ErrorHandler::*)(Archive*, uint64_t, const char*);

    bool readFailed(int error);
    Step readHeader();
    Step readMember();
    bool readFields(HeaderValues& values);
    bool readNumber(std::string_view field, uint32_t base, FieldFlaw flaw, uint32_t& value);
    bool readSize(HeaderValues& values);
    bool readName(HeaderValues& values);
    bool readShortName(HeaderValues& values);
    bool readLongName(HeaderValues& values);
    bool takeLongName(uint32_t index, HeaderValues& values);
    ArchiveMember* addMember(const HeaderValues& values);
    ArchiveMember* appendMember(const HeaderValues& values);
    bool readContents(ArchiveMember* member, uint32_t size);
    bool readTable(ArchiveMember* member, uint32_t size);
    bool readPadding(uint64_t offset);

    template <class Operation, class... Arguments>
    bool forgiven(Operation operation, Arguments... arguments) {
        return m_Handler != nullptr && (m_Handler->*operation)(&m_Archive, arguments...);
    }

    const char* m_FileName;
    Archive& m_Archive;
    ErrorHandler* m_Handler;
    ReadObserver* m_Observer;
    ContentsReader m_Reader;
    SourceFilePointer m_Source;
    MemberHeader m_Header = {};
    std::span<const uint8_t> m_Head; // what follows the header, valid until the next read
    NameForm m_Form = NameForm::Short;
    std::optional<LongNames> m_LongNames;
    uint64_t m_Position = archiveMagicSize; // of the present header
    uint32_t m_MemberCount = 0;
};

bool ArchiveFileReader::Pass::readFailed(int error) {
    if (m_Handler != nullptr) {
        m_Handler->readError(&m_Archive, nullptr, error);
    }
    return false;
}

bool ArchiveFileReader::Pass::open() {
    auto source = std::make_shared<SourceFile>();
    if (!m_Reader.open(m_FileName) || !m_Reader.file().queryStatus(source->status)) {
        return readFailed(errno);
    }
    source->name = m_FileName;
    source->isArchive = true;
    m_Source = std::move(source);
    m_Archive.m_FileStatus = m_Source->status;
    const uint8_t* magic = m_Reader.view(0, archiveMagicSize);
    if (magic == nullptr) {
        return readFailed(errno);
    }
    if (std::memcmp(magic, archiveMagic, archiveMagicSize) != 0) {
        if (m_Handler != nullptr) {
            m_Handler->badMagic(&m_Archive);
        }
        return false;
    }
    return true;
}

bool ArchiveFileReader::Pass::readMembers() {
    Step step = Step::Done;
    while (step == Step::Done) {
        step = readHeader();
        if (step == Step::Done) {
            step = readMember();
        }
    }
    return step == Step::End;
}

ArchiveFileReader::Pass::Step ArchiveFileReader::Pass::readHeader() {
    size_t got = 0;
    // With what tells the member's type, which costs nothing beside the header.
    constexpr size_t wanted = memberHeaderSize + ArchiveMemberType::recognisableSize;
    const uint8_t* bytes = m_Reader.viewSome(m_Position, wanted, got);
    if (bytes == nullptr) {
        readFailed(errno);
        return Step::Failed;
    }
    if (got == 0) {
        return Step::End;
    }
    if (got < memberHeaderSize) {
        if (m_Handler != nullptr) {
            m_Handler->headerEndOfFile(&m_Archive, m_Position);
        }
        return Step::Failed;
    }
    if (m_Position >= archiveSizeLimit) {
        readFailed(EFBIG);
        return Step::Failed;
    }
    std::memcpy(&m_Header, bytes, memberHeaderSize);
    m_Head = {bytes + memberHeaderSize, got - memberHeaderSize};
    m_Form = formOf(viewOf(m_Header.name));
    return Step::Done;
}

ArchiveFileReader::Pass::Step ArchiveFileReader::Pass::readMember() {
    HeaderValues values;
    if (!readFields(values) || !readName(values)) {
        return Step::Failed;
    }
    ArchiveMember* member = addMember(values);
    if (member == nullptr || !readContents(member, values.size)) {
        return Step::Failed;
    }
    const uint64_t end = m_Position + memberHeaderSize + values.size;
    if (values.size % 2 != 0 && !readPadding(end)) {
        return Step::Failed;
    }
    if (m_Observer != nullptr) {
        m_Observer->memberRead(*member);
    }
    m_Position = nextMemberOffset(m_Position, values.size);
    ++m_MemberCount;
    return Step::Done;
}

bool ArchiveFileReader::Pass::readFields(HeaderValues& values) {
    if (viewOf(m_Header.magic) != memberMagic &&
        !forgiven(&ErrorHandler::badMemberMagic, m_Position)) {
        return false;
    }
    return readNumber(viewOf(m_Header.date), decimal, &ErrorHandler::badDate, values.date) &&
           readNumber(viewOf(m_Header.uid), decimal, &ErrorHandler::badUid, values.uid) &&
           readNumber(viewOf(m_Header.gid), decimal, &ErrorHandler::badGid, values.gid) &&
           readNumber(viewOf(m_Header.mode), octal, &ErrorHandler::badMode, values.mode) &&
           readSize(values);
}

// A field that the two tables may leave blank, as other archivers write them.
bool ArchiveFileReader::Pass::readNumber(std::string_view field, uint32_t base, FieldFlaw flaw,
                                         uint32_t& value) {
    if (parseNumberField(field, base, value)) {
        return true;
    }
    value = 0;
    const bool isTable = m_Form == NameForm::SymbolTable || m_Form == NameForm::FileNameTable;
    return (isTable && isBlankField(field)) ||
           forgiven(flaw, m_Position, std::string(field).c_str());
}

// Without the size nothing behind this header can be found: no handler can forgive that.
bool ArchiveFileReader::Pass::readSize(HeaderValues& values) {
    if (parseNumberField(viewOf(m_Header.size), decimal, values.size)) {
        return true;
    }
    forgiven(&ErrorHandler::badSize, m_Position, std::string(viewOf(m_Header.size)).c_str());
    return false;
}

bool ArchiveFileReader::Pass::readName(HeaderValues& values) {
    switch (m_Form) {
    case NameForm::SymbolTable:
    case NameForm::FileNameTable:
        return true;
    case NameForm::Long:
        return readLongName(values);
    case NameForm::Short:
        break;
    }
    return readShortName(values);
}

bool ArchiveFileReader::Pass::readShortName(HeaderValues& values) {
    const std::string_view field = viewOf(m_Header.name);
    const size_t end = field.find('/');
    if (end == field.npos) {
        return forgiven(&ErrorHandler::noSlashInName, m_Position);
    }
    if (!isBlankField(field.substr(end + 1))) {
        return forgiven(&ErrorHandler::trailingInName, m_Position);
    }
    values.name = field.substr(0, end);
    return true;
}

bool ArchiveFileReader::Pass::readLongName(HeaderValues& values) {
    if (m_Archive.m_FileNameTable == nullptr) {
        return forgiven(&ErrorHandler::noLongNameTable, m_Position);
    }
    const std::string_view digits = viewOf(m_Header.name).substr(1);
    uint32_t index = 0;
    if (!parseNumberField(digits, decimal, index)) {
        return forgiven(&ErrorHandler::badLongNameIndex, m_Position, std::string(digits).c_str());
    }
    values.longNameOffset = index;
    return takeLongName(index, values);
}

bool ArchiveFileReader::Pass::takeLongName(uint32_t index, HeaderValues& values) {
    const MemberContents& contents = *m_Archive.m_FileNameTable->getContents();
    const std::string_view table(reinterpret_cast<const char*>(contents.bytes()), contents.size());
    const bool isOutside = index >= table.size();
    // An index at the newline of an entry's end would read as an empty name.
    const bool isAtEntryEnd =
        !isOutside && index != 0 && table.substr(index - 1, longNameEndSize) == longNameEnd;
    if (isOutside || isAtEntryEnd) {
        return forgiven(&ErrorHandler::longNameIndexRange, m_Position, index, contents.size());
    }
    if (!m_LongNames) {
        m_LongNames.emplace(table, m_Archive.m_ObjectRegion.get());
    }
    values.longName = m_LongNames->nameAt(index);
    return true;
}

ArchiveMember* ArchiveFileReader::Pass::appendMember(const HeaderValues& values) {
    ContentsRegion region{.source = m_Source,
                          .offset = m_Position + memberHeaderSize,
                          .size = values.size,
                          .head = m_Head};
    if (values.longName.data() == nullptr) {
        return m_Archive.appendFromRegion(values.name.c_str(), std::move(region));
    }
    if (!m_Archive.acceptRegion(values.longName.data(), region)) {
        return nullptr;
    }
    return m_Archive.appendAccepted(
        values.longName.data(), static_cast<uint32_t>(values.longName.size()), std::move(region));
}

ArchiveMember* ArchiveFileReader::Pass::addMember(const HeaderValues& values) {
    ArchiveMember* member = appendMember(values);
    if (member != nullptr) {
        member->m_LongNameOffset = values.longNameOffset;
        member->m_Date = values.date;
        member->m_Uid = static_cast<int32_t>(values.uid);
        member->m_Gid = static_cast<int32_t>(values.gid);
        member->m_Mode = values.mode;
        member->m_Offset = static_cast<uint32_t>(m_Position);
        member->m_Changed = false;
    }
    return member;
}

bool ArchiveFileReader::Pass::readContents(ArchiveMember* member, uint32_t size) {
    if (m_MemberCount == 0 && m_Form == NameForm::SymbolTable) {
        m_Archive.m_SymbolTable = member;
        member->m_Type = getSymbolTableType();
        return readTable(member, size);
    }
    if (m_MemberCount <= 1 && m_Form == NameForm::FileNameTable &&
        m_Archive.m_FileNameTable == nullptr) {
        m_Archive.m_FileNameTable = member;
        member->m_Type = getFileNameTableType();
        return readTable(member, size);
    }
    // Contents that the file does not hold have been reported; if that was forgiven, there is
    // still nothing to find behind them.
    return member->m_Size == size || readFailed(EIO);
}

bool ArchiveFileReader::Pass::readTable(ArchiveMember* member, uint32_t size) {
    auto contents = std::make_unique<MemberContents>();
    if (!contents->resize(member->m_Size)) {
        forgiven(&ErrorHandler::outOfMemory);
        return false;
    }
    if (member->m_Size != size ||
        !m_Reader.read(contents->bytes(), size, m_Position + memberHeaderSize)) {
        return readFailed(member->m_Size != size ? EIO : errno);
    }
    member->m_Contents = std::move(contents);
    return true;
}

bool ArchiveFileReader::Pass::readPadding(uint64_t offset) {
    const uint8_t* padding = m_Reader.view(offset, 1);
    if (padding == nullptr) {
        return readFailed(errno);
    }
    return *padding == memberPadding || forgiven(&ErrorHandler::badPadding, offset, *padding);
}

bool ArchiveFileReader::Pass::close() {
    if (m_Reader.close()) {
        return true;
    }
    if (m_Handler != nullptr) {
        m_Handler->closeError(&m_Archive, nullptr, errno);
    }
    return false;
}

void ArchiveFileReader::Pass::abandon() {
    m_Reader.close();
    m_Archive.clear();
}

bool ArchiveFileReader::readFile(const char* fileName, Archive& archive, ReadObserver* observer) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    archive.clear();
    archive.setFileName(fileName);
    archive.m_SymbolTableMode = SymbolTableMode_IfNeeded;

    Pass pass(fileName, archive, observer);
    if (!pass.open() || !pass.readMembers() || !pass.close()) {
        pass.abandon();
        return false;
    }
    archive.m_SymbolTableUpToDate = true;
    archive.m_FileNameTableUpToDate = true;
    archive.m_ArchiveMemberOffsetsUpToDate = true;
    if (!archive.readSymbolTable()) {
        archive.clear();
        return false;
    }
    archive.m_ReadOnly = !platform::isWritable(fileName);
    return true;
}

} // namespace arlib
