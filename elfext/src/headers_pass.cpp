// The headers: what kind of file this is, where its tables lie, and how long they are.
//
// A file with more sections than 16 bits can count says 0, and its first section header's size is
// the count. All headers are held in the wide form from here on.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

#include <algorithm>

namespace elfext {
namespace {

// This many program headers or more cannot be counted by the module.
constexpr uint32_t programHeaderLimit = 0xFFFF;

constexpr uint16_t knownMachines[] = {EM_QEL, EM_QEL64, EM_QEL64_SECOND};

bool checkElfHeader(ReadState& state) {
    ObjectModule& objectModule = state.m_Module;
    const Elf64_Ehdr& header = state.m_ElfHeader;
    const uint32_t endianness = header.e_ident[EI_DATA];
    // The answers to these three do not matter.
    if (header.e_type < ET_REL || header.e_type > ET_CORE) {
        askHandler(objectModule, &ErrorHandler::unrecognisedType, header.e_type);
        return false;
    }
    if (endianness != ELFDATA2LSB && endianness != ELFDATA2MSB) {
        askHandler(objectModule, &ErrorHandler::invalidEndianness, endianness);
        return false;
    }
    if (header.e_version != EV_CURRENT) {
        askHandler(objectModule, &ErrorHandler::unsupportedVersion, header.e_version);
        return false;
    }
    const bool isKnown = std::find(std::begin(knownMachines), std::end(knownMachines),
                                   header.e_machine) != std::end(knownMachines);
    return isKnown || askHandler(objectModule, &ErrorHandler::unsupportedMachine, header.e_machine);
}

bool readElfHeader(ReadState& state) {
    const LowLevelStatus status = lowlevel::readElfHeader(state.m_ElfHeader);
    if (status != LowLevelStatus_Good) {
        return reportStatus(state.m_Module, status);
    }
    state.m_Is64 = lowlevel::is64Bit();
    state.m_IsLittleEndian = lowlevel::isLittleEndian();
    return checkElfHeader(state);
}

LowLevelStatus countSections(const ReadState& state, uint64_t& count) {
    count = state.m_ElfHeader.e_shnum;
    if (count != 0) {
        return LowLevelStatus_Good;
    }
    Elf64_Shdr first;
    const LowLevelStatus status = lowlevel::readSectionHeaders(state.m_ElfHeader, 1, &first);
    if (status == LowLevelStatus_Good) {
        count = first.sh_size;
    }
    return status;
}

// Nothing is allocated before the count has been compared with the size of the file.
LowLevelStatus readSectionHeaders(ReadState& state) {
    if (state.m_ElfHeader.e_shoff == 0) {
        return LowLevelStatus_Good;
    }
    uint64_t count = 0;
    LowLevelStatus status = countSections(state, count);
    if (status == LowLevelStatus_Good) {
        status = count > UINT32_MAX ? LowLevelStatus_Short
                                    : lowlevel::checkSectionHeaders(state.m_ElfHeader, count);
    }
    if (status != LowLevelStatus_Good) {
        return status;
    }
    state.m_SectionHeaders = state.takeRoom<Elf64_Shdr>(count);
    return lowlevel::readSectionHeaders(state.m_ElfHeader, count, state.m_SectionHeaders.data());
}

LowLevelStatus readProgramHeaders(ReadState& state) {
    const uint32_t count = state.m_ElfHeader.e_phnum;
    if (state.m_ElfHeader.e_phoff == 0) {
        return LowLevelStatus_Good;
    }
    if (count >= programHeaderLimit) {
        return LowLevelStatus_Short;
    }
    const LowLevelStatus status = lowlevel::checkProgramHeaders(state.m_ElfHeader, count);
    if (status != LowLevelStatus_Good) {
        return status;
    }
    state.m_ProgramHeaders = state.takeRoom<Elf64_Phdr>(count);
    state.m_IsSegmentFetched = state.takeTable<bool>(count);
    TOMEX_CHECK_TEXT(state.segmentCount() < programHeaderLimit,
                     "segmentHeaderTable.getSize() < 0xFFFF");
    return lowlevel::readProgramHeaders(state.m_ElfHeader, count, state.m_ProgramHeaders.data());
}

void fillModuleHeader(const ReadState& state) {
    ObjectModule& objectModule = state.m_Module;
    const Elf64_Ehdr& header = state.m_ElfHeader;
    objectModule.setMachine(header.e_machine);
    objectModule.setClass(state.m_Is64 ? ELFCLASS64 : ELFCLASS32);
    objectModule.setEndianness(header.e_ident[EI_DATA]);
    objectModule.setOsAbi(header.e_ident[EI_OSABI]);
    objectModule.setAbiVersion(header.e_ident[EI_ABIVERSION]);
    objectModule.setType(header.e_type);
    objectModule.setEntryPoint(header.e_entry);
    objectModule.setFlags(header.e_flags);
    objectModule.setIdentVersion(header.e_ident[EI_VERSION]);
    objectModule.setVersion(header.e_version);
    objectModule.setElfHeaderSize(header.e_ehsize);
    objectModule.setSectionHeaderSize(header.e_shentsize);
    objectModule.setProgramHeaderSize(header.e_phentsize);
    objectModule.setSectionHeaderOffset(header.e_shoff);
    objectModule.setProgramHeaderOffset(header.e_phoff);
    objectModule.setSectionHeaderCount(header.e_shnum);
    objectModule.setProgramHeaderCount(header.e_phnum);

    SectionHeaderTable& sectionTable = objectModule.getSectionHeaderTable();
    sectionTable.reset();
    sectionTable.setEntrySize(state.sizes().sectionHeader);
    sectionTable.setCount(state.sectionCount());
    ProgramHeaderTable& programTable = objectModule.getProgramHeaderTable();
    programTable.reset();
    programTable.setEntrySize(state.sizes().programHeader);
    programTable.setCount(state.segmentCount());
}

} // namespace

bool readHeaders(ReadState& state) {
    if (!readElfHeader(state)) {
        return false;
    }
    LowLevelStatus status = readSectionHeaders(state);
    if (status == LowLevelStatus_Good) {
        status = readProgramHeaders(state);
    }
    if (status != LowLevelStatus_Good) {
        return reportStatus(state.m_Module, status);
    }
    fillModuleHeader(state);
    return true;
}

} // namespace elfext
