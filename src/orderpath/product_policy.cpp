#include <algorithm>
#include <array>

#include "orderpath/policy_tests.h"
#include "orderpath/product_table.h"
#include "platform/format.h"
#include "reference/preferences.h"
#include "service/manager.h"

namespace surv {
namespace {

using Preference = tagClientRiskPreferenceInfoForSurv;

const ProductPolicy* PolicyOf(std::int16_t productType) {
    const auto found = std::find_if(kProducts.begin(), kProducts.end(),
                                    [productType](const ProductPolicy& p) { return p.productType == productType; });
    return found == kProducts.end() ? nullptr : &*found;
}

const PreferenceMap* OwnPreferences(const CSurveillanceCategory* category) {
    return category ? category->ownPreferences : nullptr;
}

void NameFailedLevel(PolicyInput& in, std::string_view code) { WriteField(in.request.failedLevelCode, code); }

const tagProductTypeScripBasket* BasketOf(const PolicyInput& in) {
    return in.manager.Context().products.scripBaskets.Find(in.order.token);
}

std::string SymbolOf(const PolicyInput& in) { return std::string{FieldText(in.order.contract.symbol)}; }

// ---------------------------------------------------------------------------------------------------------------
// The holder's preference

PolicyVerdict NotSet(const char* name) {
    return RefusePolicy(refusal::kPreferenceNotSet, Format(refusal::kPreferenceNotSet.text, name));
}

/// A record that forbids the product refuses; none doesn't.
PolicyVerdict TestRecord(const Preference* record, const ProductPolicy& policy, const char* name) {
    if (!record || (record->allowedProducts & policy.flag)) return std::nullopt;
    return RefusePolicy(refusal::kProductNotAllowed, Format(refusal::kProductNotAllowed.text, name));
}

/// The dealer's own preferences: a missing record refuses too.
PolicyVerdict TestDealer(const PolicyInput& in, const ProductPolicy& policy, const char* name) {
    // Margin+ goes by the exchange that the head of the request names.
    const std::int32_t exchange =
        policy.productType == product::kMarginPlus ? in.request.exchangeMask : in.order.ExchangeMask();
    const Preference* record = OwnPreferences(in.hierarchy.At(Level::kDealer))->Find(exchange);
    return record ? TestRecord(record, policy, name) : NotSet(name);
}

/// The client's own preferences, else everybody's.
PolicyVerdict TestClient(const PolicyInput& in, const ProductPolicy& policy) {
    const PreferenceMap* map = OwnPreferences(in.hierarchy.At(Level::kClient));
    if (!map) map = in.manager.defaultRiskPreference;
    return map ? TestRecord(map->Find(in.order.ExchangeMask()), policy, policy.name) : NotSet(policy.name);
}

PolicyVerdict TestPreference(PolicyInput& in, const ProductPolicy& policy) {
    const bool dealerHasOwn = OwnPreferences(in.hierarchy.At(Level::kDealer)) != nullptr;
    if (in.IsOwnAccount()) {
        return dealerHasOwn ? TestDealer(in, policy, policy.ownAccountName) : std::nullopt;
    }
    if (IsOwnClient(in.request.dealerType) && dealerHasOwn) return TestDealer(in, policy, policy.name);
    return TestClient(in, policy);
}

/// Whose preference is asked, as the answer names it.
std::string_view AskedCode(const PolicyInput& in, const ProductPolicy& policy) {
    const bool dealer =
        in.IsOwnAccount() || (policy.productType == product::kMtf && IsOwnClient(in.request.dealerType));
    return dealer ? FieldText(in.request.dealerCode) : FieldText(in.request.clientCode);
}

/// A scrip that the product master closes to the product. A scrip without a record is open.
PolicyVerdict TestScrip(const PolicyInput& in, const ProductPolicy& policy) {
    const tagProductTypeScripBasket* basket = BasketOf(in);
    if (!basket || (basket->productFlags & policy.flag)) return std::nullopt;
    return RefusePolicy(refusal::kScripClosed, Format(refusal::kScripClosed.text, policy.name, SymbolOf(in).c_str()));
}

// ---------------------------------------------------------------------------------------------------------------
// Two-leg orders. Prices are rupees here, as the texts show them.

constexpr double kPaisePerRupee = 100.0;
constexpr double kTenThousand = 10000.0;
constexpr std::int16_t kSecondLeg = 2;

struct PriceRange {
    double low;
    double high;
    [[nodiscard]] bool Holds(double price) const { return price >= low && price <= high; }
};

struct LegPrices {
    double first;
    double second;
    double trigger;

