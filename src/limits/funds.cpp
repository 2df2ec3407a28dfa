// A fund grows or shrinks by request of the back office, and the limits that hang on it with it.

#include <algorithm>
#include <cmath>

#include "platform/format.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr std::int16_t kFundAnswer = 13002;
constexpr std::int16_t kAllExchanges = 0x1FF;
constexpr double kTenThousand = 10000.0;
constexpr double kPaisePerRupee = 100.0;

std::int16_t Refuse(tagRMSFundAllocationRequest& request, std::string_view text) {
    request.headCode = code::kStore;
    WriteField(request.errorText, text);
    return kNotDone;
}

std::string EntityOf(const tagRMSFundAllocationRequest& request) { return std::string{FieldText(request.entityName)}; }

/// Each limit that is set follows the fund alone, whatever else counts when an order or a reader rebuilds it.
void DeriveFromFund(BKSurveillanceLimitDefTag& row) {
    DeriveLimits(row, [&row](double stored, std::int32_t multiplier) {
        return stored == kNoLimit ? stored : StoredLimit(multiplier * row.baseFund / kTenThousand);
    });
}

/// Paise of the fund that the margin in use leaves free. A multiplier of 0 carries no margin at all.
double FreeFund(const BKSurveillanceLimitDefTag& row) {
    const double usedMarginPaise = row.usedMarginOrder * kPaisePerRupee;
    const double fund = row.baseFund;
    if (row.marginMultiplier == 0) return usedMarginPaise <= 0 ? fund : std::min(fund, 0.0);
    const double free = (row.marginLimit - usedMarginPaise) / (row.marginMultiplier / kTenThousand);
    return fund <= free ? fund : free;  // what is no number stays none, and is refused
}

}  // namespace

std::int16_t CSurveillanceManager::RMSFundAllocation(tagRMSFundAllocationRequest& request,
                                                     BKSurveillanceLimitDefTag* limit) {
    request.messageCode = kFundAnswer;
    request.timeStamp = context_.clock.Stamp();
    CSurveillanceCategory* category = FindNamed(FieldText(request.entityKey));
    if (category) return category->RMSFundAllocation(request, limit);
    return Refuse(request, Format("Surveillance Limits not available for  %s", EntityOf(request).c_str()));
}

std::int16_t CSurveillanceCategory::RMSFundAllocation(tagRMSFundAllocationRequest& request,
                                                      BKSurveillanceLimitDefTag* limit) {
    if (CSurveillanceInfo* info = limitStores.Find(kAllExchanges)) return info->RMSFundAllocation(request, limit);
    return Refuse(request, Format("Surveillance Limits for All Exchange Combined not available for  %s",
                                  EntityOf(request).c_str()));
}

/// Whatever the store or its row refuses leaves under one code.
std::int16_t CSurveillanceInfo::RMSFundAllocation(tagRMSFundAllocationRequest& request,
                                                  BKSurveillanceLimitDefTag* limit) {
    constexpr std::int16_t kRefusedCode = -1;
    if (store.AllocateFund(request, limit) == kDone) return kDone;
    request.headCode = kRefusedCode;
    return kNotDone;
}

std::int16_t CSurvLimitStore::AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit) {
    if (CSurvLimitEntry* entry = Find(kAllSecurities)) return entry->AllocateFund(request, limit);
    return Refuse(request, "Surveillance details not available for the Dealer");
}

std::int16_t CSurvLimitEntry::AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit) {
    const double fund = row_->baseFund + request.requestedFund;
    const bool deposit = request.requestedFund > 0 && std::isfinite(fund);
    if (!deposit && CheckFundWithdrawal(request) != kDone) return kNotDone;
    row_->baseFund = fund;
    DeriveFromFund(*row_);
    request.headCode = kDone;
    request.usedMargin = row_->usedMarginMax;
    if (limit) *limit = *row_;
    return kDone;
}

std::int16_t CSurvLimitEntry::CheckFundWithdrawal(tagRMSFundAllocationRequest& request) {
    BKSurveillanceLimitDefTag& row = *row_;
    if (row.limitOptions & kRetainMultiplier) {
        return Refuse(request, "Retain Multiplier setting should not be turned on");
    }
    if (row.marginMultiplier == kNoLimitQuantity) return Refuse(request, "Margin Multiplier not set");
    row.marginLimit = StoredLimit(row.marginMultiplier / kTenThousand *
                                  (row.definedFund + row.baseFund + row.saleCreditFund + row.collateralFund));
    const double available = FreeFund(row);
    const double requested = request.requestedFund;
    if (available + requested >= 0 && std::isfinite(row.baseFund + requested)) return kDone;
    return Refuse(request, Format("Insufficient Fund, Available Fund = %.2f , Requested Fund = %.2f",
                                  available / kPaisePerRupee, requested / kPaisePerRupee));
}

}  // namespace surv
