#pragma once

// What the host loads about scrips: which products they allow and in which price bands, the series that are always
// delivered, and the prices of cash tokens, by which options are tested against their underlying.

#include <cstdint>
#include <string_view>

#include "platform/fixed_text.h"
#include "platform/hash_map.h"
#include "platform/hash_set.h"
#include "surveillance/containers.h"
#include "surveillance/records.h"

namespace surv {

/// Exchange mask and series without the blanks around it.
struct SeriesKey {
    std::int16_t exchangeMask = 0;
    FixedText<8> series;

    SeriesKey(std::int16_t mask, std::string_view text) : exchangeMask(mask), series(Trimmed(text)) {}
    friend bool operator==(const SeriesKey&, const SeriesKey&) = default;
    [[nodiscard]] std::uint64_t Hash() const { return series.Hash() + static_cast<std::uint64_t>(exchangeMask); }
};

/// Test of option prices against the underlying, for one side.
struct PriceTest {
    std::int16_t bandPercent = 0;
    bool on = false;
};

struct ProductReference {
    HashMap<std::int32_t, tagProductTypeScripBasket> scripBaskets{1013};  ///< by token
    HashSet<SeriesKey> compulsoryDeliverySeries;
    HashMap<std::int32_t, tagTokenPriceRecord> tokenPrices{1013};  ///< NSE cash, by token
    PriceTest sellPriceTest;
    PriceTest buyPriceTest;

    // Loads: the first record of a key stands; null elements are passed over.
    void LoadBaskets(const CPtrList& records);
    void LoadSeries(const CPtrList& records);       ///< of NSE and BSE cash
    void LoadTokenPrices(const CPtrList& records);  ///< of NSE cash
    /// A new token gets a new record, a known one is overwritten.
    void SetBasket(const tagProductTypeScripBasket& record);

    /// The token's price record takes the prices of a touchline of NSE cash that has traded, while orders are tested
    /// against them.
    void TakeTokenPrice(const tagBcastMBOOrMBPTouchline& touchline);

    /// Empties the stores; the settings stay.
    void ClearDay();
};

}  // namespace surv
