// One relocation: at `m_Offset` of a section, something is to be filled in that depends on a
// symbol.
#pragma once

#include <cstdint>

namespace elfext {

class Section;
class Symbol;

class Relocation {
public:
    // Relocations are made by the section that they apply to, in the object region. A new one is
    // dynamic if its target is. `target` may be null.
    Relocation(Section* section, uint64_t offset, uint16_t type, Symbol* target);

    Section* getSection() const { return m_Section; }
    uint64_t getOffset() const { return m_Offset; }
    void setOffset(uint64_t offset);
    uint16_t getType() const { return m_Type; }
    // Clears the upper bits as well.
    void setType(uint16_t type);
    // Bits 16 to 31 of the type in a 64-bit file, which no relocation has a use for: they are kept
    // for who writes the file again.
    uint16_t getUpperType() const { return m_UpperType; }
    Symbol* getTarget() const { return m_Target; }
    void setTarget(Symbol* target);
    bool isDynamic() const { return m_IsDynamic; }
    // Only without a target: otherwise the target decides.
    void setIsDynamic(bool isDynamic);
    // True for the form that holds its addend itself. The addend is only there in that form.
    bool hasAddend() const { return m_HasAddend; }
    uint64_t getAddend() const;
    void setAddend(uint64_t addend);
    // Changes the form. The addend that comes with it, or is lost, is 0.
    void setHasAddend(bool hasAddend);
    // The number of the table that the relocation was read from; see
    // RelocationSection::getTableNumber. 0 for one that comes from no file.
    uint16_t getTableNumber() const { return m_TableNumber; }

private:
    friend class Section;

    void markChanged();

    uint64_t m_Offset;
    uint64_t m_Addend = 0;
    Section* m_Section;
    Symbol* m_Target;
    uint16_t m_Type;
    uint16_t m_UpperType = 0;
    uint16_t m_TableNumber = 0;
    bool m_IsDynamic;
    bool m_HasAddend = false;
};

} // namespace elfext
