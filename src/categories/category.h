#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "categories/limit_store.h"
#include "margin/margin_part.h"
#include "platform/hash_map.h"
#include "platform/hash_set.h"
#include "positions/accounts.h"
#include "positions/exposure_details.h"
#include "reference/context.h"

namespace surv {

/// Composite levels of an entity that is a dealer on one market and a group on another, and the levels that an order
/// updates even when it doesn't update all.
inline constexpr std::int16_t kLevelDealerOnCash = 0x82;
inline constexpr std::int16_t kLevelDealerOffCash = 0x83;

/// Resolves a composite level. group: 1 for the cash segments, 0x10 MCX, 0x40 NCDEX, 2 otherwise.
[[nodiscard]] constexpr std::int16_t EffectiveLevel(std::int16_t level, std::int16_t group) {
    if (level == kLevelDealerOnCash) return group == 1 ? std::int16_t{0} : std::int16_t{1};
    if (level == kLevelDealerOffCash) return group == 1 ? std::int16_t{1} : std::int16_t{0};
    return level;
}
/// The `group` argument of EffectiveLevel for an order.
[[nodiscard]] constexpr std::int16_t LevelGroupOf(std::int16_t marketSegment) {
    if (IsCashSegment(marketSegment)) return 1;
    if (marketSegment == 7) return kMaskMcx;
    return marketSegment == 8 ? kMaskNcdex : std::int16_t{2};
}
[[nodiscard]] constexpr bool IsAlwaysUpdatedLevel(int level) { return level == 3 || level == 5 || level == 8; }

/// What one period (daily, expiry) of a category holds.
struct PeriodBook {
    CExposureDetails exposures;             ///< dailyExposures, expiryExposures: netted over all accounts
    CAccountExposureSet accounts;           ///< dailyAccounts, expiryAccounts: the tree per account
    CExposureDetails clientLevelExposures;  ///< orders of client types 3 and 5, kept apart where levels aggregate
    std::int16_t rowCount = 0;              ///< dailyRowCount, expiryRowCount: limit stores added
};

/// One entity that carries limits: a group, a dealer, a family, a client, a sub client, or the root. It keeps its own
/// complete picture of what happened under it, and shares nothing but scrip descriptions and preferences.
class CSurveillanceCategory {
 public:
    explicit CSurveillanceCategory(SurvContext& context) : context_(context) {}
    CSurveillanceCategory(const CSurveillanceCategory&) = delete;
    CSurveillanceCategory& operator=(const CSurveillanceCategory&) = delete;

    // Level -------------------------------------------------------------------------------------------------
    std::int16_t lastLevel = -1;                       ///< entityLevel of the last limit row added
    std::int16_t secondLevel = -1;                     ///< subLevel of it
    std::int16_t definitionLevel = 0;                  ///< entityLevel of the last limit row added or updated
    std::int32_t allSecuritiesMask = 0;                ///< segment bits of all rows with token -9
    const PreferenceMap* ownPreferences = nullptr;     ///< not owned
    const PreferenceMap* familyPreferences = nullptr;  ///< not owned; only with familyLevelEnabled

    // Limits (limit_admin.cpp) --------------------------------------------------------------------------------
    HashMap<std::int16_t, CSurveillanceInfo> limitStores{23};  ///< by limit mask

    /// Adds a row, its used figures worked out from the positions of the moment. `row` takes the figures.
    RuleAnswer AddSurvLimit(BKSurveillanceLimitDefTag& row);
    /// Adds a row of the start-up load as the host gives it; `entry` holds it.
    RuleAnswer LoadSurvLimit(std::unique_ptr<CSurvLimitEntry> entry);
    RuleAnswer UpdateSurvLimit(const BKSurveillanceLimitDefTag& row);
    RuleAnswer RemoveSurvLimit(const BKSurveillanceLimitDefTag& row);
    /// Null when there is no such mask or token.
    [[nodiscard]] CSurvLimitEntry* FindRow(std::int16_t limitMask, std::int32_t token) const;
    void AppendLimitRows(CPtrList& list) const;

    // Positions -----------------------------------------------------------------------------------------------
    [[nodiscard]] PeriodBook& Book(Period period) { return period == Period::kDaily ? daily_ : expiry_; }
    [[nodiscard]] const PeriodBook& Book(Period period) const { return period == Period::kDaily ? daily_ : expiry_; }
    /// The period whose rows have masks like this one.
    [[nodiscard]] static constexpr Period PeriodOfMask(std::int16_t mask) {
        return (mask & kExpiryBit) ? Period::kExpiry : Period::kDaily;
    }
    /// The owner record of all the category's positions; made from the first order.
    tagPositionOwnerInfo* OwnerOf(const tagOrderInfoForSurv& order);

    // Margin (margin/) ----------------------------------------------------------------------------------------
    MarketsSeen seen;
    /// The underlyings and the contracts seen in orders and rows, by SegmentTokenKey of exchange mask and token.
    HashSet<std::int64_t> underlyingKeys;
    HashSet<std::int64_t> contractKeys;
    CashMargin cashMarginNse{};  ///< of the cash positions
    CashMargin cashMarginBse{};

    /// Notes market, underlying and contract of a derivative order, with rpfMarginMode 1. A check of an MCX order notes
    /// the market alone.
    void NoteOrderMarket(const tagOrderInfoForSurv& order, OrderRoad road);
    /// The same, whatever the margin mode.
    void NoteMarket(std::int16_t exchangeMask, std::int32_t underlyingToken, std::int32_t token);
    /// Puts the order's risk parameters into every account that has its contract, the sums of accounts apart. False:
    /// the category has never seen the contract or its market. REQUIRES: the order carries parameters, rates,
    /// preference.
    bool ReplaceContract(const tagOrderInfoForSurv& order);
    /// The figures of all accounts on an exchange, each raised by the add-on (millionths).
    [[nodiscard]] MarginSums SumMargins(std::int16_t exchangeMask, std::int32_t marginAddOnFactor) const;

    [[nodiscard]] SurvContext& Context() const { return context_; }

 private:
    [[nodiscard]] bool CountsInMargin(const CClientExposure& account) const;
    RuleAnswer StoreRow(std::unique_ptr<CSurvLimitEntry> entry);
    void WorkOutUsedFigures(BKSurveillanceLimitDefTag& row);
    void ComputeGrossFigures(BKSurveillanceLimitDefTag& row) const;

    SurvContext& context_;
    PeriodBook daily_;
    PeriodBook expiry_;
    std::unique_ptr<tagPositionOwnerInfo> ownerInfo_;
};

}  // namespace surv
