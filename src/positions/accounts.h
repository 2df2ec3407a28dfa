#pragma once

// The per-account view of a category for one period: account, underlying, expiry, scrip. An order touches one path
// of the tree. During a trial every node on the path lays its plain figures into the undo log before it changes.

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "margin/margin_records.h"
#include "platform/fixed_text.h"
#include "platform/hash_map.h"
#include "platform/undo_log.h"
#include "positions/position.h"
#include "positions/position_key.h"
#include "shared/settings.h"
#include "surveillance/containers.h"

namespace surv {

/// "group|account": at most 5 characters of the group code (an empty one is 5 blanks) and 15 of the account code.
using AccountKey = FixedText<24>;
[[nodiscard]] AccountKey MakeAccountKey(std::string_view groupCode, std::string_view accountCode);
[[nodiscard]] inline AccountKey MakeAccountKey(const tagOrderInfoForSurv& order) {
    return MakeAccountKey(order.parentCode.View(), order.accountCode.View());
}

/// The '+' of a code that aggregates a dealer's or a group's holders stands behind its 6 or 10 characters.
[[nodiscard]] bool IsAggregateCode(std::string_view accountCode);

/// An underlying has up to two nodes in an account: the far months, and the contracts about to expire.
struct UnderlyingKey {
    std::int16_t keySegment = 0;
    std::int32_t underlyingToken = 0;

    friend bool operator==(const UnderlyingKey&, const UnderlyingKey&) = default;
    [[nodiscard]] std::uint64_t Hash() const { return KeyHash<std::int64_t>{}(PlainKey(keySegment, underlyingToken)); }
};
[[nodiscard]] UnderlyingKey MakeUnderlyingKey(std::int16_t exchangeMask, std::int32_t underlyingToken,
                                              std::int32_t expiryDate, std::int16_t caLevel,
                                              std::int32_t tradingDayBase);

/// What a change of the tree needs from outside: the settings and, on a trial, the log that takes the images.
struct TreeContext {
    const Settings& settings;
    CUndoLog* undo = nullptr;  ///< null: the change is for good

    template <class Figures>
    void Save(Figures& figures) const {
        if (undo) undo->Save(figures);
    }
};

/// One contract of one account.
class CScripExposure {
 public:
    CSurvPosition position;                       ///< what the period's row said, and every order since
    CSurvPosition dayPosition;                    ///< today's activity alone
    std::unique_ptr<tagScripMargin> scripMargin;  ///< made at first need
    bool indexed = false;                         ///< stands among the holders of its set

    /// Takes the old quantity and price out of both positions and puts the new ones in.
    void ApplyOrder(const tagOrderInfoForSurv& order, const TreeContext& context);
    /// Takes today's part from the position of the daily period. It replaces what an earlier row brought: that was part
    /// of the same position.
    void SetDayData(const tagSurvPositionData& daily, const TreeContext& context);
    /// Forms what an MCX position from rows is margined at by its own rate, percent of value, and its spread position.
    void LoadMargin(double ratePercent, const TreeContext& context);
    /// A node that a refused trial has made holds nothing and is shown nowhere.
    [[nodiscard]] bool IsBlank() const { return position.data.scripInfo == nullptr; }
};

class CExpiryExposure {
 public:
    HashMap<PositionKey, CScripExposure> scrips{31};
    std::unique_ptr<tagExpiryMargin> expiryMargin;  ///< made at first need
};

class CUnderlyingExposure {
 public:
    HashMap<std::int32_t, CExpiryExposure> expiries{17};    ///< by expiryDate
    std::unique_ptr<tagUnderlyingMargin> underlyingMargin;  ///< made at first need
};

/// MTM sums of an account over one market segment, paise.
struct SegmentFigures {
    double lossSum = 0;  ///< absolute values of the losses
    double profitSum = 0;
    double openValueSum = 0;

