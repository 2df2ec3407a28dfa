// The margin of MCX: exposure margin by the rates of the day, netted between expiries. Contracts have no risk
// parameters and no scan, so nothing but the rates, the preference and the positions can move it.

#include "margin/margin_rows.h"
#include "margin/recompute.h"
#include "margin/tree_margin.h"
#include "service/manager.h"

namespace surv {
namespace {

/// An order that names the contract of a position and carries its rates; no quantity, no price, no preference.
tagOrderInfoForSurv OrderOf(const tagExposureScripSpecificInfo& scrip, const SurvContext& context) {
    tagOrderInfoForSurv order;
    order.marketSegment = static_cast<std::int16_t>(Segment::kMcxFutures);
    order.periodicity = PeriodicityOf(order.marketSegment, Period::kExpiry);
    order.riskModeCopy = context.settings.rpfMarginMode;
    order.token = scrip.token;
    order.underlyingToken = scrip.underlyingToken;
    order.contract = scrip.contract;
    order.scripRates = scrip.scripRates;
    order.marginRates = scrip.marginRates;
    context.stores.TakeAdditionalMargin(order);
    return order;
}

}  // namespace

void CMarginRun::AddCommodities(CSurveillanceCategory& category) {
    if (!category.seen.mcx) return;
    ++contracts_;
    const std::size_t touched = Touch(category, kMaskMcx);
    const PeriodBook& book = category.Book(Period::kExpiry);
    for (const auto& entry : book.exposures.positions) {
        const tagExposureScripSpecificInfo* scrip = entry.value->data.scripInfo;
        if (!scrip || SegmentToExchangeMask(scrip->marketSegment) != kMaskMcx) continue;
        tagOrderInfoForSurv order = OrderOf(*scrip, manager_.Context());
        if (!IsMargined(order)) return;
        const auto* holders = book.accounts.holders.Find(SegmentTokenKey(kMaskMcx, order.token));
        if (!holders) continue;
        for (const ContractHolder& holder : *holders) work_.push_back({touched, holder});
        Replace(order);
    }
}

void CSurveillanceManager::RecomputeMCXIM() {
    CMarginRun run(*this);
    for (const auto& category : categories) run.AddCommodities(*category.value);
    run.Publish();
}

std::int16_t CSurveillanceManager::RecomputeMCXMargin(std::int32_t exchange, std::string_view categoryCode) {
    if (exchange != kMaskMcx) return kDone;
    CMarginRun run(*this);
    const std::int16_t result =
        ForCategories(categoryCode, [&run](CSurveillanceCategory& category) { run.AddCommodities(category); });
    run.Publish();
    return result;
}

void CSurveillanceManager::RepublishCommodityMargin(CSurveillanceCategory& category) const {
    if (category.seen.mcx) PublishOwnRow(*this, category, MarginPart::kMcx);
}

}  // namespace surv
