#include "queries/kept_house.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "platform/format.h"

namespace surv::test {
namespace {

struct Sums {
    std::int64_t orderBuy = 0, orderSell = 0, buy = 0, sell = 0;
    double buyValue = 0, sellValue = 0;
    std::int32_t lastPrice = 0;

    void Add(const Kept& k) {
        const double value =
            static_cast<double>(k.quantity) * (k.buy ? CKeptHouse::BuyPrice(k.token) : CKeptHouse::SellPrice(k.token));
        (k.buy ? orderBuy : orderSell) += k.quantity;
        lastPrice = CKeptHouse::LastPrice(k.token);
        if (k.open) return;
        (k.buy ? buy : sell) += k.quantity;
        (k.buy ? buyValue : sellValue) += value;
    }
    [[nodiscard]] bool Traded() const { return buy > 0 || sell > 0; }
    [[nodiscard]] double Open() const { return static_cast<double>(buy - sell) * lastPrice; }
    /// What would be earned by closing it now.
    [[nodiscard]] double Mtm() const { return Open() - buyValue + sellValue; }
};

std::string Text(std::string_view group, std::string_view account, std::int16_t mask, std::int32_t token, const Sums& s,
                 double mtm, double open) {
    return Format("%.*s|%.*s %d %d: %lld %lld, %lld %lld at %.2f %.2f, %.2f %.2f", static_cast<int>(group.size()),
                  group.data(), static_cast<int>(account.size()), account.data(), mask, token,
                  static_cast<long long>(s.orderBuy), static_cast<long long>(s.orderSell),
                  static_cast<long long>(s.buy), static_cast<long long>(s.sell), s.buyValue, s.sellValue, mtm, open);
}

std::string TextOf(const BKExposureTag& row) {
    const Sums s{row.orderBuyQty,    row.orderSellQty,    row.tradedBuyQty, row.tradedSellQty,
                 row.tradedBuyValue, row.tradedSellValue, row.lastPrice};
    return Text(FieldText(row.groupCode), FieldText(row.accountCode), row.limitMask, row.token, s, row.mtmValue,
                row.openPositionValue);
}

std::string Six(std::string code) { return code.resize(6, ' '), code + '+'; }
std::string Ten(std::string code) { return code.resize(10, ' '), code + '+'; }
bool PlusAt(const std::string& code, std::size_t at) { return code.size() > at && code[at] == '+'; }

/// A holder's codes as rows show them.
std::pair<std::string, std::string> OwnerCodes(const Kept& first) {
    std::string account = first.account;
    for (const std::size_t at : {6U, 10U}) {
        if (PlusAt(account, at)) account.resize(at);
    }
    return {first.types.client == 6 ? "" : first.group, account};
}

bool IsExpiry(std::int16_t mask) { return mask & 1; }
int GroupOf(std::int16_t product) { return product == 2 || product == 4 || product == 8 ? product : 0; }
bool IsCash(std::int16_t mask) { return LimitMaskToSegment(mask) == 1 || LimitMaskToSegment(mask) == 4; }
/// By what a walk over all scrips goes: the product for equity of six digits.
int WalkProduct(const Kept& k) { return IsCash(k.mask) && k.token < 1'000'000 ? GroupOf(k.product) : 0; }

}  // namespace

CKeptHouse::CKeptHouse(std::int16_t positionMode, std::int16_t orderBased, const std::vector<Level>& levels)
    : scenario({.positionMode = positionMode}),
      levels_(levels),
      orderBased_(orderBased == 1),
      positionMode_(positionMode),
      kept_(levels.size()) {
    scenario.library.context.settings.orderBasedPosition = orderBased;
    for (const Level& level : levels) {
        scenario.Limit(level.code, 3, [&](BKSurveillanceLimitDefTag& row) {
            row.entityLevel = level.level, row.subLevel = level.subLevel;
        });
    }
}

void CKeptHouse::Enter(const Kept& kept) {
    CSurveillanceManager& manager = *scenario.library.manager;
    CSurveillanceCategory& category = *manager.FindCategory(levels_[kept.category].code);
    kept_[kept.category].push_back(kept);
    tagOrderInfoForSurv order;
    order.marketSegment = LimitMaskToSegment(kept.mask);
    order.levelCode = levels_[kept.category].code;
    order.parentCode = std::string_view{kept.group}, order.accountCode = std::string_view{kept.account};
    order.token = kept.token, order.underlyingToken = kept.token % 3;
    order.orderEventKind = kept.open ? event::kOrder : event::kTrade;
    order.buySell = kept.buy ? kBuy : kSell, order.productType = kept.product, order.marginPlusLeg = 2;
    order.quantity = static_cast<std::int32_t>(kept.quantity);
    order.price = kept.buy ? BuyPrice(kept.token) : SellPrice(kept.token);
    order.lastTradedPrice = LastPrice(kept.token), order.periodicity = kept.mask;
    order.clientLevelType = kept.types.client, order.groupLevelType = kept.types.group;
    order.subClientLevelType = kept.types.subClient;
    order.scripInfo = scenario.library.context.stores.FindOrMakeScrip(order);
    order.ownerInfo = category.OwnerOf(order);

    const TreeContext tree{scenario.library.context.settings, &scenario.library.context.undo};
    const Period period = IsExpiry(kept.mask) ? Period::kExpiry : Period::kDaily;
    PeriodBook& book = category.Book(period);
    const PositionKey flat{order.ExchangeMask(), FlatFamily(kept.product, kept.leg), kept.token};
    (kept.clientLevel ? book.clientLevelExposures : book.exposures).CommitAt(flat, order, *tree.undo);
    CClientExposure& account = book.accounts.accounts.FindOrMake(MakeAccountKey(order));
    account.ApplyOrder(order, account.FindOrMakePath(order, tree.settings), tree);
    CClientBook& clients = category.ClientBook();
    clients.Of(period).positions.RecordOrder(order, period, account, tree);
    clients.Of(period).lists.Join(ListOf(period, kept.product), account, tree);
    clients.totals.ApplyOrder(kept.mask, order, tree);
    manager.broadcastHash.FindOrMake(PlainKey(order.ExchangeMask(), kept.token)).AddCategory(&category);
    tree.undo->Clear();
}

Shown CKeptHouse::Ask(const Asked& asked) {
    std::string group = asked.group;
    std::string account = asked.account;
    CPtrList list;
    Shown shown;
    shown.result = scenario.library.manager->GetNetPositionInfoFromDll({asked.kind,
                                                                        asked.category,
                                                                        {{group.data(), 6}, {account.data(), 32}},
                                                                        asked.token,
                                                                        asked.mask,
                                                                        asked.byToken,
                                                                        asked.product},
                                                                       list);
    for (CPtrList::Position at = list.GetHeadPosition(); at;) {
        shown.rows.push_back(TextOf(*static_cast<const BKExposureTag*>(list.GetNext(at))));
    }
    FreeRows<BKExposureTag>(list);
    std::sort(shown.rows.begin(), shown.rows.end());
    return shown;
}

// ---------------------------------------------------------------------------------------------------------------
// What must be shown

namespace {

using Codes = std::pair<std::string, std::string>;  // group, account

/// One category as a query of a mask and product sees it.
class CView {
 public:
    CView(const Level& level, const std::vector<Kept>& kept, std::int16_t mask, int product, bool orderBased,
          std::int16_t mode, std::vector<std::string>& rows)
        : code_(level.code),
          S(level.subLevel),
          kept_(kept),
          mask_(mask),
          product_(product),
          orderBased_(orderBased),
          mode_(mode),
          rows_(rows) {
        L = level.level;
        if (L == 130)
            L = IsCash(mask) ? 0 : 1;
        else if (L == 131)
            L = IsCash(mask) ? 1 : 0;
        dealer_ = code_ == "-" || ((L == 0 || L == 7) && S == 7);
        segment_ = LimitMaskToSegment(mask);
        exchange_ = SegmentToExchangeMask(segment_);
    }

