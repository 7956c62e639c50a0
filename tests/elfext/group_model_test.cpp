// Groups: members, signatures, and which group stands for a signature.
#include "elfext/interface/prune_criteria.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using GroupTest = ModelTest;
using GroupDeathTest = ModelTest;

constexpr const char* source = "elfext/src/group";

TEST_F(GroupTest, HoldsWhatItIsMadeOf) {
    char name[] = ".group";
    char signature[] = "f";
    Group* const group = module().createGroup(name, signature, 0x11);
    name[0] = signature[0] = 'X';
    EXPECT_STREQ(group->getName(), ".group");
    EXPECT_STREQ(group->getSignature(), "f");
    EXPECT_EQ(group->getFlags(), 0x11U);
    EXPECT_TRUE(group->isComdat());
    EXPECT_EQ(group->getSection(), nullptr);
    EXPECT_EQ(group->getObjectModule(), &module());
    EXPECT_EQ(group->getMembers().getSize(), 0U);
    Section* const section = module().createGroupSection(".group");
    group->setSection(section);
    EXPECT_EQ(group->getSection(), section);
    group->setName(nullptr);
    EXPECT_EQ(group->getName(), nullptr);
}

TEST_F(GroupTest, TheFirstOfANameIsFound) {
    EXPECT_EQ(module().findGroup("g"), nullptr);
    Group* const one = module().createGroup("g", "s", 0);
    Group* const two = module().createGroup("g", "t", GRP_COMDAT);
    Group* const nameless = module().createGroup(nullptr, "u", 0);
    EXPECT_EQ(module().findGroup("g"), one);
    EXPECT_EQ(module().findGroup(nullptr), nameless);
    EXPECT_EQ(module().findGroup("h"), nullptr);
    // Whatever changes, the next search knows of it.
    one->setName("h");
    EXPECT_EQ(module().findGroup("g"), two);
    EXPECT_EQ(module().findGroup("h"), one);
    nameless->setName("g");
    EXPECT_EQ(module().findGroup("g"), two);
    module().setGroupIndex(nameless, 0);
    EXPECT_EQ(module().findGroup("g"), nameless);
    Group* const late = module().createGroup("late", "v", 0);
    EXPECT_EQ(module().findGroup("late"), late);
    ManualPruneCriteria criteria;
    criteria.addGroup(nameless);
    module().prune(criteria);
    EXPECT_EQ(module().findGroup("g"), two);
    module().clear();
    EXPECT_EQ(module().findGroup("g"), nullptr);
}

TEST_F(GroupDeathTest, ASignatureIsNeverNull) {
    EXPECT_FAULT(module().createGroup("g", nullptr, 0), source, "signature != NULL");
    Group* const group = module().createGroup("g", "s", 0);
    EXPECT_FAULT(group->setSignature(nullptr), source, "signature != NULL");
    EXPECT_FAULT(module().getOrCreateComdatGroup(nullptr), "elfext/src/object_module_creation",
                 "signature != NULL");
}

TEST_F(GroupTest, MembersAreInOrderAndKnowTheirGroup) {
    Group* const group = module().createGroup("g", "s", 0);
    Section* const one = makeSection();
    Section* const two = makeSection();
    group->reserveMembers(2);
    group->addMember(two);
    group->addMember(one);
    EXPECT_EQ(elementsOf(group->getMembers()), (std::vector<Section*>{two, one}));
    EXPECT_EQ(one->getGroup(), group);
    group->removeMember(two);
    EXPECT_EQ(two->getGroup(), nullptr);
    EXPECT_EQ(elementsOf(group->getMembers()), std::vector<Section*>{one});
}

