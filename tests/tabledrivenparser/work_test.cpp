// How the work grows with the size of what is read and shown: ten times the words, ten times the
// work. The work is counted in basic blocks of the parser that are run, so that the numbers are the
// same on every machine and on every day.

#include "tests/tabledrivenparser/rebuilt_fixture.h"

#include "tabledrivenparser/interface/via_reading.h"
#include "tests/support/scratch_folder.h"

#include <functional>

namespace {

uint64_t g_blocks = 0;

} // namespace

// Called at the start of every basic block of the counted library.
extern "C" void __sanitizer_cov_trace_pc();
extern "C" void __sanitizer_cov_trace_pc() {
    ++g_blocks;
}

namespace tabledrivenparser {

namespace {

class WorkTest : public RebuiltTest {
protected:
    void SetUp() override {
        RebuiltTest::SetUp();
        m_words = addParameter(ParameterType_STRING_VECTOR);
        m_list = addParameter(ParameterType_STRING_VECTOR);
        m_via = addParameter(ParameterType_VIA_FILE);
        addOption("", m_words);
        addOption("list", m_list, ',');
        addOption("via", m_via);
        m_firstValues = m_values;
    }

    // The work of reading a via file with these bytes, and of showing what it led to.
    struct Work {
        uint64_t reading = 0;
        uint64_t showing = 0;
    };
    Work workOn(const std::string& bytes) {
        dropParser();
        m_values = m_firstValues;
        linkRows();
        m_folder.write("f", bytes);
        const std::string path = m_folder.pathOf("f");
        Work work;
        const uint64_t start = g_blocks;
        parse({"--via", path.c_str()});
        work.reading = g_blocks - start;
        EXPECT_TRUE(messages().empty());
        TextBuffer measure{0, nullptr, 0, 1, ' ', 0};
        rebuildCommandLine(parser(), measure);
        work.showing = g_blocks - start - work.reading;
        EXPECT_GT(measure.length, bytes.size() / 2);
        return work;
    }
    // Lines with a running number in them; the seventh part of them is of another form.
    static std::string lines(int count, const std::string& usual, const std::string& other) {
        std::string bytes;
        for (int line = 0; line < count; ++line) {
            std::string text = line % 7 == 6 ? other : usual;
            text.replace(text.find('%'), 1, std::to_string(100000 + line));
            bytes += text + "\n";
        }
        return bytes;
    }
    void expectLinear(const std::function<std::string(int)>& bytesOf) {
        const Work small = workOn(bytesOf(5000));
        const Work large = workOn(bytesOf(50000));
        EXPECT_EQ(texts(m_words).size() + texts(m_list).size(), 50000U);
        EXPECT_GT(small.reading, 5000U * 20);
        EXPECT_GT(small.showing, 5000U * 5);
        // Ten times is 1000; a hundredth is for the ends.
        EXPECT_LE(large.reading * 100 / small.reading, 1010U);
        EXPECT_LE(large.showing * 100 / small.showing, 1010U);
        RecordProperty("blocks_of_reading_50000", std::to_string(large.reading));
        RecordProperty("blocks_of_showing_50000", std::to_string(large.showing));
    }

    uint32_t m_words = 0;
    uint32_t m_list = 0;
    uint32_t m_via = 0;
    std::vector<ParameterValue> m_firstValues;
    const testsupport::ScratchFolder m_folder;
};

} // namespace

TEST_F(WorkTest, NamesOneALine) {
    expectLinear([](int count) { return lines(count, "member_%.o", "member_%.o"); });
}

TEST_F(WorkTest, QuotesAndComments) {
    expectLinear([](int count) {
        return lines(count, "\"a folder/member_%.o\"", "'it\\'s \\\\ %' # a \"comment\"");
    });
}

TEST_F(WorkTest, ShortAndLongWords) {
    expectLinear([](int count) { return lines(count, "%", "%" + std::string(400, 'x')); });
}

TEST_F(WorkTest, OptionsOfAList) {
    expectLinear([](int count) { return lines(count, "--list=%", "--list \"%\\\"\""); });
}

TEST_F(WorkTest, OneFileAfterTheOther) {
    auto filesOf = [&](int count) {
        std::string bytes;
        for (int index = 0; index < count; ++index) {
            bytes += "--via " + m_folder.pathOf("inner") + "\n";
        }
        return bytes;
    };
    m_folder.write("inner", lines(10, "inner_%", "other_%"));
    auto reading = [&](int count) {
        dropParser();
        m_values = m_firstValues;
        linkRows();
        m_folder.write("f", filesOf(count));
        const std::string path = m_folder.pathOf("f");
        const uint64_t start = g_blocks;
        parse({"--via", path.c_str()});
        return g_blocks - start;
    };
    const uint64_t small = reading(200);
    const uint64_t large = reading(2000);
    EXPECT_EQ(texts(m_words).size(), 20000U);
    EXPECT_LE(large * 100 / small, 1010U);
}

} // namespace tabledrivenparser
