// Resolves what sections say of each other: the section that `sh_link` names, which must be of a
// certain type for tables that the library understands, and what `sh_info` adds to it.
//
// A section whose reference is bad, but not so bad that the read ends, is marked, and all later
// passes leave it out.
#include "elfext/src/reader_passes.h"

#include "elfext/src/read_state.h"

#include <array>

namespace elfext {
namespace {

class LinksPass;

using IndexReport = bool (ErrorHandler::*)(ObjectModule*, uint32_t, uint32_t, uint32_t);

// What a type demands of its link.
struct LinkRule {
    uint32_t type;
    std::array<uint32_t, 2> wanted; // types that the linked section may have
    bool mayBeZero;                 // 0 means that there is none
    bool mayGoOn;                   // the section is left out then
    IndexReport reportIndex;
    IndexReport reportType;
    // What there is to do with a good link.
    bool (LinksPass::*resolve)(uint32_t section, uint32_t link);
};

class LinksPass {
public:
    explicit LinksPass(ReadState& state) : m_State(state), m_Module(state.m_Module) {}

    bool run() {
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const LinkRule* const rule = findRule(m_State.m_SectionHeaders[i].sh_type);
            if (rule != nullptr && !followRule(*rule, i)) {
                return false;
            }
        }
        nameInfoSections();
        return setOtherLinks();
    }

private:
    static const LinkRule* findRule(uint32_t type);

    const Elf64_Shdr& header(uint32_t section) const { return m_State.m_SectionHeaders[section]; }

    template <typename Kind>
    Kind* sectionAs(uint32_t section) const {
        return static_cast<Kind*>(m_Module.getSection(section));
    }

    // After a problem that the read may go on past: asks, and marks the section.
    template <typename Operation, typename... Arguments>
    bool markBad(uint32_t section, Operation operation, Arguments... arguments) {
        m_State.m_IsBadSection[section] = true;
        return askHandler(m_Module, operation, arguments...);
    }

    bool reject(const LinkRule& rule, IndexReport operation, uint32_t section, uint32_t link,
                uint32_t detail) {
        return rule.mayGoOn ? markBad(section, operation, section, link, detail)
                            : reportFatal(m_Module, operation, section, link, detail);
    }

    bool followRule(const LinkRule& rule, uint32_t section) {
        const uint32_t link = header(section).sh_link;
        if (link == 0 && rule.mayBeZero) {
            return true;
        }
        if (link >= m_State.sectionCount()) {
            return reject(rule, rule.reportIndex, section, link, m_State.lastSection());
        }
        const uint32_t type = header(link).sh_type;
        if (type != rule.wanted[0] && type != rule.wanted[1]) {
            return reject(rule, rule.reportType, section, link, type);
        }
        m_Module.getSection(section)->setLink(m_Module.getSection(link));
        return (this->*rule.resolve)(section, link);
    }

    bool resolveSymbolTable(uint32_t section, uint32_t link) {
        auto* const strings = sectionAs<StringTableSection>(link);
        if (header(section).sh_type == SHT_DYNSYM) {
            strings->setServesDynamicSymbols(true);
        } else {
            strings->setServesSymbols(true);
        }
        return true;
    }

    bool resolveRelocations(uint32_t section, uint32_t link) {
        const uint32_t target = header(section).sh_info;
        if (target >= m_State.sectionCount()) {
            return markBad(section, &ErrorHandler::relocationTargetIndexBad, section, target,
                           m_State.lastSection());
        }
        sectionAs<RelocationSection>(section)->setTarget(m_Module.getSection(target),
                                                         header(link).sh_type == SHT_DYNSYM);
        return true;
    }

    bool resolveHash(uint32_t section, uint32_t link) {
        sectionAs<SymbolTableSection>(link)->setHashSection(sectionAs<HashSection>(section));
        return true;
    }

    bool resolveDynamicStrings(uint32_t /*section*/, uint32_t link) {
        sectionAs<StringTableSection>(link)->setServesDynamicSection(true);
        return true;
    }

    bool resolveGroup(uint32_t section, uint32_t link) {
        const uint32_t symbol = header(section).sh_info;
        if (symbol >= m_State.symbolCount(link)) {
            return markBad(section, &ErrorHandler::groupSymbolIndexBad, section, symbol, link,
                           m_State.symbolCount(link));
        }
        sectionAs<GroupSection>(section)->setSignatureSymbolIndex(symbol);
        return true;
    }

