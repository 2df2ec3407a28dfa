#pragma once

// An account's derivative margin worked out whole from what it rests on: positions, risk parameters, rates and
// preferences. Slow and plain, it is what the sums in the tree have to come to, however they got there.

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "positions/accounts.h"

namespace surv::test {

/// What the house was told, beside positions and risk parameters.
struct ExposureRates {
    std::int32_t additional = 0;
    std::int32_t onBuys = 0;
    std::int32_t onSells = 0;
    std::int32_t onLong = 0;  ///< MCX has these two in place of the first
    std::int32_t onShort = 0;
};
struct MarginPreference {
    std::int32_t marginRate = 0;
    std::int16_t mode = 0;
    std::int32_t addOn = 0;  ///< millionths
    bool premiumCounts = false;
};
struct MarginFacts {
    std::int32_t tradingDayBase = 0;
    std::map<std::int64_t, ExposureRates> rates;                ///< by PlainKey
    std::map<std::int16_t, MarginPreference> preferences = {};  ///< of one category, by exchange mask
};

/// Figures that are sums over contracts, as one row of numbers.
enum Figure : std::size_t {
    kSpread,
    kShortOptions,
    kLongOptions,
    kFutures,
    kNetOptionValue,
    kOptionValue,
    kFuturesExposure,
    kExposure,
    kRisk,
    kFigureCount = kRisk + kScenarioCount
};
using Figures = std::array<double, kFigureCount>;

/// A figure, and the size of what it is the difference of.
struct Amount {
    double value = 0;
    double gross = 0;

    void Add(double term, double size) {
        value += term;
        gross += size;
    }
};
/// In the order of MarginReading.
enum Total : std::size_t { kOrder, kTraded, kWorst, kExposureTotal, kOptionOrder, kOptionTraded, kOptionWorst };
using Totals = std::array<Amount, 7>;
struct AccountMargin {
    std::array<Totals, kMarginGroupCount> groups{};

    /// As limit rows read it: option values as they are, anything else never below 0.
    [[nodiscard]] std::array<double, 7> Reading(std::int16_t exchangeMask) const;
};
[[nodiscard]] MarginGroup GroupOfExchange(std::int16_t exchangeMask);

/// The account's margin; `difference` takes the first figure of the tree that isn't what it has to be.
[[nodiscard]] AccountMargin MarginFromScratch(const CClientExposure& account, const MarginFacts& facts,
                                              std::string& difference);

}  // namespace surv::test
