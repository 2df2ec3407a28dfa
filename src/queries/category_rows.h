#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "categories/category.h"
#include "queries/code_argument.h"
#include "queries/product_forms.h"
#include "surveillance/containers.h"

namespace surv {

// Levels at which a category sums over the accounts of a holder, and that of a family.
inline constexpr std::int16_t kGroupPlace = 6;
inline constexpr std::int16_t kDealerPlace = 7;
inline constexpr std::int16_t kFamilyPlace = 8;

/// Builds the rows of net position queries about one category: one product, one single-segment mask. Each row is a new
/// BKExposureTag, which belongs to the list's owner; its limitMask is the mask of the query.
///
/// Accounts. At levels that sum over a holder's accounts, what the caller asks for under the plain code stands under
/// the six form (six characters and a '+') or the ten form. Which one is shown there depends on the level and on the
/// level types of the account. "ALL" stands for every account.
class CCategoryRows {
 public:
    /// code: under which the caller knows the category; the root's is "-". What is given by reference outlives the
    /// builder.
    CCategoryRows(const CSurveillanceCategory& category, std::string_view code, const ProductForm& form,
                  std::int16_t mask, CPtrList& list);

    /// The total over all scrips, if anything was traded.
    void AddTotalRow() const;
    /// Totals of one account or of all.
    void AddAccountTotalRows(HolderCodes& codes) const;
    /// The same for the own account, which the root keeps under a '+'.
    void AddOwnAccountTotalRows(HolderCodes& codes) const;
    /// Both for each account that holds a token; the group of each is written into the caller's buffer.
    void AddHolderTotalRows(HolderCodes& codes, std::int32_t token) const;
    void AddHolderOwnTotalRows(HolderCodes& codes, std::int32_t token) const;
    /// Positions by scrip of one account or of all.
    void AddAccountScripRows(HolderCodes& codes, std::int32_t token) const;
    /// Netted positions by scrip; filter: "ALL", or the account that the category's positions were first held by.
    void AddCategoryScripRows(std::string_view filter, std::int32_t token) const;
    /// Who holds a token.
    void AddTokenHolderRows(HolderCodes& codes, std::int32_t token) const;

    /// Anybody holds the token, or has ordered it.
    [[nodiscard]] bool HoldsToken(std::int32_t token) const { return FindHolders(FamilyKey(token)) != nullptr; }

 private:
    using Holders = CClientPositions::Holders;
    /// What a position must have to be shown.
    enum class Shown : std::uint8_t { kAlways, kTraded, kTradedOrOrdered };

    [[nodiscard]] const CClientBook::Side* Side() const;
    [[nodiscard]] PositionKey FamilyKey(std::int32_t token) const { return {exchangeMask_, form_.family, token}; }
    [[nodiscard]] const Holders* FindHolders(const PositionKey& key) const;
    [[nodiscard]] CClientExposure* FindAccount(std::string_view group, std::string_view account) const;
    [[nodiscard]] bool SumsByDealer() const;
    /// Trim the codes in the caller's buffers, the account's or both. False: the account's is longer than any.
    [[nodiscard]] static bool TrimAccount(HolderCodes& codes);
    [[nodiscard]] static bool TrimCodes(HolderCodes& codes);

    // The account that a plain code stands for (account_totals.cpp); null: none is shown.
    [[nodiscard]] CClientExposure* FindTotalled(std::string_view group, std::string_view account) const;
    [[nodiscard]] CClientExposure* FindOwn(std::string_view group, std::string_view account) const;
    using Finder = CClientExposure* (CCategoryRows::*)(std::string_view, std::string_view) const;
    void AddHolderTotals(HolderCodes& codes, std::int32_t token, Finder find) const;
    void AddAllAccountTotals() const;
    void AddAccountTotal(const CClientExposure* account, Shown shown) const;

    // Rows by scrip (scrip_rows.cpp)
    [[nodiscard]] bool IsWalked(const PositionKey& key) const;
    [[nodiscard]] bool IsNettedWalked(const PositionKey& key) const;
    [[nodiscard]] bool IsHolderWalked(const PositionKey& key) const;
    [[nodiscard]] std::optional<FixedText<16>> ScripRowsForm(std::string_view group, std::string_view account) const;
    [[nodiscard]] bool IsPassedOver(std::string_view account, const tagPositionOwnerInfo* owner) const;
    void AddPositionRows(std::string_view group, std::string_view account, std::int32_t token) const;
    void AddAllPositionRows(std::int32_t token) const;
    void AddHeldPosition(const PositionKey& key, const AccountKey& account, std::string_view code) const;
    void AddScripRow(CSurvPosition& position, Shown shown, std::string_view account = {}) const;
    void AddNettedRow(CSurvPosition& position, const CSurvPosition* clientLevel, std::string_view filter) const;

    [[nodiscard]] bool IsShown(const tagSurvPositionData& data, Shown shown) const;
    [[nodiscard]] bool MeetsSegment(const tagSurvPositionData& data) const;
    [[nodiscard]] std::unique_ptr<BKExposureTag> RowOf(const tagSurvPositionData& data) const;

    const CSurveillanceCategory& category_;
    bool isRoot_;
    const ProductForm& form_;
    std::int16_t mask_;
    CPtrList& list_;
    const Settings& settings_;
    Period period_;
    std::int16_t marketSegment_;
    std::int16_t exchangeMask_;
    LotWeighting lotWeighting_;
    LevelPlace place_;
};

}  // namespace surv
