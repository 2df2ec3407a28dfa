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

/// Not below 0; what is no number stays none.
double MaxGrossValue(const GrossParts& parts, std::int32_t pct) {
    const double value = parts.Value(pct);
    return value <= 0 ? 0.0 : value;
}

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

/// The product that a set always answers in the short texts.
std::int16_t ShortlyToldProduct(RuleSet set) {
    if (set == RuleSet::kGeneral) return product::kConvertToMargin;
    return set == RuleSet::kDelivery ? product::kConvertToDelivery : product::kNone;
}

/// The house may want no figures shown at the root, at ADMIN and at entities of type 7.
Wording WordingAt(RuleSet set, const BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order,
                  const Settings& settings) {
    if (order.productType != product::kNone && order.productType == ShortlyToldProduct(set)) return Wording::kShort;
    const bool discreet = order.levelCode == std::string_view{"-"} || order.levelCode == std::string_view{"ADMIN"} ||
                          row.entityLevel == kShortTextLevel;
    return discreet && settings.limitDetailMessages == 0 ? Wording::kShort : Wording::kLong;
}

/// Whether an event also counts on the traded side of an update.
bool MovesTradedSide(const tagOrderInfoForSurv& order) {
    return order.orderEventKind == event::kTrade || order.orderEventKind == event::kCorrection || order.IsConversion();
}

/// A check keeps the traded margin of corrections alone.
TradedMargin TradedMarginOfCheck(const tagOrderInfoForSurv& order) {
    return order.orderEventKind == event::kCorrection ? TradedMargin::kMoves : TradedMargin::kStays;
}

/// Two-leg orders and margin funding in a check. Gives the traded margin of the row with the order in it.
double MoveProductMargin(BKSurveillanceLimitDefTag& row, const Judgement& judgement) {
    const double traded = row.usedMarginTraded + judgement.trial.positionMargin.tradedSide;
    if (IsAmong(kSettlementRows, row.limitMask)) {
        MoveMargin(row, judgement.trial.positionMargin, TradedMarginOfCheck(judgement.order));
    }
    return traded;
}

}  // namespace

void RebuildLimits(BKSurveillanceLimitDefTag& row, double fundPaise) {
    constexpr double kTenThousand = 10000.0;
    DeriveLimits(row, [fundPaise](double stored, std::int32_t multiplier) {
        return multiplier == kNoLimitQuantity ? stored : StoredLimit(multiplier / kTenThousand * fundPaise);
    });
}

template <class Prepare>
RuleAnswer CSurvLimitEntry::Judge(const Judgement& judgement, RuleSet set, Prepare prepare) {
    const auto& [order, trial, context, breach] = judgement;
    if (breach) {
        BKSurveillanceLimitDefTag now = *row_;
        const double traded = prepare(now);
        const RuleInput input{set, *row_, now, order, trial, RowShape(now.limitMask), traded};
        return Report(input, judgement);
    }
    BKSurveillanceLimitDefTag& now = *row_;
    const CUndoLog::Mark before = context.undo.Here();
    const BKSurveillanceLimitDefTag& stored = context.undo.Save(now);
    const double traded = prepare(now);
    const RuleInput input{set, stored, now, order, trial, RowShape(now.limitMask), traded};
    const tagLimitRule* broken = FirstBrokenRule(input);
    if (!broken) return {};
    RuleAnswer answer{broken->code, RefusalText(*broken, input, WordingAt(set, now, order, context.settings))};
    context.undo.RestoreBackTo(before);
    return answer;
}

RuleAnswer CSurvLimitEntry::Report(const RuleInput& input, const Judgement& judgement) {
    tagBreachRow& breach = *judgement.breach;
    std::memcpy(breach.rowHead, &input.stored, sizeof breach.rowHead);
    breach.token = input.now.token;
    breach.limitMask = input.now.limitMask;
    WriteField(breach.entityCode, FieldText(input.now.entityCode));

    std::vector<const tagLimitRule*> broken;
    if (input.set == RuleSet::kReport) {
        broken = BrokenReportRules(input);
    } else if (const tagLimitRule* first = FirstBrokenRule(input)) {
        broken.push_back(first);
    }
    if (broken.empty()) return {};
    for (const tagLimitRule* rule : broken) {
        breach.breachBitsA |= rule->breachBitsA;
        breach.breachBitsB |= rule->breachBitsB;
    }
    const tagLimitRule& last = *broken.back();
    const Wording wording = WordingAt(input.set, input.now, input.order, judgement.context.settings);
    return {last.code, RefusalText(last, input, wording)};
}

RuleAnswer CSurvLimitEntry::CheckGeneralOrder(const Judgement& judgement) {
    return Judge(judgement, RuleSet::kGeneral, [&](BKSurveillanceLimitDefTag& now) {
        const tagOrderInfoForSurv& order = judgement.order;
        const ScripTrial& trial = judgement.trial;
        AddFundDeltas(now, order);
        RebuildLimitsFromFund(now, order);
        MoveForCheck(now, order, trial);
        MoveExposureMargin(now, order, trial);
        const MarginChange margin = GeneralMarginChange(now, order, trial);
        const double traded = now.usedMarginTraded + (WeighsTradedMargin(now.limitMask, order) ? margin.tradedSide : 0);
        MoveMargin(now, margin, TradedMarginOfCheck(order));
        return traded;
    });
}

