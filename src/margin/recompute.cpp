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
    // By orders, open ones too, and by trades.
    const std::int16_t exchangeMask = order.ExchangeMask();
    const CTokenCategories* reached = manager_.rpfCategoriesByToken.Find(SegmentTokenKey(exchangeMask, order.token));
    const CBroadcastScrip* traded = manager_.broadcastHash.Find(PlainKey(exchangeMask, order.token));
    if (!reached && !traded) return;
    ++contracts_;
    if (reached) {
        for (CSurveillanceCategory* category : reached->categories) Collect(*category, order);
    }
    if (traded) {
        for (CSurveillanceCategory* category : traded->categories) {
            if (!reached || !reached->categories.Contains(category)) Collect(*category, order);
        }
    }
    Replace(order);
}

void CMarginRun::AddAt(CSurveillanceCategory& category, const CRPFUnderlyingWiseInfo& underlying,
                       const CRPFContractWiseInfo& contract) {
    tagOrderInfoForSurv order = OrderOf(manager_, underlying, contract);
    if (!IsMargined(order)) return;
    ++contracts_;
    Collect(category, order);
    Replace(order);
}

void CMarginRun::Collect(CSurveillanceCategory& category, const tagOrderInfoForSurv& order) {
    const std::vector<ContractHolder>* holders = category.FindHolders(order);
    if (!holders) return;
    const std::size_t touched = Touch(category, order.ExchangeMask());
    for (const ContractHolder& holder : *holders) work_.push_back({touched, holder});
}

std::size_t CMarginRun::Touch(CSurveillanceCategory& category, std::int16_t exchangeMask) {
    const auto [place, added] = places_.try_emplace(TouchKey{&category, exchangeMask}, touched_.size());
    if (added) {
        touched_.push_back({&category, exchangeMask, 0, manager_.EffectivePreference(category, exchangeMask)});
    }
    touched_[place->second].lastContract = contracts_;
    return place->second;
}

namespace {

/// Nodes and records of one contract lie all over memory: they are fetched some accounts ahead.
void FetchNodes(const ContractHolder& holder) {
    __builtin_prefetch(holder.account);
    __builtin_prefetch(&holder.account->levelTypes);
    __builtin_prefetch(&holder.path.underlying->underlyingMargin);
    __builtin_prefetch(&holder.path.expiry->expiryMargin);
    __builtin_prefetch(&holder.path.scrip->position);
    __builtin_prefetch(&holder.path.scrip->dayPosition);
    __builtin_prefetch(&holder.path.scrip->scripMargin);
}
template <class Record>
void FetchRecord(const Record* record) {
    constexpr std::size_t kLine = 64;
    if (!record) return;
    for (std::size_t at = 0; at < sizeof(Record); at += kLine) {
        __builtin_prefetch(reinterpret_cast<const char*>(record) + at);
    }
}
void FetchRecords(const ContractHolder& holder) {
    FetchRecord(holder.path.scrip->scripMargin.get());
    FetchRecord(holder.path.expiry->expiryMargin.get());
    FetchRecord(holder.path.underlying->underlyingMargin.get());
    FetchRecord(holder.account->clientMarginTotals.get());
}

}  // namespace

void CMarginRun::Replace(tagOrderInfoForSurv& order) {
    constexpr std::size_t kNodesAhead = 6;
    constexpr std::size_t kRecordsAhead = 3;
    const Settings& settings = manager_.Context().settings;
    for (std::size_t i = 0; i < std::min(kNodesAhead, work_.size()); ++i) FetchNodes(work_[i].holder);
    for (std::size_t i = 0; i < std::min(kRecordsAhead, work_.size()); ++i) FetchRecords(work_[i].holder);
    for (std::size_t i = 0; i < work_.size(); ++i) {
        if (i + kNodesAhead < work_.size()) FetchNodes(work_[i + kNodesAhead].holder);
        if (i + kRecordsAhead < work_.size()) FetchRecords(work_[i + kRecordsAhead].holder);
        const Work& work = work_[i];
        const Touched& touched = touched_[work.touched];
        if (!touched.category->CountsInMargin(*work.holder.account) || !work.holder.Holds(order)) continue;
        order.riskPreference = touched.preference;
        work.holder.account->ReplaceParameters(order, work.holder.path, settings);
    }
    work_.clear();
}

void CMarginRun::Publish() {
    // A row of several exchanges shows the premiums of the one written last: the one whose contract came last.
    std::sort(touched_.begin(), touched_.end(),
              [](const Touched& a, const Touched& b) { return a.lastContract < b.lastContract; });
    for (const Touched& each : touched_) {
        PublishMargin(manager_, *each.category, PartOfExchange(each.exchangeMask));
    }
    touched_.clear();
    places_.clear();
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
        if (SegmentOfKey(entry.key) != exchangeMask) continue;
        HashSet<std::int32_t> underlyings;  // one, but for a token that orders have named under several
        for (const ContractHolder& holder : *entry.value) underlyings.Insert(holder.underlyingToken);
        for (const std::int32_t token : underlyings) {
            const CRPFUnderlyingWiseInfo* underlying = live.FindUnderlying(exchangeMask, token);
            const CRPFContractWiseInfo* contract =
                underlying ? underlying->FindContract(exchangeMask, TokenOfKey(entry.key)) : nullptr;
            if (contract) run.AddAt(category, *underlying, *contract);
        }
    }
    run.Publish();
}

std::int16_t CSurveillanceManager::RecomputeMargin(std::int32_t exchange, std::string_view categoryCode) {
    if (exchange != kMaskNseDerivatives && exchange != kMaskNcdex) return kDone;
    const auto exchangeMask = static_cast<std::int16_t>(exchange);
    return ForCategories(categoryCode,
                         [&](CSurveillanceCategory& category) { RecomputeSegmentMargin(category, exchangeMask); });
}

void CSurveillanceManager::RepublishMargin(CSurveillanceCategory& category) const {
    if (context_.settings.rpfMarginMode != 1) return;
    // Both rows of their own come first; then NSE is the one in hand, if the category has it.
    if (category.seen.bseDerivative) PublishMargin(*this, category, MarginPart::kBseDerivatives);
    if (category.seen.nseDerivative) PublishMargin(*this, category, MarginPart::kNseDerivatives);
}

}  // namespace surv
