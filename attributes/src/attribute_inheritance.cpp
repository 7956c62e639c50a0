// Operations on whole records: inheritance, and its way back.

#include <memory>

#include "attributes/interface/attribute_algebra.h"

namespace attributes {

namespace {

template <typename List>
List& ensure(std::unique_ptr<List>& list) {
    if (list == nullptr) {
        list = std::make_unique<List>();
    }
    return *list;
}

void inheritSlots(BuildAttributes& out, const BuildAttributes& base) {
    for (const TagRow& row : tagRows) {
        if (base.isPresent(row.tag) && !out.isPresent(row.tag)) {
            out.m_StandardTags.copySlot(row.tag, base.m_StandardTags);
            out.derivedStale = true;
        }
    }
}

void inheritLists(BuildAttributes& out, const BuildAttributes& base) {
    if (base.m_CompatibilityTags != nullptr) {
        for (const CompatibilityTag& entry : *base.m_CompatibilityTags) {
            ensure(out.m_CompatibilityTags).add(entry);
        }
    }
    if (base.m_AlsoCompatibilityTags != nullptr) {
        ensure(out.m_AlsoCompatibilityTags).addMissing(*base.m_AlsoCompatibilityTags);
    }
}

template <typename Table>
void inheritTable(std::unique_ptr<Table>& out, const std::unique_ptr<Table>& base) {
    if (base == nullptr) {
        return;
    }
    for (const auto& node : *base) {
        if (!ensure(out).containsKey(node.key)) {
            out->set(node.key, node.value);
        }
    }
}

// What the setters do besides storing, for the tags that came from `base`.
void redoSideEffects(BuildAttributes& out, const BuildAttributes& base,
                     const BuildAttributes& own) {
    const auto isTaken = [&](Tag tag) { return base.isPresent(tag) && !own.isPresent(tag); };
    if (isTaken(Tag_AV_interworking) || isTaken(Tag_AV_mdivide)) {
        out.updateQelCompatibility();
    }
    if (isTaken(Tag_AV_require8) || isTaken(Tag_AV_eba)) {
        out.updateAlignmentNeeded();
    }
}

void addListDifference(BuildAttributes& out, const BuildAttributes& base,
                       const BuildAttributes& own) {
    if (own.m_CompatibilityTags != nullptr) {
        CompatibilityTagList known;
        if (base.m_CompatibilityTags != nullptr) {
            for (const CompatibilityTag& entry : *base.m_CompatibilityTags) {
                known.add(entry);
            }
        }
        for (const CompatibilityTag& entry : *own.m_CompatibilityTags) {
            if (!known.contains(entry)) {
                ensure(out.m_CompatibilityTags).add(entry);
            }
        }
    }
    if (own.m_AlsoCompatibilityTags != nullptr) {
        AlsoCompatibilityTagList known;
        if (base.m_AlsoCompatibilityTags != nullptr) {
            known = *base.m_AlsoCompatibilityTags;
        }
        const uint32_t baseCount = known.getCount();
        known.addMissing(*own.m_AlsoCompatibilityTags);
        for (uint32_t i = baseCount; i < known.getCount(); ++i) {
            ensure(out.m_AlsoCompatibilityTags).add(known[i]);
        }
    }
}

template <typename Table, typename Value>
void addTableDifference(std::unique_ptr<Table>& out, const std::unique_ptr<Table>& base,
                        const std::unique_ptr<Table>& own, const Value& nothing) {
    if (own != nullptr) {
        for (const auto& node : *own) {
            const Value* const inBase = base != nullptr ? base->find(node.key) : nullptr;
            if (inBase == nullptr || !(*inBase == node.value)) {
                ensure(out).set(node.key, node.value);
            }
        }
    }
    if (base != nullptr) {
        for (const auto& node : *base) {
            if (own == nullptr || !own->containsKey(node.key)) {
                ensure(out).set(node.key, nothing);
            }
        }
    }
}

void addSlotDifference(BuildAttributes& out, const BuildAttributes& base,
                       const BuildAttributes& own) {
    for (const TagRow& row : tagRows) {
        if (own.m_StandardTags.hasEqualValue(row.tag, base.m_StandardTags)) {
            continue;
        }
        if (row.form == TagForm_Text) {
            out.m_StandardTags.setText(row.tag, own.getText(row.tag));
        } else {
            out.m_StandardTags.setNumber(row.tag, own.getNumber(row.tag));
        }
    }
}

} // namespace

void overlay(BuildAttributes& out, const BuildAttributes& base, const BuildAttributes& own) {
    if (!base.present || !own.present) {
        out = BuildAttributes(BuildAttributes::EmptyRecord());
        return;
    }
    BuildAttributes result(own);
    inheritSlots(result, base);
    inheritLists(result, base);
    inheritTable(result.otherNumericTags, base.otherNumericTags);
    inheritTable(result.otherStringTags, base.otherStringTags);
    redoSideEffects(result, base, own);
    out = std::move(result);
}

void differenceFromBase(BuildAttributes& out, BuildAttributes& base, BuildAttributes& own) {
    if (base.derivedStale) {
        base.rebuildFullAttr();
    }
    if (own.derivedStale) {
        own.rebuildFullAttr();
    }
    if (!base.present || !own.present) {
        out = BuildAttributes(BuildAttributes::EmptyRecord());
        return;
    }
    BuildAttributes result;
    difference(result.fullAttr, own.fullAttr, base.fullAttr);
    addSlotDifference(result, base, own);
    addListDifference(result, base, own);
    addTableDifference(result.otherNumericTags, base.otherNumericTags, own.otherNumericTags,
                       uint32_t{0});
    addTableDifference(result.otherStringTags, base.otherStringTags, own.otherStringTags,
                       OwnedText(""));
    out = std::move(result);
}

} // namespace attributes
