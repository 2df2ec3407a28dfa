#include "scan.h"

#include <algorithm>
#include <cmath>

#include "surveillance/codes.h"

namespace soak {

using namespace surv;

std::array<View, kViews> ViewsOf(const Position& p) {
    const auto of = [](const Position::Amount& b, const Position::Amount& s) {
        return View{static_cast<double>(b.quantity), static_cast<double>(s.quantity), b.value, s.value};
    };
    return {of(p.orderBuy, p.orderSell), of(p.tradedBuy, p.tradedSell), of(p.orderBuy, p.tradedSell),
            of(p.tradedBuy, p.orderSell)};
}

// ---------------------------------------------------------------------------------------------------------------
// Derivatives

namespace {

double Preferred(double margin, const OwnMargin& own, double value, double divisor) {
    const double preferred = own.rate / divisor * value;
    if (own.mode == 1) return preferred;
    return own.mode == 2 && own.rate != 0 ? std::max(margin, preferred) : margin;
}

double FuturesExposure(const View& view, std::int16_t exchange, const Rates& rates, const OwnMargin& own) {
    const double value = std::abs(view.Value());
    if (exchange == kMaskMcx) {
        const double rate = view.Net() > 0 ? rates.onLong : rates.onShort;
        return view.Net() == 0 ? 0 : Preferred(rate / 1e8 * value, own, value, 1e8);
    }
    if (exchange == kMaskBseDerivatives) return 0;
    return Preferred(rates.additional / (exchange == kMaskNcdex ? 1e6 : 1e8) * value, own, value, 1e8);
}

/// Commodities have one more, of what is bought or sold beyond the other side.
double CommodityExposure(const View& view, std::int16_t exchange, const Rates& rates) {
    const double bought = view.Net() > 0 ? view.Value() : 0;
    const double sold = view.Net() < 0 ? std::max(-view.Value(), 0.0) : 0;
    return std::max(rates.onBuys * bought, rates.onSells * sold) / (exchange == kMaskMcx ? 1e8 : 1e6);
}

/// Of what is written.
double OptionExposure(const View& view, double strike, const Rates& rates, const OwnMargin& own) {
    if (view.Net() >= 0) return 0;
    const double value = std::max(-view.Net() * strike - view.Value(), 0.0) / 100;
    return Preferred(rates.additional / 1e6 * value, own, value, 1e6);
}

}  // namespace

Views FiguresOf(const Event& about, const Position& position, const Risk* risk, const Rates& rates,
                const OwnMargin& own) {
    constexpr std::int32_t kNear = 311460;  // seconds to expiry up to which a contract has no spread
    const std::int16_t exchange = about.exchangeMask;
    const bool mcx = exchange == kMaskMcx;
    const Risk r = risk ? *risk : Risk{};
    const bool priced = mcx || r.price != 0;
    const bool far = mcx || about.expiryDate - kTradingDayBase > kNear;
    Views views{};
    const std::array<View, kViews> cases = ViewsOf(position);
    for (std::size_t v = 0; v < kViews; ++v) {
        const View& view = cases[v];
        Figures& f = views[v];
        f[kSpread] = far ? view.Net() * (mcx ? 1.0F : r.delta) : 0;
        if (about.strikePrice > 0) {
            f[kShortOptions] = priced ? std::max(-view.Net(), 0.0) : 0;
            f[kLongOptions] = priced ? std::max(view.Net(), 0.0) : 0;
            f[kNetOptionValue] = view.Net() * r.price / 100;
            f[kOptionValue] = risk ? view.Value() : 0;
            if (priced && exchange == kMaskNseDerivatives)
                f[kExposure] = OptionExposure(view, about.strikePrice, rates, own);
        } else if (priced) {
            f[kFutures] = std::abs(view.Net());
            f[kFuturesExposure] = f[kExposure] = FuturesExposure(view, exchange, rates, own);
            if ((mcx || exchange == kMaskNcdex) && own.mode == 0)
                f[kExposure] += CommodityExposure(view, exchange, rates);
        }
        for (std::size_t i = 0; i < r.losses.size(); ++i) f[kLosses + i] = static_cast<float>(view.Net() * r.losses[i]);
    }
    return views;
}

namespace {

/// To whole rupees; a half goes down.
double Rounded(double rupees) { return std::ceil(rupees) - rupees >= 0.5 ? std::floor(rupees) : std::ceil(rupees); }

/// One view of an underlying.
struct Sums {
    Figures all{};
    double spreadLong = 0, spreadShort = 0;
    // Of expiries that have a future, or had.
    double longPosition = 0, shortPosition = 0, longMargin = 0, shortMargin = 0;

