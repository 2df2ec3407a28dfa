#pragma once

// The three containers that the exported signatures name. They appear at the boundary only, hold pointers and own
// nothing: who frees what a list holds is told at each call (see host.h).

#include <cstddef>
#include <deque>
#include <iterator>
#include <map>
#include <string>
#include <utility>

/// Root of whatever a CMapStringToOb holds.
class CObject {
 public:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject(CObject&&) = default;
    CObject& operator=(const CObject&) = default;
    CObject& operator=(CObject&&) = default;
    virtual ~CObject() = default;
};

/// An ordered list of pointers. A position is opaque; null is the end.
class CPtrList {
 public:
    struct Node {
        void* element = nullptr;
        Node* next = nullptr;
    };
    using Position = Node*;

    CPtrList() = default;
    CPtrList(const CPtrList&) = delete;
    CPtrList& operator=(const CPtrList&) = delete;
    ~CPtrList() { RemoveAll(); }

    Position AddTail(void* element) {
        Node* node = new Node{element, nullptr};
        (tail_ ? tail_->next : head_) = node;
        tail_ = node;
        ++count_;
        return node;
    }
    [[nodiscard]] Position GetHeadPosition() const { return head_; }
    /// REQUIRES: position is not null. Gives its element and moves position on.
    void* GetNext(Position& position) const {
        void* element = position->element;
        position = position->next;
        return element;
    }
    [[nodiscard]] int GetCount() const { return count_; }
    [[nodiscard]] bool IsEmpty() const { return count_ == 0; }
    /// REQUIRES: the list is not empty.
    void* RemoveHead() {
        Node* node = head_;
        void* element = node->element;
        head_ = node->next;
        if (!head_) tail_ = nullptr;
        --count_;
        delete node;
        return element;
    }
    /// Takes over the elements of another list, behind its own. Needs no memory; the other list is empty then.
    void TakeAll(CPtrList& other) {
        if (other.IsEmpty()) return;
        (tail_ ? tail_->next : head_) = other.head_;
        tail_ = other.tail_;
        count_ += other.count_;
        other.head_ = other.tail_ = nullptr;
        other.count_ = 0;
    }
    /// Forgets the elements; frees none of them.
    void RemoveAll() {
        while (head_) RemoveHead();
    }

 private:
    Node* head_ = nullptr;
    Node* tail_ = nullptr;
    int count_ = 0;
};

/// A map from text to objects, walked in insertion order.
class CMapStringToOb {
 public:
    /// 0 is the end of a walk.
    using Position = std::size_t;

    /// Enters the value, in the place of an earlier one of the same key.
    void SetAt(const char* key, CObject* value) {
        const auto [it, added] = index_.try_emplace(key, entries_.size());
        if (added) {
            entries_.emplace_back(key, value);
        } else {
            entries_[it->second].second = value;
        }
    }
    bool Lookup(const char* key, CObject*& value) const {
        const auto it = index_.find(key);
        if (it == index_.end()) return false;
        value = entries_[it->second].second;
        return true;
    }
    [[nodiscard]] Position GetStartPosition() const { return entries_.empty() ? 0 : 1; }
    /// REQUIRES: position is not 0.
    void GetNextAssoc(Position& position, std::string& key, CObject*& value) const {
        const auto& entry = entries_[position - 1];
        key = entry.first;
        value = entry.second;
        position = position < entries_.size() ? position + 1 : 0;
    }
    [[nodiscard]] int GetCount() const { return static_cast<int>(entries_.size()); }
    void RemoveAll() {
        index_.clear();
        entries_.clear();
    }

 private:
    std::map<std::string, std::size_t, std::less<>> index_;
    std::deque<std::pair<std::string, CObject*>> entries_;
};