    void Total() {
        Sums s;
        for (const Kept& k : kept_) {
            if (k.mask == mask_ && GroupOf(k.product) == product_) s.Add(k);
        }
        const auto [group, account] = kept_.empty() ? Codes{} : OwnerCodes(kept_.front());
        if (s.Traded()) Put(Text(group, account, mask_, -9, s, 0, s.buyValue - s.sellValue));
    }

    void AccountTotals(const Asked& a) {
        if (a.account == "ALL") return AllTotals();
        if (const auto codes = Totalled(Trim(a))) AccountTotal(*codes, true);
    }
    void OwnTotals(const Asked& a) {
        if (a.account == "ALL") return AllTotals();
        if (const auto codes = Own(TrimAccount(a))) AccountTotal(*codes, false);
    }
    void HolderTotals(std::int32_t token, bool own) {
        std::set<Codes> found;
        for (const Codes& holder : HoldersOf(token)) {
            const auto codes = own ? Own(holder) : Totalled(holder);
            if (codes) found.insert(*codes);
        }
        for (const Codes& codes : found) AccountTotal(codes, !own);
    }

    void AccountScrips(const Asked& a) {
        if (a.account != "ALL") {
            if (const auto codes = ScripsOf(TrimAccount(a))) Scrips(*codes, a.token);
            return;
        }
        const std::vector<Codes> accounts = Accounts();
        if (!((L == 1 && S == 7) || L == 6 || code_ == "-")) {
            for (const Codes& codes : accounts) Scrips(codes, a.token);
        } else if (!accounts.empty()) {
            Scrips({accounts[0].first, Six(accounts[0].second)}, a.token);
        }
    }
    bool Holds(std::int32_t token) { return !HoldersOf(token).empty(); }

