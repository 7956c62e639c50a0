// The texts of a member's markers: which are kept, and when they are all there are.
#include "arlib/interface/marker_texts.h"

#include <string>

#include "arlib/interface/symbol_name_list.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {
namespace {

class MarkerTextsTest : public ArlibTest {
protected:
    void SetUp() override {
        ArlibTest::SetUp();
        m_Region = alloclib::RegionGeneral::Create(1024, "test");
    }
    void TearDown() override {
        m_Region->Destroy(true);
        ArlibTest::TearDown();
    }
    alloclib::Region* region() const { return m_Region; }
    static Names textsOf(const arlib::MarkerTexts& markers) {
        Names texts;
        for (const auto* text = markers.getFirst(); text != nullptr; text = text->next) {
            texts.emplace_back(text->decoration);
        }
        return texts;
    }

private:
    alloclib::RegionGeneral* m_Region = nullptr;
};

TEST_F(MarkerTextsTest, AreCopiesInTheirOrder) {
    arlib::MarkerTexts markers(region());
    EXPECT_FALSE(markers.isKnown());
    markers.start();
    EXPECT_TRUE(markers.isKnown()) << "that there are none";
    std::string text = "$E";
    markers.add(text.c_str());
    text = "";
    markers.add(text.c_str());
    text = "$P";
    markers.add(text.c_str());
    EXPECT_TRUE(markers.isKnown());
    EXPECT_EQ(textsOf(markers), (Names{"$E", "", "$P"}));
}

TEST_F(MarkerTextsTest, NoneIsKnownBeforeTheStart) {
    arlib::MarkerTexts markers(region());
    markers.add("$E");
    EXPECT_FALSE(markers.isKnown());
    EXPECT_EQ(textsOf(markers), Names());
}

TEST_F(MarkerTextsTest, TooManyBytesMeanNone) {
    const size_t most = arlib::MarkerTexts::MostBytes;
    arlib::MarkerTexts markers(region());
    markers.start();
    markers.add("$E");
    markers.add(std::string(most - 4, 'x').c_str());
    EXPECT_TRUE(markers.isKnown()) << "all of the room, with two NULs";
    EXPECT_EQ(textsOf(markers).size(), 2U);
    markers.add("");
    EXPECT_FALSE(markers.isKnown());
    EXPECT_EQ(textsOf(markers), Names());
    markers.add("$P");
    EXPECT_EQ(textsOf(markers), Names()) << "and none from then on";
    markers.clear();
    markers.start();
    markers.add(std::string(most, 'x').c_str());
    EXPECT_FALSE(markers.isKnown()) << "a single one";
}

TEST_F(MarkerTextsTest, ClearingAListBeginsAnewAndLeavesTextsAlone) {
    arlib::SymbolNameList list(region());
    list.add("name");
    list.getMarkers().start();
    list.getMarkers().add("$E");
    const auto* first = list.getMarkers().getFirst();
    const std::string_view name = list.get(0);
    list.clear();
    EXPECT_FALSE(list.getMarkers().isKnown());
    EXPECT_EQ(list.getMarkers().getFirst(), nullptr);
    list.getMarkers().start();
    list.getMarkers().add("$P");
    list.add("other");
    EXPECT_EQ(textsOf(list.getMarkers()), Names{"$P"});
    EXPECT_STREQ(first->decoration, "$E") << "who refers to it still may";
    EXPECT_EQ(first->next, nullptr);
    EXPECT_EQ(name, "name");
}

} // namespace
} // namespace arlibtest
