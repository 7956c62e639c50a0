// A name that the archive symbol table lists, and the member that defines it.
#pragma once

#include "arlib/interface/archive_member.h"
#include "attributes/interface/full_attr.h"
#include "platform/interface/internal_check.h"

namespace arlib {

class Archive;

// A plain object in its archive's region: it lives until the archive is cleared.
class Symbol {
public:
    // name is without decoration, in the archive's object region; the member is one of the
    // archive's. None may be null.
    Symbol(const char* name, Archive* archive, ArchiveMember* definingMember)
        : m_Name(name), m_Archive(archive), m_DefiningMember(definingMember) {
        TOMEX_CHECK_TEXT(name != nullptr, "name != NULL");
        TOMEX_CHECK_TEXT(archive != nullptr, "archive != NULL");
        TOMEX_CHECK_TEXT(definingMember != nullptr, "definingMember != NULL");
        TOMEX_CHECK(definingMember->getArchive() == archive);
    }

    const char* getName() const { return m_Name; }
    Archive* getArchive() const { return m_Archive; }
    ArchiveMember* getDefiningMember() const { return m_DefiningMember; }

    // True if the name in the table carried a decoration, also an empty one.
    bool hasBuildAttributes() const { return m_HasBuildAttributes; }
    // What the decoration says. Only for a symbol that has one.
    const attributes::FullAttr& getBuildAttributes() const {
        TOMEX_CHECK(m_HasBuildAttributes);
        return m_BuildAttributes;
    }
    void setBuildAttributes(const attributes::FullAttr& buildAttributes) {
        m_HasBuildAttributes = true;
        m_BuildAttributes = buildAttributes;
    }

private:
    const char* m_Name;
    bool m_HasBuildAttributes = false;
    attributes::FullAttr m_BuildAttributes;
    Archive* m_Archive;
    ArchiveMember* m_DefiningMember;
};

} // namespace arlib
