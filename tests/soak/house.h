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
    bool clientLevel = true;   ///< clients of types 3 and 5 wherever they like
    bool seldomCodes = true;   ///< restored and repriced orders, trades that another state corrects
    bool limits = true;        ///< rows that may refuse, and calls that are no orders
    bool dealerOnly = false;   ///< some events are told to the dealer's level alone
    bool lotWeights = false;   ///< MCX counts in lots, NCDEX prices have factors
    bool levels = false;       ///< groups, dealers and families at any place, holders of any type
    bool orderBased = false;   ///< positions are held by client from orders on
    bool oddCalls = false;     ///< unknown codes, entities that aren't there, numbers at their ends

    [[nodiscard]] bool HoldsByClient() const { return positionMode == 2 || positionMode == 3 || orderBased; }
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
    std::int32_t scripGroup = 0;
    Json factors = Json::object();  ///< of price and quantity, as a request names them
};

/// Days that stop have orders alone whose rows a start takes, until they have stopped; those without limits have orders
/// alone.
enum class DayKind : std::uint8_t { kWhole, kStopped, kUnlimited };

class CHouse {
 public:
    explicit CHouse(CDice& dice, DayKind kind = DayKind::kWhole);

    DayStyle style;
    std::vector<Holder> holders;
    std::vector<Instrument> instruments;
    std::vector<std::string> entities;

    /// What comes from now on isn't there at the stop.
    void Stopped() { style = afterStop_; }
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
    Json FactorsOf(std::int16_t exchangeMask);
    void MakeHolders();
    Json LimitRow(const std::string& entity, int mask);
    Json Start();
    Script Preferences();

    CDice& dice_;
    DayKind kind_;
    DayStyle afterStop_;
    std::map<std::int16_t, Json> charges_;     ///< of each market's underlying
    int profits_ = 0;                          ///< marginFlags of every preference
    std::vector<std::pair<int, int>> places_;  ///< level and second level of each entity
};

/// A limit of one kind at a value that orders meet exactly, entered into a row.
void SetSomeLimit(CDice& dice, Json& row);
[[nodiscard]] Json Touchline(std::int16_t exchangeMask, std::int32_t token, int price);

}  // namespace soak
