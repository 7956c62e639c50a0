// Members of a group, and how its signature is kept in step with the module's table.
#include "elfext/interface/group.h"

#include "elfext/interface/object_module.h"

namespace elfext {

Group::Group(ObjectModule* objectModule, const char* name, const char* signature, uint32_t flags)
    : m_Name(objectModule->keepText(name)), m_Signature(objectModule->keepText(signature)),
      m_Flags(flags), m_ObjectModule(objectModule), m_Members(objectModule->getContainerRegion()) {
    TOMEX_CHECK_TEXT(signature != nullptr, "signature != NULL");
}

uint32_t Group::getIndex() const {
    return m_ObjectModule->getGroupIndex(this);
}

bool Group::isComdat() const {
    return (m_Flags & GRP_COMDAT) != 0;
}

void Group::setName(const char* name) {
    m_Name = m_ObjectModule->keepText(name);
    m_ObjectModule->forgetGroupNames();
    m_ObjectModule->markChanged();
}

void Group::setSignature(const char* signature) {
    TOMEX_CHECK_TEXT(signature != nullptr, "signature != NULL");
    if (isComdat()) {
        m_ObjectModule->leaveComdatGroup(this);
    }
    m_Signature = m_ObjectModule->keepText(signature);
    if (isComdat()) {
        TOMEX_CHECK(
            !m_ObjectModule->m_MapSignaturesToComdatGroups.containsKey(Stringlett(m_Signature)));
        m_ObjectModule->enterComdatGroup(this);
    }
    m_ObjectModule->markChanged();
}

void Group::setFlags(uint32_t flags) {
    if (isComdat()) {
        m_ObjectModule->leaveComdatGroup(this);
    }
    m_Flags = flags;
    if (isComdat()) {
        m_ObjectModule->enterComdatGroup(this);
    }
    m_ObjectModule->markChanged();
}

void Group::addMember(Section* section) {
    TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
    TOMEX_CHECK(section->getObjectModule() == m_ObjectModule);
    TOMEX_CHECK_TEXT(section->m_Group == nullptr, "section->m_Group == NULL");
    section->m_Group = this;
    m_Members.add(section);
    m_ObjectModule->markChanged();
}

void Group::removeMember(Section* section) {
    TOMEX_CHECK_TEXT(section != nullptr, "section != NULL");
    TOMEX_CHECK(section->m_Group == this);
    section->m_Group = nullptr;
    m_Members.removeValue(section);
    m_ObjectModule->markChanged();
}

} // namespace elfext
