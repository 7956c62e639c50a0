#include "tomex/size_report.h"

#include <algorithm>
#include <functional>
#include <new>
#include <string_view>
#include <vector>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/archive_member_type.h"
#include "elfext/interface/object_module.h"
#include "elfext/interface/sizes_statistics.h"
#include "tomex/command_report.h"
#include "tomex/edit_actions.h"

namespace tomex {
namespace {

// A section that holds an entry point.
struct EntryRecord {
    EntryRecord* next;
    uint32_t offset; // of the module's entry point
    const char* sectionName;
    const char* memberName;
};

// The numbers of a row. All are 32 bits wide, sums as well.
struct Columns {
    uint32_t code = 0;
    uint32_t roData = 0;
    uint32_t rwData = 0;
    uint32_t ziData = 0;
    uint32_t debug = 0;

    Columns& operator+=(const Columns& other) {
        code += other.code;
        roData += other.roData;
        rwData += other.rwData;
        ziData += other.ziData;
        debug += other.debug;
        return *this;
    }
};

// What the members come to, and what is said at the end.
struct SizesTotals {
    Columns sums;
    uint32_t flags = 0; // ReportFlag bits
    EntryRecord* firstEntry = nullptr;
    EntryRecord* lastEntry = nullptr;
};

void printRow(const Columns& columns, const char* name) {
    reportPlain(messages::MessageKey_SizesRow, columns.code, columns.roData, columns.rwData,
                columns.ziData, columns.debug, name);
}

Columns columnsOf(const elfext::SizeStatistics& statistics) {
    Columns columns;
    columns.code = static_cast<uint32_t>(statistics.m_Code + statistics.m_LiteralPools);
    columns.roData = static_cast<uint32_t>(statistics.m_RoData + statistics.m_InternalPadding);
    columns.rwData = static_cast<uint32_t>(statistics.m_RwDataUncompressed);
    columns.ziData = static_cast<uint32_t>(statistics.m_ZiData);
    columns.debug = static_cast<uint32_t>(statistics.m_DebugInfo);
    return columns;
}

void appendEntry(SizesTotals& totals, const EntryRecord& entry) {
    void* memory =
        alloclib::allocate(alloclib::defaultRegion(), sizeof(EntryRecord), alignof(EntryRecord));
    auto* record = new (memory) EntryRecord(entry);
    (totals.lastEntry != nullptr ? totals.lastEntry->next : totals.firstEntry) = record;
    totals.lastEntry = record;
}

bool holdsEntryPoint(const elfext::Section& section) {
    constexpr uint32_t wanted = elfext::SHF_ALLOC | elfext::SHF_ENTRYSECT;
    return section.getType() == elfext::SHT_PROGBITS && (section.getFlags() & wanted) == wanted;
}

// Copies of the names of a module's sections, which end with the module. Names may be the ends of
// one another, and are copied so: otherwise a small file could ask for any amount of memory.
class SectionNames {
public:
    void add(const elfext::Section& section) { m_Copies.push_back({nameOf(section), nullptr}); }

    // After all have been added.
    void copy() {
        std::sort(m_Copies.begin(), m_Copies.end(), standsBefore);
        std::string_view last;
        const char* lastCopy = nullptr;
        for (Copy& each : m_Copies) {
            const bool isInside = lastCopy != nullptr && each.name <= last.data() + last.size();
            if (!isInside) {
                last = each.name;
                lastCopy = alloclib::copyString(alloclib::defaultRegion(), last);
            }
            each.copy = lastCopy + (each.name - last.data());
        }
    }

    const char* copyOf(const elfext::Section& section) const {
        const Copy wanted = {nameOf(section), nullptr};
        return std::lower_bound(m_Copies.begin(), m_Copies.end(), wanted, standsBefore)->copy;
    }

private:
    struct Copy {
        const char* name;
        const char* copy;
    };

    static const char* nameOf(const elfext::Section& section) {
        return section.getName() != nullptr ? section.getName() : "";
    }
    static bool standsBefore(const Copy& left, const Copy& right) {
        return std::less<>()(left.name, right.name);
    }

    std::vector<Copy> m_Copies;
};

void listEntries(const elfext::ObjectModule& module, const char* memberName, SizesTotals& totals) {
    SectionNames names;
    for (const elfext::Section* section : module.getSections()) {
        if (holdsEntryPoint(*section)) {
            names.add(*section);
        }
    }
    names.copy();
    for (const elfext::Section* section : module.getSections()) {
        if (holdsEntryPoint(*section)) {
            appendEntry(totals, {nullptr, static_cast<uint32_t>(module.getEntryPoint()),
                                 names.copyOf(*section), memberName});
        }
    }
}

void reportRow(const elfext::SizeStatistics& statistics, const char* memberName,
               SizesTotals& totals) {
    const Columns columns = columnsOf(statistics);
    if ((totals.flags & ReportFlag_Sizes) != 0) {
        printRow(columns, memberName);
    }
    totals.sums += columns;
}

// Members that are no ELF files, or none that can be read, are passed over without a word. One
// whose bytes the host does not deliver would make the sums wrong, and is told of. `known` are the
// sizes of one that need not be read, or null.
void reportMemberSizes(arlib::ArchiveMember& member, const elfext::SizeStatistics* known,
                       SizesTotals& totals) {
    if (known != nullptr) {
        reportRow(*known, member.getName(), totals);
        return;
    }
    if (member.getType() != arlib::getElfImageType() || !member.ensureLocation()) {
        return;
    }
    elfext::ObjectModule module;
    if (!member.readObjectModule(module, member.getArchive()->getElfErrorHandler(),
                                 arlib::ArchiveMember::HostFailures::ToArchive)) {
        return;
    }
    if ((totals.flags & ReportFlag_Entries) != 0) {
        listEntries(module, member.getName(), totals);
    }
    reportRow(elfext::computeSizeStatistics(module), member.getName(), totals);
}

void printEntries(const SizesTotals& totals) {
    if (totals.firstEntry == nullptr) {
        reportPlain(messages::MessageKey_NoEntryPoints);
        return;
    }
    for (const EntryRecord* entry = totals.firstEntry; entry != nullptr; entry = entry->next) {
        reportPlain(messages::MessageKey_EntryPoint, entry->offset, entry->sectionName,
                    entry->memberName);
    }
}

} // namespace

void reportSizes(arlib::Archive& archive, const ArchiveReadStatus& status,
                 arlib::MemberSizes& known, uint32_t flags) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    SizesTotals totals;
    totals.flags = flags;
    if ((flags & ReportFlag_Sizes) != 0) {
        reportPlain(messages::MessageKey_SizesHeading);
    }
    known.finish();
    uint32_t place = 0;
    for (arlib::ArchiveMember* member : archive.getMembers()) {
        if (!member->isAuxiliary()) {
            reportMemberSizes(*member, known.find(*member, place), totals);
        }
        ++place;
    }
    if ((flags & ReportFlag_Sizes) != 0) {
        // The name's line feed makes an empty line behind the table.
        printRow(totals.sums, "TOTAL\n");
    }
    if ((flags & ReportFlag_Entries) != 0) {
        printEntries(totals);
    }
}

} // namespace tomex
