#include "orderpath/level_preferences.h"

#include "limits/conversion_trial.h"
#include "platform/numeric.h"
#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

using Record = tagClientRiskPreferenceInfoForSurv;

struct ProductTest {
    std::int16_t productType;
    std::int32_t allowedFlag;
    const RefusalRow& refused;
};
constexpr std::array kProductTests{
    ProductTest{product::kMargin, 1, refusal::kMarginNotAllowed},
    ProductTest{product::kConvertToMargin, 1, refusal::kToMarginNotAllowed},
    ProductTest{product::kAmoMargin, 1, refusal::kAmoMarginNotAllowed},
    ProductTest{product::kDelivery, 2, refusal::kDeliveryNotAllowed},
    ProductTest{product::kConvertToDelivery, 2, refusal::kToDeliveryNotAllowed},
    ProductTest{product::kAmoDelivery, 2, refusal::kAmoDeliveryNotAllowed},
};

/// Why the preference forbids the product; null when it doesn't.
const RefusalRow* ProductRefusal(const tagOrderInfoForSurv& order) {
    if (!IsCashExchange(order.ExchangeMask())) return nullptr;
    for (const ProductTest& test : kProductTests) {
        const bool allowed = (order.riskPreference.allowedProducts & test.allowedFlag) != 0;
        if (test.productType == order.productType && !allowed) return &test.refused;
    }
    return nullptr;
}

/// Links the level to its family's preferences if that hasn't happened yet.
void LinkFamily(CSurveillanceManager& manager, CSurveillanceCategory& category, const CodeText& levelCode,
                const tagSurveillanceInfo& request) {
    if (category.familyPreferences) return;
    auto& families = manager.Context().stores.clientFamilyMap;
    const CodeText family = FieldText(request.familyCode);
    if (NamesFamily(request)) families.FindOrMake(levelCode, family);
    manager.LinkPreferences(category, levelCode);
}

/// The family's record of the exchange, when families count at this level.
const Record* FamilyRecord(const CSurveillanceCategory& category, bool familyCounts, std::int32_t exchange) {
    return familyCounts && category.familyPreferences ? category.familyPreferences->Find(exchange) : nullptr;
}

/// The overall record tells of square-off parts and which funds count.
void TakeOverall(tagOrderInfoForSurv& order, const Record& overall) {
    constexpr int kFundBits = kFundFlagCollateral | kFundFlagSaleCredit;
    order.preAutoSquareOffPart = overall.preAutoSquareOffPart;
    order.autoSquareOffPart = overall.autoSquareOffPart;
    order.preAutoSquareOffOn = (overall.fundFlags & kPreAutoSquareOffOn) != 0;
    order.autoSquareOffOn = (overall.fundFlags & kAutoSquareOffOn) != 0;
    order.riskPreference.fundFlags =
        static_cast<std::uint8_t>((order.riskPreference.fundFlags & ~kFundBits) | (overall.fundFlags & kFundBits));
}

/// The client takes the overall record of the family, else its own; the dealer's own overrides the family's.
const Record* OverallRecord(const CSurveillanceCategory& category, Level level, bool familyCounts) {
    const Record* family = FamilyRecord(category, familyCounts, kOverallPreference);
    if (level == Level::kClient && family) return family;
    const Record* own = category.ownPreferences ? category.ownPreferences->Find(kOverallPreference) : nullptr;
    return own ? own : family;
}

bool IsAfterSquareOffSession(const tagOrderInfoForSurv& order, const CAutoSquareOffSettings& settings) {
    return settings.Get(CAutoSquareOffSettings::kSession, order.ExchangeMask()) == 1;
}

bool IsSquareOffOnly(const tagOrderInfoForSurv& order, const CAutoSquareOffSettings& settings) {
    const RiskPreference& preference = order.riskPreference;
    if (preference.fundFlags & kSquareOffOnly) return true;
    if (order.productType == product::kAmoMargin || order.productType == product::kAmoDelivery) return false;
    const std::int16_t mask = order.ExchangeMask();
    const bool byTime = settings.Get(CAutoSquareOffSettings::kTime, mask) == 1;
    const bool bySession = IsAfterSquareOffSession(order, settings);
    return (byTime && (preference.marginFlags & kSquareOffByTime)) ||
           (bySession && (preference.marginFlags & kSquareOffBySession));
}

}  // namespace

RiskPreference DefaultPreferenceOf(std::int16_t exchangeMask) {
    constexpr std::int32_t kMarginDeliveryMarginPlus = 7;
    RiskPreference preference;
    preference.exchange = exchangeMask;
    preference.token = kAllSecurities;
    preference.allowedProducts = kMarginDeliveryMarginPlus;
    return preference;
}

