// Limits by request of the host: add, change, remove, read.

#include "platform/format.h"
#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr const char* kAddNoMemory = "Not enough memory (CSurveillanceInfo::AddSurvLimits)";

void Report(tagAdminErrMessage* error, std::string_view text) {
    if (error) WriteField(error->errorText, text);
}
void ReportWithTime(tagAdminErrMessage* error, const CClock& clock, std::string_view text) {
    if (!error) return;
    error->timeStamp = clock.Stamp();
    Report(error, text);
}

std::string EntityOf(const BKSurveillanceLimitDefTag& row) { return std::string{FieldText(row.entityCode)}; }

std::string NotAvailableText(const BKSurveillanceLimitDefTag& row) {
    return Format("%ld|Surveillance Limits not available for  %s", static_cast<long>(row.token), EntityOf(row).c_str());
}

}  // namespace

std::int16_t CSurveillanceManager::AddSurvLimits(BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error) try {
    const CodeText code = FieldText(limit.entityCode);
    BKSurveillanceLimitDefTag row = limit;
    CSurveillanceCategory* category = FindCategory(code);
    std::unique_ptr<CSurveillanceCategory> fresh;
    if (!category) {
        fresh = std::make_unique<CSurveillanceCategory>(context_);
        category = fresh.get();
        LinkPreferences(*category, code);
    }
    TakeExposureMarginBit(row, *category);
    if (!category->AddSurvLimit(row).Passed()) {
        const std::string text =
            row.token == kAllSecurities
                ? Format("Surveillance Limits already available for %s - across all securities", EntityOf(row).c_str())
                : Format("%ld|Surveillance Limits already available for %s", static_cast<long>(row.token),
                         EntityOf(row).c_str());
        ReportWithTime(error, context_.clock, text);
        return kNotDone;
    }
    if (fresh) StoreCategory(code, std::move(fresh), row.entityLevel, row.subLevel);
    if (row.limitMask == 0xD || row.limitMask == 0x61) RepublishMargin(*category);
    if (row.limitMask == 0x81) RepublishCommodityMargin(*category);
    if (context_.settings.HoldsClientPositions() && row.subLevel == -1) row.subLevel = 0;
    limit = row;
    return kDone;
} catch (const std::bad_alloc&) {
    ReportWithTime(error, context_.clock, kAddNoMemory);
    return kNotDone;
}

void CSurveillanceManager::StoreCategory(const CodeText& code, std::unique_ptr<CSurveillanceCategory> category,
                                         std::int16_t entityLevel, std::int16_t subLevel) {
    CSurveillanceCategory& stored = categories.Insert(code, std::move(category));
    if (!context_.settings.HoldsClientPositions()) return;
    try {
        categoriesByPeriod.Add(entityLevel, subLevel, code, stored);
    } catch (...) {
        categories.Take(code);
        throw;
    }
}

std::int16_t CSurveillanceManager::UpdateSurvLimits(BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error) {
    CSurveillanceCategory* category = FindCategory(FieldText(limit.entityCode));
    if (category) {
        TakeExposureMarginBit(limit, *category);
        if (category->UpdateSurvLimit(limit).Passed()) return kDone;
    }
    if (limit.token == kAllSecurities) {
        Report(error,
               Format("Surveillance Limits not available for %s - across all securities", EntityOf(limit).c_str()));
    } else {
        ReportWithTime(error, context_.clock, NotAvailableText(limit));
    }
    return kNotDone;
}

std::int16_t CSurveillanceManager::RemoveSurvLimits(const BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error) {
    if (limit.token == kAllSecurities) {
        Report(error, "Surveillance Limits across all securities cannot be removed");
        return kNotDone;
    }
    CSurveillanceCategory* category = FindCategory(FieldText(limit.entityCode));
    if (category && category->RemoveSurvLimit(limit).Passed()) return kDone;
    ReportWithTime(error, context_.clock, NotAvailableText(limit));
    return kNotDone;
}

std::int16_t CSurveillanceManager::GetSurveillancePositions(BKSurveillanceLimitDefTag& limit) const {
    const CSurveillanceCategory* category = FindCategory(FieldText(limit.entityCode));
    const CSurvLimitEntry* entry = category ? category->FindRow(limit.limitMask, limit.token) : nullptr;
    if (!entry) return kNotDone;
    limit = entry->Row();
    return kDone;
}

namespace {

/// The overall preference that tells which parts of the fund count: the family's before the entity's own.
const tagClientRiskPreferenceInfoForSurv* FundPreference(const CSurveillanceCategory& category,
                                                         const Settings& settings) {
    if (settings.familyLevelEnabled && category.familyPreferences) {
        if (const auto* found = category.familyPreferences->Find(kOverallPreference)) return found;
    }
    return category.ownPreferences ? category.ownPreferences->Find(kOverallPreference) : nullptr;
}

void RebuildForReading(BKSurveillanceLimitDefTag& row, const tagClientRiskPreferenceInfoForSurv* preference) {
    constexpr std::uint8_t kFundBits = kCollateralInFund | kSaleCreditInFund;
    static_assert(kCollateralInFund == kFundFlagCollateral && kSaleCreditInFund == kFundFlagSaleCredit);
    const int flags = preference ? preference->fundFlags & kFundBits : 0;
    row.limitOptions = static_cast<std::uint8_t>((row.limitOptions & ~kFundBits) | flags);
    if (row.limitOptions & kRetainMultiplier) return;
    double fund = row.definedFund + row.baseFund;
    if (row.limitOptions & kSaleCreditInFund) fund += row.saleCreditFund;
    if (row.limitOptions & kCollateralInFund) fund += row.collateralFund;
    RebuildLimits(row, fund);
}

}  // namespace

std::int16_t CSurveillanceManager::GetSurvPositions(std::string_view entityCode, std::int16_t limitMask,
                                                    std::int32_t token, BKSurveillanceLimitDefTag*& limit) {
    limit = nullptr;
    CSurveillanceCategory* category = FindNamed(entityCode);
    if (!category) return kNotDone;
    if (CSurvLimitEntry* entry = category->FindRow(limitMask, token)) {
        RebuildForReading(entry->Row(), FundPreference(*category, context_.settings));
        limit = &entry->Row();
    }
    return kDone;
}

}  // namespace surv
