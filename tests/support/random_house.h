#pragma once

// Some 300 entities that trade every product on every market, and the days of events that they have.

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "support/scenario.h"

namespace surv::test {

/// One figure of a house under a name without addresses, so that two houses compare.
struct Figure {
    std::string entity;
    std::string_view kind;  ///< row, flat, apart, account, day, margin, client, total, cash, holding: a literal
    std::string place;      ///< mask and token, or key of position or account
    int index;              ///< of a row: the figure's offset in the record
    double value;
    friend bool operator==(const Figure&, const Figure&) = default;
};
using Figures = std::vector<Figure>;  ///< those that aren't 0; last prices and class flags are no figures
/// Empty, or the first figure that differs by more than the tolerance. The order of the figures doesn't count.
[[nodiscard]] std::string Difference(const Figures& a, const Figures& b, double tolerance,
                                     const std::function<bool(const Figure&)>& counts = {});

/// Who sends orders: a client with or without sub client, a dealer for itself, the house.
struct Holder {
    OrderSpec order;  ///< with everything but the instrument and the order's own figures
    bool narrow = false;
    bool nri = false;
    bool deliversAtDealer = false;  ///< a dealer that is its own client
};

struct Instrument {
    std::int16_t exchangeMask;
    std::int32_t token, strikePrice = 0, expiryDate = 0, underlyingToken = 0;
};

/// A message of a day.
struct Step {
    std::size_t holder = 0;
    bool check = false;  ///< else an event
    OrderSpec spec;
    bool accepted = true;  ///< what the house has answered
};

class CRandomHouse : public CScenario {
 public:
    explicit CRandomHouse(std::int16_t positionMode);

    std::vector<Holder> holders;
    std::vector<Instrument> instruments;

    /// Starts anew from rows: the reference data of this house, and what another hands out.
    void StartFrom(const LoadLists& lists);
    /// Sends a step; false: a check refused it.
    bool Send(const Step& step);
    [[nodiscard]] Figures AllFigures() const;
    /// What a step can reach: the rows of its entities, and its scrip in their positions, accounts and totals.
    [[nodiscard]] Figures FiguresAround(const OrderSpec& spec) const;

 private:
    void MakeHolders();
    void MakeInstruments();
    void LoadReferences();
    void OpenMarkets();
    void MakeEntity(const std::string& code, std::int16_t level, std::int16_t subLevel, bool wide);
};

/// The entities of an order, from the root down.
[[nodiscard]] std::vector<std::string> EntitiesOf(const CScenario& s, const OrderSpec& spec);

/// How orders come in.
enum class Entry : std::uint8_t { kChecked, kEvents };

/// Makes the steps of a day, each as the one before it allows. The same seed makes the same day.
class CRandomDay {
 public:
    CRandomDay(const CRandomHouse& house, std::uint32_t seed, Entry entry)
        : house_(house), random_(seed), entry_(entry) {}

    /// Of equity orders, as often as they stand here; the rest has none.
    std::vector<std::int16_t> products{1, 1, 1, 2, 4, 8, 9};

    /// A new order; it isn't open until Entered.
    Step NewOrder();
    void Entered(const Step& step) { open_.push_back({step.holder, step.spec, step.spec.quantity, 0}); }
    [[nodiscard]] bool HasOpen() const { return !open_.empty(); }
    /// The end of an order that is open, by one of its codes.
    Step End(const Step& order);
    /// A trade, change, end or correction of something that stands.
    Step Next();
    int Pick(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1)); }

    template <class Of>
    auto& PickOf(Of& of) {
        return of[static_cast<std::size_t>(Pick(0, static_cast<int>(of.size()) - 1))];
    }

 private:
    struct Open {
        std::size_t holder;
        OrderSpec spec;
        std::int32_t remaining, filled;
    };
    Step About(const Open& order, std::int16_t code) const;

    const CRandomHouse& house_;
    std::mt19937 random_;
    Entry entry_;
    std::vector<Open> open_;
    std::vector<Step> trades_;  ///< margin trades of equity, which may be corrected
};

}  // namespace surv::test
