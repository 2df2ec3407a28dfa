// An order in the positions by client of a category.

#include "categories/aggregate.h"
#include "categories/category.h"

namespace surv {
namespace {

/// The order's own daily account of delivery and two-leg products is never kept, and MTF has no daily position.
bool HasOwnRecord(std::int16_t productType, Period period) {
    return period == Period::kExpiry || ProductGroupOf(productType) == ProductGroup::kNormal;
}

}  // namespace

CClientBook& CSurveillanceCategory::ClientBook() {
    if (!clientBook_) clientBook_ = std::make_unique<CClientBook>();
    return *clientBook_;
}

CClientExposure& CSurveillanceCategory::AggregateAccount(const tagOrderInfoForSurv& order, Period period) {
    CClientExposure& account = Book(period).accounts.accounts.FindOrMake(MakeAccountKey(order));
    account.aggregate = true;
    return account;
}

void CSurveillanceCategory::RecordClient(const tagOrderInfoForSurv& order, Period period, CClientExposure& account,
                                         const TreeContext& context) {
    CClientBook::Side& side = ClientBook().Of(period);
    side.positions.RecordOrder(order, period, account, context);
    side.lists.Join(ListOf(period, order.productType), account, context);
}

void CSurveillanceCategory::RunAggregate(tagOrderInfoForSurv order, AggregateForm form, const TreeContext& context) {
    TakeAggregateCodes(order, form);
    for (const Period period : kPeriods) {
        order.periodicity = PeriodicityOf(order.marketSegment, period);
        CClientExposure& account = AggregateAccount(order, period);
        account.ApplyOrder(order, account.FindOrMakePath(order, context.settings), context);
        RecordClient(order, period, account, context);
    }
}

void CSurveillanceCategory::RecordOrder(const tagOrderInfoForSurv& order, const PeriodAccounts& accounts) {
    const Settings& settings = context_.settings;
    if (!settings.HoldsClientPositions()) return;
    const TreeContext context{settings, &context_.undo};
    const LevelPlace place{EffectiveLevel(lastLevel, LevelGroupOf(order.marketSegment)), secondLevel};
    const AggregateForm form = AggregateFormOf(order, place, settings);
    if (form != AggregateForm::kNone) {
        RunAggregate(order, form, context);
    } else if (RecordsOwnAccount(order, place, settings)) {
        for (const Period period : kPeriods) {
            CClientExposure* const account = accounts[PeriodIndex(period)];
            if (account && HasOwnRecord(order.productType, period)) RecordClient(order, period, *account, context);
        }
    }
}

void CSurveillanceCategory::MoveTotal(const tagOrderInfoForSurv& order, std::int16_t mask) {
    if (!context_.settings.HoldsClientPositions()) return;
    ClientBook().totals.ApplyOrder(mask, order, TreeContext{context_.settings, &context_.undo});
}

}  // namespace surv
