#pragma once

// A house in a few verbs. Each test makes its own library, names its entities and limits, and sends orders.

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "service/library.h"
#include "surveillance/host.h"

namespace surv::test {

/// A limit row with nothing set: every limit and multiplier -1.
[[nodiscard]] BKSurveillanceLimitDefTag EmptyLimit(std::string_view entity, std::int16_t mask,
                                                   std::int32_t token = kAllSecurities);

/// A position row of a client (type 2) in its mask's segment: traded above 0 is bought, below 0 sold, at 250.00.
[[nodiscard]] BKExposureTag PositionRow(std::string_view level, std::int16_t mask, std::int32_t traded,
                                        std::string_view account = "C1", std::int32_t token = 2885);

/// An order as a test writes it. The defaults are a client's margin buy of 100 at 250.00 on NSE, checked everywhere.
struct OrderSpec {
    std::int16_t messageCode = 2000, exchangeMask = kMaskNseCash;
    std::int32_t token = 2885;
    const char *symbol = "SCRIP", *series = "EQ";
    std::int16_t buySell = kBuy;
    std::int32_t quantity = 100, price = 25000, productType = product::kMargin;
    std::int16_t proClient = 1;
    std::string group = "G1", dealer = "D1", family = {}, client = "C1", subClient = {};
    std::uint8_t groupType = 0, dealerType = 0, clientType = 2, subClientType = 255;
    std::uint8_t levelCheckFlags = 62, levelMarginFlags = 0;
    std::int32_t scripGroupNumber = 0, priceMultiplier = 1, strikePrice = 0, expiryDate = 0, underlyingToken = 0;
    const char* clientCategory = "";
    /// The stored order (tagOrderInfo), or the trade of 5440 and 5445: quantity and price before. quantity and price
    /// are the trade's own of 2222, 2286 and 2288, and the new ones of a correction.
    bool hasStored = false;
    std::int32_t storedQuantity = 0, storedPrice = 0;
    std::int32_t storedFilled = 0;  ///< the rest of storedQuantity remains
    std::int16_t storedStatus = 0;
    std::int16_t marginPlusLeg = 0;
    std::int32_t firstLegPrice = 0, secondLegPrice = 0, triggerPrice = 0;
};
/// The request of an order, its records in one buffer that ends where the last one does.
[[nodiscard]] std::vector<char> MakeRequest(const OrderSpec& order);

/// What a check answers.
struct Answer {
    short result = -9, status = -9;
    std::int16_t errorCode = 0, headCode = 0;
    std::int32_t timeStamp = 0;
    std::string text, failedLevelCode;
    std::int16_t failedLevelType = 0;
    std::uint8_t levelCheckFlags = 0;
    std::vector<BKSurveillanceLimitDefTag> limitRows;
    std::vector<const BKSurveillanceLimitDefTag*> limitRowAddresses;  ///< as handed out; copies are freed by now
    std::vector<tagBreachRow> probeRows, rollbackRows;

    [[nodiscard]] bool Passed() const { return result == 0 && status == status::kPass; }
    /// "status, errorCode, headCode at the time of the answer: level that failed, its type", the time as a word.
    [[nodiscard]] std::string Head() const;
};

/// What an event answers.
struct EventAnswer {
    short result = -9;
    std::int16_t errorCode = 0;
    std::int32_t timeStamp = 0;
    std::string text;
    std::vector<BKSurveillanceLimitDefTag> limitRows;
};

class CScenario {
 public:
    static constexpr std::int64_t kNow = 1763695800;

    /// A started library; without lists it has no limits. `prepare` loads what a host loads before the start.
    explicit CScenario(Library::StartSettings settings = {}, const LoadLists& lists = {},
                       const std::function<void(Library&)>& prepare = {});
    CScenario(const CScenario&) = delete;
    CScenario& operator=(const CScenario&) = delete;

    Library library;
    std::vector<std::string> notifications;

    /// Adds a row through the administration; `change` sets its limits. Fails the test if the library refuses.
    void Limit(std::string_view entity, std::int16_t mask,
               const std::function<void(BKSurveillanceLimitDefTag&)>& change = {}, std::int32_t token = kAllSecurities);
    /// A row without limits on mask 3 for "-", G1, D1, C1.
    void House(std::int16_t mask = 3);
    /// Enters a preference record for a code and exchange (-1: the overall one) and links it.
    void Preference(std::string_view code, std::int32_t exchange,
                    const std::function<void(tagClientRiskPreferenceInfoForSurv&)>& change = {});
    /// Puts a market price in place: bid, offer, last, close in paise.
    void Market(std::int16_t exchangeMask, std::int32_t token, std::int32_t bid, std::int32_t offer, std::int32_t last,
                std::int32_t close);

    Answer Check(const OrderSpec& order) { return Send(MakeRequest(order)); }
    Answer Probe(const OrderSpec& order) { return Send(MakeRequest(order), /*probe=*/true); }
    /// Sends a request as it stands: the head and its records in one buffer.
    Answer Send(std::vector<char>& buffer, bool probe = false);
    Answer Send(std::vector<char>&& buffer, bool probe = false) { return Send(buffer, probe); }
    EventAnswer Event(const OrderSpec& event, bool dealerOnly = false) {
        return SendEvent(MakeRequest(event), dealerOnly);
    }
    EventAnswer SendEvent(std::vector<char> buffer, bool dealerOnly = false);

    /// Sends the risk parameters of one segment as a whole file, to staging; the end message swaps them in.
    void RiskFile(std::int16_t segment, const std::vector<tagRPFUnderlyingRecord>& underlyings,
                  const std::vector<tagRPFContractRecord>& contracts);
    /// One message: head and body. `messageLength` 0: the right one.
    std::int16_t RiskMessage(std::int16_t code, std::int16_t segment, const void* body = nullptr,
                             std::size_t bodySize = 0, bool toStaging = true, std::int16_t messageLength = 0);

    /// The live row. REQUIRES: it is there.
    BKSurveillanceLimitDefTag& Row(std::string_view entity, std::int16_t mask, std::int32_t token = kAllSecurities);
    /// What an entity holds of a scrip of NSE equity, netted; null before the first order.
    [[nodiscard]] CSurvPosition* Held(std::string_view entity, Period period, std::int32_t token = 2885) const;
    /// The same in one of its accounts.
    [[nodiscard]] CSurvPosition* HeldBy(std::string_view entity, Period period, std::string_view group,
                                        std::string_view account, std::int32_t token = 2885) const;
    /// Every figure of every row, position and holding, as bytes: equal dumps are equal states. Nodes that hold nothing
    /// are left out, and the trees that margins are summed in, which the rows show.
    [[nodiscard]] std::string Dump() const;
};

}  // namespace surv::test
