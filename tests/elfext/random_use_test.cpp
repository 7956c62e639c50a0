// Long random sequences beside independent references: the chains of a table in every detail, the
// bytes of a buffer, hashes, lists of hits, the order of destruction.
#include "elfext/interface/buffer.h"
#include "elfext/interface/destruction_manager.h"
#include "elfext/interface/fast_hash_set.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/hash_set.h"
#include "elfext/interface/hash_table.h"
#include "elfext/interface/relocation_list.h"
#include "elfext/interface/section_list.h"
#include "elfext/interface/symbol_list.h"
#include "tests/elfext/container_fixtures.h"

#include <algorithm>
#include <list>
#include <map>
#include <new>
#include <random>
#include <vector>

namespace elfext::test {
namespace {

using RandomUse = ContainerTest;
// 32 bits a number.
using Random = std::mersenne_twister_engine<uint32_t, 32, 624, 397, 31, 0x9908b0df, 11, 0xffffffff,
                                            7, 0x9d2c5680, 15, 0xefc60000, 18, 1812433253>;

// A table as the rules say it: a vector of chains. Keys are 64-bit numbers.
class ReferenceTable {
public:
    struct Entry {
        uint64_t key;
        uint32_t value;
        bool operator==(const Entry&) const = default;
    };

    void set(uint64_t key, uint32_t value) {
        if (m_count * 4 > m_chains.size() * 3) {
            grow();
        }
        std::list<Entry>& chain = chainOf(key);
        const auto found = find(chain, key);
        if (found != chain.end()) {
            found->value = value;
            return;
        }
        chain.push_front({key, value});
        ++m_count;
    }

    bool remove(uint64_t key) {
        std::list<Entry>& chain = chainOf(key);
        const auto found = find(chain, key);
        if (found == chain.end()) {
            return false;
        }
        chain.erase(found);
        --m_count;
        return true;
    }

    std::vector<Entry> inOrder() const {
        std::vector<Entry> entries;
        for (const std::list<Entry>& chain : m_chains) {
            entries.insert(entries.end(), chain.begin(), chain.end());
        }
        return entries;
    }

    size_t buckets() const { return m_chains.size(); }

private:
    static std::list<Entry>::iterator find(std::list<Entry>& chain, uint64_t key) {
        return std::find_if(chain.begin(), chain.end(),
                            [key](const Entry& entry) { return entry.key == key; });
    }

    std::list<Entry>& chainOf(uint64_t key) {
        const uint64_t hash = (key / 0x100000000) ^ (key % 0x100000000);
        return m_chains[hash % m_chains.size()];
    }

    void grow() {
        std::vector<std::list<Entry>> old(m_chains.size() * 3 / 2 + 1);
        old.swap(m_chains);
        for (std::list<Entry>& chain : old) {
            for (const Entry& entry : chain) {
                chainOf(entry.key).push_front(entry);
            }
        }
    }

