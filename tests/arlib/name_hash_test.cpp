// Names that are made to collide under the hash which is the same in every run.
#include "arlib/src/name_hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace arlib {
namespace {

TEST(NameHash, NamesThatAreMadeToCollideDoNot) {
    constexpr uint32_t count = 1 << 14;
    std::set<uint32_t> hashes;
    for (uint32_t i = 0; i < count; ++i) {
        std::string name;
        for (uint32_t bit = 1; bit < count; bit *= 2) {
            name += (i & bit) != 0 ? "Aa" : "BB";
        }
        const elfext::Stringlett key(name.c_str());
        EXPECT_EQ(key.getHash(), elfext::Stringlett("BBBBBBBBBBBBBBBBBBBBBBBBBBBB").getHash());
        hashes.insert(nameHash(&key));
    }
    // Of so few some hundredths of one meet by chance.
    EXPECT_GT(hashes.size(), count - 16);
}

TEST(NameHash, EqualNamesHaveEqualOnes) {
    const std::string left = "a name";
    const std::string right = "a name";
    const elfext::Stringlett leftKey(left.c_str());
    const elfext::Stringlett rightKey(right.c_str());
    EXPECT_EQ(nameHash(&leftKey), nameHash(&rightKey));
}

} // namespace
} // namespace arlib
