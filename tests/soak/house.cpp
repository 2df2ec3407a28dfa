#include "house.h"

#include <array>

#include "surveillance/codes.h"

namespace soak {
namespace {

constexpr std::int32_t kDay = 86400;
constexpr std::int32_t kScripGroup = -101;

/// As many daily masks as expiry ones, so that no list of stores ends early.
const std::vector<int> kWideMasks{2, 3, 0x10, 0x11, 0x12, 0x13, 0xE, 0xF, 0x7E, 0x7F, 0x180, 0x181, 0x1FE, 0x1FF};
const std::vector<int> kWithoutNseEquity{0x10, 0x11, 0x12, 0x13, 0xE, 0xF, 0x7E, 0x7F, 0x180, 0x181, 0x1FE, 0x1FF};
/// With rows of each market beside those of several.
const std::vector<int> kEveryMask{2,    3,    0x10, 0x11, 0x12, 0x13,  0xC,   0xD,   0xE,   0xF,   0x60,
                                  0x61, 0x7E, 0x7F, 0x80, 0x81, 0x100, 0x101, 0x180, 0x181, 0x1FE, 0x1FF};
const std::vector<int> kNarrowMasks{2, 3, 0x10, 0x11, 0xC, 0xD, 0x60, 0x61, 0x80, 0x81, 0x100, 0x101};

std::string Code(char letter, int number) {
    return std::string{letter}.append(number < 10 ? "0" : "").append(std::to_string(number));
}

Json RiskMessage(int code, std::int16_t segment, bool staged) {
    return {{"call", "ProcessRPFInfo"}, {"messageCode", code}, {"segment", segment}, {"toStaging", staged ? 1 : 0}};
}

}  // namespace

CHouse::CHouse(CDice& dice, DayKind kind) : dice_(dice), kind_(kind) {
    style.positionMode = static_cast<std::int16_t>(dice.Pick(0, 3));
    style.mtmMode = dice.Among<std::int16_t>(1, 1, 7, 3);
    style.told = dice.OneIn(3);
    style.products = dice.OneIn(2);
    style.conversions = style.products && dice.OneIn(2);
    style.openLevels = dice.OneIn(3);
    style.riskFiles = dice.OneIn(2);
    style.oddCalls = dice.OneIn(2);
    style.dealerOnly = dice.OneIn(4);
    style.lotWeights = dice.OneIn(3);
    style.levels = dice.OneIn(2);
    style.orderBased = dice.OneIn(5);
    afterStop_ = style;
    if (kind_ == DayKind::kStopped) {
        afterStop_.conversions = false;
        style.products = style.conversions = style.openLevels = style.oddCalls = style.clientLevel = style.seldomCodes =
            style.dealerOnly = false;
    }
    style.premiums = kind_ == DayKind::kWhole;
    if (kind_ == DayKind::kWhole) style.preferences = dice.OneIn(2), style.heldBack = dice.OneIn(2);
    if (kind_ == DayKind::kUnlimited) style.limits = style.openLevels = style.conversions = style.riskFiles = false;
    profits_ = dice.Among(0, 0, 2, 10);
    MakeInstruments();
    MakeHolders();
}

const std::vector<int>& CHouse::MasksOf(const std::string& entity) const {
    if (entity[0] == 'C' || entity[0] == 'S') return kNarrowMasks;
    if (entity == "D00" || entity == "G00") return kEveryMask;
    // A start forms what no row shows from positions, where the day has it from events.
    return kind_ == DayKind::kWhole && entity.back() == '1' ? kWithoutNseEquity : kWideMasks;
}

/// The last scrip of each cash exchange is the NRI clients' own: they count buys and sells together, others against
/// each other.
void CHouse::MakeInstruments() {
    constexpr std::int32_t kBoundary = 311460;  // seconds to expiry at which a contract is neither near nor far
    const std::int32_t near = kTradingDayBase + dice_.Among(2 * kDay, kBoundary, kBoundary + 1, 20 * kDay);
    const std::int32_t far = kTradingDayBase + 50 * kDay;
    const auto equity = [this](std::int16_t exchange, std::int32_t token) {
        instruments.push_back({exchange, token});
        instruments.back().marginBasis = dice_.Pick(0, 3), instruments.back().marginRate = dice_.Among(0, 875, 1750);
    };
    for (const std::int32_t token : {101, 1'000'002, 199}) equity(surv::kMaskNseCash, token);
    for (const std::int32_t token : {201, 299}) equity(surv::kMaskBseCash, token);
    for (const std::int16_t exchange : {surv::kMaskNseDerivatives, surv::kMaskBseDerivatives}) {
        const std::int32_t first = exchange * 100;
        instruments.push_back({exchange, first + 1, -1, near, first});
        instruments.push_back({exchange, first + 2, -1, far, first});
        instruments.push_back({exchange, first + 3, 24000, far + 30 * kDay, first});
        instruments.push_back({exchange, first + 4, 26000, near, first});
        instruments.push_back({exchange, first + 5, -1, far + 30 * kDay, first});
    }
    for (const std::int16_t exchange : {surv::kMaskMcx, surv::kMaskNcdex}) {
        for (const std::int32_t token : {1, 2, 3}) {
            const std::int32_t expiry = token == 1 ? near : far + dice_.Pick(0, 1) * token * kDay;
            instruments.push_back({exchange, exchange * 100 + token, -1, expiry, 90});
        }
    }
    for (Instrument& i : instruments) {
        if (dice_.OneIn(3)) i.scripGroup = dice_.Among(kScripGroup, kScripGroup + 1);
        i.factors = FactorsOf(i.exchangeMask);
    }
}

/// Worths are quarters of a paisa: those that aren't whole hundredths are rounded.
Json CHouse::FactorsOf(std::int16_t exchangeMask) {
    if (exchangeMask == surv::kMaskNcdex)
        return {{"priceMultiplier", style.lotWeights ? dice_.Among(10000, 2500, 12345) : 10000}};
    Json factors{{"priceMultiplier", 1}};
    if (exchangeMask != surv::kMaskMcx || !style.lotWeights) return factors;
    factors["priceNumerator"] = dice_.Pick(1, 5), factors["priceDenominator"] = dice_.Among(0, 1, 2);
    factors["generalNumerator"] = dice_.Pick(1, 3), factors["generalDenominator"] = dice_.Among(1, 2);
    factors["lotMultiplier"] = dice_.Among(1, 5, 100);
    return factors;
}

void CHouse::MakeHolders() {
    using Place = std::pair<int, int>;
    const auto add = [this](const std::string& code, int level, int second = -1) {
        entities.push_back(code);
        places_.emplace_back(level, second);
    };
    const auto addAnywhere = [&](const std::string& code, Place usual, auto... others) {
        const auto [level, second] = style.levels ? dice_.Among(usual, others...) : usual;
        add(code, level, second);
    };
    const int groups = dice_.Pick(1, 2), dealers = dice_.Pick(1, 3), families = dice_.Pick(0, 2);
    add("-", 7, 7);
    add("*****", 0);
    for (int i = 0; i < groups; ++i) {
        addAnywhere(Code('G', i), {0, 7}, Place{6, 6}, Place{0, 6}, Place{1, 6}, Place{130, 7}, Place{131, 7},
                    Place{130, 6}, Place{131, 6}, Place{4, 7}, Place{6, 0}, Place{7, 7}, Place{7, 0});
    }
    for (int i = 0; i <= dealers; ++i) {
        addAnywhere(Code('D', i), {1, -1}, Place{1, 7}, Place{1, 6}, Place{0, 7}, Place{6, 6}, Place{7, 7});
    }
    for (int i = 0; i < families; ++i) addAnywhere(Code('F', i), {8, -1}, Place{8, 6}, Place{8, 7});
    for (int i = dice_.Pick(2, 6); i > 0; --i) {
        Holder holder;
        holder.client = Code('C', i), holder.dealer = Code('D', i % dealers), holder.group = Code('G', i % groups);
        holder.clientType = dice_.Among(2, 2, 2, 1, 3, 4, 5);
        if (style.levels) holder.clientType = dice_.Among(2, 2, 1, 1, 6, 3, 5), holder.groupType = dice_.Among(0, 6);
        holder.nri = holder.clientType == 2 && dice_.OneIn(4);
        if (families > 0 && dice_.OneIn(2)) holder.family = Code('F', i % families);
        add(holder.client, holder.clientType);
        if (holder.clientType == 2 && dice_.OneIn(3)) {
            holder.subClient = Code('S', i), holder.subClientType = style.levels ? dice_.Among(12, 1) : 12;
            add(holder.subClient, 12);
        }
        holders.push_back(holder);
    }
    Holder own;  // a dealer that is its own client
    own.group = Code('G', 0), own.dealer = own.client = Code('D', dealers), own.clientType = 255, own.dealerType = 4;
    holders.push_back(own);
    Holder house;  // the house's own orders
    house.group = Code('G', 0), house.dealer = house.client = Code('D', 0), house.clientType = 255, house.proClient = 2;
    holders.push_back(house);
}

void SetSomeLimit(CDice& dice, Json& row) {
    constexpr double kLot = 25000.0 * 5;  // what an order comes to is a multiple of this more often than not
    const auto money = [&] { return kLot * dice.Among(1, 2, 5, 10, 20, 40, 80, 200); };
    switch (dice.Pick(0, 10)) {
        case 0: row["grossExposureLimit"] = money(); break;
        case 1: row["netExposureLimit"] = money(); break;
        case 2: row["netSaleExposureLimit"] = money(); break;
        case 3: row["netPositionLimit"] = money(); break;
        case 4: row["turnoverLimit"] = 10 * money(); break;
        case 5: row["pendingOrderLimit"] = money(); break;
        case 6: row["maxSingleOrderValue"] = money(); break;
        case 7: row["maxSingleOrderQty"] = dice.Among(5, 50, 100, 150); break;
        case 8: row["marginLimit"] = 4 * money(); break;
        case 9: row["netQuantityLimit"] = dice.Among(5, 100, 150, 200); break;
        default: row["mtmLossLimit"] = dice.Among(0.0, 500.0, 125000.0); break;
    }
}

Json CHouse::BareRow(const std::string& entity, int mask, std::int32_t token) const {
    Json row{{"entityCode", entity}, {"token", token}, {"limitMask", mask}};
    for (std::size_t i = 0; i < entities.size(); ++i) {
        if (entities[i] != entity) continue;
        if (places_[i].first != 0) row["entityLevel"] = places_[i].first;
        row["subLevel"] = places_[i].second;
    }
    return row;
}

Json CHouse::LimitRow(const std::string& entity, int mask) {
    Json row = BareRow(entity, mask, surv::kAllSecurities);
    if (!style.limits) return row;
    if (dice_.OneIn(8)) {
        row["baseFund"] = 1e8, row["netExposureMultiplier"] = dice_.Among(10000, 25000);
        row["netExposureLimit"] = 1e8;
        row["limitOptions"] = dice_.Among(0, 1, 0x30);
    }
    constexpr int kPremiumInMargin = 4;
    if (style.premiums && dice_.OneIn(4)) row["limitOptions"] = row.value("limitOptions", 0) | kPremiumInMargin;
    if (dice_.OneIn(entity[0] == 'C' ? 6 : 14)) SetSomeLimit(dice_, row);
    return row;
}

Json CHouse::Start() {
    Json call{{"call", "InitializeSurvManager"},
              {"positionMode", style.positionMode},
              {"rpfMarginMode", 1},
              {"mtmMode", style.mtmMode},
              {"featureBits", 0x10},
              {"limitDetailMessages", 1}};
    Json limits = Json::array(), holdings = Json::array(), securities = Json::array(), receipts = Json::array();
    for (const std::string& entity : entities) {
        for (const int mask : MasksOf(entity)) limits.push_back(LimitRow(entity, mask));
        if (entity[0] == 'C' && dice_.OneIn(3)) {
            Json row = LimitRow(entity, 3);
            row["token"] = 101;
            limits.push_back(std::move(row));
        }
        for (const int mask : MasksOf(entity)) {
            if (!dice_.OneIn(4)) continue;
            for (const std::int32_t token : {dice_.PickOf(instruments).token, kScripGroup + dice_.Pick(0, 1)}) {
                if (token != 101 || mask != 3) limits.push_back(BareRow(entity, mask, token));  // no row stands twice
            }
        }
        if (entity[0] != 'C' && entity[0] != 'D') continue;
        holdings.push_back({{"categoryCode", entity},
                            {"isinCode", kIsin},
                            {"holdingQty", style.limits ? dice_.Among(0, 100, 5000) : 1'000'000},
                            {"collateralQty", dice_.Among(0, 50, 5000)},
                            {"collateralPrice", 1000.0},
                            {"haircutRate", dice_.Among(0, 2500)}});
        if (dice_.OneIn(3)) {
            receipts.push_back(
                {{"categoryCode", entity}, {"limitMask", dice_.Among(3, 0x11)}, {"quantity", 50}, {"isinCode", kIsin}});
        }
    }
    for (const Instrument& i : instruments) {
        if (!surv::IsCashExchange(i.exchangeMask)) continue;
        securities.push_back({{"token", i.token}, {"isinCode", kIsin}, {"exchange", i.exchangeMask}});
    }
    call["limitList"] = std::move(limits);
    call["dpList"] = std::move(holdings);
    call["securityList"] = std::move(securities);
    call["sarList"] = std::move(receipts);
    return call;
}

/// Every entity but the families, whose preference would go ahead of a client's own in a check and behind it in an
/// event.
Script CHouse::Preferences() {
    Script calls;
    for (const std::string& entity : entities) {
        if (entity[0] == 'F') continue;
        for (const int exchange : {1, 2, 4, 8, 0x10, 0x40, -1}) {
            calls.push_back({{"call", "AddUpdateClientPreferencesInfo"}, {"preference", Preference(entity, exchange)}});
        }
    }
    return calls;
}

Json CHouse::Preference(const std::string& entity, int exchange) {
    constexpr int kPremiumCounts = 0x20;
    Json record{
        {"preferenceCode", entity}, {"exchange", exchange}, {"token", surv::kAllSecurities}, {"allowedProducts", 15}};
    if (exchange == -1) {
        record["fundFlags"] = 8;
        return record;
    }
    record["marginAddOnFactor"] = dice_.Among(0, 0, 50'000, 100'000), record["prefExtraMarginRate"] = 250'000;
    record["marginFlags"] = profits_ | (style.premiums && dice_.OneIn(4) ? kPremiumCounts : 0);
    record["prefMarginMode"] = dice_.Among(0, 0, 1, 2), record["prefMarginRate"] = dice_.Among(0, 73'456, 146'912);
    return record;
}

Json Touchline(std::int16_t exchangeMask, std::int32_t token, int price) {
    Json prices{{"exchange", exchangeMask},   {"token", token},
                {"lastTradedPrice", price},   {"bestBuyPrice", price - 5},
                {"bestSellPrice", price + 5}, {"closePrice", 24900}};
    return {{"call", "AddAndComputeMTM"}, {"compute", 1}, {"touchline", std::move(prices)}};
}

Script CHouse::RiskFile(std::int16_t exchangeMask, bool staged) {
    Script calls{RiskMessage(28001, exchangeMask, true)};
    std::int32_t underlying = 0;
    for (const Instrument& i : instruments) {
        if (i.exchangeMask != exchangeMask) continue;
        if (i.underlyingToken != underlying) {
            underlying = i.underlyingToken;
            Json message = RiskMessage(28006, exchangeMask, staged);
            Json& charges = charges_[exchangeMask];
            // Accounts take new charges with their next order: a day that goes on afresh must not bring any.
            if (charges.empty() || kind_ == DayKind::kWhole) {
                charges = {{"underlyingToken", underlying},
                           {"calendarSpreadCharge", dice_.Pick(1, 8)},
                           {"shortOptionMinimumCharge", 0.25 * dice_.Pick(1, 40)}};
            }
            message["underlying"] = charges;
            calls.push_back(std::move(message));
        }
        if (style.heldBack && dice_.OneIn(4)) continue;
        Json losses = Json::array();
        const int slope = dice_.Pick(-3, 6);
        for (int n = 0; n < 16; ++n) losses.push_back((n - 7) * slope + dice_.Pick(0, 30));
        Json message = RiskMessage(28009, exchangeMask, staged);
        message["contract"] = {{"expiryDate", i.expiryDate},
                               {"strikePrice", i.strikePrice},
                               {"token", i.token},
                               {"underlyingToken", i.underlyingToken},
                               {"contractPrice", dice_.OneIn(12) ? 0 : dice_.Pick(24000, 26000)},
                               {"compositeDelta", i.strikePrice > 0 ? 0.25 * dice_.Pick(-3, 3) : 1.0},
                               {"riskArray", std::move(losses)}};
        calls.push_back(std::move(message));
    }
    if (staged) calls.push_back(RiskMessage(28002, exchangeMask, true));
    return calls;
}

Script CHouse::Opening() {
    Script calls{{{"call", "@clock"}, {"now", kNow}},
                 {{"call", "MTMTimeIntervalAndTickCount"}, {"seconds", 0}, {"ticks", 1}}};
    if (style.lotWeights) calls.push_back({{"call", "InitializeMCXLOTWeightOnOrOff"}, {"value", 1}});
    if (style.orderBased) calls.push_back({{"call", "SetOrderBasedPosition"}, {"value", 1}});
    Json baskets = Json::array(), rates = Json::array();
    for (const Instrument& i : instruments) {
        if (surv::IsCashExchange(i.exchangeMask)) {
            baskets.push_back({{"token", i.token},
                               {"productFlags", 15},
                               {"basePrice", 25000},
                               {"firstLegBand", 1000},
                               {"secondLegBand", 1000},
                               {"dailyBand", 1000}});
        } else if (!dice_.OneIn(6)) {
            rates.push_back({{"exchange", i.exchangeMask},
                             {"token", i.token},
                             {"additionalMarginRate", i.exchangeMask == surv::kMaskNcdex ? 400 : 50000},
                             {"longMarginRate", 30000},
                             {"shortMarginRate", 40000},
                             {"buyExposureRate", 150},
                             {"sellExposureRate", 250}});
        }
    }
    calls.push_back({{"call", "InitializeProductMasterInfo"}, {"records", std::move(baskets)}});
    calls.push_back({{"call", "InitializeAllAdditionalMarginInfo"}, {"map", std::move(rates)}});
    calls.push_back(Start());
    calls.push_back({{"call", "ComputeMTMOnOrOff"}, {"mode", 7}});
    for (const std::int16_t exchange : {surv::kMaskNseDerivatives, surv::kMaskBseDerivatives, surv::kMaskNcdex}) {
        for (Json& call : RiskFile(exchange)) calls.push_back(std::move(call));
    }
    for (Json& call : Preferences()) calls.push_back(std::move(call));
    return calls;
}

}  // namespace soak
