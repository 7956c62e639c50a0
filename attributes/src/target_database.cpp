// The table of targets, put together from its blocks, and the lookups on it.
#include "attributes/interface/target_database.h"

#include "attributes/src/target_lookup.h"
#include "attributes/src/target_rows_architectures.h"
#include "attributes/src/target_rows_later.h"
#include "attributes/src/target_rows_processors.h"
#include "attributes/src/target_rows_units.h"
#include "attributes/src/text_match.h"
#include "platform/interface/internal_check.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace attributes {

namespace {

// The blocks in their order. The compiler puts the table together and checks that it is full.
struct Table {
    Target rows[TargetCount];
};

constexpr Table joinBlocks() {
    Table table{};
    Target* next = table.rows;
    next = std::copy(std::begin(target_rows::architectures), std::end(target_rows::architectures),
                     next);
    next = std::copy(std::begin(target_rows::processors), std::end(target_rows::processors), next);
    next = std::copy(std::begin(target_rows::laterArchitectures),
                     std::end(target_rows::laterArchitectures), next);
    next = std::copy(std::begin(target_rows::laterProcessors),
                     std::end(target_rows::laterProcessors), next);
    std::copy(std::begin(target_rows::units), std::end(target_rows::units), next);
    return table;
}

static_assert(std::size(target_rows::architectures) + std::size(target_rows::processors) +
                  std::size(target_rows::laterArchitectures) +
                  std::size(target_rows::laterProcessors) + std::size(target_rows::units) ==
              TargetCount);

constexpr Table table = joinBlocks();

// A row of the table by its exact name. Used while compiling only: a name that is in no row does
// not compile, and lookups by number need no search.
consteval const Target* rowOf(std::string_view name) {
    for (const Target& row : table.rows) {
        if (name == row.name) {
            return &row;
        }
    }
    throw "no such target";
}

// The target of a number and a profile. Rows are tried in order; the profile 0 of a row stands for
// all that have no row before it.
struct LookupRow {
    uint32_t arch;
    uint32_t profile;
    const Target* target;
};

constexpr LookupRow lookupRows[] = {
    {1, 0, rowOf("v4")},
    {2, 0, rowOf("v4.finch")},
    {3, 0, rowOf("v5")},
    {4, 0, rowOf("v5.dsp")},
    {5, 0, rowOf("v5.dsp.java")},
    {6, 0, rowOf("v6")},
    {7, 0, rowOf("v6.kernel.safe")},
    {8, 0, rowOf("v6.finch4")},
    {9, 0, rowOf("v6.kernel")},
    {10, 'A', rowOf("app7")},
    {10, 'M', rowOf("m7.base")},
    {10, 'R', rowOf("rt7")},
    {10, 'S', rowOf("apprt7")},
    {10, 0, rowOf("v7")},
    {11, 0, rowOf("m6.base")},
    {12, 0, rowOf("m6.os")},
    {13, 0, rowOf("m7.dsp")},
    {14, 'R', rowOf("rt8")},
    {14, 'S', rowOf("apprt8")},
    {14, 0, rowOf("app8")},
    {15, 0, rowOf("rt8")},
    {16, 0, rowOf("m8.base")},
    {17, 0, rowOf("m8.main")},
    {21, 0, rowOf("m9.main")},
    {22, 'A', rowOf("app9")},
    {22, 0, rowOf("apprt8")},
    {23, 0, rowOf("m10.main")},
};

// The same for 64-bit objects, where a profile without a row has no target.
constexpr LookupRow wideRows[] = {
    {14, 'A', rowOf("app8.wide")},
    {14, 'R', rowOf("rw.wide")},
    {15, 0, rowOf("rw.wide")},
    {22, 0, rowOf("app9.wide")},
};

// Hands a row out; none is null and zeroes `out`.
const char* give(const Target* row, FullAttr& out) {
    if (row == nullptr) {
        out = FullAttr{};
        return nullptr;
    }
    out.isa = row->isa;
    out.targetClass = row->targetClass;
    out.targetKind = row->kind;
    return row->name;
}

template <size_t Count>
const char* lookup(const LookupRow (&rows)[Count], uint32_t arch, uint32_t profile, FullAttr& out) {
    const LookupRow* const row =
        std::find_if(std::begin(rows), std::end(rows), [&](const LookupRow& candidate) {
            return candidate.arch == arch &&
                   (candidate.profile == 0 || candidate.profile == profile);
        });
    return give(row == std::end(rows) ? nullptr : row->target, out);
}

} // namespace

constinit const Target (&procAndArchList)[TargetCount] = table.rows;

const char* findTarget(const char* name, FullAttr& out) {
    const Target* found = nullptr;
    if (name != nullptr) {
        const std::string_view wanted(name);
        const Target* const row = std::find_if(
            std::begin(table.rows), std::end(table.rows), [wanted](const Target& candidate) {
                return equalsIgnoringCase(candidate.name, wanted);
            });
        found = row == std::end(table.rows) ? nullptr : row;
    }
    return give(found, out);
}

const char* lookupByArch(uint32_t arch, uint32_t profile, FullAttr& out) {
    return lookup(lookupRows, arch, profile, out);
}

const char* lookupWide(uint32_t arch, uint32_t profile, FullAttr& out) {
    return lookup(wideRows, arch, profile, out);
}

bool isArchitectureRow(const FullAttr& value) {
    return (value.targetKind & target_kind::ARCHITECTURE) != 0;
}

bool isProcessorOrArchitectureRow(const FullAttr& value) {
    return (value.targetKind & (target_kind::ARCHITECTURE | target_kind::PROCESSOR)) != 0;
}

uint32_t findFirstFloatingPointRow(std::span<const Target> rows) {
    const auto row = std::find_if(rows.begin(), rows.end(), [](const Target& candidate) {
        return candidate.kind == target_kind::FLOATING_POINT_UNIT;
    });
    if (row == rows.end()) {
        platform::assertionFailed("Did not find any FPU's in procAndArchList");
    }
    return static_cast<uint32_t>(row - rows.begin());
}

uint32_t firstFloatingPointRow() {
    static const uint32_t first = findFirstFloatingPointRow(procAndArchList);
    return first;
}

} // namespace attributes
