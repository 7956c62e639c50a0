// What all hash tables and sets share: buckets with chains of nodes.
//
// There are 17 buckets at first; before an insertion into buckets more than three quarters as
// many as nodes, their number grows by half plus one: 17, 26, 40, 61, 92, 139. New nodes go to
// the head of their chain. Nodes never move in memory, so a pointer to one stays good until it is
// removed.
//
// Iteration goes over the buckets in order and along each chain. That order depends on hashes,
// growth and order of insertion; whoever prints or writes sorts first.
//
// `Node` is a record with the fields `key` and `next`; `Memory` is where nodes and buckets lie.
#pragma once

#include "alloclib/interface/alloclib.h"
#include "alloclib/interface/region.h"
#include "elfext/interface/hash_functions.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

namespace elfext {

// Memory from the general heap.
class HeapMemory {
public:
    static void* take(uint64_t size) {
        void* const block =
            size <= SIZE_MAX ? ::operator new(static_cast<size_t>(size), std::nothrow) : nullptr;
        if (block == nullptr) {
            alloclib::endOutOfMemory(size);
        }
        return block;
    }
    static void giveBack(void* block, uint64_t /*size*/) { ::operator delete(block); }
};

// Memory from a region, which must outlive the table.
class RegionMemory {
public:
    explicit RegionMemory(alloclib::Region* region) : m_Region(region) {}

    void* take(uint64_t size) const { return alloclib::allocate(*m_Region, size, 8); }
    void giveBack(void* block, uint64_t size) const { m_Region->Discard(block, size, 8); }

private:
    alloclib::Region* m_Region;
};

template <typename Key, typename Node, typename Memory>
class hash_chains : private Memory {
public:
    using HashFunction = uint32_t (*)(const Key*);

    hash_chains(const hash_chains&) = delete;
    hash_chains& operator=(const hash_chains&) = delete;

    // How many keys there are.
    uint32_t getCount() const { return m_Count; }
    // How many buckets there are.
    uint32_t getTableSize() const { return m_HashTableSize; }

    // How many keys stand where `key` does or would: what a search for it costs at most. Whoever
    // takes keys from a hostile file has to ask, since keys of one hash are easily made.
    uint32_t getChainLength(const Key& key) const {
        uint32_t length = 0;
        for (const Node* node = bucketOf(key); node != nullptr; node = node->next) {
            ++length;
        }
        return length;
    }

    // Goes over all nodes. Adding or removing a key makes it invalid.
    template <typename Visited>
    class basic_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = std::remove_const_t<Visited>;
        using difference_type = std::ptrdiff_t;
        using pointer = Visited*;
        using reference = Visited&;

        basic_iterator() = default;
        Visited& operator*() const { return *m_Node; }
        Visited* operator->() const { return m_Node; }
        basic_iterator& operator++() {
            m_Node = m_Node->next;
            skipEmptyBuckets();
            return *this;
        }
        basic_iterator operator++(int) {
            basic_iterator before(*this);
            ++*this;
            return before;
        }
        bool operator==(const basic_iterator& other) const { return m_Node == other.m_Node; }

    private:
        friend class hash_chains;
        basic_iterator(Node* const* bucket, Node* const* end) : m_Bucket(bucket), m_End(end) {
            skipEmptyBuckets();
        }
        void skipEmptyBuckets() {
            while (m_Node == nullptr && m_Bucket != m_End) {
                m_Node = *m_Bucket++;
            }
        }

        Node* const* m_Bucket = nullptr; // the bucket behind the one of m_Node
        Node* const* m_End = nullptr;
        Node* m_Node = nullptr;
    };
    using iterator = basic_iterator<Node>;
    using const_iterator = basic_iterator<const Node>;

    iterator begin() { return iterator(m_HashTable, bucketsEnd()); }
    iterator end() { return iterator(bucketsEnd(), bucketsEnd()); }
    const_iterator begin() const { return const_iterator(m_HashTable, bucketsEnd()); }
    const_iterator end() const { return const_iterator(bucketsEnd(), bucketsEnd()); }

    // Takes a key out. False if it was not there.
    bool remove(const Key& key) {
        for (Node** link = &bucketOf(key); *link != nullptr; link = &(*link)->next) {
            Node* const node = *link;
            if (node->key == key) {
                *link = node->next;
                returnNode(node);
                --m_Count;
                return true;
            }
        }
        return false;
    }

