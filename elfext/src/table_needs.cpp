#include "elfext/src/table_needs.h"

#include "elfext/interface/relocation.h"
#include "elfext/src/auxiliary_state.h"

#include <algorithm>

namespace elfext {

bool needsStaticSymbols(ObjectModule& objectModule) {
    const ObjectModule::SectionArray& sections = objectModule.getSections();
    return objectModule.getSymbolCount() != 0 || objectModule.getGroupCount() != 0 ||
           std::any_of(sections.begin(), sections.end(), [](const Section* section) {
               return section->getRelocationSections().getSize() != 0;
           });
}

bool needsDynamicSymbols(ObjectModule& objectModule) {
    const ObjectModule::SectionArray& sections = objectModule.getSections();
    return objectModule.getDynamicSymbolCount() != 0 ||
           std::any_of(sections.begin(), sections.end(), [](Section* section) {
               const fast_array<Relocation*>& relocations = section->getRelocations();
               return std::any_of(
                   relocations.begin(), relocations.end(),
                   [](const Relocation* relocation) { return relocation->isDynamic(); });
           });
}

bool needsDynamicSection(ObjectModule& objectModule) {
    return hasDynamicRecords(objectModule) || objectModule.getDynamicSymbolCount() != 0;
}

} // namespace elfext
