// A category takes an order in that it isn't asked to judge.

#include <array>

#include "limits/category_check.h"
#include "limits/early_stop.h"
#include "limits/period_trial.h"
#include "limits/row_masks.h"
#include "limits/row_tokens.h"
#include "mtm/row_mtm.h"

namespace surv {
namespace {

void UpdateRow(CSurvLimitStore& store, std::int32_t token, const tagOrderInfoForSurv& order, const ScripTrial& trial,
               const RuleContext& context, TrialBuffers& buffers) {
    CSurvLimitEntry* entry = store.Find(token);
    if (!entry) return;
    entry->UpdateGeneralOrder(order, trial, context);
    buffers.touched.push_back(entry);
}

/// The rows of one store: all securities, the scrip's group, the scrip, each token once.
void UpdateLimits(CSurvLimitStore& store, const tagOrderInfoForSurv& order, const ScripTrial& trial,
                  const RuleContext& context, TrialBuffers& buffers) {
    UpdateRow(store, kAllSecurities, order, trial, context, buffers);
    if (HasGroupRow(order)) UpdateRow(store, order.scripGroupNumber, order, trial, context, buffers);
    if (HasScripRow(order)) UpdateRow(store, order.token, order, trial, context, buffers);
}

void UpdatePeriodicities(LevelTrial& level, Period period, const ScripTrial& trial, const RuleContext& context,
                         TrialBuffers& buffers) {
    CEarlyStop stop(*level.category, period);
    for (const std::int16_t mask : MasksOfScope(level.order.marketSegment).Of(period)) {
        level.order.periodicity = mask;
        if (CSurveillanceInfo* info = level.category->limitStores.Find(mask)) {
            stop.Matched();
            UpdateLimits(info->store, level.order, trial, context, buffers);
        }
        if (stop.AllMet()) break;
    }
}

}  // namespace

void UpdateCategory(LevelTrial& level, TrialBuffers& buffers, bool updateAllLevels) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    SurvContext& context = category.Context();
    const RuleContext rowContext{context.settings, context.undo};
    const bool active = updateAllLevels || IsAlwaysUpdatedLevel(category.lastLevel);
    const GrossMode mode = order.NoNetting() ? GrossMode::kBuyPlusSell : GrossMode::kNetted;

    category.NoteOrderMarket(order, OrderRoad::kUpdate);
    order.ownerInfo = category.OwnerOf(order);
    const AccountKey accountKey = MakeAccountKey(order);
    std::array<PeriodTrial, kPeriods.size()> trials;
    CUndoGuard guard(context.undo);
    for (std::size_t i = 0; i < kPeriods.size(); ++i) {
        TryPeriod(level, kPeriods[i], accountKey, active ? FlatPosition::kMoves : FlatPosition::kStays, mode,
                  trials[i]);
        ScripTrial& scrip = trials[i].scrip;
        // The narrowest mask of the period is that of the segment alone, and the only one with a total.
        category.MoveTotal(order, PeriodicityOf(order.marketSegment, kPeriods[i]));
        scrip.mtm = FormMtmFigures(order, scrip.before, scrip.after, context.settings);
        if (active) UpdatePeriodicities(level, kPeriods[i], trials[i].scrip, rowContext, buffers);
    }
    for (std::size_t i = 0; i < kPeriods.size(); ++i) KeepAccount(level, accountKey, kPeriods[i], trials[i]);
    category.RecordOrder(order, level.accounts);
    guard.Keep();
}

}  // namespace surv
