#include "limits/period_trial.h"

namespace surv {
namespace {

void MoveFlatPosition(CSurvPosition& position, const tagOrderInfoForSurv& order) {
    if (order.productType == product::kMarginPlus) {
        position.ApplyLegChange(order);
    } else {
        position.ApplyChange(order);
    }
}

}  // namespace

void TryPeriod(LevelTrial& level, Period period, const AccountKey& accountKey, FlatPosition flat, GrossMode mode,
               PeriodTrial& trial) {
    tagOrderInfoForSurv& order = level.order;
    SurvContext& context = level.category->Context();
    const Settings& settings = context.settings;
    PeriodBook& book = level.category->Book(period);
    order.periodicity = PeriodicityOf(order.marketSegment, period);

    ScripTrial& scrip = trial.scrip;
    CSurvPosition* const position = book.exposures.Find(FlatKey(order));
    level.flatPositions[PeriodIndex(period)] = position;
    if (position) scrip.before = *position;
    scrip.after = scrip.before;
    if (flat == FlatPosition::kMoves) MoveFlatPosition(scrip.after, order);

    CClientExposure* account = book.accounts.accounts.Find(accountKey);
    if (!account) {
        trial.newAccount = std::make_unique<CClientExposure>();
        account = trial.newAccount.get();
    }
    const ScripPath path = account->FindOrMakePath(order, settings);
    scrip.grossBefore = path.scrip->position;
    scrip.marginBefore = account->ApplyOrder(order, path, TreeContext{settings, &context.undo});
    scrip.marginAfter = account->ReadMargins(order.ExchangeMask());
    scrip.grossAfter = path.scrip->position;
    trial.account = account;
    trial.path = path;

    scrip.FormFigures(order, mode);
}

void KeepAccount(LevelTrial& level, const AccountKey& accountKey, Period period, PeriodTrial& trial) {
    CAccountExposureSet& set = level.category->Book(period).accounts;
    level.accounts[PeriodIndex(period)] = trial.account;
    if (trial.newAccount) set.SetClient(accountKey, std::move(trial.newAccount));
    if (period == Period::kExpiry) set.EnterHolder(level.order, *trial.account, trial.path);
}

}  // namespace surv
