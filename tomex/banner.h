// The banner and the usage text.
#pragma once

namespace tomex {

enum BannerKind {
    BannerKind_Usage = 0,         // banner and usage on the standard output
    BannerKind_Version = 1,       // banner alone on the standard output
    BannerKind_StandardError = 2, // banner alone on the standard error
};

// Prints it, once in a run; later calls do nothing.
void printBanner(BannerKind kind, const char* programName);

} // namespace tomex
