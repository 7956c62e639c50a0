// The one entry of a dynamic section that may hold a place in the file.
#pragma once

namespace elfext {

class ObjectModule;

// True if files of this kind tell the preemption map by its place in the file, as in the system
// profile of the 32-bit processor; elsewhere by its address.
bool isPreemptionMapFileOffset(const ObjectModule& objectModule);

// Enters where the map has come to lie, once everything has its place.
void settlePreemptionMapOffset(ObjectModule& objectModule);

} // namespace elfext
