// What the tests of bitcode members share: libraries of objects with modules in them, and the one
// line that tells why a member's symbols cannot be had.
#pragma once

#include "tests/command/bad_input_case.h"
#include "tests/support/bitcode.h"

namespace commandtest {

using testsupport::objectWithBitcode;

class BitcodeCase : public CommandCase {
protected:
    static std::string unreadableMember(size_t index, const std::string& name,
                                        const std::string& why) {
        return warned("Unable to read symbols defined in archive member #" + std::to_string(index) +
                      " '" + name + "': " + why);
    }
    static std::string badModule(size_t index, const std::string& name, const std::string& text) {
        return unreadableMember(index, name, "LTO Module Error: " + text);
    }

    // The table as "name in member".
    Words symbols(const std::string& name = "lib.a") const {
        Words found;
        for (const testsupport::ParsedSymbol& symbol : archive(name).symbols) {
            found.push_back(symbol.name + " in " + symbol.member);
        }
        return found;
    }
    static Words in(const std::string& member, const Words& names) {
        Words found;
        for (const std::string& name : names) {
            found.push_back(name + " in " + member);
        }
        return found;
    }
    static Words joined(Words first, const Words& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    std::string module(const std::string& source, const std::string& target = "x86_64") const {
        const ScratchFolder work;
        return testsupport::compileBitcode(work, target, source);
    }
    std::string richModule(const std::string& target = "x86_64") const {
        const ScratchFolder work;
        return testsupport::compileBitcode(work, target, testsupport::richBitcodeSource(),
                                           {"-O1", "-fcommon"});
    }
    Words definedIn(const std::string& bitcode) const {
        const ScratchFolder work;
        return testsupport::definedInBitcode(work, bitcode);
    }
};

} // namespace commandtest
