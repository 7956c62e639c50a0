// Symbol tables whose count, offsets or names cannot be right. A table that is too short for what
// it claims is no archive's; a symbol of a member that is not there is passed over.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using namespace std::string_literals;
using testsupport::bigEndian32;

// Words and texts in front of each other, as a table has them.
std::string table(uint32_t count, const std::vector<uint32_t>& offsets, const std::string& names) {
    std::string bytes = bigEndian32(count);
    for (const uint32_t offset : offsets) {
        bytes += bigEndian32(offset);
    }
    return bytes + names;
}

// Behind the symbol table stand the name table and two members.
class BadInputSymbolTable : public BadInputCase {
protected:
    static ArchiveBuilder around(const std::string& contents) {
        ArchiveBuilder builder;
        builder.add("a.o", "abc").add({.name = longName, .contents = "defg"});
        builder.rawSymbolTable(contents);
        return builder;
    }
    // Where a.o stands if the table has that size.
    static uint32_t firstMember(size_t size) {
        return static_cast<uint32_t>(around(std::string(size, '\0')).offsetOf(0));
    }
    static uint32_t secondMember(size_t size) {
        return static_cast<uint32_t>(around(std::string(size, '\0')).offsetOf(1));
    }
    // Where the name table stands.
    static uint32_t nameTable(size_t size) {
        return static_cast<uint32_t>(8 + 60 + size + size % 2);
    }

    void refusedTable(const std::string& contents, const std::string& error) const {
        refused(around(contents).bytes(), error);
    }
    void forgivenTable(const std::string& contents, const Words& flaws) const {
        forgiven(around(contents).bytes(), flaws, {"a.o", longName},
                 {"a.o 0 0 0 100644 3", std::string(longName) + " 0 0 0 100644 4"});
    }

    static std::string saysSymbol(int index, const std::string& name, uint64_t offset) {
        return "Archive symbol table says symbol #" + std::to_string(index) + " '" + name +
               "' is defined in the archive member starting at offset " + std::to_string(offset);
    }
    static std::string nowhere(int index, const std::string& name, uint64_t offset) {
        return saysSymbol(index, name, offset) + " but no archive member starts there";
    }
    static std::string notObject(int index, const std::string& name, uint64_t offset) {
        return saysSymbol(index, name, offset) + ", but that member is not an object file";
    }
    static std::string nameCut(int index, uint32_t count) {
        return "Archive symbol table ends in the middle of the name of symbol #" +
               std::to_string(index) + " (out of " + std::to_string(count) + ")";
    }
    static std::string extra(size_t offset, size_t end) {
        return "Archive symbol table contains unexpected data at offset " + std::to_string(offset) +
               ", after all the expected data has finished at offset " + std::to_string(end);
    }

    static constexpr const char* longName = "a_rather_long_name.o";
};

// --- good tables ---------------------------------------------------------------------------------

TEST_F(BadInputSymbolTable, GoodTable) {
    forgivenTable(table(2, {firstMember(20), secondMember(20)}, "one\0two\0"s), {});
}

TEST_F(BadInputSymbolTable, EmptyTable) {
    forgivenTable(table(0, {}, ""), {});
}

TEST_F(BadInputSymbolTable, OneNameManyTimes) {
    const uint32_t first = firstMember(28);
    forgivenTable(table(3, {first, first, secondMember(28)}, "one\0one\0one\0"s), {});
}

TEST_F(BadInputSymbolTable, EmptyNames) {
    const uint32_t first = firstMember(14);
    forgivenTable(table(2, {first, first}, "\0\0"s), {});
}

TEST_F(BadInputSymbolTable, ZerosBehindTheLastName) {
    for (const size_t zeros : {1U, 2U, 3U, 4U, 100U}) {
        const size_t size = 4 + 4 + 2 + zeros;
        forgivenTable(table(1, {firstMember(size)}, "f\0"s + std::string(zeros, '\0')), {});
        forgivenTable(table(0, {}, std::string(zeros, '\0')), {});
    }
}

TEST_F(BadInputSymbolTable, DecoratedNames) {
    for (const std::string name :
         {"f$$BuildAttributes$", "f$$BuildAttributes$nothing like an attribute text",
          "$$BuildAttributes$", "f$$BuildAttributes$$$BuildAttributes$", "f$$BuildAttributes",
          "f$$BuildAttributes$~\x01\xff"}) {
        const size_t size = 4 + 4 + name.size() + 1;
        forgivenTable(table(1, {firstMember(size)}, name + '\0'), {});
    }
}

// --- tables that are too short -------------------------------------------------------------------

TEST_F(BadInputSymbolTable, NoRoomForACount) {
    for (size_t size = 0; size < 4; ++size) {
        refusedTable(std::string(size, '\0'),
                     failed("Archive symbol table is " + std::to_string(size) +
                            " bytes long, but should contain at least a 4-byte symbol count"));
    }
}

TEST_F(BadInputSymbolTable, CountTooLarge) {
    const auto flaw = [](size_t size, const std::string& count, const std::string& required) {
        return failed("Archive symbol table is " + std::to_string(size) +
                      " bytes long, but claims to contain " + count +
                      " symbols so it should be at least " + required + " bytes long");
    };
    refusedTable(table(1, {}, ""), flaw(4, "1", "8"));
    refusedTable(table(1, {}, "\0\0\0"s), flaw(7, "1", "8"));
    refusedTable(table(3, {8, 8}, ""), flaw(12, "3", "16"));
    refusedTable(table(0x01000000, {8}, "f\0"s), flaw(10, "16777216", "67108868"));
    refusedTable(table(0xFFFFFFFF, {8}, "f\0"s), flaw(10, "4294967295", "17179869184"));
}

