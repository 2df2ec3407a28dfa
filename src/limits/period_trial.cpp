#include "limits/period_trial.h"

namespace surv {

void TryPeriod(CSurveillanceCategory& category, tagOrderInfoForSurv& order, Period period, FlatPosition flat,
               GrossMode mode, CUndoLog& undo, PeriodTrial& trial) {
    const Settings& settings = category.Context().settings;
    PeriodBook& book = category.Book(period);
    order.periodicity = PeriodicityOf(order.marketSegment, period);

    ScripTrial& scrip = trial.scrip;
    if (const CSurvPosition* position = book.exposures.Find(FlatKey(order))) scrip.before = *position;
    scrip.after = scrip.before;
    if (flat == FlatPosition::kMoves) {
        scrip.after.ReversePositions(order);
        scrip.after.Update11(order);
        scrip.after.DiscardSavedPosition();
    }

    CClientExposure* account = book.accounts.FindAccount(order);
    if (!account) {
        trial.newAccount = std::make_unique<CClientExposure>();
        account = trial.newAccount.get();
    }
    const ScripPath path = account->FindOrMakePath(order, settings);
    scrip.grossBefore = path.scrip->position;
    account->ApplyOrder(order, path, TreeContext{settings, &undo});
    scrip.grossAfter = path.scrip->position;

    scrip.FormFigures(order, mode);
}

void KeepAccount(CSurveillanceCategory& category, tagOrderInfoForSurv& order, Period period, PeriodTrial& trial) {
    if (trial.newAccount) category.Book(period).accounts.SetClient(order, std::move(trial.newAccount));
}

}  // namespace surv
