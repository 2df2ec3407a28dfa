#pragma once

// A broker's house by chance: entities, instruments and settings, and the calls that set it up.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "dice.h"
#include "json_record.h"

namespace soak {

using survhost::Json;
using Script = std::vector<Json>;  ///< a day in the text form that survhost replays, one call a line

inline constexpr std::int64_t kNow = 1763695800;                ///< 09:00 in the exchange's zone
inline constexpr std::int32_t kTradingDayBase = 1'448'150'400;  ///< midnight of that day, in exchange seconds
inline constexpr const char* kTimeZone = "Asia/Kolkata";
inline constexpr const char* kIsin = "INE002A01018";

/// What a day is like. Some checks hold only where a kind of call doesn't come.
struct DayStyle {
    std::int16_t positionMode = 0;
    std::int16_t mtmMode = 1;
    bool told = false;         ///< orders come as events, unchecked
    bool products = false;     ///< deliveries, two-leg orders and margin funding
    bool conversions = false;  ///< from product to product
    bool openLevels = false;   ///< some levels only take orders in
    bool riskFiles = false;    ///< new risk parameters in the middle of the day
    bool premiums = true;      ///< of options count as margin in some rows
    bool preferences = false;  ///< other preferences of margins then
    bool heldBack = false;     ///< files name some contracts later, or never; some come past the file
    bool clientLevel = true;   ///< clients of types 3 and 5, whose orders reach few levels
    bool seldomCodes = true;   ///< restored and repriced orders, trades that another state corrects
    bool oddCalls = false;     ///< unknown codes, entities that aren't there, numbers at their ends
};

/// Who sends orders: a client with or without sub client, a dealer for itself, the house.
struct Holder {
    std::string group, dealer, family, client, subClient;
    int groupType = 0, dealerType = 0, clientType = 2, subClientType = 255;
    int proClient = 1;
    bool nri = false;
};

struct Instrument {
    std::int16_t exchangeMask;
    std::int32_t token, strikePrice = 0, expiryDate = 0, underlyingToken = 0;
    int marginBasis = 0, marginRate = 0;  ///< of equity
};

/// Days that stop have orders alone whose rows a start takes.
enum class DayKind : std::uint8_t { kWhole, kStopped };

class CHouse {
 public:
    explicit CHouse(CDice& dice, DayKind kind = DayKind::kWhole);

    DayStyle style;
    std::vector<Holder> holders;
    std::vector<Instrument> instruments;
    std::vector<std::string> entities;

    /// From the clock to the first touchlines.
    [[nodiscard]] Script Opening();
    /// A whole file of new parameters of one market; what isn't staged counts at once.
    [[nodiscard]] Script RiskFile(std::int16_t exchangeMask, bool staged = true);
    /// What an entity has of an exchange instead of the rates of all.
    [[nodiscard]] Json Preference(const std::string& entity, int exchange);
    /// The masks on which an entity has a row of all securities.
    [[nodiscard]] const std::vector<int>& MasksOf(const std::string& entity) const;
    /// A row of an entity at its place in the house, without limits.
    [[nodiscard]] Json BareRow(const std::string& entity, int mask, std::int32_t token) const;

 private:
    void MakeInstruments();
    void MakeHolders();
    Json LimitRow(const std::string& entity, int mask);
    Json Start();
    Script Preferences();

    CDice& dice_;
    DayKind kind_;
    std::map<std::int16_t, Json> charges_;  ///< of each market's underlying
    int profits_ = 0;                       ///< marginFlags of every preference
    std::vector<std::int16_t> entityLevels_;
};

/// A limit of one kind at a value that orders meet exactly, entered into a row.
void SetSomeLimit(CDice& dice, Json& row);
[[nodiscard]] Json Touchline(std::int16_t exchangeMask, std::int32_t token, int price);

}  // namespace soak
