#include "tabledrivenparser/interface/best_row.h"

#include "tabledrivenparser/interface/parser.h"
#include "tabledrivenparser/src/mask_list.h"
#include "tabledrivenparser/src/row_match.h"

namespace tabledrivenparser {

namespace {

// Whether a bare option of this row stands for the present value. Values of 32-bit types are
// compared in 32 bits, however the table wrote a negative number.
bool impliesPresentValue(const Parser& parser, uint32_t parameter, const OptionRow& row) {
    uint64_t value = parser.parameters().values[parameter].value;
    switch (parser.parameters().descriptors[parameter].type) {
    case ParameterType_BOOLEAN:
    case ParameterType_ENUM:
    case ParameterType_ADDRESS:
    case ParameterType_INT:
        return static_cast<uint32_t>(value) == static_cast<uint32_t>(row.impliedValue);
    default:
        return value == row.impliedValue;
    }
}

bool isCallBack(const Parser& parser, uint32_t parameter) {
    return parser.parameters().descriptors[parameter].type == ParameterType_CALL_BACK;
}

bool isUsable(const Parser& parser, uint32_t parameter, const OptionRow& row) {
    return isCallBack(parser, parameter) || row.argument != OptionArgument_None ||
           impliesPresentValue(parser, parameter, row);
}

// The three preferences, in their order; the first that tells the rows apart decides.
bool isBetter(const Parser& parser, uint32_t parameter, const OptionRow& row,
              const OptionRow& best) {
    bool isRowDeprecated = (row.flags & OptionFlag_Deprecated) != 0;
    bool isBestDeprecated = (best.flags & OptionFlag_Deprecated) != 0;
    if (isRowDeprecated != isBestDeprecated) {
        return isBestDeprecated;
    }
    bool doesRowShow = rowShowsArgument(parser, parameter, row);
    bool doesBestShow = rowShowsArgument(parser, parameter, best);
    if (doesRowShow != doesBestShow) {
        return doesBestShow;
    }
    return !isPositional(best) && (isPositional(row) || (isLongName(row) && !isLongName(best)));
}

} // namespace

bool rowShowsArgument(const Parser& parser, uint32_t parameter, const OptionRow& row) {
    if (isCallBack(parser, parameter) || row.argument == OptionArgument_Required) {
        return true;
    }
    return row.argument == OptionArgument_Optional && !impliesPresentValue(parser, parameter, row);
}

const OptionRow* bestRowForParameter(const Parser& parser, uint32_t parameter) {
    const OptionRow* const* rows = parser.parameters().descriptors[parameter].rows;
    const OptionRow* best = nullptr;
    for (; rows != nullptr && *rows != nullptr; ++rows) {
        const OptionRow& row = **rows;
        if (masksPass(row.restrictions, parser.options().activeMask) &&
            isUsable(parser, parameter, row) &&
            (best == nullptr || isBetter(parser, parameter, row, *best))) {
            best = &row;
        }
    }
    return best;
}

} // namespace tabledrivenparser
