// From the accounts' sums to the margin figures of the limit rows.

#include "margin/margin_rows.h"

#include <algorithm>
#include <span>

#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

/// Where a part's figures come from when another part is in hand: the row across all securities of its mask, else the
/// accounts of its exchange, or the category's cash margin.
struct PartSource {
    MarginPart part;
    std::int16_t rowMask;
    std::int16_t exchangeMask;
    bool rowHasExposure;
};
constexpr std::array<PartSource, kMarginPartCount> kSources{{
    {MarginPart::kNseCash, 0x3, kMaskNseCash, false},
    {MarginPart::kNseDerivatives, 0xD, kMaskNseDerivatives, true},
    {MarginPart::kBseCash, 0x11, kMaskBseCash, false},
    {MarginPart::kBseDerivatives, 0x61, kMaskBseDerivatives, false},
    {MarginPart::kMcx, 0x81, kMaskMcx, true},
    {MarginPart::kNcdex, 0x101, kMaskNcdex, true},
}};
constexpr bool SourcesStandInOrder() {
    for (std::size_t i = 0; i < kSources.size(); ++i) {
        if (static_cast<std::size_t>(kSources[i].part) != i) return false;
    }
    return true;
}
static_assert(SourcesStandInOrder());
const PartSource& SourceOf(MarginPart part) { return kSources[static_cast<std::size_t>(part)]; }

/// The rows that hold several parts.
struct RollUp {
    std::int16_t rowMask;
    std::span<const MarginPart> parts;
};
constexpr std::array kNseParts{MarginPart::kNseDerivatives, MarginPart::kNseCash};
constexpr std::array kSecuritiesParts{MarginPart::kNseDerivatives, MarginPart::kNseCash, MarginPart::kBseCash,
                                      MarginPart::kBseDerivatives};
constexpr std::array kCommodityParts{MarginPart::kMcx, MarginPart::kNcdex};
constexpr std::array kAllParts{MarginPart::kNseDerivatives, MarginPart::kNseCash, MarginPart::kBseCash,
                               MarginPart::kBseDerivatives, MarginPart::kMcx,     MarginPart::kNcdex};
constexpr std::array kRollUps{
    RollUp{0xF, kNseParts},
    RollUp{0x7F, kSecuritiesParts},
    RollUp{0x181, kCommodityParts},
    RollUp{0x1FF, kAllParts},
};

void Add(MarginSums& sums, const CashMargin& cash) {
    sums.orderSide += cash[0];
    sums.tradedSide += cash[1];
    sums.worst += cash[2];
}

/// Writes the sums into the row across all securities of a mask; its own flag, or the client's preference, tells
/// whether premiums count.
void WriteRow(CSurveillanceCategory& category, std::int16_t rowMask, const MarginSums& sums, bool premiumsCount) {
    CSurvLimitEntry* entry = category.FindRow(rowMask, kAllSecurities);
    if (!entry) return;
    BKSurveillanceLimitDefTag& row = entry->Row();
    row.usedMarginOrder = sums.orderSide;
    row.usedMarginTraded = sums.tradedSide;
    row.usedMarginMax = sums.worst;
    row.usedExposureMargin = sums.exposure;
    if (premiumsCount || (row.limitOptions & kPremiumInMargin)) {
        row.usedMarginOrder += sums.premiumOrderSide;
        row.usedMarginTraded += sums.premiumTradedSide;
        row.usedMarginMax += sums.premiumWorst;
    }
}

/// Adds a part that isn't in hand, as its row shows it; from the accounts, premiums stay out.
void AddPart(MarginSums& sums, const CSurveillanceManager& manager, const CSurveillanceCategory& category,
             MarginPart part) {
    const PartSource& source = SourceOf(part);
    if (const CSurvLimitEntry* entry = category.FindRow(source.rowMask, kAllSecurities)) {
        const BKSurveillanceLimitDefTag& row = entry->Row();
        sums.orderSide += row.usedMarginOrder;
        sums.tradedSide += row.usedMarginTraded;
        sums.worst += row.usedMarginMax;
        if (source.rowHasExposure) sums.exposure += row.usedExposureMargin;
    } else if (part == MarginPart::kNseCash) {
        Add(sums, category.cashMarginNse);
    } else if (part == MarginPart::kBseCash) {
        Add(sums, category.cashMarginBse);
    } else {
        const RiskPreference preference = manager.EffectivePreference(category, source.exchangeMask);
        const MarginSums own = category.SumMargins(source.exchangeMask, preference.marginAddOnFactor);
        sums.orderSide += own.orderSide;
        sums.tradedSide += own.tradedSide;
        sums.worst += own.worst;
        sums.exposure += own.exposure;
    }
}

}  // namespace

MarginPart PartOfExchange(std::int16_t exchangeMask) {
    const auto* found = std::find_if(kSources.begin(), kSources.end(), [exchangeMask](const PartSource& source) {
        return source.exchangeMask == exchangeMask;
    });
    return found->part;
}

namespace {

/// A part as its accounts have it, and whether the client's preference counts premiums as margin.
struct FreshPart {
    MarginSums sums;
    bool premiumsCount;
};
FreshPart Summed(const CSurveillanceManager& manager, const CSurveillanceCategory& category, MarginPart part) {
    const std::int16_t exchangeMask = SourceOf(part).exchangeMask;
    const RiskPreference preference = manager.EffectivePreference(category, exchangeMask);
    return {category.SumMargins(exchangeMask, preference.marginAddOnFactor),
            (preference.marginFlags & kPremiumCounts) != 0};
}

}  // namespace

void PublishOwnRow(const CSurveillanceManager& manager, CSurveillanceCategory& category, MarginPart part) {
    const FreshPart fresh = Summed(manager, category, part);
    WriteRow(category, SourceOf(part).rowMask, fresh.sums, fresh.premiumsCount);
}

void PublishMargin(const CSurveillanceManager& manager, CSurveillanceCategory& category, MarginPart part) {
    const FreshPart fresh = Summed(manager, category, part);
    WriteRow(category, SourceOf(part).rowMask, fresh.sums, fresh.premiumsCount);
    for (const RollUp& rollUp : kRollUps) {
        if (std::find(rollUp.parts.begin(), rollUp.parts.end(), part) == rollUp.parts.end()) continue;
        if (!category.FindRow(rollUp.rowMask, kAllSecurities)) continue;
        MarginSums sums = fresh.sums;
        for (const MarginPart other : rollUp.parts) {
            if (other != part) AddPart(sums, manager, category, other);
        }
        WriteRow(category, rollUp.rowMask, sums, fresh.premiumsCount);
    }
}

}  // namespace surv
