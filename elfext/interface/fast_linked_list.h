// A singly linked list with its nodes in a region.
//
// Positions in the list are iterators: one knows its node and the node before, so that it can take
// its element out or put one in front of it without a walk.
#pragma once

#include "alloclib/interface/region.h"
#include "platform/interface/internal_check.h"

#include <cstdint>
#include <new>

namespace elfext {

template <typename T>
class fast_linked_list {
    struct Node {
        T value;
        Node* next;
    };

public:
    // A place in a list: at an element, or behind the last. Elements added or removed by other
    // means than this iterator make it invalid.
    class iterator {
    public:
        // At the first element of `list`, which is not null and must outlive the iterator.
        explicit iterator(fast_linked_list* list) : m_List(list) {
            TOMEX_CHECK_TEXT(list != nullptr, "list != NULL");
            m_Current = list->m_First;
        }

        bool isAtEnd() const { return m_Current == nullptr; }

        // The element here.
        T& operator*() const {
            TOMEX_CHECK_TEXT(m_Current != nullptr, "m_Current != NULL");
            return m_Current->value;
        }
        T* operator->() const { return &**this; }

        iterator& operator++() {
            TOMEX_CHECK_TEXT(m_Current != nullptr, "m_Current != NULL");
            m_Previous = m_Current;
            m_Current = m_Current->next;
            return *this;
        }

        // Takes the element here out; the iterator is at the one that followed.
        void remove() {
            TOMEX_CHECK_TEXT(m_Current != nullptr, "m_Current != NULL");
            m_Current = m_List->unlink(m_Previous, m_Current);
        }

        // Puts `value` before the element here, or behind the last; the iterator is at the new
        // element.
        void insert(const T& value) { m_Current = m_List->link(m_Previous, value); }

        bool operator==(const iterator& other) const { return m_Current == other.m_Current; }

    private:
        friend class fast_linked_list;
        // Behind the last element, for the end of a loop.
        iterator() = default;

        Node* m_Current = nullptr;
        Node* m_Previous = nullptr;
        fast_linked_list* m_List = nullptr;
    };

    // An empty list. `region` is not null and must outlive the list.
    explicit fast_linked_list(alloclib::Region* region) : m_Region(region) {
        TOMEX_CHECK_TEXT(region != nullptr, "region != NULL");
    }
    fast_linked_list(const fast_linked_list&) = delete;
    fast_linked_list& operator=(const fast_linked_list&) = delete;
    ~fast_linked_list() { clear(); }

    uint32_t getSize() const { return m_Used; }
    bool isEmpty() const { return m_First == nullptr; }

    // Puts `value` behind the last element, or before the first.
    void add(const T& value) { link(m_Last, value); }
    void addFirst(const T& value) { link(nullptr, value); }

    void clear() {
        while (m_First != nullptr) {
            unlink(nullptr, m_First);
        }
    }

    iterator begin() { return iterator(this); }
    iterator end() { return iterator(); }

private:
    static_assert(alignof(Node) <= 8, "blocks of a region are 8-aligned");

    Node* link(Node* previous, const T& value) {
        Node*& place = previous == nullptr ? m_First : previous->next;
        Node* const node = new (alloclib::allocate(*m_Region, sizeof(Node), 8)) Node{value, place};
        place = node;
        if (node->next == nullptr) {
            m_Last = node;
        }
        ++m_Used;
        return node;
    }

    // Gives the node that followed.
    Node* unlink(Node* previous, Node* node) {
        Node* const following = node->next;
        (previous == nullptr ? m_First : previous->next) = following;
        if (following == nullptr) {
            m_Last = previous;
        }
        node->~Node();
        m_Region->Discard(node, sizeof(Node), 8);
        --m_Used;
        return following;
    }

    alloclib::Region* m_Region;
    Node* m_First = nullptr;
    Node* m_Last = nullptr;
    uint32_t m_Used = 0;
};

} // namespace elfext
