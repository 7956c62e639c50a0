#include "messages/interface/message_file.h"

#include "messages/interface/message_code.h"
#include "messages/src/ascii.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace messages {

namespace {

constexpr uint64_t headerSize = 7; // of the file, and of each entry
constexpr uint32_t latestVersion = 1;
constexpr uint64_t noText = UINT64_MAX;

struct FileHeader {
    char bytes[headerSize];
};

// What has been read so far. The texts stand behind one another, each with its end, so that memory
// grows with what the file really holds and not with what it claims.
struct Gathered {
    struct Entry {
        uint32_t key;
        uint64_t textOffset;
    };
    std::vector<Entry> entries;
    std::string texts;
};

bool readHeader(std::FILE* stream, FileHeader& header) {
    return std::fread(header.bytes, 1, headerSize, stream) == headerSize;
}

bool fourDigits(const char* bytes) {
    return isDigit(bytes[0]) && isDigit(bytes[1]) && isDigit(bytes[2]) && isDigit(bytes[3]);
}

bool isSupportedHeader(const FileHeader& header) {
    const char* bytes = header.bytes;
    if (bytes[0] != 'V' || !fourDigits(bytes + 1) || bytes[5] != 'V' || bytes[6] != ' ') {
        return false;
    }
    const std::string version(bytes + 1, 4);
    return static_cast<uint32_t>(decimalValue(version.c_str())) <= latestVersion;
}

// A decimal number of at least one digit; the character behind it stays unread.
std::optional<uint64_t> readNumber(std::FILE* stream) {
    std::optional<uint64_t> value;
    int c = std::getc(stream);
    for (; c != EOF && isDigit(static_cast<char>(c)); c = std::getc(stream)) {
        const auto digit = static_cast<uint64_t>(c - '0');
        if (value.value_or(0) > (UINT64_MAX - digit) / 10) {
            return std::nullopt;
        }
        value = value.value_or(0) * 10 + digit;
    }
    if (c != EOF) {
        std::ungetc(c, stream);
    }
    return value;
}

bool skipLine(std::FILE* stream) {
    int c = std::getc(stream);
    while (c != EOF && c != '\n') {
        c = std::getc(stream);
    }
    return c == '\n';
}

bool readText(std::FILE* stream, uint64_t length, std::string& texts) {
    char piece[4096];
    while (length > 0) {
        const uint64_t size = length < sizeof(piece) ? length : sizeof(piece);
        if (std::fread(piece, 1, size, stream) != size) {
            return false;
        }
        texts.append(piece, size);
        length -= size;
    }
    texts.push_back('\0');
    return true;
}

bool readEntry(std::FILE* stream, Gathered& gathered) {
    FileHeader header{};
    if (!skipLine(stream) || !readHeader(stream, header)) {
        return false;
    }
    const char* bytes = header.bytes;
    if (!isLetter(bytes[0]) || !fourDigits(bytes + 1) || !isLetter(bytes[5]) || bytes[6] != ' ') {
        return false;
    }
    const std::optional<uint64_t> length = readNumber(stream);
    if (!length || std::getc(stream) != ' ') {
        return false;
    }
    const std::string code(bytes, headerSize - 1);
    const uint64_t offset = *length == 0 ? noText : gathered.texts.size();
    gathered.entries.push_back({parseCode(code.c_str()), offset});
    return *length == 0 || readText(stream, *length, gathered.texts);
}

bool readEntries(std::FILE* stream, Gathered& gathered) {
    const std::optional<uint64_t> count = readNumber(stream);
    if (!count) {
        return false;
    }
    for (uint64_t i = 0; i < *count; ++i) {
        if (!readEntry(stream, gathered)) {
            return false;
        }
    }
    return true;
}

// One block: the catalogue, its entries, their texts.
MessageCatalogue* makeCatalogue(const Gathered& gathered) {
    const uint64_t entryBytes = gathered.entries.size() * sizeof(MessageEntry);
    void* block = std::malloc(sizeof(MessageCatalogue) + entryBytes + gathered.texts.size());
    if (block == nullptr) {
        return nullptr;
    }
    char* bytes = static_cast<char*>(block);
    auto* entries = reinterpret_cast<MessageEntry*>(bytes + sizeof(MessageCatalogue));
    char* texts = bytes + sizeof(MessageCatalogue) + entryBytes;
    std::copy(gathered.texts.begin(), gathered.texts.end(), texts);
    for (uint64_t i = 0; i < gathered.entries.size(); ++i) {
        const Gathered::Entry& entry = gathered.entries[i];
        new (&entries[i]) MessageEntry{
            entry.key, entry.textOffset == noText ? nullptr : texts + entry.textOffset};
    }
    return new (block) MessageCatalogue{gathered.entries.size(), entries};
}

MessageCatalogue* badlyFormed(std::FILE* stream) {
    const long position = std::ftell(stream);
    std::fprintf(stderr, "Warning: Badly formed message file before offset %lu.\n",
                 position < 0 ? 0UL : static_cast<unsigned long>(position));
    return nullptr;
}

} // namespace

MessageCatalogue* readMessageFile(std::FILE* stream) {
    try {
        FileHeader header{};
        if (!readHeader(stream, header)) {
            return badlyFormed(stream);
        }
        if (!isSupportedHeader(header)) {
            return nullptr;
        }
        Gathered gathered;
        if (!readEntries(stream, gathered)) {
            return badlyFormed(stream);
        }
        return makeCatalogue(gathered);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void freeMessageFile(MessageCatalogue* catalogue) {
    std::free(catalogue);
}

} // namespace messages
