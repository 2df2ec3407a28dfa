#include "mtm/row_mtm.h"

#include "reference/preferences.h"

namespace surv {
namespace {

/// What the move from a to b adds to a figure in which losses always count, and profits only if the client has it so.
double CountedChange(double a, double b, bool profitCounts) {
    const double lossPart = (b <= 0 ? b : 0.0) - (a <= 0 ? a : 0.0);
    const double profitPart = (b > 0 ? b : 0.0) - (a > 0 ? a : 0.0);
    return profitCounts ? lossPart + profitPart : lossPart;
}

}  // namespace

MtmFigures FormMtmFigures(const tagOrderInfoForSurv& order, CSurvPosition before, CSurvPosition after,
                          const Settings& settings) {
    MtmFigures mtm;
    if (after.GetMarketSegment() == 3 || after.GetMarketSegment() == 6) return mtm;  // options never count
    const bool wholeLaidIn = order.rpfRecomputeFlag == 1 && settings.RowsFillClientPositions();
    if (!wholeLaidIn) mtm.before = before.GetMTM(order.lotWeighting);
    if (!wholeLaidIn || settings.mtmReloadPhase == MtmReload::kOnline) {
        mtm.bookedBefore = before.GetBookedProfit(order.lotWeighting);
    }
    mtm.after = after.GetMTM(order.lotWeighting);
    mtm.bookedAfter = after.GetBookedProfit(order.lotWeighting);
    return mtm;
}

void UpdateRowMtm(BKSurveillanceLimitDefTag& row, std::uint8_t marginFlags, const MtmFigures& mtm) {
    row.usedMtm += CountedChange(mtm.before, mtm.after, (marginFlags & kMtmProfitCounts) != 0);
    row.usedMtmFull += mtm.after - mtm.before;
    row.usedBookedPnl += CountedChange(mtm.bookedBefore, mtm.bookedAfter, (marginFlags & kBookedProfitCounts) != 0);
}

}  // namespace surv