    void CategoryScrips(const Asked& a) {
        std::map<std::tuple<int, int, std::int32_t>, std::pair<Sums, Sums>> nets;  // own, client level
        for (const Kept& k : kept_) {
            if (IsExpiry(k.mask) != IsExpiry(mask_) || LimitMaskToSegment(k.mask) != segment_) continue;
            const int product = GroupOf(k.product);
            const int walked = WalkProduct(k);
            bool wanted = product_ == 4 || (product_ == 0 ? walked != 2 && walked != 8 : walked == product_);
            if (a.token != -9) {
                const int looked = product_ == 2 ? 0 : product_;
                wanted = k.token == a.token && product == looked && (product != 4 || k.leg == 2);
            }
            if (!wanted) continue;
            auto& [own, apart] = nets[{product, product == 4 ? k.leg : 0, k.token}];
            (k.clientLevel ? apart : own).Add(k);
        }
        if (kept_.empty()) return;
        const auto [group, account] = OwnerCodes(kept_.front());
        if (a.account != "ALL" && a.account != account) return;
        for (auto& [key, sums] : nets) {
            Sums s = sums.first;
            if (L == 0 || L == 7) {
                for (const Kept& k : kept_) {
                    const std::tuple of{GroupOf(k.product), GroupOf(k.product) == 4 ? k.leg : 0, k.token};
                    if (k.clientLevel && of == key && k.mask == mask_) s.Add(k);
                }
            }
            if (s.Traded()) Put(Text(group, account, mask_, std::get<2>(key), s, s.Mtm(), s.Open()));
        }
    }

    void TokenHolders(const Asked& a) {
        if (a.token == -9) {
            for (const Codes& codes : Accounts()) {
                for (const auto& [token, s] : HeldBy(codes, [&](const Kept& k) {
                         return product_ == 8 ? WalkProduct(k) == 8 : GroupOf(k.product) == product_;
                     })) {
                    const Codes owner = OwnerOf(codes);
                    if (s.Traded()) Put(Text(owner.first, owner.second, mask_, token, s, s.Mtm(), s.Open()));
                }
            }
            return;
        }
        if (a.account == "ALL") {
            for (const Codes& codes : HoldersOf(a.token)) {
                if (!PassedOver(codes)) TokenRow(codes, a.token, codes.second, false);
            }
            return;
        }
        const Codes plain = Trim(a);
        const std::vector<Codes> holders = HoldersOf(a.token);
        const auto held = [&](const Codes& c) { return std::find(holders.begin(), holders.end(), c) != holders.end(); };
        const Codes six{plain.first, Six(plain.second)};
        const Codes ten{plain.first, Ten(plain.second)};
        std::vector<Codes> tried{plain};
        if (code_ != "-" && (L == 6 || (L == 0 && S == 6)))
            tried.push_back(ten);
        else if (code_ == "-" || L == 7 || (L == 0 && S == 7))
            tried.insert(tried.end(), {six, ten});
        for (const Codes& codes : tried) {
            if (held(codes)) return TokenRow(codes, a.token, OwnerOf(codes).second, true);
        }
    }

