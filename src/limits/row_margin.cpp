#include "limits/row_margin.h"

#include "categories/limit_entry.h"
#include "limits/row_masks.h"
#include "reference/preferences.h"

namespace surv {
namespace {

constexpr std::int16_t kMarginlessEntity = 7;  ///< entityLevel of rows without an exposure margin
constexpr double kMillion = 1000000.0;
constexpr double kPaisePerRupee = 100.0;

bool IsDerivativeExchange(std::int16_t exchangeMask) {
    return exchangeMask == kMaskNcdex || exchangeMask == kMaskNseDerivatives || exchangeMask == kMaskMcx ||
           exchangeMask == kMaskBseDerivatives;
}

/// The row takes its margin from the tree.
bool TakesTreeMargin(std::int16_t mask, std::int16_t exchangeMask) {
    return IsAmong(kDerivativeRows, mask) || (IsAmong(kCombinedRows, mask) && IsDerivativeExchange(exchangeMask));
}

/// The premium of an option counts as margin in the row.
bool TakesPremium(const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order) {
    if (order.contract.strikePrice <= 0) return false;
    const std::int16_t exchange = order.ExchangeMask();
    const std::int16_t mask = row.limitMask;
    const bool ofOptions = exchange == kMaskNseDerivatives || exchange == kMaskBseDerivatives;
    const bool here = mask == 0xD || mask == 0x61 || ((mask == 0x1FF || mask == 0xF || mask == 0x7F) && ofOptions);
    return here &&
           ((row.limitOptions & kPremiumInMargin) != 0 || (order.riskPreference.marginFlags & kPremiumCounts) != 0);
}

/// One view of a change, raised by the client's add-on.
class CMarginChange {
 public:
    CMarginChange(const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial)
        : before_(trial.marginBefore),
          after_(trial.marginAfter),
          addOn_(order.riskPreference.marginAddOnFactor / kMillion),
          premium_(TakesPremium(row, order)) {}

    [[nodiscard]] double Of(double MarginReading::*margin) const { return Raised(after_.*margin - before_.*margin); }
    /// The margin and, where it counts, the premium of the same view.
    [[nodiscard]] double Of(double MarginReading::*margin, double MarginReading::*optionValue) const {
        if (!premium_) return Of(margin);
        return Of(margin) + Raised((after_.*optionValue - before_.*optionValue) / kPaisePerRupee);
    }

 private:
    [[nodiscard]] double Raised(double change) const { return change + addOn_ * change; }

    const MarginReading& before_;
    const MarginReading& after_;
    double addOn_;
    bool premium_;
};

void MoveOrderSide(BKSurveillanceLimitDefTag& row, const CMarginChange& change) {
    row.usedMarginOrder += change.Of(&MarginReading::orderSide, &MarginReading::optionOrderSide);
    row.usedMarginMax += change.Of(&MarginReading::worst, &MarginReading::optionWorst);
}
void MoveTradedSide(BKSurveillanceLimitDefTag& row, const CMarginChange& change) {
    row.usedMarginTraded += change.Of(&MarginReading::tradedSide, &MarginReading::optionTradedSide);
}
void MoveExposureMargin(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const CMarginChange& change) {
    const std::int16_t exchange = order.ExchangeMask();
    if (IsCashExchange(exchange) || exchange == kMaskBseDerivatives || row.entityLevel == kMarginlessEntity) return;
    row.usedExposureMargin += change.Of(&MarginReading::exposure);
}

/// Exposure margin of NSE derivatives and NCDEX is part of what the row's margin limit holds, if the client has it so.
void TakeExposureOption(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order) {
    constexpr std::int16_t kNseFutures = 2;
    constexpr std::int16_t kNseOptions = 3;
    constexpr std::int16_t kNcdexFutures = 8;
    const std::int16_t segment = order.marketSegment;
    const bool here = segment == kNseFutures || segment == kNseOptions || segment == kNcdexFutures;
    if ((order.riskPreference.marginFlags & kExposureMarginCounts) && IsAmong(kWholeTurnoverRows, row.limitMask) &&
        here) {
        row.limitOptions |= kExposureMarginInLimit;
    }
}

}  // namespace

void MoveMarginForCheck(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial) {
    const CMarginChange change(row, order, trial);
    MoveExposureMargin(row, order, change);
    if (!TakesTreeMargin(row.limitMask, order.ExchangeMask())) return;
    MoveOrderSide(row, change);
    if (order.orderEventKind == event::kCorrection) MoveTradedSide(row, change);
}

void MoveMarginForUpdate(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial) {
    const CMarginChange change(row, order, trial);
    if (TakesTreeMargin(row.limitMask, order.ExchangeMask())) {
        MoveOrderSide(row, change);
        MoveTradedSide(row, change);
    }
    TakeExposureOption(row, order);
    MoveExposureMargin(row, order, change);
}

}  // namespace surv
