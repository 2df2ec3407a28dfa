#include "support/margin_from_scratch.h"

#include <algorithm>
#include <cmath>

#include "platform/format.h"

namespace surv::test {
namespace {

enum View : std::size_t { kOrderSide, kTradedSide, kLongWorst, kShortWorst };
using Views = PerView<Figures>;

struct Deal {
    double buyQty, sellQty, buyValue, sellValue;

    Deal(const tagSurvPositionData& p, std::size_t view) {
        const bool openBuys = view == kOrderSide || view == kLongWorst;
        const bool openSells = view == kOrderSide || view == kShortWorst;
        buyQty = static_cast<double>(openBuys ? p.orderBuyQty : p.tradedBuyQty);
        buyValue = openBuys ? p.orderBuyValue : p.tradedBuyValue;
        sellQty = static_cast<double>(openSells ? p.orderSellQty : p.tradedSellQty);
        sellValue = openSells ? p.orderSellValue : p.tradedSellValue;
    }
};

double ByPreference(double margin, const MarginPreference& preference, double value, double divisor) {
    const double own = preference.marginRate / divisor * value;
    if (preference.mode == 1) return own;
    return preference.mode == 2 && preference.marginRate != 0 ? std::max(margin, own) : margin;
}

double FuturesExposure(const Deal& deal, std::int16_t mask, const ExposureRates& rates, const MarginPreference& own) {
    const double value = std::abs(deal.buyValue - deal.sellValue);
    if (mask == kMaskMcx) {
        if (deal.buyQty == deal.sellQty) return 0;
        const double rate = deal.buyQty > deal.sellQty ? rates.onLong : rates.onShort;
        return ByPreference(rate / 1e8 * value, own, value, 1e8);
    }
    if (mask != kMaskNseDerivatives && mask != kMaskNcdex) return 0;
    return ByPreference(rates.additional / (mask == kMaskNcdex ? 1e6 : 1e8) * value, own, value, 1e8);
}
double CommodityAddition(const Deal& deal, std::int16_t mask, const ExposureRates& rates) {
    const double bought = deal.buyQty > deal.sellQty ? deal.buyValue - deal.sellValue : 0;
    const double sold = deal.sellQty > deal.buyQty ? std::max(deal.sellValue - deal.buyValue, 0.0) : 0;
    return std::max(rates.onBuys * bought, rates.onSells * sold) / (mask == kMaskMcx ? 1e8 : 1e6);
}
double OptionExposure(const Deal& deal, double strike, const ExposureRates& rates, const MarginPreference& own) {
    const double written = deal.sellQty - deal.buyQty;
    if (written <= 0) return 0;
    const double value = std::max(written * strike + deal.sellValue - deal.buyValue, 0.0) / 100;
    return ByPreference(rates.additional / 1e6 * value, own, value, 1e6);
}

/// A contract that holds nothing, or stands outside the margin, has no figures.
bool Counts(const CScripExposure& scrip) { return !scrip.IsBlank() && scrip.scripMargin; }
bool IsFuture(const CScripExposure& scrip) { return scrip.position.data.scripInfo->contract.strikePrice < 0; }

Views OfContract(const CScripExposure& scrip, const MarginFacts& facts) {
    constexpr std::int64_t kNearExpiry = 311460;
    const auto& about = *scrip.position.data.scripInfo;
    const tagRPFContractRecord& record = scrip.scripMargin->contract;
    const std::int16_t mask = SegmentToExchangeMask(about.marketSegment);
    const auto found = facts.rates.find(PlainKey(mask, about.token));
    const ExposureRates rates = found == facts.rates.end() ? ExposureRates{} : found->second;
    const MarginPreference own = facts.preferences.at(mask);
    const bool mcx = mask == kMaskMcx;
    const std::int64_t left = std::int64_t{about.contract.expiryDate} - facts.tradingDayBase;
    const bool far = mcx ? left >= about.contract.caLevel * 86400 : left > kNearExpiry;
    const bool priced = mcx || record.contractPrice != 0;
    Views views{};
    for (std::size_t v = 0; v < kViewCount; ++v) {
        const Deal deal(scrip.position.data, v);
        const Deal today(scrip.dayPosition.data, v);
        const double net = deal.buyQty - deal.sellQty;
        Figures& f = views[v];
        f[kSpread] = far ? net * (mcx ? 1.0F : record.compositeDelta) : 0;
        if (!IsFuture(scrip)) {
            f[kLongOptions] = priced ? std::max(net, 0.0) : 0;
            f[kShortOptions] = priced ? std::max(-net, 0.0) : 0;
            f[kNetOptionValue] = net * record.contractPrice / 100;
            f[kOptionValue] = record.token ? today.buyValue - today.sellValue : 0;
            const double strike = about.contract.strikePrice;
            f[kExposure] = priced && mask == kMaskNseDerivatives ? OptionExposure(deal, strike, rates, own) : 0;
        } else if (priced) {
            f[kFutures] = std::abs(net);
            f[kFuturesExposure] = FuturesExposure(deal, mask, rates, own);
            const bool adds = (mcx || mask == kMaskNcdex) && own.mode == 0;
            f[kExposure] = f[kFuturesExposure] + (adds ? CommodityAddition(deal, mask, rates) : 0);
        }
        for (std::size_t i = 0; i < kScenarioCount; ++i) {
            f[kRisk + i] = static_cast<float>(net * record.riskArray[i]);
        }
    }
    return views;
}

struct Sums {
    Views sum{};
    Views gross{};

