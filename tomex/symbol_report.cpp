#include "tomex/symbol_report.h"

#include <cstring>

#include "alloclib/interface/default_region.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/decoration.h"
#include "tomex/command_report.h"
#include "tomex/edit_actions.h"

namespace tomex {
namespace {

// Names with their decorations, one after the other in one block of the global region.
class DecoratedNames {
public:
    // The name of a symbol that has attributes, good until the next one is asked for. The
    // decoration is made of the attributes, whatever stands in the file.
    const char* nameOf(const arlib::Symbol& symbol) {
        const size_t nameLength = std::strlen(symbol.getName());
        const size_t start = nameLength + attributes::SymbolMarkerLength;
        const uint64_t length =
            attributes::printDecoration(symbol.getBuildAttributes(), nullptr, 0);
        require(start + length + 1);
        std::memcpy(m_Text, symbol.getName(), nameLength);
        std::memcpy(m_Text + nameLength, attributes::SymbolMarkerText,
                    attributes::SymbolMarkerLength);
        attributes::printDecoration(symbol.getBuildAttributes(), m_Text + start, length + 1);
        return m_Text;
    }

private:
    void require(uint64_t size) {
        if (m_Text == nullptr || size > m_Size) {
            m_Size = size * 2;
            m_Text = static_cast<char*>(alloclib::allocate(alloclib::defaultRegion(), m_Size, 1));
        }
    }

    char* m_Text = nullptr;
    uint64_t m_Size = 0;
};

} // namespace

void reportSymbols(arlib::Archive& archive, const ArchiveReadStatus& status) {
    if (status.missing) {
        reportArchiveNotFound(archive, status);
        return;
    }
    archive.updateAuxiliaryMembers();
    if (archive.getSymbolTable() == nullptr) {
        messages::report(messages::Severity_Remark, messages::MessageKey_NoSymbolTable,
                         archive.getFileName());
        return;
    }
    DecoratedNames decorated;
    for (const arlib::Symbol* symbol : archive.getSymbols()) {
        const char* name =
            symbol->hasBuildAttributes() ? decorated.nameOf(*symbol) : symbol->getName();
        const arlib::ArchiveMember* member = symbol->getDefiningMember();
        reportPlain(messages::MessageKey_ListSymbol, name, member->getName(), member->getOffset());
    }
}

} // namespace tomex
