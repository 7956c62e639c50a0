#include "elfext/src/gnu_hash_table.h"

#include "elfext/src/file_layout.h"

#include <algorithm>

namespace elfext {
namespace {

constexpr uint64_t headerSize = 16;
constexpr uint64_t wordSize = 4;
constexpr uint32_t lastOfBucket = 1; // in a chain's word, in place of bit 0 of the hash

uint32_t hashOf(const Symbol* symbol) {
    uint32_t hash = 5381;
    for (const char* name = symbol->getName(); name != nullptr && *name != '\0'; ++name) {
        hash = hash * 33 + static_cast<uint8_t>(*name);
    }
    return hash;
}

// What others may look for here. An undefined symbol with a value stands for the program's own way
// to call the function.
bool isOffered(const Symbol* symbol) {
    const bool isDefined =
        symbol->getCategory() != Symbol::Category_Undefined || symbol->getUndefinedValue() != 0;
    return isDefined && symbol->getBinding() != STB_LOCAL;
}

bool isPowerOfTwo(uint32_t number) {
    return number != 0 && (number & (number - 1)) == 0;
}

} // namespace

std::optional<GnuHashTable> GnuHashTable::read(std::span<const uint8_t> bytes, bool is64,
                                               bool isLittleEndian) {
    const auto word = [&bytes, isLittleEndian](uint64_t offset) {
        return assembleBytes<uint32_t>(bytes.data() + offset, isLittleEndian);
    };
    if (bytes.size() < headerSize) {
        return std::nullopt;
    }
    GnuHashTable table(is64, isLittleEndian);
    const uint32_t bucketCount = word(0);
    table.m_FirstEntry = word(4);
    table.m_FilterSize = word(8);
    table.m_FilterShift = word(12);
    const uint64_t bucketsStart =
        headerSize + uint64_t{table.m_FilterSize} * recordSizes(is64).address;
    const uint64_t chainsStart = bucketsStart + wordSize * bucketCount;
    if (bucketCount == 0 || table.m_FirstEntry == 0 || !isPowerOfTwo(table.m_FilterSize) ||
        table.m_FilterShift >= 32 || chainsStart > bytes.size()) {
        return std::nullopt;
    }
    for (uint64_t place = bucketsStart; place + wordSize <= bytes.size(); place += wordSize) {
        (place < chainsStart ? table.m_Lists.buckets : table.m_Lists.chains).push_back(word(place));
    }
    return table;
}

std::optional<GnuHashTable::Lists> GnuHashTable::list(const ObjectModule::SymbolArray& symbols,
                                                      uint32_t firstEntry) const {
    Lists lists;
    lists.buckets.resize(m_Lists.buckets.size());
    uint32_t* bucket = nullptr; // of the symbol before
    for (uint32_t entry = firstEntry; entry <= symbols.getSize(); ++entry) {
        const uint32_t hash = hashOf(symbols[entry - 1]);
        uint32_t* const own = &lists.buckets[hash % lists.buckets.size()];
        if (own != bucket) {
            if (*own != 0) {
                return std::nullopt;
            }
            *own = entry;
            if (bucket != nullptr) {
                lists.chains.back() |= lastOfBucket;
            }
            bucket = own;
        }
        lists.chains.push_back(hash & ~lastOfBucket);
    }
    if (bucket != nullptr) {
        lists.chains.back() |= lastOfBucket;
    }
    return lists;
}

// A table without chains may name any entry as the first.
bool GnuHashTable::isOf(const ObjectModule::SymbolArray& symbols) const {
    const uint32_t end = m_Lists.chains.empty() ? symbols.getSize() + 1 : m_FirstEntry;
    if (end > symbols.getSize() + 1 ||
        std::any_of(symbols.begin(), symbols.begin() + (end - 1), isOffered)) {
        return false;
    }
    const std::optional<Lists> lists = list(symbols, end);
    return lists.has_value() && lists->buckets == m_Lists.buckets &&
           lists->chains == m_Lists.chains;
}

void GnuHashTable::sort(ObjectModule::SymbolArray& symbols) const {
    auto* const firstOffered = std::stable_partition(
        symbols.begin(), symbols.end(), [](const Symbol* symbol) { return !isOffered(symbol); });
    std::vector<std::pair<uint32_t, Symbol*>> offered; // with their buckets
    for (Symbol* const* place = firstOffered; place != symbols.end(); ++place) {
        offered.emplace_back(static_cast<uint32_t>(hashOf(*place) % m_Lists.buckets.size()),
                             *place);
    }
    std::stable_sort(offered.begin(), offered.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::transform(offered.begin(), offered.end(), firstOffered,
                   [](const auto& entry) { return entry.second; });
}

RecordBytes GnuHashTable::make(const ObjectModule::SymbolArray& symbols) const {
    const auto* const firstOffered = std::find_if(symbols.begin(), symbols.end(), isOffered);
    const auto firstEntry = static_cast<uint32_t>(firstOffered - symbols.begin()) + 1;
    const std::optional<Lists> lists = list(symbols, firstEntry);
    TOMEX_CHECK(lists.has_value());
    std::vector<uint32_t> hashes;
    std::transform(firstOffered, symbols.end(), std::back_inserter(hashes), hashOf);
    RecordBytes bytes(m_Is64, m_IsLittleEndian);
    bytes.word(static_cast<uint32_t>(m_Lists.buckets.size()));
    bytes.word(firstEntry);
    bytes.word(m_FilterSize);
    bytes.word(m_FilterShift);
    addFilter(bytes, hashes);
    for (const std::vector<uint32_t>* const words : {&lists->buckets, &lists->chains}) {
        for (const uint32_t word : *words) {
            bytes.word(word);
        }
    }
    return bytes;
}

// Two bits for each symbol, in the word that its hash chooses.
void GnuHashTable::addFilter(RecordBytes& bytes, const std::vector<uint32_t>& hashes) const {
    const uint32_t bitCount = m_Is64 ? 64 : 32;
    std::vector<uint64_t> words(m_FilterSize);
    for (const uint32_t hash : hashes) {
        uint64_t& word = words[hash / bitCount % m_FilterSize];
        word |= uint64_t{1} << hash % bitCount;
        word |= uint64_t{1} << (hash >> m_FilterShift) % bitCount;
    }
    for (const uint64_t word : words) {
        bytes.address(word);
    }
}

} // namespace elfext
