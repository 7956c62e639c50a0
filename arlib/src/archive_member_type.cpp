#include "arlib/interface/archive_member_type.h"

#include "arlib/interface/archive_member.h"
#include "elfext/interface/format_recognizer.h"

namespace arlib {

const ArchiveMemberType* ArchiveMemberType::computeType(ArchiveMember& member) {
    return getElfImageType()->recognise(member) ? getElfImageType() : getUnknownType();
}

const ArchiveMemberType* ArchiveMemberType::typeOfHead(const uint8_t* bytes, size_t size) {
    return elfext::isElfFile(bytes, size) ? getElfImageType() : getUnknownType();
}

const ArchiveMemberType* getElfImageType() {
    static const ElfImageArchiveMemberType type;
    return &type;
}

const ArchiveMemberType* getUnknownType() {
    static const UnknownArchiveMemberType type;
    return &type;
}

const ArchiveMemberType* getSymbolTableType() {
    static const SymbolTableArchiveMemberType type;
    return &type;
}

const ArchiveMemberType* getFileNameTableType() {
    static const FileNameTableArchiveMemberType type;
    return &type;
}

} // namespace arlib
