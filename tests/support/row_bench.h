#pragma once

// One limit row and one order on positions made by hand: reaches what no order of a scenario does.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "categories/limit_entry.h"
#include "limits/scrip_trial.h"
#include "support/scenario.h"

namespace surv::test {

/// A limit of a row by its place: the record is packed, so nothing may point at its fields.
struct RowField {
    std::size_t at = 0;
    bool whole = false;  ///< a quantity; else money

    void Set(BKSurveillanceLimitDefTag& row, double value) const;
};
inline constexpr RowField kNetQuantityLimit{offsetof(BKSurveillanceLimitDefTag, netQuantityLimit), true};
inline constexpr RowField kMaxValueLimit{offsetof(BKSurveillanceLimitDefTag, maxSingleOrderValue)};
inline constexpr RowField kMaxQuantityLimit{offsetof(BKSurveillanceLimitDefTag, maxSingleOrderQty), true};
inline constexpr RowField kMinValueLimit{offsetof(BKSurveillanceLimitDefTag, minSingleOrderValue)};
inline constexpr RowField kMinQuantityLimit{offsetof(BKSurveillanceLimitDefTag, minSingleOrderQty), true};
inline constexpr RowField kGrossLimit{offsetof(BKSurveillanceLimitDefTag, grossExposureLimit)};
inline constexpr RowField kNetLimit{offsetof(BKSurveillanceLimitDefTag, netExposureLimit)};
inline constexpr RowField kNetSaleLimit{offsetof(BKSurveillanceLimitDefTag, netSaleExposureLimit)};
inline constexpr RowField kPositionLimit{offsetof(BKSurveillanceLimitDefTag, netPositionLimit)};
inline constexpr RowField kPendingLimit{offsetof(BKSurveillanceLimitDefTag, pendingOrderLimit)};
inline constexpr RowField kTurnoverLimit{offsetof(BKSurveillanceLimitDefTag, turnoverLimit)};
inline constexpr RowField kMtmLossLimit{offsetof(BKSurveillanceLimitDefTag, mtmLossLimit)};
inline constexpr RowField kMarginLimit{offsetof(BKSurveillanceLimitDefTag, marginLimit)};

/// Every limit mask in use, in rising order.
inline constexpr std::array<std::int16_t, 30> kRowMasks{
    2,    3,    4,    5,    8,    9,    0xC,  0xD,  0xE,  0xF,   0x10,  0x11,  0x12,  0x13,  0x20,
    0x21, 0x40, 0x41, 0x60, 0x61, 0x7E, 0x7F, 0x80, 0x81, 0x100, 0x101, 0x180, 0x181, 0x1FE, 0x1FF};

/// A position of which everything has traded.
[[nodiscard]] tagSurvPositionData Traded(int bought, int buyPrice, int sold = 0, int sellPrice = 0);

/// The default is a client's buy of 100 at 250.00 of an NSE equity at its settlement row without limits; nothing is
/// held, and nothing used.
struct RowBench {
    explicit RowBench(std::int16_t mask = 3);

    BKSurveillanceLimitDefTag row;
    tagOrderInfoForSurv order;
    tagExposureScripSpecificInfo scrip;
    tagSurvPositionData held;     ///< the netted position before the order
    tagSurvPositionData ownHeld;  ///< the account's own
    MarginReading treeBefore;     ///< margins of the account's tree
    MarginReading treeAfter;
    double conversionMargin = 0;  ///< rupees
    Settings settings;
    CUndoLog undo;

    RuleAnswer Check();
    RuleAnswer Report(tagBreachRow& breach);

 private:
    ScripTrial Trial(CheckMode mode);
    RuleAnswer Check(CheckMode mode, tagBreachRow* breach);
};

/// A figure equal to its limit passes; the nearest limit that refuses it is `step` away. An empty report: none.
struct RowRefusal {
    RowField limit;
    double figure;
    int step, code, bitsA, bitsB;
    std::string text, report;
};
/// Judges the bench's order, and reports on it, without the limit and on both sides of it.
void ExpectRefusal(const RowBench& bench, const RowRefusal& expected);

}  // namespace surv::test
