#pragma once

#include "asn1/Arena.h"

#include <cstdint>

namespace norvane {

/// The elements of a decoded SEQUENCE OF or SET OF, in encoded order, as a list in the memory of
/// the context. A copy of the list shares the elements.
template <class T>
class ASN1TSeqOfList {
  public:
    struct Node {
        T data;
        Node* next;
    };

    class iterator {
      public:
        explicit iterator(Node* node) : node_(node) {}
        T& operator*() const { return node_->data; }
        T* operator->() const { return &node_->data; }
        iterator& operator++() {
            node_ = node_->next;
            return *this;
        }
        [[nodiscard]] bool operator==(const iterator&) const = default;

      private:
        Node* node_;
    };

    std::uint32_t count = 0;
    Node* head = nullptr;
    Node* tail = nullptr;

    [[nodiscard]] iterator begin() const { return iterator(head); }
    [[nodiscard]] iterator end() const { return iterator(nullptr); }

    /// A new, empty element at the end, in memory of the arena.
    [[nodiscard]] T& append(Arena& memory) {
        Node* node = memory.make<Node>();
        (head == nullptr ? head : tail->next) = node;
        tail = node;
        ++count;
        return node->data;
    }
};

/// Steps through a list one element a call.
template <class T>
class ASN1CSeqOfListIterator {
  public:
    explicit ASN1CSeqOfListIterator(const ASN1TSeqOfList<T>& list) : node_(list.head) {}

    /// The next element, or null behind the last one.
    [[nodiscard]] T* next() {
        if (node_ == nullptr) {
            return nullptr;
        }
        T* element = &node_->data;
        node_ = node_->next;
        return element;
    }

  private:
    typename ASN1TSeqOfList<T>::Node* node_;
};

/// The control class of a list: gives out iterators.
template <class T>
class ASN1CSeqOfList {
  public:
    explicit ASN1CSeqOfList(const ASN1TSeqOfList<T>& list) : list_(list) {}
    [[nodiscard]] ASN1CSeqOfListIterator<T> iterator() const {
        return ASN1CSeqOfListIterator<T>(list_);
    }

  private:
    const ASN1TSeqOfList<T>& list_;
};

} // namespace norvane