    void Add(const Views& terms, const Views& sizes) {
        for (std::size_t v = 0; v < kViewCount; ++v) {
            for (std::size_t f = 0; f < kFigureCount; ++f) {
                sum[v][f] += terms[v][f];
                gross[v][f] += std::abs(sizes[v][f]);
            }
        }
    }
};

/// Keeps the first figure that isn't what it has to be.
class CComparison {
 public:
    explicit CComparison(std::string& difference) : difference_(difference) {}

    void At(const char* kind, std::int64_t number) {
        kind_ = kind;
        number_ = number;
    }
    void Expect(const char* what, std::size_t view, double seen, double due, double gross, double share = 1e-6) {
        constexpr double kDust = 1e-3;  // what long running sums of paise may gather
        if (std::abs(seen - due) <= share * gross + kDust || !difference_.empty()) return;
        difference_ = Format("%s %ld, %s of view %zu: %.6f in the tree, %.6f due", kind_, static_cast<long>(number_),
                             what, view, seen, due);
    }
    void ExpectCount(const char* what, std::size_t view, std::int64_t seen, double due) {
        Expect(what, view, static_cast<double>(seen) * 1e3, due * 1e3, 0);
    }
    template <class Block>
    void ExpectSums(const Block& block, std::size_t v, const Sums& due) {
        const Figures& sum = due.sum[v];
        const Figures& gross = due.gross[v];
        ExpectCount("short options", v, block.shortOptionQuantity, sum[kShortOptions]);
        ExpectCount("long options", v, block.longOptionQuantity, sum[kLongOptions]);
        ExpectCount("futures", v, block.futuresQuantity, sum[kFutures]);
        Expect("net option value", v, block.netOptionValue, sum[kNetOptionValue], gross[kNetOptionValue]);
        Expect("option value", v, block.optionValue, sum[kOptionValue], gross[kOptionValue]);
    }
    /// Of a contract and of an expiry.
    template <class Block>
    void ExpectPart(const Block& block, std::size_t v, const Sums& due) {
        const Figures& sum = due.sum[v];
        const Figures& gross = due.gross[v];
        ExpectSums(block, v, due);
        Expect("spread", v, block.spreadPosition, sum[kSpread], gross[kSpread]);
        Expect("futures exposure", v, block.futuresExposureMargin, sum[kFuturesExposure], gross[kFuturesExposure]);
        Expect("exposure", v, block.exposureMargin, sum[kExposure], gross[kExposure]);
    }

 private:
    std::string& difference_;
    const char* kind_ = "";  // where it looks
    std::int64_t number_ = 0;
};

double Rounded(double rupees) { return std::fmod(rupees * 100, 100) <= 50 ? std::floor(rupees) : std::ceil(rupees); }

struct Scan {
    double risk, charge, minimum, initial, effective;
};
/// `book` holds the quantities and the net option value.
Scan ScanOf(const tagRPFUnderlyingRecord& charges, double risk, double spread, const Figures& book) {
    const double value = book[kNetOptionValue];
    Scan scan{risk, Rounded(charges.calendarSpreadCharge * spread),
              Rounded(charges.shortOptionMinimumCharge * book[kShortOptions]), 0, 0};
    scan.effective = scan.initial = std::max(risk + scan.charge, scan.minimum) - value;
    const bool onlyLong = book[kFutures] == 0 && book[kShortOptions] == 0 && book[kLongOptions] > 0;
    if (onlyLong) scan.effective = risk <= value ? risk - value : 0;
    return scan;
}

/// One underlying, from its expiries.
struct Underlying {
    Sums all;
    PerView<double> spreadLong{}, spreadShort{};
    PerView<double> longPosition{}, shortPosition{}, longMargin{}, shortMargin{};  // expiries with a future

    void Add(const Sums& expiry, bool hasFuture) {
        all.Add(expiry.sum, expiry.gross);
        for (std::size_t v = 0; v < kViewCount; ++v) {
            const double spread = expiry.sum[v][kSpread];
            (spread >= 0 ? spreadLong : spreadShort)[v] += spread;
            if (!hasFuture) continue;
            (spread >= 0 ? longPosition : shortPosition)[v] += spread;
            (spread >= 0 ? longMargin : shortMargin)[v] += expiry.sum[v][kFuturesExposure];
        }
    }

