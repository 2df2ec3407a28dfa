#include "demo.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "order_view.h"
#include "pretty.h"
#include "replay.h"
#include "summary.h"
#include "surveillance/codes.h"

namespace survhost {
namespace {

/// Counts who and what takes part in the day.
class House : public Observer {
 public:
    void OnCall(const Played& played) override {
        if (played.now && !first_) first_ = played.now;
        if (played.now) last_ = played.now;
        const std::string call = TextAt(played.line, "call");
        if (call == "InitializeSurvManager" && played.line.contains("limitList")) {
            for (const Json& row : played.line["limitList"]) CountLimit(row);
        } else if (call == "AddSurvLimits") {
            CountLimit(played.line["limit"]);
        } else if (call == "CheckSurveillance" || call == "UpdateSurveillance") {
            CountOrder(call, played.line);
        }
    }

    void Print(std::ostream& out, const Painter& painter) const {
        out << painter.Paint(Colour::kBold, "The example day");
        if (first_) out << fmt::format("  {}, {} to {}", DateOf(*first_), TimeOfDay(first_), TimeOfDay(last_));
        out << fmt::format("\n\n  The house   {}, {}, {}; {}\n", Count(Limited(groups_), "group"),
                           Count(Limited(dealers_), "dealer"), Count(Limited(clients_), "client"),
                           Count(limitRows_, "limit row"));
        out << fmt::format("  The market  {}\n", Count(scrips_.size(), "scrip"));
        out << "  The day     " << Count(checks_, "order") << (events_ > 0 ? ", " + Count(events_, "event") : "")
            << "\n\n";
    }

 private:
    using Names = std::set<std::string>;

    /// "1 group", "12 groups".
    static std::string Count(std::size_t count, std::string_view what) {
        return fmt::format("{} {}{}", Grouped(static_cast<std::int64_t>(count)), what, count == 1 ? "" : "s");
    }
    static void Insert(Names& names, std::string code) {
        if (!code.empty()) names.insert(std::move(code));
    }

    /// Leaves out the codes that orders name and nobody has: a mistyped dealer is no dealer.
    [[nodiscard]] std::size_t Limited(const Names& named) const {
        return static_cast<std::size_t>(std::count_if(
            named.begin(), named.end(), [&](const std::string& code) { return limited_.contains(code); }));
    }

    void CountLimit(const Json& row) {
        ++limitRows_;
        Insert(limited_, TextAt(row, "entityCode"));
    }

    /// An entity takes part when an order names it; a scrip is a token of an exchange.
    void CountOrder(const std::string& call, const Json& line) {
        const bool check = call == "CheckSurveillance";
        ++(check ? checks_ : events_);
        const Json& request = ObjectAt(line, "request");
        Insert(groups_, TextAt(request, "groupCode"));
        Insert(dealers_, TextAt(request, "dealerCode"));
        Insert(clients_, TextAt(request, "clientCode"));
        if (check) scrips_.insert({LongAt(ObjectAt(line, "order"), "exchangeMask"), LongAt(request, "token")});
    }

    Names limited_;  ///< the codes that have limits
    Names groups_;
    Names dealers_;
    Names clients_;
    std::set<std::pair<std::int32_t, std::int32_t>> scrips_;
    std::size_t limitRows_ = 0;
    std::size_t checks_ = 0;
    std::size_t events_ = 0;
    std::optional<std::int64_t> first_;
    std::optional<std::int64_t> last_;
};

/// Keeps the checked orders of the day, to show all of them or a sample.
class Album : public Observer {
 public:
    void OnCall(const Played& played) override {
        if (auto order = ViewOrder(played)) orders_.push_back({std::move(*order), played.now});
    }

    void Print(std::ostream& out, const Painter& painter, bool all) const {
        const std::vector<std::size_t> shown = all ? EveryOrder() : Sample();
        out << painter.Paint(Colour::kBold,
                             all ? "Every order" : "A sample of the orders, with one refusal of each kind")
            << (all ? "" : "  (--all shows every one)") << "\n\n";
        for (const std::size_t i : shown) out << PrettyOrder(orders_[i].view, orders_[i].now, painter) << '\n';
    }

 private:
    static constexpr std::size_t kSample = 15;
    static constexpr std::size_t kLeastAccepted = 5;  ///< of a sample, also when there are many kinds of refusal

    struct Order {
        OrderView view;
        std::optional<std::int64_t> now;
    };

    [[nodiscard]] std::vector<std::size_t> EveryOrder() const {
        std::vector<std::size_t> all(orders_.size());
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
        return all;
    }

    /// The first refusal of each code, and of each rule that shares one with others, but of the hierarchy's one alone;
    /// filled up with accepted orders spread over the day; in the order of the day.
    [[nodiscard]] std::vector<std::size_t> Sample() const {
        std::set<std::pair<int, std::string>> kinds;
        std::vector<std::size_t> shown;
        std::vector<std::size_t> accepted;
        for (std::size_t i = 0; i < orders_.size(); ++i) {
            const OrderView& view = orders_[i].view;
            if (view.outcome == Outcome::kAccepted) accepted.push_back(i);
            const std::string rule = view.errorCode == surv::code::kNoLimits ? "" : view.rule;
            if (view.outcome == Outcome::kRefused && kinds.insert({view.errorCode, rule}).second) shown.push_back(i);
        }
        const std::size_t room = std::max(kLeastAccepted, kSample - std::min(kSample, shown.size()));
        const std::size_t taken = std::min(room, accepted.size());
        for (std::size_t n = 0; n < taken; ++n) shown.push_back(accepted[n * accepted.size() / taken]);
        std::sort(shown.begin(), shown.end());
        return shown;
    }

    std::vector<Order> orders_;
};

}  // namespace

void PlayDemo(const DemoOptions& options, std::ostream& out, const Painter& painter) {
    const std::string day = options.examples + "/day.jsonl";
    if (options.json) {
        AnswerWriter answers(out);
        Replay({&answers}).PlayFiles({day});
        return;
    }
    House house;
    Album album;
    Summary summary;
    Replay replay({&house, &album, &summary});
    replay.PlayFiles({day});
    house.Print(out, painter);
    album.Print(out, painter, options.all);
    summary.Print(out, replay.GetSession(), painter);
}

}  // namespace survhost
