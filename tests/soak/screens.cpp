#include "screens.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "call_table.h"
#include "surveillance/codes.h"

namespace soak {
namespace {

using namespace surv;
using Codes = CScreens::Codes;
using Row = CScreens::Row;

constexpr int kDelivery = 5, kSecondLeg = 10, kMtf = 20;  ///< families; 0 is the plain one
constexpr std::array<std::int16_t, 16> kMasks{2, 3, 4, 5, 8, 9, 16, 17, 32, 33, 64, 65, 128, 129, 256, 257};

std::string TrimmedEnd(std::string text) { return text.erase(text.find_last_not_of(' ') + 1); }
std::string Trimmed(std::string text) { return TrimmedEnd(text.erase(0, text.find_first_not_of(' '))); }
std::string Six(std::string code) { return code.resize(6, ' '), code + '+'; }
std::string Ten(std::string code) { return code.resize(10, ' '), code + '+'; }
bool PlusAt(const std::string& code, std::size_t at) { return code.size() > at && code[at] == '+'; }

int GroupOf(int product) {
    if (product == product::kConvertToDelivery) return product::kDelivery;
    return product == product::kDelivery || product == product::kMarginPlus || product == product::kMtf ? product : 0;
}

/// What holds of an account, in one period, of one event.
struct Stand {
    Codes codes;
    LevelTypes types;
    const Event* event;
    bool byClient;  ///< it is what stands for the holder in the positions by client

    /// The account's codes as rows show them.
    [[nodiscard]] Codes Shown() const {
        std::string account = codes.second;
        for (const std::size_t at : {6U, 10U}) {
            if (PlusAt(account, at)) account.resize(at);
        }
        return {types.client == 6 ? "" : codes.first, TrimmedEnd(account)};
    }
};

/// What the trades of a position come to at a price, paise; nothing at none.
struct Worth {
    double mtm = 0, open = 0;

    Worth(const Position& p, double price) {
        const auto net = static_cast<double>(p.tradedBuy.quantity - p.tradedSell.quantity);
        const auto average = [](const Position::Amount& a) {
            return a.quantity == 0 ? 0 : a.value / static_cast<double>(a.quantity);
        };
        if (price == 0 && net != 0) return;
        const double buy = average(p.tradedBuy), sell = average(p.tradedSell);
        open = net * price;
        mtm = net * (price - (net < 0 ? sell : buy)) +
              static_cast<double>(std::min(p.tradedBuy.quantity, p.tradedSell.quantity)) * (sell - buy);
    }
};

struct Scrip {
    int family;
    std::int16_t exchangeMask;
    std::int32_t token;
    auto operator<=>(const Scrip&) const = default;
    /// What a walk over all scrips takes it for: equity of six digits by its product.
    [[nodiscard]] int Walked() const { return IsCashExchange(exchangeMask) && token < 1'000'000 ? family : 0; }
};

/// One entity as a query of one mask and product sees it.
class CView {
 public:
    CView(const CBook& book, const std::string& entity, CScreens::Place place, std::int16_t mask, int product,
          CScreens::Screen& screen)
        : book_(book),
          entity_(entity),
          level_(place.first),
          second_(place.second),
          mask_(mask),
          product_(product),
          screen_(screen) {
        const auto found = book.EntriesByEntity().find(entity);
        if (found != book.EntriesByEntity().end()) entries_ = &found->second;
        exchange_ = LimitMaskToExchangeMask(mask);
        at_ = LevelOn(exchange_);
        sumsByDealer_ = entity == "-" || ((at_ == 0 || at_ == 7) && second_ == 7);
        for (const Entry& e : *entries_) TakeStands(e);
    }

    void Total() {
        Position sum;
        bool known = product_ != product::kMtf && book_.IsMarked(entity_);
        std::map<std::int32_t, Position> scrips;
        for (const Entry& e : *entries_) {
            if (!OfPeriod(e.event) || !OnMask(e.event)) continue;
            const bool narrow = e.types.client == 3 || e.types.client == 5;
            known = known && !narrow && !e.event.IsConversion() && (e.told || !e.event.correction);
            if (!e.told || GroupOf(e.event.product) != product_ || !book_.HoldsByClient()) continue;
            sum.Add(e.event.Change()), scrips[e.event.token].Add(e.event.Change());
        }
        screen_.ofOwner = true;
        if (!Traded(sum)) return;
        Row& row = Put({}, kAllSecurities, sum);
        if (!known || product_ == product::kMarginPlus) return;
        row.mtm = 0;
        for (const auto& [token, position] : scrips) {
            if (Traded(position)) *row.mtm += Worth(position, product_ == 0 ? Price({0, exchange_, token}) : 0).mtm;
        }
    }

