// From a section to a module: passes, targets, the order of things, and hostile sections.
#include "elfext/interface/build_attributes_parsers.h"

#include <string>
#include <vector>

#include "attributes/interface/build_attributes_cache.h"
#include "attributes/interface/feature_words.h"
#include "tests/attributes/record_fixtures.h"
#include "tests/elfext/attribute_section_builder.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using attributes::BuildAttributes;
using attributes::BuildAttributesBlock;
using attributes::IsaSet;
using attributes::test::Witness;
using namespace attributes::feature_word;
using Pass = BuildAttributesInjector::Pass;

// A module with the null section, three sections and three symbols.
class InjectorTest : public ModelTest, public testing::WithParamInterface<bool> {
protected:
    AttributeSectionBuilder build{GetParam()};

    void SetUp() override {
        ModelTest::SetUp();
        module().createNullSection(0);
        for (Section*& section : m_Sections) {
            section = makeSection();
        }
        for (Symbol*& symbol : m_Symbols) {
            symbol = module().createAbsoluteSymbol(named("symbol"), 0);
        }
    }

    bool inject(uint32_t pass, const std::string& section) {
        const ExactBytes bytes(section);
        return BuildAttributesInjector(&module(), pass)
            .parse(bytes.data(), bytes.size(), GetParam());
    }

    // All three passes; false if one of them found a fault.
    bool injectAll(const std::string& section) {
        bool isSound = true;
        for (const uint32_t pass : {Pass::Pass_File, Pass::Pass_Sections, Pass::Pass_Symbols}) {
            isSound = inject(pass, section) && isSound;
        }
        return isSound;
    }

    std::string qeabi(const std::string& scopes) const {
        return "A" + build.subsection("qeabi", scopes);
    }

    static uint32_t own(const ObjectWithBuildAttributes& target, attributes::Tag tag) {
        return target.getOwnBuildAttributes()->getNumber(tag);
    }

    Section* m_Sections[3] = {}; // 1 to 3
    Symbol* m_Symbols[3] = {};   // 1 to 3
};

INSTANTIATE_TEST_SUITE_P(ByteOrders, InjectorTest, testing::Bool(),
                         [](const auto& order) { return order.param ? "Little" : "Big"; });

TEST_P(InjectorTest, EachPassTakesItsScope) {
    const std::string section = qeabi(build.file(number(6, 8)) + build.sections({1}, number(6, 9)) +
                                      build.symbols({2}, number(6, 10)));
    EXPECT_TRUE(inject(Pass::Pass_Symbols, section));
    EXPECT_EQ(module().getOwnBuildAttributes(), nullptr);
    EXPECT_EQ(m_Sections[0]->getOwnBuildAttributes(), nullptr);
    EXPECT_EQ(own(*m_Symbols[1], attributes::Tag_CPU_arch), 10U);
    EXPECT_EQ(m_Symbols[0]->getOwnBuildAttributes(), nullptr);
    EXPECT_TRUE(inject(Pass::Pass_File, section));
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 8U);
    EXPECT_EQ(m_Sections[0]->getOwnBuildAttributes(), nullptr);
    EXPECT_TRUE(inject(Pass::Pass_Sections, section));
    EXPECT_EQ(own(*m_Sections[0], attributes::Tag_CPU_arch), 9U);
    EXPECT_EQ(m_Sections[1]->getOwnBuildAttributes(), nullptr);
    EXPECT_TRUE(inject(3, section));
}

TEST_P(InjectorTest, ARecordIsBuiltAndItsValueDerived) {
    const std::string stream = text(5, "m9") + number(6, 10) + number(7, 'A') + number(8, 1);
    EXPECT_TRUE(injectAll(qeabi(build.file(stream))));
    const BuildAttributes* const record = module().getOwnBuildAttributes();
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->getText(attributes::Tag_CPU_name), "m9");
    EXPECT_FALSE(record->derivedStale);
    EXPECT_TRUE(hasAll(record->fullAttr.isa, QEL_ISAv7));
}

TEST_P(InjectorTest, LaterAttributesBuildUponEarlierOnes) {
    EXPECT_TRUE(injectAll("A" +
                          build.subsection("qeabi", build.file(number(6, 10) + number(8, 1)) +
                                                        build.file(number(8, 0))) +
                          build.subsection("QEL", build.file(number(6, 1)))));
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 10U);
    EXPECT_EQ(own(module(), attributes::Tag_QEL_ISA_use), 0U);
    EXPECT_EQ(own(module(), attributes::Tag_AV_cpp_exceptions), 1U);
    EXPECT_NE(module().getOwnBuildAttributes()->fullAttr.options & attributes::option_bit::UX, 0U);
    // The parent's attributes are not copied into a child's record.
    EXPECT_TRUE(injectAll(qeabi(build.sections({1}, number(8, 1)))));
    EXPECT_FALSE(m_Sections[0]->getOwnBuildAttributes()->isPresent(attributes::Tag_CPU_arch));
}

