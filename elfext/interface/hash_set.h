// A set of keys on the general heap. See `hash_chains` for how it grows and in which order it is
// gone over; the nodes gone over have the field `key`.
#pragma once

#include "elfext/interface/hash_chains.h"

namespace elfext {

template <typename Key>
class hash_set : public hash_chains<Key, HashSetNode<Key>, HeapMemory> {
    using Chains = hash_chains<Key, HashSetNode<Key>, HeapMemory>;

public:
    using Node = HashSetNode<Key>;
    using HashFunction = typename Chains::HashFunction;

    // An empty set. `hashFunction` is not null.
    explicit hash_set(HashFunction hashFunction = &KeyHash<Key>::hash)
        : Chains(HeapMemory(), checked(hashFunction)) {}

    // Adds `key`. True if it was not there already.
    bool add(const Key& key) {
        Node** bucket = nullptr;
        if (this->findNodeForInsertion(key, bucket) != nullptr) {
            return false;
        }
        this->addNode(bucket, key);
        return true;
    }

    bool contains(const Key& key) const { return this->findNode(key) != nullptr; }

private:
    static HashFunction checked(HashFunction hashFunction) {
        TOMEX_CHECK_TEXT(hashFunction != nullptr, "hashFunction != NULL");
        return hashFunction;
    }
};

} // namespace elfext
