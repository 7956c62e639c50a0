// The creators of sections: what each makes, and where it is listed.
#include "tests/elfext/model_fixtures.h"

#include <functional>

namespace elfext::test {
namespace {

using SectionCreationTest = ModelTest;
using SectionCreationDeathTest = ModelTest;

constexpr const char* creation = "elfext/src/object_module_creation";
constexpr const char* special = "elfext/src/special_sections";

using List = const ObjectModule::SectionArray& (ObjectModule::*)() const;

struct CreatorRow {
    uint32_t type;
    const char* name; // the creator's own, or null
    std::function<Section*(ObjectModule&)> create;
    List list;
};

const CreatorRow creatorRows[] = {
    {2, nullptr, [](auto& m) { return m.createSymbolTableSection(2); },
     &ObjectModule::getSymtabSections},
    {11, nullptr, [](auto& m) { return m.createSymbolTableSection(11); },
     &ObjectModule::getDynsymSections},
    {3, ".strtab", [](auto& m) { return m.createStringTableSection(".strtab"); },
     &ObjectModule::getStringTableSections},
    {9, ".rel.text", [](auto& m) { return m.createRelocationSection(".rel.text", 9, 0); }, nullptr},
    {4, ".rela.text", [](auto& m) { return m.createRelocationSection(".rela.text", 4, 0); },
     nullptr},
    {17, ".group", [](auto& m) { return m.createGroupSection(".group"); },
     &ObjectModule::getGroupSections},
    {18, ".symtab_shndx", [](auto& m) { return m.createShndxSection(); },
     &ObjectModule::getShndxSections},
    {5, ".hash", [](auto& m) { return m.createHashSection(); }, &ObjectModule::getHashSections},
    {6, ".dynamic", [](auto& m) { return m.createDynamicSection(); },
     &ObjectModule::getDynamicSections},
    {0x6FFFFFFD, ".version_d", [](auto& m) { return m.createVerdefSection(); },
     &ObjectModule::getVerdefSections},
    {0x6FFFFFFE, ".version_r", [](auto& m) { return m.createVerneedSection(); },
     &ObjectModule::getVerneedSections},
    {0x6FFFFFFF, ".version", [](auto& m) { return m.createVersymSection(); },
     &ObjectModule::getVersymSections},
    {0x70000002, ".QEL.preemptmap", [](auto& m) { return m.createPreemptionMapSection(); },
     &ObjectModule::getPreemptionMapSections},
    {0x70000003, ".QEL.attributes", [](auto& m) { return m.createBuildAttributesSection(); },
     &ObjectModule::getBuildAttributesSections},
    {0x70000004, ".QEL.debug_overlay", [](auto& m) { return m.createDebugOverlaySection(); },
     &ObjectModule::getDebugOverlaySections},
};

TEST_F(SectionCreationTest, SpecialSectionsAreAuxiliaryAndNotRelocatable) {
    for (const CreatorRow& row : creatorRows) {
        Section* const section = row.create(module());
        EXPECT_EQ(section->getType(), row.type);
        EXPECT_TRUE(section->isAuxiliary()) << row.type;
        EXPECT_FALSE(section->isRelocatable()) << row.type;
        EXPECT_FALSE(section->isWritable()) << row.type;
        EXPECT_STREQ(section->getName(), row.name);
        EXPECT_EQ(section->getFlags(), 0U);
        EXPECT_EQ(section->getObjectModule(), &module());
        EXPECT_EQ(module().getSection(section->getIndex()), section);
    }
    EXPECT_EQ(module().getSectionCount(), std::size(creatorRows));
}

TEST_F(SectionCreationTest, EachKindHasItsList) {
    for (const CreatorRow& row : creatorRows) {
        const std::vector<Section*> made = {row.create(module()), row.create(module())};
        if (row.list != nullptr) {
            EXPECT_EQ(elementsOf((module().*row.list)()), made) << row.type;
        }
    }
}

TEST_F(SectionCreationTest, AReaderGivesNoName) {
    EXPECT_EQ(module().createHashSection(nullptr)->getName(), nullptr);
    EXPECT_EQ(module().createStringTableSection(nullptr)->getName(), nullptr);
}

TEST_F(SectionCreationTest, TheNullSectionIsAuxiliaryAndRelocatable) {
    const NullSection* const section = module().createNullSection(7);
    EXPECT_EQ(section->getType(), 0U);
    EXPECT_TRUE(section->isAuxiliary());
    EXPECT_TRUE(section->isRelocatable());
    EXPECT_EQ(section->getName(), nullptr);
    EXPECT_EQ(section->getFlags(), 7U);
}

TEST_F(SectionCreationTest, GeneralSectionsAreRelocatableUnlessTheyAreNotes) {
    for (const uint32_t type : {1U, 7U, 8U, 10U, 14U, 0x70000001U, 0xFFFFFFFFU}) {
        const Section* const section = module().createSection("x", type, 3);
        EXPECT_FALSE(section->isAuxiliary()) << type;
        EXPECT_EQ(section->isRelocatable(), type != 7) << type;
        EXPECT_EQ(section->getType(), type);
        EXPECT_EQ(section->getFlags(), 3U);
        EXPECT_TRUE(section->isWritable());
    }
}

TEST_F(SectionCreationTest, NamesAreCopied) {
    char name[] = ".text";
    const Section* const section = module().createSection(name, 1, 0);
    name[1] = 'X';
    EXPECT_STREQ(section->getName(), ".text");
}

TEST_F(SectionCreationDeathTest, GeneralSectionsHaveNoTypeWithAClassOfItsOwn) {
    const std::string condition =
        "type != SHT_NULL && type != SHT_SYMTAB && type != SHT_STRTAB && type != SHT_RELA && "
        "type != SHT_REL && type != SHT_DYNSYM && type != SHT_GROUP && type != SHT_SYMTAB_SHNDX "
        "&& type != SHT_HASH && type != SHT_DYNAMIC && type != SHT_GNU_verdef && type != "
        "SHT_GNU_verneed && type != SHT_GNU_versym && type != SHT_QEL_PREEMPTMAP && type != "
        "SHT_QEL_ATTRIBUTES && type != SHT_QEL_DEBUGOVERLAY";
    EXPECT_FAULT(module().createSection("x", 0, 0), creation, condition);
    for (const CreatorRow& row : creatorRows) {
        EXPECT_FAULT(module().createSection("x", row.type, 0), creation, condition);
    }
}

TEST_F(SectionCreationDeathTest, TablesHaveOneOfTwoTypes) {
    EXPECT_FAULT(module().createSymbolTableSection(3), special,
                 "type == Type(SHT_SYMTAB) || type == Type(SHT_DYNSYM)");
    EXPECT_FAULT(module().createRelocationSection("x", 2, 0), special,
                 "type == Type(SHT_REL) || type == Type(SHT_RELA)");
}

TEST_F(SectionCreationTest, OnlyRelocationSectionsAreRelocationSections) {
    Section* const text = makeSection();
    RelocationSection* const made = module().createRelocationSection("x", SHT_RELA, 2);
    Section* const section = made;
    EXPECT_EQ(text->asRelocationSection(), nullptr);
    EXPECT_EQ(static_cast<const Section*>(text)->asRelocationSection(), nullptr);
    EXPECT_EQ(section->asRelocationSection(), made);
    EXPECT_EQ(static_cast<const Section*>(section)->asRelocationSection(), made);
    EXPECT_EQ(made->getFlags(), 2U);
    EXPECT_TRUE(made->hasAddends());
    EXPECT_FALSE(module().createRelocationSection("x", SHT_REL, 0)->hasAddends());
}

TEST_F(SectionCreationTest, ARelocationSectionIsEnteredWithItsTarget) {
    Section* const text = makeSection();
    Section* const data = makeSection(".data");
    RelocationSection* const relocations = module().createRelocationSection("x", SHT_REL, 0);
    EXPECT_EQ(relocations->getTarget(), nullptr);
    EXPECT_FALSE(relocations->isDynamic());
    relocations->setTarget(text, false);
    EXPECT_EQ(relocations->getTarget(), text);
    EXPECT_EQ(elementsOf(text->getRelocationSections()), std::vector<Section*>{relocations});
    EXPECT_EQ(text->getDynamicRelocationSections().getSize(), 0U);
    relocations->setTarget(data, true);
    EXPECT_TRUE(relocations->isDynamic());
    EXPECT_EQ(text->getRelocationSections().getSize(), 0U);
    EXPECT_EQ(elementsOf(data->getDynamicRelocationSections()), std::vector<Section*>{relocations});
    relocations->setTarget(nullptr, true);
    EXPECT_EQ(data->getDynamicRelocationSections().getSize(), 0U);
}

TEST_F(SectionCreationTest, AStringTableServesWhatItIsToldTo) {
    StringTableSection* const table = module().createStringTableSection(".strtab");
    EXPECT_FALSE(table->servesSectionNames());
    EXPECT_EQ(module().getSectionNameTable(), nullptr);
    EXPECT_FALSE(table->servesSymbols());
    EXPECT_FALSE(table->servesDynamicSymbols());
    EXPECT_FALSE(table->servesDynamicSection());
    table->setServesSectionNames(true);
    EXPECT_TRUE(table->servesSectionNames());
    EXPECT_EQ(module().getSectionNameTable(), table);
    EXPECT_FALSE(table->servesSymbols());
    table->setServesSymbols(true);
    EXPECT_TRUE(table->servesSymbols());
    EXPECT_FALSE(table->servesDynamicSymbols());
    table->setServesDynamicSymbols(true);
    EXPECT_TRUE(table->servesDynamicSymbols());
    EXPECT_FALSE(table->servesDynamicSection());
    table->setServesDynamicSection(true);
    EXPECT_TRUE(table->servesDynamicSection());
}

TEST_F(SectionCreationTest, ASymbolTableHasCompanions) {
    SymbolTableSection* const table = module().createSymbolTableSection(SHT_DYNSYM, ".dynsym");
    EXPECT_STREQ(table->getName(), ".dynsym");
    EXPECT_TRUE(table->isDynamic());
    EXPECT_FALSE(module().createSymbolTableSection(SHT_SYMTAB)->isDynamic());
    EXPECT_EQ(table->getShndxSection(), nullptr);
    EXPECT_EQ(table->getHashSection(), nullptr);
    ShndxSection* const shndx = module().createShndxSection();
    HashSection* const hash = module().createHashSection();
    table->setShndxSection(shndx);
    table->setHashSection(hash);
    EXPECT_EQ(table->getShndxSection(), shndx);
    EXPECT_EQ(table->getHashSection(), hash);
}

TEST_F(SectionCreationTest, AGroupSectionKnowsItsSignatureSymbol) {
    GroupSection* const section = module().createGroupSection(".group");
    EXPECT_EQ(section->getSignatureSymbolIndex(), 0U);
    section->setSignatureSymbolIndex(0x80000001);
    EXPECT_EQ(section->getSignatureSymbolIndex(), 0x80000001U);
}

TEST_F(SectionCreationTest, ASectionMadeInAGroupIsFlagged) {
    Group* const group = module().createGroup("g", "s", GRP_COMDAT);
    Section* const section = module().createSection(".text.f", SHT_PROGBITS, SHF_ALLOC, group);
    EXPECT_EQ(section->getFlags(), 0x202U);
    EXPECT_EQ(section->getGroup(), group);
    EXPECT_EQ(elementsOf(group->getMembers()), std::vector<Section*>{section});
}

TEST_F(SectionCreationDeathTest, ASectionIsMadeInAGroupThatIsThere) {
    EXPECT_FAULT(module().createSection("x", 1, 0, nullptr), creation, "group != NULL");
}

TEST_F(SectionCreationTest, ACommentHoldsThreeTexts) {
    Section* const section = module().createCommentSection("one", "two", "three");
    EXPECT_STREQ(section->getName(), ".comment");
    EXPECT_EQ(section->getType(), 1U);
    EXPECT_EQ(section->getFlags(), 0U);
    EXPECT_EQ(section->getSize(), 14U);
    const Buffer& contents = section->getLoadedContents();
    ASSERT_EQ(contents.getSize(), 14U);
    const std::string bytes(reinterpret_cast<const char*>(contents.getData()), 14);
    EXPECT_EQ(bytes, std::string("one\0two three\0", 14));
}

TEST_F(SectionCreationTest, ACommentOfEmptyTexts) {
    const Section* const section = module().createCommentSection("", "", "");
    EXPECT_EQ(section->getSize(), 3U);
    const Buffer& contents = section->getLoadedContents();
    EXPECT_EQ(contents.getUint8(0), 0U);
    EXPECT_EQ(contents.getUint8(1), ' ');
    EXPECT_EQ(contents.getUint8(2), 0U);
}

} // namespace
} // namespace elfext::test