RuleAnswer CSurvLimitEntry::CheckReportOrder(const Judgement& judgement) {
    return Judge(judgement, RuleSet::kReport, [&](BKSurveillanceLimitDefTag& now) {
        AddFundDeltas(now, judgement.order);
        RebuildLimitsFromFund(now, judgement.order);
        MoveForCheck(now, judgement.order, judgement.trial);
        return now.usedMarginTraded;
    });
}

RuleAnswer CSurvLimitEntry::CheckDeliveryOrder(const Judgement& judgement) {
    const tagOrderInfoForSurv& order = judgement.order;
    if (order.secondPass) {
        if (!judgement.breach) TakeDeliveryFunds(judgement);
        return {};
    }
    return Judge(judgement, RuleSet::kDelivery, [&](BKSurveillanceLimitDefTag& now) {
        AddFundDeltas(now, order);
        RebuildLimitsFromFund(now, order);
        if (IsAmong(kSettlementRows, now.limitMask)) {
            MoveMargin(now, judgement.trial.positionMargin, TradedMargin::kMoves);
        }
        return now.usedMarginTraded;
    });
}

RuleAnswer CSurvLimitEntry::CheckMarginPlusOrder(const Judgement& judgement) {
    return Judge(judgement, RuleSet::kMarginPlus,
                 [&](BKSurveillanceLimitDefTag& now) { return MoveProductMargin(now, judgement); });
}

RuleAnswer CSurvLimitEntry::CheckMtfOrder(const Judgement& judgement) {
    return Judge(judgement, RuleSet::kMtf, [&](BKSurveillanceLimitDefTag& now) {
        RebuildLimitsFromFund(now, judgement.order);
        return MoveProductMargin(now, judgement);
    });
}

void CSurvLimitEntry::TakeDeliveryFunds(const Judgement& judgement) {
    judgement.context.undo.Save(*row_);
    AddFundDeltas(*row_, judgement.order);
}

void CSurvLimitEntry::UpdateDeliveryOrder(const Judgement& judgement) {
    TakeDeliveryFunds(judgement);
    if (judgement.order.secondPass) return;
    RebuildLimitsFromFund(*row_, judgement.order);
    if (!IsAmong(kSettlementRows, row_->limitMask)) return;
    MoveMargin(*row_, judgement.trial.positionMargin, TradedMargin::kMoves);
}

void CSurvLimitEntry::UpdateMarginPlusOrder(const Judgement& judgement) {
    judgement.context.undo.Save(*row_);
    if (!IsAmong(kSettlementRows, row_->limitMask)) return;
    MoveMargin(*row_, judgement.trial.positionMargin, TradedMargin::kMoves);
}

void CSurvLimitEntry::UpdateMtfOrder(const Judgement& judgement) {
    judgement.context.undo.Save(*row_);
    RebuildLimitsFromFund(*row_, judgement.order);
    if (!IsAmong(kSettlementRows, row_->limitMask)) return;
    MoveMargin(*row_, judgement.trial.positionMargin, TradedMargin::kMoves);
}

void CSurvLimitEntry::UpdateGeneralOrder(const Judgement& judgement) {
    const tagOrderInfoForSurv& order = judgement.order;
    const ScripTrial& trial = judgement.trial;
    const Judgement::Context& context = judgement.context;
    BKSurveillanceLimitDefTag& row = *row_;
    context.undo.Save(row);
    AddFundDeltas(row, order);
    RebuildLimitsFromFund(row, order);

    MoveMargin(row, GeneralMarginChange(row, order, trial), TradedMargin::kMoves);
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
    TakeExposureOption(row, order);
    MoveExposureMargin(row, order, trial);
    UpdateRowMtm(row, order.riskPreference.marginFlags, trial.mtm);
}

RuleAnswer CSurvLimitEntry::CheckOrder(const Judgement& judgement) {
    switch (judgement.trial.set) {
        case RuleSet::kGeneral: break;
        case RuleSet::kReport: return CheckReportOrder(judgement);
        case RuleSet::kDelivery: return CheckDeliveryOrder(judgement);
        case RuleSet::kMarginPlus: return CheckMarginPlusOrder(judgement);
        case RuleSet::kMtf: return CheckMtfOrder(judgement);
    }
    return CheckGeneralOrder(judgement);
}

void CSurvLimitEntry::UpdateOrder(const Judgement& judgement) {
    switch (judgement.trial.set) {
        case RuleSet::kGeneral:
        case RuleSet::kReport: UpdateGeneralOrder(judgement); break;
        case RuleSet::kDelivery: UpdateDeliveryOrder(judgement); break;
        case RuleSet::kMarginPlus: UpdateMarginPlusOrder(judgement); break;
        case RuleSet::kMtf: UpdateMtfOrder(judgement); break;
    }
}

}  // namespace surv
