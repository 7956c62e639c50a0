// Members that are ELF files: how they are told from others, and what can be asked of them.

#include <cstdlib>
#include <string>
#include <vector>

#include "arlib/interface/symbol_name_list.h"
#include "elfext/interface/error_handler.h"
#include "platform/interface/input_file.h"
#include "tests/arlib/arlib_fixture.h"
#include "tests/support/rich_elf.h"

namespace arlibtest {
namespace {

using testsupport::BuiltElfSymbol;
using testsupport::ElfBuilder;
using testsupport::ElfFormat;
using testsupport::HeaderField;
using testsupport::RichElf;

using namespace testsupport::elf;

class ElfMember : public ArlibTest {
protected:
    struct Answer {
        bool isGood = false;
        Names names;
        std::string failure;
    };

    static const arlib::ArchiveMemberType* typeOf(const std::string& contents) {
        arlib::Archive archive;
        return add(archive, "a", contents)->getType();
    }

    // What the member's type says of its symbols. The list and the text are not empty before.
    static Answer symbolsOf(arlib::ArchiveMember* member) {
        const arlib::OwnedRegion region(1024, "test");
        Answer answer;
        answer.failure = "left over";
        arlib::SymbolNameList list(region.get());
        list.add("left over");
        const auto* type =
            static_cast<const arlib::ObjectModuleArchiveMemberType*>(member->getType());
        EXPECT_TRUE(type->isObjectModule());
        answer.isGood = type->getSymbols(*member, list, answer.failure);
        if (answer.isGood) {
            EXPECT_EQ(answer.failure, "");
            for (uint32_t i = 0; i < list.getSize(); ++i) {
                answer.names.emplace_back(list.get(i));
            }
        }
        return answer;
    }
    static Answer symbolsOf(const std::string& contents, bool debugSymbols = false) {
        arlib::Archive archive;
        archive.setDebugSymbols(debugSymbols);
        return symbolsOf(add(archive, "a.o", contents));
    }
    static Names namesOf(const std::string& contents, bool debugSymbols = false) {
        const Answer answer = symbolsOf(contents, debugSymbols);
        EXPECT_TRUE(answer.isGood) << answer.failure;
        return answer.names;
    }