    std::vector<std::list<Entry>> m_chains = std::vector<std::list<Entry>>(17);
    size_t m_count = 0;
};

template <typename Table>
std::vector<ReferenceTable::Entry> inOrder(const Table& table) {
    std::vector<ReferenceTable::Entry> entries;
    for (const auto& node : table) {
        entries.push_back({node.key, node.value});
    }
    return entries;
}

template <typename Set>
std::vector<uint64_t> keysInOrder(const Set& set) {
    std::vector<uint64_t> keys;
    for (const auto& node : set) {
        keys.push_back(node.key);
    }
    return keys;
}

template <typename Table, typename Set>
void compareWithReference(Table& table, Set& set, uint32_t seed) {
    std::mt19937_64 random(seed);
    ReferenceTable expected;
    const uint64_t keys = random() % 3000 + 1;
    for (int step = 0; step < 4000; ++step) {
        const uint64_t key = random() % keys * (seed % 2 == 0 ? 1 : 0x9E3779B97F4A7C15);
        if (random() % 6 == 0) {
            const bool was = expected.remove(key);
            ASSERT_EQ(table.remove(key), was);
            ASSERT_EQ(set.remove(key), was);
        } else {
            const auto value = static_cast<uint32_t>(random());
            expected.set(key, value);
            table.set(key, value);
            set.add(key);
        }
        ASSERT_EQ(table.getTableSize(), expected.buckets()) << "seed " << seed << " step " << step;
        if (step % 200 == 199) {
            const std::vector<ReferenceTable::Entry> entries = expected.inOrder();
            ASSERT_EQ(inOrder(table), entries) << "seed " << seed << " step " << step;
            std::vector<uint64_t> expectedKeys;
            for (const ReferenceTable::Entry& entry : entries) {
                expectedKeys.push_back(entry.key);
            }
            ASSERT_EQ(keysInOrder(set), expectedKeys) << "seed " << seed << " step " << step;
        }
    }
}

TEST_F(RandomUse, ChainsOfTablesAndSetsAreInTheRulesOrder) {
    for (uint32_t seed = 1; seed <= 40 && !HasFatalFailure(); ++seed) {
        hash_table<uint64_t, uint32_t> table;
        hash_set<uint64_t> set;
        compareWithReference(table, set, seed);
        fast_hash_table<uint64_t, uint32_t> fastTable(region());
        fast_hash_set<uint64_t> fastSet(region());
        compareWithReference(fastTable, fastSet, seed + 1000);
    }
}

std::string randomText(Random& random, size_t longest) {
    std::string text(random() % (longest + 1), ' ');
    for (char& c : text) {
        c = static_cast<char>(random() % 255 + 1);
    }
    return text;
}

TEST_F(RandomUse, HashesOfTextsAndBytesAreTheByteByByteOnes) {
    for (uint32_t seed = 1; seed <= 200; ++seed) {
        Random random(seed);
        const std::string text = randomText(random, 70);
        array<uint8_t> plain;
        fast_array<uint8_t> fast(region());
        uint64_t expected = 0;
        for (const char c : text) {
            const auto byte = static_cast<uint8_t>(c);
            expected = (expected * 31 + byte) % 0x100000000;
            plain.add(byte);
            fast.add(byte);
        }
        const Stringlett key(text.c_str());
        const uint32_t number = random();
        const NumberedStringlett pair(key, number);
        ASSERT_EQ(key.getHash(), expected) << seed;
        ASSERT_EQ(KeyHash<Stringlett>::hash(&key), expected) << seed;
        ASSERT_EQ(KeyHash<NumberedStringlett>::hash(&pair), expected ^ number) << seed;
        ASSERT_EQ(KeyHash<array<uint8_t>>::hash(&plain), expected) << seed;
        ASSERT_EQ(KeyHash<fast_array<uint8_t>>::hash(&fast), expected) << seed;
    }
}

TEST_F(RandomUse, TablesKeyedByNameAgreeWithAMap) {
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        Random random(seed);
        std::list<std::string> texts; // the keys' own
        fast_hash_table<Stringlett, uint32_t> table(region());
        fast_hash_table<NumberedStringlett, uint32_t> numbered(region());
        std::map<std::string, uint32_t> expected;
        std::map<std::pair<std::string, uint32_t>, uint32_t> expectedNumbered;
        for (int step = 0; step < 2000; ++step) {
            texts.push_back(randomText(random, 2));
            const uint32_t number = random() % 3;
            const uint32_t value = random();
            table.set(texts.back().c_str(), value);
            numbered.set(NumberedStringlett(texts.back().c_str(), number), value);
            expected[texts.back()] = value;
            expectedNumbered[{texts.back(), number}] = value;
        }
        ASSERT_EQ(table.getCount(), expected.size());
        ASSERT_EQ(numbered.getCount(), expectedNumbered.size());
        for (const auto& [text, value] : expected) {
            ASSERT_EQ(table.get(text.c_str()), value);
        }
        for (const auto& [key, value] : expectedNumbered) {
            ASSERT_EQ(numbered.get(NumberedStringlett(key.first.c_str(), key.second)), value);
        }
    }
}

// The bytes that a buffer must hold.
class ReferenceBytes {
public:
    explicit ReferenceBytes(bool littleEndian) : m_littleEndian(littleEndian) {}

