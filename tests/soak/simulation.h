#pragma once

// A day played call by call, and what must hold after each of them.

#include <map>
#include <string>

#include "book.h"
#include "house.h"
#include "margins.h"
#include "screens.h"
#include "snapshot.h"

namespace soak {

/// What doesn't hold any more. No check: nothing is wrong.
struct Fault {
    std::string check;
    std::string what;
    std::size_t call = 0;  ///< 1 for the first

    [[nodiscard]] bool Found() const { return !check.empty(); }
};

using Tally = std::map<std::string, std::size_t>;

/// Whether a false invariant is to be found too, which shows that faults are found and cut short.
enum class Planted : std::uint8_t { kNo, kYes };

/// A library that a host has just loaded: one for each process, as the library keeps settings for its whole life.
class CSimulation {
 public:
    explicit CSimulation(Planted planted = Planted::kNo) : planted_(planted) {}

    /// Makes the call and asks every check.
    Fault Play(const Json& line);
    /// What is asked once, when the day is over.
    Fault End();
    [[nodiscard]] const Json& Answer() const { return answer_; }
    [[nodiscard]] const Snapshot& State() const { return state_; }
    [[nodiscard]] const CBook& Book() const { return book_; }
    /// How often what has happened.
    [[nodiscard]] const Tally& Seen() const { return seen_; }

 private:
    Fault Check(const Json& line, const Snapshot& before);
    [[nodiscard]] bool EndsEntered(const Json& line) const;
    /// What an order that has ended at once has left in rows, positions and holdings.
    [[nodiscard]] std::string LeftBehind() const;
    void NoteEntry(const Json& line, const Snapshot& before);

    Planted planted_;
    survhost::Session session_;
    CBook book_;
    CScreens screens_{book_};
    CMargins margins_;
    Snapshot state_;
    Json entered_;  ///< the order of the last call, if it was a new one and is in
    Snapshot beforeOrder_;
    bool enteredByCheck_ = false;
    bool ordersCame_ = false, newCharges_ = false, newPreferences_ = false, corrected_ = false;
    Json answer_;
    std::size_t calls_ = 0;
    Tally seen_;
};

}  // namespace soak