 private:
    static Codes TrimAccount(const Asked& a) { return {a.group, std::string{Trimmed(a.account)}}; }
    static Codes Trim(const Asked& a) { return {std::string{Trimmed(a.group)}, std::string{Trimmed(a.account)}}; }
    void Put(std::string text) { rows_.push_back(std::move(text)); }
    bool Here(const Kept& k, const Codes& codes) const {
        return IsExpiry(k.mask) == IsExpiry(mask_) && k.group == codes.first && k.account == codes.second;
    }
    const Kept* First(const Codes& codes) const {
        const auto found = std::find_if(kept_.begin(), kept_.end(), [&](const Kept& k) { return Here(k, codes); });
        return found == kept_.end() ? nullptr : &*found;
    }
    std::optional<Codes> There(const Codes& codes) const { return First(codes) ? std::optional{codes} : std::nullopt; }
    Codes OwnerOf(const Codes& codes) const { return OwnerCodes(*First(codes)); }
    std::vector<Codes> Accounts() const {
        std::vector<Codes> accounts;
        for (const Kept& k : kept_) {
            const Codes codes{k.group, k.account};
            const bool here = IsExpiry(k.mask) == IsExpiry(mask_);
            if (here && std::find(accounts.begin(), accounts.end(), codes) == accounts.end()) accounts.push_back(codes);
        }
        return accounts;
    }
    bool Counts(const Kept& k) const { return !k.open || orderBased_; }
    std::vector<Codes> HoldersOf(std::int32_t token) const {
        std::vector<Codes> holders;
        for (const Codes& codes : Accounts()) {
            const bool holds = std::any_of(kept_.begin(), kept_.end(), [&](const Kept& k) {
                return Here(k, codes) && Counts(k) && k.token == token && GroupOf(k.product) == product_ &&
                       SegmentToExchangeMask(LimitMaskToSegment(k.mask)) == exchange_;
            });
            if (holds) holders.push_back(codes);
        }
        return holders;
    }
    /// By token, apart for each product, of the segment of the mask.
    std::multimap<std::int32_t, Sums> HeldBy(const Codes& codes, const std::function<bool(const Kept&)>& wanted) const {
        std::map<std::pair<int, std::int32_t>, Sums> held;
        for (const Kept& k : kept_) {
            if (Here(k, codes) && Counts(k) && k.mask == mask_ && wanted(k)) {
                held[{GroupOf(k.product), k.token}].Add(k);
            }
        }
        std::multimap<std::int32_t, Sums> sums;
        for (const auto& [key, s] : held) sums.emplace(key.second, s);
        return sums;
    }

    void AccountTotal(const Codes& codes, bool orders) {
        Sums s;
        bool reached = false;
        std::map<std::pair<int, std::int32_t>, Sums> scrips;  // two-leg orders stand with the plain ones
        for (const Kept& k : kept_) {
            if (!Here(k, codes) || k.mask != mask_) continue;
            const int product = GroupOf(k.product);
            scrips[{product == 4 ? 0 : product, k.token}].Add(k);
            if (product != product_) continue;
            reached = true;
            s.Add(k);
        }
        double mtm = 0;
        double open = 0;
        for (const auto& [key, scrip] : scrips) mtm += scrip.Mtm(), open += scrip.Open();
        if (!reached || !(s.Traded() || (orders && orderBased_))) return;
        const Codes owner = OwnerOf(codes);
        Put(Text(owner.first, owner.second, mask_, -9, s, mtm, open));
    }
    void AllTotals() {
        for (const Codes& codes : Accounts()) AccountTotal(codes, false);
    }
    void Scrips(const Codes& codes, std::int32_t token) {
        const auto held = HeldBy(codes, [&](const Kept& k) {
            if (token != -9) return k.token == token && GroupOf(k.product) == product_;
            return WalkProduct(k) == product_;
        });
        if (held.empty()) return;
        const std::string group = OwnerOf(codes).first;
        for (const auto& [at, s] : held) {
            if (s.Traded() || orderBased_) Put(Text(group, codes.second, mask_, at, s, s.Mtm(), s.Open()));
        }
    }
    void TokenRow(const Codes& codes, std::int32_t token, const std::string& account, bool untested) {
        for (const auto& [at, s] :
             HeldBy(codes, [&](const Kept& k) { return k.token == token && GroupOf(k.product) == product_; })) {
            if (s.Traded() || untested) Put(Text(OwnerOf(codes).first, account, mask_, at, s, s.Mtm(), s.Open()));
        }
    }

