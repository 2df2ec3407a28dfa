#include "order_view.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "surveillance/codes.h"
#include "text_format.h"

namespace survhost {
namespace {

struct Named {
    int number;
    std::string_view name;
};

/// What a message code says about its order; several codes may say the same.
constexpr std::array kActions{
    Named{2000, "order"},        Named{2012, "price"}, Named{2040, "change"}, Named{2042, "change undone"},
    Named{2070, "cancel"},       Named{2075, "end"},   Named{2076, "end"},    Named{2150, "order"},
    Named{2155, "end"},          Named{2156, "end"},   Named{2222, "trade"},  Named{2223, "correction"},
    Named{2231, "end"},          Named{2286, "fill"},  Named{2288, "fill"},   Named{5440, "trade cancel"},
    Named{5445, "trade change"}, Named{9002, "end"},   Named{30160, "order"}, Named{31000, "restore"},
};

constexpr std::array kProducts{
    Named{surv::product::kMargin, "margin"},
    Named{surv::product::kDelivery, "delivery"},
    Named{surv::product::kMarginPlus, "margin+"},
    Named{surv::product::kMtf, "funded"},
    Named{surv::product::kAmoMargin, "amo margin"},
    Named{surv::product::kAmoDelivery, "amo delivery"},
    Named{surv::product::kConvertToDelivery, "to delivery"},
    Named{surv::product::kConvertToMargin, "to margin"},
};

/// Codes of error records, and the one status that comes without a code.
constexpr std::array kErrors{
    Named{surv::code::kNetPosition, "net position"},
    Named{surv::code::kGrossExposure, "gross exposure"},
    Named{surv::code::kNetExposure, "net exposure"},
    Named{surv::code::kTurnover, "turnover"},
    Named{surv::code::kOrderValue, "order value"},
    Named{surv::code::kOrderQuantity, "order quantity"},
    Named{surv::code::kNoLimits, "no limits"},
    Named{surv::code::kPendingOrder, "pending order"},
    Named{surv::code::kNetSaleExposure, "net sale"},
    Named{surv::code::kMtmLoss, "mark to market"},
    Named{surv::code::kRefused, "product or margin"},
    Named{surv::code::kNetQuantity, "net quantity"},
    Named{surv::code::kNoRiskParameters, "no risk parameters"},
    Named{surv::status::kNoMarket, "no market price"},
};

/// Empty for a number that isn't in the table.
template <std::size_t Count>
constexpr std::string_view NameOf(const std::array<Named, Count>& names, int number) {
    for (const Named& row : names) {
        if (row.number == number) return row.name;
    }
    return {};
}

/// The levels of the hierarchy, lowest first, with the request's fields that name them.
struct Level {
    const char* code;
    const char* type;
    std::string_view name;
};

constexpr std::array kLevels{
    Level{"subClientCode", "subClientType", "sub client"},
    Level{"clientCode", "clientType", "client"},
    Level{"familyCode", nullptr, "family"},
    Level{"dealerCode", "dealerType", "dealer"},
    Level{"groupCode", "groupType", "group"},
};

constexpr std::string_view kAheadOfLevels = "ahead of the levels";

/// The kind of level that gave the verdict. A refusal ahead of the levels names the dealer, but no level type.
std::string_view LevelName(const Json& request, const Json& answer) {
    const std::string code = TextAt(answer, "failedLevelCode");
    const int type = LongAt(answer, "failedLevelType");
    if (code == "-") return "house";
    if (type == -1) return kAheadOfLevels;
    for (const Level& level : kLevels) {
        const int own = level.type ? LongAt(request, level.type) : surv::level::kFamily;
        if (TextAt(request, level.code) == code && own == type) return level.name;
    }
    return "other";
}

/// The record that tells what the order is: of the primary records the one given, else the stored order.
const Json& Subject(const Json& line) {
    for (const char* name : {"order", "tradeCorrection", "trade", "orderInfo"}) {
        if (line.contains(name)) return line[name];
    }
    return ObjectAt(line, "order");
}

/// "SCRIP EQ", "NIFTY 27NOV25", "NIFTY 27NOV25 24000CE".
std::string SymbolText(const Json& record) {
    const std::string symbol = TextAt(record, "symbol");
    const std::int32_t expiry = LongAt(record, "expiryDate");
    if (expiry == 0) return Squeezed(symbol + " " + TextAt(record, "series"));
    const std::int32_t strike = LongAt(record, "strikePrice");
    if (strike < 1) return fmt::format("{} {}", symbol, ExpiryText(expiry));
    return fmt::format("{} {} {:g}{}", symbol, ExpiryText(expiry), strike / 100.0, TextAt(record, "optionType"));
}

/// "G1/D1/C1", from the top down.
std::string PathText(const Json& request) {
    std::string path;
    for (const char* name : {"groupCode", "dealerCode", "clientCode", "subClientCode"}) {
        const std::string code = TextAt(request, name);
        if (!code.empty()) path += (path.empty() ? "" : "/") + code;
    }
    return path;
}

/// A correction names its side by a character, the other records by a number.
std::string SideText(const Json& record) {
    const std::string character = TextAt(record, "buySellCharacter");
    const int side = character.empty() ? LongAt(record, "buySell") : std::atoi(character.c_str());
    return side == surv::kBuy ? "buy" : side == surv::kSell ? "sell" : "";
}

/// The refusal without the account ahead of it and the empty " of " behind it.
std::string RefusalWords(const std::string& text) {
    const auto bar = text.find('|');
    std::string words = Squeezed(bar == std::string::npos ? text : text.substr(bar + 1));
    if (words.ends_with(" of")) words.resize(words.size() - 3);
    return words;
}

/// What the refusals of one rule have in common: their words up to the figures.
std::string RuleOf(std::string words) {
    constexpr std::string_view kFailed = "Order failed ";
    if (words.starts_with(kFailed)) words.erase(0, kFailed.size());
    for (const char* end : {" check", " Check", " where", " Limit exceeded", " exceeded", " (", " :", " across", "[",
                            " -First", " of Equity", " for the scrip - "}) {
        words.resize(std::min(words.find(end), words.size()));
    }
    words.resize(std::min(words.find_first_of("0123456789"), words.size()));
    return Squeezed(words);
}

Outcome OutcomeOf(const Json& line, const Json& answer) {
    if (LongAt(answer, "result") != surv::kDone) return Outcome::kNotDone;
    if (line["call"] == "UpdateSurveillance") return Outcome::kTaken;
    if (LongAt(line, "probe") != 0) return Outcome::kProbed;
    return LongAt(answer, "status") == surv::status::kPass ? Outcome::kAccepted : Outcome::kRefused;
}

/// REQUIRES: the words of the view are set.
void DescribeRefusal(const Played& played, OrderView& view) {
    const bool noMarket = LongAt(played.answer, "status") == surv::status::kNoMarket;
    view.errorCode = noMarket ? surv::status::kNoMarket : LongAt(played.answer, "errorCode");
    view.level = LevelName(ObjectAt(played.line, "request"), played.answer);
    if (view.level != kAheadOfLevels) view.levelCode = TextAt(played.answer, "failedLevelCode");
    view.rule = noMarket ? std::string(ErrorName(view.errorCode)) : RuleOf(view.words);
}

}  // namespace

std::optional<OrderView> ViewOrder(const Played& played) {
    const Json& call = played.line["call"];
    if (call != "CheckSurveillance" && call != "UpdateSurveillance") return std::nullopt;
    const Json& request = ObjectAt(played.line, "request");
    const Json& record = Subject(played.line);
    OrderView view;
    view.messageCode = static_cast<std::int16_t>(LongAt(request, "messageCode"));
    const std::string_view action = NameOf(kActions, view.messageCode);
    view.action = action.empty() ? fmt::format("message {}", view.messageCode) : std::string(action);
    view.product = NameOf(kProducts, LongAt(record, "productType"));
    view.side = SideText(record);
    view.quantity = LongAt(record, record.contains("tradedQuantity") ? "tradedQuantity" : "quantity");
    view.price = LongAt(record, record.contains("tradePrice") ? "tradePrice" : "price");
    view.symbol = SymbolText(record);
    view.path = PathText(request);
    view.outcome = OutcomeOf(played.line, played.answer);
    view.words = RefusalWords(TextAt(played.answer, "errorText"));
    if (view.outcome == Outcome::kRefused) DescribeRefusal(played, view);
    return view;
}

std::string_view ErrorName(int errorCode) { return NameOf(kErrors, errorCode); }

const Json& ObjectAt(const Json& object, const char* name) {
    static const Json kEmpty = Json::object();
    const auto found = object.find(name);
    return found != object.end() && found->is_object() ? *found : kEmpty;
}

std::string TextAt(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

double NumberAt(const Json& object, const char* name, double otherwise) {
    const auto found = object.find(name);
    return found != object.end() && found->is_number() ? found->get<double>() : otherwise;
}

std::int32_t LongAt(const Json& object, const char* name) { return static_cast<std::int32_t>(NumberAt(object, name)); }

}  // namespace survhost
