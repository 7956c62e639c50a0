// Makes the groups: each group section holds a word of flags, and the numbers of the members.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

namespace elfext {
namespace {

uint32_t wordAt(const ReadState& state, std::span<const uint8_t> words, uint64_t index) {
    return assembleBytes<uint32_t>(words.data() + 4 * index, state.m_IsLittleEndian);
}

bool addMember(ReadState& state, Group& group, uint32_t member) {
    ObjectModule& objectModule = state.m_Module;
    const uint32_t groupSection = group.getSection()->getIndex();
    if (member >= state.sectionCount()) {
        return askHandler(objectModule, &ErrorHandler::groupMemberIndexBad, groupSection, member,
                          state.lastSection());
    }
    if (member == 0 && state.m_SectionHeaders[0].sh_type == SHT_NULL) {
        return true;
    }
    Section* const section = objectModule.getSection(member);
    if (section->getGroup() != nullptr) {
        return askHandler(objectModule, &ErrorHandler::sectionInTwoGroups, member,
                          section->getGroup()->getSection()->getIndex(), groupSection);
    }
    group.addMember(section);
    return true;
}

// A signature is hashed, and compared with those of the same hash. In a file of few groups these
// cannot be many.
bool spendSearch(ReadState& state, const char* signature) {
    constexpr uint32_t fewGroups = 256;
    constexpr uint64_t stepsPerComparison = 64;
    return state.spendText(signature) &&
           (state.m_Module.getGroupCount() < fewGroups ||
            state.spendSteps(stepsPerComparison * state.m_Module.getComdatSearchLength(signature)));
}

// A group without a signature symbol is left out.
bool readGroup(ReadState& state, uint32_t index) {
    auto* const section = static_cast<GroupSection*>(state.m_Module.getSection(index));
    const std::span<const uint8_t> words = state.contents(index);
    const SymbolsByNumber& symbols = state.m_SymbolsByTable[state.m_SectionHeaders[index].sh_link];
    const Symbol* const signature = symbols.m_Symbols[section->getSignatureSymbolIndex()];
    if (signature == nullptr) {
        return true;
    }
    const char* const name = signature->getName() != nullptr ? signature->getName() : "";
    if (!state.spendBytes(words.size()) || !spendSearch(state, name)) {
        return false;
    }
    const uint64_t count = words.size() / state.sizes().word;
    Group* const group = state.m_Module.createGroup(section->getName(), name,
                                                    count != 0 ? wordAt(state, words, 0) : 0);
    group->setSection(section);
    for (uint64_t i = 1; i < count; ++i) {
        if (!addMember(state, *group, wordAt(state, words, i))) {
            return false;
        }
    }
    return true;
}

} // namespace

bool readGroups(ReadState& state) {
    for (uint32_t i = 0; i < state.sectionCount(); ++i) {
        const bool isGroup = state.m_SectionHeaders[i].sh_type == SHT_GROUP;
        if (isGroup && !state.m_IsBadSection[i] && !readGroup(state, i)) {
            return false;
        }
    }
    return true;
}

} // namespace elfext
