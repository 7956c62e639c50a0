// One entry of a symbol table.
//
// A symbol is defined in a section, has a fixed value, is common storage that a linker allocates,
// or is only used here. That is its category, and the category says where the symbol is listed:
// with its section or with its module. It always stands in exactly one such list, beside the
// module's list of all symbols.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/object_with_build_attributes.h"

#include <cstdint>

namespace elfext {

class ObjectModule;
class Section;
class SymbolVersionDefinition;
class SymbolVersionRequirement;

// What the name says of a symbol. Mapping symbols mark what the bytes of a section are, such as
// where code ends and literals begin. The values are the bits of a filter.
enum SymbolKind : uint32_t {
    SymbolKind_Ordinary = 1,
    SymbolKind_Mapping = 2,       // $a, $d, $t, $x, alone or followed by "." and anything
    SymbolKind_SecondMapping = 4, // $b, $f, $p, $v, whatever follows
    SymbolKind_All = 7,
};

// The kind of a symbol of this name, which may be null.
SymbolKind getSymbolKind(const char* name);

// What all symbols have, whatever their category.
struct SymbolFields {
    const char* m_Name = nullptr; // may be null
    uint64_t m_Size = 0;
    uint32_t m_Type = 0;       // STT_
    uint32_t m_Binding = 0;    // STB_
    uint32_t m_Visibility = 0; // STV_
    uint8_t m_OtherBits = 0;   // those of `st_other` beside the visibility's, which are left out
};

class Symbol : public ObjectWithBuildAttributes {
public:
    enum Category : uint32_t {
        Category_Absolute = 0,
        Category_Hosted = 1, // defined in a section
        Category_Common = 2,
        Category_Undefined = 3,
    };

    // Symbols are made by their module, in its object region; a new one is undefined and in no
    // list. The name is copied, unless it lies in the image that the module refers to.
    Symbol(ObjectModule* objectModule, const char* name, uint64_t size, uint32_t type,
           uint32_t binding, uint32_t visibility, bool isDynamic);

    // The parent is the section that hosts the symbol, or the module.
    bool inheritsBuildAttributes() const override { return true; }
    void getParentBuildAttributes(attributes::BuildAttributes& result) const override;

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    const char* getName() const { return m_Name; }
    void setName(const char* name);
    uint64_t getSize() const { return m_Size; }
    void setSize(uint64_t size);
    uint32_t getType() const { return m_Type; }
    void setType(uint32_t type);
    uint32_t getBinding() const { return m_Binding; }
    void setBinding(uint32_t binding);
    uint32_t getVisibility() const { return m_Visibility; }
    void setVisibility(uint32_t visibility);
    // The bits of `st_other` beside the visibility's two, in their places. Their meaning is the
    // processor's. The setter leaves out those two.
    uint8_t getOtherBits() const { return m_OtherBits; }
    void setOtherBits(uint8_t otherBits);
    bool isDynamic() const { return m_IsDynamic; }
    SymbolKind getKind() const { return getSymbolKind(m_Name); }

    // --- Category and place. Each getter and setter of a value is only for its category.

    Category getCategory() const { return m_Category; }
    uint64_t getAbsoluteValue() const;
    void setAbsoluteValue(uint64_t value);
    // Of a common symbol: the alignment that it asks for.
    uint64_t getCommonValue() const;
    void setCommonValue(uint64_t value);
    // Of an undefined symbol: what a file says all the same. A program that takes the address of a
    // library's function has its stub there. It is no address of the symbol.
    uint64_t getUndefinedValue() const;
    void setUndefinedValue(uint64_t value);
    Section* getSection() const;
    // In bytes from the section's start.
    uint64_t getOffset() const;
    void setOffset(uint64_t offset);

    // Each moves the symbol to the list of its new category.
    void makeAbsolute(uint64_t value);
    void makeCommon(uint64_t value);
    void makeHosted(Section* section, uint64_t offset);
    void makeUndefined();

    // Where the symbol is in memory: 0 unless it is absolute or hosted.
    uint64_t getAddress() const;
    // What `st_value` must hold. For a function bit 0, which marks its instruction set, is no part
    // of its address.
    uint64_t getAbiValue() const;

    // True if the symbol is there to carry build attributes in its name.
    bool isBuildAttributesSymbol() const;

    // --- Relations

    // The versions of dynamic symbols; null for none. Only what is defined can have a definition.
    SymbolVersionDefinition* getSymbolVersionDefinition() const {
        return m_SymbolVersionDefinition;
    }
    void setSymbolVersionDefinition(SymbolVersionDefinition* definition);
    SymbolVersionRequirement* getSymbolVersionRequirement() const {
        return m_SymbolVersionRequirement;
    }
    void setSymbolVersionRequirement(SymbolVersionRequirement* requirement);
    // What a file's table of versions says of a dynamic symbol: a number and the bit that hides the
    // symbol from whoever asks for no version. Where there is a definition or a requirement, the
    // number is theirs, and only the bit counts here. NoVersionEntry for a symbol of no file.
    static constexpr uint16_t NoVersionEntry = UINT16_MAX;
    uint16_t getVersionEntry() const { return m_VersionEntry; }
    void setVersionEntry(uint16_t entry);
    bool isVersionHidden() const {
        return m_VersionEntry != NoVersionEntry && (m_VersionEntry & VERSYM_HIDDEN) != 0;
    }
    // A related symbol of the same module, or null.
    Symbol* getLinkedSymbol() const { return m_LinkedSymbol; }
    void setLinkedSymbol(Symbol* symbol);

private:
    friend class ObjectModule;
    friend class Pruner;

    static constexpr uint8_t OtherBitsMask = 0xFC;

    void markChanged();
    void markListsUnsorted();
    void settle(Category category, uint64_t value);
    void settleIn(Section* section, uint64_t offset);
    fast_array<Symbol*>& categoryList();
    void leaveList();
    void beNew();
    void enterList();

    bool m_IsDynamic;
    uint8_t m_OtherBits = 0;
    uint16_t m_VersionEntry = NoVersionEntry;
    Category m_Category = Category_Undefined;
    const char* m_Name; // in the object region or in the image
    uint64_t m_Size;
    uint32_t m_Type;
    uint32_t m_Binding;
    uint32_t m_Visibility;
    mutable uint32_t m_Index = 0; // in the module's list, valid when indexes are up to date
    union {
        uint64_t m_Number = 0; // absolute, common, undefined
        Section* m_Section;    // hosted
    } m_Value;
    uint64_t m_Offset = 0; // hosted
    SymbolVersionDefinition* m_SymbolVersionDefinition = nullptr;
    SymbolVersionRequirement* m_SymbolVersionRequirement = nullptr;
    Symbol* m_LinkedSymbol = nullptr;
};

} // namespace elfext
