// Symbol versions: which versions of its interface a library offers, and which of other libraries
// it asks for.
//
// A definition has one name of its own and may name the versions that it continues. A requirement
// names one version of one library. Symbols point to what applies to them. The layouts that these
// come from are those of `Elf_Verdef`, `Elf_Verdaux`, `Elf_Verneed` and `Elf_Vernaux` in the GNU
// and Solaris linker documentation.
//
// All of these lie in the object region of their module, with their texts.
#pragma once

#include "elfext/interface/fast_array.h"

#include <cstdint>

namespace elfext {

class ObjectModule;
class VersionDefinition;
class VersionRequirement;

// The hash of a version's name as the format has it: that of the System V ABI's hash tables.
uint32_t getVersionHash(const char* versionString);

// The name of a version.
class VersionIdentifier {
public:
    const char* getVersionString() const { return m_VersionString; }
    uint32_t getHash() const { return m_Hash; }

protected:
    // `versionString` is not null and is copied.
    VersionIdentifier(ObjectModule* objectModule, const char* versionString);

private:
    const char* m_VersionString;
    uint32_t m_Hash;
};

class DefinedVersionIdentifier : public VersionIdentifier {
public:
    DefinedVersionIdentifier(ObjectModule* objectModule, VersionDefinition* versionDefinition,
                             const char* versionString)
        : VersionIdentifier(objectModule, versionString), m_VersionDefinition(versionDefinition) {}

    VersionDefinition* getVersionDefinition() const { return m_VersionDefinition; }

private:
    VersionDefinition* m_VersionDefinition;
};

class RequiredVersionIdentifier : public VersionIdentifier {
public:
    RequiredVersionIdentifier(ObjectModule* objectModule, VersionRequirement* versionRequirement,
                              const char* versionString)
        : VersionIdentifier(objectModule, versionString), m_VersionRequirement(versionRequirement) {
    }

    VersionRequirement* getVersionRequirement() const { return m_VersionRequirement; }

private:
    VersionRequirement* m_VersionRequirement;
};

// What definitions and requirements share. The index is the number that entries of the versym table
// name; its bit 15, which hides a symbol, is no part of it.
class VersionSpecification {
public:
    VersionSpecification(const VersionSpecification&) = delete;
    VersionSpecification& operator=(const VersionSpecification&) = delete;

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    uint16_t getIndex() const { return m_Index; }
    uint16_t getFlags() const { return m_Flags; }

protected:
    VersionSpecification(ObjectModule* objectModule, uint16_t index, uint16_t flags)
        : m_ObjectModule(objectModule), m_Index(index), m_Flags(flags) {}

private:
    ObjectModule* m_ObjectModule;
    uint16_t m_Index;
    uint16_t m_Flags;
};

class VersionDefinition : public VersionSpecification {
public:
    // The version's own name first, then those that it continues.
    uint32_t getDefinedVersionIdentifierCount() const {
        return m_DefinedVersionIdentifiers.getSize();
    }
    DefinedVersionIdentifier* getDefinedVersionIdentifier(uint32_t index) const;
    // Makes an identifier of this name and adds it.
    DefinedVersionIdentifier* addDefinedVersionIdentifier(const char* versionString);
    // Adds one that was made for this definition.
    void addDefinedVersionIdentifier(DefinedVersionIdentifier* definedVersionIdentifier);

protected:
    VersionDefinition(ObjectModule* objectModule, uint16_t index, uint16_t flags);

private:
    fast_array<DefinedVersionIdentifier*> m_DefinedVersionIdentifiers;
};

// The version of the file as a whole.
class FileVersionDefinition : public VersionDefinition {
public:
    FileVersionDefinition(ObjectModule* objectModule, uint16_t index, uint16_t flags)
        : VersionDefinition(objectModule, index, flags) {}
};

// A version that symbols are defined in.
class SymbolVersionDefinition : public VersionDefinition {
public:
    SymbolVersionDefinition(ObjectModule* objectModule, uint16_t index, uint16_t flags)
        : VersionDefinition(objectModule, index, flags) {}

    // The one that was made after it in the same module; null for the last.
    SymbolVersionDefinition* getNext() const { return m_Next; }

private:
    friend class ObjectModule;

    SymbolVersionDefinition* m_Next = nullptr;
};

class VersionRequirement : public VersionSpecification {
public:
    // The library that must offer the version.
    const char* getLibraryName() const { return m_LibraryName; }
    const RequiredVersionIdentifier& getRequiredVersionIdentifier() const {
        return m_RequiredVersionIdentifier;
    }

protected:
    // Neither text is null; both are copied.
    VersionRequirement(ObjectModule* objectModule, uint16_t index, uint16_t flags,
                       const char* libraryName, const char* versionString);

private:
    const char* m_LibraryName;
    RequiredVersionIdentifier m_RequiredVersionIdentifier;
};

// A version that symbols are taken from.
class SymbolVersionRequirement : public VersionRequirement {
public:
    SymbolVersionRequirement(ObjectModule* objectModule, uint16_t index, uint16_t flags,
                             const char* libraryName, const char* versionString)
        : VersionRequirement(objectModule, index, flags, libraryName, versionString) {}

    // The one that was made after it in the same module; null for the last.
    SymbolVersionRequirement* getNext() const { return m_Next; }

private:
    friend class ObjectModule;

    SymbolVersionRequirement* m_Next = nullptr;
};

} // namespace elfext
