#include "margin/recompute.h"

#include <algorithm>
#include <vector>

#include "margin/margin_rows.h"
#include "margin/tree_margin.h"
#include "service/manager.h"

namespace surv {
namespace {

/// Market segment and margin mask of a contract.
struct MarginMarket {
    std::int16_t marketSegment = 0;
    std::int16_t periodicity = 0;
};

/// By the segment of the underlying's file; {0, 0} where contracts have no scan.
MarginMarket MarketOf(std::int16_t segment, std::int32_t strikePrice) {
    const bool option = strikePrice > 0;
    switch (segment) {
        case kMaskNseDerivatives: return option ? MarginMarket{3, 9} : MarginMarket{2, 5};
        case kMaskBseDerivatives: return option ? MarginMarket{6, 0x41} : MarginMarket{5, 0x21};
        case kMaskNcdex: return {8, 0x101};
        default: return {};
    }
}

/// An order that names the contract and carries its parameters and rates; no quantity, no price, no preference.
tagOrderInfoForSurv OrderOf(const CSurveillanceManager& manager, const CRPFUnderlyingWiseInfo& underlying,
                            const CRPFContractWiseInfo& contract) {
    const tagRPFContractRecord& record = contract.record;
    const MarginMarket market = MarketOf(underlying.segment, record.contract.strikePrice);
    tagOrderInfoForSurv order;
    order.marketSegment = market.marketSegment;
    order.periodicity = market.periodicity;
    order.contractRpf = &contract;
    order.underlyingRpf = &underlying;
    order.underlyingToken = record.underlyingToken;
    order.token = record.token;
    order.contract.expiryDate = record.contract.expiryDate;
    order.contract.strikePrice = record.contract.strikePrice;
    constexpr std::size_t kOptionTypeLength = 2;
    std::copy_n(record.contract.optionType, kOptionTypeLength, order.contract.optionType);
    order.contract.caLevel = record.contract.caLevel;
    order.riskModeCopy = manager.Context().settings.rpfMarginMode;
    manager.Context().stores.TakeAdditionalMargin(order);
    return order;
}

}  // namespace

void CMarginRun::Add(const CRPFUnderlyingWiseInfo& underlying, const CRPFContractWiseInfo& contract) {
    tagOrderInfoForSurv order = OrderOf(manager_, underlying, contract);
    if (!IsMargined(order)) return;
    const CTokenCategories* reached =
        manager_.rpfCategoriesByToken.Find(SegmentTokenKey(order.ExchangeMask(), order.token));
    if (!reached) return;
    ++contracts_;
    for (CSurveillanceCategory* category : reached->categories) Replace(*category, order);
}

void CMarginRun::AddAt(CSurveillanceCategory& category, const CRPFUnderlyingWiseInfo& underlying,
                       const CRPFContractWiseInfo& contract) {
    tagOrderInfoForSurv order = OrderOf(manager_, underlying, contract);
    if (!IsMargined(order)) return;
    ++contracts_;
    Replace(category, order);
}

void CMarginRun::Replace(CSurveillanceCategory& category, tagOrderInfoForSurv& order) {
    const std::int16_t exchangeMask = order.ExchangeMask();
    auto found = entries_.find({&category, exchangeMask});
    if (found == entries_.end()) {
        const Entry fresh{{&category, exchangeMask, 0}, manager_.EffectivePreference(category, exchangeMask)};
        found = entries_.emplace(TouchKey{&category, exchangeMask}, fresh).first;
    }
    order.riskPreference = found->second.preference;
    if (category.ReplaceContract(order)) found->second.touched.lastContract = contracts_;
}

void CMarginRun::Publish() {
    std::vector<Touched> touched;
    touched.reserve(entries_.size());
    for (const auto& [key, entry] : entries_) {
        if (entry.touched.lastContract != 0) touched.push_back(entry.touched);
    }
    // A row of several exchanges shows the premiums of the one written last: the one whose contract came last.
    std::sort(touched.begin(), touched.end(),
              [](const Touched& a, const Touched& b) { return a.lastContract < b.lastContract; });
    for (const Touched& each : touched) {
        PublishMargin(manager_, *each.category, PartOfExchange(each.exchangeMask));
    }
    entries_.clear();
}

std::int16_t CSurveillanceManager::RecomputeIM(const CRPFUnderlyingWiseInfo* underlying,
                                               const CRPFContractWiseInfo* contract) {
    if (!underlying || !contract) return kNotDone;
    CMarginRun run(*this);
    run.Add(*underlying, *contract);
    run.Publish();
    return kDone;
}

void CSurveillanceManager::RecomputeAllIM() {
    if (context_.settings.rpfMarginMode != 1) return;
    CMarginRun run(*this);
    for (const auto& underlying : context_.risk.live.underlyings) {
        for (const auto& contract : underlying.value->contracts) run.Add(*underlying.value, *contract.value);
    }
    run.Publish();
}

void CSurveillanceManager::RecomputeSegmentMargin(CSurveillanceCategory& category, std::int16_t exchangeMask) {
    CMarginRun run(*this);
    const CRPFParameterTable& live = context_.risk.live;
    for (const auto& entry : category.Book(Period::kExpiry).accounts.holders) {
        for (const ContractHolder& holder : *entry.value) {
            const CSurvPosition& position = holder.path.scrip->position;
            if (SegmentToExchangeMask(position.GetMarketSegment()) != exchangeMask) continue;
            const CRPFUnderlyingWiseInfo* underlying = live.FindUnderlying(exchangeMask, position.GetUnderlyingToken());
            const CRPFContractWiseInfo* contract =
                underlying ? underlying->FindContract(exchangeMask, position.GetToken()) : nullptr;
            if (contract) run.AddAt(category, *underlying, *contract);
            break;  // every holder has the same contract
        }
    }
    run.Publish();
}

std::int16_t CSurveillanceManager::RecomputeMargin(std::int32_t exchange, std::string_view categoryCode) {
    if (exchange != kMaskNseDerivatives && exchange != kMaskNcdex) return kDone;
    const auto exchangeMask = static_cast<std::int16_t>(exchange);
    if (categoryCode == "ALL") {
        for (const auto& category : categories) RecomputeSegmentMargin(*category.value, exchangeMask);
        return kDone;
    }
    CSurveillanceCategory* category = FindCategory(categoryCode);
    if (!category) return kNotDone;
    RecomputeSegmentMargin(*category, exchangeMask);
    return kDone;
}

void CSurveillanceManager::RepublishMargin(CSurveillanceCategory& category) const {
    if (context_.settings.rpfMarginMode != 1) return;
    if (category.seen.nseDerivative) PublishMargin(*this, category, MarginPart::kNseDerivatives);
    if (category.seen.bseDerivative) PublishMargin(*this, category, MarginPart::kBseDerivatives);
}

}  // namespace surv
