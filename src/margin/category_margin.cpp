// A category's part in the margin of derivatives.

#include "categories/category.h"
#include "margin/tree_margin.h"

namespace surv {

void CSurveillanceCategory::NoteOrderMarket(const tagOrderInfoForSurv& order, OrderRoad road) {
    const std::int16_t exchangeMask = order.ExchangeMask();
    if (context_.settings.rpfMarginMode != 1 || IsCashExchange(exchangeMask)) return;
    if (exchangeMask == kMaskMcx && road == OrderRoad::kCheck) {
        seen.mcx = true;
    } else {
        NoteMarket(exchangeMask, order.underlyingToken, order.token);
    }
}

void CSurveillanceCategory::NoteMarket(std::int16_t exchangeMask, std::int32_t underlyingToken, std::int32_t token) {
    switch (exchangeMask) {
        case kMaskNcdex: seen.ncdex = true; break;
        case kMaskNseDerivatives: seen.nseDerivative = true; break;
        case kMaskBseDerivatives: seen.bseDerivative = true; break;
        case kMaskMcx: seen.mcx = true; break;
        default: return;
    }
    underlyingKeys.Insert(SegmentTokenKey(exchangeMask, underlyingToken));
    contractKeys.Insert(SegmentTokenKey(exchangeMask, token));
}

/// Accounts that aggregate others are in no sum. Where positions by client are held, client types 3 and 5 count at the
/// levels that hold them alone.
bool CSurveillanceCategory::CountsInMargin(const CClientExposure& account) const {
    if (account.aggregate) return false;
    const bool clientLevel = account.levelTypes.client == 3 || account.levelTypes.client == 5;
    return !(clientLevel && context_.settings.HoldsClientPositions() && !IsAlwaysUpdatedLevel(lastLevel));
}

const std::vector<ContractHolder>* CSurveillanceCategory::FindHolders(const tagOrderInfoForSurv& order) const {
    const std::int16_t exchangeMask = order.ExchangeMask();
    const std::int64_t key = SegmentTokenKey(exchangeMask, order.token);
    const bool known = seen.Has(exchangeMask) && contractKeys.Contains(key) &&
                       underlyingKeys.Contains(SegmentTokenKey(exchangeMask, order.underlyingToken));
    if (!known) return nullptr;
    static const std::vector<ContractHolder> kNobody;
    const auto* holders = expiry_.accounts.holders.Find(key);
    return holders ? holders : &kNobody;
}

MarginSums CSurveillanceCategory::SumMargins(std::int16_t exchangeMask, std::int32_t marginAddOnFactor) const {
    constexpr double kMillion = 1000000.0;
    constexpr double kPaisePerRupee = 100.0;
    const auto raised = [marginAddOnFactor](double v) { return v + v * marginAddOnFactor / kMillion; };
    MarginSums sums;
    for (const auto& entry : expiry_.accounts.accounts) {
        if (!CountsInMargin(*entry.value)) continue;
        const MarginReading margins = entry.value->ReadMargins(exchangeMask);
        sums.orderSide += raised(margins.orderSide);
        sums.tradedSide += raised(margins.tradedSide);
        sums.worst += raised(margins.worst);
        sums.exposure += raised(margins.exposure);
        sums.premiumOrderSide += raised(margins.optionOrderSide / kPaisePerRupee);
        sums.premiumTradedSide += raised(margins.optionTradedSide / kPaisePerRupee);
        sums.premiumWorst += raised(margins.optionWorst / kPaisePerRupee);
    }
    return sums;
}

}  // namespace surv
