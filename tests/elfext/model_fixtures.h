// What the tests of the object model share: a module, and the texts of failed checks.
#pragma once

#include "elfext/interface/object_module.h"
#include "tests/elfext/container_fixtures.h"

#include <memory>
#include <string>
#include <vector>

namespace elfext::test {

// The allocators and an empty module, up for one test.
class ModelTest : public ContainerTest {
protected:
    void SetUp() override {
        ContainerTest::SetUp();
        m_Module = std::make_unique<ObjectModule>();
    }
    void TearDown() override {
        m_Module.reset();
        ContainerTest::TearDown();
    }
    ObjectModule& module() { return *m_Module; }

    Section* makeSection(const char* name = ".text") {
        return module().createSection(name, SHT_PROGBITS, SHF_ALLOC);
    }
    static SymbolFields named(const char* name, uint32_t type = STT_NOTYPE) {
        return {.m_Name = name,
                .m_Size = 0,
                .m_Type = type,
                .m_Binding = STB_GLOBAL,
                .m_Visibility = STV_DEFAULT};
    }

private:
    std::unique_ptr<ObjectModule> m_Module;
};

// What a list holds, for comparing.
template <typename List>
auto elementsOf(const List& list) {
    std::vector<std::decay_t<decltype(list[0])>> elements;
    for (uint32_t i = 0; i < list.getSize(); ++i) {
        elements.push_back(list[i]);
    }
    return elements;
}

// The names of the symbols in a list, "(null)" for none.
template <typename List>
std::vector<std::string> namesOf(const List& symbols) {
    std::vector<std::string> names;
    for (const Symbol* const symbol : elementsOf(symbols)) {
        names.emplace_back(symbol->getName() != nullptr ? symbol->getName() : "(null)");
    }
    return names;
}

using Names = std::vector<std::string>;

} // namespace elfext::test
