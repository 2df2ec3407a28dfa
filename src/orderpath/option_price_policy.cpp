#include <cstdlib>

#include "orderpath/policy_tests.h"
#include "platform/format.h"
#include "platform/numeric.h"
#include "service/manager.h"

namespace surv {
namespace {

constexpr double kPaisePerRupee = 100.0;
constexpr double kPercent = 100.0;

/// The two directions of the test, with their texts. Prices in texts are rupees.
struct Direction {
    std::int16_t side;
    PriceTest ProductReference::*test;
    const RefusalRow& call;  ///< strike, price of the underlying
    const RefusalRow& put;   ///< price of the underlying, strike
};
constexpr Direction kSelling{kSell, &ProductReference::sellPriceTest, refusal::kSellCallBelow, refusal::kSellPutBelow};
constexpr Direction kBuying{kBuy, &ProductReference::buyPriceTest, refusal::kBuyCallAbove, refusal::kBuyPutAbove};

bool Applies(const PolicyInput& in, const Direction& direction) {
    constexpr std::int16_t kModeWithTest = 1;
    const SurvContext& context = in.manager.Context();
    return context.settings.positionMode == kModeWithTest && (context.products.*direction.test).on &&
           in.order.buySell == direction.side && in.order.ExchangeMask() == kMaskNseDerivatives &&
           in.order.contract.strikePrice > 0;
}

/// Last price of the underlying, paise; 0 when none is known. A sale makes a record for one that is missing.
std::int32_t UnderlyingPrice(const PolicyInput& in, const Direction& direction) {
    auto& prices = in.manager.Context().products.tokenPrices;
    const std::int32_t token = in.order.underlyingToken;
    if (const tagTokenPriceRecord* record = prices.Find(token)) {
        return record->lastTradedPrice != 0 ? record->lastTradedPrice : record->closePrice;
    }
    if (direction.side == kSell) {
        tagTokenPriceRecord record{};
        record.token = token;
        record.exchange = kMaskNseCash;
        WriteField(record.symbol, FieldText(in.order.contract.symbol));
        WriteField(record.series, FieldText(in.order.contract.series));
        prices.FindOrMake(token, record);
    }
    return 0;
}

/// An order at market takes the worth of the option, in the request alone.
void PriceMarketOrder(const PolicyInput& in, std::int64_t intrinsic) {
    constexpr std::uint8_t kAtMarket = 1 << 6;
    tagOrderRequest* record = in.intake.view.order;
    if (!record || !(record->orderFlags & kAtMarket)) return;
    record->orderFlags = static_cast<std::uint8_t>(record->orderFlags & ~kAtMarket);
    record->price = ClampToInt32(static_cast<double>(std::abs(intrinsic)));
}

bool IsOutOfBand(const Direction& direction, std::int32_t price, std::int64_t intrinsic, double band) {
    const auto worth = static_cast<double>(intrinsic);
    if (direction.side == kSell) return price < worth - band;
    return intrinsic > 0 && price > worth + band;
}

PolicyVerdict TestPrice(PolicyInput& in, const Direction& direction) {
    if (!Applies(in, direction)) return std::nullopt;
    const std::int32_t ltp = UnderlyingPrice(in, direction);
    if (ltp == 0 && !IsSquareOffAtRoot(in)) {
        return RefusePolicy(refusal::kNoUnderlyingPrice);
    }
    const std::int32_t strike = in.order.contract.strikePrice;
    constexpr std::size_t kTypeLength = 2;
    const std::string_view type = FieldText(in.order.contract.optionType).substr(0, kTypeLength);
    const bool call = type == "CE" || type == "CA";
    const bool put = type == "PE" || type == "PA";
    if (ltp <= 0 || (!call && !put)) return std::nullopt;

    const std::int64_t intrinsic = call ? std::int64_t{ltp} - strike : std::int64_t{strike} - ltp;
    const double band =
        (in.manager.Context().products.*direction.test).bandPercent / kPercent * static_cast<double>(intrinsic);
    if (IsOutOfBand(direction, in.order.price, intrinsic, band) && !IsSquareOffAtRoot(in)) {
        const double strikeRupees = strike / kPaisePerRupee;
        const double ltpRupees = ltp / kPaisePerRupee;
        return call ? RefusePolicy(direction.call, Format(direction.call.text, strikeRupees, ltpRupees))
                    : RefusePolicy(direction.put, Format(direction.put.text, ltpRupees, strikeRupees));
    }
    PriceMarketOrder(in, intrinsic);
    return std::nullopt;
}

}  // namespace

PolicyVerdict TestSellPrice(PolicyInput& in) { return TestPrice(in, kSelling); }
PolicyVerdict TestBuyPrice(PolicyInput& in) { return TestPrice(in, kBuying); }

}  // namespace surv
