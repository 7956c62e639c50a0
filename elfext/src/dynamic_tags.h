// What the reader and the writer of a dynamic section both know of its tags.
#pragma once

#include "elfext/interface/elf_constants.h"
#include "elfext/interface/object_module.h"

#include <cstdint>

namespace elfext {

// Tags whose value the module keeps as it stands.
struct ValueTag {
    uint32_t tag;
    const ObjectModule::DynamicValue& (ObjectModule::*get)() const;
    void (ObjectModule::*set)(ObjectModule::DynamicValue value);
};
inline constexpr ValueTag valueTags[] = {
    {DT_INIT, &ObjectModule::getInit, &ObjectModule::setInit},
    {DT_FINI, &ObjectModule::getFini, &ObjectModule::setFini},
    {DT_INIT_ARRAY, &ObjectModule::getInitArray, &ObjectModule::setInitArray},
    {DT_INIT_ARRAYSZ, &ObjectModule::getInitArraySize, &ObjectModule::setInitArraySize},
    {DT_FINI_ARRAY, &ObjectModule::getFiniArray, &ObjectModule::setFiniArray},
    {DT_FINI_ARRAYSZ, &ObjectModule::getFiniArraySize, &ObjectModule::setFiniArraySize},
    {DT_PREINIT_ARRAY, &ObjectModule::getPreinitArray, &ObjectModule::setPreinitArray},
    {DT_PREINIT_ARRAYSZ, &ObjectModule::getPreinitArraySize, &ObjectModule::setPreinitArraySize},
};

// Tags that stand for a bit of DT_FLAGS.
struct FlagTag {
    uint32_t tag;
    uint32_t flag;
};
inline constexpr FlagTag flagTags[] = {
    {DT_SYMBOLIC, DF_SYMBOLIC},
    {DT_TEXTREL, DF_TEXTREL},
    {DT_BIND_NOW, DF_BIND_NOW},
};

} // namespace elfext
