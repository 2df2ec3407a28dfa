#include "orderpath/level_commit.h"

#include <algorithm>
#include <vector>

#include "categories/limit_store.h"
#include "limits/holding_trial.h"
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
    level.accounts[PeriodIndex(period)] = &account;
}

/// Totals move their MTM with trades alone, and only where this call has moved their quantities: not after a check.
bool MovesTotalMtm(const LevelTrial& level) {
    const tagOrderInfoForSurv& order = level.order;
    const bool traded = order.orderEventKind == event::kTrade || order.orderEventKind == event::kCorrection ||
                        order.productType == product::kConvertToMargin;
    return traded && level.road == LevelRoad::kUpdated && level.category->Context().settings.HoldsClientPositions();
}

/// MTM of the scrip in both sets of a period, as one position.
double ScripMtm(const PeriodBook& book, const tagOrderInfoForSurv& order) {
    CSurvPosition sum;
    for (const CExposureDetails* set : {&book.clientLevelExposures, &book.exposures}) {
        const CSurvPosition* position = set->Find(TreeKey(order));
        const bool traded = position && (position->data.tradedBuyQty > 0 || position->data.tradedSellQty > 0);
        if (traded) sum.AddPositionData(position->data);
    }
    return sum.GetMTM(order.lotWeighting);
}

/// The MTM of the period's total follows that of the scrip.
class CTotalMtm {
 public:
    CTotalMtm(const LevelTrial& level, Period period)
        : total_(MovesTotalMtm(level) ? TotalOf(level, period) : nullptr),
          book_(level.category->Book(period)),
          order_(level.order) {
        if (total_) before_ = ScripMtm(book_, order_);
    }
    void Follow(CUndoLog& undo) {
        if (!total_) return;
        undo.Save(total_->data);
        total_->data.mtmValue += ScripMtm(book_, order_) - before_;
    }

 private:
    static CSurvPosition* TotalOf(const LevelTrial& level, Period period) {
        const CClientBook* clients = level.category->FindClientBook();
        const ProductGroup group = ProductGroupOf(level.order.productType);
        if (!clients || (period == Period::kDaily && group != ProductGroup::kNormal)) return nullptr;
        return clients->totals.Find(group, PeriodicityOf(level.order.marketSegment, period));
    }

    CSurvPosition* total_;
    const PeriodBook& book_;
    const tagOrderInfoForSurv& order_;
    double before_ = 0;
};

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

/// The level's own position of the period takes the order, and with a delivery's the holding.
void CommitPositions(LevelTrial& level, Period period) {
    CSurveillanceCategory& category = *level.category;
    const tagOrderInfoForSurv& order = level.order;
    CUndoLog& undo = category.Context().undo;
    CExposureDetails& exposures = category.Book(period).exposures;
    if (order.productType == product::kMarginPlus) {
        exposures.CommitLegPosition(order, 1, undo);
        exposures.CommitLegPosition(order, 2, undo);
        return;
    }
    CSurvPosition* const known = level.flatPositions[PeriodIndex(period)];
    if (!order.deliveryLevel || !order.IsDelivery()) {
        exposures.CommitPosition(order, known, undo);
        return;
    }
    // Where one entity stands at two levels, the other may have made the position since the trial.
    const CSurvPosition* const standing = known ? known : exposures.Find(FlatKey(order));
    const CSurvPosition before = standing ? *standing : CSurvPosition{};
    const CSurvPosition& after = exposures.CommitPosition(order, known, undo);
    CommitHolding(category, order, before, after);
}

/// Makes the order real at one level.
void CommitOrder(LevelTrial& level, bool updateAllLevels) {
    CSurveillanceCategory& category = *level.category;
    tagOrderInfoForSurv& order = level.order;
    CUndoLog& undo = category.Context().undo;
    const bool moves = Moves(level, updateAllLevels);
    const bool clientLevelSets = MovesClientLevelSets(level);

    if (level.road == LevelRoad::kPassedOver) category.NoteOrderMarket(order, OrderRoad::kUpdate);
    order.ownerInfo = category.OwnerOf(order);
    for (const Period period : kPeriods) {
        const bool tried = period == Period::kExpiry || order.HasDailySide();
        order.periodicity = PeriodicityOf(order.marketSegment, period);
        CTotalMtm totalMtm(level, period);
        if (moves && tried) CommitPositions(level, period);
        if (tried && level.road == LevelRoad::kPassedOver) RunAccount(level, period);
        if (clientLevelSets) category.Book(period).clientLevelExposures.CommitAt(TreeKey(order), order, undo);
        totalMtm.Follow(undo);
    }
    // A level that was only updated has recorded the order there and then.
    if (level.road != LevelRoad::kUpdated) category.RecordOrder(order, level.accounts);
}

/// Ends the trial of the rows of one level.
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

/// The rows that a level hands out. Where one category stands at two levels, the first to commit hands out the rows
/// of both, each once.
std::vector<CSurvLimitEntry*> TakeSharedRows(std::span<LevelTrial* const> levels, const TrialBuffers& buffers,
                                             const CSurveillanceCategory* category) {
    std::vector<CSurvLimitEntry*> rows;
    for (LevelTrial* trial : levels) {
        if (trial->category != category) continue;
        for (std::size_t i = trial->touched.from; i < trial->touched.to; ++i) {
            CSurvLimitEntry* const row = buffers.touched[i];
            if (std::find(rows.begin(), rows.end(), row) == rows.end()) rows.push_back(row);
        }
        trial->touched = {};
    }
    return rows;
}

bool IsShared(std::span<LevelTrial* const> levels, const CSurveillanceCategory* category) {
    return std::count_if(levels.begin(), levels.end(),
                         [category](const LevelTrial* trial) { return trial->category == category; }) > 1;
}

}  // namespace

void CommitLevels(std::span<LevelTrial* const> levels, const TrialBuffers& buffers, bool updateAllLevels,
                  CPtrList* limitRows) {
    for (LevelTrial* trial : levels) CommitOrder(*trial, updateAllLevels);
    for (LevelTrial* trial : levels) {
        if (IsShared(levels, trial->category)) {
            CommitRows(*trial, TakeSharedRows(levels, buffers, trial->category), updateAllLevels, limitRows);
            continue;
        }
        const std::span<CSurvLimitEntry* const> rows{buffers.touched.data() + trial->touched.from,
                                                     trial->touched.to - trial->touched.from};
        CommitRows(*trial, rows, updateAllLevels, limitRows);
    }
}

}  // namespace surv
