// Via files: text files that hold further words of the command line.
//
// A file passes two stages. A comment filter reads it character by character and drops what lies
// between "#" or ";" and the end of the line, that end included: a comment separates words only if
// white space stands before it. It runs ahead of everything else, so that these two characters can
// never be quoted. What is left is cut into words (see word_scan.h for the quotes).
//
// Words are made in place, in one small buffer a file, whatever the size of the file. At any time
// it holds the word that was handed out last (the live one, for the parser looks one word ahead),
// the word being scanned, and what was read ahead:
//
//      |  unfinished word | read ahead ...      | live word |   dropped   |
//      buffer             readCursor            liveToken = dataEnd
//
// When the scan comes to the end of the data, the unfinished word moves to the front, and the room
// up to the live word is filled. When the live word has had its time, the room behind it is filled
// as well. So a word must fit in front of the live one, and whether a long word is accepted depends
// on where it stands: required, since builds rely on what is refused.
#pragma once

#include "tabledrivenparser/interface/reporter.h"
#include "tabledrivenparser/interface/word_source.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace tabledrivenparser {

class ViaFile : public WordSource {
public:
    static constexpr uint32_t fileBufferSize = 1024;

    // Opens the file of that name and reads its first stretch. What fails is reported to
    // `reporter` as fatal, with the name as given; there are no words then. Takes the buffer and a
    // copy of the name from the default region, which keeps them. The file is closed if the
    // reporter throws.
    ViaFile(const char* name, Reporter& reporter);
    // Closes the file; warns if that fails.
    ~ViaFile() override;

    // The next word, or null at the end and after a failure, which is reported as fatal. It stands
    // in the buffer and stays valid until the second call after this one.
    const char* nextToken() override;

protected:
    // Words of `text`, which is written into and must outlive the object. Nothing is read, so there
    // is no comment filter and no limit.
    ViaFile(char* text, Reporter& reporter, const char* name);

    // Characters are counted from the start of the buffer; -1 is where the scan begins.
    using Position = std::ptrdiff_t;

    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    uint32_t m_bufferSize = 0;
    Reporter& m_reporter;
    // What ended the last word. 0 after the last word and after a failure.
    char m_terminator = '\n';
    char* m_buffer = nullptr;
    Position m_liveToken = -1;
    // Where the last word ended in the file's text; for debuggers.
    Position m_scanEnd = -1;
    Position m_tokenStart = -1;
    Position m_readCursor = -1;
    Position m_writeCursor = -1;
    Position m_dataEnd = 0;
    const char* m_fileName = nullptr;
    std::unique_ptr<std::FILE, FileCloser> m_file;

private:
    bool fail(uint32_t key);
    bool fill(Position from, Position to);
    bool provideCharacter();
    bool refill();
    bool skipWhiteSpace();
    bool scanWord();
};

// The words of a text in memory, by the same rules but without comments.
class DummyViaFile final : public ViaFile {
public:
    // `text` is written into, and the words stand in it: it must outlive them and the object.
    DummyViaFile(char* text, Reporter& reporter);
    ~DummyViaFile() override;
};

} // namespace tabledrivenparser
