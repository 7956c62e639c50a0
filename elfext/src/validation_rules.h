// The rules that validation checks, each a function of the module. A rule reports what breaks it,
// and is false as soon as the error handler says that the validation is to end.
#pragma once

#include "alloclib/interface/region.h"
#include "elfext/src/file_layout.h"
#include "elfext/src/reporting.h"

namespace elfext {

using ValidationRule = bool (*)(ObjectModule& objectModule, alloclib::Region* region);

// --- What tables say of each other, and whether they have the form that they should have.
bool checkEntrySizes(ObjectModule& objectModule, alloclib::Region* region);
bool checkSectionLengths(ObjectModule& objectModule, alloclib::Region* region);
bool checkPltRelocations(ObjectModule& objectModule, alloclib::Region* region);
bool checkDoubleRelocations(ObjectModule& objectModule, alloclib::Region* region);

// --- Where segments and sections lie.
bool checkSegmentOrder(ObjectModule& objectModule, alloclib::Region* region);
bool checkSectionOverlap(ObjectModule& objectModule, alloclib::Region* region);
bool checkSingleSegments(ObjectModule& objectModule, alloclib::Region* region);
bool checkLoadableSegments(ObjectModule& objectModule, alloclib::Region* region);
bool checkSegmentOverlap(ObjectModule& objectModule, alloclib::Region* region);
bool checkSegmentCongruence(ObjectModule& objectModule, alloclib::Region* region);
bool checkSectionAddresses(ObjectModule& objectModule, alloclib::Region* region);
bool checkMappedHeaders(ObjectModule& objectModule, alloclib::Region* region);
bool checkLoadableSections(ObjectModule& objectModule, alloclib::Region* region);
bool checkOtherSections(ObjectModule& objectModule, alloclib::Region* region);

} // namespace elfext
