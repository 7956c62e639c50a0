#include "platform/interface/tool_identity.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace {

using platform::ToolIdentity;

std::string numberOf(uint32_t major, uint32_t minor, uint32_t patch, uint32_t delivery) {
    const ToolIdentity identity{major, minor, patch, delivery, "", "", false, "", ""};
    char text[platform::versionNumberSize];
    platform::formatVersionNumber(identity, text);
    return text;
}

TEST(ToolIdentity, PacksVersionAndDelivery) {
    EXPECT_EQ(numberOf(3, 14, 0, 5), "3140005");
    EXPECT_EQ(numberOf(0, 0, 0, 0), "0000000");
    EXPECT_EQ(numberOf(12, 3, 99, 45), "12039945");
}

TEST(ToolIdentity, WritesAPatchNumberAbove99As0) {
    EXPECT_EQ(numberOf(1, 2, 99, 4), "1029904");
    EXPECT_EQ(numberOf(1, 2, 100, 4), "1020004");
    EXPECT_EQ(numberOf(1, 2, UINT32_MAX, 4), "1020004");
}

TEST(ToolIdentity, WritesTheLargestNumbersWhole) {
    EXPECT_EQ(numberOf(UINT32_MAX, UINT32_MAX, 7, UINT32_MAX), "4294967295"
                                                               "4294967295"
                                                               "07"
                                                               "4294967295");
}

TEST(ToolIdentity, ReadsADeliveryNumberOfDigitsOnly) {
    EXPECT_EQ(platform::parseDeliveryNumber("5"), 5U);
    EXPECT_EQ(platform::parseDeliveryNumber("0042"), 42U);
    EXPECT_EQ(platform::parseDeliveryNumber("4294967295"), UINT32_MAX);
    for (const char* text :
         {"", "x", "5x", "-5", "+5", " 5", "5 ", "4294967296", "99999999999999999999999"}) {
        EXPECT_EQ(platform::parseDeliveryNumber(text), 0U) << text;
    }
}

TEST(ToolIdentity, GivesThePartsOfItsOwnVersion) {
    const ToolIdentity& identity = platform::toolIdentity();
    uint32_t major = 77;
    uint32_t minor = 77;
    uint32_t patch = 77;
    platform::versionParts(&major, &minor, &patch);
    EXPECT_EQ(major, identity.versionMajor);
    EXPECT_EQ(minor, identity.versionMinor);
    EXPECT_EQ(patch, identity.versionPatch);
    EXPECT_EQ(platform::versionMajor(), identity.versionMajor);
    EXPECT_EQ(platform::deliveryNumber(), identity.deliveryNumber);
    platform::versionParts(nullptr, nullptr, nullptr);
    uint32_t only = 77;
    platform::versionParts(nullptr, &only, nullptr);
    EXPECT_EQ(only, minor);
}

TEST(ToolIdentity, NumbersItselfByItsIdentity) {
    const ToolIdentity& identity = platform::toolIdentity();
    EXPECT_EQ(platform::versionNumberText(),
              numberOf(identity.versionMajor, identity.versionMinor, identity.versionPatch,
                       identity.deliveryNumber));
    EXPECT_EQ(platform::versionNumberText(), platform::versionNumberText());
}

TEST(ToolIdentity, HasATextInEachPlace) {
    const ToolIdentity& identity = platform::toolIdentity();
    EXPECT_STRNE(identity.productName, "");
    EXPECT_STRNE(identity.componentName, "");
    ASSERT_NE(identity.extraText, nullptr);
    ASSERT_NE(identity.supplier, nullptr);
}

} // namespace
