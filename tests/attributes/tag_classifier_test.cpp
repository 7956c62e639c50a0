// The classes of tags, known and unknown.
#include "attributes/interface/tag_classifier.h"

#include <climits>

#include <gtest/gtest.h>

namespace attributes::test {
namespace {

using Classifier = BuildAttributesTagClassifier;

enum Class { None, Number, Text, Both };

Class classOf(int32_t tag) {
    const int count = (Classifier::isQeabiNumericTag(tag) ? 1 : 0) +
                      (Classifier::isQeabiStringTag(tag) ? 1 : 0) +
                      (Classifier::isQeabiNumericAndStringTag(tag) ? 1 : 0);
    EXPECT_LE(count, 1) << tag;
    if (Classifier::isQeabiNumericTag(tag)) {
        return Number;
    }
    if (Classifier::isQeabiStringTag(tag)) {
        return Text;
    }
    return Classifier::isQeabiNumericAndStringTag(tag) ? Both : None;
}

TEST(TagClassifier, TagsUpTo32HaveClassesOfTheirOwn) {
    for (int32_t tag = 0; tag < 4; ++tag) {
        EXPECT_EQ(classOf(tag), None) << tag;
    }
    EXPECT_EQ(classOf(4), Text);
    EXPECT_EQ(classOf(5), Text);
    for (int32_t tag = 6; tag <= 31; ++tag) {
        EXPECT_EQ(classOf(tag), Number) << tag;
    }
    EXPECT_EQ(classOf(32), Both);
}

TEST(TagClassifier, OthersGoByBeingEvenOrOdd) {
    for (int32_t tag = 33; tag < 1000; ++tag) {
        EXPECT_EQ(classOf(tag), tag % 2 == 0 ? Number : Text) << tag;
    }
    EXPECT_EQ(classOf(INT_MAX), Text);
    EXPECT_EQ(classOf(INT_MAX - 1), Number);
}

TEST(TagClassifier, SoDoNegativeOnes) {
    for (int32_t tag = -1; tag > -1000; --tag) {
        EXPECT_EQ(classOf(tag), tag % 2 == 0 ? Number : Text) << tag;
    }
    EXPECT_EQ(classOf(INT_MIN), Number);
    EXPECT_EQ(classOf(INT_MIN + 1), Text);
}

} // namespace
} // namespace attributes::test
