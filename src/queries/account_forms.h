#pragma once

// The codes under which an account's positions may stand.

#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/fixed_text.h"

namespace surv {

inline constexpr std::string_view kEveryAccount = "ALL";

/// An account's code is no longer; a longer text names no account.
inline constexpr std::size_t kLongestAccount = 15;

namespace detail {
[[nodiscard]] inline FixedText<16> PlusForm(std::string_view code, std::size_t width) {
    char text[16];
    std::memset(text, ' ', sizeof text);
    code.substr(0, width).copy(text, width);
    text[width] = '+';
    return std::string_view{text, width + 1};
}
}  // namespace detail

/// How a client's sum stands under a dealer and under a group.
[[nodiscard]] inline FixedText<16> SixForm(std::string_view code) { return detail::PlusForm(code, 6); }
[[nodiscard]] inline FixedText<16> TenForm(std::string_view code) { return detail::PlusForm(code, 10); }
[[nodiscard]] inline bool IsSixForm(std::string_view code) { return code.size() > 6 && code[6] == '+'; }
[[nodiscard]] inline bool IsTenForm(std::string_view code) { return code.size() > 10 && code[10] == '+'; }

/// Group and account of "group|account".
[[nodiscard]] inline std::pair<std::string_view, std::string_view> SplitAccountKey(std::string_view key) {
    const std::size_t bar = key.find('|');
    return {key.substr(0, bar), key.substr(bar + 1)};
}

}  // namespace surv
