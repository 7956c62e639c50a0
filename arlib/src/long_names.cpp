#include "arlib/src/long_names.h"

#include <algorithm>

#include "arlib/interface/archive_format.h"

namespace arlib {

LongNames::LongNames(std::string_view table, alloclib::Region* region) {
    char* text = alloclib::copyString(*region, table);
    Stretch stretch;
    for (uint32_t i = 0; i < table.size(); ++i) {
        const bool isEntryEnd = table.substr(i, longNameEndSize) == longNameEnd;
        if (isEntryEnd) {
            text[i] = '\0';
        }
        if (text[i] == '\0') { // also one in the table: no name holds it
            stretch.end = i;
            m_Stretches.push_back(stretch);
            stretch.leafStart = 0;
        } else if (text[i] == '/' || text[i] == '\\') {
            stretch.leafStart = i + 1;
        }
    }
    stretch.end = static_cast<uint32_t>(table.size());
    m_Stretches.push_back(stretch);
    m_Text = text;
}

std::string_view LongNames::nameAt(uint32_t offset) const {
    const auto endsBefore = [](const Stretch& stretch, uint32_t place) {
        return stretch.end < place;
    };
    const auto stretch =
        std::lower_bound(m_Stretches.begin(), m_Stretches.end(), offset, endsBefore);
    const uint32_t start = std::max(offset, stretch->leafStart);
    return {m_Text + start, stretch->end - start};
}

} // namespace arlib
