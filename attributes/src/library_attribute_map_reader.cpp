// Where the rows of a library attribute map come from: lines of a file, or the table below.

#include <memory>
#include <string>

#include "attributes/interface/decoration.h"
#include "attributes/interface/library_attribute_map.h"
#include "platform/interface/system_path.h"

namespace attributes {
namespace {

constexpr char CommentSign = '#';

// The rows for the tool chain's own libraries. The third one's tokens are in no table, so that it
// gives what "$IEEE1" alone gives; it stands here as the linkers have it.
constexpr const char* builtInRows[BuiltInRowCount] = {
    "*_a* $IEEE1$QEL_ISAv4", "*_t* $IEEE1$FINCH_ISAv1", "*_w* $IEEE1$FINCH_ISAv4~$QEL_ISAv1",
    "*_?f* $IEEE1$FLAv3",    "*_?v* $IEEE1$ZLTv1",      "*_??p* $IEEE1$PE",
    "*_??m* $IEEE1$ME",      "*_???s* $IEEE1$STKCKD",   "*_???u* $IEEE1$~STKCKD",
    "*_????e* $IEEE1$RWPI",  "*_????n* $IEEE1$~SHL",    "g_* $IEEE1$IEEEX fz",
    "f_* $IEEE1$IEEEF fz",   "fj_* $IEEE1$IEEEJ fz",
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

// White space as every language has it.
bool isWhiteSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Ends the field that begins at `field` with a NUL. Returns where the next one begins, or the
// text's end.
char* cutField(char* field) {
    while (*field != '\0' && !isWhiteSpace(*field)) {
        ++field;
    }
    if (*field != '\0') {
        *field++ = '\0';
    }
    while (isWhiteSpace(*field)) {
        ++field;
    }
    return field;
}

} // namespace

void parseMapRow(LibraryAttributeMap& map, char* line) {
    if (*line == CommentSign) {
        return;
    }
    const char* pattern = line;
    char* decoration = cutField(line);
    char* alias = cutField(decoration);
    cutField(alias);
    if (*pattern == '\0' || *decoration == '\0') {
        return;
    }
    FullAttr attributes;
    parseDecoration(attributes, decoration);
    map.addRow(pattern, attributes, *alias != '\0' ? alias : nullptr);
}

bool readMapRows(LibraryAttributeMap& map, std::FILE* file) {
    char line[LongestMapLine + 1];
    bool hasLine = false;
    while (std::fgets(line, sizeof line, file) != nullptr) {
        hasLine = true;
        parseMapRow(map, line);
    }
    return hasLine || std::ferror(file) == 0;
}

void addBuiltInRows(LibraryAttributeMap& map) {
    for (const char* row : builtInRows) {
        std::string line(row);
        parseMapRow(map, line.data());
    }
}

void loadLibraryAttributeMap(LibraryAttributeMap& map, const char* fileName) {
    const platform::OwnedText systemName = platform::longSystemPath(fileName);
    const OpenFile file(std::fopen(systemName.get(), "rb"));
    if (file == nullptr || !readMapRows(map, file.get())) {
        addBuiltInRows(map);
    }
}

} // namespace attributes
