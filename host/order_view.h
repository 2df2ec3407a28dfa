#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "replay.h"

namespace survhost {

enum class Outcome : std::uint8_t {
    kAccepted,  ///< a check that passed
    kRefused,   ///< a check that didn't
    kProbed,    ///< an enquiry: nothing was to be kept
    kTaken,     ///< an event that the library took in
    kNotDone,   ///< the call failed
};

/// An order, trade or correction in the words of people.
struct OrderView {
    std::int16_t messageCode = 0;
    std::string action;   ///< "order", "change", "trade"
    std::string product;  ///< "margin"; empty when none is named
    std::string side;     ///< "buy", "sell"
    std::int32_t quantity = 0;
    std::int32_t price = 0;  ///< paise; 0 at market
    std::string symbol;
    std::string path;  ///< group, dealer, client, sub client, as far as given

    Outcome outcome = Outcome::kNotDone;
    int errorCode = 0;
    std::string level;      ///< the kind of level that refused: "client"
    std::string levelCode;  ///< and its code; empty for a refusal ahead of the levels
    std::string rule;       ///< the rule that refused, the same for all its figures: "Gross Exposure"
    std::string words;      ///< the refusal, or why the call failed
};

/// Nothing for a call that isn't about an order.
std::optional<OrderView> ViewOrder(const Played& played);

/// "order quantity" for -206; empty for a code of no known meaning.
std::string_view ErrorName(int errorCode);

// Readers of a script's or an answer's objects; what is absent, or of another kind, is empty or `otherwise`.
const Json& ObjectAt(const Json& object, const char* name);
std::string TextAt(const Json& object, const char* name);
double NumberAt(const Json& object, const char* name, double otherwise = 0);
std::int32_t LongAt(const Json& object, const char* name);

}  // namespace survhost