    // An object with these symbols, section 1 of which holds code.
    static std::string objectOf(const std::vector<BuiltElfSymbol>& symbols, ElfFormat format = {}) {
        ElfBuilder builder(format);
        builder.add({.name = ".text", .contents = "code"});
        builder.addSymbols(symbols);
        return builder.bytes();
    }
};

TEST_F(ElfMember, IsToldByItsHeader) {
    for (const ElfFormat format : testsupport::allElfFormats) {
        EXPECT_EQ(typeOf(ElfBuilder(format).bytes()), arlib::getElfImageType());
    }
    const std::string object64 = ElfBuilder().bytes();
    const std::string object32 = ElfBuilder(ElfFormat{false, true}).bytes();
    EXPECT_EQ(typeOf(object64.substr(0, 64)), arlib::getElfImageType()) << "broken, but one";
    EXPECT_EQ(typeOf(object64.substr(0, 63)), arlib::getUnknownType());
    EXPECT_EQ(typeOf(object32.substr(0, 52)), arlib::getElfImageType());
    EXPECT_EQ(typeOf(object32.substr(0, 51)), arlib::getUnknownType());
    EXPECT_EQ(typeOf(""), arlib::getUnknownType());
    EXPECT_EQ(typeOf(std::string(15, '\x7F')), arlib::getUnknownType());
    EXPECT_EQ(typeOf("a text that is long enough to be taken for an object if it were one"),
              arlib::getUnknownType());
    std::string noMagic = object32;
    noMagic[0] = 'x';
    EXPECT_EQ(typeOf(noMagic), arlib::getUnknownType());
    EXPECT_EQ(typeOf(ElfBuilder(ElfFormat{false, true}).header(HeaderField::Class, 3).bytes()),
              arlib::getUnknownType());
}

TEST_F(ElfMember, SecondFormIsRecognised) {
    std::string bytes = ElfBuilder(ElfFormat{false, true}).bytes().substr(0, 52);
    bytes.replace(0, 4,
                  "\xF7"
                  "ORC");
    EXPECT_EQ(typeOf(bytes + std::string("\2\0\0\0\x08\0\0\0", 8)), arlib::getElfImageType());
    EXPECT_EQ(typeOf(bytes + std::string("\2\0\0\0\x09\0\0\0", 8)), arlib::getUnknownType());
    EXPECT_EQ(typeOf(bytes), arlib::getUnknownType());
}

TEST_F(ElfMember, IsToldWhereverTheBytesAre) {
    const std::string object = ElfBuilder().bytes();
    folder.write("file.o", object);
    folder.write("text", "text");
    folder.write("lib.a", testsupport::ArchiveBuilder()
                              .add("in.o", object)
                              .add("text", std::string(100, 't'))
                              .add("tiny", "t")
                              .bytes());
    arlib::Archive source;
    ASSERT_TRUE(read("lib.a", source));
    const auto* elf = arlib::getElfImageType();
    const auto* unknown = arlib::getUnknownType();
    EXPECT_EQ(source.getMembers()[0]->getType(), elf);
    EXPECT_EQ(source.getMembers()[1]->getType(), unknown);
    EXPECT_EQ(source.getMembers()[2]->getType(), unknown);

    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    EXPECT_EQ(archive.addMemberFromFile(pathOf("file.o").c_str())->getType(), elf);
    EXPECT_EQ(archive.addMemberFromFile(pathOf("text").c_str())->getType(), unknown);
    uint8_t buffer[arlib::Archive::largestProbeSize];
    const auto probe = platform::probeFile(pathOf("file.o").c_str(), buffer);
    arlib::ArchiveMember* probed = archive.addMemberFromFile(pathOf("file.o").c_str(), probe);
    EXPECT_EQ(probed->getType(), elf);
    const auto merged = [&](uint32_t index) {
        return archive.addMemberFromFileRegion("merged", *source.getMembers()[index])->getType();
    };
    EXPECT_EQ(merged(0), elf);
    EXPECT_EQ(merged(1), unknown);
    const auto stretch = [&](uint64_t offset, uint64_t size) {
        return archive.addMemberFromFileRegion("s", pathOf("lib.a").c_str(), offset, size)
            ->getType();
    };
    EXPECT_EQ(stretch(68, object.size()), elf);
    EXPECT_EQ(stretch(68, 63), unknown);
    EXPECT_EQ(stretch(8, 200), unknown);
    ASSERT_TRUE(archive.replaceMember(probed, *source.getMembers()[2]));
    EXPECT_EQ(probed->getType(), unknown);
    EXPECT_EQ(handler.reports, Names());
}

TEST_F(ElfMember, StretchThatIsCutIsLookedAtAgain) {
    const std::string object = ElfBuilder().bytes();
    folder.write("lib.a", testsupport::ArchiveBuilder().add("in.o", object).bytes());
    arlib::Archive source;
    ASSERT_TRUE(read("lib.a", source));
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    handler.goesOn = true;
    const auto* type =
        archive.addMemberFromFileRegion("s", pathOf("lib.a").c_str(), 68, object.size() + 1000)
            ->getType();
    EXPECT_EQ(type, arlib::getElfImageType());
    EXPECT_EQ(handler.reports.size(), 1U);
}

TEST_F(ElfMember, WhatCannotBeReadIsNone) {
    folder.makeFolder("folder");
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = archive.addMemberFromFile(pathOf("folder").c_str());
    ASSERT_NE(member, nullptr);
    EXPECT_EQ(member->getType(), arlib::getUnknownType());
    EXPECT_EQ(handler.reports, Names()) << "nothing is reported";
}

TEST_F(ElfMember, TypesAreSingleObjects) {
    const arlib::ArchiveMemberType* types[] = {arlib::getElfImageType(), arlib::getUnknownType(),
                                               arlib::getSymbolTableType(),
                                               arlib::getFileNameTableType()};
    const bool isModule[] = {true, false, false, false};
    const bool isTable[] = {false, false, true, true};
    arlib::Archive archive;
    arlib::ArchiveMember* text = add(archive, "a", "text");
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(types[i]->isObjectModule(), isModule[i]) << i;
        EXPECT_EQ(types[i]->isAuxiliary(), isTable[i]) << i;
        EXPECT_FALSE(types[i]->recognise(*text)) << i;
        for (size_t k = 0; k < i; ++k) {
            EXPECT_NE(types[i], types[k]);
        }
    }
    EXPECT_EQ(types[0], arlib::getElfImageType());
}

TEST_F(ElfMember, DefinesWhatIsNeitherLocalNorUndefined) {
    for (const ElfFormat format : testsupport::allElfFormats) {
        for (const FileType type : {ET_REL, ET_EXEC, ET_DYN, ET_CORE}) {
            const std::string bytes = richElf(format, type).bytes();
            EXPECT_EQ(namesOf(bytes), testsupport::richNames()) << describe(format) << type;
            EXPECT_EQ(namesOf(bytes, true), testsupport::richNames(true)) << describe(format);
        }
    }
}

TEST_F(ElfMember, EveryBindingButLocalCounts) {
    std::vector<BuiltElfSymbol> symbols;
    Names expected;
    for (uint8_t binding = 0; binding < 16; ++binding) {
        const std::string name = "binding" + std::to_string(binding);
        symbols.push_back({.name = name, .section = 1, .binding = binding});
        if (binding != STB_LOCAL) {
            expected.push_back(name);
        }
    }
    EXPECT_EQ(namesOf(objectOf(symbols)), expected);
}

TEST_F(ElfMember, NamelessSymbolsAreLeftOut) {
    EXPECT_EQ(namesOf(objectOf({{.name = "a", .section = 1}, {.section = 1}})), Names{"a"});
    std::string bytes = objectOf({{.name = "ab", .section = 1}, {.name = "c", .section = 1}});
    // The name at the end of another one's: an empty text at an offset that is not 0.
    testsupport::setSymbolField(bytes, 3, 1, testsupport::SymbolField::Name, 3);
    EXPECT_EQ(namesOf(bytes), Names{"c"});
}

TEST_F(ElfMember, OrderIsThatOfTheTable) {
    EXPECT_EQ(namesOf(objectOf({{.name = "z", .section = 1},
                                {.name = "local", .section = 1, .binding = STB_LOCAL},
                                {.name = "a", .section = 1},
                                {.name = "z", .section = 1, .value = 2}})),
              (Names{"z", "a", "z"}));
}

TEST_F(ElfMember, DebugSectionsAreThoseOfTheirNames) {
    ElfBuilder builder;
    std::vector<BuiltElfSymbol> symbols;
    const Names sections = {".debug",   ".debug_info", ".debugger", ".line",     ".lines",
                            "C$$fpmap", ".deb",        "x.debug",   "C$$fpmap2", ".text"};
    for (const std::string& name : sections) {
        const auto index = static_cast<uint32_t>(builder.add({.name = name, .contents = "x"}));
        symbols.push_back({.name = "in " + name, .section = index});
    }
    symbols.push_back(testsupport::reservedSymbol("absolute", SHN_ABS, 0));
    builder.addSymbols(symbols);
    EXPECT_EQ(namesOf(builder.bytes()),
              (Names{"in .deb", "in x.debug", "in C$$fpmap2", "in .text", "absolute"}));
    EXPECT_EQ(namesOf(builder.bytes(), true).size(), sections.size() + 1);
}

TEST_F(ElfMember, DynamicTableAloneDefinesNothing) {
    RichElf rich = testsupport::richElf({}, ET_DYN);
    ElfBuilder builder({}, ET_DYN);
    const auto text = static_cast<uint32_t>(builder.add({.name = ".text", .contents = "code"}));
    const size_t strings = builder.addStringTable(".dynstr");
    builder.addSymbolTable(".dynsym", SHT_DYNSYM, strings, {{.name = "exported", .section = text}});
    EXPECT_EQ(namesOf(builder.bytes()), Names());
}

TEST_F(ElfMember, FailureIsTheReadersSentence) {
    const Answer answer = symbolsOf(ElfBuilder().header(HeaderField::Version, 2).bytes());
    EXPECT_FALSE(answer.isGood);
    EXPECT_EQ(answer.failure, "ELF file has unsupported version code 2 (we only handle version 1)");
}

TEST_F(ElfMember, LostFileIsTheReason) {
    folder.write("a.o", testsupport::richElf().bytes());
    const std::string path = pathOf("a.o");
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = archive.addMemberFromFile(path.c_str());
    folder.remove("a.o");
    const Answer answer = symbolsOf(member);
    EXPECT_FALSE(answer.isGood);
    EXPECT_EQ(answer.failure, "I/O error reading file '" + path + "': No such file or directory");
    EXPECT_EQ(handler.reports, Names()) << "the warning about the member tells it";
}

TEST_F(ElfMember, BytesThatCannotBePutOnDiskAreReportedAlready) {
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    arlib::ArchiveMember* member = add(archive, "a.o", testsupport::richElf().bytes());
    const char* before = std::getenv("TMPDIR");
    const std::string kept = before != nullptr ? before : "";
    ::setenv("TMPDIR", pathOf("missing").c_str(), 1);
    const Answer answer = symbolsOf(member);
    before != nullptr ? ::setenv("TMPDIR", kept.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_FALSE(answer.isGood);
    EXPECT_EQ(answer.failure, "");
    EXPECT_EQ(handler.reports, Names{"0: I/O error writing file: No such file or directory"});
}

TEST_F(ElfMember, ContentsAreLetGo) {
    arlib::Archive archive;
    arlib::ArchiveMember* member = add(archive, "a.o", testsupport::richElf().bytes());
    ASSERT_NE(member->getContents(), nullptr);
    EXPECT_TRUE(symbolsOf(member).isGood);
    EXPECT_EQ(member->getContents(), nullptr);
    EXPECT_TRUE(symbolsOf(member).isGood) << "and again from the file";
    EXPECT_EQ(member->getContents(), nullptr);
}

TEST_F(ElfMember, ContentsOfABadMemberStay) {
    arlib::Archive archive;
    arlib::ArchiveMember* member =
        add(archive, "a.o", ElfBuilder().header(HeaderField::Type, 9).bytes());
    EXPECT_FALSE(symbolsOf(member).isGood);
    EXPECT_NE(member->getContents(), nullptr);
}

TEST_F(ElfMember, SeveralBitcodeSectionsAreAFailure) {
    for (const size_t count : {2U, 3U}) {
        ElfBuilder builder;
        builder.add({.name = ".text", .contents = "code"});
        for (size_t i = 0; i < count; ++i) {
            builder.add({.name = ".llvm.lto", .contents = "x"});
        }
        builder.addSymbols({{.name = "a", .section = 1}});
        const Answer answer = symbolsOf(builder.bytes());
        EXPECT_FALSE(answer.isGood);
        EXPECT_EQ(answer.failure, "Found multiple LTO Bitcode sections.");
    }
    ElfBuilder builder;
    builder.add({.name = ".llvm.lto.x", .contents = "x"});
    builder.add({.name = ".llvm.lto.y", .contents = "x"});
    EXPECT_EQ(namesOf(builder.bytes()), Names()) << "other names";
}

// One table for many members of an archive, read through one buffer and one window.
TEST_F(ElfMember, TablesListManyMembers) {
    testsupport::ArchiveBuilder builder;
    Names expected;
    for (int i = 0; i < 300; ++i) {
        const std::string number = std::to_string(i);
        ElfBuilder object(testsupport::allElfFormats[static_cast<size_t>(i % 4)]);
        const auto text = static_cast<uint32_t>(
            object.add({.name = ".text", .contents = std::string(i % 50 == 7 ? 40000U : 8U, 'c')}));
        object.addSymbols(
            {{.name = "first" + number, .section = text}, {.name = "second", .section = text}});
        builder.add("member" + number + ".o", object.bytes());
        expected.push_back("first" + number + " in member" + number + ".o");
        expected.push_back("second in member" + number + ".o");
    }
    folder.write("lib.a", builder.bytes());
    arlib::Archive archive;
    ASSERT_TRUE(read("lib.a", archive));
    archive.markSymbolTableStale();
    ASSERT_TRUE(write("out.a", archive));
    const testsupport::ParsedArchive parsed = testsupport::parseArchive(folder.read("out.a"));
    EXPECT_EQ(parsed.error, "");
    Names found;
    for (const testsupport::ParsedSymbol& symbol : parsed.symbols) {
        found.push_back(symbol.name + " in " + symbol.member);
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(handler.reports, Names());
}

// Keeps what the ELF reader says.
class KeepingElfHandler final : public elfext::ErrorHandler {
public:
    bool report(elfext::ObjectModule*, elfext::Severity, const char* message) override {
        reports.emplace_back(message);
        return false;
    }
    Names reports;
};

class ElfMemberAttributes : public ElfMember {
protected:
    static bool attributesOf(arlib::Archive& archive, const std::string& contents, bool fromSection,
                             attributes::FullAttr& result) {
        arlib::ArchiveMember* member = add(archive, "a.o", contents);
        const auto* type =
            static_cast<const arlib::ObjectModuleArchiveMemberType*>(member->getType());
        return type->getBuildAttributes(*member, result, fromSection);
    }
    static bool attributesOf(const std::string& contents, bool fromSection,
                             attributes::FullAttr& result) {
        arlib::Archive archive;
        return attributesOf(archive, contents, fromSection, result);
    }
};

TEST_F(ElfMemberAttributes, MarkerSymbolsAreMerged) {
    const auto marked = [](const Names& decorations) {
        std::vector<BuiltElfSymbol> symbols = {{.name = "plain", .section = 1}};
        for (const std::string& decoration : decorations) {
            symbols.push_back(
                testsupport::reservedSymbol("BuildAttributes$" + decoration, SHN_ABS));
        }
        return objectOf(symbols);
    };
    const attributes::FullAttr none;
    attributes::FullAttr first;
    attributes::FullAttr second;
    attributes::FullAttr both;
    ASSERT_TRUE(attributesOf(marked({"$REQ8"}), false, first));
    ASSERT_TRUE(attributesOf(marked({"$~STKCKD"}), false, second));
    ASSERT_TRUE(attributesOf(marked({"$REQ8", "$~STKCKD"}), false, both));
    EXPECT_FALSE(first == none);
    EXPECT_FALSE(second == none);
    EXPECT_EQ(both.requirements & 1U, first.requirements & 1U);
    EXPECT_EQ(both.options, first.options | second.options);
    EXPECT_FALSE(both == first);
    EXPECT_FALSE(both == second);
}

TEST_F(ElfMemberAttributes, NoneWithoutMarkerSymbols) {
    attributes::FullAttr result;
    result.options = 5;
    const attributes::FullAttr before = result;
    EXPECT_FALSE(attributesOf(objectOf({{.name = "f$$BuildAttributes$$REQ8", .section = 1}}), false,
                              result));
    EXPECT_EQ(result, before);
}

TEST_F(ElfMemberAttributes, SectionAlwaysAnswers) {
    attributes::FullAttr plain;
    attributes::FullAttr rich;
    EXPECT_TRUE(attributesOf(objectOf({{.name = "f", .section = 1}}), true, plain));
    EXPECT_TRUE(attributesOf(testsupport::richElf().bytes(), true, rich));
    EXPECT_FALSE(plain == rich);
}

TEST_F(ElfMemberAttributes, BrokenMemberHasNone) {
    KeepingElfHandler elfHandler;
    arlib::Archive archive;
    archive.setErrorHandler(&handler);
    archive.setElfErrorHandler(&elfHandler);
    attributes::FullAttr result;
    const std::string bytes = ElfBuilder().header(HeaderField::Version, 3).bytes();
    for (const bool fromSection : {false, true}) {
        EXPECT_FALSE(attributesOf(archive, bytes, fromSection, result));
    }
    EXPECT_EQ(elfHandler.reports,
              Names(2, "ELF file has unsupported version code 3 (we only handle version 1)"));
    EXPECT_EQ(handler.reports, Names());
    archive.setElfErrorHandler(nullptr);
    EXPECT_FALSE(attributesOf(archive, bytes, true, result));
}

} // namespace
} // namespace arlibtest
