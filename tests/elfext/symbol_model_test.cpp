// One symbol: its fields, its category, its value.
#include "elfext/interface/version_records.h"
#include "tests/elfext/model_fixtures.h"

namespace elfext::test {
namespace {

using SymbolTest = ModelTest;
using SymbolDeathTest = ModelTest;

constexpr const char* source = "elfext/src/symbol";
constexpr const char* creation = "elfext/src/symbol_creation";

TEST_F(SymbolTest, AConstructedSymbolIsUndefined) {
    const Symbol symbol(&module(), "f", 1, 2, 3, 1, true);
    EXPECT_STREQ(symbol.getName(), "f");
    EXPECT_EQ(symbol.getSize(), 1U);
    EXPECT_EQ(symbol.getType(), 2U);
    EXPECT_EQ(symbol.getBinding(), 3U);
    EXPECT_EQ(symbol.getVisibility(), 1U);
    EXPECT_TRUE(symbol.isDynamic());
    EXPECT_EQ(symbol.getCategory(), Symbol::Category_Undefined);
    EXPECT_EQ(symbol.getObjectModule(), &module());
    EXPECT_EQ(symbol.getSymbolVersionDefinition(), nullptr);
    EXPECT_EQ(symbol.getSymbolVersionRequirement(), nullptr);
    EXPECT_EQ(symbol.getLinkedSymbol(), nullptr);
    EXPECT_EQ(module().getSymbolCount(), 0U);
}

TEST_F(SymbolTest, CategoriesHaveTheirNumbers) {
    EXPECT_EQ(Symbol::Category_Absolute, 0U);
    EXPECT_EQ(Symbol::Category_Hosted, 1U);
    EXPECT_EQ(Symbol::Category_Common, 2U);
    EXPECT_EQ(Symbol::Category_Undefined, 3U);
}

TEST_F(SymbolTest, FieldsHoldWhatIsSet) {
    Symbol* const symbol = module().createUndefinedSymbol(
        {.m_Name = "f", .m_Size = 5, .m_Type = 1, .m_Binding = 2, .m_Visibility = 3});
    EXPECT_EQ(symbol->getSize(), 5U);
    EXPECT_EQ(symbol->getType(), 1U);
    EXPECT_EQ(symbol->getBinding(), 2U);
    EXPECT_EQ(symbol->getVisibility(), 3U);
    EXPECT_FALSE(symbol->isDynamic());
    char name[] = "g";
    symbol->setName(name);
    name[0] = 'x';
    symbol->setSize(0x123456789A);
    symbol->setType(6);
    symbol->setBinding(0);
    symbol->setVisibility(1);
    EXPECT_STREQ(symbol->getName(), "g");
    EXPECT_EQ(symbol->getSize(), 0x123456789AU);
    EXPECT_EQ(symbol->getType(), 6U);
    EXPECT_EQ(symbol->getBinding(), 0U);
    EXPECT_EQ(symbol->getVisibility(), 1U);
    symbol->setName(nullptr);
    EXPECT_EQ(symbol->getName(), nullptr);
}

TEST_F(SymbolTest, EachCategoryHasItsValueAndList) {
    Section* const text = makeSection();
    const auto one = [](Symbol* symbol) { return std::vector<Symbol*>{symbol}; };
    Symbol* const absolute = module().createAbsoluteSymbol(named("a"), 7);
    EXPECT_EQ(absolute->getCategory(), Symbol::Category_Absolute);
    EXPECT_EQ(absolute->getAbsoluteValue(), 7U);
    EXPECT_EQ(elementsOf(module().getAbsoluteSymbols()), one(absolute));
    Symbol* const common = module().createCommonSymbol(named("c"), 16);
    EXPECT_EQ(common->getCategory(), Symbol::Category_Common);
    EXPECT_EQ(common->getCommonValue(), 16U);
    EXPECT_EQ(elementsOf(module().getCommonSymbols()), one(common));
    Symbol* const undefined = module().createUndefinedSymbol(named("u"));
    EXPECT_EQ(undefined->getCategory(), Symbol::Category_Undefined);
    EXPECT_EQ(elementsOf(module().getUndefinedSymbols()), one(undefined));
    Symbol* const hosted = module().createHostedSymbol(named("h"), text, 12);
    EXPECT_EQ(hosted->getCategory(), Symbol::Category_Hosted);
    EXPECT_EQ(hosted->getSection(), text);
    EXPECT_EQ(hosted->getOffset(), 12U);
    EXPECT_EQ(elementsOf(text->getHostedSymbols()), one(hosted));
    EXPECT_EQ(module().getSymbolCount(), 4U);
    EXPECT_EQ(module().getDynamicSymbolCount(), 0U);
}

TEST_F(SymbolTest, DynamicSymbolsHaveListsOfTheirOwn) {
    Section* const text = makeSection();
    const auto one = [](Symbol* symbol) { return std::vector<Symbol*>{symbol}; };
    Symbol* const absolute = module().createDynamicAbsoluteSymbol(named("a"), 7);
    EXPECT_TRUE(absolute->isDynamic());
    EXPECT_EQ(absolute->getAbsoluteValue(), 7U);
    EXPECT_EQ(elementsOf(module().getAbsoluteDynamicSymbols()), one(absolute));
    Symbol* const common = module().createDynamicCommonSymbol(named("c"), 16);
    EXPECT_EQ(elementsOf(module().getCommonDynamicSymbols()), one(common));
    Symbol* const undefined = module().createDynamicUndefinedSymbol(named("u"));
    EXPECT_EQ(elementsOf(module().getUndefinedDynamicSymbols()), one(undefined));
    Symbol* const hosted = module().createDynamicHostedSymbol(named("h"), text, 12);
    EXPECT_EQ(elementsOf(text->getHostedDynamicSymbols()), one(hosted));
    EXPECT_EQ(elementsOf(module().getDynamicSymbols()),
              (std::vector<Symbol*>{absolute, common, undefined, hosted}));
    EXPECT_EQ(module().getSymbolCount(), 0U);
    EXPECT_EQ(text->getHostedSymbols().getSize(), 0U);
    EXPECT_EQ(module().getAbsoluteSymbols().getSize(), 0U);
}

// How often the symbol is in any of the lists of categories.
uint32_t placesOf(const ObjectModule& module, const Symbol* symbol) {
    uint32_t places = 0;
    const auto count = [&places, symbol](const fast_array<Symbol*>& list) {
        for (const Symbol* const listed : list) {
            places += listed == symbol ? 1U : 0U;
        }
    };
    count(module.getAbsoluteSymbols());
    count(module.getCommonSymbols());
    count(module.getUndefinedSymbols());
    count(module.getAbsoluteDynamicSymbols());
    count(module.getCommonDynamicSymbols());
    count(module.getUndefinedDynamicSymbols());
    for (const Section* const section : module.getSections()) {
        count(section->getHostedSymbols());
        count(section->getHostedDynamicSymbols());
    }
    return places;
}

TEST_F(SymbolTest, ChangingTheCategoryMovesTheSymbol) {
    Section* const text = makeSection();
    Section* const data = makeSection(".data");
    for (Symbol* const symbol : {module().createUndefinedSymbol(named("s")),
                                 module().createDynamicUndefinedSymbol(named("d"))}) {
        const bool isDynamic = symbol->isDynamic();
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        symbol->makeHosted(text, 4);
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        EXPECT_EQ((isDynamic ? text->getHostedDynamicSymbols() : text->getHostedSymbols())[0],
                  symbol);
        symbol->makeHosted(data, 8);
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        EXPECT_EQ(symbol->getSection(), data);
        EXPECT_EQ(symbol->getOffset(), 8U);
        symbol->makeAbsolute(3);
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        EXPECT_EQ(symbol->getAbsoluteValue(), 3U);
        symbol->makeCommon(2);
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        EXPECT_EQ(symbol->getCommonValue(), 2U);
        symbol->makeUndefined();
        EXPECT_EQ(placesOf(module(), symbol), 1U);
        EXPECT_EQ(symbol->getAddress(), 0U);
    }
    EXPECT_EQ(module().getSymbolCount(), 1U);
    EXPECT_EQ(module().getDynamicSymbolCount(), 1U);
}

TEST_F(SymbolDeathTest, EachValueIsForItsCategory) {
    Section* const text = makeSection();
    Symbol* const absolute = module().createAbsoluteSymbol(named("a"), 1);
    Symbol* const hosted = module().createHostedSymbol(named("h"), text, 1);
    EXPECT_FAULT(hosted->getAbsoluteValue(), source, "m_Category == Category_Absolute");
    EXPECT_FAULT(hosted->setAbsoluteValue(1), source, "m_Category == Category_Absolute");
    EXPECT_FAULT(absolute->getCommonValue(), source, "m_Category == Category_Common");
    EXPECT_FAULT(absolute->setCommonValue(1), source, "m_Category == Category_Common");
    EXPECT_FAULT(absolute->getSection(), source, "m_Category == Category_Hosted");
    EXPECT_FAULT(absolute->getOffset(), source, "m_Category == Category_Hosted");
    EXPECT_FAULT(absolute->setOffset(1), source, "m_Category == Category_Hosted");
}

TEST_F(SymbolDeathTest, AHostIsASectionOfTheSameModule) {
    ObjectModule other;
    Section* const foreign = other.createSection("x", 1, 0);
    Symbol* const symbol = module().createUndefinedSymbol(named("u"));
    EXPECT_FAULT(symbol->makeHosted(foreign, 0), creation,
                 "section->getObjectModule() == m_ObjectModule");
    EXPECT_FAULT(module().createHostedSymbol(named("h"), nullptr, 0), creation, "section != NULL");
}

TEST_F(SymbolTest, AddressesComeFromValuesAndSections) {
    Section* const text = makeSection();
    text->setAddress(0x1000);
    EXPECT_EQ(module().createAbsoluteSymbol(named("a"), 7)->getAddress(), 7U);
    EXPECT_EQ(module().createCommonSymbol(named("c"), 8)->getAddress(), 0U);
    EXPECT_EQ(module().createUndefinedSymbol(named("u"))->getAddress(), 0U);
    EXPECT_EQ(module().createHostedSymbol(named("h"), text, 5)->getAddress(), 0x1005U);
    EXPECT_EQ(module().createHostedSymbol(named("f", STT_FUNC), text, 5)->getAddress(), 0x1005U);
}

TEST_F(SymbolTest, AbiValuesOfSymbolsThatAreNotFunctions) {
    Section* const text = makeSection();
    text->setAddress(0x1000);
    const Symbol* const hosted = module().createHostedSymbol(named("h", STT_OBJECT), text, 5);
    for (const auto& [type, value] :
         {std::pair{0U, 5U}, {1U, 5U}, {2U, 0x1005U}, {3U, 0x1005U}, {4U, 0x1005U}, {5U, 5U}}) {
        module().setType(type);
        EXPECT_EQ(hosted->getAbiValue(), value) << type;
    }
    EXPECT_EQ(module().createAbsoluteSymbol(named("a"), 7)->getAbiValue(), 7U);
    EXPECT_EQ(module().createCommonSymbol(named("c"), 9)->getAbiValue(), 9U);
    EXPECT_EQ(module().createUndefinedSymbol(named("u"))->getAbiValue(), 0U);
}

TEST_F(SymbolTest, AbiValuesOfFunctionsLackBit0) {
    Section* const text = makeSection();
    text->setAddress(0x1000);
    const Symbol* const hosted = module().createHostedSymbol(named("h", STT_FUNC), text, 5);
    EXPECT_EQ(hosted->getAbiValue(), 4U);
    module().setType(ET_EXEC);
    EXPECT_EQ(hosted->getAbiValue(), 0x1004U);
    EXPECT_EQ(module().createAbsoluteSymbol(named("a", STT_FUNC), 7)->getAbiValue(), 6U);
    EXPECT_EQ(module().createCommonSymbol(named("c", STT_FUNC), 9)->getAbiValue(), 8U);
    EXPECT_EQ(module().createUndefinedSymbol(named("u", STT_FUNC))->getAbiValue(), 0U);
    // The bit is taken from the offset alone.
    text->setAddress(0x1001);
    EXPECT_EQ(hosted->getAbiValue(), 0x1005U);
}

TEST_F(SymbolTest, BuildAttributesSymbolsAreToldByNameAndCategory) {
    Section* const text = makeSection();
    struct Row {
        const char* name;
        bool hosted;
        bool absolute;
    };
    const Row rows[] = {
        {"BuildAttributes$", true, true},
        {"BuildAttributes$$X", true, true},
        {"BuildAttributes", false, false},
        {"f$$BuildAttributes$X", false, true},
        {"f$BuildAttributes$X", false, false},
        {"$$BuildAttributes$", false, true},
        {"xBuildAttributes$", false, false},
        {"", false, false},
        {nullptr, false, false},
    };
    for (const Row& row : rows) {
        const auto fields = named(row.name);
        EXPECT_EQ(module().createHostedSymbol(fields, text, 0)->isBuildAttributesSymbol(),
                  row.hosted);
        EXPECT_EQ(module().createAbsoluteSymbol(fields, 0)->isBuildAttributesSymbol(),
                  row.absolute);
        EXPECT_FALSE(module().createCommonSymbol(fields, 0)->isBuildAttributesSymbol());
        EXPECT_FALSE(module().createUndefinedSymbol(fields)->isBuildAttributesSymbol());
    }
}

TEST_F(SymbolTest, KindsAreToldByName) {
    const std::pair<const char*, SymbolKind> rows[] = {
        {"$a", SymbolKind_Mapping},
        {"$d", SymbolKind_Mapping},
        {"$t", SymbolKind_Mapping},
        {"$x", SymbolKind_Mapping},
        {"$a.", SymbolKind_Mapping},
        {"$d.realdata", SymbolKind_Mapping},
        {"$t.1", SymbolKind_Mapping},
        {"$x.x", SymbolKind_Mapping},
        {"$ab", SymbolKind_Ordinary},
        {"$dx.", SymbolKind_Ordinary},
        {"$b", SymbolKind_SecondMapping},
        {"$f", SymbolKind_SecondMapping},
        {"$p", SymbolKind_SecondMapping},
        {"$v", SymbolKind_SecondMapping},
        {"$b.x", SymbolKind_SecondMapping},
        {"$foo", SymbolKind_SecondMapping},
        {"$v0$QEL", SymbolKind_SecondMapping},
        {"$c", SymbolKind_Ordinary},
        {"$", SymbolKind_Ordinary},
        {"$$", SymbolKind_Ordinary},
        {"$A", SymbolKind_Ordinary},
        {"a", SymbolKind_Ordinary},
        {"x$a", SymbolKind_Ordinary},
        {"", SymbolKind_Ordinary},
        {nullptr, SymbolKind_Ordinary},
    };
    for (const auto& [name, kind] : rows) {
        EXPECT_EQ(getSymbolKind(name), kind) << (name != nullptr ? name : "");
        EXPECT_EQ(module().createUndefinedSymbol(named(name))->getKind(), kind);
    }
    EXPECT_EQ(SymbolKind_Ordinary, 1U);
    EXPECT_EQ(SymbolKind_Mapping, 2U);
    EXPECT_EQ(SymbolKind_SecondMapping, 4U);
    EXPECT_EQ(SymbolKind_All, 7U);
}

TEST_F(SymbolTest, ALinkedSymbolIsOfTheSameModule) {
    Symbol* const one = module().createUndefinedSymbol(named("a"));
    Symbol* const two = module().createDynamicUndefinedSymbol(named("a"));
    one->setLinkedSymbol(two);
    EXPECT_EQ(one->getLinkedSymbol(), two);
    one->setLinkedSymbol(nullptr);
    EXPECT_EQ(one->getLinkedSymbol(), nullptr);
}

TEST_F(SymbolDeathTest, AForeignSymbolIsNotLinked) {
    ObjectModule other;
    Symbol* const foreign = other.createUndefinedSymbol(named("a"));
    Symbol* const symbol = module().createUndefinedSymbol(named("a"));
    EXPECT_FAULT(symbol->setLinkedSymbol(foreign), source,
                 "symbol == NULL || symbol->getObjectModule() == m_ObjectModule");
}

TEST_F(SymbolTest, VersionsGoWithDynamicSymbols) {
    SymbolVersionDefinition* const definition = module().createSymbolVersionDefinition(2, 0);
    SymbolVersionRequirement* const requirement =
        module().createSymbolVersionRequirement(3, 0, "libc.so", "V1");
    Symbol* const symbol = module().createDynamicAbsoluteSymbol(named("a"), 0);
    symbol->setSymbolVersionDefinition(definition);
    EXPECT_EQ(symbol->getSymbolVersionDefinition(), definition);
    symbol->setSymbolVersionRequirement(requirement);
    EXPECT_EQ(symbol->getSymbolVersionRequirement(), requirement);
    symbol->makeUndefined();
    EXPECT_EQ(symbol->getSymbolVersionDefinition(), nullptr);
    EXPECT_EQ(symbol->getSymbolVersionRequirement(), requirement);
}

TEST_F(SymbolDeathTest, OnlyDefinedDynamicSymbolsHaveADefinition) {
    SymbolVersionDefinition* const definition = module().createSymbolVersionDefinition(2, 0);
    Symbol* const plain = module().createAbsoluteSymbol(named("a"), 0);
    Symbol* const undefined = module().createDynamicUndefinedSymbol(named("a"));
    EXPECT_FAULT(plain->setSymbolVersionDefinition(definition), source, "m_IsDynamic");
    EXPECT_FAULT(plain->setSymbolVersionRequirement(nullptr), source, "m_IsDynamic");
    EXPECT_FAULT(undefined->setSymbolVersionDefinition(definition), source,
                 "getCategory() != Category_Undefined");
}

} // namespace
} // namespace elfext::test
