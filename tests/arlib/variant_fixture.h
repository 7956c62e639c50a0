// What the tests of variants share: object modules whose names and attributes are written in plain
// text, a handler that keeps which group it was told of, and the symbol table as lines.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "arlib/interface/symbol_name_list.h"
#include "attributes/interface/decoration.h"
#include "tests/arlib/arlib_fixture.h"

namespace arlibtest {

// An object module whose contents are lines: the names that it defines, and behind "=" a
// decoration, or behind "+" the one that its attributes section would have.
class WrittenModuleType final : public arlib::ObjectModuleArchiveMemberType {
public:
    bool getSymbols(arlib::ArchiveMember& member, arlib::SymbolNameList& names,
                    std::string&) const override {
        for (const std::string& line : linesOf(member)) {
            if (line[0] != '=' && line[0] != '+') {
                names.add(line);
            }
        }
        return true;
    }
    bool getBuildAttributes(arlib::ArchiveMember& member, attributes::FullAttr& result,
                            bool fromSection) const override {
        asked().push_back(member.getName());
        for (const std::string& line : linesOf(member)) {
            if (line[0] == (fromSection ? '+' : '=')) {
                attributes::parseDecoration(result, line.c_str() + 1);
                return true;
            }
        }
        return false;
    }

    // The members that were asked for their attributes.
    static Names& asked() {
        static Names names;
        return names;
    }

    static const WrittenModuleType* instance() {
        static const WrittenModuleType type;
        return &type;
    }

private:
    static Names linesOf(arlib::ArchiveMember& member) {
        const std::string text = contentsOf(&member);
        Names lines;
        for (size_t start = 0; start < text.size();) {
            const size_t end = text.find('\n', start);
            lines.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        return lines;
    }
};

// Where a text stands in a table of so many places, by the hash that all names have.
inline uint32_t placeOf(const std::string& text, uint32_t places) {
    uint32_t hash = 0;
    for (const char c : text) {
        hash = hash * 31 + static_cast<unsigned char>(c);
    }
    return hash % places;
}

// Keeps "slot: members" of the reports about variants, and answers what it is set to.
class VariantHandler final : public arlib::ErrorHandler {
public:
    bool report(arlib::Archive*, arlib::ErrorKind, const char* text) override {
        return kept(std::string("1: ") + text);
    }
    bool noBaseVariant(arlib::Archive*, arlib::MemberGroup group) override {
        return kept("31:" + listed(group));
    }
    bool multipleBaseVariants(arlib::Archive*, arlib::MemberGroup group) override {
        return kept("32:" + listed(group));
    }
    bool identicalVariants(arlib::Archive*, const char* suffix, arlib::MemberGroup group) override {
        return kept("33:" + listed(group) + " " + suffix);
    }
    bool attributesNotDecorable(arlib::Archive*, arlib::ArchiveMember* member,
                                arlib::MemberGroup group) override {
        return kept("34: " + std::string(member->getName()) + " of" + listed(group));
    }
    bool commonAttributesClash(arlib::Archive*, arlib::MemberGroup group,
                               const attributes::FullAttr& common) override {
        clashing = common;
        return kept("35:" + listed(group));
    }
    bool memberAttributesClash(arlib::Archive*, arlib::ArchiveMember* member,
                               const attributes::FullAttr& combined) override {
        clashing = combined;
        return kept("36: " + std::string(member->getName()));
    }

    // The report of that slot, and any if it is empty, is answered with false.
    std::optional<std::string> stopsAt;
    Names reports;
    attributes::FullAttr clashing; // of the last report about a clash

private:
    static std::string listed(arlib::MemberGroup group) {
        std::string text;
        for (const arlib::ArchiveMember* member : group) {
            text += std::string(" ") + member->getName();
        }
        return text;
    }
    bool kept(const std::string& text) {
        reports.push_back(text);
        return !stopsAt || !text.starts_with(*stopsAt);
    }
};

class VariantTest : public ArlibTest {
protected:
    // A module with the names and, if there is one, a decoration.
    static arlib::ArchiveMember* addModule(arlib::Archive& archive, const std::string& name,
                                           const Names& symbols,
                                           const std::optional<std::string>& decoration = {},
                                           char sign = '=') {
        std::string contents;
        for (const std::string& symbol : symbols) {
            contents += symbol + "\n";
        }
        if (decoration) {
            contents += sign + *decoration + "\n";
        }
        arlib::ArchiveMember* member = add(archive, name.c_str(), contents);
        member->setType(WrittenModuleType::instance());
        return member;
    }

    // The entries of the archive's symbol table, made anew, each with the name of its member.
    Names table(arlib::Archive& archive) {
        archive.setErrorHandler(&variantHandler);
        archive.setSymbolTableMode(arlib::SymbolTableMode_Always);
        archive.markSymbolTableStale();
        variantHandler.reports.clear();
        EXPECT_TRUE(archive.updateAuxiliaryMembers());
        return entriesOf(archive);
    }

    static Names entriesOf(const arlib::Archive& archive) {
        const std::string bytes = contentsOf(archive.getSymbolTable());
        const auto word = [&bytes](size_t index) {
            uint32_t value = 0;
            for (size_t i = 4 * index; i < 4 * index + 4; ++i) {
                value = value << 8 | static_cast<unsigned char>(bytes.at(i));
            }
            return value;
        };
        Names entries;
        size_t position = 4 + 4 * size_t{word(0)};
        for (uint32_t i = 0; i < word(0); ++i) {
            const std::string name = bytes.c_str() + position;
            position += name.size() + 1;
            for (const arlib::ArchiveMember* member : archive.getMembers()) {
                if (member->getOffset() == word(i + 1)) {
                    entries.push_back(name + " in " + member->getName());
                }
            }
        }
        EXPECT_EQ(position, bytes.size());
        EXPECT_EQ(entries.size(), word(0));
        return entries;
    }

    VariantHandler variantHandler;
};

} // namespace arlibtest
