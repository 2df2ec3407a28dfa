#pragma once

// The bytes of a fuzzer, read from front to back. What an input is too short for reads as zero.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace fuzz {

class CInput {
 public:
    CInput(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool Empty() const { return rest_.empty(); }
    /// All that is left.
    [[nodiscard]] std::string_view Rest() const { return rest_; }

    void TakeBytes(char* bytes, std::size_t size) {
        const std::size_t there = std::min(size, rest_.size());
        std::memcpy(bytes, rest_.data(), there);
        std::memset(bytes + there, 0, size - there);
        rest_.remove_prefix(there);
    }
    template <class Value>
    [[nodiscard]] Value Take() {
        static_assert(std::is_trivially_copyable_v<Value>);
        Value value;
        TakeBytes(reinterpret_cast<char*>(&value), sizeof value);
        return value;
    }
    [[nodiscard]] std::uint8_t Byte() { return Take<std::uint8_t>(); }

 private:
    std::string_view rest_;
};

}  // namespace fuzz
