#include "arlib/src/minor_variants.h"

#include <cstring>
#include <new>

#include "arlib/interface/archive.h"
#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/decoration.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/stringlett.h"

namespace arlib {
namespace {

using attributes::FullAttr;
using Members = elfext::fast_array<ArchiveMember*>;

MemberGroup groupOf(const Members& members) {
    return {members.begin(), members.end()};
}

// One group on its way into the table.
class GroupPass {
public:
    GroupPass(Archive& archive, std::span<const MinorVariant> group, SymbolOutput& output);

    void findCommonAttributes();
    bool checkLibrary();
    bool emitVariants();
    bool checkBases();
    bool checkSuffixes();

private:
    bool emitVariant(const MinorVariant& variant);
    bool mergeLibrary(const MinorVariant& variant, FullAttr& own);
    bool emitDecorated(const MinorVariant& variant, const FullAttr& own);
    bool isExpressible(const char* decoration, const FullAttr& own) const;
    const char* suffixOf(const FullAttr& difference);
    void noteSuffix(const char* suffix, ArchiveMember* member);

    Archive& m_Archive;
    ErrorHandler* m_Handler;
    std::span<const MinorVariant> m_Group;
    SymbolOutput& m_Output;
    alloclib::Region* m_Region;
    Members m_Members; // all of the group, as handlers see it
    Members m_Bases;
    elfext::fast_hash_table<elfext::Stringlett, Members*> m_Suffixes;
    FullAttr m_Common;
};

GroupPass::GroupPass(Archive& archive, std::span<const MinorVariant> group, SymbolOutput& output)
    : m_Archive(archive), m_Handler(archive.getErrorHandler()), m_Group(group), m_Output(output),
      m_Region(output.region()), m_Members(m_Region), m_Bases(m_Region), m_Suffixes(m_Region) {
    m_Members.reserve(static_cast<uint32_t>(group.size()));
    for (const MinorVariant& variant : group) {
        m_Members.add(variant.member);
    }
}

void GroupPass::findCommonAttributes() {
    m_Common = m_Group[0].attributes;
    for (const MinorVariant& variant : m_Group.subspan(1)) {
        attributes::common(m_Common, m_Common, variant.attributes);
    }
    attributes::addDoublesDefault(m_Common);
}

// What all members have must fit what the library promises. It is not changed by it, required:
// linkers compare variants with what they have in common, not with a library's name.
bool GroupPass::checkLibrary() {
    if (!m_Archive.hasLibraryAttributes()) {
        return true;
    }
    FullAttr merged;
    if (attributes::combine(merged, m_Common, m_Archive.getLibraryAttributes())) {
        return true;
    }
    return m_Handler != nullptr &&
           m_Handler->commonAttributesClash(&m_Archive, groupOf(m_Members), m_Common);
}

bool GroupPass::emitVariants() {
    for (const MinorVariant& variant : m_Group) {
        if (!emitVariant(variant)) {
            return false;
        }
    }
    return true;
}

bool GroupPass::emitVariant(const MinorVariant& variant) {
    FullAttr own = variant.attributes;
    attributes::addDoublesDefault(own);
    if (!mergeLibrary(variant, own)) {
        return false;
    }
    if (!attributes::sameVariant(own, m_Common)) {
        return emitDecorated(variant, own);
    }
    m_Output.add(variant.names, variant.member);
    m_Bases.add(variant.member);
    return true;
}

// What the library promises holds for each member, whether or not the member states it.
bool GroupPass::mergeLibrary(const MinorVariant& variant, FullAttr& own) {
    if (!m_Archive.hasLibraryAttributes() ||
        attributes::combine(own, own, m_Archive.getLibraryAttributes())) {
        return true;
    }
    return m_Handler != nullptr &&
           m_Handler->memberAttributesClash(&m_Archive, variant.member, own);
}

bool GroupPass::emitDecorated(const MinorVariant& variant, const FullAttr& own) {
    FullAttr beyond;
    attributes::difference(beyond, own, m_Common);
    const char* suffix = suffixOf(beyond);
    noteSuffix(suffix, variant.member);
    if (!isExpressible(suffix + attributes::SymbolMarkerLength, own)) {
        if (m_Handler == nullptr ||
            !m_Handler->attributesNotDecorable(&m_Archive, variant.member, groupOf(m_Members))) {
            return false;
        }
    }
    m_Output.add(variant.names, variant.member, suffix);
    return true;
}

// Whether the decoration, read back and added to what all members have, gives the member's own
// attributes again. Not every attribute has a token.
bool GroupPass::isExpressible(const char* decoration, const FullAttr& own) const {
    FullAttr again;
    attributes::parseDecoration(again, decoration);
    attributes::combine(again, again, m_Common);
    return attributes::sameVariant(again, own);
}

const char* GroupPass::suffixOf(const FullAttr& difference) {
    const uint64_t length = attributes::printDecoration(difference, nullptr, 0);
    const uint64_t size = attributes::SymbolMarkerLength + length + 1;
    auto* suffix = static_cast<char*>(alloclib::allocate(*m_Region, size, 1));
    std::memcpy(suffix, attributes::SymbolMarkerText, attributes::SymbolMarkerLength);
    attributes::printDecoration(difference, suffix + attributes::SymbolMarkerLength, length + 1);
    return suffix;
}

void GroupPass::noteSuffix(const char* suffix, ArchiveMember* member) {
    const elfext::Stringlett key(suffix);
    Members* const* known = m_Suffixes.find(key);
    Members* members = known != nullptr ? *known : nullptr;
    if (members == nullptr) {
        void* memory = alloclib::allocate(*m_Region, sizeof(Members), alignof(Members));
        members = new (memory) Members(m_Region);
        m_Suffixes.set(key, members);
    }
    members->add(member);
}

bool GroupPass::checkBases() {
    if (m_Bases.getSize() == 1) {
        return true;
    }
    if (m_Handler == nullptr) {
        return false;
    }
    return m_Bases.getSize() == 0 ? m_Handler->noBaseVariant(&m_Archive, groupOf(m_Members))
                                  : m_Handler->multipleBaseVariants(&m_Archive, groupOf(m_Bases));
}

// In the order of the table, required: users' build logs are compared line by line.
bool GroupPass::checkSuffixes() {
    for (const auto& [suffix, members, next] : m_Suffixes) {
        if (members->getSize() == 1) {
            continue;
        }
        if (m_Handler == nullptr ||
            !m_Handler->identicalVariants(&m_Archive, suffix.getString(), groupOf(*members))) {
            return false;
        }
    }
    return true;
}

} // namespace

bool processMinorVariantGroup(Archive& archive, std::span<const MinorVariant> group,
                              SymbolOutput& output) {
    GroupPass pass(archive, group, output);
    pass.findCommonAttributes();
    return pass.checkLibrary() && pass.emitVariants() && pass.checkBases() && pass.checkSuffixes();
}

} // namespace arlib
