#pragma once

// Text in fixed-width fields: how it is read out of a record, held, compared and written back.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace surv {

/// The text of a field: up to its first zero, never past its width.
template <std::size_t Width>
[[nodiscard]] inline std::string_view FieldText(const char (&field)[Width]) {
    return {field, ::strnlen(field, Width)};
}

/// The text behind a pointer that the host gives, read no further than `width`; null reads as empty.
[[nodiscard]] inline std::string_view HostText(const char* text, std::size_t width) {
    return text ? std::string_view{text, ::strnlen(text, width)} : std::string_view{};
}

/// Writes a text into a field: cut to Width - 1 characters, terminated, the rest zeroed.
template <std::size_t Width>
inline void WriteField(char (&field)[Width], std::string_view text) {
    const std::size_t length = std::min(text.size(), Width - 1);
    std::memset(field, 0, Width);
    if (length != 0) std::memcpy(field, text.data(), length);
}

/// Writes a text into a field up to its last character; a text that fills it has no zero behind.
template <std::size_t Width>
inline void WriteWholeField(char (&field)[Width], std::string_view text) {
    const std::size_t length = std::min(text.size(), Width);
    std::memset(field, 0, Width);
    if (length != 0) std::memcpy(field, text.data(), length);
}

/// Blanks are taken off both ends.
[[nodiscard]] inline std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// A text of at most Capacity characters, held in place and padded with zeros, so that equal texts are equal
/// bytes. A longer text is cut.
template <std::size_t Capacity>
class FixedText {
 public:
    static_assert(Capacity % 8 == 0, "compared and hashed in words of 8 bytes");

    constexpr FixedText() = default;
    FixedText(std::string_view text) {  // NOLINT(google-explicit-constructor): a text is a text
        const std::size_t length = std::min(text.size(), Capacity);
        if (length != 0) std::memcpy(bytes_.data(), text.data(), length);
    }
    FixedText(const char* text) : FixedText(std::string_view{text}) {}  // NOLINT(google-explicit-constructor)

    [[nodiscard]] std::string_view View() const { return {bytes_.data(), ::strnlen(bytes_.data(), Capacity)}; }
    [[nodiscard]] bool Empty() const { return bytes_[0] == '\0'; }
    [[nodiscard]] std::uint64_t Hash() const {
        std::uint64_t hash = 0;
        for (std::size_t at = 0; at < Capacity; at += 8) {
            hash = (hash ^ Word(at)) * 0x9E3779B97F4A7C15ULL;
            hash ^= hash >> 32;
        }
        return hash;
    }

    friend bool operator==(const FixedText& a, const FixedText& b) {
        std::uint64_t difference = 0;
        for (std::size_t at = 0; at < Capacity; at += 8) difference |= a.Word(at) ^ b.Word(at);
        return difference == 0;
    }
    friend bool operator==(const FixedText& a, std::string_view b) { return a.View() == b; }

 private:
    [[nodiscard]] std::uint64_t Word(std::size_t at) const {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes_.data() + at, 8);
        return word;
    }

    std::array<char, Capacity> bytes_{};
};

/// The code of an entity; the root's is "-".
using CodeText = FixedText<8>;

}  // namespace surv
