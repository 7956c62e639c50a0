// The banner and the usage text.
#pragma once

#include <string>

#include "platform/interface/tool_identity.h"

namespace tomex {

enum BannerKind {
    BannerKind_Usage = 0,         // banner and usage on the standard output
    BannerKind_Version = 1,       // banner alone on the standard output
    BannerKind_StandardError = 2, // banner alone on the standard error
};

// The banner of a tool of that identity, in the language in force, without the line feed that ends
// it.
std::string bannerText(const platform::ToolIdentity& identity);

// Prints banner and usage as `kind` asks, once in a run; later calls do nothing.
void printBanner(BannerKind kind, const char* programName);

} // namespace tomex
