// What `nm` says that objects define, as the witness for the names in a symbol table.
//
// Of a symbol that is defined and not local it prints a line; a symbol table has an entry. Both
// are in the order of the objects' own tables, so the two lists must be equal.
#pragma once

#include "tests/command/real_input_case.h"

namespace commandtest {

class ObjectWitnessCase : public RealInputCase {
protected:
    const Witness nm{"nm"};
    const Witness llvmNm{"llvm-nm"};

    // "name in member" for each line about the members of an archive.
    Words definedIn(const Witness& witness, const std::string& archive) const {
        // -A has the member in each line, which is "archive:member:value type name".
        const CommandResult result =
            witness.run(folder, {"-A", "-g", "-p", "--defined-only", archive});
        // It complains of members that are none of its own; those it lists all the same, or they
        // define nothing.
        EXPECT_TRUE(result.startFailure.empty()) << result;
        Words found;
        std::istringstream lines(result.output);
        for (std::string line; std::getline(lines, line);) {
            const size_t start = archive.size() + 1;
            const size_t colon = line.find(':', start);
            const size_t type = line.find_first_not_of("0123456789abcdef ", colon + 1);
            // A weak or common symbol's letter is no part of a value, though "C" and "B" could be.
            if (colon == std::string::npos || type == std::string::npos) {
                ADD_FAILURE() << "not understood: " << line;
                return found;
            }
            found.push_back(line.substr(type + 2) + " in " +
                            std::string(trimmed(line.substr(start, colon - start))));
        }
        return found;
    }

    // The same of the archive's own table.
    static Words listedIn(const ParsedArchive& parsed) {
        Words found;
        for (const testsupport::ParsedSymbol& symbol : parsed.symbols) {
            found.push_back(symbol.name + " in " + symbol.member);
        }
        return found;
    }

    // The same list member by member. A symbol table puts members that define the same names, and
    // so count as variants of one module, before all others.
    static Words byMember(Words list) {
        const auto member = [](const std::string& line) { return line.substr(line.rfind(" in ")); };
        std::stable_sort(list.begin(), list.end(),
                         [&member](const std::string& a, const std::string& b) {
                             return member(a) < member(b);
                         });
        return list;
    }

    // The first difference of two lists, which may be long.
    static testing::AssertionResult same(const Words& found, const Words& expected) {
        const auto [left, right] =
            std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
        if (left == found.end() && right == expected.end()) {
            return testing::AssertionSuccess();
        }
        return testing::AssertionFailure()
               << found.size() << " and " << expected.size() << " names; number "
               << left - found.begin() << " is '" << (left == found.end() ? "" : *left)
               << "' and not '" << (right == expected.end() ? "" : *right) << "'";
    }

private:
    static std::string_view trimmed(std::string_view text) {
        const size_t end = text.find_last_not_of(' ');
        return text.substr(0, end == text.npos ? 0 : end + 1);
    }
};

} // namespace commandtest