TEST_F(BadInputSymbolTable, LastNameWithoutAnEnd) {
    refusedTable(table(1, {firstMember(8)}, ""), failed(nameCut(0, 1)));
    refusedTable(table(1, {firstMember(9)}, "f"), failed(nameCut(0, 1)));
    refusedTable(table(1, {firstMember(40)}, std::string(32, 'f')), failed(nameCut(0, 1)));
    const uint32_t first = firstMember(17);
    refusedTable(table(2, {first, first}, "one\0t"s), failed(nameCut(1, 2)));
}

TEST_F(BadInputSymbolTable, FewerNamesThanOffsets) {
    const uint32_t first = firstMember(20);
    refusedTable(table(3, {first, first, first}, "one\0"s), failed(nameCut(1, 3)));
}

TEST_F(BadInputSymbolTable, WarningsComeBeforeTheError) {
    refusedTable(table(2, {9, 9}, "one\0two"s),
                 warned(nowhere(0, "one", 9)) + failed(nameCut(1, 2)));
}

// --- symbols of no member ------------------------------------------------------------------------

TEST_F(BadInputSymbolTable, OffsetToNowhere) {
    for (const uint32_t offset : {0U, 7U, 9U, 100000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        forgivenTable(table(1, {offset}, "f\0"s), {nowhere(0, "f", offset)});
    }
}

TEST_F(BadInputSymbolTable, OffsetIntoAMember) {
    const uint32_t first = firstMember(10);
    for (const uint32_t offset : {first - 1, first + 1, first + 60, first + 63}) {
        forgivenTable(table(1, {offset}, "f\0"s), {nowhere(0, "f", offset)});
    }
}

TEST_F(BadInputSymbolTable, OffsetOfTheEnd) {
    const uint32_t end = secondMember(10) + 64;
    ASSERT_EQ(end, around(std::string(10, '\0')).bytes().size());
    forgivenTable(table(1, {end}, "f\0"s), {nowhere(0, "f", end)});
}

TEST_F(BadInputSymbolTable, OffsetOfATable) {
    forgivenTable(table(2, {8, nameTable(20)}, "one\0two\0"s),
                  {notObject(0, "one", 8), notObject(1, "two", nameTable(20))});
}

TEST_F(BadInputSymbolTable, OffsetInTheOtherByteOrder) {
    const uint32_t first = firstMember(10);
    ASSERT_LT(first, 256U);
    forgivenTable(table(1, {first << 24U}, "f\0"s), {nowhere(0, "f", uint64_t{first} << 24U)});
}

TEST_F(BadInputSymbolTable, GoodSymbolsBetweenBadOnes) {
    const size_t size = 4 + 16 + 8;
    forgivenTable(table(4, {1, firstMember(size), 8, secondMember(size)}, "a\0b\0c\0d\0"s),
                  {nowhere(0, "a", 1), notObject(2, "c", 8)});
}

TEST_F(BadInputSymbolTable, ControlCharactersInNames) {
    forgivenTable(table(1, {1}, "a\x1b\0"s), {nowhere(0, "a\\033", 1)});
}

TEST_F(BadInputSymbolTable, DecoratedNameIsShownWhole) {
    forgivenTable(table(1, {1}, "f$$BuildAttributes$x\0"s),
                  {nowhere(0, "f$$BuildAttributes$x", 1)});
}

// As many warnings as symbols: warnings have no limit.
TEST_F(BadInputSymbolTable, HundredsOfBadSymbols) {
    constexpr uint32_t count = 500;
    std::string names;
    Words flaws;
    for (uint32_t i = 0; i < count; ++i) {
        const std::string name = "symbol" + std::to_string(i);
        names += name + '\0';
        flaws.push_back(nowhere(static_cast<int>(i), name, 3));
    }
    const std::string bytes = around(table(count, std::vector<uint32_t>(count, 3), names)).bytes();
    folder.write("lib.a", bytes);
    EXPECT_TRUE(ended(tomex({"-t", "lib.a"}), 0, listed({"a.o", longName}), warnedAll(flaws)));
    // Raised to errors they meet the limit of errors, and the run ends without writing.
    const Words first(flaws.begin(), flaws.begin() + 50);
    untouched(bytes, [&] {
        EXPECT_TRUE(
            ended(tomex({"--diag_error=6974", "-s", "lib.a"}), 1, "", warnedAll(first, "Error")));
    });
}

// --- more than the symbols -----------------------------------------------------------------------

TEST_F(BadInputSymbolTable, DataBehindTheLastName) {
    forgivenTable(table(1, {firstMember(11)}, "f\0x"s), {extra(10, 10)});
    forgivenTable(table(1, {firstMember(13)}, "f\0\0\0x"s), {extra(12, 10)});
    forgivenTable(table(1, {firstMember(15)}, "f\0\0\0x\0y"s), {extra(12, 10)});
    forgivenTable(table(0, {}, "abc"), {extra(4, 4)});
    forgivenTable(table(0, {}, "\0\0\0\xff"s), {extra(7, 4)});
}

TEST_F(BadInputSymbolTable, LineFeedBehindTheLastNameIsData) {
    forgivenTable(table(1, {firstMember(11)}, "f\0\n"s), {extra(10, 10)});
}

} // namespace
} // namespace commandtest
