// A set of keys in a region: `hash_set` with nodes and buckets by bump allocation.
#pragma once

#include "elfext/interface/hash_chains.h"

namespace elfext {

template <typename Key>
class fast_hash_set : public hash_chains<Key, HashSetNode<Key>, RegionMemory> {
    using Chains = hash_chains<Key, HashSetNode<Key>, RegionMemory>;

public:
    using Node = HashSetNode<Key>;
    using HashFunction = typename Chains::HashFunction;

    // An empty set. `region` is not null and must outlive it; `hashFunction` is not null.
    explicit fast_hash_set(alloclib::Region* region,
                           HashFunction hashFunction = &KeyHash<Key>::hash)
        : Chains(RegionMemory(checked(region)), checked(hashFunction)) {}

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