    void AccountTotals(const Question& q) {
        if (q.account == "ALL") return AllTotals();
        if (const auto codes = Totalled({Trimmed(q.group), Trimmed(q.account)})) AccountTotal(*codes, true);
    }
    void OwnTotals(const Question& q) {
        if (q.account == "ALL") return AllTotals();
        if (const auto codes = Own({q.group, Trimmed(q.account)})) AccountTotal(*codes, false);
    }
    void HolderTotals(std::int32_t token, bool own) {
        std::set<Codes> found;
        for (const Codes& holder : HoldersOf(token)) {
            if (const auto codes = own ? Own(holder) : Totalled(holder)) found.insert(*codes);
        }
        for (const Codes& codes : found) AccountTotal(codes, !own);
    }

    void AccountScrips(const Question& q) {
        if (q.account != "ALL") {
            if (const auto codes = ScripsOf({q.group, Trimmed(q.account)})) Scrips(*codes, q.token);
            return;
        }
        if ((at_ != 1 || second_ != 7) && at_ != 6 && entity_ != "-") {
            for (const Codes& codes : Recorded()) Scrips(codes, q.token);
            return;
        }
        screen_.anyOf = true;
        std::set<Codes> sums;
        for (const Stand& s : stands_) sums.insert({s.codes.first, Six(s.codes.second)});
        for (const Codes& codes : sums) Scrips(codes, q.token);
    }
    [[nodiscard]] bool Holds(std::int32_t token) const { return !HoldersOf(token).empty(); }

    void EntityScrips(const Question& q) {
        screen_.ofOwner = true, screen_.filter = q.account;
        std::map<Scrip, std::pair<Position, Position>> nets;  // its own, and of the clients that it keeps apart
        std::set<Scrip> merged;                               // at the price that the latter saw last
        for (const Entry& e : *entries_) {
            const bool legs = e.event.product == product::kMarginPlus, here = OfPeriod(e.event);
            if (legs && here) screen_.legs.insert(e.event.token);
            const Scrip scrip{e.event.Family(), e.event.exchangeMask, e.event.token};
            const bool wanted =
                q.token == kAllSecurities ? IsWalkedNet(scrip) : q.token == scrip.token && IsLookedUp(scrip);
            if (!wanted || !OnMask(e.event)) continue;
            auto& [own, apart] = nets[scrip];
            if (e.flat && here && !legs) own.Add(e.event.Change());
            if (KeptApart(e)) apart.Add(e.event.Change()), merged.insert(scrip);
        }
        for (auto& [scrip, net] : nets) {
            Position sum = net.first;
            if (at_ == 0 || at_ == 7) sum.Add(net.second);
            if (!Traded(sum)) continue;
            Row& row = PutScrip({}, scrip, sum);
            if (merged.contains(scrip)) row.mtm = row.open = {};
        }
    }

    void TokenHolders(const Question& q) {
        if (q.token == kAllSecurities) {
            for (const Codes& codes : Recorded()) {
                for (const auto& [scrip, p] : HeldBy(codes)) {
                    const bool wanted = product_ == product::kMtf ? scrip.Walked() == kMtf : scrip.family == Family();
                    if (wanted && Traded(p)) PutScrip(First(codes)->Shown(), scrip, p);
                }
            }
            return;
        }
        if (q.account == "ALL") {
            for (const Codes& codes : HoldersOf(q.token)) {
                if (!PassedOver(codes)) TokenRow(codes, q.token, codes.second, false);
            }
            return;
        }
        const Codes plain{Trimmed(q.group), Trimmed(q.account)};
        const Codes six{plain.first, Six(plain.second)}, ten{plain.first, Ten(plain.second)};
        std::vector<Codes> tried{plain};
        if (entity_ != "-" && (at_ == 6 || (at_ == 0 && second_ == 6))) {
            tried.push_back(ten);
        } else if (entity_ == "-" || at_ == 7 || (at_ == 0 && second_ == 7)) {
            tried.insert(tried.end(), {six, ten});
        }
        const std::vector<Codes> holders = HoldersOf(q.token);
        for (const Codes& codes : tried) {
            if (std::find(holders.begin(), holders.end(), codes) == holders.end()) continue;
            return TokenRow(codes, q.token, First(codes)->Shown().second, true);
        }
    }

