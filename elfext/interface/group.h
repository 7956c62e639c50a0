// Sections that belong together: a linker keeps or drops all of them.
//
// In a comdat group they are one copy of something that many objects hold; of all groups with one
// signature a linker keeps one.
#pragma once

#include "elfext/interface/fast_array.h"

#include <cstdint>

namespace elfext {

class ObjectModule;
class Section;

class Group {
public:
    // Groups are made by their module, in its object region. `name` may be null, `signature` may
    // not; both are copied, unless they lie in the image that the module refers to.
    Group(ObjectModule* objectModule, const char* name, const char* signature, uint32_t flags);
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    // Where the group stands in its module, from 0.
    uint32_t getIndex() const;
    // The name of the group's section.
    const char* getName() const { return m_Name; }
    void setName(const char* name);
    const char* getSignature() const { return m_Signature; }
    // A comdat group's new signature must not be that of a comdat group that the module would
    // find under it.
    void setSignature(const char* signature);
    uint32_t getFlags() const { return m_Flags; }
    void setFlags(uint32_t flags);
    bool isComdat() const;
    // The section that lists the members in the file; null for a group made in memory.
    Section* getSection() const { return m_Section; }
    void setSection(Section* section) { m_Section = section; }

    // In file order.
    const fast_array<Section*>& getMembers() const { return m_Members; }
    // Adds a section that is in no group yet.
    void addMember(Section* section);
    // Takes a member out.
    void removeMember(Section* section);
    // Makes room for `count` members in all.
    void reserveMembers(uint32_t count) { m_Members.reserve(count); }

private:
    friend class ObjectModule;
    friend class Pruner;

    const char* m_Name;
    const char* m_Signature;
    uint32_t m_Flags;
    mutable uint32_t m_Index = 0;
    Section* m_Section = nullptr;
    ObjectModule* m_ObjectModule;
    fast_array<Section*> m_Members;
};

} // namespace elfext
