// What one limit row does with one order: judge it, report on it, or take it in.

#include "categories/limit_entry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "limits/limit_rules.h"
#include "limits/row_margin.h"
#include "limits/row_masks.h"
#include "limits/scrip_trial.h"
#include "mtm/row_mtm.h"

namespace surv {
namespace {

constexpr std::int16_t kShortTextLevel = 7;

/// How a stored sum moves with one figure of one position. A check forms the new sum, an update adds the change: the
/// same to the last paisa, but for lot-weighted values not to the last bit.
using Move = double (*)(double stored, double before, double after);
double Moved(double stored, double before, double after) { return after + stored - before; }
double Changed(double stored, double before, double after) { return stored + (after - before); }

double MaxGrossValue(const GrossParts& parts, std::int32_t pct) { return std::max(0.0, parts.Value(pct)); }

/// The share argument of the gross figures: the row's net exposure percent, on combined rows with equity in them.
std::int32_t OptionNetPercent(const BKSurveillanceLimitDefTag& row, const RowShape& shape) {
    return !shape.single && shape.hasOther && shape.hasEquity ? row.netExposureMultiplier : 0;
}

double Sign(const tagOrderInfoForSurv& order) { return order.IsBuy() ? 1.0 : -1.0; }

/// The row across all securities carries the fund of the depository holdings.
void AddFundDeltas(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order) {
    if (row.token != kAllSecurities) return;
    row.collateralFund += order.collateralDelta;
    row.saleCreditFund += order.saleCreditDelta;
}

/// Limits with a multiplier follow the fund of the moment, as the client's preference counts it.
void RebuildLimitsFromFund(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order) {
    if (row.limitOptions & kRetainMultiplier) return;
    double fund = row.definedFund + row.baseFund;
    if (order.riskPreference.fundFlags & kFundFlagCollateral) fund += row.collateralFund;
    if (order.riskPreference.fundFlags & kFundFlagSaleCredit) fund += row.saleCreditFund;
    RebuildLimits(row, fund);
}

/// The exposures over the worst case and the order side, netted and grossing.
void MoveExposures(BKSurveillanceLimitDefTag& row, const ScripTrial& trial, std::int32_t pct, Move move) {
    const ExposureFigures& a = trial.figuresBefore;
    const ExposureFigures& b = trial.figuresAfter;
    row.usedMaxGross = move(row.usedMaxGross, MaxGrossValue(a.maxGross, pct), MaxGrossValue(b.maxGross, pct));
    row.usedGrossOrder = move(row.usedGrossOrder, a.grossOrder.Value(pct), b.grossOrder.Value(pct));
    row.usedMaxNet = move(row.usedMaxNet, a.maxNet, b.maxNet);
    row.usedNetOrder = move(row.usedNetOrder, a.netOrder, b.netOrder);
    row.usedMaxNetSale = move(row.usedMaxNetSale, a.maxNetSale, b.maxNetSale);
    row.usedNetSaleOrder = move(row.usedNetSaleOrder, a.netSaleOrder, b.netSaleOrder);
    row.usedMaxNetPosition = move(row.usedMaxNetPosition, a.maxNetPosition, b.maxNetPosition);
    row.usedMaxTurnover = move(row.usedMaxTurnover, a.maxTurnover, b.maxTurnover);

    const ExposureFigures& c = trial.grossFiguresBefore;
    const ExposureFigures& d = trial.grossFiguresAfter;
    row.grossUsedMaxGross = move(row.grossUsedMaxGross, MaxGrossValue(c.maxGross, pct), MaxGrossValue(d.maxGross, pct));
    row.grossUsedGrossOrder = move(row.grossUsedGrossOrder, c.grossOrder.Value(pct), d.grossOrder.Value(pct));
    row.grossUsedMaxNet = move(row.grossUsedMaxNet, c.maxNet, d.maxNet);
    row.grossUsedNetOrder = move(row.grossUsedNetOrder, c.netOrder, d.netOrder);
    row.grossUsedMaxNetSale = move(row.grossUsedMaxNetSale, c.maxNetSale, d.maxNetSale);
    row.grossUsedNetSaleOrder = move(row.grossUsedNetSaleOrder, c.netSaleOrder, d.netSaleOrder);
}

/// The exposures of the traded side, netted and grossing.
void MoveTradedExposures(BKSurveillanceLimitDefTag& row, const ScripTrial& trial, std::int32_t pct, Move move) {
    const ExposureFigures& a = trial.figuresBefore;
    const ExposureFigures& b = trial.figuresAfter;
    row.usedGrossTraded = move(row.usedGrossTraded, a.grossTraded.Value(pct), b.grossTraded.Value(pct));
    row.usedNetTraded = move(row.usedNetTraded, a.netTraded, b.netTraded);
    row.usedNetSaleTraded = move(row.usedNetSaleTraded, a.netSaleTraded, b.netSaleTraded);

    const ExposureFigures& c = trial.grossFiguresBefore;
    const ExposureFigures& d = trial.grossFiguresAfter;
    row.grossUsedGrossTraded = move(row.grossUsedGrossTraded, c.grossTraded.Value(pct), d.grossTraded.Value(pct));
    row.grossUsedNetTraded = move(row.grossUsedNetTraded, c.netTraded, d.netTraded);
    row.grossUsedNetSaleTraded = move(row.grossUsedNetSaleTraded, c.netSaleTraded, d.netSaleTraded);
}

/// The row as a check of the order leaves it, margin figures apart.
void MoveForCheck(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const ScripTrial& trial) {
    const std::int32_t pct = OptionNetPercent(row, RowShape(row.limitMask));
    const double sign = Sign(order);
    const bool correction = order.orderEventKind == event::kCorrection;
    MoveExposures(row, trial, pct, &Moved);
    row.usedNetPositionOrder = Moved(row.usedNetPositionOrder, sign * trial.oldValue, sign * trial.newValue);
    row.usedPendingOrder = correction ? 0.0 : Moved(row.usedPendingOrder, trial.oldValue, trial.newValue);
    if (!IsAmong(kWholeTurnoverRows, row.limitMask)) {
        row.usedTurnoverOrder = Moved(row.usedTurnoverOrder, trial.oldValue, trial.newValue);
    }
    if (correction) {
        MoveTradedExposures(row, trial, pct, &Moved);
        row.usedNetPositionTraded = Moved(row.usedNetPositionTraded, sign * trial.oldValue, sign * trial.newValue);
        row.usedTurnoverTraded = Moved(row.usedTurnoverTraded, trial.oldValue, trial.newValue);
    }
}

/// The house may want no figures shown at the root, at ADMIN and at entities of type 7.
Wording WordingAt(const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, const Settings& settings) {
    const bool discreet = order.levelCode == std::string_view{"-"} || order.levelCode == std::string_view{"ADMIN"} ||
                          row.entityLevel == kShortTextLevel;
    return discreet && settings.limitDetailMessages == 0 ? Wording::kShort : Wording::kLong;
}

/// Whether an event also counts on the traded side of an update.
bool MovesTradedSide(const tagOrderInfoForSurv& order) {
    return order.orderEventKind == event::kTrade || order.orderEventKind == event::kCorrection ||
           order.productType == product::kConvertToDelivery || order.productType == product::kConvertToMargin;
}

}  // namespace

void RebuildLimits(BKSurveillanceLimitDefTag& row, double fundPaise) {
    constexpr double kTenThousand = 10000.0;
    const auto derive = [fundPaise](double stored, std::int32_t multiplier) {
        if (multiplier == kNoLimitQuantity) return stored;
        const double limit = multiplier / kTenThousand * fundPaise;
        return limit == kNoLimit ? std::nextafter(kNoLimit, -2.0) : limit;
    };
    row.grossExposureLimit = derive(row.grossExposureLimit, row.grossExposureMultiplier);
    row.netExposureLimit = derive(row.netExposureLimit, row.netExposureMultiplier);
    row.netSaleExposureLimit = derive(row.netSaleExposureLimit, row.netSaleExposureMultiplier);
    row.netPositionLimit = derive(row.netPositionLimit, row.netPositionMultiplier);
    row.mtmLossLimit = derive(row.mtmLossLimit, row.mtmLossMultiplier);
    row.marginLimit = derive(row.marginLimit, row.marginMultiplier);
    row.turnoverLimit = derive(row.turnoverLimit, row.turnoverMultiplier);
}

RuleAnswer CSurvLimitEntry::CheckGeneralOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial,
                                              const RuleContext& context) {
    BKSurveillanceLimitDefTag& now = *row_;
    const CUndoLog::Mark before = context.undo.Here();
    const BKSurveillanceLimitDefTag& stored = context.undo.Save(now);
    AddFundDeltas(now, order);
    RebuildLimitsFromFund(now, order);
    MoveForCheck(now, order, trial);
    MoveMarginForCheck(now, order, trial);

    const RuleInput input{stored, now, order, trial, RowShape(now.limitMask)};
    const tagLimitRule* broken = FirstBrokenRule(input);
    if (!broken) return {};
    const bool conversion = order.productType == product::kConvertToMargin;
    const Wording wording = conversion ? Wording::kShort : WordingAt(now, order, context.settings);
    RuleAnswer answer{broken->code, RefusalText(*broken, input, wording)};
    context.undo.RestoreBackTo(before);
    return answer;
}