    // Takes all keys out; the number of buckets stays.
    void clear() {
        returnNodes();
        std::memset(m_HashTable, 0, bucketBytes(m_HashTableSize));
        m_Count = 0;
    }

protected:
    hash_chains(const Memory& memory, HashFunction hashFunction)
        : Memory(memory), m_HashFunction(hashFunction), m_HashTableSize(FirstTableSize),
          m_HashTable(takeBuckets(FirstTableSize)) {}

    ~hash_chains() {
        returnNodes();
        Memory::giveBack(m_HashTable, bucketBytes(m_HashTableSize));
    }

    Node* findNode(const Key& key) const {
        Node* node = bucketOf(key);
        while (node != nullptr && !(node->key == key)) {
            node = node->next;
        }
        return node;
    }

    // The first half of every insertion. Looks at the load before it looks for the key, so that
    // a full table grows although the key is there already.
    Node* findNodeForInsertion(const Key& key, Node**& bucket) {
        if (uint64_t{m_Count} * 4 > uint64_t{m_HashTableSize} * 3) {
            grow();
        }
        bucket = &bucketOf(key);
        Node* node = *bucket;
        while (node != nullptr && !(node->key == key)) {
            node = node->next;
        }
        return node;
    }

    // The second half, for a key that is not there: `parts` are key and value.
    template <typename... Parts>
    void addNode(Node** bucket, const Parts&... parts) {
        *bucket = new (Memory::take(sizeof(Node))) Node{parts..., *bucket};
        ++m_Count;
    }

private:
    static_assert(alignof(Node) <= 8, "blocks of a region are 8-aligned");

    static constexpr uint32_t FirstTableSize = 17;

    static uint64_t bucketBytes(uint32_t count) { return uint64_t{count} * sizeof(Node*); }

    // The type's own hash is called directly, so that it can be expanded in place.
    uint32_t hashOf(const Key& key) const {
        if constexpr (requires { KeyHash<Key>::hash(&key); }) {
            if (m_HashFunction == &KeyHash<Key>::hash) [[likely]] {
                return KeyHash<Key>::hash(&key);
            }
        }
        return m_HashFunction(&key);
    }

    Node*& bucketOf(const Key& key) const { return m_HashTable[hashOf(key) % m_HashTableSize]; }
    Node* const* bucketsEnd() const { return m_HashTable + m_HashTableSize; }

    Node** takeBuckets(uint32_t count) {
        void* const block = Memory::take(bucketBytes(count));
        std::memset(block, 0, bucketBytes(count));
        return static_cast<Node**>(block);
    }

    void grow() {
        const uint32_t newHashTableSize = (m_HashTableSize * 3 >> 1) + 1;
        TOMEX_CHECK(newHashTableSize > m_HashTableSize);
        Node** const oldTable = m_HashTable;
        const uint32_t oldSize = m_HashTableSize;
        m_HashTable = takeBuckets(newHashTableSize);
        m_HashTableSize = newHashTableSize;
        for (uint32_t i = 0; i < oldSize; ++i) {
            for (Node* node = oldTable[i]; node != nullptr;) {
                Node* const following = node->next;
                Node*& head = bucketOf(node->key);
                node->next = head;
                head = node;
                node = following;
            }
        }
        Memory::giveBack(oldTable, bucketBytes(oldSize));
    }

    void returnNode(Node* node) {
        node->~Node();
        Memory::giveBack(node, sizeof(Node));
    }

    void returnNodes() {
        for (uint32_t i = 0; i < m_HashTableSize; ++i) {
            for (Node* node = m_HashTable[i]; node != nullptr;) {
                Node* const following = node->next;
                returnNode(node);
                node = following;
            }
        }
    }

    HashFunction m_HashFunction;
    uint32_t m_HashTableSize;
    Node** m_HashTable;
    uint32_t m_Count = 0;
};

// The node of a table, and of a set.
template <typename Key, typename Value>
struct HashTableNode {
    Key key;
    Value value;
    HashTableNode* next;
};

template <typename Key>
struct HashSetNode {
    Key key;
    HashSetNode* next;
};

} // namespace elfext
