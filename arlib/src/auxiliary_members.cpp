// Brings the archive's two tables up to date: the file name table with the names that are too long
// for a header, and the symbol table, which maps names to the members that define them.
//
// Both are derived data and stand in front of all other members. The symbol table holds offsets in
// the finished file, so the file name table, whose size moves everything behind it, comes first.

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "arlib/interface/archive.h"
#include "arlib/interface/archive_format.h"
#include "arlib/interface/symbol.h"
#include "arlib/src/hosting_members.h"
#include "arlib/src/minor_variant_groups.h"
#include "arlib/src/minor_variants.h"
#include "arlib/src/name_hash.h"
#include "arlib/src/symbol_output.h"
#include "elfext/interface/fast_hash_set.h"
#include "elfext/interface/stringlett.h"
#include "platform/interface/internal_check.h"

namespace arlib {
namespace {

// Lists those names of a member that no member listed before has.
void emitNewSymbols(SymbolNames names, const ArchiveMember* member,
                    elfext::fast_hash_set<elfext::Stringlett>& entered, SymbolOutput& output) {
    for (size_t i = 0; i < names.size(); ++i) {
        const elfext::Stringlett key(names[i].data());
        if (!entered.contains(key)) {
            entered.add(key);
            output.add(names.subspan(i, 1), member);
        }
    }
}

// Lists the symbols of members that are in no group of variants.
void emitSymbols(const HostingMembers& hosting, const MinorVariantGroups& groups,
                 bool uniqueSymbols, SymbolOutput& output) {
    elfext::fast_hash_set<elfext::Stringlett> entered(output.region(), &nameHash);
    for (uint32_t i = 0; i < hosting.getSize(); ++i) {
        if (groups.isGrouped(i)) {
            continue;
        }
        const ArchiveMember* member = hosting.get(i).member;
        if (uniqueSymbols) {
            emitNewSymbols(hosting.namesOf(i), member, entered, output);
        } else {
            output.add(hosting.namesOf(i), member);
        }
    }
}

} // namespace

bool Archive::updateAuxiliaryMembers() {
    const OwnedRegion scratch(0x100000, "arlib::Archive::updateAuxiliaryMembers() region");
    m_TableFailed = false;
    for (ArchiveMember* member : m_ArchiveMembers) {
        if (member->m_Type == nullptr) {
            member->recomputeType();
        }
    }
    if (!m_FileNameTableUpToDate) {
        m_ArchiveMemberOffsetsUpToDate = false;
        if (!updateFileNameTable(scratch.get())) {
            return false;
        }
    }
    if (!m_SymbolTableUpToDate) {
        m_ArchiveMemberOffsetsUpToDate = false;
        if (!updateSymbolTable(scratch.get())) {
            // Whoever writes all the same must write the tables where readers look for them.
            moveTablesToFront();
            return false;
        }
    }
    moveTablesToFront();
    if (!m_ArchiveMemberOffsetsUpToDate) {
        layOutMembers();
    }
    return true;
}

void Archive::moveTablesToFront() {
    uint32_t front = 0;
    for (ArchiveMember* table : {m_SymbolTable, m_FileNameTable}) {
        if (table == nullptr) {
            continue;
        }
        if (m_ArchiveMembers[front] != table) {
            shiftMember(getIndex(table), front);
            reorderInIndex(table, front);
            markTablesStale();
        }
        ++front;
    }
}

// Gives each member the offset that it will have in the file: the tables first, whatever their
// places in the list are now, then the others in list order.
void Archive::layOutMembers() {
    uint64_t offset = archiveMagicSize;
    const auto place = [&offset](ArchiveMember* member) {
        member->m_Offset = static_cast<uint32_t>(offset);
        offset = nextMemberOffset(offset, member->m_Size);
    };
    for (ArchiveMember* table : {m_SymbolTable, m_FileNameTable}) {
        if (table != nullptr) {
            place(table);
        }
    }
    for (ArchiveMember* member : m_ArchiveMembers) {
        if (member != m_SymbolTable && member != m_FileNameTable) {
            place(member);
        }
    }
    m_ArchiveMemberOffsetsUpToDate = true;
}

// Takes a table out of the list. Its memory stays with the archive's region; what it holds on the
// heap goes.
void Archive::removeTable(ArchiveMember*& table) {
    if (table != nullptr) {
        if (table == m_SymbolTable) {
            keepReadSymbolTable();
        }
        m_ArchiveMembers.remove(getIndex(table));
        removeFromIndex(table);
        table->~ArchiveMember();
        table = nullptr;
    }
}

// Gives a table room for its contents. False if the room cannot be had, which has been reported.
bool Archive::makeRoomForTable(ArchiveMember* table, uint64_t size) {
    if (size >= archiveSizeLimit) {
        if (m_ErrorHandler != nullptr) {
            m_ErrorHandler->writeError(this, m_FileName, EFBIG);
        }
        return false;
    }
    if (!table->ensureContents()) {
        return false;
    }
    if (!table->m_Contents->resize(static_cast<uint32_t>(size))) {
        if (m_ErrorHandler != nullptr) {
            m_ErrorHandler->outOfMemory(this);
        }
        return false;
    }
    return true;
}

// Makes a table's member, or reuses the one that is there, with room for its contents. Null if the
// room cannot be had.
ArchiveMember* Archive::prepareTable(ArchiveMember* table, const ArchiveMemberType* type,
                                     uint64_t size) {
    if (table == nullptr) {
        table = addMember("", 0, 0, 0, 0);
        table->m_Type = type;
    }
    if (table == m_SymbolTable) {
        keepReadSymbolTable();
    }
    if (!makeRoomForTable(table, size)) {
        m_TableFailed = true;
        return nullptr;
    }
    table->dropLocation();
    table->m_Size = static_cast<uint32_t>(size);
    // Whatever header the table was read with: a table of ours has these fields at 0, so that the
    // file depends on nothing but its members.
    table->m_Date = 0;
    table->m_Uid = 0;
    table->m_Gid = 0;
    table->m_Mode = 0;
    return table;
}

bool Archive::updateFileNameTable(alloclib::Region* scratch) {
    elfext::fast_array<ArchiveMember*> longNamed(scratch);
    uint64_t required = 0;
    for (ArchiveMember* member : m_ArchiveMembers) {
        if (!member->isAuxiliary() && member->m_NameLength >= longNameLength) {
            longNamed.add(member);
            required += uint64_t{member->m_NameLength} + longNameEndSize;
        }
    }
    if (longNamed.getSize() == 0) {
        removeTable(m_FileNameTable);
        m_FileNameTableUpToDate = true;
        return true;
    }
    ArchiveMember* table = prepareTable(m_FileNameTable, getFileNameTableType(), required);
    if (table == nullptr) {
        return false;
    }
    m_FileNameTable = table;
    uint32_t offset = 0;
    for (ArchiveMember* member : longNamed) {
        member->m_LongNameOffset = offset;
        uint8_t* destination = table->m_Contents->bytes() + offset;
        std::memcpy(destination, member->m_Name, member->m_NameLength);
        std::memcpy(destination + member->m_NameLength, longNameEnd, longNameEndSize);
        offset += member->m_NameLength + longNameEndSize;
    }
    m_FileNameTableUpToDate = true;
    return true;
}

void Archive::removeSymbolTable() {
    removeTable(m_SymbolTable);
    m_SymbolTableUpToDate = true;
}

bool Archive::updateSymbolTable(alloclib::Region* scratch) {
    TOMEX_CHECK(m_FileNameTableUpToDate);
    if (m_SymbolTableMode == SymbolTableMode_None) {
        removeSymbolTable();
        return true;
    }
    HostingMembers hosting(scratch);
    hosting.collect(*this);
    MinorVariantGroups groups(scratch);
    groups.collect(*this, hosting);
    m_ReadBuffer.release();
    if (hosting.getSize() == 0 && m_SymbolTableMode == SymbolTableMode_IfNeeded) {
        removeSymbolTable();
        return true;
    }
    SymbolOutput output(scratch);
    for (uint32_t i = 0; i < groups.getCount(); ++i) {
        if (!processMinorVariantGroup(*this, groups.get(i), output)) {
            return false;
        }
    }
    emitSymbols(hosting, groups, m_UniqueSymbols, output);

    ArchiveMember* table = prepareTable(m_SymbolTable, getSymbolTableType(), output.tableSize());
    if (table == nullptr) {
        return false;
    }
    m_SymbolTable = table;
    // Making a table's member marks the name table stale, but the new member has no long name.
    m_FileNameTableUpToDate = true;
    layOutMembers();

    output.write(table->m_Contents->bytes());
    m_SymbolTableUpToDate = true;
    return true;
}

} // namespace arlib
