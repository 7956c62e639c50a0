// Which regions of a file contain which.
#include "elfext/interface/file_region.h"

namespace elfext {

template <typename List>
List& FileRegion::listMadeOnDemand(List*& list) {
    if (list == nullptr) {
        list = new (alloclib::allocate(*m_Region, sizeof(List), 8)) List(m_Region);
    }
    return *list;
}

// What the linker finds goes in front: it stands for what was found before anything was added.
void FileRegion::link() {
    FileRegionLinker* const linker = m_Linker;
    if (linker == nullptr) {
        return;
    }
    m_Linker = nullptr;
    ContainedList contained(m_Region);
    ContainerList containers(m_Region);
    linker->findLinks(*this, contained, containers);
    ContainedList& addedContained = listMadeOnDemand(m_Contained);
    for (const ContainedRegion& added : addedContained) {
        contained.add(added);
    }
    addedContained.swap(contained);
    ContainerList& addedContainers = listMadeOnDemand(m_Containers);
    for (FileRegion* const added : addedContainers) {
        containers.add(added);
    }
    addedContainers.swap(containers);
}

const FileRegion::ContainedList& FileRegion::linkedContained() {
    link();
    return listMadeOnDemand(m_Contained);
}

const FileRegion::ContainerList& FileRegion::linkedContainers() {
    link();
    return listMadeOnDemand(m_Containers);
}

void FileRegion::addContained(FileRegion* contained, uint64_t offset) {
    TOMEX_CHECK_TEXT(contained != nullptr, "contained != NULL");
    TOMEX_CHECK(contained != this);
    listMadeOnDemand(m_Contained).add({.m_Region = contained, .m_Offset = offset});
    contained->listMadeOnDemand(contained->m_Containers).add(this);
}

// What has not been found yet, a linker leaves out.
void FileRegion::dropDetached() {
    if (m_Contained != nullptr) {
        uint32_t kept = 0;
        for (uint32_t i = 0; i < m_Contained->getSize(); ++i) {
            if (!(*m_Contained)[i].m_Region->isDetached()) {
                (*m_Contained)[kept++] = (*m_Contained)[i];
            }
        }
        m_Contained->setSize(kept);
    }
    if (m_Containers != nullptr) {
        uint32_t kept = 0;
        for (uint32_t i = 0; i < m_Containers->getSize(); ++i) {
            if (!(*m_Containers)[i]->isDetached()) {
                (*m_Containers)[kept++] = (*m_Containers)[i];
            }
        }
        m_Containers->setSize(kept);
    }
}

void FileRegion::forgetLinks() {
    m_Contained = nullptr;
    m_Containers = nullptr;
    m_Linker = nullptr;
}

} // namespace elfext