 private:
    [[nodiscard]] int LevelOn(std::int16_t exchangeMask) const {
        const bool cash = IsCashExchange(exchangeMask);
        if (level_ == 130) return cash ? 0 : 1;
        return level_ == 131 ? (cash ? 1 : 0) : level_;
    }
    [[nodiscard]] int Period() const { return mask_ & kExpiryBit; }
    [[nodiscard]] bool OfPeriod(const Event& e) const { return Period() == 1 || e.HasDaily(); }
    [[nodiscard]] bool OnMask(const Event& e) const { return (e.SegmentBit() & mask_) != 0; }
    [[nodiscard]] bool Counts(const Event& e) const {
        return e.trade || e.correction || e.IsConversion() || book_.IsOrderBased();
    }
    static bool Traded(const Position& p) { return p.tradedBuy.quantity > 0 || p.tradedSell.quantity > 0; }
    [[nodiscard]] int Family() const {
        if (product_ == product::kDelivery) return kDelivery;
        return product_ == product::kMarginPlus ? kSecondLeg : product_ == product::kMtf ? kMtf : 0;
    }
    /// In the positions by client a two-leg order stands by its second leg until expiry.
    [[nodiscard]] int FamilyByClient(const Event& e) const {
        return e.product == product::kMarginPlus && Period() == 1 ? kSecondLeg : e.Family();
    }
    [[nodiscard]] double Price(const Scrip& scrip) const { return book_.LastWorthOf(scrip.exchangeMask, scrip.token); }

    /// A level that sums over the accounts of a holder has it under a shorter code with a '+' besides.
    void TakeStands(const Entry& e) {
        const bool own = Period() == 1 || e.event.HasDaily();
        const int level = LevelOn(e.event.exchangeMask), mode = book_.PositionMode();
        const bool groupless = e.types.group == 6, everyOrder = book_.IsOrderBased();
        const bool byDealer = (entity_ == "-" && (mode == 2 || everyOrder)) ||
                              (level == 7 && (mode == 3 || everyOrder)) || (level == 0 && second_ == 7);
        const bool byGroup = level == 6 || (level == 0 && second_ == 6);
        Stand sum{{e.group, ""}, e.types, &e.event, true};
        if (byDealer && (groupless || e.types.client == 6 || e.types.client == 1)) {
            sum.codes.second = Six(e.account);
            if (groupless || e.types.client == 6) sum.codes.first = "", sum.types = {6, -1, -1};
        } else if (byGroup && groupless && (e.types.client == 1 || e.types.subClient == 1)) {
            sum.codes.second = Ten(e.account);
        }
        const bool sums = book_.HoldsByClient() && !sum.codes.second.empty();
        const bool hidden = (level == 7 && (mode == 2 || everyOrder)) || (entity_ == "-" && mode == 3);
        const bool recorded =
            book_.HoldsByClient() && !sums && !hidden && (Period() == 1 || GroupOf(e.event.product) == 0);
        if (own) stands_.push_back({{e.group, e.account}, e.types, &e.event, recorded});
        if (sums) stands_.push_back(sum);
    }

    Row& Put(const Codes& codes, std::int32_t token, const Position& position) {
        screen_.rows.push_back({entity_, codes.first, codes.second, mask_, token, position, {}, {}});
        return screen_.rows.back();
    }
    Row& PutScrip(const Codes& codes, const Scrip& scrip, const Position& p) {
        Row& row = Put(codes, scrip.token, p);
        const bool traded = book_.HasTraded(entity_, scrip.exchangeMask, scrip.token);
        if (scrip.family != 0 || !traded || !book_.IsMarked(entity_)) return row;
        const Worth worth(p, Price(scrip));
        row.mtm = worth.mtm, row.open = worth.open;
        return row;
    }