    /// Exposure margin less the benefit of expiries that stand against each other.
    [[nodiscard]] double Netted(double share) const {
        const double bought = longPosition, sold = -shortPosition;
        if (bought == 0 && sold == 0) return all[kExposure];
        const double benefit =
            bought < sold ? longMargin + bought / sold * shortMargin : shortMargin + sold / bought * longMargin;
        return all[kExposure] - share * benefit;
    }
    [[nodiscard]] double WorstLoss() const { return *std::max_element(all.begin() + kLosses, all.end()); }
    [[nodiscard]] double Spread() const { return std::min(spreadLong, -spreadShort); }
};

Sums SumsOf(const Underlying& underlying, std::size_t v) {
    Sums sums;
    for (const auto& [date, contracts] : underlying.expiries) {
        Figures expiry{};
        bool hasFuture = false;
        for (const auto& [token, contract] : contracts) {
            if (!contract.figures) continue;
            for (std::size_t f = 0; f < kFigures; ++f) expiry[f] += (*contract.figures)[v][f];
            hasFuture |= contract.about.strikePrice < 0;
        }
        for (std::size_t f = 0; f < kFigures; ++f) sums.all[f] += expiry[f];
        const bool bought = expiry[kSpread] >= 0;
        (bought ? sums.spreadLong : sums.spreadShort) += expiry[kSpread];
        if (!hasFuture) continue;
        (bought ? sums.longPosition : sums.shortPosition) += expiry[kSpread];
        (bought ? sums.longMargin : sums.shortMargin) += expiry[kFuturesExposure];
    }
    return sums;
}

/// A book of long options alone may earn nothing but what its scan leaves of its worth.
double Scanned(const Charges& charges, double loss, double spread, const Figures& book) {
    const double value = book[kNetOptionValue];
    const bool longOptions = book[kFutures] == 0 && book[kShortOptions] == 0 && book[kLongOptions] > 0;
    if (longOptions) return std::min(loss - value, 0.0);
    return std::max(loss + Rounded(charges.spread * spread), Rounded(charges.shortOption * book[kShortOptions])) -
           value;
}

}  // namespace

Reading Underlying::Read() const {
    std::array<Sums, kViews> views;
    for (std::size_t v = 0; v < kViews; ++v) views[v] = SumsOf(*this, v);
    Reading reading{};
    double exposure = -HUGE_VAL;
    for (const Sums& view : views) exposure = std::max(exposure, view.Netted(mcx ? 0.66 : 0.8333));
    if (mcx) {  // no scan: the exposure margin is the margin
        reading[kOrderSide] = views[0].Netted(0.66), reading[kTradedSide] = views[kTradedView].Netted(0.66);
        reading[kWorst] = exposure;
        return reading;
    }
    const Charges c = charges.value_or(Charges{});
    // The worst case: the largest loss, quantities of their own largest, the smallest spread and worth.
    double loss = -HUGE_VAL, spread = HUGE_VAL;
    Figures book = views[0].all;
    for (const Sums& view : views) {
        loss = std::max(loss, view.WorstLoss()), spread = std::min(spread, view.Spread());
        for (const Figure f : {kShortOptions, kLongOptions, kFutures}) book[f] = std::max(book[f], view.all[f]);
        book[kNetOptionValue] = std::min(book[kNetOptionValue], view.all[kNetOptionValue]);
    }
    const auto one = [&](const Sums& view) { return Scanned(c, view.WorstLoss(), view.Spread(), view.all); };
    reading[kOrderSide] = one(views[0]), reading[kTradedSide] = one(views[kTradedView]);
    reading[kWorst] = Scanned(c, loss, spread, book);
    reading[kExposureMargin] = exposure;
    reading[kPremiumOrder] = views[0].all[kOptionValue];
    reading[kPremiumTraded] = views[kTradedView].all[kOptionValue];
    reading[kPremiumWorst] = views[kWorstView].all[kOptionValue];
    return reading;
}

// ---------------------------------------------------------------------------------------------------------------
// Equity

namespace {

/// The largest value and the largest quantity, each over the views that it may come from.
template <class Charge>
Margins PerRowView(const Position& p, bool together, Charge charge) {
    std::array<double, kViews> values{}, quantities{};
    const std::array<View, kViews> views = ViewsOf(p);
    const double sign = together ? 1 : -1;
    for (std::size_t v = 0; v < kViews; ++v) {
        values[v] = std::abs(views[v].buyValue + sign * views[v].sellValue);
        quantities[v] = std::abs(views[v].buyQty + sign * views[v].sellQty);
    }
    return {charge(values[0], quantities[0]), charge(values[kTradedView], quantities[kTradedView]),
            charge(*std::max_element(values.begin(), values.end()),
                   *std::max_element(quantities.begin(), quantities.end()))};
}

}  // namespace

Margins CashMargins(const Position& position, const ScripRate& rate, const OwnMargin& own, bool together) {
    const double percent = together ? 10000 : rate.rate;
    return PerRowView(position, together, [&](double value, double quantity) {
        if (quantity == 0) return 0.0;
        const double preferred = own.rate / 10000 * value / 10000;  // NOLINT: whole percents count
        if (rate.basis == 2 && own.mode != 2) return quantity * percent / 100;
        if (own.mode == 1) return preferred;
        const double margin = value / 100 * (percent == 0 ? 1 : percent / 10000);
        if (own.mode == 2) return std::max(margin, preferred);
        return rate.basis > 2 ? 0 : margin;
    });
}

Margins FundingMargins(const Position& position, const OwnMargin& own) {
    return PerRowView(position, false, [&](double value, double quantity) {
        return quantity == 0 ? 0.0 : value / 100 * own.funding / 1e6;
    });
}

Margins NetBuys(const Position& position) {
    Margins margins = Worth(position, false);
    for (double& margin : margins) margin = std::max(margin, 0.0);
    return margins;
}

Margins Worth(const Position& position, bool nri) {
    std::array<double, kViews> values{};
    const std::array<View, kViews> views = ViewsOf(position);
    for (std::size_t v = 0; v < kViews; ++v) values[v] = (nri ? views[v].buyValue : views[v].Value()) / 100;
    return {values[0], values[kTradedView], *std::max_element(values.begin(), values.end())};
}

}  // namespace soak
