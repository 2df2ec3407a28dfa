#include "queries/held_keys.h"
#include "service/manager.h"

namespace surv {
namespace {

bool IsOpen(const CSurvPosition& position, const ProductReference& products) {
    const tagSurvPositionData data = position.GetPositionData();
    if (!data.scripInfo || data.tradedBuyQty == data.tradedSellQty) return false;
    const std::int16_t exchangeMask = SegmentToExchangeMask(data.scripInfo->marketSegment);
    if (!IsCashExchange(exchangeMask)) return true;
    const SeriesKey series{exchangeMask, FieldText(data.scripInfo->contract.series)};
    return !products.compulsoryDeliverySeries.Contains(series);
}

}  // namespace

std::int16_t CSurveillanceManager::GetClientPositionPresentFromDLL(std::string_view categoryCode,
                                                                   std::string_view groupCode,
                                                                   std::string_view accountCode) const {
    const CSurveillanceCategory* const category = FindCategory(categoryCode);
    if (!category) return kNotDone;
    const CClientBook* const book = category->FindClientBook();
    const AccountKey account = MakeAccountKey(groupCode, accountCode);
    const CClientExposure* const holder = category->Book(Period::kExpiry).accounts.accounts.Find(account);
    if (!book || !holder) return 0;
    bool present = false;
    ForEachHeldKey(*holder, [&](const PositionKey& scrip) {
        const auto* const holders = book->Of(Period::kExpiry).positions.scrips.Find(scrip);
        const CClientPosition* const held = holders ? holders->Find(account) : nullptr;
        present = present || (held && IsOpen(held->position, context_.products));
    });
    return present ? 1 : 0;
}

}  // namespace surv
