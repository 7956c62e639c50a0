// Options with their values, by type and by the settings of the buffer.

#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/value_writer.h"

namespace tabledrivenparser {

namespace {

const EnumRow rows[] = {{.name = "one", .value = 1},
                        {.name = nullptr, .value = 2},
                        {.name = "two", .value = 2},
                        {.name = "deux", .value = 2}};
const EnumTable table = {4, rows};

class ValueWriterTest : public ParserTest {
protected:
    void SetUp() override {
        ParserTest::SetUp();
        m_buffer.capacity = static_cast<uint32_t>(m_room.size());
        m_buffer.text = m_room.data();
        m_buffer.quoting = 1;
    }
    // What was written since the last call.
    std::string written() {
        EXPECT_TRUE(m_buffer.fits());
        std::string text = m_room.substr(0, m_buffer.length);
        m_buffer.length = 0;
        return text;
    }
    std::string value(uint32_t type, uint64_t value, const char* name = "x", char separator = 0) {
        writeValue(m_buffer, type, value, &table, name, separator);
        return written();
    }
    std::string text(const char* text, const char* name) {
        return value(ParameterType_STRING, addressValue(text), name);
    }
    std::string words(std::initializer_list<const char*> elements, const char* name,
                      char separator = 0) {
        StrList list;
        for (const char* each : elements) {
            list.append(each);
        }
        return value(ParameterType_STRING_VECTOR, addressValue(&list), name, separator);
    }

