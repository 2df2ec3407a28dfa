#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "categories/aggregate.h"
#include "categories/client_book.h"
#include "categories/holdings.h"
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

/// Both periods, in the order in which an order is tried and its rows are asked.
inline constexpr std::array kPeriods{Period::kDaily, Period::kExpiry};
/// Those in which an order is tried.
[[nodiscard]] inline std::span<const Period> PeriodsOf(const tagOrderInfoForSurv& order) {
    return std::span{kPeriods}.subspan(order.HasDailySide() ? 0 : 1);
}
/// Where a period stands in arrays by period.
[[nodiscard]] constexpr std::size_t PeriodIndex(Period period) { return period == Period::kDaily ? 0 : 1; }

/// An order's own account in each period; null where it has none.
using PeriodAccounts = std::array<CClientExposure*, kPeriods.size()>;

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
    /// The row over all exchanges and securities carries the fund (limits/funds.cpp).
    std::int16_t RMSFundAllocation(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);
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
    /// The owner record of all the category's positions; made from the first order or row.
    tagPositionOwnerInfo* OwnerOf(const tagOrderInfoForSurv& order);

    // Position rows (position_rows.cpp) -----------------------------------------------------------------------
    /// A row of the start-up load enters the sets of its mask's period; `order` has its scrip and takes its holder.
    /// Rows of the daily period come before the expiry row of the same option. -1: the mask is 0. A row that memory
    /// runs out for leaves nothing behind.
    std::int16_t AddPositionRow(BKExposureTag& row, tagOrderInfoForSurv& order);
    /// The same for a row of the MTF product.
    std::int16_t AddMtfPositionRow(BKExposureTag& row, tagOrderInfoForSurv& order);

    // Depository (holdings.cpp) -------------------------------------------------------------------------------
    Holdings holdingsByIsin{17};
    double collateralTotal = 0;  ///< paise; sum of the holdings' collateral value
    double saleCreditTotal = 0;  ///< paise; sum of the holdings' sale credit

    /// Makes room for the holding of an ISIN, so that a row which fills it needs no memory.
    void ReserveHolding(std::string_view isinCode);
    /// Shares of the start join a holding: its blocked quantities start at 0 again, price and haircut are the row's.
    void AddDPInfo(const tagDPHolding& row);
    /// Shares on the sale-against-receipt account; collateral stays as it is.
    void AddSARInfo(const tagSarRow& row);
    /// Shares of the day join a holding; nothing is unblocked.
    void UpdateDPInfo(const tagDPUpload& upload);
    /// Appends the holding of an ISIN ("ALL": every one) as a new row that the list's owner frees.
    void GetDPInfo(std::string_view isinCode, CPtrList& list) const;
    /// "ALL" forms every holding's worth and the totals anew. In any case the rows across all securities of the
    /// settlement and expiry masks take the totals; no limit is derived from them here.
    void RecomputeCollateral(std::string_view isinCode);

    // Positions by client (client_records.cpp) ----------------------------------------------------------------
    /// Null until the first row or order is recorded.
    [[nodiscard]] const CClientBook* FindClientBook() const { return clientBook_.get(); }
    /// Made at need.
    CClientBook& ClientBook();
    /// The order's aggregate account, or where the level has none its own ones, take it in the positions by client and
    /// join their lists. Nothing happens where positions by client aren't held. Only for an order that stands: the call
    /// is put back by the log alone. REQUIRES: the accounts hold the order.
    void RecordOrder(const tagOrderInfoForSurv& order, const PeriodAccounts& accounts);
    /// The total of a single-segment mask takes the order, where positions by client are held.
    void MoveTotal(const tagOrderInfoForSurv& order, std::int16_t mask);
    /// The account of an order with the codes of an aggregate account; made at need.
    CClientExposure& AggregateAccount(const tagOrderInfoForSurv& order, Period period);

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
    /// The accounts that the order's risk parameters have to go into. Null: the category has never seen the contract or
    /// its market.
    [[nodiscard]] const std::vector<ContractHolder>* FindHolders(const tagOrderInfoForSurv& order) const;
    /// The account is part of the category's margin: it aggregates no others, and isn't kept apart at this level.
    [[nodiscard]] bool CountsInMargin(const CClientExposure& account) const;
    /// The figures of all accounts on an exchange, each raised by the add-on (millionths).
    [[nodiscard]] MarginSums SumMargins(std::int16_t exchangeMask, std::int32_t marginAddOnFactor) const;

    [[nodiscard]] SurvContext& Context() const { return context_; }

 private:
    std::int16_t EnterRow(BKExposureTag& row, tagOrderInfoForSurv& order, ProductGroup group);
    void RunAggregate(tagOrderInfoForSurv order, AggregateForm form, const TreeContext& context);
    void RecordClient(const tagOrderInfoForSurv& order, Period period, CClientExposure& account,
                      const TreeContext& context);
    RuleAnswer StoreRow(std::unique_ptr<CSurvLimitEntry> entry);
    void WorkOutUsedFigures(BKSurveillanceLimitDefTag& row);
    void ComputeGrossFigures(BKSurveillanceLimitDefTag& row) const;

    SurvContext& context_;
    PeriodBook daily_;
    PeriodBook expiry_;
    std::unique_ptr<tagPositionOwnerInfo> ownerInfo_;
    std::unique_ptr<CClientBook> clientBook_;
};

}  // namespace surv
