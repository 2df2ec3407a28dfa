#include "orderpath/level_commit.h"

#include "categories/limit_store.h"
#include "limits/period_trial.h"

namespace surv {
namespace {

std::int16_t EffectiveLevelOf(const LevelTrial& level) {
    return EffectiveLevel(level.category->lastLevel, LevelGroupOf(level.order.marketSegment));
}

/// An account that no trial has run takes the order for good.
void RunAccount(LevelTrial& level, Period period) {
    const Settings& settings = level.category->Context().settings;
    CAccountExposureSet& set = level.category->Book(period).accounts;
    CClientExposure& account = set.accounts.FindOrMake(MakeAccountKey(level.order));
    const ScripPath path = account.FindOrMakePath(level.order, settings);
    account.ApplyOrder(level.order, path, TreeContext{settings, &level.category->Context().undo});
    if (period == Period::kExpiry) set.EnterHolder(level.order, account, path);
}

/// Orders of client types 3 and 5 are kept apart at the levels that aggregate them.
bool MovesClientLevelSets(const LevelTrial& level) {
    constexpr std::int16_t kMcxFutures = 7;
    const tagOrderInfoForSurv& order = level.order;
    const bool clientLevel = order.clientLevelType == 3 || order.clientLevelType == 5;
    if (!clientLevel || order.marketSegment == kMcxFutures) return false;
    if (!level.category->Context().settings.HoldsClientPositions()) return false;
    const std::int16_t effective = EffectiveLevelOf(level);
    const bool aggregates = (effective == 0 || effective == 7) && level.category->secondLevel == 7;
    return aggregates || order.levelCode == std::string_view{kRootCode};
}

/// Whether the level's positions and rows take the order.
bool Moves(const LevelTrial& level, bool updateAllLevels) {
    return updateAllLevels || IsAlwaysUpdatedLevel(EffectiveLevelOf(level));
}

}  // namespace

void CommitOrder(LevelTrial& level, bool updateAllLevels) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    CUndoLog& undo = category.Context().undo;
    const bool moves = Moves(level, updateAllLevels);
    const bool clientLevelSets = MovesClientLevelSets(level);

    if (level.road == LevelRoad::kPassedOver) category.NoteOrderMarket(order, OrderRoad::kUpdate);
    order.ownerInfo = category.OwnerOf(order);
    for (const Period period : kPeriods) {
        order.periodicity = PeriodicityOf(order.marketSegment, period);
        PeriodBook& book = category.Book(period);
        if (moves) book.exposures.CommitPosition(order, level.flatPositions[PeriodIndex(period)], undo);
        if (level.road == LevelRoad::kPassedOver) RunAccount(level, period);
        if (clientLevelSets) book.clientLevelExposures.CommitPosition(order, nullptr, undo);
    }
}

void CommitRows(const LevelTrial& level, std::span<CSurvLimitEntry* const> rows, bool updateAllLevels,
                CPtrList* limitRows) {
    SurvContext& context = level.category->Context();
    const bool moves = Moves(level, updateAllLevels);
    for (CSurvLimitEntry* row : rows) {
        if (!moves) {
            context.undo.RestoreObject(&row->Row(), CUndoLog::Mark{}, context.undo.Here());
        } else if (limitRows) {
            AppendRow(*limitRows, *row, context.settings.RowsAreLive());
        }
    }
}

}  // namespace surv
