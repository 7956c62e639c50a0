// Names and lists of version records.
#include "elfext/interface/version_records.h"

#include "elfext/interface/object_module.h"

namespace elfext {

uint32_t getVersionHash(const char* versionString) {
    uint32_t hash = 0;
    for (const char* c = versionString; *c != '\0'; ++c) {
        hash = (hash << 4) + static_cast<unsigned char>(*c);
        const uint32_t high = hash & 0xF0000000;
        hash = (hash ^ high >> 24) & ~high;
    }
    return hash;
}

VersionIdentifier::VersionIdentifier(ObjectModule* objectModule, const char* versionString)
    : m_VersionString(objectModule->keepText(versionString)), m_Hash(0) {
    TOMEX_CHECK_TEXT(versionString != nullptr, "versionString != NULL");
    m_Hash = getVersionHash(m_VersionString);
}

VersionDefinition::VersionDefinition(ObjectModule* objectModule, uint16_t index, uint16_t flags)
    : VersionSpecification(objectModule, index, flags),
      m_DefinedVersionIdentifiers(objectModule->getContainerRegion()) {
}

DefinedVersionIdentifier* VersionDefinition::getDefinedVersionIdentifier(uint32_t index) const {
    TOMEX_CHECK(index < m_DefinedVersionIdentifiers.getSize());
    return m_DefinedVersionIdentifiers[index];
}

DefinedVersionIdentifier*
VersionDefinition::addDefinedVersionIdentifier(const char* versionString) {
    void* const memory = alloclib::allocate(*getObjectModule()->getObjectRegion(),
                                            sizeof(DefinedVersionIdentifier), 8);
    auto* const identifier =
        new (memory) DefinedVersionIdentifier(getObjectModule(), this, versionString);
    addDefinedVersionIdentifier(identifier);
    return identifier;
}

void VersionDefinition::addDefinedVersionIdentifier(
    DefinedVersionIdentifier* definedVersionIdentifier) {
    TOMEX_CHECK_TEXT(definedVersionIdentifier != nullptr, "definedVersionIdentifier != NULL");
    TOMEX_CHECK(definedVersionIdentifier->getVersionDefinition() == this);
    m_DefinedVersionIdentifiers.add(definedVersionIdentifier);
    getObjectModule()->markChanged();
}

VersionRequirement::VersionRequirement(ObjectModule* objectModule, uint16_t index, uint16_t flags,
                                       const char* libraryName, const char* versionString)
    : VersionSpecification(objectModule, index, flags),
      m_LibraryName(objectModule->keepText(libraryName)),
      m_RequiredVersionIdentifier(objectModule, this, versionString) {
    TOMEX_CHECK_TEXT(libraryName != nullptr, "libraryName != NULL");
}

} // namespace elfext