    explicit LegPrices(const tagOrderInfoForSurv& order)
        : first(order.firstLegPrice / kPaisePerRupee),
          second(order.secondLegPrice / kPaisePerRupee),
          trigger(order.triggerPrice / kPaisePerRupee) {}
};

PriceRange DayRange(const tagProductTypeScripBasket& basket) {
    const double base = basket.basePrice / kPaisePerRupee;
    const double band = base * (basket.dailyBand / kTenThousand);
    return {base - band, base + band};
}

/// Between the bands of the two legs, each away from the other.
PriceRange TriggerRange(const tagProductTypeScripBasket& basket, const LegPrices& prices, bool sells) {
    const double firstBand = prices.first * (basket.firstLegBand / kTenThousand);
    const double secondBand = prices.second * (basket.secondLegBand / kTenThousand);
    const double x = sells ? prices.second - secondBand : prices.first - firstBand;
    const double y = sells ? prices.first + firstBand : prices.second + secondBand;
    return {std::min(x, y), std::max(x, y)};
}

PolicyVerdict TestLegsAgainstEachOther(const tagOrderInfoForSurv& order, const LegPrices& prices) {
    if (order.marginPlusLeg != kSecondLeg) {
        if (order.buySell == kBuy && order.firstLegPrice < order.secondLegPrice) {
            return RefusePolicy(refusal::kBuyLegsWrong,
                                Format(refusal::kBuyLegsWrong.text, prices.first, prices.second));
        }
        if (order.buySell == kSell && order.firstLegPrice > order.secondLegPrice) {
            return RefusePolicy(refusal::kSellLegsWrong,
                                Format(refusal::kSellLegsWrong.text, prices.first, prices.second));
        }
    }
    if (order.triggerPrice != order.secondLegPrice) return std::nullopt;
    return RefusePolicy(refusal::kTriggerIsLimit, Format(refusal::kTriggerIsLimit.text, prices.trigger, prices.second));
}

PolicyVerdict TestRanges(const PolicyInput& in, const tagProductTypeScripBasket& basket, const LegPrices& prices) {
    const std::string symbol{Trimmed(FieldText(in.order.contract.symbol))};
    const PriceRange day = DayRange(basket);
    const PriceRange trigger = TriggerRange(basket, prices, in.order.buySell == kSell);
    if (!day.Holds(prices.first)) {
        return RefusePolicy(refusal::kFirstLegOutOfDay,
                            Format(refusal::kFirstLegOutOfDay.text, day.low, day.high, symbol.c_str()));
    }
    if (!day.Holds(prices.second)) {
        return RefusePolicy(refusal::kLimitOutOfDay,
                            Format(refusal::kLimitOutOfDay.text, day.low, day.high, symbol.c_str()));
    }
    if (!trigger.Holds(prices.trigger)) {  // shown from its upper end
        return RefusePolicy(refusal::kTriggerOutOfRange,
                            Format(refusal::kTriggerOutOfRange.text, trigger.high, trigger.low, symbol.c_str()));
    }
    return std::nullopt;
}

PolicyVerdict TestLeastValue(const PolicyInput& in, const LegPrices& prices) {
    const double least = in.manager.Context().settings.marginPlusMinOrderValue;
    const double value = prices.first * in.order.firstLegQuantity;
    if (least <= 0 || value >= least) return std::nullopt;
    return RefusePolicy(refusal::kLeastMarginPlusValue, Format(refusal::kLeastMarginPlusValue.text, least, value));
}

}  // namespace

PolicyVerdict TestProduct(PolicyInput& in) {
    const ProductPolicy* policy = PolicyOf(in.order.productType);
    if (!policy) return std::nullopt;
    if (!policy->ownAccountName) return TestScrip(in, *policy);
    NameFailedLevel(in, AskedCode(in, *policy));
    if (policy->productType == product::kMtf && !in.IsOwnAccount()) {
        if (PolicyVerdict refusal = TestScrip(in, *policy)) return refusal;
    }
    return TestPreference(in, *policy);
}

PolicyVerdict TestMarginPlusShape(PolicyInput& in) {
    const tagOrderInfoForSurv& order = in.order;
    if (order.productType != product::kMarginPlus) return std::nullopt;
    const tagProductTypeScripBasket* basket = BasketOf(in);
    if (!basket) {
        NameFailedLevel(in, kRootCode);
        return RefusePolicy(refusal::kNoBasket);
    }
    if (PolicyVerdict refusal = TestScrip(in, *PolicyOf(product::kMarginPlus))) return refusal;
    const LegPrices prices(order);
    if (PolicyVerdict refusal = TestLegsAgainstEachOther(order, prices)) return refusal;

    constexpr std::int16_t kChange = 2040;
    const bool second = order.marginPlusLeg == kSecondLeg;
    if (!second && order.marginPlusLeg != 0) return std::nullopt;
    const bool unpricedChange = in.intake.view.message->code == kChange && order.firstLegPrice == order.secondLegPrice;
    if (second && unpricedChange) return std::nullopt;
    if (PolicyVerdict refusal = TestRanges(in, *basket, prices)) return refusal;
    return second ? std::nullopt : TestLeastValue(in, prices);
}

const PreferenceMap* AfterMarketPreferences(const tagSurveillanceInfo& request, const tagOrderInfoForSurv& order,
                                            const CHierarchy& hierarchy) {
    const int dealerType = request.dealerType;
    const bool dealer = order.proClient == kProClientOwn || IsOwnClient(dealerType) || dealerType == 1;
    return OwnPreferences(hierarchy.At(dealer ? Level::kDealer : Level::kClient));
}

PolicyVerdict TestAfterMarket(PolicyInput& in) {
    constexpr std::uint8_t kAfterMarketChecked = 1 << 3;  // of fundFlags
    tagOrderInfoForSurv& order = in.order;
    const bool delivery = order.productType == product::kAmoDelivery;
    if (!delivery && order.productType != product::kAmoMargin) return std::nullopt;

    const PreferenceMap* map = AfterMarketPreferences(in.request, order, in.hierarchy);
    if (!map) return std::nullopt;
    const Preference* overall = map->Find(kOverallPreference);
    if (!overall) return NotSet("AMO");
    if (!(overall->fundFlags & kAfterMarketChecked)) return PolicyAnswer{PolicyEnd::kPassesAtOnce, {}};
    if (!delivery) return std::nullopt;
    if (in.IsOwnAccount()) return RefusePolicy(refusal::kAfterMarketOwnDelivery);
    order.productType = product::kDelivery;
    return std::nullopt;
}

}  // namespace surv