    [[nodiscard]] double Netted(std::size_t v, double benefitShare = 0.8333) const {
        const double bought = longPosition[v];
        const double sold = std::abs(shortPosition[v]);
        if (bought == 0 && sold == 0) return all.sum[v][kExposure];
        const double benefit = bought < sold ? longMargin[v] + bought / sold * shortMargin[v]
                                             : shortMargin[v] + sold / bought * longMargin[v];
        return all.sum[v][kExposure] - benefitShare * benefit;
    }
    [[nodiscard]] double Worst(std::size_t v) const {
        return *std::max_element(all.sum[v].begin() + kRisk, all.sum[v].end());
    }
    [[nodiscard]] double SpreadQuantity(std::size_t v) const {
        return std::min(std::abs(spreadLong[v]), std::abs(spreadShort[v]));
    }
    /// The worst over the views.
    [[nodiscard]] Scan WorstScan(const tagRPFUnderlyingRecord& charges) const {
        double risk = Worst(0), spread = SpreadQuantity(0);
        Figures book = all.sum[0];
        for (std::size_t v = 1; v < kViewCount; ++v) {
            risk = std::max(risk, Worst(v));
            spread = std::min(spread, SpreadQuantity(v));
            for (const Figure f : {kShortOptions, kLongOptions, kFutures}) book[f] = std::max(book[f], all.sum[v][f]);
            book[kNetOptionValue] = std::min(book[kNetOptionValue], all.sum[v][kNetOptionValue]);
        }
        return ScanOf(charges, risk, spread, book);
    }
    [[nodiscard]] Scan ScanOfView(const tagRPFUnderlyingRecord& charges, std::size_t v) const {
        return ScanOf(charges, Worst(v), SpreadQuantity(v), all.sum[v]);
    }
};

MarginGroup GroupOfNode(std::int16_t keySegment) {
    const bool near = keySegment == 7 || keySegment == 9 || keySegment == 0x45 || keySegment == 0x15;
    return GroupOfExchange(static_cast<std::int16_t>(near ? keySegment - 5 : keySegment));
}

/// The node's sums, and what they mean for the account.
void AddUnderlying(AccountMargin& account, MarginGroup group, const Underlying& u, const tagUnderlyingMargin& node,
                   CComparison& compare) {
    double riskSize = 0;
    for (std::size_t v = 0; v < kViewCount; ++v) {
        const UnderlyingBlock& block = node.view[v];
        const Figures& gross = u.all.gross[v];
        compare.ExpectSums(block, v, u.all);
        for (std::size_t i = kRisk; i < kFigureCount; ++i) {
            compare.Expect("scenario", v, block.riskValues[i - kRisk], u.all.sum[v][i], gross[i]);
            riskSize = std::max(riskSize, gross[i]);
        }
        compare.Expect("spread long", v, block.spreadLong, u.spreadLong[v], gross[kSpread]);
        compare.Expect("spread short", v, block.spreadShort, u.spreadShort[v], gross[kSpread]);
        compare.Expect("long side", v, block.longSidePosition, u.longPosition[v], gross[kSpread]);
        compare.Expect("short side", v, block.shortSidePosition, u.shortPosition[v], gross[kSpread]);
        compare.Expect("long margin", v, block.longSideMargin, u.longMargin[v], gross[kFuturesExposure]);
        compare.Expect("short margin", v, block.shortSideMargin, u.shortMargin[v], gross[kFuturesExposure]);
        compare.Expect("exposure total", v, block.exposureMarginTotal, u.all.sum[v][kExposure], gross[kExposure]);
    }
    Totals& totals = account.groups[static_cast<std::size_t>(group)];
    if (group == MarginGroup::kMcx) {  // no scan: the netted exposure margin is the margin
        PerView<double> netted{};
        for (std::size_t v = 0; v < kViewCount; ++v) netted[v] = u.Netted(v, 0.66);
        const std::array due{netted[0], netted[1], *std::max_element(netted.begin(), netted.end())};
        for (std::size_t v = 0; v < due.size(); ++v) {
            compare.Expect("initial margin", v, node.view[v].initialMargin, due[v], u.all.gross[v][kExposure]);
            totals[kOrder + v].Add(due[v], u.all.gross[v][kExposure]);
        }
        return;
    }
    for (const std::size_t v : {kOrderSide, kTradedSide, kLongWorst}) {
        const Scan scan = v == kLongWorst ? u.WorstScan(node.underlying) : u.ScanOfView(node.underlying, v);
        const double gross = riskSize + scan.charge + scan.minimum + u.all.gross[v][kNetOptionValue];
        compare.Expect("scan", v, node.view[v].scanRisk, scan.risk, riskSize, 1e-4);
        compare.Expect("calendar charge", v, node.view[v].calendarCharge, scan.charge, 0);
        compare.Expect("short minimum", v, node.view[v].shortOptionMinimum, scan.minimum, 0);
        compare.Expect("initial margin", v, node.view[v].initialMargin, scan.initial, gross, 1e-4);
        totals[kOrder + v].Add(scan.effective, gross);
        totals[kOptionOrder + v].Add(u.all.sum[v][kOptionValue], u.all.gross[v][kOptionValue]);
    }
    const double exposure = std::max({u.Netted(0), u.Netted(1), u.Netted(2), u.Netted(3)});
    compare.Expect("netted exposure", 0, node.nettedExposureMargin, exposure, u.all.gross[0][kExposure]);
    if (group != MarginGroup::kBse) totals[kExposureTotal].Add(exposure, u.all.gross[0][kExposure]);
}

}  // namespace

MarginGroup GroupOfExchange(std::int16_t exchangeMask) {
    switch (exchangeMask) {
        case kMaskNseDerivatives: return MarginGroup::kNse;
        case kMaskBseDerivatives: return MarginGroup::kBse;
        case kMaskNcdex: return MarginGroup::kNcdex;
        default: return MarginGroup::kMcx;
    }
}

std::array<double, 7> AccountMargin::Reading(std::int16_t exchangeMask) const {
    std::array<double, 7> reading{};
    const Totals& totals = groups[static_cast<std::size_t>(GroupOfExchange(exchangeMask))];
    for (std::size_t i = 0; i < reading.size(); ++i) {
        reading[i] = i < kOptionOrder ? std::max(totals[i].value, 0.0) : totals[i].value;
    }
    return reading;
}

AccountMargin MarginFromScratch(const CClientExposure& account, const MarginFacts& facts, std::string& difference) {
    AccountMargin result;
    CComparison compare(difference);
    for (const auto& node : account.underlyings) {
        Underlying underlying;
        for (const auto& expiry : node.value->expiries) {
            Sums sums;
            bool hasFuture = false;
            for (const auto& entry : expiry.value->scrips) {
                const CScripExposure& scrip = *entry.value;
                if (!Counts(scrip)) continue;
                compare.At("contract", entry.key.Printed());
                Sums alone;
                const Views carried = OfContract(scrip, facts);
                alone.Add(carried, carried);
                for (std::size_t v = 0; v < kViewCount; ++v) compare.ExpectPart(scrip.scripMargin->view[v], v, alone);
                sums.Add(carried, alone.gross);
                hasFuture = hasFuture || IsFuture(scrip);
            }
            compare.At("expiry", expiry.key);
            const tagExpiryMargin margin = expiry.value->expiryMargin ? *expiry.value->expiryMargin : tagExpiryMargin{};
            for (std::size_t v = 0; v < kViewCount; ++v) compare.ExpectPart(margin.view[v], v, sums);
            underlying.Add(sums, hasFuture);
        }
        compare.At("underlying", PlainKey(node.key.keySegment, node.key.underlyingToken));
        const auto& margin = node.value->underlyingMargin;
        AddUnderlying(result, GroupOfNode(node.key.keySegment), underlying, margin ? *margin : tagUnderlyingMargin{},
                      compare);
    }
    compare.At("account", 0);
    for (const std::int16_t mask : {kMaskNseDerivatives, kMaskBseDerivatives, kMaskNcdex, kMaskMcx}) {
        const auto group = static_cast<std::size_t>(GroupOfExchange(mask));
        const Totals& due = result.groups[group];
        const tagClientMarginTotals none;
        const MarginGroupTotals& seen = (account.clientMarginTotals ? *account.clientMarginTotals : none).groups[group];
        const std::array figures{seen.marginOrderSide, seen.marginTradedSide,     seen.marginWorst,
                                 seen.exposureMargin,  seen.optionValueOrderSide, seen.optionValueTradedSide,
                                 seen.optionValueWorst};
        const auto reading = result.Reading(mask);
        const std::array read{account.GetMargin(1, mask),       account.GetMargin(2, mask),
                              account.GetWorstMargin(mask),     account.GetExposureMargin(mask),
                              account.GetOptionValue(1, mask),  account.GetOptionValue(2, mask),
                              account.GetWorstOptionValue(mask)};
        for (std::size_t i = 0; i < figures.size(); ++i) {
            compare.Expect("total", i, figures[i], due[i].value, due[i].gross, i < kExposureTotal ? 1e-4 : 1e-6);
            compare.Expect("reading", i, read[i], reading[i], due[i].gross, i < kExposureTotal ? 1e-4 : 1e-6);
        }
    }
    return result;
}

}  // namespace surv::test
