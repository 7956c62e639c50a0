// What a dynamic section asks of the system: libraries, where to look for them, and which of
// their symbols are taken over by others.
//
// All of these lie in the object region of their module, with their texts.
#pragma once

#include "elfext/interface/fast_array.h"

#include <cstdint>

namespace elfext {

class ObjectModule;
class PreemptedDll;

// A library that must be loaded with this file (DT_NEEDED).
class NeededLibrary {
public:
    // `name` is copied.
    NeededLibrary(ObjectModule* objectModule, const char* name);

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    const char* getName() const { return m_Name; }

private:
    const char* m_Name;
    ObjectModule* m_ObjectModule;
};

// A list of folders where libraries are looked for.
class LibrarySearchPath {
public:
    // `path` is copied and not null; `tag` is DT_RPATH or DT_RUNPATH.
    LibrarySearchPath(ObjectModule* objectModule, const char* path, uint32_t tag);

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    const char* getPath() const { return m_Path; }
    uint32_t getTag() const { return m_Tag; }

private:
    const char* m_Path;
    uint32_t m_Tag;
    ObjectModule* m_ObjectModule;
};

// A symbol that one library defines in place of others.
class Preemption {
public:
    // Neither text is null; both are copied.
    Preemption(ObjectModule* objectModule, const char* symbolName, const char* preemptingDllName);
    Preemption(const Preemption&) = delete;
    Preemption& operator=(const Preemption&) = delete;

    ObjectModule* getObjectModule() const { return m_ObjectModule; }
    const char* getSymbolName() const { return m_SymbolName; }
    const char* getPreemptingDllName() const { return m_PreemptingDllName; }

    // The libraries whose definitions are passed over.
    PreemptedDll* addPreemptedDll(const char* name);
    uint32_t getPreemptedDllCount() const { return m_PreemptedDlls.getSize(); }
    PreemptedDll* getPreemptedDll(uint32_t index) const;
    uint32_t getPreemptedDllIndex(const PreemptedDll* preemptedDll) const;
    // Makes room for `count` libraries in all.
    void reservePreemptedDlls(uint32_t count) { m_PreemptedDlls.reserve(count); }

private:
    friend class Pruner;

    const char* m_SymbolName;
    const char* m_PreemptingDllName;
    ObjectModule* m_ObjectModule;
    fast_array<PreemptedDll*> m_PreemptedDlls;
};

class PreemptedDll {
public:
    // `name` is copied.
    PreemptedDll(Preemption* preemption, const char* name);

    Preemption* getPreemption() const { return m_Preemption; }
    const char* getName() const { return m_Name; }

private:
    const char* m_Name;
    Preemption* m_Preemption;
};

} // namespace elfext