TEST_P(InjectorTest, RawBlocksAreKeptForAnyVendor) {
    EXPECT_TRUE(injectAll("A" + build.subsection("other", build.file("\x01\x02\x03")) +
                          build.subsection("qeabi", build.file(number(6, 10))) +
                          build.subsection("qeabi", build.file(number(8, 1)))));
    EXPECT_EQ(module().getBuildAttributesBlockCount(), 2U);
    const BuildAttributesBlock* const other = module().findBuildAttributesBlock("other");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->getLength(), 3U);
    // The later block of a vendor replaces the earlier one; the record has both.
    const BuildAttributesBlock* const block = module().findBuildAttributesBlock("qeabi");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(block->getData()), block->getLength()),
              number(8, 1));
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 10U);
}

TEST_P(InjectorTest, AnotherVendorMakesNoRecord) {
    EXPECT_TRUE(injectAll("A" + build.subsection("QEABI", build.file(number(6, 10)))));
    EXPECT_EQ(module().getOwnBuildAttributes(), nullptr);
    EXPECT_EQ(module().getBuildAttributesBlockCount(), 1U);
}

TEST_P(InjectorTest, IndexesOutOfRangeAreFaultsAndOthersAreServed) {
    EXPECT_FALSE(injectAll(qeabi(build.sections({4, 1, 0xFFFFFFFF, 3}, number(6, 10)))));
    EXPECT_EQ(own(*m_Sections[0], attributes::Tag_CPU_arch), 10U);
    EXPECT_EQ(m_Sections[1]->getOwnBuildAttributes(), nullptr);
    EXPECT_EQ(own(*m_Sections[2], attributes::Tag_CPU_arch), 10U);
    EXPECT_FALSE(injectAll(qeabi(build.symbols({4, 3}, number(6, 9)))));
    EXPECT_EQ(own(*m_Symbols[2], attributes::Tag_CPU_arch), 9U);
    EXPECT_EQ(m_Symbols[0]->getOwnBuildAttributes(), nullptr);
}

TEST_P(InjectorTest, IndexZeroIsAFault) {
    const uint32_t indexes[] = {0, 1};
    const std::string stream = number(6, 10);
    BuildAttributesInjector sections(&module(), Pass::Pass_Sections);
    EXPECT_FALSE(sections.parseSectionSubSubsection("qeabi", indexes, 2, bytesOf(stream),
                                                    static_cast<uint32_t>(stream.size())));
    EXPECT_EQ(own(*m_Sections[0], attributes::Tag_CPU_arch), 10U);
    BuildAttributesInjector symbols(&module(), Pass::Pass_Symbols);
    EXPECT_FALSE(symbols.parseSymbolSubSubsection("qeabi", indexes, 2, bytesOf(stream),
                                                  static_cast<uint32_t>(stream.size())));
    EXPECT_EQ(own(*m_Symbols[0], attributes::Tag_CPU_arch), 10U);
}

TEST_P(InjectorTest, AnEmptyListTouchesNothing) {
    EXPECT_TRUE(injectAll(qeabi(build.sections({}, number(6, 10)) + build.symbols({}, "\x01"))));
    for (const Section* const section : m_Sections) {
        EXPECT_FALSE(section->hasBuildAttributes());
    }
    EXPECT_EQ(module().getBuildAttributesCache()->getBlockCount(), 0U);
}

TEST_P(InjectorTest, ABadStreamIsAFaultAndWhatCouldBeReadIsKept) {
    EXPECT_FALSE(injectAll(qeabi(build.file(number(6, 10) + uleb(8)))));
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 10U);
    EXPECT_NE(module().findBuildAttributesBlock("qeabi"), nullptr);
    EXPECT_FALSE(injectAll("A" + build.subsection("QEL", build.sections({1, 2}, uleb(3)))));
    EXPECT_NE(m_Sections[1]->getOwnBuildAttributes(), nullptr);
}

