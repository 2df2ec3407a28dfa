#include "positions/accounts.h"

#include <cmath>
#include <cstring>
#include <utility>

namespace surv {
namespace {

constexpr std::int32_t kSecondsPerDay = 86400;
/// Three days, 14 hours and 31 minutes: below it a contract is about to expire.
constexpr std::int32_t kNearExpirySeconds = 311460;
constexpr std::int16_t kNearMcxSegment = 0x15;
constexpr std::int16_t kNearExpiryOffset = 5;

std::size_t SlotOf(std::int16_t marketSegment) { return static_cast<std::size_t>(marketSegment - 1); }

void AddMtm(SegmentFigures& figures, double mtm, double sign) {
    if (mtm >= 0) {
        figures.profitSum += sign * mtm;
    } else {
        figures.lossSum += sign * std::abs(mtm);
    }
}

}  // namespace

AccountKey MakeAccountKey(std::string_view groupCode, std::string_view accountCode) {
    constexpr std::size_t kGroupWidth = 5;
    constexpr std::size_t kAccountWidth = 15;
    const std::string_view group = groupCode.empty() ? std::string_view{"     "} : groupCode.substr(0, kGroupWidth);
    const std::string_view account = accountCode.substr(0, kAccountWidth);
    char text[kGroupWidth + 1 + kAccountWidth];
    std::memcpy(text, group.data(), group.size());
    text[group.size()] = '|';
    if (!account.empty()) std::memcpy(text + group.size() + 1, account.data(), account.size());
    return std::string_view{text, group.size() + 1 + account.size()};
}

UnderlyingKey MakeUnderlyingKey(std::int16_t exchangeMask, std::int32_t underlyingToken, std::int32_t expiryDate,
                                std::int16_t caLevel, std::int32_t tradingDayBase) {
    const std::int64_t secondsLeft = std::int64_t{expiryDate} - tradingDayBase;
    std::int16_t segment = exchangeMask;
    switch (exchangeMask) {
        case kMaskNseDerivatives:
        case kMaskBseDerivatives:
        case kMaskNcdex:
            if (secondsLeft < kNearExpirySeconds) segment = static_cast<std::int16_t>(segment + kNearExpiryOffset);
            break;
        case kMaskMcx:
            if (secondsLeft < std::int64_t{caLevel} * kSecondsPerDay) segment = kNearMcxSegment;
            break;
        default: break;
    }
    return {segment, underlyingToken};
}

namespace {
UnderlyingKey UnderlyingKeyOf(const tagOrderInfoForSurv& order, const Settings& settings) {
    return MakeUnderlyingKey(order.ExchangeMask(), order.underlyingToken, order.contract.expiryDate,
                             order.contract.caLevel, settings.tradingDayBase);
}
}  // namespace

ProductGroup ProductGroupOf(std::int16_t productType) {
    switch (productType) {
        case product::kDelivery:
        case product::kConvertToDelivery: return ProductGroup::kDelivery;
        case product::kMarginPlus: return ProductGroup::kMarginPlus;
        case product::kMtf: return ProductGroup::kMtf;
        default: return ProductGroup::kNormal;
    }
}

// ---------------------------------------------------------------------------------------------------------------
// The path of an order, from the scrip up

void CScripExposure::ApplyOrder(const tagOrderInfoForSurv& order, const TreeContext& context) {
    for (CSurvPosition* part : {&position, &dayPosition}) {
        context.Save(part->data);
        part->ApplyChange(order);
    }
}

ScripPath CClientExposure::FindOrMakePath(const tagOrderInfoForSurv& order, const Settings& settings) {
    ScripPath path;
    path.underlying = &underlyings.FindOrMake(UnderlyingKeyOf(order, settings));
    path.expiry = &path.underlying->expiries.FindOrMake(order.contract.expiryDate);
    path.scrip = &path.expiry->scrips.FindOrMake(TreeKey(order));
    return path;
}

void CClientExposure::ApplyOrder(tagOrderInfoForSurv& order, const ScripPath& path, const TreeContext& context) {
    if (!ownerInfo) {
        ownerInfo = std::make_unique<tagPositionOwnerInfo>();
        FillOwner(*ownerInfo, order);
    }
    tagPositionOwnerInfo* const orderOwner = std::exchange(order.ownerInfo, ownerInfo.get());
    const bool trade = order.orderEventKind == event::kTrade;
    CSurvPosition oldPosition;
    if (trade) oldPosition = path.scrip->position;

    path.scrip->ApplyOrder(order, context);
    if (context.settings.HoldsClientPositions()) MoveSegmentPosition(order, context);
    if (trade) MoveSegmentMtm(order, oldPosition, path.scrip->position, context);

    context.Save(levelTypes);
    levelTypes = {order.clientLevelType, order.groupLevelType, order.subClientLevelType};
    order.ownerInfo = orderOwner;
}

void CClientExposure::MoveSegmentPosition(const tagOrderInfoForSurv& order, const TreeContext& context) {
    if (!IsSegment(order.marketSegment)) return;
    auto& positions = segmentPositions_[static_cast<std::size_t>(ProductGroupOf(order.productType))];
    if (!positions) positions = std::make_unique<SegmentPositions>();
    auto& position = (*positions)[SlotOf(order.marketSegment)];
    if (!position) position = std::make_unique<CSurvPosition>();
    context.Save(position->data);
    position->ApplyChange(order);
}

void CClientExposure::MoveSegmentMtm(const tagOrderInfoForSurv& order, CSurvPosition oldPosition,
                                     CSurvPosition newPosition, const TreeContext& context) {
    if (!IsSegment(order.marketSegment)) return;
    if (!segmentFigures_) segmentFigures_ = std::make_unique<std::array<SegmentFigures, kSegmentCount>>();
    SegmentFigures& figures = (*segmentFigures_)[SlotOf(order.marketSegment)];
    context.Save(figures);
    // GetMTM writes the open value of the state it is asked for.
    AddMtm(figures, oldPosition.GetMTM(order.lotWeighting), -1.0);
    AddMtm(figures, newPosition.GetMTM(order.lotWeighting), +1.0);
    figures.openValueSum += newPosition.data.openPositionValue - oldPosition.data.openPositionValue;
}

// ---------------------------------------------------------------------------------------------------------------
// Look-ups

CScripExposure* CClientExposure::FindScrip(const tagOrderInfoForSurv& order, const Settings& settings) const {
    const CUnderlyingExposure* underlying = underlyings.Find(UnderlyingKeyOf(order, settings));
    const CExpiryExposure* expiry = underlying ? underlying->expiries.Find(order.contract.expiryDate) : nullptr;
    return expiry ? expiry->scrips.Find(TreeKey(order)) : nullptr;
}

CScripExposure* CClientExposure::FindScripByKey(const PositionKey& key) const {
    for (const auto& underlying : underlyings) {
        for (const auto& expiry : underlying.value->expiries) {
            if (CScripExposure* scrip = expiry.value->scrips.Find(key)) return scrip;
        }
    }
    return nullptr;
}

const SegmentFigures* CClientExposure::FindSegmentFigures(std::int16_t marketSegment) const {
    if (!segmentFigures_ || !IsSegment(marketSegment)) return nullptr;
    return &(*segmentFigures_)[SlotOf(marketSegment)];
}

const CSurvPosition* CClientExposure::FindSegmentPosition(std::int16_t marketSegment, ProductGroup group) const {
    const auto& positions = segmentPositions_[static_cast<std::size_t>(group)];
    if (!positions || !IsSegment(marketSegment)) return nullptr;
    return (*positions)[SlotOf(marketSegment)].get();
}

}  // namespace surv
