#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace surv {

/// The value cut to whole numbers; outside the range of 32 bits its nearest end, and 0 for what is no number.
[[nodiscard]] constexpr std::int32_t ClampToInt32(double value) {
    constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
    if (value >= kHighest) return std::numeric_limits<std::int32_t>::max();
    if (value <= kLowest) return std::numeric_limits<std::int32_t>::min();
    return value == value ? static_cast<std::int32_t>(value) : 0;
}

/// A quantity in a row's field of 32 bits: beyond their range its nearest end.
[[nodiscard]] constexpr std::int32_t RowQuantity(std::int64_t quantity) {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(quantity, kLowest, kHighest));
}

}  // namespace surv
