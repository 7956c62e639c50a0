// Needed libraries, search paths, preemptions, versions.
#include "elfext/interface/dynamic_records.h"
#include "elfext/interface/version_records.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using DynamicRecordsTest = ModelTest;
using DynamicRecordsDeathTest = ModelTest;

constexpr const char* source = "elfext/src/dynamic_records";
constexpr const char* versions = "elfext/src/version_records";

TEST_F(DynamicRecordsTest, NeededLibrariesAndSearchPaths) {
    char text[] = "libc.so";
    const NeededLibrary* const library = module().addNeededLibrary(text);
    const LibrarySearchPath* const path = module().addLibrarySearchPath(text, DT_RUNPATH);
    text[0] = 'X';
    EXPECT_STREQ(library->getName(), "libc.so");
    EXPECT_EQ(library->getObjectModule(), &module());
    EXPECT_STREQ(path->getPath(), "libc.so");
    EXPECT_EQ(path->getTag(), 29U);
    EXPECT_EQ(path->getObjectModule(), &module());
    EXPECT_EQ(module().addLibrarySearchPath("x", DT_RPATH)->getTag(), 15U);
    EXPECT_EQ(module().getNeededLibraryCount(), 1U);
    EXPECT_EQ(module().getLibrarySearchPathCount(), 2U);
}

TEST_F(DynamicRecordsTest, PreemptionsListTheirLibraries) {
    Preemption* const preemption = module().addPreemption("malloc", "libm.so");
    EXPECT_STREQ(preemption->getSymbolName(), "malloc");
    EXPECT_STREQ(preemption->getPreemptingDllName(), "libm.so");
    EXPECT_EQ(preemption->getObjectModule(), &module());
    preemption->reservePreemptedDlls(2);
    PreemptedDll* const one = preemption->addPreemptedDll("one");
    PreemptedDll* const two = preemption->addPreemptedDll("two");
    EXPECT_EQ(preemption->getPreemptedDllCount(), 2U);
    EXPECT_EQ(preemption->getPreemptedDll(1), two);
    EXPECT_EQ(preemption->getPreemptedDllIndex(one), 0U);
    EXPECT_EQ(preemption->getPreemptedDllIndex(two), 1U);
    EXPECT_STREQ(two->getName(), "two");
    EXPECT_EQ(two->getPreemption(), preemption);
    EXPECT_EQ(module().getPreemptionCount(), 1U);
}

TEST_F(DynamicRecordsDeathTest, TextsAreNotNull) {
    EXPECT_FAULT(module().addNeededLibrary(nullptr), source, "name != NULL");
    EXPECT_FAULT(module().addLibrarySearchPath(nullptr, DT_RPATH), source, "path != NULL");
    EXPECT_FAULT(module().addPreemption(nullptr, "d"), source, "symbolName != NULL");
    EXPECT_FAULT(module().addPreemption("s", nullptr), source, "preemptingDllName != NULL");
    EXPECT_FAULT(module().addPreemption("s", "d")->addPreemptedDll(nullptr), source,
                 "name != NULL");
}

TEST_F(DynamicRecordsDeathTest, PreemptedLibrariesThatAreNotThere) {
    Preemption* const preemption = module().addPreemption("s", "d");
    const PreemptedDll* const foreign = module().addPreemption("s", "d")->addPreemptedDll("x");
    const PreemptedDll unlisted(preemption, "x");
    EXPECT_FAULT(preemption->getPreemptedDll(0), source, "index < m_PreemptedDlls.getSize()");
    EXPECT_FAULT(preemption->getPreemptedDllIndex(nullptr), source, "preemptedDll != NULL");
    EXPECT_FAULT(preemption->getPreemptedDllIndex(foreign), source,
                 "preemptedDll->getPreemption() == this");
    EXPECT_FAULT(preemption->getPreemptedDllIndex(&unlisted), source,
                 "m_PreemptedDlls.contains(const_cast<PreemptedDll*>(preemptedDll))");
}

