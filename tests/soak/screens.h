#pragma once

// What the position screens must show: each query against what the twin has entered.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "book.h"
#include "dice.h"

namespace soak {

/// A net position query in plain texts.
struct Question {
    int kind = 0;
    std::string category, group, account;
    std::int32_t token = 0;
    std::int16_t mask = 0;
    bool byToken = false;
    std::int16_t product = 0;
};

class CScreens {
 public:
    explicit CScreens(const CBook& book) : book_(book) {}

    /// Where entities stand, and their preferences.
    void Take(const Json& line, const Json& answer);
    /// Empty, or the first answer that isn't what the entries come to: a few about what the call was about, or those of
    /// every kind about every entity.
    [[nodiscard]] std::string AskSome(const Json& line);
    [[nodiscard]] std::string AskAll(const Snapshot& state);
    /// Empty, or what is wrong with the rows of a market exposure query, asked when the rows stood like this.
    [[nodiscard]] std::string MarketExposure(const Json& line, const Json& answer, const Snapshot& before) const;
    /// Rows that were shown and as they should be.
    [[nodiscard]] std::size_t Shown() const { return shown_; }

    /// A level, and the second one.
    using Place = std::pair<int, int>;
    /// Group and account.
    using Codes = std::pair<std::string, std::string>;
    /// A row; the money that prices make is left out where the twin doesn't know the price.
    struct Row {
        std::string entity, group, account;
        int mask = 0;
        std::int32_t token = 0;
        Position position;
        std::optional<double> mtm, open;

        [[nodiscard]] auto Key() const { return std::tie(entity, group, account, mask, token, position); }
        [[nodiscard]] std::string Told() const;
    };
    struct Screen {
        short result = 0;
        std::vector<Row> rows;
        bool ofOwner = false;         ///< rows have the codes of the entity's first holder
        bool anyOf = false;           ///< some of the rows: one account stands for all
        std::set<std::int32_t> legs;  ///< scrips of two-leg orders, whose positions the twin doesn't form
        std::string filter = "ALL";   ///< the first holder's account
    };

 private:
    [[nodiscard]] std::string Ask(const Question& question);
    [[nodiscard]] Screen Expect(const Question& question) const;
    [[nodiscard]] std::vector<Row> Seen(const Question& question, short& result) const;
    [[nodiscard]] std::string Compare(Screen due, std::vector<Row> seen);
    [[nodiscard]] Question Any(CDice& dice, const std::string& entity, int kind) const;
    [[nodiscard]] std::string Holdings(const Snapshot& state) const;

    const CBook& book_;
    std::map<std::string, Place> places_;
    std::map<std::string, Codes> owners_;  ///< the holder that an entity's own positions are shown under
    std::map<std::pair<std::string, int>, std::pair<int, int>> options_;  ///< fundFlags and marginFlags
    std::size_t shown_ = 0;
};

}  // namespace soak
