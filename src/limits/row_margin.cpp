#include "limits/row_margin.h"

#include "categories/limit_entry.h"
#include "limits/row_masks.h"
#include "reference/preferences.h"

namespace surv {
namespace {

constexpr std::int16_t kMarginlessEntity = 7;  ///< entityLevel of rows without an exposure margin
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

double Difference(const ScripTrial& trial, double MarginReading::*view) {
    return trial.marginAfter.*view - trial.marginBefore.*view;
}

/// By the account's tree; with premium, each view's option value too.
MarginChange TreeChange(const ScripTrial& trial, const RiskPreference& preference, bool premium) {
    const MarginChange margin{Difference(trial, &MarginReading::orderSide),
                              Difference(trial, &MarginReading::tradedSide), Difference(trial, &MarginReading::worst)};
    const MarginChange raised = margin.Raised(preference);
    if (!premium) return raised;
    const MarginChange options{Difference(trial, &MarginReading::optionOrderSide) / kPaisePerRupee,
                               Difference(trial, &MarginReading::optionTradedSide) / kPaisePerRupee,
                               Difference(trial, &MarginReading::optionWorst) / kPaisePerRupee};
    const MarginChange paid = options.Raised(preference);
    return {raised.orderSide + paid.orderSide, raised.tradedSide + paid.tradedSide, raised.worst + paid.worst};
}

/// Rows that margin equity by its position.
bool TakesPositionMargin(std::int16_t mask) {
    return IsAmong(kCashRows, mask) || mask == 0x1FF || mask == 0xF || mask == 0x7F;
}

}  // namespace

MarginChange GeneralMarginChange(const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order,
                                 const ScripTrial& trial) {
    if (TakesTreeMargin(row.limitMask, order.ExchangeMask())) {
        return TreeChange(trial, order.riskPreference, TakesPremium(row, order));
    }
    if (!TakesPositionMargin(row.limitMask)) return {};
    return trial.positionMargin.Raised(order.riskPreference);
}

void MoveMargin(BKSurveillanceLimitDefTag& row, const MarginChange& change, TradedMargin traded) {
    row.usedMarginOrder += change.orderSide;
    row.usedMarginMax += change.worst;
    if (traded == TradedMargin::kMoves) row.usedMarginTraded += change.tradedSide;
}

bool WeighsTradedMargin(std::int16_t limitMask, const tagOrderInfoForSurv& order) {
    if (order.orderEventKind == event::kCorrection) return true;
    if (TakesTreeMargin(limitMask, order.ExchangeMask())) return false;
    return order.productType == product::kConvertToDelivery || limitMask == 0x7F;
}

void MoveExposureMargin(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial) {
    const std::int16_t exchange = order.ExchangeMask();
    if (IsCashExchange(exchange) || exchange == kMaskBseDerivatives || row.entityLevel == kMarginlessEntity) return;
    const MarginChange change{Difference(trial, &MarginReading::exposure), 0, 0};
    row.usedExposureMargin += change.Raised(order.riskPreference).orderSide;
}

void TakeExposureOption(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order) {
    const bool counts = (order.riskPreference.marginFlags & kExposureMarginCounts) != 0;
    const auto segment = static_cast<Segment>(order.marketSegment);
    const bool here =
        segment == Segment::kNseFutures || segment == Segment::kNseOptions || segment == Segment::kNcdexFutures;
    if (counts && here && IsAmong(kWholeTurnoverRows, row.limitMask)) row.limitOptions |= kExposureMarginInLimit;
}

}  // namespace surv
