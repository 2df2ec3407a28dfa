#include "categories/aggregate.h"

#include <algorithm>
#include <cstring>

#include "positions/accounts.h"
#include "reference/stores.h"

namespace surv {
namespace {

constexpr std::int16_t kGroupless = 6;  ///< level types
constexpr std::int16_t kOrdinaryClient = 1;
constexpr std::int16_t kDealerPlace = 7;
constexpr std::int16_t kGroupPlace = 6;

bool IsRoot(const tagOrderInfoForSurv& order) { return order.levelCode == std::string_view{kRootCode}; }

bool IsOrderBased(const Settings& settings) { return settings.orderBasedPosition == 1; }

/// A level that sums over the holders of one six-character code.
bool SumsByDealer(const tagOrderInfoForSurv& order, const LevelPlace& place, const Settings& settings) {
    if (IsRoot(order) && (settings.positionMode == 2 || IsOrderBased(settings))) return true;
    if (place.level == kDealerPlace && (settings.positionMode == 3 || IsOrderBased(settings))) return true;
    return place.level == 0 && place.secondLevel == kDealerPlace;
}

bool SumsByGroup(const LevelPlace& place) {
    return place.level == kGroupPlace || (place.level == 0 && place.secondLevel == kGroupPlace);
}

/// The code cut or padded to the width of its form, and the '+'.
FixedText<32> AggregateCode(std::string_view code, AggregateForm form) {
    const std::size_t width = form == AggregateForm::kDealer ? 6 : 10;
    char text[11];
    std::memset(text, ' ', sizeof text);
    std::copy_n(code.data(), std::min(code.size(), width), text);
    text[width] = '+';
    return std::string_view{text, width + 1};
}

}  // namespace

AggregateForm AggregateFormOf(const tagOrderInfoForSurv& order, const LevelPlace& place, const Settings& settings) {
    if (!settings.HoldsClientPositions() || order.accountCode.Empty()) return AggregateForm::kNone;
    if (IsAggregateCode(order.accountCode.View())) return AggregateForm::kNone;  // it is one itself
    const bool groupless = order.groupLevelType == kGroupless;
    const std::int16_t client = order.clientLevelType;
    if (SumsByDealer(order, place, settings) && (groupless || client == kGroupless || client == kOrdinaryClient)) {
        return AggregateForm::kDealer;
    }
    const bool ordinary = client == kOrdinaryClient || order.subClientLevelType == kOrdinaryClient;
    return SumsByGroup(place) && groupless && ordinary ? AggregateForm::kGroup : AggregateForm::kNone;
}

void TakeAggregateCodes(tagOrderInfoForSurv& order, AggregateForm form) {
    const bool groupless = order.groupLevelType == kGroupless || order.clientLevelType == kGroupless;
    if (form == AggregateForm::kDealer && groupless) {
        order.parentCode = {};
        order.clientLevelType = kGroupless;
        order.subClientLevelType = -1;
        order.groupLevelType = -1;
    }
    order.accountCode = AggregateCode(order.accountCode.View(), form);
}

bool RecordsOwnAccount(const tagOrderInfoForSurv& order, const LevelPlace& place, const Settings& settings) {
    if (place.level == kDealerPlace && (settings.positionMode == 2 || IsOrderBased(settings))) return false;
    return !(IsRoot(order) && settings.positionMode == 3);
}

}  // namespace surv