void LoadEffectivePreference(const CSurveillanceManager& manager, const CSurveillanceCategory& category,
                             tagOrderInfoForSurv& order) {
    if (const Record* record = manager.FindOwnPreference(category, order.ExchangeMask())) {
        order.riskPreference = TravellingPart(*record);
    }
}

std::optional<LevelRefusal> ApplyLevelPreferences(CSurveillanceManager& manager, Level level,
                                                  CSurveillanceCategory& category, const tagSurveillanceInfo& request,
                                                  tagOrderInfoForSurv& order) {
    const Settings& settings = manager.Context().settings;
    const bool familyCounts =
        settings.familyLevelEnabled && (level == Level::kClient || IsOwnClient(request.dealerType));
    if (familyCounts) LinkFamily(manager, category, LevelCodeOf(level, request), request);

    const Record* found = FamilyRecord(category, familyCounts, order.ExchangeMask());
    if (!found) found = manager.FindOwnPreference(category, order.ExchangeMask());
    if (found) {
        order.riskPreference = TravellingPart(*found);
        if (const RefusalRow* refused = ProductRefusal(order)) {
            return LevelRefusal{MakeRefusal(*refused), level == Level::kClient};
        }
    }
    if (const Record* overall = OverallRecord(category, level, familyCounts)) TakeOverall(order, *overall);
    order.squareOffOnlyFlag = IsSquareOffOnly(order, settings.autoSquareOff);

    if (!CountsDeliveries(level, request)) return std::nullopt;
    if (order.IsConversion() && IsAfterSquareOffSession(order, settings.autoSquareOff)) {
        return LevelRefusal{MakeRefusal(refusal::kConversionAfterSession), true};
    }
    order.deliveryLevel = order.IsDelivery() || order.IsConversion() || order.productType == product::kMtf;
    return std::nullopt;
}

namespace {

/// What stands for a missing record lies over that of the level before.
void LayDefaults(RiskPreference& preference, std::int16_t exchangeMask) {
    constexpr std::uint8_t kModeBits = 0b0001'1111;
    preference.exchange = exchangeMask;
    preference.token = kAllSecurities;
    preference.prefMarginRate = 0;
    preference.marginAddOnFactor = 0;
    preference.prefMarginMode = 0;
    preference.marginFlags = 0;
    preference.carried = 1;
    preference.fundFlags &= static_cast<std::uint8_t>(~kModeBits);
}

}  // namespace

void TakeOwnPreference(const CSurveillanceManager& manager, const CSurveillanceCategory& category, PreferenceRoad road,
                       tagOrderInfoForSurv& order) {
    if (!category.ownPreferences) return;
    if (const Record* record = manager.FindOwnPreference(category, order.ExchangeMask())) {
        order.riskPreference = TravellingPart(*record);
    } else if (!manager.defaultRiskPreference) {
        return;  // a family's record stands
    } else if (road == PreferenceRoad::kEvent) {
        order.riskPreference = DefaultPreferenceOf(order.ExchangeMask());
    } else {
        LayDefaults(order.riskPreference, order.ExchangeMask());
    }
}

void ApplyEventPreferences(CSurveillanceManager& manager, Level level, CSurveillanceCategory& category,
                           const tagSurveillanceInfo& request, PreferenceRoad road, tagOrderInfoForSurv& order) {
    const bool familyCounts = manager.Context().settings.familyLevelEnabled && CountsDeliveries(level, request);
    if (familyCounts) LinkFamily(manager, category, LevelCodeOf(level, request), request);
    const Record* family = FamilyRecord(category, familyCounts, order.ExchangeMask());
    if (family) order.riskPreference = TravellingPart(*family);
    if (!family || level == Level::kClient) TakeOwnPreference(manager, category, road, order);
}

bool CountsDeliveries(Level level, const tagSurveillanceInfo& request) {
    return level == Level::kClient || (level == Level::kDealer && IsOwnClient(request.dealerType));
}

std::int32_t ConversionPrice(const CSurveillanceCategory& category, const tagOrderInfoForSurv& order) {
    const CSurvPosition* const source = FindConversionSource(category, order);
    if (!source) return 0;
    const tagSurvPositionData& held = source->data;
    const std::int64_t quantity = order.IsBuy() ? held.tradedBuyQty : held.tradedSellQty;
    const double value = order.IsBuy() ? held.tradedBuyValue : held.tradedSellValue;
    if (quantity < order.quantity || quantity == 0) return 0;
    return order.price != 0 ? order.price : ClampToInt32(value / static_cast<double>(quantity));
}

}  // namespace surv
