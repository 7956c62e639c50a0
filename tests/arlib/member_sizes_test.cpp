// Measuring members while their archive is being read.
#include "arlib/interface/member_sizes.h"

#include <memory>

#include "elfext/interface/object_module.h"
#include "tests/arlib/arlib_fixture.h"
#include "tests/support/rich_elf.h"

namespace arlibtest {
namespace {

using namespace testsupport;

class MemberSizesTest : public ArlibTest {
protected:
    // An object whose code has this size.
    static std::string objectOf(size_t size) {
        ElfBuilder builder;
        builder.add({.name = ".text",
                     .flags = elf::SHF_ALLOC | elf::SHF_EXECINSTR,
                     .contents = std::string(size, 'c')});
        builder.addSymbols({{.name = "f" + std::to_string(size), .section = 1}});
        return builder.bytes();
    }

    // Reads the archive "lib.a".
    void measure(const ArchiveBuilder& builder) {
        folder.write("lib.a", builder.bytes());
        readAndMeasure();
    }
    void readAndMeasure() {
        m_Sizes = std::make_unique<arlib::MemberSizes>();
        ASSERT_TRUE(arlib::ArchiveFileReader().readFile(pathOf("lib.a").c_str(), *m_Archive,
                                                        m_Sizes.get()));
    }
    void SetUp() override {
        ArlibTest::SetUp();
        m_Archive = std::make_unique<arlib::Archive>();
        m_Archive->setErrorHandler(&handler);
    }
    void TearDown() override {
        m_Sizes.reset();
        m_Archive.reset();
        ArlibTest::TearDown();
    }

    const elfext::SizeStatistics* find(uint32_t place) {
        return m_Sizes->find(*m_Archive->getMembers()[place], place);
    }
    // The bytes of code that were found, or -1.
    int64_t codeOf(uint32_t place) {
        const elfext::SizeStatistics* const sizes = find(place);
        return sizes != nullptr ? static_cast<int64_t>(sizes->m_LiteralPools) : -1;
    }

    std::unique_ptr<arlib::Archive> m_Archive;
    std::unique_ptr<arlib::MemberSizes> m_Sizes;
};

TEST_F(MemberSizesTest, PlainObjectsAreMeasured) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = objectOf(10)});
    builder.add({.name = "b.o", .contents = objectOf(25)});
    measure(builder);
    m_Sizes->finish();
    EXPECT_EQ(codeOf(0), 10);
    EXPECT_EQ(codeOf(1), 25);
}

TEST_F(MemberSizesTest, OthersAreToBeRead) {
    ArchiveBuilder builder;
    builder.add({.name = "text", .contents = "no object"});
    builder.add({.name = "a.o", .contents = objectOf(10)});
    builder.add({.name = "empty", .contents = ""});
    builder.add({.name = "rich.o", .contents = richElf().bytes()});
    builder.add({.name = "image", .contents = richElf({}, elf::ET_EXEC).bytes()});
    builder.add({.name = "cut.o", .contents = objectOf(10).substr(0, 100)});
    builder.add({.name = "b.o", .contents = objectOf(20)});
    measure(builder);
    m_Sizes->finish();
    for (const uint32_t place : {0U, 2U, 3U, 4U, 5U}) {
        EXPECT_EQ(find(place), nullptr) << place;
    }
    EXPECT_EQ(codeOf(1), 10);
    EXPECT_EQ(codeOf(6), 20);
}

// Places count all members, the tables too, and a place says nothing of another member.
TEST_F(MemberSizesTest, PlacesAreThoseOfTheList) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = objectOf(10)});
    builder.add({.name = "b.o", .contents = objectOf(20)});
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
    archive.markSymbolTableStale();
    ASSERT_TRUE(write("lib.a", archive));
    archive.clear();
    readAndMeasure();
    m_Sizes->finish();
    ASSERT_EQ(m_Archive->getMembers().getSize(), 3U);
    EXPECT_EQ(find(0), nullptr);
    EXPECT_EQ(codeOf(1), 10);
    EXPECT_EQ(codeOf(2), 20);
    EXPECT_EQ(m_Sizes->find(*m_Archive->getMembers()[1], 2), nullptr);
    EXPECT_EQ(m_Sizes->find(*m_Archive->getMembers()[1], 3), nullptr);
}

// As many as several threads have work with, among them one that is larger than all others.
TEST_F(MemberSizesTest, ManyMembers) {
    constexpr uint32_t count = 3000;
    constexpr size_t largest = 6 << 20;
    ArchiveBuilder builder;
    const auto sizeOf = [](uint32_t i) { return i == 1000 ? largest : 1 + i * 7 % 9000; };
    for (uint32_t i = 0; i < count; ++i) {
        builder.add({.name = "m" + std::to_string(i), .contents = objectOf(sizeOf(i))});
    }
    measure(builder);
    m_Sizes->finish();
    for (uint32_t i = 0; i < count; ++i) {
        ASSERT_EQ(codeOf(i), static_cast<int64_t>(sizeOf(i))) << i;
    }
}

TEST_F(MemberSizesTest, NothingIsFoundBeforeTheEnd) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = objectOf(10)});
    measure(builder);
    EXPECT_EQ(find(0), nullptr);
}

TEST_F(MemberSizesTest, ArchiveWithoutObjects) {
    ArchiveBuilder builder;
    builder.add({.name = "text", .contents = "no object"});
    measure(builder);
    m_Sizes->finish();
    EXPECT_EQ(find(0), nullptr);
    arlib::MemberSizes unused;
    unused.finish();
    EXPECT_EQ(unused.find(*m_Archive->getMembers()[0], 0), nullptr);
}

// Its bytes may be from before the change or from after it.
TEST_F(MemberSizesTest, FileThatChangedMeanwhile) {
    ArchiveBuilder builder;
    builder.add({.name = "a.o", .contents = objectOf(10)});
    builder.add({.name = "b.o", .contents = objectOf(20)});
    measure(builder);
    folder.setTime("lib.a", 1);
    m_Sizes->finish();
    EXPECT_EQ(find(0), nullptr);
    EXPECT_EQ(find(1), nullptr);
}

TEST_F(MemberSizesTest, FileThatWasCutMeanwhile) {
    constexpr uint32_t count = 200;
    ArchiveBuilder builder;
    for (uint32_t i = 0; i < count; ++i) {
        builder.add({.name = "m" + std::to_string(i), .contents = objectOf(1000)});
    }
    const std::string bytes = builder.bytes();
    measure(builder);
    folder.write("lib.a", bytes.substr(0, 1000));
    m_Sizes->finish();
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(find(i), nullptr);
    }
}

// Nobody asks for the results of a read that failed.
TEST_F(MemberSizesTest, ReadThatFails) {
    ArchiveBuilder builder;
    for (uint32_t i = 0; i < 3000; ++i) {
        builder.add({.name = "m" + std::to_string(i), .contents = objectOf(5000)});
    }
    folder.write("lib.a", builder.bytes() + "no header");
    arlib::MemberSizes sizes;
    EXPECT_FALSE(arlib::ArchiveFileReader().readFile(pathOf("lib.a").c_str(), *m_Archive, &sizes));
}

} // namespace
} // namespace arlibtest