TEST_P(InjectorTest, EqualTargetsShareOneRecordAndOneBlock) {
    EXPECT_TRUE(injectAll(
        qeabi(build.sections({1, 2, 3}, number(6, 10)) + build.symbols({3, 1}, number(6, 10)))));
    EXPECT_EQ(m_Sections[0]->getOwnBuildAttributes(), m_Symbols[2]->getOwnBuildAttributes());
    EXPECT_EQ(m_Sections[0]->getBuildAttributesBlock(0), m_Symbols[0]->getBuildAttributesBlock(0));
    EXPECT_EQ(module().getBuildAttributesCache()->getRecordCount(), 1U);
    EXPECT_EQ(module().getBuildAttributesCache()->getBlockCount(), 1U);
}

TEST_P(InjectorTest, TargetsWithDifferentRecordsAreDecodedApart) {
    EXPECT_TRUE(
        injectAll(qeabi(build.sections({1}, number(6, 1)) + build.sections({2}, number(6, 2)) +
                        build.sections({1, 2, 3, 2}, number(8, 1)))));
    EXPECT_EQ(own(*m_Sections[0], attributes::Tag_CPU_arch), 1U);
    EXPECT_EQ(own(*m_Sections[1], attributes::Tag_CPU_arch), 2U);
    EXPECT_FALSE(m_Sections[2]->getOwnBuildAttributes()->isPresent(attributes::Tag_CPU_arch));
    for (const Section* const section : m_Sections) {
        EXPECT_EQ(own(*section, attributes::Tag_QEL_ISA_use), 1U);
    }
}

TEST_P(InjectorTest, AnIndexTwiceIsServedTwice) {
    const std::string stream = uleb(65) + number(6, 11) + '\0';
    EXPECT_TRUE(injectAll(qeabi(build.sections({1, 1, 2}, stream))));
    EXPECT_EQ(m_Sections[0]->getOwnBuildAttributes()->getAlsoCompatibilityTagCount(), 2U);
    EXPECT_EQ(m_Sections[1]->getOwnBuildAttributes()->getAlsoCompatibilityTagCount(), 1U);
}

TEST_P(InjectorTest, TheHighestVersionOfTheModuleRises) {
    const auto highest = [this] { return module().getBuildAttributesCache()->getHighestVersion(); };
    const auto version = [this](uint32_t number) {
        return "A" + build.subsection("QEL", build.sections({1}, test::number(18, number)));
    };
    EXPECT_EQ(highest(), 0U);
    EXPECT_TRUE(injectAll(version(5)));
    EXPECT_EQ(highest(), 5U);
    EXPECT_TRUE(injectAll(version(3)));
    EXPECT_EQ(highest(), 5U);
    EXPECT_TRUE(injectAll(version(0x107)));
    EXPECT_EQ(highest(), 7U);
    EXPECT_TRUE(injectAll(qeabi(build.file(number(18, 9)))));
    EXPECT_EQ(highest(), 7U);
}

TEST_P(InjectorTest, NamesOfVendorsOutliveTheSection) {
    {
        const std::string section = qeabi(build.file(both(32, 1, "gnat")));
        EXPECT_TRUE(injectAll(section));
    }
    EXPECT_NE(module().getOwnBuildAttributes()->findCompatibilityTag(1, "gnat"), nullptr);
}

// Corrections after decoding, by the value that the record had before.

class CorrectionTest : public InjectorTest {
protected:
    // Gives the module a record with this value and applies a body.
    const BuildAttributes& applyTo(const IsaSet& isa, uint64_t options, const std::string& stream) {
        BuildAttributes record;
        record.fullAttr.isa = isa;
        record.fullAttr.options = options;
        record.setTag(attributes::Tag_ABI_FP_16bit_format, ++m_Count); // tells records apart
        module().setBuildAttributes(record);
        EXPECT_TRUE(inject(Pass::Pass_File, qeabi(build.file(stream))));
        return *module().getOwnBuildAttributes();
    }

    uint32_t m_Count = 0;
};

INSTANTIATE_TEST_SUITE_P(ByteOrders, CorrectionTest, testing::Bool(),
                         [](const auto& order) { return order.param ? "Little" : "Big"; });

TEST_P(CorrectionTest, ModelOfFloatingPoint) {
    const auto modelOf = [](const BuildAttributes& record) {
        return Witness(record).slots[attributes::Tag_ABI_FP_number_model] + " " +
               Witness(record).slots[attributes::Tag_ABI_FP_denormal];
    };
    EXPECT_EQ(modelOf(applyTo({}, 0x700000, "")), "- -");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x700000, "")), "3 -");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x300000, "")), "3 -");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x100000, "")), "2 -");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x500000, "")), "2 -");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x200000, "")), "- 2");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0, "")), "- 2");
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES | FZ_POSZERO, 0, "")), "- -");
    // Whatever the body said.
    EXPECT_EQ(modelOf(applyTo(PURE_DOUBLES, 0x300000, number(23, 1) + number(20, 1))), "3 1");
}

