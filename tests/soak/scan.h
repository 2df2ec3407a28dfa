#pragma once

// What the margin of an account comes to: its contracts one by one, then what stands in one underlying. Rupees, but
// for the values of options, which are paise.

#include <array>
#include <map>
#include <set>

#include "book.h"

namespace soak {

/// Of a contract, as a risk parameter file tells it. Losses are per unit, in rupees; the price is in paise.
struct Risk {
    float price = 0, delta = 0;
    std::array<float, 16> losses{};
    friend bool operator==(const Risk&, const Risk&) = default;
};
/// Of an underlying. Rupees a unit.
struct Charges {
    float spread = 0, shortOption = 0;
    friend bool operator==(const Charges&, const Charges&) = default;
};
/// Of the exposure margin of a contract.
struct Rates {
    double additional = 0, onLong = 0, onShort = 0, onBuys = 0, onSells = 0;
};
/// What an entity's preference says of margins on an exchange.
struct OwnMargin {
    std::int32_t rate = 0, addOn = 0, funding = 0;  ///< addOn and funding: millionths
    int mode = 0;
    bool premium = false;

    [[nodiscard]] double Raised(double margin) const { return margin + margin * addOn / 1e6; }
};

/// All open orders, none, the buys alone, the sells alone.
inline constexpr std::size_t kViews = 4, kTradedView = 1, kWorstView = 2;
struct View {
    double buyQty, sellQty, buyValue, sellValue;
    [[nodiscard]] double Net() const { return buyQty - sellQty; }
    [[nodiscard]] double Value() const { return buyValue - sellValue; }
};
[[nodiscard]] std::array<View, kViews> ViewsOf(const Position& position);

/// What is summed over contracts, as one row of numbers. Values change with the day's prices alone; the others are
/// quantities, and what is formed from them.
enum Figure : std::size_t {
    kOptionValue,
    kFuturesExposure,
    kExposure,
    kQuantities,
    kSpread = kQuantities,
    kShortOptions,
    kLongOptions,
    kFutures,
    kNetOptionValue,
    kLosses,
    kFigures = kLosses + 16
};
using Figures = std::array<double, kFigures>;
using Views = std::array<Figures, kViews>;

/// `risk` null: the host never sent any.
[[nodiscard]] Views FiguresOf(const Event& about, const Position& position, const Risk* risk, const Rates& rates,
                              const OwnMargin& own);

enum Read : std::size_t {
    kOrderSide,
    kTradedSide,
    kWorst,
    kExposureMargin,
    kPremiumOrder,
    kPremiumTraded,
    kPremiumWorst
};
using Reading = std::array<double, 7>;

/// A contract of an account: what it holds, and its figures when they were last formed.
struct Contract {
    Event about;
    Position position;
    std::optional<Risk> risk;
    std::optional<Views> figures;
};

/// The contracts of one underlying in an account; those about to expire stand apart.
struct Underlying {
    bool mcx = false;
    std::optional<Charges> charges;
    std::map<std::int32_t, std::map<std::int32_t, Contract>> expiries;
    double tradedShown = 0, premiumTradedShown = 0;  ///< follow trades and new parameters alone

    /// Of the traded side as it would be shown.
    [[nodiscard]] Reading Read() const;
};

/// The margin of an equity position by its rate, in the views of rows: order side, traded side, worst case.
using Margins = std::array<double, 3>;
struct ScripRate {
    int basis = 0;
    double rate = 0;  ///< hundredths of a percent, or paise a share by basis 2
};
[[nodiscard]] Margins CashMargins(const Position& position, const ScripRate& rate, const OwnMargin& own, bool together);
/// Of margin funding.
[[nodiscard]] Margins FundingMargins(const Position& position, const OwnMargin& own);
/// Of a delivery: what is bought beyond what is sold.
[[nodiscard]] Margins NetBuys(const Position& position);
/// The same where no row shows it: sales count against buys, those of an NRI not at all.
[[nodiscard]] Margins Worth(const Position& position, bool nri);

}  // namespace soak
