// The number fields of a header: date, uid, gid and mode, whose flaws are forgiven, and the size,
// without which nothing behind it can be found. A number is digits with blanks before or behind,
// fits 32 bits and fills its field.
#include "tests/command/bad_input_case.h"

namespace commandtest {
namespace {

using RawField = std::optional<std::string> BuiltMember::*;

struct FieldKind {
    const char* name;
    RawField raw;
    size_t width;
    size_t place; // in a summary line, behind the name
};

constexpr FieldKind dateField = {"date", &BuiltMember::rawDate, 12, 0};
constexpr FieldKind uidField = {"uid", &BuiltMember::rawUid, 6, 1};
constexpr FieldKind gidField = {"gid", &BuiltMember::rawGid, 6, 2};
constexpr FieldKind modeField = {"mode", &BuiltMember::rawMode, 8, 3};
constexpr FieldKind sizeField = {"size", &BuiltMember::rawSize, 10, 4};

// The text goes into the field with blanks behind it.
struct NumberCase {
    std::string name;
    FieldKind field;
    std::string text;
    std::string value = {}; // in the written header; none if the text is bad
    // What the message shows of a bad text, if that isn't the whole field.
    std::optional<std::string> printed = std::nullopt;
};

void PrintTo(const NumberCase& number, std::ostream* stream) {
    *stream << number.field.name << " " << testing::PrintToString(number.text);
}

BuiltMember withField(const NumberCase& number) {
    BuiltMember member = {
        .name = "a.o", .contents = "abcde", .date = 1, .uid = 2, .gid = 3, .mode = 0644};
    member.*number.field.raw = padded(number.text, number.field.width);
    return member;
}

std::string summaryWith(const FieldKind& field, const std::string& value) {
    Words values = {"1", "2", "3", "644", "5"};
    values.at(field.place) = value;
    std::string line = "a.o";
    for (const std::string& word : values) {
        line += " " + word;
    }
    return line;
}

std::string invalid(const NumberCase& number) {
    return headerAt(8) + " contains invalid " + number.field.name + " string '" +
           number.printed.value_or(padded(number.text, number.field.width)) + "'";
}

std::string bytesWith(const BuiltMember& member) {
    return ArchiveBuilder().add(member).bytes();
}

class BadInputNumber : public BadInputCase, public testing::WithParamInterface<NumberCase> {};

std::string caseName(const testing::TestParamInfo<NumberCase>& info) {
    return info.param.field.name + info.param.name;
}

// --- texts that are numbers ----------------------------------------------------------------------

using GoodNumber = BadInputNumber;

TEST_P(GoodNumber, IsReadAndWrittenPlainly) {
    const NumberCase& number = GetParam();
    forgiven(bytesWith(withField(number)), {}, {"a.o"}, {summaryWith(number.field, number.value)});
}

std::vector<NumberCase> goodNumbers() {
    std::vector<NumberCase> cases = {
        {"FullWidth", dateField, "000000000077", "77"},
        {"FullWidth", uidField, "999999", "999999"},
        {"FullWidth", gidField, "999999", "999999"},
        {"FullWidth", modeField, "77777777", "77777777"},
        {"FullWidth", sizeField, "0000000005", "5"},
        {"Largest", dateField, "4294967295", "4294967295"},
        {"LeadingBlanks", sizeField, "   5", "5"},
        {"LeadingBlanksOnly", sizeField, "         5", "5"},
        {"LargestBehindZeros", dateField, "004294967295", "4294967295"},
    };
    for (const FieldKind& field : {dateField, uidField, gidField, modeField}) {
        cases.push_back({"Zero", field, "0", "0"});
        cases.push_back({"LeadingZeros", field, "0012", "12"});
        cases.push_back({"LeadingBlanks", field, "  12", "12"});
        cases.push_back(
            {"LeadingBlanksOnly", field, std::string(field.width - 2, ' ') + "12", "12"});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Numbers, GoodNumber, testing::ValuesIn(goodNumbers()), caseName);

// --- texts that are none -------------------------------------------------------------------------

std::vector<NumberCase> badTexts(const FieldKind& field) {
    using namespace std::string_literals;
    return {
        {"Letters", field, "abc"},
        {"Blank", field, ""},
        {"BlankInside", field, "1 2"},
        {"TrailingLetter", field, "12x"},
        {"LetterInLastPlace", field, padded("12", field.width - 1) + "x"},
        {"Minus", field, "-1"},
        {"MinusZero", field, "-0"},
        {"Plus", field, "+1"},
        {"Hexadecimal", field, "0x1"},
        {"Point", field, "1.0"},
        {"Slash", field, "1/"},
        {"Tab", field, "\t1"},
        {"LineFeed", field, "1\n"},
        {"ControlCharacter", field, "1\x1b", "", "1\\033" + std::string(field.width - 2, ' ')},
        {"NulBehind", field, "12\0"s, "", "12"},
        {"NulFirst", field, "\0"s, "", ""},
        {"NulLast", field, padded("1", field.width - 1) + '\0', "", padded("1", field.width - 1)},
        {"AllNul", field, std::string(field.width, '\0'), "", ""},
    };
}

using ForgivenNumber = BadInputNumber;

TEST_P(ForgivenNumber, IsTakenAsZero) {
    const NumberCase& number = GetParam();
    forgiven(bytesWith(withField(number)), {invalid(number)}, {"a.o"},
             {summaryWith(number.field, "0")});
}

std::vector<NumberCase> forgivenNumbers() {
    std::vector<NumberCase> cases = {
        {"TooLargeByOne", dateField, "4294967296"},
        {"TooLarge", dateField, "999999999999"},
        {"TooLargeAtAMultiple", dateField, "42949672960"},
        {"DigitEight", modeField, "100648"},
        {"DigitNine", modeField, "9"},
        {"DigitNineInside", modeField, "10091"},
        {"DigitEightFirst", modeField, "8"},
    };
    for (const FieldKind& field : {dateField, uidField, gidField, modeField}) {
        const std::vector<NumberCase> bad = badTexts(field);
        cases.insert(cases.end(), bad.begin(), bad.end());
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Numbers, ForgivenNumber, testing::ValuesIn(forgivenNumbers()), caseName);

using BadSize = BadInputNumber;

TEST_P(BadSize, EndsTheReading) {
    const NumberCase& number = GetParam();
    refused(bytesWith(withField(number)), failed(invalid(number)));
}

std::vector<NumberCase> badSizes() {
    std::vector<NumberCase> cases = badTexts(sizeField);
    cases.push_back({"TooLargeByOne", sizeField, "4294967296"});
    cases.push_back({"TooLarge", sizeField, "9999999999"});
    cases.push_back({"TooLargeAtAMultiple", sizeField, "8589934592"});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Numbers, BadSize, testing::ValuesIn(badSizes()), caseName);

// --- the two tables ------------------------------------------------------------------------------

class BadInputTableFields : public BadInputCase {
protected:
    const std::string longName = "a_rather_long_name.o";
    static void blankFields(BuiltMember& header) {
        header.rawDate = std::string(12, ' ');
        header.rawUid = std::string(6, ' ');
        header.rawGid = std::string(6, ' ');
        header.rawMode = std::string(8, ' ');
    }
    ArchiveBuilder withTables() const {
        ArchiveBuilder builder;
        builder.add({.name = longName, .contents = "abc"}).withSymbolTable();
        return builder;
    }
    Words summary() const { return {longName + " 0 0 0 100644 3"}; }
};

TEST_F(BadInputTableFields, BlankFieldsAreGood) {
    ArchiveBuilder builder = withTables();
    blankFields(builder.symbolTableHeader());
    blankFields(builder.nameTableHeader());
    forgiven(builder.bytes(), {}, {longName}, summary());
}

TEST_F(BadInputTableFields, BlankFieldsAreGoodInMembersThatOnlyLookLikeTables) {
    BuiltMember second = {.contents = "x", .rawName = padded("/", 16)};
    BuiltMember third = {.contents = "y", .rawName = padded("//", 16)};
    blankFields(second);
    blankFields(third);
    const std::string bytes =
        ArchiveBuilder().add("a.o", "1").add(second).add("b.o", "2").add(third).bytes();
    forgiven(bytes, {}, {"a.o", "", "b.o", ""},
             {"a.o 0 0 0 100644 1", " 0 0 0 0 1", "b.o 0 0 0 100644 1", " 0 0 0 0 1"});
}

TEST_F(BadInputTableFields, OtherFlawsAreForgivenAsElsewhere) {
    ArchiveBuilder builder = withTables();
    builder.symbolTableHeader().rawDate = padded("now", 12);
    builder.nameTableHeader().rawMode = padded("8", 8);
    forgiven(builder.bytes(),
             {headerAt(8) + " contains invalid date string 'now         '",
              headerAt(72) + " contains invalid mode string '8       '"},
             {longName}, summary());
}

TEST_F(BadInputTableFields, BlankSizeIsAFlaw) {
    ArchiveBuilder builder = withTables();
    builder.symbolTableHeader().rawSize = std::string(10, ' ');
    refused(builder.bytes(), failed(headerAt(8) + " contains invalid size string '          '"));
    ArchiveBuilder other = withTables();
    other.nameTableHeader().rawSize = std::string(10, ' ');
    refused(other.bytes(), failed(headerAt(72) + " contains invalid size string '          '"));
}

// --- several flaws -------------------------------------------------------------------------------

class BadInputHeader : public BadInputCase {
protected:
    static BuiltMember allBad() {
        BuiltMember member = {.name = "a.o",
                              .contents = "abc",
                              .rawName = padded("none", 16),
                              .rawDate = padded("d", 12),
                              .rawUid = padded("u", 6),
                              .rawGid = padded("g", 6),
                              .rawMode = padded("m", 8),
                              .rawPadding = "!"};
        return member;
    }
    static Words numberFlaws(uint64_t offset) {
        return {headerAt(offset) + " contains invalid date string 'd           '",
                headerAt(offset) + " contains invalid uid string 'u     '",
                headerAt(offset) + " contains invalid gid string 'g     '",
                headerAt(offset) + " contains invalid mode string 'm       '"};
    }
};

TEST_F(BadInputHeader, FlawsAreToldInTheFieldsOrder) {
    ArchiveBuilder builder;
    builder.add("first.o", "12345").add(allBad()).add("last.o", "1");
    const uint64_t offset = builder.offsetOf(1);
    Words flaws = numberFlaws(offset);
    flaws.push_back(headerAt(offset) + " has no '/' character in its name field");
    flaws.push_back("Padding byte at offset " + std::to_string(offset + 63) +
                    " has value 33 and not 0x0A as it should be");
    forgiven(builder.bytes(), flaws, {"first.o", "", "last.o"},
             {"first.o 0 0 0 100644 5", " 0 0 0 0 3", "last.o 0 0 0 100644 1"});
}

TEST_F(BadInputHeader, ForgivenFlawsAreToldBeforeTheOneThatEndsTheReading) {
    BuiltMember member = allBad();
    member.rawSize = padded("s", 10);
    refused(ArchiveBuilder().add(member).bytes(),
            warnedAll(numberFlaws(8)) +
                failed(headerAt(8) + " contains invalid size string 's         '"));
}

TEST_F(BadInputHeader, WrongMagicEndsTheReadingBeforeAnyFieldIsLookedAt) {
    const std::string flaw = " contains incorrect archive-member magic number";
    for (const std::string& magic :
         Words{"`\r", "'\n", "\n`", "``", "  ", std::string(2, '\0'), std::string("`\0", 2)}) {
        BuiltMember member = allBad();
        member.rawMagic = magic;
        refused(ArchiveBuilder().add(member).bytes(), failed(headerAt(8) + flaw));
        refused(ArchiveBuilder().add("first.o", "1").add(member).bytes(),
                failed(headerAt(70) + flaw));
    }
}

} // namespace
} // namespace commandtest
