#pragma once

// A naive twin of the house: the list of what has been ordered and traded, and what everything comes to by adding it
// up from the first entry each time. It knows the calls and their answers and nothing of the library's insides.

#include <array>
#include <compare>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "house.h"
#include "snapshot.h"

namespace soak {

/// Bought and sold, each with its worth in paise. The order side holds every open order and every trade.
struct Position {
    struct Amount {
        std::int64_t quantity = 0;
        double value = 0;
        friend auto operator<=>(const Amount&, const Amount&) = default;
    };
    Amount orderBuy, orderSell, tradedBuy, tradedSell;

    friend auto operator<=>(const Position&, const Position&) = default;
    void Add(const Position& other);
};

/// What an order, trade or correction takes out of every position that it reaches, and what it puts in.
struct Event {
    std::int16_t exchangeMask = 0;
    std::int32_t token = 0, strikePrice = 0, expiryDate = 0, underlyingToken = 0, scripGroup = 0;
    int product = 0;
    bool buy = true, nri = false;
    bool trade = false, correction = false;
    std::int64_t prevQuantity = 0, quantity = 0;
    double prevPrice = 0, price = 0;
    double lot = 1;  ///< what one of the quantity counts

    [[nodiscard]] double Out() const { return static_cast<double>(prevQuantity) * prevPrice * lot; }
    [[nodiscard]] double In() const { return static_cast<double>(quantity) * price * lot; }
    [[nodiscard]] bool IsDelivery() const { return product == 2 || product == 0x10; }
    [[nodiscard]] bool IsConversion() const { return product == 0x10 || product == 0x20; }
    [[nodiscard]] bool HasDaily() const { return !IsDelivery() && product != 4; }
    [[nodiscard]] int SegmentBit() const;
    /// Plain, delivery or margin funding: products that are held apart.
    [[nodiscard]] int Family() const;
    /// What changes in a position.
    [[nodiscard]] Position Change() const;
};

/// What the holder of an account is, by the request.
struct LevelTypes {
    int client = -1, group = -1, subClient = -1;
};

/// An event at one entity: the account that it is in there, and what of the entity it moves.
struct Entry {
    std::string group, account;
    LevelTypes types;
    Event event;
    bool flat = false;         ///< the entity's own position
    bool rows = false;         ///< its limit rows, by the general rules
    bool told = false;         ///< the entity was not asked
    bool productRows = false;  ///< the rows by the rules of the product
    bool judged = false;       ///< a check weighed it here, which moves no traded margin
};

/// An entry, and whose it is.
struct Arrival {
    std::string entity;
    Entry entry;
};

/// The walk over the masks of an entity goes to their end only where there are as many of the day as until expiry.
[[nodiscard]] std::set<std::string> Uneven(const Snapshot& state);

class CBook {
 public:
    /// Enters a call by what was answered.
    void Take(const Json& line, const Json& answer);

    /// The last price of each scrip that has traded, by exchange mask and token; 0 before its first touchline.
    using Market = std::map<std::pair<std::int16_t, std::int32_t>, std::int32_t>;
    [[nodiscard]] const Market& LastPrices() const { return market_; }
    /// As orders of the scrip count: in paise by its factor.
    [[nodiscard]] double LastPriceOf(std::int16_t exchangeMask, std::int32_t token) const;
    /// Of one of the quantity, which may count more than one.
    [[nodiscard]] double LastWorthOf(std::int16_t exchangeMask, std::int32_t token) const;
    using Entries = std::vector<Entry>;
    [[nodiscard]] const std::map<std::string, Entries>& EntriesByEntity() const { return entries_; }
    [[nodiscard]] std::int16_t PositionMode() const { return positionMode_; }
    /// Positions are held by client, too.
    [[nodiscard]] bool HoldsByClient() const { return positionMode_ == 2 || positionMode_ == 3 || orderBased_; }
    [[nodiscard]] bool IsOrderBased() const { return orderBased_; }
    [[nodiscard]] bool HasTraded(const std::string& entity, int exchangeMask, std::int32_t token) const {
        return traded_.contains({entity, exchangeMask, token});
    }
    /// Every price reaches what the entity holds.
    [[nodiscard]] bool IsMarked(const std::string& entity) const {
        return everyClassMarked_ && everyTickMarks_ && !mtmDoubted_.contains(entity);
    }
    /// A row of the entity may have refused what another row then let in.
    [[nodiscard]] bool MayHaveMissed(const std::string& entity) const { return lifted_.contains(entity); }
    /// What the last call entered, entity by entity.
    [[nodiscard]] const std::vector<Arrival>& Arrivals() const { return arrivals_; }
    /// Figures of rows that were asked so far: those in doubt are not.
    [[nodiscard]] std::size_t Compared() const { return compared_; }
    /// Of them, those of rows of a scrip or of a scrip group.
    [[nodiscard]] std::size_t ComparedOfScrips() const { return comparedOfScrips_; }
    /// No refused order has stayed at some of its levels.
    [[nodiscard]] bool LevelsAgree() const { return levelsAgree_; }

