#pragma once

// The margin figures that hang on the nodes of an account's tree. All are plain data: a trial keeps their images.
// Figures come in the four views of a position at once, because an open order may or may not fill.

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstddef>
#include <cstdint>

#include "surveillance/records.h"

namespace surv {

/// One of something for each view: order side, traded side, worst case long, worst case short.
inline constexpr std::size_t kViewCount = 4;
template <class Figure>
using PerView = std::array<Figure, kViewCount>;
inline constexpr std::size_t kOrderView = 0;
inline constexpr std::size_t kTradedView = 1;
inline constexpr std::size_t kWorstView = 2;  ///< results of the worst case stand here

inline constexpr std::size_t kScenarioCount = 16;

/// Figures of one view of a contract.
struct ScripBlock {
    std::int64_t riskQuantity = 0;  ///< net quantity that the scenarios are formed from
    double spreadPosition = 0;      ///< what counts for the calendar spread
    std::int64_t shortOptionQuantity = 0;
    std::int64_t longOptionQuantity = 0;
    std::int64_t futuresQuantity = 0;
    double netOptionValue = 0;         ///< rupees
    double optionValue = 0;            ///< paise: today's buys minus sells of an option
    double futuresExposureMargin = 0;  ///< rupees
    double exposureMargin = 0;         ///< rupees, whole

    friend bool operator==(const ScripBlock&, const ScripBlock&) = default;
};

/// Of a contract of an account.
struct tagScripMargin {
    tagRPFContractRecord contract{};  ///< token 0: no risk parameters so far
    PerView<ScripBlock> view{};
    PerView<double> loadedMargin{};  ///< MCX, rupees: of a position from rows, at its own rate; in no sum
    bool inSums = false;             ///< the nodes above hold these figures

    /// Loss of a view in a scenario, rupees.
    [[nodiscard]] float RiskValue(std::size_t of, std::size_t scenario) const {
        const double value = static_cast<double>(view[of].riskQuantity) * contract.riskArray[scenario];
        return static_cast<float>(std::clamp<double>(value, -FLT_MAX, FLT_MAX));
    }
    [[nodiscard]] bool HasContract() const { return contract.token != 0; }
};

/// Sums over the contracts of one expiry, for one view.
struct ExpiryBlock {
    double spreadPosition = 0;
    std::int64_t shortOptionQuantity = 0;
    std::int64_t longOptionQuantity = 0;
    std::int64_t futuresQuantity = 0;
    double netOptionValue = 0;
    double optionValue = 0;
    double futuresExposureMargin = 0;
    double exposureMargin = 0;
};

struct tagExpiryMargin {
    PerView<ExpiryBlock> view{};
    bool hasFuture = false;  ///< from its first future on the expiry takes part in the netting of exposure margin
};

/// Sums over the expiries of one underlying, and what is formed from them, for one view.
struct UnderlyingBlock {
    /// Single-precision losses, summed in double: what was added can be taken off again and leaves nothing behind.
    std::array<double, kScenarioCount> riskValues{};
    double spreadLong = 0;
    double spreadShort = 0;
    std::int64_t shortOptionQuantity = 0;
    std::int64_t longOptionQuantity = 0;
    std::int64_t futuresQuantity = 0;
    double netOptionValue = 0;
    double optionValue = 0;
    double longSidePosition = 0;  ///< netting of exposure margin: expiries with a future, by the sign of their spread
    double shortSidePosition = 0;
    double longSideMargin = 0;
    double shortSideMargin = 0;
    double exposureMarginTotal = 0;
    // Formed; not for the worst case short.
    double scanRisk = 0;
    double calendarCharge = 0;
    double shortOptionMinimum = 0;
    double initialMargin = 0;
};

struct tagUnderlyingMargin {
    PerView<UnderlyingBlock> view{};
    double nettedExposureMargin = 0;
    double tradedInTotals = 0;            ///< effective margin of the traded view that the account's total holds
    double optionTradedInTotals = 0;      ///< the same of its option value, paise
    tagRPFUnderlyingRecord underlying{};  ///< token 0: none so far
};

/// An account's margin on one market.
struct MarginGroupTotals {
    double marginOrderSide = 0;  ///< rupees
    double marginTradedSide = 0;
    double marginWorst = 0;
    double optionValueOrderSide = 0;  ///< paise
    double optionValueTradedSide = 0;
    double optionValueWorst = 0;
    double exposureMargin = 0;  ///< rupees
};

/// The markets that an account is margined on, each apart.
enum class MarginGroup : std::uint8_t { kNse, kBse, kNcdex, kMcx, kNone };
inline constexpr std::size_t kMarginGroupCount = 4;

struct tagClientMarginTotals {
    std::array<MarginGroupTotals, kMarginGroupCount> groups{};

    [[nodiscard]] MarginGroupTotals& Of(MarginGroup group) { return groups[static_cast<std::size_t>(group)]; }
    [[nodiscard]] const MarginGroupTotals& Of(MarginGroup group) const {
        return groups[static_cast<std::size_t>(group)];
    }
};

/// An account's figures on one market as limit rows read them: never below 0 but for the option values.
struct MarginReading {
    double orderSide = 0;  ///< rupees
    double tradedSide = 0;
    double worst = 0;
    double exposure = 0;
    double optionOrderSide = 0;  ///< paise
    double optionTradedSide = 0;
    double optionWorst = 0;
};

}  // namespace surv
