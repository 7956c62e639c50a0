// Which tables of symbols and records the model needs: an update makes those that are missing, and
// takes those that it has made away again when they are not needed any more.
#pragma once

namespace elfext {

class ObjectModule;

// For symbols, groups, and static relocations; the last by the tables that they stand in.
bool needsStaticSymbols(ObjectModule& objectModule);
// For symbols and dynamic relocations.
bool needsDynamicSymbols(ObjectModule& objectModule);
// For symbols and what the system that loads the file is told.
bool needsDynamicSection(ObjectModule& objectModule);

} // namespace elfext
