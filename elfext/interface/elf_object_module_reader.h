// The reader: makes an `ObjectModule` of the bytes of an ELF file.
//
// It takes 32- and 64-bit files of either byte order for the QEL machines. Problems go to the
// module's `ErrorHandler`, which may let the read go on past many of them. A read replaces what
// the module held; one that fails leaves it empty and gives false. Without a handler every problem
// is a failure, and false is all that the caller learns.
//
// `fileName` becomes the module's file name; it is never null, and is copied. `selector` may be
// null; it is asked only where contents can be left in the file at all, and must live during the
// call. The bytes of names and contents that the module does not need to change may stay where
// they were read to: the module then owns that memory, unless it is the caller's.
//
// Reads do not nest, and no two may run at the same time.
#pragma once

#include "elfext/interface/deferred_contents_selector.h"

#include <cstdint>
#include <cstdio>
#include <memory>

namespace elfext {

class ObjectModule;

// A whole file. Contents may be left in files of more than 1 MiB; the file then stays open until
// the last of them has been read or the module ends.
bool readElfFile(const char* fileName, ObjectModule* objectModule,
                 DeferredContentsSelector* selector);

// The `size` bytes at `offset` of a file, such as a member of an archive.
bool readElfFile(const char* fileName, uint64_t offset, uint64_t size, ObjectModule* objectModule,
                 DeferredContentsSelector* selector);

// The `size` bytes at `readBuffer`, which is not null. The module refers to them: they must stay
// as they are for as long as it lives or until it is read anew.
bool readElfBuffer(const char* fileName, const uint8_t* readBuffer, uint64_t size,
                   ObjectModule* objectModule, DeferredContentsSelector* selector);

// The same for bytes that nobody else needs: `image`, not null, becomes the module's.
bool readElfImage(const char* fileName, std::unique_ptr<uint8_t[]> image, uint64_t size,
                  ObjectModule* objectModule);

// An open stream, which stays the caller's. If contents were left in it, it must stay open until
// they have been read. The module's file name stays as it is.
bool readElfFile(std::FILE* elfFile, ObjectModule* objectModule,
                 DeferredContentsSelector* selector);
bool readElfFile(std::FILE* elfFile, uint64_t offset, uint64_t size, ObjectModule* objectModule,
                 DeferredContentsSelector* selector);

} // namespace elfext
