// A fund grows or shrinks by request of the back office, and the limits that hang on it with it.

#include <algorithm>
#include <cmath>

#include "platform/format.h"
#include "service/manager.h"
#include "shared/refusal_table.h"

namespace surv {
namespace {

constexpr std::int16_t kFundAnswer = 13002;
constexpr std::int16_t kAllExchanges = 0x1FF;
constexpr double kTenThousand = 10000.0;
constexpr double kPaisePerRupee = 100.0;

std::int16_t Refuse(tagRMSFundAllocationRequest& request, const RefusalRow& row, std::string_view text) {
    request.headCode = row.code;
    WriteField(request.errorText, text);
    return kNotDone;
}
std::int16_t Refuse(tagRMSFundAllocationRequest& request, const RefusalRow& row) {
    return Refuse(request, row, row.text);
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
    return Refuse(request, refusal::kNoEntity, Format(refusal::kNoEntity.text, EntityOf(request).c_str()));
}

std::int16_t CSurveillanceCategory::RMSFundAllocation(tagRMSFundAllocationRequest& request,
                                                      BKSurveillanceLimitDefTag* limit) {
    if (CSurveillanceInfo* info = limitStores.Find(kAllExchanges)) return info->RMSFundAllocation(request, limit);
    return Refuse(request, refusal::kNoCombinedStore,
                  Format(refusal::kNoCombinedStore.text, EntityOf(request).c_str()));
}

std::int16_t CSurveillanceInfo::RMSFundAllocation(tagRMSFundAllocationRequest& request,
                                                  BKSurveillanceLimitDefTag* limit) {
    return store.AllocateFund(request, limit);
}

std::int16_t CSurvLimitStore::AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit) {
    if (CSurvLimitEntry* entry = Find(kAllSecurities)) return entry->AllocateFund(request, limit);
    return Refuse(request, refusal::kNoFundRow);
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
        return Refuse(request, refusal::kRetainsMultiplier);
    }
    if (row.marginMultiplier == kNoLimitQuantity) return Refuse(request, refusal::kNoMarginMultiplier);
    row.marginLimit = StoredLimit(row.marginMultiplier / kTenThousand *
                                  (row.definedFund + row.baseFund + row.saleCreditFund + row.collateralFund));
    const double available = FreeFund(row);
    const double requested = request.requestedFund;
    if (available + requested >= 0 && std::isfinite(row.baseFund + requested)) return kDone;
    return Refuse(request, refusal::kInsufficientFund,
                  Format(refusal::kInsufficientFund.text, available / kPaisePerRupee, requested / kPaisePerRupee));
}

}  // namespace surv
