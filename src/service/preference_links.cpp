// What a category takes from the preferences of its code and of its family.

#include <array>

#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

/// Limit masks whose rows take exposureMarginInLimit from a preference, and the exchanges asked for it in turn.
struct MarginBitSource {
    std::int16_t limitMask;
    std::array<std::int16_t, 2> exchanges;  // 0: no second one
};
constexpr std::array kMarginBitSources{
    MarginBitSource{0x181, {kMaskNcdex, 0}},
    MarginBitSource{0xF, {kMaskNseDerivatives, 0}},
    MarginBitSource{0x7F, {kMaskNseDerivatives, 0}},
    MarginBitSource{0xD, {kMaskNseDerivatives, 0}},
    MarginBitSource{0x1FF, {kMaskNseDerivatives, kMaskNcdex}},
};

}  // namespace

void CSurveillanceManager::SetDefaultRiskPreference() {
    defaultRiskPreference = context_.stores.clientPreferences.Find(kEverybodyCode);
}

void CSurveillanceManager::LinkPreferences(CSurveillanceCategory& category, const CodeText& code) const {
    const ReferenceStores& stores = context_.stores;
    category.ownPreferences = stores.clientPreferences.Find(code);
    if (!context_.settings.familyLevelEnabled) return;
    if (const CodeText* family = stores.clientFamilyMap.Find(code)) {
        category.familyPreferences = stores.clientPreferences.Find(*family);
    }
}

void CSurveillanceManager::AddClientRiskPreference(const CodeText& code) {
    if (CSurveillanceCategory* category = FindCategory(code)) LinkPreferences(*category, code);
}

const tagClientRiskPreferenceInfoForSurv* CSurveillanceManager::FindOwnPreference(const CSurveillanceCategory& category,
                                                                                  std::int32_t exchange) const {
    if (!category.ownPreferences) return nullptr;
    if (const auto* own = category.ownPreferences->Find(exchange)) return own;
    return defaultRiskPreference ? defaultRiskPreference->Find(exchange) : nullptr;
}

RiskPreference CSurveillanceManager::EffectivePreference(const CSurveillanceCategory& category,
                                                         std::int16_t exchangeMask) const {
    const tagClientRiskPreferenceInfoForSurv* record = nullptr;
    if (context_.settings.familyLevelEnabled && category.familyPreferences) {
        record = category.familyPreferences->Find(exchangeMask);
    }
    if (!record) record = FindOwnPreference(category, exchangeMask);
    return record ? TravellingPart(*record) : RiskPreference{};
}

void CSurveillanceManager::TakeExposureMarginBit(BKSurveillanceLimitDefTag& row,
                                                 const CSurveillanceCategory& category) const {
    if (context_.settings.familyLevelEnabled) return;
    for (const MarginBitSource& source : kMarginBitSources) {
        if (source.limitMask != row.limitMask) continue;
        for (const std::int16_t exchange : source.exchanges) {
            if (exchange == 0 || (row.limitOptions & kExposureMarginInLimit)) continue;
            const auto* preference = FindOwnPreference(category, exchange);
            if (preference && (preference->marginFlags & kExposureMarginCounts)) {
                row.limitOptions |= kExposureMarginInLimit;
            }
        }
    }
}

}  // namespace surv
