// The file's own fields, images, and the model as a whole.
#include "elfext/interface/object_module.h"

#include "attributes/interface/build_attributes.h"
#include "elfext/interface/deferred_contents.h"
#include "elfext/interface/prune_criteria.h"
#include "elfext/src/dynamic_entries.h"
#include "elfext/src/low_level.h"
#include "elfext/src/object_module_make.h"

#include <cstring>

namespace elfext {

namespace {

// The ELF header of a 32-bit file, and what the second form of files has behind it.
constexpr uint32_t plainHeaderSize = 52;
constexpr uint32_t secondFormExtra = 8;

} // namespace

ObjectModule::ObjectModule()
    : ByteOrderSource(true), ObjectWithBuildAttributes(this, getBuildAttributesCache()),
      m_ElfHeaderSize(lowlevel::isPlainMagicInUse() ? plainHeaderSize
                                                    : plainHeaderSize + secondFormExtra),
      m_ElfHeader(getContainerRegion(), this), m_SectionHeaderTable(getContainerRegion()),
      m_ProgramHeaderTable(getContainerRegion()), m_Sections(getContainerRegion()),
      m_Groups(getContainerRegion()), m_Segments(getContainerRegion()),
      m_Symbols(getContainerRegion()), m_DynamicSymbols(getContainerRegion()),
      m_NeededLibraries(getContainerRegion()), m_LibrarySearchPaths(getContainerRegion()),
      m_Preemptions(getContainerRegion()), m_RawDataBlocks(getContainerRegion()),
      m_DebugOverlayRecords(getContainerRegion()), m_AbsoluteSymbols(getContainerRegion()),
      m_CommonSymbols(getContainerRegion()), m_UndefinedSymbols(getContainerRegion()),
      m_AbsoluteDynamicSymbols(getContainerRegion()), m_CommonDynamicSymbols(getContainerRegion()),
      m_UndefinedDynamicSymbols(getContainerRegion()), m_StringTableSections(getContainerRegion()),
      m_SymtabSections(getContainerRegion()), m_DynsymSections(getContainerRegion()),
      m_GroupSections(getContainerRegion()), m_HashSections(getContainerRegion()),
      m_ShndxSections(getContainerRegion()), m_PreemptionMapSections(getContainerRegion()),
      m_VerdefSections(getContainerRegion()), m_VerneedSections(getContainerRegion()),
      m_VersymSections(getContainerRegion()), m_DynamicSections(getContainerRegion()),
      m_DebugOverlaySections(getContainerRegion()), m_BuildAttributesSections(getContainerRegion()),
      m_RemovedMemory(getContainerRegion()), m_SymbolsSortedByAddress(getContainerRegion()),
      m_DynamicSymbolsSortedByAddress(getContainerRegion()),
      m_SymbolsSortedByName(getContainerRegion()),
      m_DynamicSymbolsSortedByName(getContainerRegion()),
      m_MapSignaturesToComdatGroups(getContainerRegion()),
      m_MapNamesToGroups(getContainerRegion()) {
}

ObjectModule::~ObjectModule() {
    dropAllDeferredContents();
}

void ObjectModule::getParentBuildAttributes(attributes::BuildAttributes& result) const {
    result = attributes::BuildAttributes();
}

// --- Images and texts

void ObjectModule::setReadBuffer(const uint8_t* readBuffer, uint64_t size,
                                 bool contentsInReadBuffer) {
    m_ReadBuffer = readBuffer;
    m_ContentsInReadBuffer = contentsInReadBuffer;
    m_ReadImage = {.m_Bytes = readBuffer, .m_Size = readBuffer != nullptr ? size : 0};
}

void ObjectModule::adoptImage(std::unique_ptr<uint8_t[]> image, uint64_t size) {
    m_OwnedBytes = std::move(image);
    m_OwnImage = {.m_Bytes = m_OwnedBytes.get(), .m_Size = m_OwnedBytes != nullptr ? size : 0};
}

void ObjectModule::releaseImages() {
    setReadBuffer(nullptr, 0, false);
    adoptImage(nullptr, 0);
}

// The names of the file and the object outlive images.
const char* ObjectModule::copyText(const char* text) {
    return text != nullptr ? alloclib::copyString(*getObjectRegion(), text) : nullptr;
}

void ObjectModule::setFileName(const char* fileName) {
    TOMEX_CHECK(!hasDeferredContents());
    m_FileName = copyText(fileName);
}

void ObjectModule::setObjectName(const char* objectName) {
    m_ObjectName = copyText(objectName);
}

void ObjectModule::setMemberName(const char* archiveName, const char* memberName) {
    TOMEX_CHECK_TEXT(archiveName != nullptr, "archiveName != NULL");
    TOMEX_CHECK_TEXT(memberName != nullptr, "memberName != NULL");
    const size_t archiveLength = std::strlen(archiveName);
    const size_t memberLength = std::strlen(memberName);
    char* const name = static_cast<char*>(
        alloclib::allocate(*getObjectRegion(), archiveLength + memberLength + 3, 1));
    char* end = name;
    const auto append = [&end](const char* text, size_t length) {
        std::memcpy(end, text, length);
        end += length;
    };
    append(archiveName, archiveLength);
    append("(", 1);
    append(memberName, memberLength);
    append(")", 2); // with the NUL
    m_ObjectName = name;
}

void ObjectModule::setEndianness(uint32_t endianness) {
    TOMEX_CHECK(!hasDeferredContents());
    m_Endianness = endianness;
    m_IsLittleEndian = endianness == ELFDATA2LSB ? 1 : 0;
    markChanged();
}

// --- Values of the dynamic section

void ObjectModule::setSoName(const char* soName) {
    const bool isEqual = soName != nullptr && m_SoName != nullptr
                             ? std::strcmp(soName, m_SoName) == 0
                             : soName == m_SoName;
    if (!isEqual) {
        m_SoName = keepText(soName);
        markChanged();
    }
}

void ObjectModule::addDynamicFlags(uint32_t flags) {
    m_DynamicFlags |= flags;
    m_DynamicFlagsExists = true;
    markChanged();
}

void ObjectModule::forgetDynamicValues() {
    m_SoName = nullptr;
    for (DynamicValue* const value :
         {&m_Init, &m_Fini, &m_InitArray, &m_InitArraySize, &m_PreinitArray, &m_PreinitArraySize,
          &m_FiniArray, &m_FiniArraySize}) {
        value->reset();
    }
    m_DynamicFlags = 0;
    m_DynamicFlagsExists = false;
    markChanged();
}

// --- Deferred contents

ReferenceCountedFile* ObjectModule::keepFile(std::FILE* file) {
    m_ReferenceCountedFile = make<ReferenceCountedFile>(file);
    return m_ReferenceCountedFile;
}

bool ObjectModule::hasDeferredContents() const {
    for (const Section* const section : m_Sections) {
        if (section->isContentsDeferred()) {
            return true;
        }
    }
    return false;
}

void ObjectModule::dropAllDeferredContents() {
    if (m_ReferenceCountedFile == nullptr) {
        return;
    }
    for (Section* const section : m_Sections) {
        section->dropDeferredContents();
    }
    if (m_ReferenceCountedFile->getReferenceCount() == 0) {
        m_ReferenceCountedFile->close();
    }
    m_ReferenceCountedFile = nullptr;
}

// --- The model as a whole

bool ObjectModule::isEmpty() const {
    return m_Sections.getSize() == 0 && m_Groups.getSize() == 0 && m_Symbols.getSize() == 0 &&
           m_DynamicSymbols.getSize() == 0 && m_NeededLibraries.getSize() == 0 &&
           m_LibrarySearchPaths.getSize() == 0 && m_Preemptions.getSize() == 0 &&
           m_RawDataBlocks.getSize() == 0;
}

// Nobody sees the questions here, so relocations that have not been made need not be made for
// them.
void ObjectModule::clear() {
    TOMEX_CHECK(!m_IndexesFrozen);
    if (isEmpty() && m_Segments.getSize() == 0) {
        return;
    }
    dropAllDeferredContents();
    for (Section* const section : m_Sections) {
        section->m_RelocationLoader = nullptr;
    }
    PruneCriteria nothing;
    NotPruneCriteria everything(&nothing, false);
    prune(everything);
    forgetFile();
}

// What is left to forget once all objects have been removed.
void ObjectModule::forgetFile() {
    for (SymbolArray* const list : {&m_SymbolsSortedByAddress, &m_DynamicSymbolsSortedByAddress,
                                    &m_SymbolsSortedByName, &m_DynamicSymbolsSortedByName}) {
        list->clear();
    }
    m_SymbolListsSorted = true;
    m_RawDataBlocks.clear();
    m_DebugOverlayRecords.clear();
    forgetGroupNames();
    m_RemovedMemory.clear();
    m_SettledDynamic.reset();
    m_ElfHeader.reset();
    m_SectionHeaderTable.reset();
    m_ProgramHeaderTable.reset();
    dropBuildAttributes();
    forgetDynamicValues();
    m_Properties = 0;
    m_FileVersionDefinition = nullptr;
    m_VersionDefinitions = {};
    m_VersionRequirements = {};
    releaseImages();
    markChanged();
}

} // namespace elfext
