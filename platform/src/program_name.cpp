#include "platform/interface/program_name.h"

#include <cstring>
#include <string_view>

namespace platform {

const char* programName(const char* argument0, char* buffer) {
    if (buffer == nullptr) {
        return argument0;
    }
    std::string_view name(argument0);
    const auto removeSuffix = [&name](std::string_view lower, std::string_view upper) {
        if (name.size() >= 5 && (name.ends_with(lower) || name.ends_with(upper))) {
            name.remove_suffix(lower.size());
        }
    };
    removeSuffix(".exe", ".EXE");
    removeSuffix(".dll", ".DLL");
    for (size_t i = name.size() < 2 ? 0 : name.size() - 1; i > 0; --i) {
        const char c = name[i - 1];
        if (c == '.' || c == ':' || c == '/' || c == '\\') {
            name.remove_prefix(i);
            break;
        }
    }
    if (name.starts_with("rv")) {
        name.remove_prefix(2);
    }
    name = name.substr(0, programNameSize - 1);
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
    return buffer;
}

} // namespace platform
