#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "categories/category.h"
#include "categories/groupings.h"
#include "limits/level_trial.h"
#include "mtm/broadcast_scrip.h"
#include "reference/context.h"
#include "surveillance/containers.h"
#include "surveillance/records.h"

namespace surv {

class CHierarchy;
struct NetPositionQuery;

/// The five lists of a start.
struct LoadLists {
    CPtrList* limits = nullptr;
    CPtrList* exposures = nullptr;
    CPtrList* securities = nullptr;
    CPtrList* dpHoldings = nullptr;
    CPtrList* sarHoldings = nullptr;
};

/// The one top-level object. It owns the categories and the indexes into them; each group of its operations is
/// defined in the folder of its subsystem.
class CSurveillanceManager {
 public:
    explicit CSurveillanceManager(SurvContext& context) : context_(context) {}
    CSurveillanceManager(const CSurveillanceManager&) = delete;
    CSurveillanceManager& operator=(const CSurveillanceManager&) = delete;

    // Life (service/load.cpp) -----------------------------------------------------------------------------------
    /// Turns the host's rows into categories. -1: the load stopped at a row, told in the log; what was built stays.
    std::int16_t Initialize(const LoadLists& lists);

    // Limits (categories/limit_service.cpp) -----------------------------------------------------------------------
    std::int16_t AddSurvLimits(BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error);
    std::int16_t UpdateSurvLimits(BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error);
    std::int16_t RemoveSurvLimits(const BKSurveillanceLimitDefTag& limit, tagAdminErrMessage* error);
    std::int16_t GetSurveillancePositions(BKSurveillanceLimitDefTag& limit) const;
    std::int16_t GetSurvPositions(std::string_view entityCode, std::int16_t limitMask, std::int32_t token,
                                  BKSurveillanceLimitDefTag*& limit);

    // Funds (limits/funds.cpp) -----------------------------------------------------------------------------------
    /// Moves the fund of an entity and derives its limits anew; the request takes the answer, and `limit`, if given,
    /// the row on success. A withdrawal that the margin in use doesn't allow is refused.
    std::int16_t RMSFundAllocation(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);

    // Orders (orderpath/) -----------------------------------------------------------------------------------------
    std::int16_t CheckSurveillance(tagSurveillanceInfo& request, tagOrdErrMessage& error, short& status,
                                   const CheckLists& lists, bool probe);
    /// Takes an event in at every level. error and limitRows may be null.
    std::int16_t UpdateSurveillance(tagSurveillanceInfo& request, tagAdminErrMessage* error, CPtrList* limitRows,
                                    bool dealerOnly);
    /// Takes what a conversion has put into its target product out of the source. `order` is the conversion with its
    /// quantity and price. The caller holds the trial scope. -1: a category of the hierarchy is missing.
    std::int16_t ConversionUpdateSurveillance(const tagSurveillanceInfo& request, tagOrderInfoForSurv order,
                                              CPtrList* limitRows);

    // Preferences (service/preference_links.cpp) -----------------------------------------------------------------
    void SetDefaultRiskPreference();
    /// Connects a category with the preference maps of its code and of its family.
    void LinkPreferences(CSurveillanceCategory& category, const CodeText& code) const;
    /// The same for the category of a code, if there is one.
    void AddClientRiskPreference(const CodeText& code);
    /// The record of an exchange at a category: its own, else everybody's; null when neither has one.
    [[nodiscard]] const tagClientRiskPreferenceInfoForSurv* FindOwnPreference(const CSurveillanceCategory& category,
                                                                              std::int32_t exchange) const;

    /// The family's record of the exchange where families count, else the own one, else everybody's; zero without one.
    [[nodiscard]] RiskPreference EffectivePreference(const CSurveillanceCategory& category,
                                                     std::int16_t exchangeMask) const;

    // Margin of cash positions (margin/cash_margin.cpp) ------------------------------------------------------------
    /// Adds the margin of every category's positions on an exchange (1, else BSE cash) to the category's figures, and
    /// those to its rows. Clears nothing: for the start, once.
    void RecomputeCashMargin(std::int16_t exchangeMask);
    /// Moves a category ("ALL": every one) from its old preference of exchange 1 or 8 to the new one; any other
    /// exchange does nothing. -1: no such category.
    std::int16_t RecomputeCashVaRMargin(std::int32_t exchange, std::string_view categoryCode,
                                        const tagClientRiskPreferenceInfoForSurv& newPreference,
                                        const tagClientRiskPreferenceInfoForSurv& oldPreference);

