#pragma once

// How the margin of a contract is formed, and how a change of it travels up the account's tree.

#include <cstdint>

#include "margin/margin_records.h"
#include "positions/position.h"
#include "shared/order.h"

namespace surv {

/// The selector of each view.
inline constexpr PerView<Selector> kSelectors{Selector::kOrderSide, Selector::kTradedSide, Selector::kWorstLong,
                                              Selector::kWorstShort};

/// The market of a margin mask; kNone for a mask under which no margin figure is touched.
[[nodiscard]] MarginGroup MarginGroupOfMask(std::int16_t periodicity);
/// The same of an exchange mask.
[[nodiscard]] MarginGroup MarginGroupOfExchange(std::int16_t exchangeMask);
/// Margin records are only touched for orders margined from risk parameters, on the expiry period of a derivative.
[[nodiscard]] inline bool IsMargined(const tagOrderInfoForSurv& order) {
    return order.riskModeCopy == 1 && MarginGroupOfMask(order.periodicity) != MarginGroup::kNone;
}

/// The margin records along the path from a contract to its account.
struct MarginPath {
    tagScripMargin& scrip;
    tagExpiryMargin& expiry;
    tagUnderlyingMargin& underlying;
    tagClientMarginTotals& totals;
};

/// The two positions of a contract of an account.
struct ContractPositions {
    const CSurvPosition& whole;
    const CSurvPosition& today;  ///< option values come from it
};

/// Whether the traded view follows. Where it stays, a contract keeps the quantities that the sums hold, and the next
/// event that it follows brings all up.
enum class TradedSums : std::uint8_t { kStay, kFollow };

/// Forms the contract's figures anew, after `parameters` have taken the place of its own (null: they stay), and carries
/// the difference up to the account. A contract that isn't in the sums so far enters them whole.
void CarryContract(const MarginPath& path, const ContractPositions& positions, const tagOrderInfoForSurv& order,
                   const tagRPFContractRecord* parameters, TradedSums traded, std::int32_t tradingDayBase);

/// The same where nothing but the figures' inputs can have changed: nothing is carried if they come out as they were.
void RefreshContract(const MarginPath& path, const ContractPositions& positions, const tagOrderInfoForSurv& order,
                     const tagRPFContractRecord* parameters, std::int32_t tradingDayBase);

/// What the account takes from an underlying: a book of long options alone is worth its scan minus its value, and
/// never more than 0. `of` is the order view or the traded one.
[[nodiscard]] double EffectiveMargin(const tagUnderlyingMargin& margin, std::size_t of);
[[nodiscard]] double EffectiveWorstMargin(const tagUnderlyingMargin& margin);

/// The account's margin on an exchange; margins and exposure margin are never below 0. All 0 where totals is null.
[[nodiscard]] MarginReading ReadMargins(const tagClientMarginTotals* totals, std::int16_t exchangeMask);

}  // namespace surv