    [[nodiscard]] const Stand* First(const Codes& codes) const {
        const auto found =
            std::find_if(stands_.begin(), stands_.end(), [&](const Stand& s) { return s.codes == codes; });
        return found == stands_.end() ? nullptr : &*found;
    }
    [[nodiscard]] std::optional<Codes> There(const Codes& codes) const {
        return First(codes) ? std::optional{codes} : std::nullopt;
    }
    [[nodiscard]] std::set<Codes> Recorded() const {
        std::set<Codes> accounts;
        for (const Stand& s : stands_) {
            if (s.byClient) accounts.insert(s.codes);
        }
        return accounts;
    }
    [[nodiscard]] std::vector<Codes> HoldersOf(std::int32_t token) const {
        std::set<Codes> holders;
        for (const Stand& s : stands_) {
            const Event& e = *s.event;
            const bool holds = s.byClient && Counts(e) && e.token == token && e.exchangeMask == exchange_;
            if (holds && FamilyByClient(e) == Family()) holders.insert(s.codes);
        }
        return {holders.begin(), holders.end()};
    }
    /// What the account has traded of each scrip on the mask: what an order replaces stays in until it trades.
    [[nodiscard]] std::map<Scrip, Position> HeldBy(const Codes& codes) const {
        std::map<Scrip, Position> held;
        for (const Stand& s : stands_) {
            const Event& e = *s.event;
            if (s.codes != codes || !s.byClient || !Counts(e) || !OnMask(e)) continue;
            Position change = e.Change();
            if (!e.IsConversion()) {
                Event added = e;
                added.prevQuantity = 0, added.prevPrice = 0;
                change = added.Change();
            }
            held[{FamilyByClient(e), e.exchangeMask, e.token}].Add(change);
        }
        return held;
    }

    void AccountTotal(const Codes& codes, bool orders) {
        if (!book_.HoldsByClient()) return;
        Position sum;
        bool reached = false, known = book_.IsMarked(entity_);
        std::map<Scrip, Position> scrips;
        for (const Stand& s : stands_) {
            const Event& e = *s.event;
            if (s.codes != codes || !OnMask(e)) continue;
            scrips[{e.Family(), e.exchangeMask, e.token}].Add(e.Change());
            known = known && s.byClient && !e.correction && !e.IsConversion() && e.product != product::kMtf &&
                    e.product != product::kMarginPlus;
            if (GroupOf(e.product) != product_) continue;
            reached = true, sum.Add(e.Change());
        }
        if (!reached || !(Traded(sum) || (orders && book_.IsOrderBased()))) return;
        Row& row = Put(First(codes)->Shown(), kAllSecurities, sum);
        if (!known) return;
        row.mtm = 0, row.open = 0;
        for (const auto& [scrip, p] : scrips) {
            const Worth worth(p, scrip.family == 0 ? Price(scrip) : 0);
            *row.mtm += worth.mtm, *row.open += worth.open;
        }
    }
    void AllTotals() {
        for (const Codes& codes : Listed()) AccountTotal(codes, false);
    }
    /// Accounts that are listed under the product.
    [[nodiscard]] std::set<Codes> Listed() const {
        std::set<Codes> accounts;
        for (const Stand& s : stands_) {
            const int group = GroupOf(s.event->product);
            const bool listed = Period() == 1 ? group == product_ : group != product::kMtf;
            if (s.byClient && listed) accounts.insert(s.codes);
        }
        return accounts;
    }
    void Scrips(const Codes& codes, std::int32_t token) {
        for (const auto& [scrip, p] : HeldBy(codes)) {
            if (token == kAllSecurities ? scrip.Walked() != Family() : scrip.token != token || scrip.family != Family())
                continue;
            if (Traded(p) || book_.IsOrderBased()) PutScrip({First(codes)->Shown().first, codes.second}, scrip, p);
        }
    }
    void TokenRow(const Codes& codes, std::int32_t token, const std::string& account, bool untested) {
        for (const auto& [scrip, p] : HeldBy(codes)) {
            if (scrip.token != token || scrip.family != Family()) continue;
            if (untested || Traded(p)) PutScrip({First(codes)->Shown().first, account}, scrip, p);
        }
    }

    [[nodiscard]] bool IsWalkedNet(const Scrip& scrip) const {
        if (product_ == product::kMarginPlus) return true;
        const int walked = scrip.Walked();
        return product_ == 0 ? walked != kDelivery && walked != kMtf : walked == Family();
    }
    [[nodiscard]] bool IsLookedUp(const Scrip& scrip) const {
        return scrip.exchangeMask == exchange_ && scrip.family == (product_ == product::kMtf ? kMtf : 0) &&
               product_ != product::kMarginPlus;
    }
    /// Orders of client types 3 and 5, but on MCX, at the levels that sum over dealers.
    [[nodiscard]] bool KeptApart(const Entry& e) const {
        if ((e.types.client != 3 && e.types.client != 5) || e.event.exchangeMask == kMaskMcx) return false;
        const int level = LevelOn(e.event.exchangeMask);
        return book_.HoldsByClient() && (entity_ == "-" || ((level == 0 || level == 7) && second_ == 7));
    }

