// The limit rows of one mask, told with the options of the preference in force.

#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

/// Fund options stand under the same bits in a preference and in a row.
constexpr std::uint8_t kFundOptions = kCollateralInFund | kSaleCreditInFund;

/// What a preference says of a row.
struct RowOptions {
    bool given = false;
    std::uint8_t bits = 0;  ///< of limitOptions
};

/// From the record of an exchange, else from that over all exchanges, whose word on the fund holds in either case.
RowOptions OptionsOf(const PreferenceMap& preferences, std::int16_t exchangeMask) {
    const auto* const overall = preferences.Find(kOverallPreference);
    const auto* const ofExchange = preferences.Find(exchangeMask);
    const auto* const record = ofExchange ? ofExchange : overall;
    if (!record) return {};
    int bits = overall ? overall->fundFlags & kFundOptions : 0;
    if (record->marginFlags & kExposureMarginCounts) bits |= kExposureMarginInLimit;
    return {true, static_cast<std::uint8_t>(bits)};
}

RowOptions OptionsInForce(const CSurveillanceCategory& category, std::int16_t periodicity) {
    const std::int16_t exchangeMask = CombinedMaskToExchangeMask(periodicity);
    RowOptions options;
    if (category.Context().settings.familyLevelEnabled && category.familyPreferences) {
        options = OptionsOf(*category.familyPreferences, exchangeMask);
    }
    if (!options.given && category.ownPreferences) options = OptionsOf(*category.ownPreferences, exchangeMask);
    return options;
}

void Take(BKSurveillanceLimitDefTag& row, std::uint8_t bits) {
    constexpr std::uint8_t kTaken = kFundOptions | kExposureMarginInLimit;
    row.limitOptions = static_cast<std::uint8_t>((row.limitOptions & ~kTaken) | bits);
}

void AppendRows(const CSurveillanceCategory& category, std::int16_t periodicity, CPtrList& list) {
    const CSurveillanceInfo* const info = category.limitStores.Find(periodicity);
    if (!info) return;
    const RowOptions options = OptionsInForce(category, periodicity);
    const bool live = category.Context().settings.RowsAreLive();
    for (const auto& entry : info->store.entries) {
        BKSurveillanceLimitDefTag& row = AppendRow(list, *entry.value, live);
        if (options.given) Take(row, options.bits);
    }
}

}  // namespace

std::int16_t CSurveillanceManager::GetMarketExposure(std::string_view code, std::int16_t periodicity,
                                                     CPtrList* result) const {
    return ForCategories(code, [&](const CSurveillanceCategory& category) {
        if (result) AppendRows(category, periodicity, *result);
    });
}

}  // namespace surv