    std::string m_room = std::string(1000, '!');
    TextBuffer m_buffer;
};

} // namespace

TEST_F(ValueWriterTest, OptionHasTwoDashesBeforeALongName) {
    writeOption(m_buffer, "create");
    EXPECT_EQ(written(), "--create");
    writeOption(m_buffer, "r");
    EXPECT_EQ(written(), "-r");
    writeOption(m_buffer, "");
    EXPECT_EQ(written(), "");
}

TEST_F(ValueWriterTest, SeparatorStandsBetweenOptions) {
    writeOption(m_buffer, "r");
    writeOption(m_buffer, "create");
    m_buffer.separator = ',';
    writeOption(m_buffer, "t");
    writeValue(m_buffer, ParameterType_INT, 1, nullptr, "", 0);
    EXPECT_EQ(written(), "-r --create,-t,1");
}

TEST_F(ValueWriterTest, LongNameHasAnEqualsSignAndALetterNone) {
    EXPECT_EQ(text("v", "text"), "--text=v");
    EXPECT_EQ(text("v", "a"), "-av");
    EXPECT_EQ(text("v", ""), "v");
}

TEST_F(ValueWriterTest, JoinedNameHasOneDashAndTheSeparator) {
    m_buffer.joined = 1;
    EXPECT_EQ(text("v", "text"), "-text v");
    EXPECT_EQ(text("v", "a"), "-av");
    m_buffer.separator = ':';
    EXPECT_EQ(words({"p", "q"}, "text"), "-text:p:-text:q");
    writeOption(m_buffer, "create");
    EXPECT_EQ(written(), "-create");
}

TEST_F(ValueWriterTest, NumbersAndNames) {
    EXPECT_EQ(value(ParameterType_BOOLEAN, 1, "flag"), "--flag=true");
    EXPECT_EQ(value(ParameterType_BOOLEAN, 0, "flag"), "--flag=false");
    EXPECT_EQ(value(ParameterType_ENUM, 1, "style"), "--style=one");
    EXPECT_EQ(value(ParameterType_ENUM, 2, "style"), "--style=two");
    EXPECT_EQ(value(ParameterType_ENUM, 9, "style"), "--style=9");
    EXPECT_EQ(value(ParameterType_ADDRESS, 0xABCDEF01, "at"), "--at=0xABCDEF01");
    EXPECT_EQ(value(ParameterType_ADDRESS64, 0xABCDEF0123456789, "at"), "--at=0xABCDEF0123456789");
    EXPECT_EQ(value(ParameterType_INT, static_cast<uint64_t>(-5), "n"), "-n-5");
    EXPECT_EQ(value(ParameterType_INT, 0xFFFFFFFF, "n"), "-n-1");
    EXPECT_EQ(value(ParameterType_INT, 2147483647, "num"), "--num=2147483647");
    EXPECT_EQ(value(ParameterType_CALL_BACK, 0, "call"), "--call=<call back>");
}

TEST_F(ValueWriterTest, TypeThatDoesNotExistHasNoValue) {
    EXPECT_EQ(value(11, 5, "odd"), "--odd=");
}

TEST_F(ValueWriterTest, TextThatIsNotThere) {
    EXPECT_EQ(text(nullptr, "text"), "--text=<null>");
    EXPECT_EQ(text(nullptr, "a"), "-a<null>");
    EXPECT_EQ(words({nullptr, "v"}, "", ','), "<null>,v");
}

TEST_F(ValueWriterTest, TextIsQuotedAsNeeded) {
    EXPECT_EQ(text("a b", "text"), "--text=\"a b\"");
    EXPECT_EQ(text("a b", "a"), "-a\"a b\"");
    EXPECT_EQ(text("", "text"), "--text=\"\"");
    m_buffer.quoting = 0;
    EXPECT_EQ(text("a \"b", "text"), "--text=a \"b");
    EXPECT_EQ(text("", "text"), "--text=");
}

TEST_F(ValueWriterTest, LetterLeavesAValueThatWouldNotBeSeenToTheNextWord) {
    EXPECT_EQ(text("", "a"), "-a \"\"");
    EXPECT_EQ(text("=v", "a"), "-a =v");
    EXPECT_EQ(value(ParameterType_STRING, addressValue(",v"), "a", ','), "-a ,v");
    EXPECT_EQ(text(",v", "a"), "-a,v");
    EXPECT_EQ(text("=v", "text"), "--text==v");
    m_buffer.quoting = 0;
    EXPECT_EQ(text("", "a"), "-a");
    EXPECT_EQ(text("=v", "a"), "-a=v");
}

TEST_F(ValueWriterTest, PositionalWordKeepsItsEqualsSign) {
    EXPECT_EQ(words({"=v", "w", "==", "a=b"}, ""), "==v w === a=b");
    EXPECT_EQ(words({"=v", "=w"}, "", ','), "==v,=w");
    m_buffer.quoting = 0;
    EXPECT_EQ(words({"=v"}, ""), "=v");
}

TEST_F(ValueWriterTest, ElementsAreAnOptionEachWithoutSeparator) {
    EXPECT_EQ(words({"p", "q r", ""}, "text"), "--text=p --text=\"q r\" --text=\"\"");
    EXPECT_EQ(words({"p", ""}, "a"), "-ap -a \"\"");
    EXPECT_EQ(words({"lib.a", "x y"}, ""), "lib.a \"x y\"");
    StrList list("file");
    EXPECT_EQ(value(ParameterType_VIA_FILE, addressValue(&list), "via"), "--via=file");
}

TEST_F(ValueWriterTest, SeparatorJoinsElementsIntoOneOption) {
    EXPECT_EQ(words({"p", "q r", "", "s\""}, "text", ','), "--text=p,\"q r\",\"\",s\\\"");
    EXPECT_EQ(words({"p", "q"}, "a", ':'), "-ap:q");
    EXPECT_EQ(words({"p\\", "q r"}, "text", ','), "--text=p\\,\"q r\"");
}

TEST_F(ValueWriterTest, NumbersOfVectors) {
    LinkedList<int> ints;
    ints.append(-1);
    ints.append(2147483647);
    EXPECT_EQ(value(ParameterType_INT_VECTOR, addressValue(&ints), "n"), "-n-1 -n2147483647");
    EXPECT_EQ(value(ParameterType_INT_VECTOR, addressValue(&ints), "num", ','),
              "--num=-1,2147483647");
    LinkedList<int64_t> wide;
    wide.append(INT64_MIN);
    wide.append(INT64_MAX);
    EXPECT_EQ(value(ParameterType_INT64_VECTOR, addressValue(&wide), "num", ','),
              "--num=-9223372036854775808,9223372036854775807");
}

TEST_F(ValueWriterTest, EmptyVectorWritesNothing) {
    EXPECT_EQ(words({}, "text"), "");
    EXPECT_EQ(words({}, "text", ','), "");
    EXPECT_EQ(value(ParameterType_INT_VECTOR, 0), "");
    EXPECT_EQ(value(ParameterType_INT64_VECTOR, 0), "");
    EXPECT_EQ(value(ParameterType_VIA_FILE, 0), "");
}

} // namespace tabledrivenparser
