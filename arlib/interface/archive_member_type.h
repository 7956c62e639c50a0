// What kind of contents a member has, and what can be asked of it.
//
// The types are process-wide objects without state, compared by address. The two table types are
// assigned by whoever makes or reads a table; all others are found by computeType, which looks at
// the contents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace attributes {
struct FullAttr;
}

namespace arlib {

class ArchiveMember;
class SymbolNameList;

class ArchiveMemberType {
public:
    // True for contents that define symbols.
    virtual bool isObjectModule() const { return false; }

    // True if the member's contents are of this type.
    virtual bool recognise(ArchiveMember&) const { return false; }

    // True for the archive's own tables, which stand in no listing and are never asked for.
    virtual bool isAuxiliary() const = 0;

    // Finds the type of a member that is no table.
    static const ArchiveMemberType* computeType(ArchiveMember& member);

    // The same for contents of which these are the first recognisableSize bytes, or all.
    static const ArchiveMemberType* typeOfHead(const uint8_t* bytes, size_t size);
    static constexpr size_t recognisableSize = 64;

protected:
    ~ArchiveMemberType() = default;
};

class ObjectModuleArchiveMemberType : public ArchiveMemberType {
public:
    bool isObjectModule() const override { return true; }
    bool isAuxiliary() const override { return false; }

    // Lists the names that the module defines, in the module's order. On false, failure tells why
    // in a sentence part, or is empty if that has been reported already.
    virtual bool getSymbols(ArchiveMember& member, SymbolNameList& names,
                            std::string& failure) const = 0;

    // Works out the module's build attributes, from its attributes section or else from its
    // marker symbols. False if there are none to be had; the result is then unchanged.
    virtual bool getBuildAttributes(ArchiveMember& member, attributes::FullAttr& result,
                                    bool fromSection) const = 0;

protected:
    ~ObjectModuleArchiveMemberType() = default;
};

// ELF files: relocatable objects, and executables and shared objects too. What begins like one is
// one; whether the rest is sound shows when it is read.
class ElfImageArchiveMemberType final : public ObjectModuleArchiveMemberType {
public:
    // Looks at the contents in memory, or else at the start of those on disk. What cannot be read
    // is none; that is not reported.
    bool recognise(ArchiveMember& member) const override;

    // Lists the names of the symbols of the static table that are defined and not local, with
    // those of debug sections only if the archive says so, and behind them what the object's
    // bitcode defines. The failure is the reader's sentence, or tells what is wrong with the
    // bitcode.
    bool getSymbols(ArchiveMember& member, SymbolNameList& names,
                    std::string& failure) const override;

    // Failures of the reader go to the archive's ELF error handler.
    bool getBuildAttributes(ArchiveMember& member, attributes::FullAttr& result,
                            bool fromSection) const override;
};

class UnknownArchiveMemberType final : public ArchiveMemberType {
public:
    bool isAuxiliary() const override { return false; }
};

class SymbolTableArchiveMemberType final : public ArchiveMemberType {
public:
    bool isAuxiliary() const override { return true; }
};

class FileNameTableArchiveMemberType final : public ArchiveMemberType {
public:
    bool isAuxiliary() const override { return true; }
};

const ArchiveMemberType* getElfImageType();
const ArchiveMemberType* getUnknownType();
const ArchiveMemberType* getSymbolTableType();
const ArchiveMemberType* getFileNameTableType();

} // namespace arlib
