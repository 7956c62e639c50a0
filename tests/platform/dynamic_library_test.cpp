// Binding libraries at run time, with the host's own as examples.
#include "platform/interface/dynamic_library.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

namespace {

using platform::DynamicLibrary;
using platform::dynamicLibraryFailure;
using platform::findDynamicFunction;
using platform::loadDynamicLibrary;

constexpr const char* presentLibrary = "libm.so.6";

TEST(DynamicLibraryTest, FunctionsCanBeCalled) {
    DynamicLibrary library = loadDynamicLibrary(presentLibrary);
    ASSERT_NE(library, nullptr) << dynamicLibraryFailure();
    auto* const cosine = reinterpret_cast<double (*)(double)>(findDynamicFunction(library, "cos"));
    ASSERT_NE(cosine, nullptr);
    EXPECT_EQ(cosine(0), 1);
    EXPECT_EQ(loadDynamicLibrary(presentLibrary), library) << "it is loaded once";
}

TEST(DynamicLibraryTest, AbsentOnesAreNamedByTheHost) {
    EXPECT_EQ(loadDynamicLibrary("libabsent-of-tomex.so"), nullptr);
    EXPECT_NE(std::string(dynamicLibraryFailure()).find("libabsent-of-tomex.so"),
              std::string::npos);
    EXPECT_EQ(loadDynamicLibrary("/nowhere/libabsent.so"), nullptr);
    EXPECT_NE(std::string(dynamicLibraryFailure()).find("/nowhere/libabsent.so"),
              std::string::npos);
}

TEST(DynamicLibraryTest, WhatIsNoLibraryDoesNotLoad) {
    EXPECT_EQ(loadDynamicLibrary("/dev/null"), nullptr);
    EXPECT_STRNE(dynamicLibraryFailure(), "");
}

TEST(DynamicLibraryTest, MissingFunctionsAreNamedByTheHost) {
    DynamicLibrary library = loadDynamicLibrary(presentLibrary);
    ASSERT_NE(library, nullptr) << dynamicLibraryFailure();
    EXPECT_EQ(findDynamicFunction(library, "no_such_function"), nullptr);
    const std::string failure = dynamicLibraryFailure();
    EXPECT_NE(failure.find("no_such_function"), std::string::npos) << failure;
    // The text stays until the next failure.
    EXPECT_NE(findDynamicFunction(library, "sin"), nullptr);
    EXPECT_EQ(dynamicLibraryFailure(), failure);
}

} // namespace