    // Margin of derivatives (margin/recompute.cpp) -----------------------------------------------------------------
    /// Re-margins every position in a contract and writes the limit rows. -1 for a null pointer.
    std::int16_t RecomputeIM(const CRPFUnderlyingWiseInfo* underlying, const CRPFContractWiseInfo* contract);
    /// The same for every contract of the live table, with rpfMarginMode 1.
    void RecomputeAllIM();
    /// The same for a category ("ALL": every one) and exchange 2 or 0x40; any other does nothing. -1: no such category.
    std::int16_t RecomputeMargin(std::int32_t exchange, std::string_view categoryCode);
    /// Writes the derivative margins of a category into its limit rows; recomputes nothing.
    void RepublishMargin(CSurveillanceCategory& category) const;

    // Margin of MCX (margin/commodity_margin.cpp) ------------------------------------------------------------------
    /// Margins the MCX positions of every category anew and writes the limit rows.
    void RecomputeMCXIM();
    /// The same for a category ("ALL": every one) and exchange 0x10; any other does nothing. -1: no such category.
    std::int16_t RecomputeMCXMargin(std::int32_t exchange, std::string_view categoryCode);
    /// Writes a category's MCX margin into its row of MCX alone; recomputes nothing.
    void RepublishCommodityMargin(CSurveillanceCategory& category) const;

    // Depository (categories/depository.cpp) -------------------------------------------------------------------------
    /// The holdings of a start; rows of unknown entities are passed over. The lists and their rows stay the host's.
    /// -1: memory ran out, no holding has changed.
    std::int16_t InitializeDPPositionInfo(const CPtrList* securities, const CPtrList* holdings,
                                          const CPtrList* sarHoldings);
    /// An upload for an unknown entity does nothing.
    std::int16_t UpdateDPPositionInfo(const tagDPUpload& upload);
    /// kind 0: every category; 1: the one of the code, -1 when it isn't there; any other does nothing. A null list
    /// takes nothing.
    std::int16_t GetDPPositionInfoFromDll(int kind, std::string_view categoryCode, std::string_view isinCode,
                                          CPtrList* result) const;
    /// The same kinds. See CSurveillanceCategory::RecomputeCollateral.
    std::int16_t CollateralRecompute(int kind, std::string_view categoryCode, std::string_view isinCode);

    // Mark to market (mtm/mtm_pass.cpp) ----------------------------------------------------------------------------
    // A row that a pass moves goes to changedRows, once a scrip: the live row in positionMode 2 and 3, else a copy that
    // the host frees. A null list gets nothing.
    /// Takes a touchline, and marks the scrip when that is due and wanted.
    enum class Marking : std::uint8_t { kWanted, kUnwanted };
    void AddAndComputeMTM(const tagBcastMBOOrMBPTouchline& touchline, Marking marking, CPtrList* changedRows);
    /// Marks every scrip, whatever its ticks.
    void RecomputeMTM(CPtrList* changedRows);
    /// The same, told in a log file of its own.
    void RecomputeMTMWithLogging(CPtrList* changedRows);
    /// In positionMode 1: clears the MTM of every limit row and lays it in anew.
    void RecomputeMTMOnline();
    /// The category is marked by the scrip of the key, if there is one.
    void AddToBroadcastUpdateHash(std::int64_t key, CSurveillanceCategory* category);

