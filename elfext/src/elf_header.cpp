// The place of the ELF header.
#include "elfext/interface/elf_header.h"

#include "elfext/interface/data_structure.h"
#include "elfext/interface/object_module.h"

namespace elfext {

bool ELFHeader::getFileRange(uint64_t* offset, uint64_t* size) const {
    *offset = 0;
    *size = m_ObjectModule->getElfHeaderSize();
    return true;
}

void ELFHeader::getFileConstraints(uint64_t* congruence, uint64_t* alignment) const {
    *congruence = 0;
    *alignment = 1;
}

void ELFHeader::setFileOffset([[maybe_unused]] uint64_t offset) {
    TOMEX_CHECK(offset == 0);
}

void ELFHeader::setAlignment(uint64_t /*alignment*/) {
}

void ELFHeader::reset() {
    m_SettledFileSize = 0;
    forgetLinks();
}

DataStructure* ELFHeader::createDataStructure(alloclib::Region* region, uint64_t offset) {
    void* const memory = alloclib::allocate(*region, sizeof(ElfHeaderDataStructure), 8);
    return new (memory) ElfHeaderDataStructure(this, offset);
}

} // namespace elfext
