#include "positions/accounts.h"

#include <cstring>
#include <utility>

#include "margin/risk_parameters.h"
#include "margin/tree_margin.h"
#include "platform/bytes.h"

namespace surv {
namespace {

constexpr std::int32_t kSecondsPerDay = 86400;
/// Three days, 14 hours and 31 minutes: below it a contract is about to expire.
constexpr std::int32_t kNearExpirySeconds = 311460;
constexpr std::int16_t kNearMcxSegment = 0x15;
constexpr std::int16_t kNearExpiryOffset = 5;

std::size_t SlotOf(std::int16_t marketSegment) { return static_cast<std::size_t>(marketSegment - 1); }

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

bool IsAggregateCode(std::string_view accountCode) {
    constexpr std::size_t kDealerPlace = 6;
    constexpr std::size_t kGroupPlace = 10;
    const auto plusAt = [accountCode](std::size_t at) { return accountCode.size() > at && accountCode[at] == '+'; };
    return plusAt(kDealerPlace) || plusAt(kGroupPlace);
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

namespace {

template <class Record>
Record& Made(std::unique_ptr<Record>& record) {
    if (!record) record = std::make_unique<Record>();
    return *record;
}

/// The margin records of a path, made where there are none.
MarginPath MarginPathOf(const ScripPath& path, std::unique_ptr<tagClientMarginTotals>& totals) {
    return {Made(path.scrip->scripMargin), Made(path.expiry->expiryMargin), Made(path.underlying->underlyingMargin),
            Made(totals)};
}

ContractPositions PositionsOf(const CScripExposure& scrip) { return {scrip.position, scrip.dayPosition}; }

const tagRPFContractRecord* ContractRecordOf(const tagOrderInfoForSurv& order) {
    return order.contractRpf ? &order.contractRpf->record : nullptr;
}

/// Takes the charges of the order's underlying; MCX has none, and an order without them leaves those of before. True
/// when they are others than before.
bool TakeUnderlyingRecord(tagUnderlyingMargin& margin, const tagOrderInfoForSurv& order) {
    constexpr std::int16_t kMcxExpiry = 0x81;
    if (!order.underlyingRpf || order.periodicity == kMcxExpiry) return false;
    if (SameBytes(margin.underlying, order.underlyingRpf->record)) return false;
    margin.underlying = order.underlyingRpf->record;
    return true;
}

/// Parameters that come with an order reach all views, the traded one too, before the order moves those that are its
/// own.
void TakeParameters(const MarginPath& margin, const CScripExposure& scrip, const tagOrderInfoForSurv& order,
                    std::int32_t tradingDayBase) {
    const tagRPFContractRecord* const record = ContractRecordOf(order);
    const bool newCharges = TakeUnderlyingRecord(margin.underlying, order);
    if (!margin.scrip.inSums) return;
    if (newCharges || (record && !SameBytes(*record, margin.scrip.contract))) {
        CarryContract(margin, PositionsOf(scrip), order, record, TradedSums::kFollow, tradingDayBase);
    }
}

/// Figures of these markets are brought up to date ahead of an order, so that a change of the day's parameters doesn't
/// count as a change of the order.
bool IsRefreshedBeforeOrder(const tagOrderInfoForSurv& order) {
    const MarginGroup group = MarginGroupOfMask(order.periodicity);
    return group == MarginGroup::kNse || group == MarginGroup::kNcdex;
}

}  // namespace

MarginReading CClientExposure::ApplyOrder(tagOrderInfoForSurv& order, const ScripPath& path,
                                          const TreeContext& context) {
    if (aggregate || !IsMargined(order)) {
        const MarginReading margins = ReadMargins(order.ExchangeMask());
        MovePositions(order, path, context);
        return margins;
    }
    const MarginPath margin = MarginPathOf(path, clientMarginTotals);
    const std::int32_t tradingDayBase = context.settings.tradingDayBase;
    context.Save(margin.scrip);
    context.Save(margin.expiry);
    context.Save(margin.underlying);
    context.Save(margin.totals);
    const tagRPFContractRecord* const record = ContractRecordOf(order);
    if (margin.scrip.inSums && IsRefreshedBeforeOrder(order)) {
        const tagRPFContractRecord* const first = margin.scrip.HasContract() ? nullptr : record;
        RefreshContract(margin, PositionsOf(*path.scrip), order, first, tradingDayBase);
    }
    const MarginReading before = ReadMargins(order.ExchangeMask());
    TakeParameters(margin, *path.scrip, order, tradingDayBase);
    MovePositions(order, path, context);
    const TradedSums traded = order.orderEventKind == event::kTrade ? TradedSums::kFollow : TradedSums::kStay;
    CarryContract(margin, PositionsOf(*path.scrip), order, record, traded, tradingDayBase);
    return before;
}

void CClientExposure::ReplaceParameters(const tagOrderInfoForSurv& order, const ScripPath& path,
                                        const Settings& settings) {
    const MarginPath margin = MarginPathOf(path, clientMarginTotals);
    // Charges that are there already stay until an order brings others.
    if (margin.underlying.underlying.underlyingToken == 0) TakeUnderlyingRecord(margin.underlying, order);
    RefreshContract(margin, PositionsOf(*path.scrip), order, ContractRecordOf(order), settings.tradingDayBase);
}

tagPositionOwnerInfo* CClientExposure::OwnerOf(const tagOrderInfoForSurv& order) {
    if (!ownerInfo) {
        ownerInfo = std::make_unique<tagPositionOwnerInfo>();
        FillOwner(*ownerInfo, order);
        if (IsAggregateCode(order.accountCode.View())) aggregate = true;
    }
    return ownerInfo.get();
}

CSurvPosition& CClientExposure::SegmentPosition(std::int16_t marketSegment, ProductGroup group) {
    auto& positions = segmentPositions_[static_cast<std::size_t>(group)];
    if (!positions) positions = std::make_unique<SegmentPositions>();
    auto& position = (*positions)[SlotOf(marketSegment)];
    if (!position) position = std::make_unique<CSurvPosition>();
    return *position;
}

SegmentFigures& CClientExposure::FiguresOf(std::int16_t marketSegment) {
    if (!segmentFigures_) segmentFigures_ = std::make_unique<std::array<SegmentFigures, kSegmentCount>>();
    return (*segmentFigures_)[SlotOf(marketSegment)];
}

void CClientExposure::MovePositions(tagOrderInfoForSurv& order, const ScripPath& path, const TreeContext& context) {
    tagPositionOwnerInfo* const orderOwner = std::exchange(order.ownerInfo, OwnerOf(order));
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
    CSurvPosition& position = SegmentPosition(order.marketSegment, ProductGroupOf(order.productType));
    context.Save(position.data);
    position.ApplyChange(order);
}

void CClientExposure::MoveSegmentMtm(const tagOrderInfoForSurv& order, CSurvPosition oldPosition,
                                     CSurvPosition newPosition, const TreeContext& context) {
    if (!IsSegment(order.marketSegment)) return;
    SegmentFigures& figures = FiguresOf(order.marketSegment);
    context.Save(figures);
    // GetMTM writes the open value of the state it is asked for.
    figures.AddMtm(oldPosition.GetMTM(order.lotWeighting), -1.0);
    figures.AddMtm(newPosition.GetMTM(order.lotWeighting), +1.0);
    figures.openValueSum += newPosition.data.openPositionValue - oldPosition.data.openPositionValue;
}

// ---------------------------------------------------------------------------------------------------------------
// Margin

MarginReading CClientExposure::ReadMargins(std::int16_t exchangeMask) const {
    return surv::ReadMargins(clientMarginTotals.get(), exchangeMask);
}

double CClientExposure::GetMargin(int side, std::int16_t exchangeMask) const {
    const MarginReading margins = ReadMargins(exchangeMask);
    return side == static_cast<int>(Selector::kOrderSide) ? margins.orderSide : margins.tradedSide;
}

double CClientExposure::GetOptionValue(int side, std::int16_t exchangeMask) const {
    const MarginReading margins = ReadMargins(exchangeMask);
    return side == static_cast<int>(Selector::kOrderSide) ? margins.optionOrderSide : margins.optionTradedSide;
}

void CAccountExposureSet::EnterHolder(const tagOrderInfoForSurv& order, CClientExposure& account,
                                      const ScripPath& path) {
    const std::int16_t exchangeMask = order.ExchangeMask();
    if (path.scrip->indexed || IsCashExchange(exchangeMask) ||
        TreeFamily(order.productType) != PositionFamily::kPlain) {
        return;
    }
    holders.FindOrMake(SegmentTokenKey(exchangeMask, order.token))
        .push_back({&account, path, order.underlyingToken, order.contract.expiryDate});
    path.scrip->indexed = true;
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
            CScripExposure* scrip = expiry.value->scrips.Find(key);
            if (scrip && !scrip->IsBlank()) return scrip;
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