    std::optional<Codes> Totalled(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)};
        const Codes ten{plain.first, Ten(plain.second)};
        const Kept* first = First(plain);
        if (!first) return dealer_ ? There(six) : std::nullopt;
        const auto [ct, gt, st] = first->types;
        const bool oneOrSix = ct == 1 || ct == 6;
        if (dealer_) return oneOrSix ? There(six) : plain;
        if ((L == 6 && oneOrSix) || ((L == 0 || L == 1) && S == 6)) {
            if (!((L == 6 || L == 0) && S == 6 && (ct == 1 || st == 1))) return plain;
            if (oneOrSix) return There(ten);
            return PlusAt(plain.second, 10) ? std::optional{plain} : std::nullopt;
        }
        if (oneOrSix || gt == 6) {
            if ((ct == 1 && L == 1) || L == 8) return plain;
            if (!PlusAt(plain.second, 6) && !(L == 6 && (ct == 2 || ct == 3))) return std::nullopt;
        }
        return plain;
    }
    std::optional<Codes> Own(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)};
        const Codes ten{plain.first, Ten(plain.second)};
        if ((plain.second == "*****" || code_ != "-") && !(L == 7 && S == 7)) {
            if (First(plain)) return plain;
            return mode_ == 3 && L == 6 ? There(ten) : std::nullopt;
        }
        return First(six) ? six : There(ten);
    }
    std::optional<Codes> ScripsOf(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)};
        const Codes ten{plain.first, Ten(plain.second)};
        const Kept* first = First(plain);
        const int ct = first ? first->types.client : -1;
        if (first && dealer_) return ct == 1 || ct == 6 ? There(six) : ct == 8 ? There(ten) : plain;
        if (first) return ((L == 0 && S == 6) || (L == 6 && ct == 1)) && ct == 1 ? There(ten) : plain;
        if (dealer_) return First(six) ? six : There(ten);
        return (L == 0 && S == 6) || L == 6 ? There(ten) : std::nullopt;
    }
    bool PassedOver(const Codes& codes) const {
        const auto& [ct, gt, st] = First(codes)->types;
        const std::string& c = codes.second;
        if (code_ != "-" && ((L == 6 && (ct == 1 || ct == 6)) || ((L == 0 || L == 1) && S == 6))) {
            if (c.size() <= 10) return ((L == 0 && S == 6) || (L == 6 && ct == 1)) && PlusAt(c, 6);
            return ((L == 6 && S == 6) || (L == 0 && S == 6)) && !PlusAt(c, 10);
        }
        if (!((ct == 1 && gt == 6) || ct == 6)) return false;
        return L == 1 && (S == 6 || S == 7) ? PlusAt(c, 6) : !PlusAt(c, 6);
    }

    std::string code_;
    int L = 0;
    int S;
    const std::vector<Kept>& kept_;
    std::int16_t mask_;
    int product_;
    bool orderBased_;
    std::int16_t mode_;
    std::vector<std::string>& rows_;
    bool dealer_ = false;
    std::int16_t segment_ = 0, exchange_ = 0;
};

}  // namespace

Shown CKeptHouse::Expect(const Asked& a) const {
    Shown shown;
    Asked asked = a;
    const int product = GroupOf(a.product);
    if (LimitMaskToSegment(a.mask) == 0 || a.kind < 0 || a.kind > 12 || a.kind == 2 || a.kind == 3) return shown;
    if (product != 0 && !IsExpiry(a.mask)) {
        if (product == 8 || !IsCash(a.mask)) return shown;
        ++asked.mask;
    }
    const auto viewOf = [&](std::size_t i, int of) {
        return CView(levels_[i], kept_[i], asked.mask, of, orderBased_, positionMode_, shown.rows);
    };
    const bool families = a.kind == 9;
    if ((a.kind == 1 || families) && a.category == "ALL") {
        const std::set<int> house{70, 71, 201, 200, 66, 60, 61, 191, 190, 74, 75};
        const std::set<int> family{78, 68};
        for (std::size_t i = 0; i < levels_.size(); ++i) {
            const int key = levels_[i].level + 10 * levels_[i].subLevel;
            if (!(families ? family : house).contains(key)) continue;
            const bool reached = !a.byToken || std::any_of(kept_[i].begin(), kept_[i].end(), [&](const Kept& k) {
                return k.token == a.token && !(families && product == 2) &&
                       SegmentToExchangeMask(LimitMaskToSegment(k.mask)) == LimitMaskToExchangeMask(a.mask);
            });
            if (reached) viewOf(i, product).Total();
        }
    } else {
        const auto at =
            std::find_if(levels_.begin(), levels_.end(), [&](const Level& l) { return a.category == l.code; });
        if (at == levels_.end()) return {-1, {}};
        CView view = viewOf(static_cast<std::size_t>(at - levels_.begin()), product);
        CView plain = viewOf(static_cast<std::size_t>(at - levels_.begin()), 0);
        const bool delivered = product == 2 || product == 4;
        switch (a.kind) {
            case 4:
                if (!a.byToken)
                    view.AccountTotals(a);
                else if (!delivered)
                    plain.HolderTotals(a.token, false);
                break;
            case 5: view.CategoryScrips(a); break;
            case 6:
            case 12:
                if (!a.byToken)
                    view.AccountScrips(a);
                else if (!delivered && plain.Holds(a.token))
                    plain.AccountScrips(a);
                break;
            case 7: view.TokenHolders(a); break;
            case 11:
                if (delivered) break;
                a.byToken ? plain.HolderTotals(a.token, true) : plain.OwnTotals(a);
                break;
            default: view.Total();
        }
    }
    std::sort(shown.rows.begin(), shown.rows.end());
    return shown;
}

}  // namespace surv::test