    uint64_t get(size_t offset, size_t width) const {
        uint64_t value = 0;
        for (size_t i = 0; i < width; ++i) {
            value |= uint64_t{bytes[offset + i]} << 8 * (m_littleEndian ? i : width - 1 - i);
        }
        return value;
    }
    void set(size_t offset, size_t width, uint64_t value) {
        for (size_t i = 0; i < width; ++i) {
            bytes[offset + i] =
                static_cast<uint8_t>(value >> 8 * (m_littleEndian ? i : width - 1 - i));
        }
    }
    uint64_t append(size_t width, uint64_t value) {
        const size_t offset = bytes.size();
        bytes.resize(offset + width);
        set(offset, width, value);
        return offset;
    }

    std::vector<uint8_t> bytes;

private:
    bool m_littleEndian;
};

struct Pieces {
    const std::vector<uint8_t>* bytes;
    Random* random;

    static uint64_t fetch(void* context, uint64_t offset, void* destination, uint64_t count) {
        const auto& self = *static_cast<Pieces*>(context);
        const uint64_t given = (*self.random)() % count + 1;
        std::copy_n(self.bytes->data() + offset, given, static_cast<uint8_t*>(destination));
        return given;
    }
};

void expectSameReads(const Buffer& buffer, const ReferenceBytes& expected, Random& random) {
    const size_t size = expected.bytes.size();
    ASSERT_EQ(buffer.getSize(), size);
    if (size < 16) {
        return;
    }
    const size_t aligned = random() % (size / 8) * 8;
    const size_t anywhere = random() % (size - 7);
    ASSERT_EQ(buffer.getUint8(anywhere), expected.get(anywhere, 1));
    ASSERT_EQ(buffer.getUint16(aligned + 6), expected.get(aligned + 6, 2));
    ASSERT_EQ(buffer.getUint32(aligned + 4), expected.get(aligned + 4, 4));
    ASSERT_EQ(buffer.getUint64(aligned), expected.get(aligned, 8));
    ASSERT_EQ(buffer.getUnalignedUint16(anywhere), expected.get(anywhere, 2));
    ASSERT_EQ(buffer.getUnalignedUint32(anywhere), expected.get(anywhere, 4));
    ASSERT_EQ(buffer.getUnalignedUint64(anywhere), expected.get(anywhere, 8));
    std::vector<uint8_t> bytes(random() % (size - anywhere) + 1);
    buffer.readBytes(anywhere, bytes.data(), bytes.size());
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), expected.bytes.data() + anywhere));
}

TEST_F(RandomUse, BuffersAgreeWithPlainBytes) {
    for (uint32_t seed = 1; seed <= 60 && !HasFatalFailure(); ++seed) {
        Random random(seed);
        const ByteOrderSource order(seed % 2 == 0);
        Buffer buffer(region(), &order);
        ReferenceBytes expected(seed % 2 == 0);
        for (int step = 0; step < 400 && !HasFatalFailure(); ++step) {
            const size_t size = expected.bytes.size();
            const uint64_t value = uint64_t{random()} << 32 | random();
            const size_t place = size < 8 ? 0 : random() % (size / 8) * 8;
            switch (random() % 8) {
            case 0:
                buffer.setSize(size / 8 * 8);
                expected.bytes.resize(size / 8 * 8);
                ASSERT_EQ(buffer.addUint64(value), expected.append(8, value));
                break;
            case 1:
                buffer.setSize(size / 4 * 4 + 4);
                expected.bytes.resize(size / 4 * 4 + 4);
                ASSERT_EQ(buffer.addUint32(static_cast<uint32_t>(value)),
                          expected.append(4, value));
                break;
            case 2:
                buffer.setSize(size / 2 * 2);
                expected.bytes.resize(size / 2 * 2);
                ASSERT_EQ(buffer.addUint16(static_cast<uint16_t>(value)),
                          expected.append(2, value));
                break;
            case 3:
                buffer.reserve(random() % 5000);
                break;
            case 4:
                buffer.setSize(size + random() % 40);
                expected.bytes.resize(buffer.getSize());
                break;
            case 5:
                if (size >= 8) {
                    buffer.setUint64(place, value);
                    expected.set(place, 8, value);
                    buffer.setUint32(place + 4, static_cast<uint32_t>(value));
                    expected.set(place + 4, 4, value);
                }
                break;
            case 6:
                if (size >= 8) {
                    buffer.setUint16(place + 2, static_cast<uint16_t>(value));
                    expected.set(place + 2, 2, value);
                    buffer.setUint8(place + 1, static_cast<uint8_t>(value));
                    expected.set(place + 1, 1, value);
                }
                break;
            default:
                buffer.writeBytes(place, &value, size < 8 ? 0 : 8);
                std::copy_n(reinterpret_cast<const uint8_t*>(&value), size < 8 ? 0 : 8,
                            expected.bytes.data() + place);
                break;
            }
            expectSameReads(buffer, expected, random);
        }
        Pieces pieces{&expected.bytes, &random};
        Buffer external(region(), &order);
        external.setExternalData(Pieces::fetch, &pieces, expected.bytes.size());
        for (int step = 0; step < 50 && !HasFatalFailure(); ++step) {
            expectSameReads(external, expected, random);
        }
        ASSERT_FALSE(HasFatalFailure()) << "seed " << seed;
    }
}

