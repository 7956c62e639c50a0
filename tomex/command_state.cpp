#include "tomex/command_state.h"

#include <optional>

namespace tomex {
namespace {

std::optional<CommandState> state;

} // namespace

CommandState& commandState() {
    return *state;
}

void resetCommandState() {
    state.emplace();
}

} // namespace tomex
