#include "orderpath/risk_lookup.h"

#include "service/manager.h"

namespace surv {
namespace {

bool IsScanned(std::int16_t exchangeMask) {
    return exchangeMask == kMaskNseDerivatives || exchangeMask == kMaskBseDerivatives || exchangeMask == kMaskNcdex;
}

/// In the order in which they are entered.
constexpr std::array kEntryOrder{Level::kDealer, Level::kGroup,  Level::kRoot,
                                 Level::kFamily, Level::kClient, Level::kSubClient};

}  // namespace

bool NeedsRiskParameters(const tagOrderInfoForSurv& order) {
    return order.contract.expiryDate > 0 && order.riskModeCopy == 1 && IsScanned(order.ExchangeMask());
}

bool TakeRiskParameters(CSurveillanceManager& manager, const CHierarchy& hierarchy, tagOrderInfoForSurv& order) {
    const std::int16_t exchangeMask = order.ExchangeMask();
    const CRPFUnderlyingWiseInfo* underlying =
        manager.Context().risk.live.FindUnderlying(exchangeMask, order.underlyingToken);
    const CRPFContractWiseInfo* contract = underlying ? underlying->FindContract(exchangeMask, order.token) : nullptr;
    if (!contract) return false;

    CTokenCategories& reached = manager.rpfCategoriesByToken.FindOrMake(SegmentTokenKey(exchangeMask, order.token),
                                                                        order.underlyingToken, order.token);
    for (const Level level : kEntryOrder) reached.AddCategory(hierarchy.At(level));
    order.contractRpf = contract;
    order.underlyingRpf = underlying;
    return true;
}

}  // namespace surv