    [[nodiscard]] std::optional<Codes> Totalled(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)}, ten{plain.first, Ten(plain.second)};
        const Stand* first = First(plain);
        if (!first) return sumsByDealer_ ? There(six) : std::nullopt;
        const auto [ct, gt, st] = first->types;
        const bool oneOrSix = ct == 1 || ct == 6;
        if (sumsByDealer_) return oneOrSix ? There(six) : plain;
        if ((at_ == 6 && oneOrSix) || ((at_ == 0 || at_ == 1) && second_ == 6)) {
            if ((at_ != 6 && at_ != 0) || second_ != 6 || (ct != 1 && st != 1)) return plain;
            if (oneOrSix) return There(ten);
            return PlusAt(plain.second, 10) ? std::optional{plain} : std::nullopt;
        }
        if (!oneOrSix && gt != 6) return plain;
        const bool shown =
            (ct == 1 && at_ == 1) || at_ == 8 || PlusAt(plain.second, 6) || (at_ == 6 && (ct == 2 || ct == 3));
        return shown ? std::optional{plain} : std::nullopt;
    }
    [[nodiscard]] std::optional<Codes> Own(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)}, ten{plain.first, Ten(plain.second)};
        if ((plain.second == "*****" || entity_ != "-") && !(at_ == 7 && second_ == 7)) {
            if (First(plain)) return plain;
            return book_.PositionMode() == 3 && at_ == 6 ? There(ten) : std::nullopt;
        }
        return First(six) ? six : There(ten);
    }
    [[nodiscard]] std::optional<Codes> ScripsOf(const Codes& plain) const {
        const Codes six{plain.first, Six(plain.second)}, ten{plain.first, Ten(plain.second)};
        const Stand* first = First(plain);
        const int ct = first ? first->types.client : -1;
        if (first && sumsByDealer_) return ct == 1 || ct == 6 ? There(six) : ct == 8 ? There(ten) : plain;
        if (first) return ((at_ == 0 && second_ == 6) || at_ == 6) && ct == 1 ? There(ten) : plain;
        if (sumsByDealer_) return First(six) ? six : There(ten);
        return (at_ == 0 && second_ == 6) || at_ == 6 ? There(ten) : std::nullopt;
    }
    [[nodiscard]] bool PassedOver(const Codes& codes) const {
        const auto [ct, gt, st] = First(codes)->types;
        const std::string& c = codes.second;
        if (entity_ != "-" && ((at_ == 6 && (ct == 1 || ct == 6)) || ((at_ == 0 || at_ == 1) && second_ == 6))) {
            if (c.size() <= 10) return ((at_ == 0 && second_ == 6) || (at_ == 6 && ct == 1)) && PlusAt(c, 6);
            return (at_ == 6 || at_ == 0) && second_ == 6 && !PlusAt(c, 10);
        }
        if (ct != 6 && !(ct == 1 && gt == 6)) return false;
        return at_ == 1 && (second_ == 6 || second_ == 7) ? PlusAt(c, 6) : !PlusAt(c, 6);
    }

    static inline const CBook::Entries kNone;
    const CBook& book_;
    std::string entity_;
    int level_, second_;
    std::int16_t mask_;
    int product_, at_ = 0;
    CScreens::Screen& screen_;
    const CBook::Entries* entries_ = &kNone;
    std::vector<Stand> stands_;
    std::int16_t exchange_ = 0;
    bool sumsByDealer_ = false;
};

bool Near(double a, double b) { return std::abs(a - b) <= 1e-4 + 1e-9 * std::abs(b); }

}  // namespace

// ---------------------------------------------------------------------------------------------------------------
// What is due

