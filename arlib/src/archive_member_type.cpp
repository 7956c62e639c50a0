#include "arlib/interface/archive_member_type.h"

namespace arlib {

const ArchiveMemberType* ArchiveMemberType::computeType(ArchiveMember&) {
    return getUnknownType();
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
