// Libraries, search paths and preemptions.
#include "elfext/interface/dynamic_records.h"

#include "elfext/interface/object_module.h"

namespace elfext {

NeededLibrary::NeededLibrary(ObjectModule* objectModule, const char* name)
    : m_Name(objectModule->keepText(name)), m_ObjectModule(objectModule) {
    TOMEX_CHECK_TEXT(name != nullptr, "name != NULL");
}

LibrarySearchPath::LibrarySearchPath(ObjectModule* objectModule, const char* path, uint32_t tag)
    : m_Path(objectModule->keepText(path)), m_Tag(tag), m_ObjectModule(objectModule) {
    TOMEX_CHECK_TEXT(path != nullptr, "path != NULL");
}

Preemption::Preemption(ObjectModule* objectModule, const char* symbolName,
                       const char* preemptingDllName)
    : m_SymbolName(objectModule->keepText(symbolName)),
      m_PreemptingDllName(objectModule->keepText(preemptingDllName)), m_ObjectModule(objectModule),
      m_PreemptedDlls(objectModule->getContainerRegion()) {
    TOMEX_CHECK_TEXT(symbolName != nullptr, "symbolName != NULL");
    TOMEX_CHECK_TEXT(preemptingDllName != nullptr, "preemptingDllName != NULL");
}

PreemptedDll* Preemption::addPreemptedDll(const char* name) {
    void* const memory =
        alloclib::allocate(*m_ObjectModule->getObjectRegion(), sizeof(PreemptedDll), 8);
    auto* const preemptedDll = new (memory) PreemptedDll(this, name);
    m_PreemptedDlls.add(preemptedDll);
    m_ObjectModule->markChanged();
    return preemptedDll;
}

PreemptedDll* Preemption::getPreemptedDll(uint32_t index) const {
    TOMEX_CHECK(index < m_PreemptedDlls.getSize());
    return m_PreemptedDlls[index];
}

uint32_t Preemption::getPreemptedDllIndex(const PreemptedDll* preemptedDll) const {
    TOMEX_CHECK_TEXT(preemptedDll != nullptr, "preemptedDll != NULL");
    TOMEX_CHECK(preemptedDll->getPreemption() == this);
    uint32_t index = 0;
    while (index < m_PreemptedDlls.getSize() && m_PreemptedDlls[index] != preemptedDll) {
        ++index;
    }
    TOMEX_CHECK_TEXT(index < m_PreemptedDlls.getSize(),
                     "m_PreemptedDlls.contains(const_cast<PreemptedDll*>(preemptedDll))");
    return index;
}

PreemptedDll::PreemptedDll(Preemption* preemption, const char* name)
    : m_Name(preemption->getObjectModule()->keepText(name)), m_Preemption(preemption) {
    TOMEX_CHECK_TEXT(name != nullptr, "name != NULL");
}

} // namespace elfext
