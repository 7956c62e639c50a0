// The two stages of a via file, filter and scan, and the buffer between them; see via_file.h.

#include "tabledrivenparser/interface/via_file.h"

#include "alloclib/interface/default_region.h"
#include "platform/interface/system_path.h"
#include "tabledrivenparser/interface/parser_messages.h"
#include "tabledrivenparser/src/word_scan.h"

#include <cctype>
#include <cstring>

namespace tabledrivenparser {

namespace {

bool beginsComment(int character) {
    return character == '#' || character == ';';
}

bool endsLine(int character) {
    return character == '\n' || character == '\r';
}

} // namespace

ViaFile::ViaFile(const char* name, Reporter& reporter)
    : m_bufferSize(fileBufferSize), m_reporter(reporter) {
    alloclib::RegionGeneral& region = alloclib::defaultRegion();
    m_buffer = static_cast<char*>(alloclib::allocate(region, m_bufferSize, 1));
    m_dataEnd = m_bufferSize;
    m_fileName = alloclib::copyString(region, name);
    {
        platform::OwnedText systemName = platform::longSystemPath(name);
        m_file.reset(systemName == nullptr ? nullptr : std::fopen(systemName.get(), "rb"));
    }
    if (m_file == nullptr) {
        fail(ParserMessage_ViaFileNotOpened);
        return;
    }
    fill(0, m_dataEnd);
}

ViaFile::ViaFile(char* text, Reporter& reporter, const char* name)
    : m_reporter(reporter), m_buffer(text), m_dataEnd(static_cast<Position>(std::strlen(text)) + 1),
      m_fileName(name) {
}

ViaFile::~ViaFile() {
    if (m_file != nullptr && std::fclose(m_file.release()) != 0) {
        m_reporter.reportParseMessage(ParserSeverity_Warning, ParserMessage_ViaFileNotClosed,
                                      m_fileName);
    }
}

DummyViaFile::DummyViaFile(char* text, Reporter& reporter) : ViaFile(text, reporter, "") {
}

DummyViaFile::~DummyViaFile() {
    m_buffer = nullptr;
}

// Reports that the file is at fault and ends its words. False, for the caller to pass on.
bool ViaFile::fail(uint32_t key) {
    m_terminator = 0;
    m_reporter.reportParseMessage(ParserSeverity_Fatal, key, m_fileName);
    return false;
}

// The comment filter: fills the buffer from `from` up to `to`, or up to the end of the file, which
// becomes a NUL. No comment is left open, since only a character that stays can fill the last
// place. False after a failure.
bool ViaFile::fill(Position from, Position to) {
    bool isComment = false;
    while (from < to) {
        int character = std::fgetc(m_file.get());
        if (character == EOF) {
            if (std::ferror(m_file.get()) != 0) {
                return fail(ParserMessage_ViaFileNotRead);
            }
            m_buffer[from] = 0;
            return true;
        }
        if (character == 0) {
            return fail(ParserMessage_ViaFileBinary);
        }
        if (beginsComment(character)) {
            isComment = true;
        } else if (!isComment) {
            m_buffer[from++] = static_cast<char>(character);
        } else if (endsLine(character)) {
            isComment = false;
        }
    }
    return true;
}

// Sees to it that there is a character at the read cursor. False after a failure.
bool ViaFile::provideCharacter() {
    while (m_readCursor == m_dataEnd) {
        if (!refill()) {
            return false;
        }
    }
    return true;
}

// Moves the unfinished word to the front and fills what is free behind it. False after a failure.
bool ViaFile::refill() {
    Position scanned = m_readCursor - m_tokenStart;
    Position room = m_liveToken;
    if (m_liveToken >= m_dataEnd || scanned >= room) {
        return fail(ParserMessage_ViaFileWordTooLong);
    }
    if (scanned == 0) {
        m_readCursor = 0;
        m_writeCursor = 0;
    } else {
        Position written = m_writeCursor - m_tokenStart;
        std::memmove(m_buffer, m_buffer + m_tokenStart, static_cast<size_t>(written));
        m_writeCursor = written;
        // One place stays free for a backslash that is still undecided.
        m_readCursor = written + 1;
    }
    m_tokenStart = 0;
    m_dataEnd = m_liveToken;
    return fill(m_readCursor, m_dataEnd);
}

// Goes on to the first character of the next word. False at the end and after a failure.
bool ViaFile::skipWhiteSpace() {
    do {
        ++m_readCursor;
        m_tokenStart = m_readCursor; // no word is unfinished here
        if (!provideCharacter()) {
            return false;
        }
    } while (std::isspace(static_cast<unsigned char>(m_buffer[m_readCursor])) != 0);
    if (m_buffer[m_readCursor] == 0) {
        m_terminator = 0;
        return false;
    }
    m_tokenStart = m_readCursor;
    m_writeCursor = m_readCursor;
    return true;
}

// Takes the word at the read cursor and ends it with a NUL. False after a failure.
bool ViaFile::scanWord() {
    WordScan scan;
    for (;;) {
        char character = m_buffer[m_readCursor];
        WordStep step = scan.take(character);
        if (step.hasBackslash) {
            m_buffer[m_writeCursor++] = '\\';
        }
        if (step.isEnd) {
            m_terminator = character;
            break;
        }
        if (step.isKept) {
            m_buffer[m_writeCursor++] = character;
        }
        ++m_readCursor;
        if (!provideCharacter()) {
            return false;
        }
    }
    if (scan.isOpen()) {
        return fail(ParserMessage_ViaFileMalformed);
    }
    m_buffer[m_writeCursor] = 0;
    return true;
}

const char* ViaFile::nextToken() {
    if (m_terminator == 0) {
        return nullptr;
    }
    if (m_dataEnd <= m_liveToken) {
        if (!fill(m_dataEnd, m_bufferSize)) {
            return nullptr;
        }
        m_dataEnd = m_bufferSize;
    }
    m_liveToken = m_tokenStart;
    m_scanEnd = m_readCursor;
    if (!skipWhiteSpace() || !scanWord()) {
        return nullptr;
    }
    return m_buffer + m_tokenStart;
}

} // namespace tabledrivenparser
