#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace surv {

template <class Key>
struct KeyHash {
    std::uint64_t operator()(const Key& key) const { return key.Hash(); }
};
template <class Key>
    requires std::is_integral_v<Key>
struct KeyHash<Key> {
    std::uint64_t operator()(Key key) const {
        std::uint64_t hash = static_cast<std::uint64_t>(key) * 0x9E3779B97F4A7C15ULL;
        return hash ^ (hash >> 32);
    }
};

template <class Object>
struct KeyHash<Object*> {
    std::uint64_t operator()(const Object* key) const {
        return KeyHash<std::uintptr_t>{}(reinterpret_cast<std::uintptr_t>(key));
    }
};

/// A hash map that owns its values and is walked in insertion order.
///
/// 1. Nothing is allocated until the first insert. Up to kScanLimit entries are found by scanning their keys;
///    beyond that an index of the size given at construction (rounded up to a power of two) is built, and doubles
///    when more than half full.
/// 2. Values live on the heap, one allocation each: their addresses stay good until they are erased.
/// 3. A look-up costs one probe at any size.
template <class Key, class Value>
class HashMap {
 public:
    struct Entry {
        Key key;
        std::unique_ptr<Value> value;
    };
    /// Numbers go by value: a reference to a field of a packed record may not be aligned.
    using KeyArgument = std::conditional_t<std::is_integral_v<Key>, Key, const Key&>;

    /// buckets: the size at which the index starts.
    explicit HashMap(std::uint32_t buckets = 16) : buckets_(buckets) {}

    [[nodiscard]] std::size_t Size() const { return entries_.size(); }
    [[nodiscard]] bool Empty() const { return entries_.empty(); }

    /// Null when the key isn't there.
    [[nodiscard]] Value* Find(KeyArgument key) const {
        const std::size_t at = Position(key);
        return at == kNowhere ? nullptr : entries_[at].value.get();
    }

    /// REQUIRES: the key isn't there, value is not null. If memory runs out the value stays with the caller.
    Value& Insert(KeyArgument key, std::unique_ptr<Value>&& value) {
        entries_.push_back(Entry{key, nullptr});
        try {
            Grow();
        } catch (...) {
            entries_.pop_back();
            throw;
        }
        entries_.back().value = std::move(value);
        return *entries_.back().value;
    }

    /// The value under the key; a missing one is made from the arguments.
    template <class... Arguments>
    Value& FindOrMake(KeyArgument key, Arguments&&... arguments) {
        if (Value* found = Find(key)) return *found;
        return Insert(key, std::make_unique<Value>(std::forward<Arguments>(arguments)...));
    }

    /// Takes the value out; null when the key isn't there. The order of the others stays.
    std::unique_ptr<Value> Take(KeyArgument key) {
        const std::size_t at = Position(key);
        if (at == kNowhere) return nullptr;
        std::unique_ptr<Value> value = std::move(entries_[at].value);
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
        if (!index_.empty()) FillIndex();
        return value;
    }

    void Clear() {
        entries_.clear();
        index_.clear();
    }

    [[nodiscard]] auto begin() const { return entries_.begin(); }
    [[nodiscard]] auto end() const { return entries_.end(); }

 private:
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
    static constexpr std::size_t kScanLimit = 8;

    /// One place of the index: part of the hash, and the entry's number plus 1 (0: free).
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t entry = 0;
    };

    [[nodiscard]] std::size_t Position(KeyArgument key) const {
        if (index_.empty()) {
            for (std::size_t i = 0; i < entries_.size(); ++i) {
                if (entries_[i].key == key) return i;
            }
            return kNowhere;
        }
        const std::uint64_t hash = KeyHash<Key>{}(key);
        const std::size_t last = index_.size() - 1;
        const auto tag = static_cast<std::uint32_t>(hash >> 32);
        for (std::size_t at = hash & last;; at = (at + 1) & last) {
            const Slot& slot = index_[at];
            if (slot.entry == 0) return kNowhere;
            if (slot.tag == tag && entries_[slot.entry - 1].key == key) return slot.entry - 1;
        }
    }

    void Grow() {
        if (index_.empty() && entries_.size() <= kScanLimit) return;
        const std::size_t needed = entries_.size() * 2;
        if (index_.size() >= needed) {
            Enter(entries_.size() - 1);
        } else {
            Reindex(std::bit_ceil(std::max<std::size_t>(needed, buckets_)));
        }
    }

    void Reindex(std::size_t size) {
        std::vector<Slot> fresh(size);
        index_.swap(fresh);
        FillIndex();
    }

    void FillIndex() {
        std::fill(index_.begin(), index_.end(), Slot{});
        for (std::size_t i = 0; i < entries_.size(); ++i) Enter(i);
    }

    void Enter(std::size_t entry) {
        const std::uint64_t hash = KeyHash<Key>{}(entries_[entry].key);
        const std::size_t last = index_.size() - 1;
        std::size_t at = hash & last;
        while (index_[at].entry != 0) at = (at + 1) & last;
        index_[at] = Slot{static_cast<std::uint32_t>(hash >> 32), static_cast<std::uint32_t>(entry + 1)};
    }

    std::vector<Entry> entries_;
    std::vector<Slot> index_;
    std::uint32_t buckets_;
};

}  // namespace surv
