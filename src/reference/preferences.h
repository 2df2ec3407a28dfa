#pragma once

#include <cstdint>
#include <string_view>

#include "reference/stores.h"
#include "surveillance/containers.h"

namespace surv {

// Bits of marginFlags.
inline constexpr std::uint8_t kExposureMarginCounts = 1 << 0;
inline constexpr std::uint8_t kMtmProfitCounts = 1 << 1;  ///< towards the margin limit, like the three below
inline constexpr std::uint8_t kMtmLossCounts = 1 << 2;
inline constexpr std::uint8_t kBookedProfitCounts = 1 << 3;
inline constexpr std::uint8_t kBookedLossCounts = 1 << 4;
inline constexpr std::uint8_t kPremiumCounts = 1 << 5;       ///< option premium counts as margin
inline constexpr std::uint8_t kSquareOffByTime = 1 << 6;     ///< square-off only when the exchange's time setting is 1
inline constexpr std::uint8_t kSquareOffBySession = 1 << 7;  ///< the same with its session setting
// Bits of fundFlags.
inline constexpr std::uint8_t kSquareOffOnly = 1 << 0;
inline constexpr std::uint8_t kPreAutoSquareOffOn = 1 << 1;
inline constexpr std::uint8_t kAutoSquareOffOn = 1 << 2;

/// The part of a preference record that travels into an order.
[[nodiscard]] RiskPreference TravellingPart(const tagClientRiskPreferenceInfoForSurv& record);

/// Enters the host's records, the first of a code and exchange standing.
void LoadPreferences(ReferenceStores& stores, const CPtrList& records);
/// Adds or changes one record; bit 0 of marginFlags of the caller's record may change.
/// Returns true when the record is new.
bool AddOrUpdatePreference(ReferenceStores& stores, tagClientRiskPreferenceInfoForSurv& record);
/// scope 0: every code, 1: the one code, else nothing. exchange -9: all records. The list gets the stored records.
void QueryPreferences(const ReferenceStores& stores, int scope, std::string_view code, std::int32_t exchange,
                      CPtrList& result);

}  // namespace surv
