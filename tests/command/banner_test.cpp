// The banner of deliveries that set more, or less, than this build does.
#include "tomex/banner.h"

#include <gtest/gtest.h>

#include "messages/interface/message_catalogue.h"

namespace commandtest {
namespace {

class Banner : public testing::Test {
protected:
    ~Banner() override { messages::setCurrentLocale(0); }

    platform::ToolIdentity m_Identity{.versionMajor = 1,
                                      .versionMinor = 2,
                                      .versionPatch = 3,
                                      .deliveryNumber = 4,
                                      .productName = "Some Product",
                                      .componentName = "Tomex",
                                      .developmentBuild = false,
                                      .extraText = "",
                                      .supplier = ""};
};

constexpr char threeLines[] = "Product: Some Product\nComponent: Tomex\nTool: tomex [5ec1ef00]";

TEST_F(Banner, NamesProductComponentAndTool) {
    EXPECT_EQ(tomex::bannerText(m_Identity), threeLines);
}

TEST_F(Banner, WarnsOfADevelopmentBuild) {
    m_Identity.developmentBuild = true;
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) + "\nEngineering release. Not for production use.");
}

TEST_F(Banner, ShowsAFurtherLine) {
    m_Identity.extraText = "Evaluation licence";
    EXPECT_EQ(tomex::bannerText(m_Identity), std::string(threeLines) + "\nEvaluation licence");
}

TEST_F(Banner, NamesTheSupplier) {
    m_Identity.supplier = "Some Maker";
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) + "\nSoftware supplied by: Some Maker");
}

TEST_F(Banner, HoldsAllItsLinesInOneOrder) {
    m_Identity.developmentBuild = true;
    m_Identity.extraText = "Evaluation licence";
    m_Identity.supplier = "Some Maker";
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) +
                  "\nEngineering release. Not for production use.\nEvaluation licence\n"
                  "Software supplied by: Some Maker");
    messages::setCurrentLocale(1);
    EXPECT_EQ(tomex::bannerText(m_Identity),
              "製品: Some Product\nコンポーネント: Tomex\nツール: tomex [5ec1ef00]\n"
              "エンジニアリングリリースです。本番環境では使用しないでください。\n"
              "Evaluation licence\nソフトウェアの提供元: Some Maker");
}

TEST_F(Banner, LosesABlankAtItsEnd) {
    m_Identity.supplier = "Some Maker ";
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) + "\nSoftware supplied by: Some Maker");
    m_Identity.supplier = "Some Maker  ";
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) + "\nSoftware supplied by: Some Maker ");
}

TEST_F(Banner, HoldsTextsOfAnyLength) {
    const std::string name(20000, 'n');
    m_Identity.supplier = name.c_str();
    EXPECT_EQ(tomex::bannerText(m_Identity),
              std::string(threeLines) + "\nSoftware supplied by: " + name);
}

} // namespace
} // namespace commandtest
