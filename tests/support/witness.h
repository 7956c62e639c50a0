// Other tools that can be asked what they make of the same file.
//
// Their answer is independent of this project, so it is worth more than any expectation written
// here. They may be absent from a host; then a test says so instead of passing in silence.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/command_runner.h"

namespace testsupport {

// The path of an executable on PATH, or nothing.
std::optional<std::string> findTool(const std::string& name);

class Witness {
public:
    // `name` is the tool's name; variants of it with a version behind ("llvm-ar-14") count too.
    explicit Witness(const std::string& name);

    bool present() const { return m_path.has_value(); }
    // Must be present.
    const std::string& path() const { return *m_path; }
    // What to say when it is absent.
    std::string absence() const;
    CommandResult run(const ScratchFolder& folder, std::vector<std::string> arguments) const;

private:
    std::string m_name;
    std::optional<std::string> m_path;
};

} // namespace testsupport