TEST_P(CorrectionTest, ArchitectureOne) {
    const auto archOf = [](const BuildAttributes& record) {
        return Witness(record).slots[attributes::Tag_CPU_arch];
    };
    EXPECT_EQ(archOf(applyTo(OS_EXTENSION, 0, number(6, 1))), "2");
    EXPECT_EQ(archOf(applyTo({}, 0, number(6, 1))), "1");
    EXPECT_EQ(archOf(applyTo(OS_EXTENSION, 0, number(6, 3))), "3");
    EXPECT_EQ(archOf(applyTo(OS_EXTENSION, 0, "")), "-");
}

TEST_P(CorrectionTest, ARecordThatIsDecodedAtOnceStaysAsItWasWritten) {
    const std::string stream = number(6, 1) + number(23, 1) + number(8, 1) + number(9, 1);
    EXPECT_TRUE(injectAll(qeabi(build.file(stream))));
    EXPECT_EQ(own(module(), attributes::Tag_ABI_FP_number_model), 1U);
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 1U);
    // The next body meets the value that was derived.
    ASSERT_TRUE(hasAll(module().getOwnBuildAttributes()->fullAttr.isa, PURE_DOUBLES | FZ_POSZERO));
    EXPECT_TRUE(injectAll(qeabi(build.file(number(19, 1)))));
    EXPECT_EQ(own(module(), attributes::Tag_ABI_FP_number_model), 1U);
    EXPECT_TRUE(injectAll(qeabi(build.file(number(20, 0)))));
    EXPECT_EQ(own(module(), attributes::Tag_ABI_FP_number_model), 3U);
}

TEST_P(CorrectionTest, TheOwnVendorsBodiesAreNotCorrected) {
    BuildAttributes record;
    record.fullAttr.isa = PURE_DOUBLES | OS_EXTENSION;
    record.m_StandardTags.setNumber(attributes::Tag_CPU_arch, 1);
    module().setBuildAttributes(record);
    EXPECT_TRUE(injectAll("A" + build.subsection("QEL", build.file(number(18, 1)))));
    EXPECT_EQ(own(module(), attributes::Tag_CPU_arch), 1U);
    EXPECT_FALSE(module().getOwnBuildAttributes()->isPresent(attributes::Tag_ABI_FP_denormal));
}

// Hostile sections.

TEST_P(InjectorTest, EveryCutIsTaken) {
    const std::string whole =
        qeabi(build.file(text(5, "m9") + number(6, 10) + both(32, 1, "gnat") + uleb(65) +
                         number(6, 11) + '\0') +
              build.sections({1, 2}, number(6, 9)) + build.symbols({1, 3}, number(8, 1))) +
        build.subsection("QEL", build.file(number(4, 1)) + build.symbols({2}, number(20, 9)));
    for (size_t size = 0; size <= whole.size(); ++size) {
        injectAll(whole.substr(0, size));
    }
    EXPECT_TRUE(injectAll(whole));
    for (size_t place = 1; place < whole.size(); ++place) {
        for (const char value : {'\x00', '\x01', '\x7F', '\x80', '\xFF'}) {
            std::string broken = whole;
            broken[place] = value;
            injectAll(broken);
        }
    }
    EXPECT_NE(module().getOwnBuildAttributes(), nullptr);
}

TEST_P(InjectorTest, AllEntriesOfALongBodyAreKept) {
    std::string stream;
    for (uint32_t i = 0; i < 200000; ++i) {
        stream += both(32, i, "v") + uleb(65) + number(6, i + 1) + '\0';
    }
    EXPECT_TRUE(inject(Pass::Pass_File, qeabi(build.file(stream))));
    EXPECT_EQ(module().getOwnBuildAttributes()->getCompatibilityTagCount(), 200000U);
    EXPECT_EQ(module().getOwnBuildAttributes()->getAlsoCompatibilityTagCount(), 200000U);
}

TEST_P(InjectorTest, ALongListWithALongBodyIsDecodedOnce) {
    std::string stream;
    for (uint32_t i = 0; i < 100000; ++i) {
        stream += number(6, i % 20);
    }
    std::vector<uint64_t> indexes;
    for (uint32_t i = 0; i < 100000; ++i) {
        indexes.push_back(1 + i % 3);
    }
    EXPECT_TRUE(inject(Pass::Pass_Symbols, qeabi(build.symbols(indexes, stream))));
    EXPECT_EQ(module().getBuildAttributesCache()->getRecordCount(), 1U);
}

