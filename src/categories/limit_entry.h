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

/// What a judgement needs beside the order and its figures.
struct RuleContext {
    const Settings& settings;
    CUndoLog& undo;
};

/// Derives the seven limits that have a multiplier from a fund in paise. A limit that comes out as exactly -1.0 is
/// stored just below it: no limit is never the result of arithmetic.
void RebuildLimits(BKSurveillanceLimitDefTag& row, double fundPaise);

/// A limit that was derived, as it is stored: one of exactly -1.0 just below it.
[[nodiscard]] inline double StoredLimit(double derived) {
    return derived == kNoLimit ? std::nextafter(kNoLimit, -2.0) : derived;
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

    // Judging (limits/) ---------------------------------------------------------------------------------------
    /// Every order that no product set takes: all rules in order, the first that breaks answers.
    [[nodiscard]] RuleAnswer CheckGeneralOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial,
                                               const RuleContext& context);
    /// The same for an enquiry: every rule is tried, `breach` tells all that break, the row stays as it is.
    [[nodiscard]] RuleAnswer CheckReportOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial,
                                              const RuleContext& context, tagBreachRow& breach) const;

    // Taking in without judging (limits/) -----------------------------------------------------------------------
    void UpdateGeneralOrder(const tagOrderInfoForSurv& order, const ScripTrial& trial, const RuleContext& context);

    // The fund (limits/funds.cpp) -----------------------------------------------------------------------------
    /// The fund and the limits that are set follow the request; a withdrawal is tested before. `limit`, if given, takes
    /// the row on success.
    std::int16_t AllocateFund(tagRMSFundAllocationRequest& request, BKSurveillanceLimitDefTag* limit);
    /// Whether the margin in use leaves free what is withdrawn. The margin limit follows the whole fund of the moment
    /// before anything is compared, and keeps that if too little is free.
    std::int16_t CheckFundWithdrawal(tagRMSFundAllocationRequest& request);

 private:
    std::unique_ptr<BKSurveillanceLimitDefTag> own_;
    BKSurveillanceLimitDefTag* row_;
};

}  // namespace surv