    /// Empty, or the first thing in the state that isn't what the entries come to.
    [[nodiscard]] std::string Positions(const Snapshot& state) const;
    [[nodiscard]] std::string RowFigures(const Snapshot& state) const;
    [[nodiscard]] std::string Exposures(const Snapshot& state) const;
    [[nodiscard]] std::string Holdings(const Snapshot& state) const;
    [[nodiscard]] std::string Mtm(const Snapshot& state) const;

    using Row = BKSurveillanceLimitDefTag;
    using Ask = std::function<std::string(const std::string& entity, const Entries& entries,
                                          const std::vector<const Row*>& rows)>;
    /// Asks each entity's rows of all securities, unless they are in doubt.
    std::string AskRows(const Snapshot& state, const std::set<std::string>& doubted, const Ask& ask) const;

 private:
    struct Place {
        int period;  // 0 the day, 1 until expiry
        int family, segmentBit;
        std::int32_t token;
        auto operator<=>(const Place&) const = default;
    };
    struct Held {
        Position position;
        Event about;  ///< the latest event there
    };
    using Flat = std::map<Place, Held>;

    void Start(const Json& line);
    void Order(const Json& line, const Json& answer);
    void Enter(const Json& request, const Event& event, bool check, const Json& answer);
    void RowCall(const Json& line, const Json& answer);
    void Tick(const Json& touchline);
    [[nodiscard]] static Flat FlatOf(const Entries& entries);
    /// The same as AskRows with rows of scrips and of scrip groups, of those that were there from the start.
    std::string AskRowsOfScrips(const Snapshot& state, const std::set<std::string>& doubted, const Ask& ask) const;
    std::string AskOf(const Snapshot& state, const std::set<std::string>& doubted, bool scrips, const Ask& ask) const;
    [[nodiscard]] double LotOf(const Json& request, const Event& event) const;

    /// Empty, or the first figure of the row that isn't as it should be.
    template <class Dues>
    std::string FirstWrong(const Row& row, const Dues& dues) const;

    std::map<std::string, Entries> entries_;  ///< by entity
    std::vector<Arrival> arrivals_;
    mutable std::size_t compared_ = 0, comparedOfScrips_ = 0;
    mutable std::set<std::string> lifted_;  ///< a refusal at their rows may have been lifted
    std::set<std::string> entities_;
    using RowKey = std::tuple<std::string, int, std::int32_t>;  ///< entity, mask and token
    std::set<RowKey> fromStart_;
    std::set<std::string> doubted_;           ///< entities whose rows tell something else
    std::set<std::string> exposuresDoubted_;  ///< a position moved that the rows didn't see
    std::set<std::string> grossDoubted_;      ///< an account did
    std::set<std::string> mtmDoubted_, fundsDoubted_;
    std::set<std::tuple<std::string, int, std::int32_t>> traded_;  ///< entities and what touchlines mark for them
    Market market_;
    std::map<std::pair<std::string, int>, int> profits_;  ///< marginFlags by entity and exchange
    std::int16_t positionMode_ = 0;
    bool families_ = false, lotWeights_ = false, orderBased_ = false;
    std::map<std::int32_t, double> priceFactors_;  ///< of NCDEX scrips
    std::map<std::pair<std::int16_t, std::int32_t>, double> lots_;
    bool levelsAgree_ = true, everyClassMarked_ = false, everyTickMarks_ = false;
};

}  // namespace soak
