#include "shared/order.h"

#include <array>

namespace surv {

void FillValues(tagExposureScripSpecificInfo& scrip, const tagOrderInfoForSurv& order) {
    scrip.marketSegment = order.marketSegment;
    scrip.token = order.token;
    scrip.underlyingToken = order.underlyingToken;
    scrip.priceMultiplier = order.priceMultiplier;
    scrip.contract = order.contract;
    scrip.marginRates = order.marginRates;
    scrip.scripRates = order.scripRates;
}

void FillOwner(tagPositionOwnerInfo& owner, const tagOrderInfoForSurv& order) {
    owner.levelCode = order.levelCode;
    owner.groupCode = order.parentCode;
    owner.accountCode = order.accountCode;
    owner.userId = order.userId;
    owner.clientLevelType = order.clientLevelType;
    owner.subClientLevelType = order.subClientLevelType;
    owner.groupLevelType = order.groupLevelType;
}

std::string_view ScripGroupText(std::int32_t scripGroupNumber) {
    constexpr std::int32_t kFirst = -101;
    constexpr std::array<std::string_view, 11> kGroups{"B", "TS", "S", "T", "G", "Z", "R", "F", "B2", "B1", "A"};
    const std::int64_t at = std::int64_t{scripGroupNumber} - kFirst;
    if (at < 0 || at >= static_cast<std::int64_t>(kGroups.size())) return {};
    return kGroups[static_cast<std::size_t>(at)];
}

}  // namespace surv
