// The sections that the library understands, each with the type that it stands for. They are
// computed from the rest of the model when it is written; nobody relocates them but the null
// section, which counts as relocatable since it stands in for "no section".
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/interface/section.h"

#include <cstdint>

namespace elfext {

class HashSection;
class ShndxSection;

// The section at index 0 of every file that has sections.
class NullSection : public Section {
public:
    NullSection(ObjectModule* objectModule, uint32_t flags)
        : Section(objectModule, true, true, nullptr, SHT_NULL, flags) {}
};

// A table of names. One table may serve several purposes.
class StringTableSection : public Section {
public:
    StringTableSection(ObjectModule* objectModule, const char* name)
        : Section(objectModule, true, false, name, SHT_STRTAB, 0) {}

    bool servesSectionNames() const { return m_ServesSectionNames; }
    void setServesSectionNames(bool serves) { m_ServesSectionNames = serves; }
    bool servesSymbols() const { return m_ServesSymbols; }
    void setServesSymbols(bool serves) { m_ServesSymbols = serves; }
    bool servesDynamicSymbols() const { return m_ServesDynamicSymbols; }
    void setServesDynamicSymbols(bool serves) { m_ServesDynamicSymbols = serves; }
    bool servesDynamicSection() const { return m_ServesDynamicSection; }
    void setServesDynamicSection(bool serves) { m_ServesDynamicSection = serves; }

private:
    bool m_ServesSectionNames = false;
    bool m_ServesSymbols = false;
    bool m_ServesDynamicSymbols = false;
    bool m_ServesDynamicSection = false;
};

// The static or the dynamic symbol table.
class SymbolTableSection : public Section {
public:
    // `type` is SHT_SYMTAB or SHT_DYNSYM.
    SymbolTableSection(ObjectModule* objectModule, const char* name, uint32_t type);

    bool isDynamic() const { return getType() == SHT_DYNSYM; }
    // The table of extended section indexes that belongs to this one, and the hash table; null if
    // there is none.
    ShndxSection* getShndxSection() const { return m_ShndxSection; }
    void setShndxSection(ShndxSection* section) { m_ShndxSection = section; }
    HashSection* getHashSection() const { return m_HashSection; }
    void setHashSection(HashSection* section) { m_HashSection = section; }

private:
    ShndxSection* m_ShndxSection = nullptr;
    HashSection* m_HashSection = nullptr;
};

// Relocations of one other section.
class RelocationSection : public Section {
public:
    // `type` is SHT_REL or SHT_RELA.
    RelocationSection(ObjectModule* objectModule, const char* name, uint32_t type, uint32_t flags);

    const RelocationSection* asRelocationSection() const override { return this; }
    RelocationSection* asRelocationSection() override { return this; }

    // True if the entries have addends.
    bool hasAddends() const { return getType() == SHT_RELA; }
    // The section that is relocated, or null.
    Section* getTarget() const { return m_Target; }
    // True if the symbols are dynamic ones.
    bool isDynamic() const { return m_IsDynamic; }
    // Sets both, and enters this section with its target, which forgets it if it is set anew.
    void setTarget(Section* target, bool isDynamic);
    // Tells the tables that were read for one target apart, from 1 on: their relocations go back to
    // the table of their number. 0 for a table that comes from no file. From the highest number on
    // tables are no longer told apart.
    uint16_t getTableNumber() const { return m_TableNumber; }
    void setTableNumber(uint16_t number) { m_TableNumber = number; }

private:
    friend class Pruner;

    Section* m_Target = nullptr;
    uint16_t m_TableNumber = 0;
    bool m_IsDynamic = false;
};

// Lists the members of a section group.
class GroupSection : public Section {
public:
    GroupSection(ObjectModule* objectModule, const char* name)
        : Section(objectModule, true, false, name, SHT_GROUP, 0) {}

    // The symbol whose name is the group's signature, as the file numbers it.
    uint32_t getSignatureSymbolIndex() const { return m_SignatureSymbolIndex; }
    void setSignatureSymbolIndex(uint32_t index) { m_SignatureSymbolIndex = index; }

private:
    uint32_t m_SignatureSymbolIndex = 0;
};

// A special section that is only told apart by its type.
template <uint32_t Type>
class TypedSection : public Section {
public:
    TypedSection(ObjectModule* objectModule, const char* name)
        : Section(objectModule, true, false, name, Type, 0) {}
};

// Section indexes of symbols that do not fit into 16 bits.
class ShndxSection : public TypedSection<SHT_SYMTAB_SHNDX> {
    using TypedSection::TypedSection;
};

class HashSection : public TypedSection<SHT_HASH> {
    using TypedSection::TypedSection;
};

class DynamicSection : public TypedSection<SHT_DYNAMIC> {
    using TypedSection::TypedSection;
};

class VerdefSection : public TypedSection<SHT_GNU_verdef> {
    using TypedSection::TypedSection;
};

class VerneedSection : public TypedSection<SHT_GNU_verneed> {
    using TypedSection::TypedSection;
};

class VersymSection : public TypedSection<SHT_GNU_versym> {
    using TypedSection::TypedSection;
};

class PreemptionMapSection : public TypedSection<SHT_QEL_PREEMPTMAP> {
    using TypedSection::TypedSection;
};

class BuildAttributesSection : public TypedSection<SHT_QEL_ATTRIBUTES> {
public:
    using TypedSection::TypedSection;

    // False for a section of a file that the reader could make nothing of and left out. It stays
    // as it is for as long as the program states no attributes of its own.
    bool isUnderstood() const { return m_IsUnderstood; }
    void setIsUnderstood(bool isUnderstood) { m_IsUnderstood = isUnderstood; }

private:
    bool m_IsUnderstood = true;
};

class DebugOverlaySection : public TypedSection<SHT_QEL_DEBUGOVERLAY> {
    using TypedSection::TypedSection;
};

} // namespace elfext