    /// Takes an MTM into its side; sign -1 takes it out.
    void AddMtm(double mtm, double sign) {
        if (mtm >= 0) {
            profitSum += sign * mtm;
        } else {
            lossSum -= sign * mtm;
        }
    }
};

/// The product groups over which an account keeps a running position per market segment.
enum class ProductGroup : std::uint8_t { kNormal, kDelivery, kMarginPlus, kMtf };
inline constexpr std::size_t kProductGroupCount = 4;
[[nodiscard]] ProductGroup ProductGroupOf(std::int16_t productType);

/// The nodes of one contract in an account.
struct ScripPath {
    CUnderlyingExposure* underlying = nullptr;
    CExpiryExposure* expiry = nullptr;
    CScripExposure* scrip = nullptr;
};

/// The level types of the last order or row that reached an account; -1 at first.
struct AccountLevelTypes {
    std::int16_t client = -1;
    std::int16_t group = -1;
    std::int16_t subClient = -1;
};

/// One account.
class CClientExposure {
 public:
    HashMap<UnderlyingKey, CUnderlyingExposure> underlyings{31};
    std::unique_ptr<tagPositionOwnerInfo> ownerInfo;            ///< made from the first order or row
    std::unique_ptr<tagClientMarginTotals> clientMarginTotals;  ///< made at first need
    AccountLevelTypes levelTypes;
    bool aggregate = false;  ///< a '+' account: left out of every sum over accounts, and without margin of its own
    /// The account lists of its period that it stands in, one bit per ProductGroup: in the daily period onDailyList and
    /// onMtfDailyList, in the expiry period onNormalList, onDeliveryList, onMarginPlusList, onMtfList.
    std::uint8_t listed = 0;

    /// The nodes of the order's contract; missing ones are made.
    ScripPath FindOrMakePath(const tagOrderInfoForSurv& order, const Settings& settings);
    /// Runs an order, its old and new quantity, down its path, and the margin back up. The positions get this account's
    /// owner record; the order has its own back afterwards. Gives the margins of the order's exchange as they stood
    /// before the order, with the figures of its contract fresh.
    MarginReading ApplyOrder(tagOrderInfoForSurv& order, const ScripPath& path, const TreeContext& context);
    /// A position row: its contract, the running position of its segment and the segment's MTM sums take its figures.
    /// The positions get this account's owner record. Margin figures stay: a contract enters the sums when it is
    /// margined.
    ScripPath AddRow(tagSurvPositionData row, const tagOrderInfoForSurv& order, const TreeContext& context);
    /// A new price of a scrip of which the account holds `position`: moves the MTM sums of the segment, and the price
    /// of the contract.
    void ApplyPrice(const tagOrderInfoForSurv& order, const CSurvPosition& position, const Settings& settings);
    /// Re-margins a contract with what the order carries: risk parameters, which MCX has none of, rates, preference.
    /// The order names the contract; positions stay as they are.
    void ReplaceParameters(const tagOrderInfoForSurv& order, const ScripPath& path, const Settings& settings);

    // Margin on an exchange, rupees; option values paise. Never below 0 but for the option values. side: 1 order, 2
    // traded.
    [[nodiscard]] double GetMargin(int side, std::int16_t exchangeMask) const;
    [[nodiscard]] double GetWorstMargin(std::int16_t exchangeMask) const { return ReadMargins(exchangeMask).worst; }
    [[nodiscard]] double GetExposureMargin(std::int16_t exchangeMask) const {
        return ReadMargins(exchangeMask).exposure;
    }
    [[nodiscard]] double GetOptionValue(int side, std::int16_t exchangeMask) const;
    [[nodiscard]] double GetWorstOptionValue(std::int16_t exchangeMask) const {
        return ReadMargins(exchangeMask).optionWorst;
    }
    /// All of them at once.
    [[nodiscard]] MarginReading ReadMargins(std::int16_t exchangeMask) const;

