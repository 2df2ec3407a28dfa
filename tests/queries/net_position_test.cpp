#include <gtest/gtest.h>

#include "queries/kept_house.h"

namespace surv::test {
namespace {

const std::vector<Level> kLevels{
    {"-", 2, 0},  {"DA", 0, 7}, {"DB", 7, 7},   {"DC", 1, 7},   {"DD", 7, 0},   {"GA", 6, 6},   {"GB", 0, 6},
    {"GC", 1, 6}, {"GD", 6, 0}, {"XA", 130, 7}, {"XB", 131, 7}, {"XC", 130, 6}, {"XD", 131, 6}, {"PA", 4, 7},
    {"PB", 5, 7}, {"FA", 8, 7}, {"FB", 8, 6},   {"C1", 2, 0},   {"C2", 1, 0},   {"S1", 3, 0},
};
constexpr std::array<std::int16_t, 16> kMasks{2, 3, 4, 5, 8, 9, 16, 17, 32, 33, 64, 65, 128, 129, 256, 257};
constexpr std::array<std::int16_t, 4> kProducts{0, 2, 4, 8};
/// Clients, their sums under a dealer and a group, the own account, one without a code.
const std::vector<std::string> kAccounts{"A1",     "A1    +", "A1        +", "LONGCLIENT12", "LONGCL+", "LONGCLIENT+",
                                         "SIXSIX", "SIXSIX+", "*****",       "***** +",      ""};

class CDraw {
 public:
    explicit CDraw(unsigned seed) : random_(seed) {}
    int Below(std::size_t count) { return static_cast<int>(random_() % count); }
    template <class Values>
    const auto& Of(const Values& values) {
        return values[static_cast<std::size_t>(Below(std::size(values)))];
    }

 private:
    std::mt19937 random_;
};

/// Tokens belong to one segment each; every fifth has seven digits.
std::int32_t TokenOf(std::int16_t segment, int number) {
    return number == 4 ? 1'000'000 + segment : segment * 100 + number;
}

/// Level types stay with an account of a category, as a holder's do.
AccountLevelTypes TypesOf(std::size_t category, const std::string& group, const std::string& account) {
    constexpr std::array<std::int16_t, 7> kClient{1, 6, 2, 3, 8, 1, 5};
    std::size_t number = category * 31 + group.size() * 17;
    for (const char c : account) number = number * 131 + static_cast<unsigned char>(c);
    return {kClient[number % 7], std::int16_t{number / 7 % 2 ? std::int16_t{6} : std::int16_t{0}},
            std::int16_t{number / 14 % 2 ? std::int16_t{1} : std::int16_t{-1}}};
}

Kept Draw(CDraw& draw) {
    constexpr std::array<std::int16_t, 6> kEntered{1, 1, 0, 2, 4, 8};
    const std::vector<std::string> groups{"G1", "G2", ""};
    Kept k;
    k.category = static_cast<std::size_t>(draw.Below(kLevels.size()));
    k.mask = draw.Of(kMasks), k.product = draw.Of(kEntered);
    const bool cash = IsCashSegment(LimitMaskToSegment(k.mask));
    if (!(k.mask & 1) || (!cash && k.product != product::kMarginPlus)) k.product = product::kMargin;
    k.leg = 1 + draw.Below(2);
    k.group = draw.Of(groups), k.account = draw.Of(kAccounts);
    k.types = TypesOf(k.category, k.group, k.account);
    k.token = TokenOf(LimitMaskToSegment(k.mask), draw.Below(5));
    k.clientLevel = draw.Below(4) == 0, k.open = draw.Below(3) == 0, k.buy = draw.Below(2) == 0;
    k.quantity = 1 + draw.Below(500);
    return k;
}

TEST(NetPositions, EqualAPlainFilterOverWhatWasEntered) {
    const struct { std::int16_t mode, orderBased; } houses[] = {{2, 0}, {3, 0}, {3, 1}};
    for (const auto& [mode, orderBased] : houses) {
        SCOPED_TRACE(mode * 10 + orderBased);
        CDraw draw(20261123);
        CKeptHouse house(mode, orderBased, kLevels);
        for (int i = 0; i < 3000; ++i) house.Enter(Draw(draw));
        std::vector<std::string> categories{"ALL", "NOSUCH"};
        for (const Level& level : kLevels) categories.emplace_back(level.code);
        std::size_t rows = 0;
        std::array<std::size_t, 13> rowsOfKind{};
        for (const std::string& category : categories) {
            for (const std::int16_t mask : kMasks) {
                for (const std::int16_t product : kProducts) {
                    for (int kind = 0; kind <= 12; ++kind) {
                        for (int variant = 0; variant < 8; ++variant) {
                            Asked asked;
                            asked.kind = kind, asked.category = category;
                            asked.group = draw.Below(4) == 0 ? "" : " G1 ";
                            asked.account = variant & 1 ? "ALL" : draw.Of(kAccounts);
                            if (kind != 5 && !(variant & 1)) asked.account = " " + asked.account;
                            if (variant & 2) asked.token = TokenOf(LimitMaskToSegment(mask), draw.Below(5));
                            asked.byToken = (variant & 4) != 0;
                            asked.mask = mask, asked.product = product;
                            const Shown expected = house.Expect(asked);
                            const Shown shown = house.Ask(asked);
                            ASSERT_EQ(shown.result, expected.result);
                            ASSERT_EQ(shown.rows, expected.rows)
                                << "kind " << kind << " of " << category << " mask " << mask << " product " << product
                                << " token " << asked.token << " by token " << asked.byToken << " account \""
                                << asked.account << "\" group \"" << asked.group << "\"";
                            rows += shown.rows.size();
                            rowsOfKind[static_cast<std::size_t>(kind)] += shown.rows.size();
                        }
                    }
                }
            }
        }
        for (const int kind : {0, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12}) {
            EXPECT_GT(rowsOfKind[static_cast<std::size_t>(kind)], 100) << kind;
        }
        EXPECT_GT(rows, 10'000);
    }
}

}  // namespace
}  // namespace surv::test
