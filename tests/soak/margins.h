#pragma once

// The margins of limit rows: they move by what an order changes in the margin of its account, and are published whole
// after a risk parameter file and a changed preference.

#include "scan.h"

namespace soak {

class CMargins {
 public:
    /// What a call brought, and what the book made of it; `state` is as the call has left it.
    void Take(const Json& line, const Json& answer, const CBook& book, const Snapshot& state);
    /// Empty, or the first margin of a row that isn't as it should be.
    [[nodiscard]] std::string Rows(const CBook& book, const Snapshot& state);
    [[nodiscard]] std::size_t Compared() const { return compared_; }

 private:
    using Scrip = std::pair<std::int16_t, std::int32_t>;  ///< exchange mask and token, of a contract or an underlying
    using Four = std::array<double, 4>;                   ///< order side, traded side, worst case, exposure margin
    struct Account {
        int clientType = 0;
        std::map<std::tuple<std::int16_t, bool, std::int32_t>, Underlying> underlyings;  ///< by exchange and nearness
        [[nodiscard]] Reading Read(std::int16_t exchange) const;
    };
    struct RowDue {
        int mask = 0, level = 0, options = 0;
        bool known = true;
        Four due{};
        std::optional<Four> otherwise;  ///< where the calls don't tell whether it was published
        double size = 0;
    };
    struct Entity {
        std::map<std::string, Account> accounts;
        std::map<int, RowDue> rows;                            ///< of all securities, by mask
        std::map<std::tuple<int, int, Scrip>, Position> flat;  ///< of equity, by period and family
        std::map<std::int16_t, Margins> told;  ///< of equity by exchange: what came as events, for want of a row
        std::set<Scrip> traded;
        std::set<std::int16_t> asked;  ///< exchanges that some order named
    };
    struct File {
        std::map<Scrip, Charges> charges;
        std::map<Scrip, Risk> risks;
        std::map<Scrip, Scrip> underlyings;  ///< of contracts
    };

    void TakeRows(const Snapshot& state);
    void Prefer(const Json& record);
    void AddRow(const Json& row);
    void RiskMessage(const Json& line);
    void Replace(const File& file);
    void NoteAsked(const Json& request, std::int16_t exchange);
    void Move(const Arrival& arrival, int clientType);
    void MoveContract(const Arrival& arrival, int clientType);
    void MoveEquity(const Arrival& arrival);
    /// Forms a contract's figures anew; where the traded side stays, its quantities are those of before.
    void Form(Underlying& underlying, Contract& contract, const OwnMargin& own, bool tradedFollows);
    /// The same where nothing but what the figures rest on may have changed.
    void Refresh(Underlying& underlying, Contract& contract, const OwnMargin& own);
    /// New parameters or an own margin reach the contracts of an account.
    void Renew(const std::string& code, std::int16_t exchange, const std::function<bool(const Contract&)>& concerns);

    [[nodiscard]] bool Counts(const std::string& code, const Account& account) const;
    [[nodiscard]] Reading Sum(const std::string& code, std::int16_t exchange) const;
    [[nodiscard]] OwnMargin OwnOf(const std::string& code, std::int16_t exchange) const;
    /// Unless it is sure, an entity that was asked for something of the exchange may have been left out.
    void Publish(const std::string& code, std::int16_t exchange, bool sure, bool ownAlone = false);

    std::map<std::string, Entity> entities_;
    std::map<std::pair<std::string, std::int16_t>, OwnMargin> own_;  ///< by entity and exchange
    std::map<Scrip, Rates> rates_;
    std::map<Scrip, ScripRate> scripRates_;
    File live_, staged_;
    bool holdsByClient_ = false;
    std::size_t compared_ = 0;
    bool dayKnown_ = false;  ///< nearness of an expiry hangs on it
};

}  // namespace soak
