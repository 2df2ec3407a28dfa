// New parameters in the limit rows: which rows they reach, and that one pass over a file gives what contract by
// contract would.

#include <gtest/gtest.h>

#include "margin/recompute.h"
#include "support/derivatives.h"

namespace surv::test {
namespace {

RiskArray Flat(float loss) {
    RiskArray array{};
    array[3] = loss;
    array[4] = -loss;
    return array;
}

TEST(PublishedRows, ANewFileReMarginsEveryLevelAtOnce) {
    CDerivativeHouse house;
    Contract contract{.token = 100, .expiryDate = house.Days(30), .array = Flat(10)};
    house.File({contract});
    ASSERT_TRUE(house.Order(contract, kBuy, 7, 100).Passed());
    for (const int mask : {3, 0x11}) house.House(static_cast<std::int16_t>(mask));
    for (BKSurveillanceLimitDefTag* row : {&house.Row("-", 3), &house.Row("-", 0x11)}) row->usedMarginOrder = 1000;
    EXPECT_EQ(house.Row("C1", 0xD).usedMarginOrder, 70.0);

    contract.array = Flat(30);
    house.File({contract});
    for (const char* entity : {"C1", "D1", "G1", "-"}) {
        const double cash = std::string{entity} == "-" ? 1000 : 0;
        for (const auto& [mask, due] :
             {std::pair{5, 0.0}, {0xD, 210.0}, {0xF, 210 + cash}, {0x7F, 210 + 2 * cash}, {0x1FF, 210 + 2 * cash}}) {
            EXPECT_EQ(house.Row(entity, static_cast<std::int16_t>(mask)).usedMarginOrder, due) << entity << " " << mask;
        }
    }
}

/// Two houses with the same random book: a file in one pass, and the same contracts one by one.
TEST(PublishedRows, OnePassOverAFileEqualsContractByContract) {
    constexpr int kContracts = 30;
    std::array<CDerivativeHouse, 2> houses;
    std::vector<Contract> contracts(kContracts);
    int number = 0;
    for (Contract& contract : contracts) {
        contract = {.token = 100 + number, .expiryDate = houses[0].Days(30 + number % 3 * 30)};
        contract.array = Flat(static_cast<float>(5 + number));
        if (number % 2) contract.strike = 10000 + number;
        if (number % 5 == 0) contract.exchange = kMaskBseDerivatives;
        ++number;
    }
    for (CDerivativeHouse& house : houses) {
        for (const int mask : {0x60, 0x61}) house.House(static_cast<std::int16_t>(mask));
        for (BKSurveillanceLimitDefTag* row : {&house.Row("D1", 0xD), &house.Row("-", 0x1FF), &house.Row("-", 0x61)}) {
            row->limitOptions |= kPremiumInMargin;
        }
        for (const std::int16_t exchange : {kMaskNseDerivatives, kMaskBseDerivatives}) {
            std::vector<tagRPFContractRecord> records;
            for (const Contract& c : contracts) {
                if (c.exchange == exchange) records.push_back(ContractRecord(c));
            }
            house.RiskFile(exchange, {UnderlyingRecord(kUnderlying, 3, 4)}, records);
        }
        std::uint32_t random = 5;
        for (int i = 0; i < 200; ++i) {
            random = random * 1664525U + 1013904223U;
            const Contract& contract = contracts[(random >> 8) % kContracts];
            house.Order(contract, random >> 20 & 1 ? kBuy : kSell, 1 + static_cast<int>(random >> 24), 150);
        }
    }

    // New parameters, segments mixed.
    CRPFParameterTable table;
    for (const std::int16_t segment : {kMaskNseDerivatives, kMaskBseDerivatives}) {
        table.StoreUnderlying(UnderlyingRecord(kUnderlying, 8, 9), segment);
    }
    for (Contract contract : contracts) {
        contract.array = Flat(static_cast<float>(contract.token));
        contract.price = static_cast<float>(contract.token);
        table.StoreContract(ContractRecord(contract), contract.exchange);
    }
    CMarginRun run(*houses[0].library.manager);
    for (const auto& underlying : table.underlyings) {
        for (const auto& contract : underlying.value->contracts) {
            run.Add(*underlying.value, *contract.value);
            houses[1].library.manager->RecomputeIM(underlying.value.get(), contract.value.get());
        }
    }
    run.Publish();
    double total = 0;
    for (const auto& category : houses[0].library.manager->categories) {
        for (const auto& store : category.value->limitStores) {
            const auto& a = store.value->store.Find(kAllSecurities)->Row();
            const auto& b = houses[1].Row(category.key.View(), store.key);
            EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << category.key.View() << " " << store.key;
            total += a.usedMarginMax;
        }
    }
    EXPECT_GT(total, 1000.0) << "the house holds something";
}

}  // namespace
}  // namespace surv::test