CScreens::Screen CScreens::Expect(const Question& asked) const {
    Screen screen;
    Question q = asked;
    const int product = GroupOf(q.product == product::kConvertToDelivery ? 0 : q.product);
    if (LimitMaskToSegment(q.mask) == 0 || q.kind < 0 || q.kind > 12 || q.kind == 2 || q.kind == 3) return screen;
    if (product != 0 && (q.mask & kExpiryBit) == 0) {
        if (product == product::kMtf || !IsCashExchange(LimitMaskToExchangeMask(q.mask))) return screen;
        ++q.mask;
    }
    const auto viewOf = [&](const std::string& entity, int of) {
        return CView(book_, entity, places_.at(entity), q.mask, of, screen);
    };
    const bool families = q.kind == 9;
    if ((q.kind == 1 || families) && q.category == "ALL") {
        static const std::set<int> kHouse{70, 71, 201, 200, 66, 60, 61, 191, 190, 74, 75}, kFamilies{78, 68};
        screen.ofOwner = true;
        for (const auto& [entity, place] : places_) {
            if (!(families ? kFamilies : kHouse).contains(place.first + 10 * place.second)) continue;
            const bool reached = book_.HasTraded(entity, LimitMaskToExchangeMask(q.mask), q.token);
            if (!q.byToken || (reached && !(families && product == product::kDelivery)))
                viewOf(entity, product).Total();
        }
        return screen;
    }
    if (!places_.contains(q.category)) return screen.result = -1, screen;
    CView view = viewOf(q.category, product), plain = viewOf(q.category, 0);
    const bool delivered = product == product::kDelivery || product == product::kMarginPlus;
    switch (q.kind) {
        case 4:
            if (!q.byToken) {
                view.AccountTotals(q);
            } else if (!delivered) {
                plain.HolderTotals(q.token, false);
            }
            break;
        case 5: view.EntityScrips(q); break;
        case 6:
        case 12:
            if (!q.byToken) {
                view.AccountScrips(q);
            } else if (!delivered && plain.Holds(q.token)) {
                plain.AccountScrips(q);
            }
            break;
        case 7: view.TokenHolders(q); break;
        case 11:
            if (delivered) break;
            q.byToken ? plain.HolderTotals(q.token, true) : plain.OwnTotals(q);
            break;
        default: view.Total();
    }
    return screen;
}

// ---------------------------------------------------------------------------------------------------------------
// Asking

std::string CScreens::Row::Told() const {
    std::string text = entity + ", account " + group + "/" + account + ", mask " + std::to_string(mask) + ", token " +
                       std::to_string(token) + ":";
    for (const auto& amount : {position.orderBuy, position.orderSell, position.tradedBuy, position.tradedSell}) {
        text += " " + std::to_string(amount.quantity) + "@" + std::to_string(static_cast<std::int64_t>(amount.value));
    }
    if (mtm) text += " mtm " + std::to_string(*mtm);
    if (open) text += " open " + std::to_string(*open);
    return text;
}

std::vector<Row> CScreens::Seen(const Question& q, short& result) const {
    std::string category = q.category, group = q.group, account = q.account;
    survhost::PositionRows list;
    result = ::GetNetPositionInfoFromDll(q.kind, category.data(), group.data(), account.data(), q.token, q.mask,
                                         list.Get(), q.byToken ? 1 : 0, q.product);
    std::vector<Row> rows;
    for (CPtrList::Position at = list.Get()->GetHeadPosition(); at;) {
        const auto& r = *static_cast<const BKExposureTag*>(list.Get()->GetNext(at));
        const Position position{{r.orderBuyQty, r.orderBuyValue},
                                {r.orderSellQty, r.orderSellValue},
                                {r.tradedBuyQty, r.tradedBuyValue},
                                {r.tradedSellQty, r.tradedSellValue}};
        rows.push_back({Text(r.levelCode), Text(r.groupCode), Text(r.accountCode), r.limitMask, r.token, position,
                        r.mtmValue, r.openPositionValue});
    }
    return rows;
}

