#include "orderpath/risk_lookup.h"

#include "service/manager.h"

namespace surv {
namespace {

bool IsScanned(std::int16_t exchangeMask) {
    return exchangeMask == kMaskNseDerivatives || exchangeMask == kMaskBseDerivatives || exchangeMask == kMaskNcdex;
}

}  // namespace

bool NeedsRiskParameters(const tagOrderInfoForSurv& order) {
    return order.contract.expiryDate > 0 && order.riskModeCopy == 1 && IsScanned(order.ExchangeMask());
}

bool FindRiskParameters(const SurvContext& context, tagOrderInfoForSurv& order) {
    const std::int16_t exchangeMask = order.ExchangeMask();
    order.underlyingRpf = context.risk.live.FindUnderlying(exchangeMask, order.underlyingToken);
    if (order.underlyingRpf) order.contractRpf = order.underlyingRpf->FindContract(exchangeMask, order.token);
    return order.contractRpf != nullptr;
}

void RegisterContract(CSurveillanceManager& manager, const CHierarchy& hierarchy, const tagOrderInfoForSurv& order) {
    if (order.riskModeCopy != 1 || !IsScanned(order.ExchangeMask())) return;
    CTokenCategories& reached = manager.rpfCategoriesByToken.FindOrMake(
        SegmentTokenKey(order.ExchangeMask(), order.token), order.underlyingToken, order.token);
    for (const Level level : kEntryOrder) reached.AddCategory(hierarchy.At(level));
}

}  // namespace surv
