#pragma once

// A house with one position entered after another, and what the screens must show of it by going through that list.

#include <optional>
#include <random>
#include <string>
#include <vector>

#include "queries/net_position.h"
#include "support/scenario.h"

namespace surv::test {

struct Level {
    const char* code;
    std::int16_t level, subLevel;
};

/// One order or trade as it was entered: under which codes is the entry's own choice.
struct Kept {
    std::size_t category = 0;
    std::int16_t mask = 0, product = 0;
    int leg = 2;
    std::string group, account;
    AccountLevelTypes types;
    std::int32_t token = 0;
    bool clientLevel = false, open = false, buy = false;
    std::int64_t quantity = 0;
};

/// A query in plain texts.
struct Asked {
    int kind = 0;
    std::string category, group, account;
    std::int32_t token = kAllSecurities;
    std::int16_t mask = 3;
    bool byToken = false;
    std::int16_t product = 0;
};

struct Shown {
    short result = 0;
    std::vector<std::string> rows;  ///< sorted
    friend bool operator==(const Shown&, const Shown&) = default;
};

class CKeptHouse {
 public:
    CKeptHouse(std::int16_t positionMode, std::int16_t orderBased, const std::vector<Level>& levels);

    void Enter(const Kept& kept);
    /// By the library.
    Shown Ask(const Asked& asked);
    /// By the list.
    Shown Expect(const Asked& asked) const;

    static std::int32_t BuyPrice(std::int32_t token) { return 100 + token % 7; }
    static std::int32_t SellPrice(std::int32_t token) { return BuyPrice(token) + 5; }
    static std::int32_t LastPrice(std::int32_t token) { return 120 + token % 11; }

    CScenario scenario;

 private:
    std::vector<Level> levels_;
    bool orderBased_;
    std::int16_t positionMode_;
    std::vector<std::vector<Kept>> kept_;  // by category
};

}  // namespace surv::test
