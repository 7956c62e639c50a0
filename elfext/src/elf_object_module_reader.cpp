// The ways into a read, and its frame: where the bytes come from, the passes in their order, and
// what becomes of everything afterwards.
#include "elfext/interface/elf_object_module_reader.h"

#include "alloclib/interface/region_general.h"
#include "elfext/src/read_state.h"
#include "elfext/src/reader_passes.h"

#include <cerrno>
#include <memory>
#include <new>

#include <sys/types.h>

namespace elfext {
namespace {

// Files up to this size are read into memory as a whole.
constexpr uint64_t wholeFileLimit = 0x100000;
constexpr uint64_t regionBlockSize = 0x100000;

using ByteBlock = std::unique_ptr<uint8_t[]>;

constexpr bool (*passes[])(ReadState& state) = {
    readHeaders,         createSections,    readContents,        readSectionNames,
    readLinks,           readSymbols,       readRelocations,     readGroups,
    createSegments,      readFileRegions,   attachEmptySections, readRawData,
    readDynamicSections, readDebugOverlays, readSegmentNotes,    readBuildAttributes,
    computeProperties,
};

bool runPasses(ReadState& state) {
    for (const auto pass : passes) {
        if (!pass(state)) {
            return false;
        }
    }
    return true;
}

// Layout wants to know later on what has changed its size.
void settleSizes(ObjectModule& objectModule, uint64_t fileSize) {
    for (Section* const section : objectModule.getSections()) {
        section->settleSize();
    }
    for (Segment* const segment : objectModule.getSegments()) {
        segment->settleSize();
    }
    objectModule.getProgramHeaderTable().settleSize();
    objectModule.getSectionHeaderTable().settleSize();
    objectModule.getElfHeader().settleFileSize(fileSize);
}

// Reads from what the low-level layer has open. `isFileKept` tells whether the module has taken
// the stream over.
bool readCore(const InputStream& stream, uint64_t size, ObjectModule& objectModule,
              bool& isFileKept, DeferredContentsSelector* selector) {
    alloclib::RegionGeneral* const region =
        alloclib::RegionGeneral::Create(regionBlockSize, "readElfFile() region");
    bool isGood = false;
    {
        ReadState state(objectModule, *region, stream, size, selector);
        isGood = runPasses(state);
        isFileKept = state.m_IsFileKept;
    }
    region->Destroy(true);
    if (isGood) {
        settleSizes(objectModule, size);
    } else {
        objectModule.clear();
        objectModule.releaseImages();
    }
    return isGood;
}

bool readImage(const uint8_t* bytes, uint64_t size, ObjectModule& objectModule) {
    const OpenInput input(bytes, size);
    bool isFileKept = false;
    return readCore({}, size, objectModule, isFileKept, nullptr);
}

bool readOwnImage(ByteBlock image, uint64_t size, ObjectModule& objectModule) {
    const uint8_t* const bytes = image.get();
    objectModule.adoptImage(std::move(image), size);
    return readImage(bytes, size, objectModule);
}

bool failReading(ObjectModule& objectModule, int error) {
    return reportFatal(objectModule, &ErrorHandler::ioErrorReading, objectModule.getFileName(),
                       error);
}

// Null if there is not that much memory. An empty block is a block, too.
ByteBlock takeBlock(uint64_t size) {
    return size < SIZE_MAX
               ? ByteBlock(new (std::nothrow) uint8_t[static_cast<size_t>(size != 0 ? size : 1)])
               : nullptr;
}

// The size of an open file. False leaves errno.
bool findSize(std::FILE* file, uint64_t& size) {
    errno = 0;
    if (fseeko(file, 0, SEEK_END) != 0) {
        return false;
    }
    const off_t end = ftello(file);
    size = static_cast<uint64_t>(end);
    return end >= 0;
}

// Exactly `size` bytes. False leaves errno, 0 if the file ended before.
bool readStretch(std::FILE* file, uint64_t offset, uint64_t size, uint8_t* buffer) {
    errno = 0;
    return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0 &&
           std::fread(buffer, 1, static_cast<size_t>(size), file) == size;
}

// What a stretch of a file holds, with a look at its size first: nobody takes memory for bytes
// that are not there.
bool readStretchOf(std::FILE* file, uint64_t offset, uint64_t size, ObjectModule& objectModule,
                   ByteBlock& block) {
    uint64_t fileSize = 0;
    if (!findSize(file, fileSize)) {
        return failReading(objectModule, errno);
    }
    if (size > fileSize || offset > fileSize - size) {
        return failReading(objectModule, 0);
    }
    block = takeBlock(size);
    if (block == nullptr) {
        return reportFatal(objectModule, &ErrorHandler::outOfMemory);
    }
    return readStretch(file, offset, size, block.get()) || failReading(objectModule, errno);
}

// A whole stream. `isFileKept` tells whether it has become the module's.
bool readWholeFile(const InputStream& stream, ObjectModule& objectModule, bool& isFileKept,
                   DeferredContentsSelector* selector) {
    std::FILE* const file = stream.m_File;
    uint64_t size = 0;
    if (!findSize(file, size)) {
        return failReading(objectModule, errno);
    }
    ByteBlock block = size <= wholeFileLimit ? takeBlock(size) : nullptr;
    if (block != nullptr) {
        return readStretch(file, 0, size, block.get())
                   ? readOwnImage(std::move(block), size, objectModule)
                   : failReading(objectModule, errno);
    }
    const OpenInput input(file, size);
    return readCore(stream, size, objectModule, isFileKept, selector);
}

// The file that a name stands for; null if it cannot be opened, which is reported.
std::FILE* openNamed(const char* fileName, ObjectModule& objectModule) {
    errno = 0;
    std::FILE* const file = std::fopen(fileName, "rb");
    if (file == nullptr) {
        failReading(objectModule, errno);
    }
    return file;
}

// The first act of every entry that has a name.
void startNamed(const char* fileName, ObjectModule& objectModule) {
    TOMEX_CHECK_TEXT(fileName != nullptr, "fileName != NULL");
    objectModule.clear();
    objectModule.releaseImages();
    objectModule.setFileName(fileName);
}

void startStream(const std::FILE* elfFile, ObjectModule& objectModule) {
    TOMEX_CHECK_TEXT(elfFile != nullptr, "elfFile != NULL");
    objectModule.clear();
    objectModule.releaseImages();
}

} // namespace

bool readElfFile(const char* fileName, ObjectModule* objectModule,
                 DeferredContentsSelector* selector) {
    startNamed(fileName, *objectModule);
    std::FILE* const file = openNamed(fileName, *objectModule);
    if (file == nullptr) {
        return false;
    }
    bool isFileKept = false;
    const bool isGood = readWholeFile({file, false}, *objectModule, isFileKept, selector);
    if (!isFileKept) {
        std::fclose(file);
    }
    return isGood;
}

bool readElfFile(const char* fileName, uint64_t offset, uint64_t size, ObjectModule* objectModule,
                 DeferredContentsSelector* /*selector*/) {
    startNamed(fileName, *objectModule);
    std::FILE* const file = openNamed(fileName, *objectModule);
    if (file == nullptr) {
        return false;
    }
    ByteBlock block;
    const bool isRead = readStretchOf(file, offset, size, *objectModule, block);
    std::fclose(file);
    return isRead && readOwnImage(std::move(block), size, *objectModule);
}

bool readElfBuffer(const char* fileName, const uint8_t* readBuffer, uint64_t size,
                   ObjectModule* objectModule, DeferredContentsSelector* /*selector*/) {
    TOMEX_CHECK_TEXT(fileName != nullptr && readBuffer != nullptr,
                     "fileName != NULL && readBuffer != NULL");
    startNamed(fileName, *objectModule);
    objectModule->setReadBuffer(readBuffer, size, true);
    return readImage(readBuffer, size, *objectModule);
}

bool readElfImage(const char* fileName, std::unique_ptr<uint8_t[]> image, uint64_t size,
                  ObjectModule* objectModule) {
    startNamed(fileName, *objectModule);
    return readOwnImage(std::move(image), size, *objectModule);
}

bool readElfFile(std::FILE* elfFile, ObjectModule* objectModule,
                 DeferredContentsSelector* selector) {
    startStream(elfFile, *objectModule);
    bool isFileKept = false;
    return readWholeFile({elfFile, true}, *objectModule, isFileKept, selector);
}

bool readElfFile(std::FILE* elfFile, uint64_t offset, uint64_t size, ObjectModule* objectModule,
                 DeferredContentsSelector* /*selector*/) {
    startStream(elfFile, *objectModule);
    ByteBlock block;
    return readStretchOf(elfFile, offset, size, *objectModule, block) &&
           readOwnImage(std::move(block), size, *objectModule);
}

} // namespace elfext