// Each of many bodies adds an entry to what the module has; copying all of them each time would be
// work without end.
TEST_P(InjectorTest, EndlessWorkMakesASectionCorrupt) {
    std::string scopes;
    for (uint32_t i = 0; i < 50000; ++i) {
        scopes += build.file(both(32, i, "v"));
    }
    EXPECT_FALSE(inject(Pass::Pass_File, qeabi(scopes)));
    const uint32_t count = module().getOwnBuildAttributes()->getCompatibilityTagCount();
    EXPECT_GT(count, 100U);
    EXPECT_LT(count, 5000U);
}

// The same with a single entry whose text is long. Each record would have a copy of it.
TEST_P(InjectorTest, LongTextsAreNotCopiedWithoutEnd) {
    constexpr uint32_t length = 1U << 16;
    std::string scopes = build.file(text(65, '\5' + std::string(length, 't')));
    for (uint32_t i = 0; i < 2000; ++i) {
        scopes += build.file(number(6, i));
    }
    EXPECT_FALSE(inject(Pass::Pass_File, qeabi(scopes)));
    EXPECT_GT(module().getBuildAttributesCache()->getRecordCount(), 10U);
    EXPECT_LT(module().getBuildAttributesCache()->getRecordCount(), 200U);
}

// Names of vendors are not copied, but read whenever a record is looked up.
TEST_P(InjectorTest, LongNamesAreNotReadWithoutEnd) {
    std::string scopes = build.file(both(32, 1, std::string(1U << 16, 'n')));
    for (uint32_t i = 0; i < 2000; ++i) {
        scopes += build.file(number(6, i));
    }
    EXPECT_FALSE(inject(Pass::Pass_File, qeabi(scopes)));
    EXPECT_GT(module().getBuildAttributesCache()->getRecordCount(), 10U);
    EXPECT_LT(module().getBuildAttributesCache()->getRecordCount(), 200U);
}

TEST_P(InjectorTest, ALongNameOfAVendorIsNotReadWithoutEnd) {
    std::string scopes;
    for (uint32_t i = 0; i < 20000; ++i) {
        scopes += build.file(std::to_string(i));
    }
    EXPECT_FALSE(
        inject(Pass::Pass_File, "A" + build.subsection(std::string(1U << 20, 'v'), scopes)));
    EXPECT_EQ(module().getBuildAttributesBlockCount(), 1U);
    EXPECT_GT(module().getBuildAttributesCache()->getBlockCount(), 100U);
    EXPECT_LT(module().getBuildAttributesCache()->getBlockCount(), 1000U);
}

// Each tag looks for the own vendor among all entries.
TEST_P(InjectorTest, ManyTagsThatSettleTheOwnVendorAmongManyEntries) {
    constexpr uint32_t count = 200000;
    std::string entries;
    std::string tags;
    for (uint32_t i = 0; i < count; ++i) {
        entries += both(32, i, "v");
        tags += number(4, 0);
    }
    EXPECT_TRUE(inject(Pass::Pass_File,
                       qeabi(build.file(entries)) + build.subsection("QEL", build.file(tags))));
    EXPECT_EQ(module().getOwnBuildAttributes()->getCompatibilityTagCount(), count);
}

TEST_P(InjectorTest, ManyBodiesThatCopyLittleAreSound) {
    std::string scopes;
    for (uint32_t i = 0; i < 50000; ++i) {
        scopes += build.symbols({1 + i % 3}, number(6, i));
    }
    EXPECT_TRUE(inject(Pass::Pass_Symbols, qeabi(scopes)));
    EXPECT_EQ(own(*m_Symbols[0], attributes::Tag_CPU_arch), 49998U);
}

TEST_P(InjectorTest, ManyVendorsAreKept) {
    std::string section = "A";
    for (uint32_t i = 0; i < 20000; ++i) {
        section += build.subsection("v" + std::to_string(i), build.file("x"));
    }
    EXPECT_TRUE(inject(Pass::Pass_File, section));
    EXPECT_EQ(module().getBuildAttributesBlockCount(), 20000U);
}

TEST_P(InjectorTest, ManyVendorsWithNamesThatCollideAreKept) {
    constexpr uint32_t pairs = 16;
    std::string section = "A";
    for (uint32_t i = 0; i < 1U << pairs; ++i) {
        section += build.subsection(attributes::test::collidingText(i, pairs), build.file("x"));
    }
    EXPECT_TRUE(inject(Pass::Pass_File, section));
    EXPECT_EQ(module().getBuildAttributesBlockCount(), 1U << pairs);
}

} // namespace
} // namespace elfext::test
