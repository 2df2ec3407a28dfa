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
            limitRows_ += played.line["limitList"].size();
        } else if (call == "AddSurvLimits") {
            ++limitRows_;
        } else if (call == "CheckSurveillance" || call == "UpdateSurveillance") {
            CountOrder(call, played.line);
        }
    }

    void Print(std::ostream& out, const Painter& painter) const {
        out << painter.Paint(Colour::kBold, "The example day");
        if (first_) out << fmt::format("  {}, {} to {}", DateOf(*first_), TimeOfDay(first_), TimeOfDay(last_));
        out << fmt::format("\n\n  The house   {} groups, {} dealers, {} clients; {} limit rows\n", Count(groups_),
                           Count(dealers_), Count(clients_), Grouped(Signed(limitRows_)));
        out << fmt::format("  The market  {} scrips and contracts\n", Count(scrips_));
        out << fmt::format("  The day     {} orders and changes; {} trades and other events\n\n",
                           Grouped(Signed(checks_)), Grouped(Signed(events_)));
    }

 private:
    using Names = std::set<std::string>;

    static std::int64_t Signed(std::size_t count) { return static_cast<std::int64_t>(count); }
    template <class Set>
    static std::string Count(const Set& set) {
        return Grouped(Signed(set.size()));
    }
    static void Insert(Names& names, std::string code) {
        if (!code.empty()) names.insert(std::move(code));
    }

    void CountOrder(const std::string& call, const Json& line) {
        ++(call == "CheckSurveillance" ? checks_ : events_);
        const Json& request = ObjectAt(line, "request");
        Insert(groups_, TextAt(request, "groupCode"));
        Insert(dealers_, TextAt(request, "dealerCode"));
        Insert(clients_, TextAt(request, "clientCode"));
        scrips_.insert({LongAt(ObjectAt(line, "order"), "exchangeMask"), LongAt(request, "token")});
    }

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

    struct Order {
        OrderView view;
        std::optional<std::int64_t> now;
    };

    [[nodiscard]] std::vector<std::size_t> EveryOrder() const {
        std::vector<std::size_t> all(orders_.size());
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
        return all;
    }

    /// The first refusal of each rule, filled up with accepted orders spread over the day; in the order of the day.
    [[nodiscard]] std::vector<std::size_t> Sample() const {
        std::set<std::pair<int, std::string>> rules;
        std::vector<std::size_t> shown;
        std::vector<std::size_t> accepted;
        for (std::size_t i = 0; i < orders_.size(); ++i) {
            const OrderView& view = orders_[i].view;
            if (view.outcome == Outcome::kAccepted) accepted.push_back(i);
            if (view.outcome == Outcome::kRefused && rules.insert({view.errorCode, view.rule}).second) {
                shown.push_back(i);
            }
        }
        const std::size_t room = kSample - std::min(kSample, shown.size());
        const std::size_t taken = std::min(room, accepted.size());
        for (std::size_t n = 0; n < taken; ++n) shown.push_back(accepted[n * accepted.size() / taken]);
        std::sort(shown.begin(), shown.end());
        return shown;
    }

    std::vector<Order> orders_;
};

}  // namespace

void PlayDemo(const DemoOptions& options, std::ostream& out, const Painter& painter) {
    House house;
    Album album;
    Summary summary;
    Replay replay({&house, &album, &summary});
    replay.PlayFiles({options.examples + "/day.jsonl"});
    house.Print(out, painter);
    album.Print(out, painter, options.all);
    summary.Print(out, replay.GetSession(), painter);
}

}  // namespace survhost
