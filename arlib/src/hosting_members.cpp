// Asks the members of an archive for their names, all with one and the same list.
#include "arlib/src/hosting_members.h"

#include <memory>
#include <string>
#include <string_view>

#include "arlib/interface/archive.h"
#include "arlib/src/minor_variant_groups.h"

namespace arlib {

void HostingMembers::add(ArchiveMember* member, const SymbolNameList& list, uint64_t fingerprint) {
    const MarkerTexts& markers = list.getMarkers();
    const SymbolNames names = list.getNames();
    auto* kept = static_cast<std::string_view*>(
        alloclib::allocate(*m_Members.getRegion(), names.size_bytes(), alignof(std::string_view)));
    std::uninitialized_copy(names.begin(), names.end(), kept);
    m_Members.add(
        {member, {kept, names.size()}, fingerprint, markers.getFirst(), markers.isKnown()});
}

void HostingMembers::collect(Archive& archive) {
    SymbolNameList list(m_Members.getRegion());
    std::string failure;
    for (ArchiveMember* member : archive.getMembers()) {
        if (member->isAuxiliary() || !member->getType()->isObjectModule()) {
            continue;
        }
        const auto* type = static_cast<const ObjectModuleArchiveMemberType*>(member->getType());
        list.clear();
        failure.clear();
        if (!type->getSymbols(*member, list, failure)) {
            ErrorHandler* handler = archive.getErrorHandler();
            if (handler == nullptr ||
                !handler->memberSymbolsUnreadable(&archive, member, failure.c_str())) {
                return;
            }
        } else if (list.getSize() != 0) {
            add(member, list, symbolFingerprint(list.getNames()));
        }
    }
}

} // namespace arlib