std::string CScreens::Compare(Screen due, std::vector<Row> seen) {
    for (Row& row : seen) {
        if (!due.ofOwner) break;
        const Codes codes{row.group, row.account};
        if (owners_.try_emplace(row.entity, codes).first->second != codes)
            return row.Told() + " isn't its first holder";
        const double net = row.position.tradedBuy.value - row.position.tradedSell.value;
        if (row.token == kAllSecurities && !Near(*row.open, *row.mtm + net))
            return row.Told() + " has another open value";
        row.group = row.account = "";
    }
    // An order that came and went without a trace may have left a row of nothing.
    std::erase_if(seen, [&](const Row& row) { return due.legs.contains(row.token) || row.position == Position{}; });
    std::erase_if(due.rows, [&](const Row& row) {
        const bool another =
            due.anyOf && (seen.empty() || row.account != seen[0].account || row.group != seen[0].group);
        const auto owner = owners_.find(row.entity);
        const bool filtered = due.filter != "ALL" && (owner == owners_.end() || owner->second.second != due.filter);
        return another || filtered || due.legs.contains(row.token) || row.position == Position{};
    });
    const auto byKey = [](const Row& a, const Row& b) { return a.Key() < b.Key(); };
    std::sort(seen.begin(), seen.end(), byKey), std::sort(due.rows.begin(), due.rows.end(), byKey);
    for (std::size_t i = 0; i < std::max(seen.size(), due.rows.size()); ++i) {
        if (i >= seen.size()) return due.rows[i].Told() + " isn't shown";
        if (i >= due.rows.size()) return seen[i].Told() + " is shown";
        const Row &is = seen[i], &was = due.rows[i];
        // An account and its sum are shown alike, each with its own worth.
        const bool alone =
            std::count_if(seen.begin(), seen.end(), [&](auto& row) { return row.Key() == is.Key(); }) == 1;
        const bool worth =
            !alone || (Near(*is.mtm, was.mtm.value_or(*is.mtm)) && Near(*is.open, was.open.value_or(*is.open)));
        if (is.Key() != was.Key() || !worth) return is.Told() + " is shown, not " + was.Told();
        ++shown_;
    }
    return {};
}

std::string CScreens::Ask(const Question& q) {
    const Screen due = Expect(q);
    short result = 0;
    const std::vector<Row> seen = Seen(q, result);
    const bool unsure = due.filter != "ALL" && !owners_.contains(q.category);
    std::string wrong = unsure && result == due.result ? std::string() : Compare(due, seen);
    if (result != due.result) wrong = "the answer is " + std::to_string(result);
    if (wrong.empty()) return {};
    return wrong + "; kind " + std::to_string(q.kind) + " of " + q.category + ", account \"" + q.account +
           "\", group \"" + q.group + "\", token " + std::to_string(q.token) + (q.byToken ? " by token" : "") +
           ", mask " + std::to_string(q.mask) + ", product " + std::to_string(q.product);
}

Question CScreens::Any(CDice& dice, const std::string& entity, int kind) const {
    Question q{kind, entity, "G00", "ALL", kAllSecurities, dice.PickOf(kMasks), dice.OneIn(3), 0};
    const auto found = book_.EntriesByEntity().find(entity);
    if (found != book_.EntriesByEntity().end() && !dice.OneIn(20)) {
        const Entry& e = dice.PickOf(found->second);
        const std::array codes{e.account, e.account, Six(e.account), Ten(e.account)};
        q.group = dice.OneIn(8) ? "" : e.group, q.account = dice.OneIn(3) ? "ALL" : dice.PickOf(codes);
        if (dice.OneIn(3)) q.group = " " + q.group + " ";
        if (dice.OneIn(3) && kind != 5 && q.account != "ALL") q.account = " " + q.account + " ";
        q.mask = static_cast<std::int16_t>(e.event.SegmentBit() + dice.Pick(0, 1));
        if (dice.OneIn(2) || q.byToken) q.token = e.event.token;
        q.product = static_cast<std::int16_t>(GroupOf(e.event.product));
    }
    if (dice.OneIn(4)) q.product = dice.Among<std::int16_t>(0, 2, 4, 8, 16);
    return q;
}

std::string CScreens::AskSome(const Json& line) {
    if (!line.contains("request") || places_.empty()) return {};
    std::vector<std::string> entities{"-"};
    for (const char* name : {"groupCode", "dealerCode", "familyCode", "clientCode", "subClientCode"}) {
        const std::string code = line["request"].value(name, "");
        if (places_.contains(code)) entities.push_back(code);
    }
    CDice dice(static_cast<std::uint32_t>(std::hash<std::string>{}(line.dump())));
    for (int i = 0; i < 3; ++i) {
        if (std::string wrong = Ask(Any(dice, dice.PickOf(entities), dice.Pick(0, 12))); !wrong.empty()) return wrong;
    }
    return {};
}

