// Adding, changing and removing the limit rows of a category.

#include <algorithm>
#include <array>

#include "categories/category.h"

namespace surv {
namespace {

/// Rows of these masks start the day without a turnover of their own.
constexpr std::array<std::int16_t, 7> kTurnoverCleared{0xD, 0x61, 0x101, 0x181, 0x1FF, 0xF, 0x7F};

bool Holds(const auto& masks, std::int16_t mask) { return std::find(masks.begin(), masks.end(), mask) != masks.end(); }

constexpr std::string_view kNoMask = "Surveillance limit mask is 0";

/// Adds the figures of one netted position to the row.
void AddUsedFigures(BKSurveillanceLimitDefTag& row, CSurvPosition& position, LotWeighting weighting) {
    constexpr Selector kOrder = Selector::kOrderSide;
    constexpr Selector kTraded = Selector::kTradedSide;
    row.usedGrossOrder += position.GetGrossExposure(kOrder, 0, GrossMode::kNetted);
    row.usedGrossTraded += position.GetGrossExposure(kTraded, 0, GrossMode::kNetted);
    row.usedNetOrder += position.GetNetExposure(kOrder);
    row.usedNetTraded += position.GetNetExposure(kTraded);
    row.usedNetSaleOrder += position.GetNetSaleExposure(kOrder);
    row.usedNetSaleTraded += position.GetNetSaleExposure(kTraded);
    row.usedNetPositionOrder += position.GetNetPosition(kOrder);
    row.usedNetPositionTraded += position.GetNetPosition(kTraded);
    row.usedTurnoverOrder += position.GetTurnover(kOrder);
    row.usedTurnoverTraded += position.GetTurnover(kTraded);
    row.usedMaxGross += position.GetMaxGrossExposure(0, GrossMode::kNetted);
    row.usedMaxNet += position.GetMaxNetExposure();
    row.usedMaxNetSale += position.GetMaxNetSaleExposure();
    row.usedMaxNetPosition += position.GetMaxNetPosition();
    row.usedMaxTurnover += position.GetMaxTurnover();
    row.usedMtm += position.GetMTM(weighting);
    row.usedPendingOrder += position.GetPendingOrderValue();
}

/// Puts the figures of one scrip's position into the row; no position gives 0 everywhere.
void SetUsedFigures(BKSurveillanceLimitDefTag& row, CExposureDetails& set, const PositionKey& key,
                    LotWeighting weighting) {
    constexpr Selector kOrder = Selector::kOrderSide;
    constexpr Selector kTraded = Selector::kTradedSide;
    const auto read = [&set](auto accessor, const auto&... arguments) {
        double figure = 0;
        (set.*accessor)(arguments..., figure);
        return figure;
    };
    row.usedGrossOrder = read(&CExposureDetails::GetGrossExposure, kOrder, key);
    row.usedGrossTraded = read(&CExposureDetails::GetGrossExposure, kTraded, key);
    row.usedNetOrder = read(&CExposureDetails::GetNetExposure, kOrder, key);
    row.usedNetTraded = read(&CExposureDetails::GetNetExposure, kTraded, key);
    row.usedNetSaleOrder = read(&CExposureDetails::GetNetSaleExposure, kOrder, key);
    row.usedNetSaleTraded = read(&CExposureDetails::GetNetSaleExposure, kTraded, key);
    row.usedNetPositionOrder = read(&CExposureDetails::GetNetPosition, kOrder, key);
    row.usedNetPositionTraded = read(&CExposureDetails::GetNetPosition, kTraded, key);
    row.usedTurnoverOrder = read(&CExposureDetails::GetTurnover, kOrder, key);
    row.usedTurnoverTraded = read(&CExposureDetails::GetTurnover, kTraded, key);
    row.usedMaxGross = read(&CExposureDetails::GetMaxGrossExposure, key);
    row.usedMaxNet = read(&CExposureDetails::GetMaxNetExposure, key);
    row.usedMaxNetSale = read(&CExposureDetails::GetMaxNetSaleExposure, key);
    row.usedMaxNetPosition = read(&CExposureDetails::GetMaxNetPosition, key);
    row.usedMaxTurnover = read(&CExposureDetails::GetMaxTurnover, key);
    row.usedMtm = read(&CExposureDetails::GetMTM, key, weighting);
    row.usedPendingOrder = read(&CExposureDetails::GetPendingOrderValue, key);
}

/// Adds the grossing figures of one account's contract to the row.
void AddGrossFigures(BKSurveillanceLimitDefTag& row, const CSurvPosition& position) {
    constexpr Selector kOrder = Selector::kOrderSide;
    constexpr Selector kTraded = Selector::kTradedSide;
    row.grossUsedGrossOrder += position.GetGrossExposure(kOrder, 0, GrossMode::kNetted);
    row.grossUsedMaxGross += position.GetMaxGrossExposure(0, GrossMode::kNetted);
    row.grossUsedMaxNet += position.GetMaxNetExposure();
    row.grossUsedNetOrder += position.GetNetExposure(kOrder);
    row.grossUsedMaxNetSale += position.GetMaxNetSaleExposure();
    row.grossUsedNetSaleOrder += position.GetNetSaleExposure(kOrder);
    row.grossUsedGrossTraded += position.GetGrossExposure(kTraded, 0, GrossMode::kNetted);
    row.grossUsedNetTraded += position.GetNetExposure(kTraded);
    row.grossUsedNetSaleTraded += position.GetNetSaleExposure(kTraded);
}

PositionKey RowKey(const BKSurveillanceLimitDefTag& row) {
    return {LimitMaskToExchangeMask(row.limitMask), PositionFamily::kPlain, row.token};
}

}  // namespace

void CSurveillanceCategory::WorkOutUsedFigures(BKSurveillanceLimitDefTag& row) {
    const LotWeighting weighting = context_.settings.mcxLotWeightOn == 1 ? LotWeighting::kOn : LotWeighting::kOff;
    CExposureDetails& set = Book(PeriodOfMask(row.limitMask)).exposures;
    if (row.token == kAllSecurities) {
        for (const auto& position : set.positions) {
            if (MaskWithin(position.value->data.limitMask, row.limitMask)) {
                AddUsedFigures(row, *position.value, weighting);
            }
        }
    } else {
        SetUsedFigures(row, set, RowKey(row), weighting);
    }
    ComputeGrossFigures(row);
}

void CSurveillanceCategory::ComputeGrossFigures(BKSurveillanceLimitDefTag& row) const {
    const CAccountExposureSet& tree = Book(PeriodOfMask(row.limitMask)).accounts;
    for (const auto& account : tree.accounts) {
        if (account.value->aggregate) continue;
        if (row.token == kAllSecurities) {
            account.value->ForEachScrip([&row](const CScripExposure& scrip) {
                if (MaskWithin(scrip.position.data.limitMask, row.limitMask)) AddGrossFigures(row, scrip.position);
            });
        } else if (const CScripExposure* scrip = account.value->FindScripByKey(RowKey(row))) {
            AddGrossFigures(row, scrip->position);
        }
    }
}

RuleAnswer CSurveillanceCategory::AddSurvLimit(BKSurveillanceLimitDefTag& row) {
    definitionLevel = row.entityLevel;
    if (row.limitMask == 0) return {code::kStore, std::string{kNoMask}};
    WorkOutUsedFigures(row);
    if (Holds(kTurnoverCleared, row.limitMask)) row.usedTurnoverOrder = 0;
    return StoreRow(std::make_unique<CSurvLimitEntry>(row));
}

RuleAnswer CSurveillanceCategory::LoadSurvLimit(std::unique_ptr<CSurvLimitEntry> entry) {
    BKSurveillanceLimitDefTag& row = entry->Row();
    definitionLevel = row.entityLevel;
    if (Holds(kTurnoverCleared, row.limitMask)) row.usedTurnoverOrder = 0;
    return StoreRow(std::move(entry));
}

RuleAnswer CSurveillanceCategory::StoreRow(std::unique_ptr<CSurvLimitEntry> entry) {
    const BKSurveillanceLimitDefTag& row = entry->Row();
    const std::int16_t mask = row.limitMask;
    const std::int16_t level = row.entityLevel;
    const std::int16_t subLevel = row.subLevel;
    const bool allSecurities = row.token == kAllSecurities;

    if (CSurveillanceInfo* info = limitStores.Find(mask)) {
        RuleAnswer answer = info->store.AddRow(std::move(entry));
        if (!answer.Passed()) return answer;
    } else {
        auto fresh = std::make_unique<CSurveillanceInfo>();
        fresh->store.AddRow(std::move(entry));
        limitStores.Insert(mask, std::move(fresh));
        ++Book(PeriodOfMask(mask)).rowCount;
    }
    lastLevel = level;
    secondLevel = subLevel;
    if (allSecurities) allSecuritiesMask |= mask & kSegmentBits;
    return {};
}

RuleAnswer CSurveillanceCategory::UpdateSurvLimit(const BKSurveillanceLimitDefTag& row) {
    definitionLevel = row.entityLevel;
    CSurveillanceInfo* info = limitStores.Find(row.limitMask);
    return info ? info->store.UpdateRow(row) : RuleAnswer{code::kStore, std::string{CSurvLimitStore::kNotThere}};
}

RuleAnswer CSurveillanceCategory::RemoveSurvLimit(const BKSurveillanceLimitDefTag& row) {
    CSurveillanceInfo* info = limitStores.Find(row.limitMask);
    return info ? info->store.RemoveRow(row.token) : RuleAnswer{code::kStore, std::string{CSurvLimitStore::kNotThere}};
}

}  // namespace surv
