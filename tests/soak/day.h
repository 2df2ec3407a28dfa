#pragma once

// The calls of a day, each as the answers before it allow.

#include <deque>
#include <optional>
#include <vector>

#include "house.h"

namespace soak {

class CDay {
 public:
    CDay(CDice& dice, CHouse& house) : dice_(dice), house_(house) {}

    /// The next call.
    Json Next();
    /// Inside calls that belong together.
    [[nodiscard]] bool InTheMiddle() const { return !due_.empty(); }
    /// What came of it.
    void Answered(const Json& answer);

 private:
    struct Order {
        std::size_t holder = 0, instrument = 0;
        int buySell = 1, product = 0;
        int remaining = 0, filled = 0, price = 0;
        int firstLegPrice = 0, secondLegPrice = 0, triggerPrice = 0;
        bool dealerOnly = false;
    };

    Json Request(const char* call, int code, const Order& order);
    Json Tell(int code, const Order& order);
    [[nodiscard]] Json Record(const Order& order) const;
    [[nodiscard]] Json Stored(const Order& order) const;
    [[nodiscard]] Json TradeRecord(const Order& order, int quantity, int price) const;
    int SomePrice() { return 24000 + 5 * dice_.Among(0, 100, 200, 200, 200, 201, 300, 400); }

    Order NewOrder();
    Json Enter();
    Json Probe();
    Json FollowUp();
    Json Trade(std::size_t at);
    Json Change(std::size_t at);
    Json End(std::size_t at);
    Json Correct();
    Json Seldom();
    Json Convert();
    Json Tick();
    Json SetLimit();
    Json Prefer();
    Json AddOrRemoveRow();
    Json MoveFund();
    Json Upload();
    Json Ask();
    Json Odd();

    CDice& dice_;
    CHouse& house_;
    std::deque<Json> due_;  ///< calls that come in a row
    std::vector<Order> open_;
    std::vector<Order> trades_;  ///< margin trades of equity, which may be corrected
    std::optional<Order> entering_;
    std::optional<std::size_t> changing_;
    Order changed_;
};

}  // namespace soak
