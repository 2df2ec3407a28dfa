#include "mtm/row_mtm.h"

namespace surv {
namespace {

constexpr std::uint8_t kMtmProfitCounts = 1 << 1;     // bits of marginFlags
constexpr std::uint8_t kBookedProfitCounts = 1 << 3;

/// What the move from a to b adds to a figure in which losses always count, and profits only if the client has it so.
double CountedChange(double a, double b, bool profitCounts) {
    const double lossPart = (b <= 0 ? b : 0.0) - (a <= 0 ? a : 0.0);
    const double profitPart = (b > 0 ? b : 0.0) - (a > 0 ? a : 0.0);
    return profitCounts ? lossPart + profitPart : lossPart;
}

}  // namespace

void UpdateRowMtm(BKSurveillanceLimitDefTag& row, const tagOrderInfoForSurv& order, CSurvPosition before,
                  CSurvPosition after, const Settings& settings) {
    const bool option = after.GetMarketSegment() == 3 || after.GetMarketSegment() == 6;
    const bool wholeLaidIn = order.rpfRecomputeFlag == 1 && settings.positionMode >= 1 && settings.positionMode <= 3;
    const bool countsBefore = !option && !wholeLaidIn;
    const std::uint8_t flags = order.riskPreference.marginFlags;

    const double a = countsBefore ? before.GetMTM(order.lotWeighting) : 0.0;
    const double b = option ? 0.0 : after.GetMTM(order.lotWeighting);
    row.usedMtm += CountedChange(a, b, (flags & kMtmProfitCounts) != 0);
    row.usedMtmFull += b - a;

    const double bookedBefore = countsBefore ? before.GetBookedProfit(order.lotWeighting) : 0.0;
    const double bookedAfter = option ? 0.0 : after.GetBookedProfit(order.lotWeighting);
    row.usedBookedPnl += CountedChange(bookedBefore, bookedAfter, (flags & kBookedProfitCounts) != 0);
}

}  // namespace surv
