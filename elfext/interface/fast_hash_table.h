// A map from keys to values in a region: `hash_table` with nodes and buckets by bump allocation.
#pragma once

#include "elfext/interface/hash_chains.h"

namespace elfext {

template <typename Key, typename Value>
class fast_hash_table : public hash_chains<Key, HashTableNode<Key, Value>, RegionMemory> {
    using Chains = hash_chains<Key, HashTableNode<Key, Value>, RegionMemory>;

public:
    using Node = HashTableNode<Key, Value>;
    using HashFunction = typename Chains::HashFunction;

    // An empty map. `region` is not null and must outlive it; `hashFunction` is not null.
    explicit fast_hash_table(alloclib::Region* region,
                             HashFunction hashFunction = &KeyHash<Key>::hash)
        : Chains(RegionMemory(checked(region)), checked(hashFunction)) {}

    // Maps `key` to `value`, in place of what it was mapped to before.
    void set(const Key& key, const Value& value) {
        Node** bucket = nullptr;
        Node* const node = this->findNodeForInsertion(key, bucket);
        if (node != nullptr) {
            node->value = value;
        } else {
            this->addNode(bucket, key, value);
        }
    }

    // The value of `key`. A key that is not there is an internal fault; with checks switched off
    // its value is zero.
    Value get(const Key& key) const {
        const Node* const node = this->findNode(key);
        if (node == nullptr) [[unlikely]] {
            TOMEX_CHECK(false);
            return Value();
        }
        return node->value;
    }

    // Where the value of `key` lies, or null if the key is not there. The place stays good until
    // the key is removed.
    Value* find(const Key& key) {
        Node* const node = this->findNode(key);
        return node != nullptr ? &node->value : nullptr;
    }
    const Value* find(const Key& key) const {
        const Node* const node = this->findNode(key);
        return node != nullptr ? &node->value : nullptr;
    }

    bool containsKey(const Key& key) const { return this->findNode(key) != nullptr; }

private:
    static alloclib::Region* checked(alloclib::Region* region) {
        TOMEX_CHECK_TEXT(region != nullptr, "region != NULL");
        return region;
    }
    static HashFunction checked(HashFunction hashFunction) {
        TOMEX_CHECK_TEXT(hashFunction != nullptr, "hashFunction != NULL");
        return hashFunction;
    }
};

} // namespace elfext
