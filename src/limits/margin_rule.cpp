#include "limits/margin_rule.h"

#include <algorithm>
#include <cmath>

#include "platform/format.h"
#include "reference/preferences.h"

namespace surv {
namespace {

constexpr double kPaisePerRupee = 100.0;

/// Rupees against the row's limit.
RuleFigures Margin(const RuleInput& in, double used) {
    return {used, in.now.marginLimit / kPaisePerRupee, 0, in.now.marginLimit};
}

double LimitOf(const RuleInput& in) { return in.now.marginLimit / kPaisePerRupee; }

/// Not a number when one of them isn't, so that the comparison refuses it.
double LargestOf(double orderSide, double worst, double traded) {
    const double sum = orderSide + worst + traded;
    return std::isnan(sum) ? sum : std::max(std::max(orderSide, worst), traded);
}

/// What the client's preference lets weigh beside the margin. Rupees.
struct Adjustment {
    double exposureMargin = 0;
    double mtm = 0;  ///< less the part of it that is booked, where both count
    double booked = 0;
    std::uint8_t flags = 0;

    /// A loss raises what is used, a profit lowers it; what isn't a number spoils it wherever it counts.
    [[nodiscard]] double Applied(double used) const {
        used += exposureMargin;
        if ((flags & kMtmProfitCounts) && !(mtm <= 0)) used -= mtm;
        if ((flags & kMtmLossCounts) && !(mtm >= 0)) used -= mtm;
        if ((flags & kBookedProfitCounts) && !(booked <= 0)) used -= booked;
        if ((flags & kBookedLossCounts) && !(booked >= 0)) used -= booked;
        return used;
    }
};

/// Rows whose exposure margin counts in the product sets.
bool IsCombinedSettlement(std::int16_t mask) { return mask == 0x1FF || mask == 0xF || mask == 0x7F; }

Adjustment Adjust(const RuleInput& in) {
    Adjustment adjustment;
    const std::uint8_t flags = in.order.riskPreference.marginFlags;
    const bool general = in.set == RuleSet::kGeneral;
    adjustment.flags = flags;
    adjustment.mtm = in.now.usedMtm / kPaisePerRupee;
    adjustment.booked = in.now.usedBookedPnl / kPaisePerRupee;
    const bool bookedCounts = (flags & (kBookedProfitCounts | kBookedLossCounts)) != 0;
    const bool countedProfit = (flags & kMtmProfitCounts) && adjustment.mtm > 0;
    const bool countedLoss = (flags & kMtmLossCounts) && adjustment.mtm < 0 && adjustment.booked < 0;
    if (countedProfit || (countedLoss && (bookedCounts || !general))) adjustment.mtm -= adjustment.booked;
    const bool exposureRow =
        general ? IsAmong(kWholeTurnoverRows, in.now.limitMask) : IsCombinedSettlement(in.now.limitMask);
    if ((flags & kExposureMarginCounts) && exposureRow) adjustment.exposureMargin = in.now.usedExposureMargin;
    return adjustment;
}

/// The largest view of the row with the order in it.
double UsedInitial(const RuleInput& in) {
    return LargestOf(in.now.usedMarginOrder, in.now.usedMarginMax, in.tradedMargin);
}

/// The largest view of the row before it.
double StoredInitial(const RuleInput& in) {
    return LargestOf(in.stored.usedMarginOrder, in.stored.usedMarginMax, in.stored.usedMarginTraded);
}

/// Derivatives but those of MCX are judged where the level asks for margin; everything else is everywhere.
bool LevelJudgesMargin(const RuleInput& in) {
    switch (static_cast<Segment>(in.order.marketSegment)) {
        case Segment::kNseFutures:
        case Segment::kNseOptions:
        case Segment::kBseFutures:
        case Segment::kBseOptions:
        case Segment::kNcdexFutures: return in.order.levelMarginFlag == 1;
        default: return true;
    }
}

/// Rupees.
double ConversionMarginAt(const RuleInput& in) {
    return IsAmong(kSettlementRows, in.now.limitMask) ? in.trial.conversionMargin : 0.0;
}

bool HoldsExposureMargin(const RuleInput& in) { return (in.now.limitOptions & kExposureMarginInLimit) != 0; }

/// "Set, used (view) and before" of the product sets.
std::string WorstCaseText(const RuleInput& in, const char* form, double used) {
    const double before = in.stored.usedMarginMax + Adjust(in).Applied(0);
    return Format(form, LimitOf(in), used, "M", before);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// The general set

bool MarginApplies(const RuleInput& in) { return IsAmong(kMarginRows, in.now.limitMask) && LevelJudgesMargin(in); }

RuleFigures GeneralMargin(const RuleInput& in) {
    return Margin(in, Adjust(in).Applied(UsedInitial(in)) + ConversionMarginAt(in));
}

/// Conversions to margin are always answered in short.
std::string GeneralMarginText(const RuleInput& in, const char* form) {
    const Adjustment adjustment = Adjust(in);
    const double initial = UsedInitial(in);
    const double used = adjustment.Applied(initial);
    const double initialBefore = in.stored.usedMarginMax;
    const double before = used - initial + initialBefore;
    return Format(form, LimitOf(in), used, "I", before, initial, initialBefore, adjustment.exposureMargin,
                  adjustment.mtm, adjustment.booked);
}

// ---------------------------------------------------------------------------------------------------------------
// The report set

bool InitialMarginApplies(const RuleInput& in) {
    return IsAmong(kMarginRows, in.now.limitMask) && in.order.levelMarginFlag == 1 && !HoldsExposureMargin(in);
}

RuleFigures InitialMargin(const RuleInput& in) { return Margin(in, StoredInitial(in)); }

std::string InitialMarginText(const RuleInput& in, const char* form) {
    const double figure = StoredInitial(in);
    const char* view = "M";
    double before = in.stored.usedMarginMax;
    if (figure == in.stored.usedMarginOrder) {
        view = "O";
        before = figure;
    } else if (figure == in.stored.usedMarginTraded) {
        view = "T";
        before = figure;
    }
    return Format(form, LimitOf(in), figure, view, before);
}

bool SpanMarginApplies(const RuleInput& in) {
    constexpr std::array<std::int16_t, 7> kRows{0xD, 0x61, 0x101, 0x181, 0x1FF, 0xF, 0x7F};
    return IsAmong(kRows, in.now.limitMask) && in.order.levelMarginFlag == 1 && HoldsExposureMargin(in);
}

RuleFigures SpanMargin(const RuleInput& in) { return Margin(in, StoredInitial(in) + in.stored.usedExposureMargin); }

std::string SpanMarginText(const RuleInput& in, const char* form) {
    const double initial = StoredInitial(in);
    const double exposure = in.stored.usedExposureMargin;
    return Format(form, LimitOf(in), initial + exposure, "E", in.stored.usedMarginMax + exposure, initial,
                  in.stored.usedMarginMax, exposure);
}

// ---------------------------------------------------------------------------------------------------------------
// The product sets

RuleFigures DeliveryMargin(const RuleInput& in) {
    const double adjusted = Adjust(in).Applied(0);
    return Margin(in, adjusted + in.trial.positionMargin.worst + in.stored.usedMarginMax + ConversionMarginAt(in));
}

std::string DeliveryMarginText(const RuleInput& in, const char* form) {
    return WorstCaseText(in, form, in.trial.positionMargin.worst + in.stored.usedMarginMax + Adjust(in).Applied(0));
}

RuleFigures MarginPlusMargin(const RuleInput& in) { return Margin(in, UsedInitial(in) + Adjust(in).Applied(0)); }

std::string MarginPlusMarginText(const RuleInput& in, const char* form) {
    return WorstCaseText(in, form, UsedInitial(in) + Adjust(in).Applied(0));
}

RuleFigures MtfMargin(const RuleInput& in) { return Margin(in, Adjust(in).Applied(0) + in.now.usedMarginMax); }

std::string MtfMarginText(const RuleInput& in, const char* form) {
    return WorstCaseText(in, form, in.now.usedMarginMax + Adjust(in).Applied(0));
}

}  // namespace surv
