// Files with a dynamic section.
#pragma once

#include "tests/elfext/reader_fixtures.h"

namespace elfext::test {

class ReaderDynamicTest : public ReaderFormatTest {
protected:
    // A file with one dynamic section of these tags. Its string table is section 1 and holds
    // "first" at 1, "second" at 7.
    testsupport::ElfBuilder builderOf(const std::vector<testsupport::BuiltDynamicTag>& tags) {
        testsupport::ElfBuilder builder(format(), testsupport::elf::ET_DYN);
        const size_t strings = builder.addStringTable(".dynstr");
        builder.addString(strings, "first");
        builder.addString(strings, "second");
        m_Dynamic = builder.addDynamic(strings, tags);
        return builder;
    }
    bool readTags(const std::vector<testsupport::BuiltDynamicTag>& tags) {
        startModule();
        return read(builderOf(tags).bytes());
    }
    testsupport::ElfBytes bytes() const { return testsupport::ElfBytes(format()); }

    static constexpr uint64_t firstText = 1;
    static constexpr uint64_t secondText = 7;
    static constexpr uint64_t lastText = 13; // the zero byte at the table's end
    static constexpr uint64_t tableSize = 14;
    size_t m_Dynamic = 0;
};

} // namespace elfext::test
