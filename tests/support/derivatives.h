#pragma once

// A house that trades NSE derivatives of one underlying, margined from risk parameters.

#include <array>
#include <vector>

#include "support/scenario.h"

namespace surv::test {

using RiskArray = std::array<float, 16>;

inline constexpr std::int32_t kUnderlying = 26000;

struct Contract {
    std::int32_t token = 0;
    std::int32_t expiryDate = 0;
    std::int32_t strike = -1;  ///< paise; -1 a future
    RiskArray array{};
    float price = 100;  ///< paise
    float delta = 1;
    std::int32_t underlying = kUnderlying;
    std::int16_t exchange = kMaskNseDerivatives;
};

[[nodiscard]] inline tagRPFUnderlyingRecord UnderlyingRecord(std::int32_t token, float calendar, float shortMinimum) {
    tagRPFUnderlyingRecord record{};
    record.underlyingToken = token, record.calendarSpreadCharge = calendar;
    record.shortOptionMinimumCharge = shortMinimum;
    return record;
}

[[nodiscard]] inline tagRPFContractRecord ContractRecord(const Contract& contract) {
    tagRPFContractRecord record{};
    record.contract.expiryDate = contract.expiryDate, record.contract.strikePrice = contract.strike;
    record.token = contract.token, record.underlyingToken = contract.underlying;
    record.contractPrice = contract.price;
    std::memcpy(record.riskArray, contract.array.data(), sizeof record.riskArray);
    record.compositeDelta = contract.delta;
    return record;
}

class CDerivativeHouse : public CScenario {
 public:
    /// Rows on the derivative and combined masks for "-", G1, D1, C1; no limits.
    explicit CDerivativeHouse(std::int16_t positionMode = 0)
        : CScenario({.rpfMarginMode = 1, .positionMode = positionMode}) {
        for (const int mask : {4, 5, 8, 9, 0xD, 0xF, 0x20, 0x7F, 0x1FF}) House(static_cast<std::int16_t>(mask));
    }

    /// A moment so many days after today's midnight, in exchange seconds.
    [[nodiscard]] std::int32_t Days(int days) const { return library.context.settings.tradingDayBase + days * 86400; }
    void File(const std::vector<Contract>& contracts, float calendar = 0, float shortMinimum = 0) {
        std::vector<tagRPFContractRecord> records;
        for (const Contract& contract : contracts) records.push_back(ContractRecord(contract));
        RiskFile(kMaskNseDerivatives, {UnderlyingRecord(kUnderlying, calendar, shortMinimum)}, records);
    }
    void ExposureRate(std::int32_t token, std::int32_t rate) {
        tagAdditionalMarginInfo record{};
        record.exchange = kMaskNseDerivatives, record.token = token, record.additionalMarginRate = rate;
        library.context.stores.AddAdditionalMargin(record);
    }
    [[nodiscard]] static OrderSpec SpecOf(const Contract& contract, std::int16_t buySell, std::int32_t quantity,
                                          std::int32_t price, const std::string& client = "C1") {
        OrderSpec spec;
        spec.exchangeMask = contract.exchange, spec.token = contract.token;
        spec.underlyingToken = contract.underlying, spec.expiryDate = contract.expiryDate;
        spec.strikePrice = contract.strike, spec.series = "XX", spec.productType = product::kNone;
        spec.buySell = buySell, spec.quantity = quantity, spec.price = price;
        spec.client = client;
        return spec;
    }
    Answer Order(const Contract& contract, std::int16_t buySell, std::int32_t quantity, std::int32_t price,
                 const std::string& client = "C1") {
        return Check(SpecOf(contract, buySell, quantity, price, client));
    }
    [[nodiscard]] CClientExposure& Account(std::string_view entity = "C1", std::string_view account = "C1") const {
        return *library.manager->FindCategory(entity)->Book(Period::kExpiry).accounts.FindAccount("G1", account);
    }
    [[nodiscard]] const tagUnderlyingMargin& Underlying(std::string_view entity = "C1") const {
        return *Account(entity).underlyings.Find(UnderlyingKey{kMaskNseDerivatives, kUnderlying})->underlyingMargin;
    }
};

}  // namespace surv::test