    // Queries (queries/) --------------------------------------------------------------------------------------------
    /// One screen of net positions (queries/net_position.cpp); the rows are new. -1: no such category.
    std::int16_t GetNetPositionInfoFromDll(NetPositionQuery query, CPtrList& result) const;
    /// The limit rows of a mask at a category ("ALL": every one), with the option bits of the preference in force,
    /// which live rows keep. -1: no such category. A null list takes nothing.
    std::int16_t GetMarketExposure(std::string_view code, std::int16_t periodicity, CPtrList* result) const;
    /// 1: the account has a position open at the category; 0: it hasn't; -1: no such category. What is bought and sold
    /// alike isn't open, nor is a series that is always delivered.
    [[nodiscard]] std::int16_t GetClientPositionPresentFromDLL(std::string_view categoryCode,
                                                               std::string_view groupCode,
                                                               std::string_view accountCode) const;
    // A null list takes nothing. Limit rows are those of the store: live ones in positionMode 2 and 3, else new copies;
    // position rows are always new.
    /// Everything: per category its limit rows, every contract of its accounts and, in positionMode 1, its equity
    /// positions in deliveries and two-leg orders, by product.
    void GetAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) const;
    /// Per category its limit rows and, in positionMode 1, its netted positions of the expiry period.
    void CaptureAllSurveillancePositions(CPtrList* limitRows, CPtrList* positionRows) const;
    /// The limit rows of one category.
    void DownloadSurvInfo(std::string_view code, CPtrList* limitRows) const;

    [[nodiscard]] CSurveillanceCategory* FindCategory(const CodeText& code) const { return categories.Find(code); }
    /// The category of a code as a host writes it: what is longer than a code names none.
    [[nodiscard]] CSurveillanceCategory* FindNamed(std::string_view code) const {
        return code.size() <= sizeof(BKSurveillanceLimitDefTag::entityCode) ? FindCategory(code) : nullptr;
    }
    /// Hands the category of a code to `work`, or each one for "ALL". -1: no such category.
    template <class Work>
    std::int16_t ForCategories(std::string_view code, Work work) const {
        if (code == "ALL") {
            for (const auto& category : categories) work(*category.value);
            return kDone;
        }
        CSurveillanceCategory* category = FindNamed(code);
        if (!category) return kNotDone;
        work(*category);
        return kDone;
    }

    HashMap<CodeText, CSurveillanceCategory> categories{1013};
    CCategoriesByPeriod categoriesByPeriod;
    HashMap<std::int64_t, CBroadcastScrip> broadcastHash{557};  ///< by exchange mask * 10000000 + token
    /// Categories that a derivative contract reaches, by SegmentTokenKey of exchange mask and token.
    HashMap<std::int64_t, CTokenCategories> rpfCategoriesByToken{557};
    const PreferenceMap* defaultRiskPreference = nullptr;  ///< everybody's preferences; null: none given

    [[nodiscard]] SurvContext& Context() const { return context_; }
    [[nodiscard]] TrialBuffers& Buffers() { return buffers_; }

 private:
    /// The category of the house's own account, for its orders and where positions by client are held; else null.
    [[nodiscard]] CSurveillanceCategory* FindOwnAccount(const tagOrderInfoForSurv& order) const;
    void RegisterTrade(const tagOrderInfoForSurv& order, const CHierarchy& hierarchy,
                       CSurveillanceCategory* ownAccount);
    /// The end of a start: the MTM of the positions goes into the rows.
    void LayInOpeningMtm();
    void RecomputeScrip(CBroadcastScrip& scrip, CPtrList* changedRows);
    void RecomputeSegmentMargin(CSurveillanceCategory& category, std::int16_t exchangeMask);
    enum class RowOwner : std::uint8_t { kCopied, kAdopted };
    std::int16_t LoadLimit(BKSurveillanceLimitDefTag& row, RowOwner owner);
    std::int16_t LoadExposure(BKExposureTag& row, RowOwner owner);
    std::int16_t EnterExposure(BKExposureTag& row);
    void LinkHolder(const BKExposureTag& row, const CodeText& level);
    void RegisterRow(const BKExposureTag& row, CSurveillanceCategory& category);
    /// Enters a new category, and files it by the levels of its first row where categories are filed.
    void StoreCategory(const CodeText& code, std::unique_ptr<CSurveillanceCategory> category, std::int16_t entityLevel,
                       std::int16_t subLevel);
    /// Sets exposureMarginInLimit of a row from the preference of its entity.
    void TakeExposureMarginBit(BKSurveillanceLimitDefTag& row, const CSurveillanceCategory& category) const;

    SurvContext& context_;
    TrialBuffers buffers_;
    /// Rows of the start that live on: limit entries work on theirs.
    std::unordered_map<const void*, std::unique_ptr<BKSurveillanceLimitDefTag>> adoptedRows_;
    std::unordered_map<const void*, std::unique_ptr<BKExposureTag>> adoptedExposures_;
};

}  // namespace surv
