// The writer: makes the bytes of an ELF file of an `ObjectModule`.
//
// It brings the auxiliary sections up to date, lays the file out and writes it, as a plain ELF file
// of the module's class and byte order, of any type. Contents that were left in the file that they
// came from are fetched first, so that a module may be written over its own file. Problems go to
// the module's `ErrorHandler`, memory that has run out among them; without one they are failures,
// and false is all that the caller learns. After a failure the module can be changed and written
// again; only where memory ran out it may have been updated in part, and has to be cleared.
//
// A process writes one file at a time: no other thread may write meanwhile, nor may a handler that
// is called by a write.
//
// Changes can be taken back, whether or not a write has refused them in between: tables are made
// from what was read or written last. What stays is the order that sections and symbols have got on
// the way, and with that of dynamic symbols their second hash table.
//
// What the model holds is written. Of a file that was read, the model does not hold
//  - bytes in front of, between and behind sections, segments and tables of headers;
//  - the last seven bytes of `e_ident`; the second form of files is written as the plain one;
//  - the sizes of headers and entries where they are not those of the class;
//  - what entry 0 of a symbol table says, and whatever the reader reported and left out;
//  - entries of the dynamic section whose text cannot be read (DT_NEEDED, DT_SONAME, DT_RPATH and
//    DT_RUNPATH), which the reader leaves out without a word;
//  - what numbers of symbols and sections in contents stand for, where the library does not know
//    their type, as in lists of symbols whose addresses matter (`.llvm_addrsig`): they stay what
//    they are when symbols or sections go or change places, so that such sections have to go too;
//  - how the texts of a string table are ordered and which share their bytes, the order of local
//    and global symbols among each other, and where sections lie that no segment holds.
// Of numbers that are wider than their field in a 32-bit file the low bits are written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace elfext {

class ObjectModule;

// Makes the file in memory. `image` gets a block of `size` bytes, which is the caller's.
bool writeElfBuffer(ObjectModule* objectModule, std::unique_ptr<uint8_t[]>* image, uint64_t* size);

// Makes or replaces a file, in one step: while it is written, and after a failure, the file that
// was there is whole; see `replaceFile` of platform/interface/file_replacement.h, also for what a
// signal leaves behind. It keeps the old one's permissions. Programs and shared libraries may be
// executed by whoever may read them.
bool writeElfFile(const char* fileName, ObjectModule* objectModule);

// Writes to an open stream, from its position on. The stream stays the caller's.
bool writeElfFile(std::FILE* elfFile, ObjectModule* objectModule);

} // namespace elfext
