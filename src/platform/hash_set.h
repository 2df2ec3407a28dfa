#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/hash_map.h"

namespace surv {

/// A set of plain values, walked in insertion order. Nothing is allocated until the first insert; a look-up costs one
/// probe at any size.
template <class Key>
class HashSet {
 public:
    [[nodiscard]] std::size_t Size() const { return keys_.size(); }
    [[nodiscard]] bool Empty() const { return keys_.empty(); }

    [[nodiscard]] bool Contains(const Key& key) const {
        if (index_.empty()) return std::find(keys_.begin(), keys_.end(), key) != keys_.end();
        return index_[PlaceOf(key)] != 0;
    }

    /// False when the key is there already. If memory runs out the set stays as it was.
    bool Insert(const Key& key) {
        if (Contains(key)) return false;
        keys_.push_back(key);
        try {
            Grow();
        } catch (...) {
            keys_.pop_back();
            throw;
        }
        return true;
    }

    void Clear() {
        keys_.clear();
        index_.clear();
    }

    [[nodiscard]] auto begin() const { return keys_.begin(); }
    [[nodiscard]] auto end() const { return keys_.end(); }

 private:
    static constexpr std::size_t kScanLimit = 8;

    /// Where the key stands in the index, or the free place that it would take.
    [[nodiscard]] std::size_t PlaceOf(const Key& key) const {
        const std::size_t last = index_.size() - 1;
        std::size_t at = KeyHash<Key>{}(key)&last;
        while (index_[at] != 0 && !(keys_[index_[at] - 1] == key)) at = (at + 1) & last;
        return at;
    }

    void Grow() {
        if (keys_.size() <= kScanLimit) return;
        if (index_.size() < keys_.size() * 2) {
            std::vector<std::uint32_t> fresh(std::bit_ceil(keys_.size() * 4));
            index_.swap(fresh);
            for (std::size_t i = 0; i < keys_.size(); ++i) Enter(i);
        } else {
            Enter(keys_.size() - 1);
        }
    }

    void Enter(std::size_t entry) { index_[PlaceOf(keys_[entry])] = static_cast<std::uint32_t>(entry + 1); }

    std::vector<Key> keys_;
    std::vector<std::uint32_t> index_;  // number of the key plus 1; 0: free
};

}  // namespace surv
