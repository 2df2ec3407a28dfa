#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/undo_log.h"
#include "shared/order.h"
#include "shared/settings.h"
#include "surveillance/records.h"

namespace surv {

struct ScripTrial;
struct RuleInput;
enum class RuleSet : std::uint8_t;

// Bits of limitOptions.
inline constexpr std::uint8_t kRetainMultiplier = 1 << 0;  ///< limits stay as defined; 0: multipliers rebuild them
inline constexpr std::uint8_t kCarriedOption = 1 << 1;     ///< taken over by a change, read by nothing
inline constexpr std::uint8_t kPremiumInMargin = 1 << 2;
inline constexpr std::uint8_t kGrossBasis = 1 << 3;  ///< the exposure rules use the grossing figures
inline constexpr std::uint8_t kExposureMarginInLimit = 1 << 4;
inline constexpr std::uint8_t kCollateralInFund = 1 << 5;
inline constexpr std::uint8_t kSaleCreditInFund = 1 << 6;

// Bits of fundFlags that a rebuild of limits reads: the same places.
inline constexpr std::uint8_t kFundFlagCollateral = 1 << 5;
inline constexpr std::uint8_t kFundFlagSaleCredit = 1 << 6;

/// What a row, a store or a level says about an order. Code 0 is a pass.
struct RuleAnswer {
    std::int16_t code = 0;
    std::string text;

    [[nodiscard]] bool Passed() const { return code == 0; }
};

/// What a row judges or takes in: one order with its figures.
struct Judgement {
    const tagOrderInfoForSurv& order;
    const ScripTrial& trial;
    struct Context {
        const Settings& settings;
        CUndoLog& undo;
    };
    const Context& context;
    tagBreachRow* breach = nullptr;  ///< not null: an enquiry; the row stays as it is, and this tells what breaks
};

/// Derives the seven limits that have a multiplier from a fund in paise. A limit that comes out as exactly -1.0 is
/// stored just below it: no limit is never the result of arithmetic.
void RebuildLimits(BKSurveillanceLimitDefTag& row, double fundPaise);

/// A limit that was derived, as it is stored: one of exactly -1.0 just below it.
[[nodiscard]] inline double StoredLimit(double derived) {
    return derived == kNoLimit ? std::nextafter(kNoLimit, -2.0) : derived;
}

/// Forms the seven limits that have a multiplier anew: derive(stored limit, multiplier).
template <class Derive>
void DeriveLimits(BKSurveillanceLimitDefTag& row, Derive derive) {
    row.grossExposureLimit = derive(row.grossExposureLimit, row.grossExposureMultiplier);
    row.netExposureLimit = derive(row.netExposureLimit, row.netExposureMultiplier);
    row.netSaleExposureLimit = derive(row.netSaleExposureLimit, row.netSaleExposureMultiplier);
    row.netPositionLimit = derive(row.netPositionLimit, row.netPositionMultiplier);
    row.mtmLossLimit = derive(row.mtmLossLimit, row.mtmLossMultiplier);
    row.marginLimit = derive(row.marginLimit, row.marginMultiplier);
    row.turnoverLimit = derive(row.turnoverLimit, row.turnoverMultiplier);
}

/// One limit row: the definition and its running account in one record.
///
/// 1. `Row()` is the live record: the library's own copy, or the row that the host handed in at the start.
/// 2. A judgement moves the figures in place, after the row's image went to the log, and puts the row back at once if
///    it refuses. An enquiry works on a copy.
class CSurvLimitEntry {
 public:
    explicit CSurvLimitEntry(const BKSurveillanceLimitDefTag& row)
        : own_(std::make_unique<BKSurveillanceLimitDefTag>(row)), row_(own_.get()) {}
    /// The row stays where it is; whoever adopted it keeps it alive.
    explicit CSurvLimitEntry(BKSurveillanceLimitDefTag* adopted) : row_(adopted) {}

    [[nodiscard]] BKSurveillanceLimitDefTag& Row() { return *row_; }
    [[nodiscard]] const BKSurveillanceLimitDefTag& Row() const { return *row_; }

    // Judging (limits/): each set takes its own rules, in order; the first that breaks answers ------------------
    /// By the trial's set.
    [[nodiscard]] RuleAnswer CheckOrder(const Judgement& judgement);
    [[nodiscard]] RuleAnswer CheckGeneralOrder(const Judgement& judgement);
    /// For an enquiry: every rule is tried, the last that breaks answers.
    [[nodiscard]] RuleAnswer CheckReportOrder(const Judgement& judgement);
    [[nodiscard]] RuleAnswer CheckDeliveryOrder(const Judgement& judgement);
    [[nodiscard]] RuleAnswer CheckMarginPlusOrder(const Judgement& judgement);
    [[nodiscard]] RuleAnswer CheckMtfOrder(const Judgement& judgement);

    // Taking in without judging (limits/) -----------------------------------------------------------------------
    void UpdateOrder(const Judgement& judgement);
    void UpdateGeneralOrder(const Judgement& judgement);
    void UpdateDeliveryOrder(const Judgement& judgement);
    void UpdateMarginPlusOrder(const Judgement& judgement);
    void UpdateMtfOrder(const Judgement& judgement);

    // The fund (limits/funds.cpp) -----------------------------------------------------------------------------
    /// The fund and the limits that are set follow the request; a withdrawal is tested before. `limit`, if given, takes
    /// the row on success.
    std::int16_t AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);
    /// Whether the margin in use leaves free what is withdrawn. The margin limit follows the whole fund of the moment
    /// before anything is compared, and keeps that if too little is free.
    std::int16_t CheckFundWithdrawal(tagRMSFundAllocationRequest& request);

 private:
    /// prepare moves the figures of the row it is given, and gives its traded margin with the order in it, rupees.
    template <class Prepare>
    RuleAnswer Judge(const Judgement& judgement, RuleSet set, Prepare prepare);
    static RuleAnswer Report(const RuleInput& input, const Judgement& judgement);
    void TakeDeliveryFunds(const Judgement& judgement);

    std::unique_ptr<BKSurveillanceLimitDefTag> own_;
    BKSurveillanceLimitDefTag* row_;
};

}  // namespace surv
