#include "elfext/src/section_kinds.h"

#include "elfext/interface/object_module.h"

#include <algorithm>
#include <array>

namespace elfext {
namespace {

uint32_t flagsOf(const Elf64_Shdr& header) {
    return static_cast<uint32_t>(header.sh_flags);
}

Section* createPlain(ObjectModule& objectModule, const Elf64_Shdr& header) {
    return objectModule.createSection(nullptr, header.sh_type, flagsOf(header));
}

Section* createNull(ObjectModule& objectModule, const Elf64_Shdr& header) {
    return objectModule.createNullSection(flagsOf(header));
}

Section* createSymbolTable(ObjectModule& objectModule, const Elf64_Shdr& header) {
    return objectModule.createSymbolTableSection(header.sh_type);
}

Section* createRelocations(ObjectModule& objectModule, const Elf64_Shdr& header) {
    return objectModule.createRelocationSection(nullptr, header.sh_type, flagsOf(header));
}

// The creator of a class that is told by its type alone.
template <auto Creator>
Section* createNamed(ObjectModule& objectModule, const Elf64_Shdr& /*header*/) {
    return (objectModule.*Creator)(nullptr);
}

constexpr SectionKind plainKind = {SHT_PROGBITS, createPlain, nullptr, true};

constexpr std::array<SectionKind, 17> specialKinds = {{
    {SHT_NULL, createNull, nullptr, true},
    {SHT_SYMTAB, createSymbolTable, &RecordSizes::symbol, false},
    {SHT_STRTAB, createNamed<&ObjectModule::createStringTableSection>, nullptr, false},
    {SHT_RELA, createRelocations, &RecordSizes::rela, false},
    {SHT_HASH, createNamed<&ObjectModule::createHashSection>, nullptr, false},
    {SHT_DYNAMIC, createNamed<&ObjectModule::createDynamicSection>, nullptr, false},
    {SHT_NOTE, createPlain, nullptr, false},
    {SHT_REL, createRelocations, &RecordSizes::rel, false},
    {SHT_DYNSYM, createSymbolTable, &RecordSizes::symbol, false},
    {SHT_GROUP, createNamed<&ObjectModule::createGroupSection>, &RecordSizes::word, false},
    {SHT_SYMTAB_SHNDX, createNamed<&ObjectModule::createShndxSection>, &RecordSizes::word, false},
    {SHT_GNU_verdef, createNamed<&ObjectModule::createVerdefSection>, nullptr, false},
    {SHT_GNU_verneed, createNamed<&ObjectModule::createVerneedSection>, nullptr, false},
    {SHT_GNU_versym, createNamed<&ObjectModule::createVersymSection>, nullptr, false},
    {SHT_QEL_PREEMPTMAP, createNamed<&ObjectModule::createPreemptionMapSection>, nullptr, false},
    {SHT_QEL_ATTRIBUTES, createNamed<&ObjectModule::createBuildAttributesSection>, nullptr, false},
    {SHT_QEL_DEBUGOVERLAY, createNamed<&ObjectModule::createDebugOverlaySection>, nullptr, false},
}};

constexpr std::string_view debugPrefixes[] = {".debug", ".line"};
constexpr std::string_view debugName = "C$$fpmap";

} // namespace

bool isDebugSectionName(std::string_view name) {
    return name == debugName ||
           std::any_of(std::begin(debugPrefixes), std::end(debugPrefixes),
                       [name](std::string_view prefix) { return name.starts_with(prefix); });
}

const SectionKind& sectionKind(uint32_t type) {
    if (type == plainKind.type) [[likely]] {
        return plainKind;
    }
    for (const SectionKind& kind : specialKinds) {
        if (kind.type == type) {
            return kind;
        }
    }
    return plainKind;
}

} // namespace elfext