TEST_F(GroupDeathTest, ASectionIsInOneGroup) {
    Group* const group = module().createGroup("g", "s", 0);
    Group* const other = module().createGroup("h", "t", 0);
    Section* const section = makeSection();
    group->addMember(section);
    EXPECT_FAULT(group->addMember(section), source, "section->m_Group == NULL");
    EXPECT_FAULT(other->addMember(section), source, "section->m_Group == NULL");
    EXPECT_FAULT(other->removeMember(section), source, "section->m_Group == this");
    EXPECT_FAULT(group->addMember(nullptr), source, "section != NULL");
}

TEST_F(GroupTest, TheFirstComdatGroupStandsForItsSignature) {
    Group* const plain = module().createGroup("a", "s", 2);
    EXPECT_EQ(module().findComdatGroup("s"), nullptr);
    Group* const first = module().createGroup("b", "s", GRP_COMDAT);
    Group* const second = module().createGroup("c", "s", GRP_COMDAT | 4);
    EXPECT_EQ(module().findComdatGroup("s"), first);
    EXPECT_EQ(module().getGroupCount(), 3U);
    EXPECT_EQ(module().getGroup(0), plain);
    EXPECT_EQ(module().getGroup(2), second);
}

TEST_F(GroupTest, ALaterGroupLeavesTheFirstInPlace) {
    Group* const first = module().createGroup("b", "s", GRP_COMDAT);
    Group* const second = module().createGroup("c", "s", GRP_COMDAT);
    second->setSignature("t");
    EXPECT_EQ(module().findComdatGroup("s"), first);
    EXPECT_EQ(module().findComdatGroup("t"), second);
    second->setFlags(0);
    EXPECT_EQ(module().findComdatGroup("t"), nullptr);
    EXPECT_EQ(module().findComdatGroup("s"), first);
}

TEST_F(GroupTest, TheEntryFollowsSignatureAndFlags) {
    Group* const group = module().createGroup("g", "s", GRP_COMDAT);
    group->setSignature("t");
    EXPECT_EQ(module().findComdatGroup("s"), nullptr);
    EXPECT_EQ(module().findComdatGroup("t"), group);
    group->setSignature("t");
    EXPECT_EQ(module().findComdatGroup("t"), group);
    group->setFlags(0);
    EXPECT_EQ(module().findComdatGroup("t"), nullptr);
    group->setSignature("u");
    EXPECT_EQ(module().findComdatGroup("u"), nullptr);
    group->setFlags(GRP_COMDAT);
    EXPECT_EQ(module().findComdatGroup("u"), group);
}

TEST_F(GroupDeathTest, AComdatGroupsNewSignatureIsFree) {
    module().createGroup("a", "s", GRP_COMDAT);
    Group* const group = module().createGroup("b", "t", GRP_COMDAT);
    EXPECT_FAULT(
        group->setSignature("s"), source,
        "!m_ObjectModule->m_MapSignaturesToComdatGroups.containsKey(Stringlett(m_Signature))");
    group->setFlags(0);
    group->setSignature("s");
    EXPECT_STREQ(group->getSignature(), "s");
}

TEST_F(GroupTest, AComdatGroupIsMadeIfThereIsNone) {
    Group* const made = module().getOrCreateComdatGroup("s");
    EXPECT_STREQ(made->getName(), "s");
    EXPECT_STREQ(made->getSignature(), "s");
    EXPECT_EQ(made->getFlags(), 1U);
    EXPECT_EQ(module().getOrCreateComdatGroup("s"), made);
    EXPECT_EQ(module().getGroupCount(), 1U);
}

TEST_F(GroupTest, ManyGroupsWithOneSignature) {
    for (uint32_t i = 0; i < 1000; ++i) {
        module().createGroup("g", "s", GRP_COMDAT);
        module().createGroup("g", ("s" + std::to_string(i)).c_str(), GRP_COMDAT);
    }
    EXPECT_EQ(module().findComdatGroup("s"), module().getGroup(0));
    EXPECT_EQ(module().findComdatGroup("s999"), module().getGroup(1999));
}

} // namespace
} // namespace elfext::test
