// The ground of the tests of via files: a folder for them, and words as texts.
#pragma once

#include "tests/support/scratch_folder.h"
#include "tests/tabledrivenparser/parser_fixture.h"

#include "tabledrivenparser/interface/via_reading.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tabledrivenparser {

class ViaTest : public ParserTest {
protected:
    // All words of `source`.
    static Texts wordsOf(WordSource& source) {
        Texts words;
        while (const char* word = source.nextToken()) {
            words.emplace_back(word);
        }
        return words;
    }
    // The words of a file with these bytes, called "f" in messages.
    Texts fileWords(std::string_view bytes) {
        ViaFile viaFile(file(bytes).c_str(), m_reporter);
        return wordsOf(viaFile);
    }
    Texts textWords(std::string text) {
        DummyViaFile viaFile(text.data(), m_reporter);
        return wordsOf(viaFile);
    }

    // Writes a file and gives its path.
    std::string file(std::string_view bytes, const std::string& name = "f") const {
        m_folder.write(name, bytes);
        return m_folder.pathOf(name);
    }
    // What was reported, with the folder's path taken out.
    Texts reported() {
        Texts all = messages();
        const std::string folder = m_folder.path() + "/";
        for (std::string& each : all) {
            for (size_t at = each.find(folder); at != std::string::npos; at = each.find(folder)) {
                each.erase(at, folder.size());
            }
        }
        return all;
    }

    // How many files this process has open.
    static std::ptrdiff_t openFiles() {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    }

    static Texts tooLong() { return {"3 23131194 Via file 'f' command too long for buffer."}; }
    static Texts malformed() { return {"3 23131178 Malformed via file 'f'."}; }
    static Texts binary() {
        return {"3 23131370 '\\0' character found in via file 'f' - possible binary file.  "
                "Aborting via file parse."};
    }

    const testsupport::ScratchFolder m_folder;
};

} // namespace tabledrivenparser
