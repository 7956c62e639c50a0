// The list in which parameters collect several values.
//
// Singly linked, with the first node embedded in the list object: most lists hold one element and
// then cost no node at all. Every further node comes from the default region. The tail pointer
// makes appending one step, whatever the length, and is also the test for emptiness: null means
// empty, the embedded node means one element. Nodes are never freed one by one; clearing forgets
// them and the region takes the memory back at its end.
#pragma once

#include "tabledrivenparser/interface/region_object.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace tabledrivenparser {

template <class T>
struct LinkedListNode {
    T value{};
    LinkedListNode* next = nullptr;
};

template <class T>
class LinkedList {
public:
    // Walks the values in the order of appending.
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        Iterator() = default;
        explicit Iterator(const LinkedListNode<T>* node) : m_node(node) {}
        reference operator*() const { return m_node->value; }
        pointer operator->() const { return &m_node->value; }
        Iterator& operator++() {
            m_node = m_node->next;
            return *this;
        }
        Iterator operator++(int) {
            Iterator before = *this;
            m_node = m_node->next;
            return before;
        }
        bool operator==(const Iterator&) const = default;

    private:
        const LinkedListNode<T>* m_node = nullptr;
    };

    // An empty list.
    LinkedList() = default;
    // A list of one element.
    explicit LinkedList(T firstValue) { append(firstValue); }
    // The tail may point into the object itself.
    LinkedList(const LinkedList&) = delete;
    LinkedList& operator=(const LinkedList&) = delete;
    virtual ~LinkedList() { clear(); }

    // Adds `value` at the end, in constant time. Takes a node from the default region unless the
    // list was empty.
    void append(T value) {
        if (m_tail == nullptr) {
            m_first.value = value;
            m_first.next = nullptr;
            m_tail = &m_first;
            return;
        }
        auto* node = makeInDefaultRegion<LinkedListNode<T>>();
        node->value = value;
        m_tail->next = node;
        m_tail = node;
    }

    // Forgets all elements. The region keeps their nodes.
    void clear() {
        m_first.next = nullptr;
        m_tail = nullptr;
    }

    bool empty() const { return m_tail == nullptr; }

    // The number of elements, counted by a walk.
    uint32_t count() const {
        uint32_t elements = 0;
        for (Iterator each = begin(); each != end(); ++each) {
            ++elements;
        }
        return elements;
    }

    // The nodes themselves, null for an empty list.
    const LinkedListNode<T>* firstNode() const { return m_tail == nullptr ? nullptr : &m_first; }
    const LinkedListNode<T>* lastNode() const { return m_tail; }

    Iterator begin() const { return Iterator(firstNode()); }
    Iterator end() const { return Iterator(); }

protected:
    LinkedListNode<T> m_first;
    LinkedListNode<T>* m_tail = nullptr;
};

} // namespace tabledrivenparser