std::string CScreens::AskAll(const Snapshot& state) {
    std::vector<std::string> entities{"ALL", "X99"};
    for (const auto& [entity, place] : places_) entities.push_back(entity);
    for (const std::string& entity : entities) {
        CDice dice(static_cast<std::uint32_t>(std::hash<std::string>{}(entity)));
        for (int kind = -1; kind <= 13; ++kind) {
            for (int i = entity == "ALL" ? 40 : 6; i > 0; --i) {
                Question q = Any(dice, entity == "ALL" ? "-" : entity, kind);
                q.category = entity;
                if (std::string wrong = Ask(q); !wrong.empty()) return wrong;
            }
        }
    }
    for (const std::string& entity : entities) {
        for (const int mask : {0, 3, 0x10, 0xF, 0x81, 0x181, 0x1FF}) {
            survhost::LimitRows rows(book_.PositionMode() >= 2 ? survhost::LimitRows::Owner::kLibrary
                                                               : survhost::LimitRows::Owner::kHost);
            std::string code = entity;
            Json answer{{"result", ::GetMarketExposure(code.data(), static_cast<short>(mask), rows.Get())}};
            answer["limits"] = rows.Decode();
            std::string wrong = MarketExposure({{"code", entity}, {"periodicity", mask}}, answer, state);
            if (!wrong.empty()) return wrong;
        }
    }
    return Holdings(state);
}

// ---------------------------------------------------------------------------------------------------------------
// Limit rows and holdings

void CScreens::Take(const Json& line, const Json& answer) {
    const std::string call = line["call"];
    const auto place = [this](const Json& row) {
        places_[row.value("entityCode", "")] = {row.value("entityLevel", 0), std::max(row.value("subLevel", 0), 0)};
    };
    if (call == "InitializeSurvManager" && line.contains("limitList")) {
        for (const Json& row : line["limitList"]) place(row);
    }
    if (call == "AddSurvLimits" && answer.value("result", -1) == 0) place(line["limit"]);
    if (call == "AddUpdateClientPreferencesInfo") {
        const Json& record = line["preference"];
        options_[{record.value("preferenceCode", ""), record.value("exchange", 0)}] = {record.value("fundFlags", 0),
                                                                                       record.value("marginFlags", 0)};
    }
}

/// The rows of a mask, with the options that the entity's preferences put in force.
std::string CScreens::MarketExposure(const Json& line, const Json& answer, const Snapshot& before) const {
    constexpr int kFund = 0x60, kExposureMargin = 0x10;  // limitOptions
    const std::string code = line.value("code", "");
    const int mask = line.value("periodicity", 0);
    const int exchange = CombinedMaskToExchangeMask(static_cast<std::int16_t>(mask));
    std::multiset<std::string> due, seen;
    for (BKSurveillanceLimitDefTag row : before.rows) {
        const std::string entity = Text(row.entityCode);
        if (row.limitMask != mask || (code != "ALL" && code != entity)) continue;
        const auto overall = options_.find({entity, -1}), own = options_.find({entity, exchange});
        const auto& record = own != options_.end() ? own : overall;
        if (record != options_.end()) {
            int bits = row.limitOptions & ~(kFund | kExposureMargin);
            if (overall != options_.end()) bits |= overall->second.first & kFund;
            if (record->second.second & 1) bits |= kExposureMargin;
            row.limitOptions = static_cast<std::uint8_t>(bits);
        }
        due.insert(survhost::DecodeRecord(row).dump());
    }
    for (const Json& row : answer.value("limits", Json::array())) seen.insert(row.dump());
    if (due == seen && answer.value("result", -1) == 0) return {};
    return "market exposure of " + code + ", mask " + std::to_string(mask) + ": " +
           (seen.empty() ? "nothing" : *seen.begin()) + " not " + (due.empty() ? "nothing" : *due.begin());
}

/// Every holding is told under its entity and its ISIN.
std::string CScreens::Holdings(const Snapshot& state) const {
    const auto told = [](int kind, std::string code, std::string isin) {
        survhost::HoldingRows rows;
        std::multiset<std::string> texts{
            std::to_string(::GetDPPositionInfoFromDll(kind, code.data(), isin.data(), rows.Get()))};
        for (const Json& row : rows.Decode()) texts.insert(row.dump());
        return texts;
    };
    for (const auto& [entity, place] : places_) {
        std::multiset<std::string> due{"0"};
        for (const tagDPHolding& h : state.holdings) {
            if (Text(h.categoryCode) == entity) due.insert(survhost::DecodeRecord(h).dump());
        }
        const std::multiset<std::string> none{"0"};
        if (told(1, entity, "ALL") != due || told(1, entity, kIsin) != due) return "holdings of " + entity;
        if (told(1, entity, "X") != none || told(2, entity, "ALL") != none) return "other holdings of " + entity;
    }
    return told(1, "X99", "ALL") == std::multiset<std::string>{"-1"} ? "" : "holdings of nobody";
}

}  // namespace soak
