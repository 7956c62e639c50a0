// Destruction of objects that live in a region.
//
// A region releases memory without looking at what lies in it. An object there whose destructor
// must run, because it holds something outside of the region, is registered here by whoever makes
// it; the manager destroys what is registered, last first, before the region goes.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region.h"
#include "platform/interface/internal_check.h"

#include <memory>
#include <new>

namespace elfext {

class DestructionManager {
public:
    DestructionManager() = default;
    DestructionManager(const DestructionManager&) = delete;
    DestructionManager& operator=(const DestructionManager&) = delete;

    // Runs the manager.
    ~DestructionManager() { run(); }

    // Registers `object`, which lies in `region`; neither is null. The object must not be
    // destroyed by anyone else.
    template <typename Object>
    void add(alloclib::Region* region, Object* object) {
        TOMEX_CHECK_TEXT(region != nullptr, "region != NULL");
        TOMEX_CHECK_TEXT(object != nullptr, "object != NULL");
        auto* const record = new (std::nothrow) RecordOf<Object>(region, object);
        if (record == nullptr) {
            alloclib::endOutOfMemory(sizeof(RecordOf<Object>));
        }
        record->m_Next = m_Top;
        m_Top = record;
    }

    // Destroys all registered objects, last registered first. A destructor may register more.
    void run();

    // Destroys those that lie in `region`, last registered first; the others wait.
    void run(const alloclib::Region* region);

    bool isEmpty() const { return m_Top == nullptr; }

private:
    struct Record {
        Record(alloclib::Region* owningRegion, void* destroyed)
            : m_Region(owningRegion), m_Object(destroyed) {}
        Record(const Record&) = delete;
        Record& operator=(const Record&) = delete;
        virtual ~Record() = default;
        virtual void destroyObject() = 0;

        alloclib::Region* m_Region;
        void* m_Object;
        Record* m_Next = nullptr;
    };

    template <typename Object>
    struct RecordOf final : Record {
        using Record::Record;
        void destroyObject() override { std::destroy_at(static_cast<Object*>(this->m_Object)); }
    };

    Record* m_Top = nullptr;
};

} // namespace elfext
