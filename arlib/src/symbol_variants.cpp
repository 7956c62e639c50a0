// Which of a library's variants of a symbol a linker takes.
//
// A variant is usable if it asks for nothing that the requester, and what all variants have in
// common, do not have. Of the usable ones the most specific wins: the one that contains all that
// came before it was found and has something beyond it.

#include <vector>

#include "arlib/interface/archive.h"
#include "arlib/interface/symbol.h"
#include "attributes/interface/attribute_algebra.h"
#include "attributes/interface/decoration.h"

namespace arlib {
namespace {

using attributes::CompareMode_Equal;
using attributes::CompareMode_Subset;
using attributes::CompareMode_Superset;
using attributes::FullAttr;

// How two sets compare in all that variants are told apart by: 0 if one of its parts does not hold
// what the mode asks for, with bit 0 set if all are equal.
uint32_t compareVariants(const FullAttr& a, uint32_t mode, const FullAttr& b) {
    return attributes::compareIsa(a, mode, b) & attributes::compareOptions(a, mode, b) &
           attributes::compareAccess(a, mode, b);
}

bool isWithin(const FullAttr& a, const FullAttr& b) {
    return compareVariants(a, CompareMode_Subset | CompareMode_Equal, b) != 0;
}

bool isBeyond(const FullAttr& a, const FullAttr& b) {
    const uint32_t sense = compareVariants(a, CompareMode_Superset | CompareMode_Equal, b);
    return sense != 0 && (sense & CompareMode_Equal) == 0;
}

// The symbols of one name with their attributes, those of a symbol without any being what no text
// says.
class Choice {
public:
    explicit Choice(const SymbolList& symbols);

    bool hasAttributes() const;
    // The attributes of the best variant for the requester, or null if none is usable.
    const FullAttr* findBest(const FullAttr& requester) const;

    bool takeEqual(const FullAttr& best, SymbolList& result) const;
    bool takePlain(SymbolList& result) const;

private:
    template <typename Condition>
    bool take(SymbolList& result, Condition condition) const;
    FullAttr usableFor(const FullAttr& requester) const;

    struct Row {
        Symbol* symbol;
        FullAttr attributes;
    };
    std::vector<Row> m_Rows;
};

Choice::Choice(const SymbolList& symbols) {
    FullAttr none;
    attributes::parseDecoration(none, "");
    m_Rows.reserve(symbols.getSize());
    for (uint32_t i = 0; i < symbols.getSize(); ++i) {
        Symbol* symbol = symbols.get(i);
        m_Rows.push_back(
            {symbol, symbol->hasBuildAttributes() ? symbol->getBuildAttributes() : none});
    }
}

bool Choice::hasAttributes() const {
    for (const Row& row : m_Rows) {
        if (row.symbol->hasBuildAttributes()) {
            return true;
        }
    }
    return false;
}

// What a variant may ask for: what all have, and what the requester has. That the two may clash is
// the linker's to find out.
FullAttr Choice::usableFor(const FullAttr& requester) const {
    FullAttr usable = m_Rows[0].attributes;
    for (const Row& row : m_Rows) {
        attributes::common(usable, usable, row.attributes);
    }
    attributes::combine(usable, usable, requester);
    return usable;
}

const FullAttr* Choice::findBest(const FullAttr& requester) const {
    const FullAttr usable = usableFor(requester);
    const FullAttr* best = nullptr;
    for (const Row& row : m_Rows) {
        if (isWithin(row.attributes, usable) &&
            (best == nullptr || isBeyond(row.attributes, *best))) {
            best = &row.attributes;
        }
    }
    return best;
}

template <typename Condition>
bool Choice::take(SymbolList& result, Condition condition) const {
    std::vector<Symbol*> taken;
    for (const Row& row : m_Rows) {
        if (condition(row)) {
            taken.push_back(row.symbol);
        }
    }
    result.setSize(static_cast<uint32_t>(taken.size()));
    for (uint32_t i = 0; i < taken.size(); ++i) {
        result.set(i, taken[i]);
    }
    return !taken.empty();
}

bool Choice::takeEqual(const FullAttr& best, SymbolList& result) const {
    return take(result,
                [&best](const Row& row) { return attributes::sameVariant(row.attributes, best); });
}

bool Choice::takePlain(SymbolList& result) const {
    return take(result, [](const Row& row) { return !row.symbol->hasBuildAttributes(); });
}

} // namespace

bool Archive::selectSymbolVariants(const char* name, const attributes::FullAttr& requester,
                                   SymbolList& result) {
    SymbolList found;
    findSymbols(name, found);
    const Choice choice(found);
    const FullAttr* best = choice.hasAttributes() ? choice.findBest(requester) : nullptr;
    return best != nullptr ? choice.takeEqual(*best, result) : choice.takePlain(result);
}

} // namespace arlib