RuleAnswer CSurvLimitEntry::CheckReportOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial,
                                             const RuleContext& context, tagBreachRow& breach) const {
    BKSurveillanceLimitDefTag now = *row_;
    AddFundDeltas(now, order);
    RebuildLimitsFromFund(now, order);
    MoveForCheck(now, order, trial);

    breach = tagBreachRow{};
    std::memcpy(breach.rowHead, row_, sizeof breach.rowHead);
    breach.token = now.token;
    breach.limitMask = now.limitMask;
    WriteField(breach.entityCode, FieldText(now.entityCode));

    RuleAnswer answer;
    const RuleInput input{*row_, now, order, trial, RowShape(now.limitMask)};
    const std::vector<const tagLimitRule*> broken = BrokenReportRules(input);
    for (const tagLimitRule* rule : broken) {
        breach.breachBitsA |= rule->breachBitsA;
        breach.breachBitsB |= rule->breachBitsB;
    }
    if (!broken.empty()) {
        const tagLimitRule& last = *broken.back();
        answer = {last.code, ReportText(last, input, WordingAt(now, order, context.settings))};
    }
    return answer;
}

void CSurvLimitEntry::UpdateGeneralOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial,
                                         const RuleContext& context) {
    BKSurveillanceLimitDefTag& row = *row_;
    context.undo.Save(row);
    AddFundDeltas(row, order);
    RebuildLimitsFromFund(row, order);

    MoveMarginForUpdate(row, order, trial);
    const std::int32_t pct = OptionNetPercent(row, RowShape(row.limitMask));
    const double sign = Sign(order);
    MoveExposures(row, trial, pct, &Changed);
    row.usedNetPositionOrder += sign * trial.newValue - sign * trial.oldValue;
    if (order.orderEventKind == event::kOrder) {
        row.usedPendingOrder += trial.newValue - trial.oldValue;
    } else if (order.orderEventKind == event::kTrade && order.prevQuantity != 0) {
        row.usedPendingOrder -= trial.oldValue;
    }
    if (!IsAmong(kWholeTurnoverRows, row.limitMask)) row.usedTurnoverOrder += trial.newValue - trial.oldValue;
    if (MovesTradedSide(order)) {
        MoveTradedExposures(row, trial, pct, &Changed);
        row.usedNetPositionTraded += sign * trial.newValue;
        row.usedTurnoverTraded += trial.newValue;
    }
    UpdateRowMtm(row, order.riskPreference.marginFlags, trial.mtm);
}

}  // namespace surv
