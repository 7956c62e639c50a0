#include "tomex/banner.h"

#include <cstdarg>
#include <cstdint>
#include <optional>
#include <string>

#include "messages/interface/formatted_output.h"
#include "messages/interface/message_catalogue.h"
#include "messages/interface/message_keys.h"
#include "messages/interface/message_session.h"
#include "messages/interface/report.h"
#include "messages/interface/stream_switch.h"
#include "platform/interface/tool_identity.h"

namespace tomex {
namespace {

constexpr uint32_t buildNumber = 0x5ec1ef00;
constexpr char oneCharacterWildcard = '?';

// Appends the text of a key with its arguments.
void append(std::string& text, uint32_t key, ...) {
    va_list arguments;
    va_start(arguments, key);
    text += messages::formatText(messages::messageText(key), arguments);
    va_end(arguments);
}

void printUsage(const char* programName) {
    messages::printMessage(messages::MessageKey_UsageFormat, programName);
    messages::printMessage(messages::MessageKey_UsageWildcards, oneCharacterWildcard);
    messages::printMessage(messages::MessageKey_UsageEditOptions);
    messages::printMessage(messages::MessageKey_UsageOtherOptions);
    messages::printMessage(messages::MessageKey_UsageExamples, programName, programName,
                           oneCharacterWildcard, programName, programName);
}

} // namespace

std::string bannerText(const platform::ToolIdentity& identity) {
    std::string text;
    append(text, messages::MessageKey_Banner, identity.productName, identity.componentName,
           messages::toolName(), buildNumber);
    if (identity.developmentBuild) {
        text += '\n';
        append(text, messages::MessageKey_EngineeringRelease);
    }
    if (*identity.extraText != '\0') {
        append(text, messages::MessageKey_BannerExtraText, identity.extraText);
    }
    if (*identity.supplier != '\0') {
        append(text, messages::MessageKey_BannerSupplier, identity.supplier);
    }
    if (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}

void printBanner(BannerKind kind, const char* programName) {
    static bool isPrinted = false;
    if (isPrinted) {
        return;
    }
    isPrinted = true;
    {
        std::optional<messages::SavedErrSwitch> toStandardError;
        std::optional<messages::SavedOutSwitch> toStandardOutput;
        if (kind == BannerKind_StandardError) {
            toStandardError.emplace();
        } else {
            toStandardOutput.emplace();
        }
        messages::printText("%s\n", bannerText(platform::toolIdentity()).c_str());
    }
    if (kind == BannerKind_Usage) {
        const messages::SavedOutSwitch toStandardOutput;
        printUsage(programName);
    }
}

} // namespace tomex
