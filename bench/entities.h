#pragma once

// Codes and limit rows of the houses that benchmarks are run on.

#include <cstdint>
#include <cstring>

#include "categories/limit_entry.h"
#include "surveillance/codes.h"

namespace surv::bench {

inline constexpr int kClientsPerDealer = 1000;
inline constexpr int kClientsPerFamily = 4;

using Code = char[6];

/// A letter and four places of base 36, which serve 1.6 million entities.
inline void WriteCode(char letter, int number, Code& code) {
    constexpr const char* kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    code[0] = letter;
    for (int place = 4; place >= 1; --place, number /= 36) code[place] = kDigits[number % 36];
    code[5] = '\0';
}
inline void ClientCode(int client, Code& code) { WriteCode('C', client, code); }
inline void FamilyCode(int client, Code& code) { WriteCode('F', client / kClientsPerFamily, code); }
inline void DealerCode(int client, Code& code) { WriteCode('D', client / kClientsPerDealer, code); }

/// All limits set and far away.
inline BKSurveillanceLimitDefTag FarLimits(const char* entity, std::int16_t mask) {
    constexpr double kFar = 1e15;
    constexpr std::int32_t kFarQuantity = 2'000'000'000;
    BKSurveillanceLimitDefTag row{};
    std::memcpy(row.entityCode, entity, ::strnlen(entity, sizeof row.entityCode - 1));
    row.limitMask = mask;
    row.token = kAllSecurities;
    row.grossExposureLimit = row.netExposureLimit = row.netSaleExposureLimit = row.netPositionLimit = kFar;
    row.turnoverLimit = row.pendingOrderLimit = row.mtmLossLimit = row.maxSingleOrderValue = row.marginLimit = kFar;
    row.maxSingleOrderQty = row.netQuantityLimit = kFarQuantity;
    row.limitOptions = kRetainMultiplier;
    return row;
}

/// A position row of 100 shares bought at 250.00, by the level that it is for and the account that holds it.
inline BKExposureTag HeldRow(const char* level, const char* account, std::int32_t token) {
    BKExposureTag row{};
    std::memcpy(row.levelCode, level, ::strnlen(level, sizeof row.levelCode - 1));
    std::memcpy(row.accountCode, account, ::strnlen(account, sizeof row.accountCode - 1));
    row.marketSegment = 1;
    row.limitMask = 3;
    row.token = token;
    row.clientLevelType = 2;
    row.priceMultiplier = 1;
    row.lastPrice = 25000;
    row.tradedBuyQty = row.orderBuyQty = 100;
    row.tradedBuyValue = row.orderBuyValue = 2'500'000;
    return row;
}

}  // namespace surv::bench
