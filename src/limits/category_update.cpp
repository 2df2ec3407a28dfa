// A category takes an order in that it isn't asked to judge.

#include <algorithm>
#include <array>

#include "limits/category_check.h"
#include "limits/early_stop.h"
#include "limits/holding_trial.h"
#include "limits/period_trial.h"
#include "limits/row_masks.h"
#include "limits/row_tokens.h"
#include "mtm/row_mtm.h"

namespace surv {
namespace {

void UpdateRow(CSurvLimitStore& store, std::int32_t token, const Judgement& judgement, TrialBuffers& buffers) {
    CSurvLimitEntry* entry = store.Find(token);
    if (!entry) return;
    entry->UpdateOrder(judgement);
    buffers.touched.push_back(entry);
}

/// The rows of one store: all securities, the scrip's group, the scrip, each token once.
void UpdateLimits(CSurvLimitStore& store, const Judgement& judgement, TrialBuffers& buffers) {
    const tagOrderInfoForSurv& order = judgement.order;
    UpdateRow(store, kAllSecurities, judgement, buffers);
    if (HasGroupRow(order)) UpdateRow(store, order.scripGroupNumber, judgement, buffers);
    if (HasScripRow(order)) UpdateRow(store, order.token, judgement, buffers);
}

/// The rows of one mask, if the category has any.
bool UpdateMask(LevelTrial& level, std::int16_t mask, const ScripTrial& trial, const Judgement::Context& context,
                TrialBuffers& buffers) {
    CSurveillanceInfo* const info = level.category->limitStores.Find(mask);
    if (!info) return false;
    level.order.periodicity = mask;
    UpdateLimits(info->store, {level.order, trial, context}, buffers);
    return true;
}

void UpdatePeriodicities(LevelTrial& level, Period period, const ScripTrial& trial, const Judgement::Context& context,
                         TrialBuffers& buffers) {
    CEarlyStop stop(*level.category, period);
    for (const std::int16_t mask : MasksOfScope(level.order.marketSegment).Of(period)) {
        if (UpdateMask(level, mask, trial, context, buffers)) stop.Matched();
        if (stop.AllMet()) break;
    }
    if (!level.order.IsDelivery()) return;
    level.order.secondPass = true;
    for (const std::int16_t mask : MasksOutsideScope(level.order.marketSegment).expiry) {
        UpdateMask(level, mask, trial, context, buffers);
    }
    level.order.secondPass = false;
}

/// Of a margin order and of a conversion to one, by the rate of the scrip; of a delivery where it counts, by value,
/// buys alone for an NRI.
MarginChange EquityMarginChange(const tagOrderInfoForSurv& order, const ScripTrial& expiry) {
    if (order.IsDelivery() && order.deliveryLevel) {
        if (!order.nriClient) return NetValueChange(expiry.before, expiry.after);
        constexpr double kPaisePerRupee = 100.0;
        const tagSurvPositionData& a = expiry.before.data;
        const tagSurvPositionData& b = expiry.after.data;
        return {(b.orderBuyValue - a.orderBuyValue) / kPaisePerRupee,
                (b.tradedBuyValue - a.tradedBuyValue) / kPaisePerRupee,
                (std::max(b.orderBuyValue, b.tradedBuyValue) - std::max(a.orderBuyValue, a.tradedBuyValue)) /
                    kPaisePerRupee};
    }
    if (order.productType != product::kMargin && order.productType != product::kConvertToMargin) return {};
    return expiry.positionMargin.Raised(order.riskPreference);
}

/// The category's margin of its equity positions.
void MoveEquityMargin(CSurveillanceCategory& category, const tagOrderInfoForSurv& order, const ScripTrial& expiry) {
    if (!IsCashSegment(order.marketSegment)) return;
    const bool nse = order.ExchangeMask() == kMaskNseCash;
    CashMargin& margin = nse ? category.cashMarginNse : category.cashMarginBse;
    const MarginChange change = EquityMarginChange(order, expiry);
    category.Context().undo.Save(margin);
    margin[0] += change.orderSide;
    margin[1] += change.tradedSide;
    margin[2] += change.worst;
}

}  // namespace

void UpdateCategory(LevelTrial& level, TrialBuffers& buffers, bool updateAllLevels) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    SurvContext& context = category.Context();
    const Judgement::Context rowContext{context.settings, context.undo};
    const bool active = updateAllLevels || IsAlwaysUpdatedLevel(category.lastLevel);
    const FlatPosition flat = active ? FlatPosition::kMoves : FlatPosition::kStays;
    const GrossMode mode = order.NoNetting() ? GrossMode::kBuyPlusSell : GrossMode::kNetted;

    category.NoteOrderMarket(order, OrderRoad::kUpdate);
    order.ownerInfo = category.OwnerOf(order);
    const AccountKey accountKey = MakeAccountKey(order);
    std::array<PeriodTrial, kPeriods.size()> trials;
    CUndoGuard guard(context.undo);
    for (const Period period : PeriodsOf(order)) {
        PeriodTrial& trial = trials[PeriodIndex(period)];
        trial.scrip.set = RuleSetOf(order, CheckMode::kReal);
        TryPeriod(level, period, accountKey, flat, mode, trial);
        trial.scrip.mtm = FormMtmFigures(order, trial.scrip.before, trial.scrip.after, context.settings);
    }
    const ScripTrial& expiry = trials[PeriodIndex(Period::kExpiry)].scrip;
    TryHolding(category, order, expiry.before, expiry.after);
    for (const Period period : PeriodsOf(order)) {
        // The narrowest mask of the period is that of the segment alone, and the only one with a total.
        category.MoveTotal(order, PeriodicityOf(order.marketSegment, period));
        if (active) UpdatePeriodicities(level, period, trials[PeriodIndex(period)].scrip, rowContext, buffers);
    }
    MoveEquityMargin(category, order, expiry);
    for (const Period period : PeriodsOf(order)) KeepAccount(level, accountKey, period, trials[PeriodIndex(period)]);
    category.RecordOrder(order, level.accounts);
    guard.Keep();
}

}  // namespace surv