template <typename List, typename Entry>
void compareWithVector(uint32_t seed) {
    Random random(seed);
    static char places[1024];
    const auto someEntry = [&] { return reinterpret_cast<Entry*>(places + random() % 1024); };
    List list;
    std::vector<Entry*> expected;
    for (int step = 0; step < 400; ++step) {
        const auto size = static_cast<uint32_t>(expected.size());
        if (random() % 30 == 0) {
            const uint32_t newSize = random() % 40;
            list.setSize(newSize);
            expected.assign(newSize, nullptr);
        } else if (size != 0 && random() % 3 == 0) {
            const uint32_t index = random() % size;
            Entry* const entry = someEntry();
            list.set(index, entry);
            expected[index] = entry;
        } else {
            Entry* const entry = someEntry();
            list.add(entry);
            expected.push_back(entry);
        }
        ASSERT_EQ(list.getSize(), expected.size());
        for (uint32_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(list[i], expected[i]) << "seed " << seed << " step " << step;
        }
    }
}

TEST_F(RandomUse, ListsOfHitsAgreeWithAVector) {
    for (uint32_t seed = 1; seed <= 30 && !HasFatalFailure(); ++seed) {
        compareWithVector<SymbolList, Symbol>(seed);
        compareWithVector<SectionList, Section>(seed + 100);
        compareWithVector<RelocationList, Relocation>(seed + 200);
    }
}

std::vector<int> destroyedNumbers;

struct Noting {
    explicit Noting(int noted) : number(noted) {}
    Noting(const Noting&) = delete;
    Noting& operator=(const Noting&) = delete;
    ~Noting() { destroyedNumbers.push_back(number); }
    int number;
};

TEST_F(RandomUse, ObjectsAreDestroyedAsAStackOfEachRegionSays) {
    for (uint32_t seed = 1; seed <= 50; ++seed) {
        Random random(seed);
        std::vector<alloclib::RegionGeneral*> regions;
        for (const char* const name : {"first", "second", "third"}) {
            regions.push_back(alloclib::RegionGeneral::Create(0, name));
        }
        std::vector<std::pair<size_t, int>> expected; // last registered last
        destroyedNumbers.clear();
        std::vector<int> expectedNumbers;
        DestructionManager manager;
        const auto takeOff = [&](const auto& goes) {
            for (size_t i = expected.size(); i-- > 0;) {
                if (goes(expected[i].first)) {
                    expectedNumbers.push_back(expected[i].second);
                }
            }
            std::erase_if(expected, [&](const auto& entry) { return goes(entry.first); });
        };
        for (int step = 0; step < 300; ++step) {
            const size_t chosen = random() % regions.size();
            if (random() % 40 == 0) {
                manager.run();
                takeOff([](size_t) { return true; });
            } else if (random() % 20 == 0) {
                manager.run(regions[chosen]);
                takeOff([&](size_t number) { return number == chosen; });
            } else {
                void* const memory = alloclib::allocate(*regions[chosen], sizeof(Noting), 8);
                manager.add(regions[chosen], new (memory) Noting(step));
                expected.emplace_back(chosen, step);
            }
            ASSERT_EQ(destroyedNumbers, expectedNumbers) << "seed " << seed << " step " << step;
            ASSERT_EQ(manager.isEmpty(), expected.empty());
        }
        manager.run();
        for (alloclib::RegionGeneral* const region : regions) {
            region->Destroy(true);
        }
    }
}

} // namespace
} // namespace elfext::test