    /// The contract of the order; null when the account hasn't got it.
    [[nodiscard]] CScripExposure* FindScrip(const tagOrderInfoForSurv& order, const Settings& settings) const;
    /// The first contract under the key that holds anything, over all underlyings and expiries; null when there is
    /// none.
    [[nodiscard]] CScripExposure* FindScripByKey(const PositionKey& key) const;
    /// The contracts whose mask lies within `mask`. Only the token of all securities collects anything.
    void CollectPositions(std::int16_t mask, std::int32_t token, std::vector<const CSurvPosition*>& list) const;
    /// The same as new BKExposureTag rows, which are the list owner's.
    void CollectRows(std::int16_t mask, std::int32_t token, CPtrList& list) const;
    /// Every contract, in insertion order.
    template <class Visit>
    void ForEachScrip(Visit visit) const {
        for (const auto& underlying : underlyings) {
            for (const auto& expiry : underlying.value->expiries) {
                for (const auto& scrip : expiry.value->scrips) visit(*scrip.value);
            }
        }
    }

    /// Null until the segment has figures.
    [[nodiscard]] const SegmentFigures* FindSegmentFigures(std::int16_t marketSegment) const;
    [[nodiscard]] const CSurvPosition* FindSegmentPosition(std::int16_t marketSegment, ProductGroup group) const;

 private:
    using SegmentPositions = std::array<std::unique_ptr<CSurvPosition>, kSegmentCount>;

    tagPositionOwnerInfo* OwnerOf(const tagOrderInfoForSurv& order);
    /// REQUIRES: the segment is one of the eight.
    CSurvPosition& SegmentPosition(std::int16_t marketSegment, ProductGroup group);
    SegmentFigures& FiguresOf(std::int16_t marketSegment);
    void MovePositions(tagOrderInfoForSurv& order, const ScripPath& path, const TreeContext& context);
    void AddSegmentRow(const tagSurvPositionData& row, const tagOrderInfoForSurv& order, const TreeContext& context);
    void MoveSegmentPosition(const tagOrderInfoForSurv& order, const TreeContext& context);
    void MoveSegmentMtm(const tagOrderInfoForSurv& order, CSurvPosition oldPosition, CSurvPosition newPosition,
                        const TreeContext& context);

    std::unique_ptr<std::array<SegmentFigures, kSegmentCount>> segmentFigures_;           // made at need
    std::array<std::unique_ptr<SegmentPositions>, kProductGroupCount> segmentPositions_;  // made at need
};

/// An account that has a contract, and where: the nodes, and the keys that they stand under.
struct ContractHolder {
    CClientExposure* account;
    ScripPath path;
    std::int32_t underlyingToken;
    std::int32_t expiryDate;

    /// Parameters go to the contract of their own underlying and expiry alone, whatever else goes by its token.
    [[nodiscard]] bool Holds(const tagOrderInfoForSurv& order) const {
        return !path.scrip->IsBlank() && underlyingToken == order.underlyingToken &&
               expiryDate == order.contract.expiryDate;
    }
};

/// The accounts of a category for one period.
class CAccountExposureSet {
 public:
    HashMap<AccountKey, CClientExposure> accounts{53};
    /// The accounts that have a plain derivative contract, by SegmentTokenKey of exchange mask and token, so that new
    /// parameters reach them without a search.
    HashMap<std::int64_t, std::vector<ContractHolder>> holders;

    /// Enters the order's contract among the holders, once. REQUIRES: the account is in this set.
    void EnterHolder(const tagOrderInfoForSurv& order, CClientExposure& account, const ScripPath& path);

    [[nodiscard]] CClientExposure* FindAccount(const tagOrderInfoForSurv& order) const {
        return accounts.Find(MakeAccountKey(order));
    }
    [[nodiscard]] CClientExposure* FindAccount(std::string_view groupCode, std::string_view accountCode) const {
        return accounts.Find(MakeAccountKey(groupCode, accountCode));
    }
    /// Stores a new account. REQUIRES: the key isn't there. If memory runs out the account stays with the caller.
    CClientExposure& SetClient(const AccountKey& key, std::unique_ptr<CClientExposure>&& account) {
        return accounts.Insert(key, std::move(account));
    }
};

}  // namespace surv
