#pragma once

// What a limit row does depends on which segments its mask covers. These are the groups of masks, and the lists of
// masks that an order meets.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "surveillance/codes.h"

namespace surv {

/// The row keeps margin figures and has the margin rule.
inline constexpr std::array<std::int16_t, 14> kMarginRows{2,    3,    0xD,  0xF,  0x10,  0x11,  0x12,
                                                          0x13, 0x61, 0x7F, 0x81, 0x101, 0x181, 0x1FF};
/// Margin from the derivative tree, whatever the order.
inline constexpr std::array<std::int16_t, 4> kDerivativeRows{0xD, 0x61, 0x81, 0x101};
/// Margin from the derivative tree for an order of a derivative exchange.
inline constexpr std::array<std::int16_t, 4> kCombinedRows{0xF, 0x7F, 0x181, 0x1FF};
/// Margin from the position, whatever the order.
inline constexpr std::array<std::int16_t, 6> kCashRows{2, 3, 0x10, 0x11, 0x12, 0x13};
/// Cash settlement, alone or with others: the product rule sets test more than the order's own size here alone.
inline constexpr std::array<std::int16_t, 6> kSettlementRows{3, 0x11, 0x13, 0xF, 0x7F, 0x1FF};
/// The exposure margin counts towards the margin rule; a check doesn't move usedTurnoverOrder.
inline constexpr std::array<std::int16_t, 6> kWholeTurnoverRows{0xD, 0xF, 0x7F, 0x101, 0x181, 0x1FF};

[[nodiscard]] constexpr bool IsAmong(std::span<const std::int16_t> masks, std::int16_t mask) {
    return std::find(masks.begin(), masks.end(), mask) != masks.end();
}

/// What the mask of a row covers.
struct RowShape {
    bool single = false;    ///< one segment
    bool hasOther = false;  ///< anything but equity
    bool hasEquity = false;
    bool hasFutOpt = false;  ///< futures or options of NSE or BSE
    bool odd = false;        ///< expiry or settlement

    constexpr explicit RowShape(std::int16_t mask)
        : single(IsSingleSegment(mask)),
          hasOther((mask & 0x1EC) != 0),
          hasEquity((mask & 0x12) != 0),
          hasFutOpt((mask & 0x6C) != 0),
          odd((mask & kExpiryBit) != 0) {}
};

/// The limit masks of one period, narrowest scope first.
class CMaskList {
 public:
    constexpr void Add(std::int16_t mask) { masks_[count_++] = mask; }
    [[nodiscard]] constexpr const std::int16_t* begin() const { return masks_.data(); }
    [[nodiscard]] constexpr const std::int16_t* end() const { return masks_.data() + count_; }
    [[nodiscard]] constexpr std::size_t Size() const { return count_; }

 private:
    std::array<std::int16_t, kScopeOrder.size()> masks_{};
    std::size_t count_ = 0;
};

/// The masks of a segment bit, by period.
struct MaskLists {
    CMaskList daily;
    CMaskList expiry;

    [[nodiscard]] constexpr const CMaskList& Of(Period period) const {
        return period == Period::kDaily ? daily : expiry;
    }
};

namespace detail {
constexpr MaskLists ListMasks(std::int16_t segmentBit, bool meeting) {
    MaskLists lists;
    for (const std::int16_t scope : kScopeOrder) {
        if (((scope & segmentBit) != 0) != meeting) continue;
        lists.daily.Add(scope);
        lists.expiry.Add(static_cast<std::int16_t>(scope + kExpiryBit));
    }
    return lists;
}
constexpr std::array<MaskLists, kSegmentCount + 1> ListAll(bool meeting) {
    std::array<MaskLists, kSegmentCount + 1> all{};
    for (std::size_t segment = 0; segment < all.size(); ++segment) {
        all[segment] = ListMasks(SegmentToBit(static_cast<std::int16_t>(segment)), meeting);
    }
    return all;
}
inline constexpr auto kMasksOfScope = ListAll(true);
inline constexpr auto kMasksOutsideScope = ListAll(false);
}  // namespace detail

/// The masks that cover the segment. REQUIRES: segment is 0 to 8.
[[nodiscard]] constexpr const MaskLists& MasksOfScope(std::int16_t segment) {
    return detail::kMasksOfScope[static_cast<std::size_t>(segment)];
}
/// The masks that don't.
[[nodiscard]] constexpr const MaskLists& MasksOutsideScope(std::int16_t segment) {
    return detail::kMasksOutsideScope[static_cast<std::size_t>(segment)];
}

}  // namespace surv