    bool resolveShndx(uint32_t section, uint32_t link) {
        auto* const table = sectionAs<SymbolTableSection>(link);
        if (table->getShndxSection() != nullptr) {
            return markBad(section, &ErrorHandler::shndxDuplicate,
                           table->getShndxSection()->getIndex(), section, link);
        }
        const uint64_t entryCount = header(section).sh_size / m_State.sizes().word;
        if (entryCount != m_State.symbolCount(link)) {
            return reportFatal(m_Module, &ErrorHandler::shndxSizeMismatch, section, entryCount,
                               link, m_State.symbolCount(link));
        }
        table->setShndxSection(sectionAs<ShndxSection>(section));
        return true;
    }

    // Of sections that the library understands it knows better what `sh_info` means. A number that
    // no section has stays a number.
    void nameInfoSections() {
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const uint32_t info = header(i).sh_info;
            Section* const section = m_Module.getSection(i);
            if ((header(i).sh_flags & SHF_INFO_LINK) != 0 && !section->isAuxiliary() && info != 0 &&
                info < m_State.sectionCount()) {
                section->setInfoSection(m_Module.getSection(info));
            }
        }
    }

    // Types without a rule, and what the rules have left without a link.
    bool setOtherLinks() {
        for (uint32_t i = 0; i < m_State.sectionCount(); ++i) {
            const uint32_t link = header(i).sh_link;
            Section* const section = m_Module.getSection(i);
            if (link == 0 || section->getLink() != nullptr) {
                continue;
            }
            if (link < m_State.sectionCount()) {
                section->setLink(m_Module.getSection(link));
            } else if (!markBad(i, &ErrorHandler::linkIndexBad, i, link, m_State.lastSection())) {
                return false;
            }
        }
        return true;
    }

    static const std::array<LinkRule, 9> rules;

    ReadState& m_State;
    ObjectModule& m_Module;
};

const std::array<LinkRule, 9> LinksPass::rules = {{
    {SHT_SYMTAB,
     {SHT_STRTAB, SHT_STRTAB},
     false,
     false,
     &ErrorHandler::symbolTableLinkIndexBad,
     &ErrorHandler::symbolTableLinkTypeBad,
     &LinksPass::resolveSymbolTable},
    {SHT_DYNSYM,
     {SHT_STRTAB, SHT_STRTAB},
     false,
     false,
     &ErrorHandler::symbolTableLinkIndexBad,
     &ErrorHandler::symbolTableLinkTypeBad,
     &LinksPass::resolveSymbolTable},
    {SHT_REL,
     {SHT_SYMTAB, SHT_DYNSYM},
     false,
     false,
     &ErrorHandler::relocationLinkIndexBad,
     &ErrorHandler::relocationLinkTypeBad,
     &LinksPass::resolveRelocations},
    {SHT_RELA,
     {SHT_SYMTAB, SHT_DYNSYM},
     false,
     false,
     &ErrorHandler::relocationLinkIndexBad,
     &ErrorHandler::relocationLinkTypeBad,
     &LinksPass::resolveRelocations},
    {SHT_HASH,
     {SHT_DYNSYM, SHT_DYNSYM},
     false,
     false,
     &ErrorHandler::hashLinkIndexBad,
     &ErrorHandler::hashLinkTypeBad,
     &LinksPass::resolveHash},
    {SHT_DYNAMIC,
     {SHT_STRTAB, SHT_STRTAB},
     true,
     false,
     &ErrorHandler::dynamicLinkIndexBad,
     &ErrorHandler::dynamicLinkTypeBad,
     &LinksPass::resolveDynamicStrings},
    {SHT_GROUP,
     {SHT_SYMTAB, SHT_SYMTAB},
     false,
     true,
     &ErrorHandler::groupLinkIndexBad,
     &ErrorHandler::groupLinkTypeBad,
     &LinksPass::resolveGroup},
    {SHT_SYMTAB_SHNDX,
     {SHT_SYMTAB, SHT_DYNSYM},
     false,
     false,
     &ErrorHandler::shndxLinkIndexBad,
     &ErrorHandler::shndxLinkTypeBad,
     &LinksPass::resolveShndx},
    {SHT_QEL_PREEMPTMAP,
     {SHT_STRTAB, SHT_STRTAB},
     true,
     false,
     &ErrorHandler::preemptionMapLinkIndexBad,
     &ErrorHandler::preemptionMapLinkTypeBad,
     &LinksPass::resolveDynamicStrings},
}};

const LinkRule* LinksPass::findRule(uint32_t type) {
    for (const LinkRule& rule : rules) {
        if (rule.type == type) {
            return &rule;
        }
    }
    return nullptr;
}

} // namespace

bool readLinks(ReadState& state) {
    return LinksPass(state).run();
}

} // namespace elfext
