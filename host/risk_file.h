#pragma once

// A risk parameter file, whatever format it came in, and the replay lines that feed it to the library. A reader of one
// format fills a RiskFile (import_span.h); what follows from there is the same for all.

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "script_error.h"

namespace survhost {

enum class ContractType : std::uint8_t { kFuture, kCall, kPut };

/// By this a contract of a risk file and one of a contract master are the same.
struct ContractKey {
    std::string symbol;
    ContractType type = ContractType::kFuture;
    std::int32_t expiryDate = 0;    ///< exchange seconds, at midnight
    std::int32_t strikePrice = -1;  ///< paise; -1 for a future

    auto operator<=>(const ContractKey&) const = default;
};

/// "XU030 2016-06-30 96.00 CE", for complaints.
std::string Described(const ContractKey& key);

struct RiskUnderlying {
    std::string code;
    std::int32_t token = 0;
    float calendarSpreadCharge = 0;
    float shortOptionMinimumCharge = 0;
};

/// Figures are those of one contract as it is counted in positions.
struct RiskContract {
    ContractKey key;
    bool american = false;
    std::int32_t token = 0;
    std::size_t underlying = 0;    ///< its place in RiskFile::underlyings
    float price = 0;               ///< paise
    std::array<float, 16> risk{};  ///< rupees lost by a long position
    float compositeDelta = 0;
};

struct RiskFile {
    std::vector<RiskUnderlying> underlyings;
    std::vector<RiskContract> contracts;
};

/// Without a master contracts are numbered from here on.
inline constexpr std::int32_t kFirstNumberedContract = 100'001;

/// What every import is told.
struct ImportOptions {
    std::string file{};
    std::string master{};  ///< empty: tokens are numbered
    std::string closes{};  ///< a day file whose closes a master takes; empty: none
    std::int16_t segment = 2;
};

/// Gives tokens to underlyings and contracts: in file order underlyings from 1 and contracts from 100001, or the
/// contracts by the master. A contract that the master lacks is left out, and `notes` is told how many were.
void GiveTokens(RiskFile& file, const ImportOptions& options, std::ostream& notes);

/// The script lines that load the file into the library's second set and put that in force at the end.
std::string ReplayLines(const RiskFile& file, std::int16_t segment);

/// The bytes of a file. Throws RunError when it can't be read.
std::string ReadWhole(const std::string& name);

/// A fault in a line of an imported file.
RunError FileFault(const std::string& file, std::size_t line, std::string_view what);

/// "2016-06-30", or with an empty separator "20160630", as midnight of that day. Nothing when it is no date, or one
/// that exchange seconds can't hold.
std::optional<std::int32_t> ExchangeDate(std::string_view text, std::string_view separator);
/// The whole text as a number that is finite.
std::optional<double> FiniteNumber(std::string_view text);
/// To the nearest paisa. Nothing unless it is between 1 and what 32 bits hold.
std::optional<std::int32_t> StrikeInPaise(double rupees);

}  // namespace survhost
