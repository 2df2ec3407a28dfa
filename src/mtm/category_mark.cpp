#include "mtm/category_mark.h"

#include <memory>
#include <span>

#include "limits/row_masks.h"
#include "mtm/row_mtm.h"
#include "platform/host_list.h"

namespace surv {
namespace {

/// Masks whose rows a pass leaves alone in positionMode 1: those of one derivative segment of NSE or BSE, and daily
/// ones over several segments that hold more than equity.
constexpr bool IsPassedOver(std::int16_t mask) {
    const RowShape shape(mask);
    if (shape.single) return shape.hasFutOpt;
    return !shape.odd && shape.hasOther;
}
static_assert(IsPassedOver(4) && IsPassedOver(9) && IsPassedOver(0x41) && IsPassedOver(0xE) && IsPassedOver(0x1FE));
static_assert(!IsPassedOver(2) && !IsPassedOver(0x12) && !IsPassedOver(0xF) && !IsPassedOver(0x80));

bool HasTraded(const CSurvPosition* position) {
    return position && (position->data.tradedBuyQty > 0 || position->data.tradedSellQty > 0);
}

}  // namespace

CCategoryMark::CCategoryMark(CSurveillanceCategory& category, const tagOrderInfoForSurv& order)
    : category_(category), order_(order), settings_(category.Context().settings) {
    const PositionKey key = FlatKey(order);
    bool holds = false;
    for (const Period period : kPeriods) {
        Holding& holding = holdings_[PeriodIndex(period)];
        const PeriodBook& book = category.Book(period);
        holding.own = book.exposures.Find(key);
        holding.clientLevel = book.clientLevelExposures.Find(key);
        holds |= holding.own != nullptr;
    }
    if (!holds) return;
    for (const Period period : kPeriods) FindRows(period, holdings_[PeriodIndex(period)]);
}

void CCategoryMark::FindRows(Period period, Holding& holding) {
    for (const std::int16_t mask : MasksOfScope(order_.marketSegment).Of(period)) {
        if (settings_.positionMode == 1 && IsPassedOver(mask)) continue;
        CSurvLimitEntry* entry = category_.FindRow(mask, kAllSecurities);
        if (entry) holding.rows[holding.rowCount++] = {&entry->Row(), nullptr};
    }
}

void CCategoryMark::HandOut(CPtrList& changedRows) {
    const bool live = settings_.RowsAreLive();
    for (Holding& holding : holdings_) {
        for (MovedRow& moved : std::span(holding.rows.data(), holding.rowCount)) {
            if (live) {
                changedRows.AddTail(moved.row);
            } else {
                auto copy = std::make_unique<BKSurveillanceLimitDefTag>(*moved.row);
                BKSurveillanceLimitDefTag* const address = copy.get();
                HandOver(changedRows, std::move(copy));
                moved.copy = address;
            }
        }
    }
}

void CCategoryMark::Move() {
    for (const Period period : kPeriods) {
        Holding& holding = holdings_[PeriodIndex(period)];
        MoveRows(holding);
        MoveTotal(period, holding);
    }
    for (const Holding& holding : holdings_) {
        if (holding.own) holding.own->SetLastPrice(order_);
        if (holding.clientLevel) holding.clientLevel->SetLastPrice(order_);
    }
    if (!settings_.HoldsClientPositions()) return;
    for (const Period period : kPeriods) MoveAccounts(period);
}

void CCategoryMark::MoveRows(Holding& holding) const {
    MtmFigures mtm;
    if (holding.own) {
        CSurvPosition priced = *holding.own;
        priced.SetLastPrice(order_);
        mtm = FormMtmFigures(order_, *holding.own, priced, settings_);
    }
    for (const MovedRow& moved : std::span(holding.rows.data(), holding.rowCount)) {
        UpdateRowMtm(*moved.row, order_.riskPreference.marginFlags, mtm);
        if (moved.copy) *moved.copy = *moved.row;
    }
}

/// The own position stands for the period where it has traded, else the one of client level orders.
void CCategoryMark::MoveTotal(Period period, const Holding& holding) {
    const CClientBook* clients = settings_.HoldsClientPositions() ? category_.FindClientBook() : nullptr;
    CSurvPosition* const total =
        clients ? clients->totals.Find(ProductGroup::kNormal, PeriodicityOf(order_.marketSegment, period)) : nullptr;
    const CSurvPosition* const position = HasTraded(holding.own) ? holding.own : holding.clientLevel;
    if (!total || !HasTraded(position)) return;
    CSurvPosition before = *position;
    CSurvPosition after = *position;
    after.SetLastPrice(order_);
    total->data.mtmValue += after.GetMTM(order_.lotWeighting) - before.GetMTM(order_.lotWeighting);
}

void CCategoryMark::MoveAccounts(Period period) {
    if (!category_.FindClientBook()) return;
    const auto* holders = category_.ClientBook().Of(period).positions.scrips.Find(TreeKey(order_));
    if (!holders) return;
    for (const auto& holder : *holders) holder.value->ApplyPrice(order_, settings_);
}

}  // namespace surv
