// Makes the sections, in the order of their headers.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"
#include "elfext/src/section_kinds.h"

namespace elfext {

bool createSections(ReadState& state) {
    ObjectModule& objectModule = state.m_Module;
    state.m_IsBadSection = state.takeTable<bool>(state.sectionCount());
    objectModule.reserveSections(state.sectionCount());
    for (const Elf64_Shdr& header : state.m_SectionHeaders) {
        Section* const section = sectionKind(header.sh_type).create(objectModule, header);
        section->setFlags(static_cast<uint32_t>(header.sh_flags));
        section->setUpperFlags(static_cast<uint32_t>(header.sh_flags >> 32));
        section->setAddress(header.sh_addr);
        section->setFileOffset(header.sh_offset);
        section->setEntrySize(header.sh_entsize);
        section->setInfo(header.sh_info);
        section->setAlignmentAsRead(header.sh_addralign);
    }
    return true;
}

} // namespace elfext