TEST_F(DynamicRecordsTest, VersionDefinitions) {
    FileVersionDefinition* const file = module().createFileVersionDefinition(1, VER_FLG_BASE);
    EXPECT_EQ(module().getFileVersionDefinition(), file);
    EXPECT_EQ(file->getIndex(), 1U);
    EXPECT_EQ(file->getFlags(), 1U);
    SymbolVersionDefinition* const definition = module().createSymbolVersionDefinition(2, 0);
    EXPECT_EQ(definition->getDefinedVersionIdentifierCount(), 0U);
    DefinedVersionIdentifier* const own = definition->addDefinedVersionIdentifier("V2");
    definition->addDefinedVersionIdentifier("V1");
    EXPECT_EQ(definition->getDefinedVersionIdentifierCount(), 2U);
    EXPECT_EQ(definition->getDefinedVersionIdentifier(0), own);
    EXPECT_STREQ(own->getVersionString(), "V2");
    EXPECT_EQ(own->getVersionDefinition(), definition);
    EXPECT_EQ(definition->getObjectModule(), &module());
}

TEST_F(DynamicRecordsTest, VersionRequirements) {
    const SymbolVersionRequirement* const requirement =
        module().createSymbolVersionRequirement(5, VER_FLG_WEAK, "libc.so", "V3");
    EXPECT_EQ(requirement->getIndex(), 5U);
    EXPECT_EQ(requirement->getFlags(), 2U);
    EXPECT_STREQ(requirement->getLibraryName(), "libc.so");
    const RequiredVersionIdentifier& identifier = requirement->getRequiredVersionIdentifier();
    EXPECT_STREQ(identifier.getVersionString(), "V3");
    EXPECT_EQ(identifier.getVersionRequirement(), requirement);
}

// The values that the ABI's own function gives.
TEST_F(DynamicRecordsTest, VersionHashesAreThoseOfTheAbi) {
    EXPECT_EQ(getVersionHash(""), 0U);
    EXPECT_EQ(getVersionHash("printf"), 0x077905A6U);
    EXPECT_EQ(getVersionHash("exit"), 0x0006CF04U);
    EXPECT_EQ(getVersionHash("syscall"), 0x0B09985CU);
    EXPECT_EQ(module()
                  .createSymbolVersionDefinition(2, 0)
                  ->addDefinedVersionIdentifier("exit")
                  ->getHash(),
              0x0006CF04U);
}

TEST_F(DynamicRecordsDeathTest, VersionRecordsThatDoNotFit) {
    SymbolVersionDefinition* const one = module().createSymbolVersionDefinition(2, 0);
    SymbolVersionDefinition* const two = module().createSymbolVersionDefinition(3, 0);
    DefinedVersionIdentifier* const ofTwo = two->addDefinedVersionIdentifier("V");
    EXPECT_FAULT(one->addDefinedVersionIdentifier(static_cast<DefinedVersionIdentifier*>(nullptr)),
                 versions, "definedVersionIdentifier != NULL");
    EXPECT_FAULT(one->addDefinedVersionIdentifier(ofTwo), versions,
                 "definedVersionIdentifier->getVersionDefinition() == this");
    EXPECT_FAULT(one->getDefinedVersionIdentifier(0), versions,
                 "index < m_DefinedVersionIdentifiers.getSize()");
    EXPECT_FAULT(one->addDefinedVersionIdentifier(static_cast<const char*>(nullptr)), versions,
                 "versionString != NULL");
    EXPECT_FAULT(module().createSymbolVersionRequirement(1, 0, "l", nullptr), versions,
                 "versionString != NULL");
    EXPECT_FAULT(module().createSymbolVersionRequirement(1, 0, nullptr, "v"), versions,
                 "libraryName != NULL");
}

} // namespace
} // namespace elfext::test
