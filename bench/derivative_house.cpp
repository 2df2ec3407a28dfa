#include "derivative_house.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "entities.h"

namespace surv::bench {
namespace {

constexpr int kContractsPerUnderlying = 300;
constexpr std::int32_t kFirstUnderlying = 1;
constexpr std::int32_t kFirstContract = 1000;
constexpr std::int32_t kDays = 86400;

std::int32_t TokenOf(int contract) { return kFirstContract + contract; }
std::int32_t UnderlyingOf(int contract) { return kFirstUnderlying + contract / kContractsPerUnderlying; }
std::int32_t StrikeOf(int contract) { return contract % kContractsPerUnderlying < 3 ? -1 : 10000 + contract; }
std::int32_t ExpiryOf(int contract, std::int32_t today) { return today + (30 + contract % 3 * 30) * kDays; }

tagRPFContractRecord RecordOf(int contract, int file, std::int32_t today) {
    tagRPFContractRecord record{};
    record.contract.expiryDate = ExpiryOf(contract, today);
    record.contract.strikePrice = StrikeOf(contract);
    record.token = TokenOf(contract);
    record.underlyingToken = UnderlyingOf(contract);
    record.contractPrice = static_cast<float>(1000 + contract % 50 + file);
    for (int i = 0; i < 16; ++i) {
        record.riskArray[i] = static_cast<float>((i % 2 ? 1 : -1) * (i + 1) * (contract % 7 + 1 + file % 5));
    }
    record.compositeDelta = 0.5F;
    return record;
}

}  // namespace

CDerivativeHouse::CDerivativeHouse(int clients, int held, int contracts)
    : clients_(clients), held_(held), contracts_(contracts), library_(std::make_unique<Library>()) {
    Library::StartSettings settings;
    settings.rpfMarginMode = 1;
    settings.positionMode = 2;
    library_->Start(settings, {});
    StageFile();
    Swap();
    AddLimits(kRootCode);
    AddLimits("G1");
    Code code;
    for (int client = 0; client < clients; client += kClientsPerDealer) {
        DealerCode(client, code);
        AddLimits(code);
    }
    for (int client = 0; client < clients; ++client) {
        ClientCode(client, code);
        AddLimits(code);
    }
    request_.resize(sizeof(tagSurveillanceInfo) + sizeof(tagOrderRequest));
    for (int client = 0; client < clients; ++client) {
        for (int which = 0; which < held; ++which) {
            if (!CheckAndCommit(client, which)) std::abort();
        }
    }
}

void CDerivativeHouse::AddLimits(const char* entity) {
    for (const int mask : {4, 5, 8, 9, 0xD, 0x1FF}) {
        BKSurveillanceLimitDefTag row = FarLimits(entity, static_cast<std::int16_t>(mask));
        library_->manager->AddSurvLimits(row, nullptr);
    }
}

/// Spread over the contracts, the same ones for a client each time.
int CDerivativeHouse::ContractOf(int client, int which) const {
    return static_cast<int>((static_cast<std::int64_t>(client) * 131 + static_cast<std::int64_t>(which) * 5987) %
                            contracts_);
}

bool CDerivativeHouse::CheckAndCommit(int client, int which) {
    const int contract = ContractOf(client, which);
    auto& head = *reinterpret_cast<tagSurveillanceInfo*>(request_.data());
    auto& order = *reinterpret_cast<tagOrderRequest*>(request_.data() + sizeof head);
    head = {};
    order = {};
    head.messageCode = 2000;
    head.exchangeMask = kMaskNseDerivatives;
    head.token = TokenOf(contract);
    head.underlyingToken = UnderlyingOf(contract);
    std::memcpy(head.groupCode, "G1", 3);
    DealerCode(client, head.dealerCode);
    ClientCode(client, head.clientCode);
    head.clientType = 2;
    head.subClientType = level::kNone;
    head.levelCheckFlags = 62;
    head.priceMultiplier = 1;
    order.exchangeMask = kMaskNseDerivatives;
    std::memcpy(order.contract.symbol, "INDEX", 5);
    order.contract.expiryDate = ExpiryOf(contract, library_->context.settings.tradingDayBase);
    order.contract.strikePrice = StrikeOf(contract);
    ClientCode(client, *reinterpret_cast<Code*>(order.accountText));
    order.buySell = which % 2 ? kSell : kBuy;
    order.quantity = 10;
    order.price = 2500;
    order.proClient = 1;

    static tagOrdErrMessage error{};
    CPtrList limitRows;
    short status = 0;
    library_->manager->CheckSurveillance(head, error, status, {&limitRows, nullptr}, false);
    return status == status::kPass;
}

void CDerivativeHouse::Send(std::int16_t code, const void* body, std::size_t size) {
    char message[sizeof(tagRPFHeader) + sizeof(tagRPFContractRecord)]{};
    tagRPFHeader head{};
    head.messageCode = code;
    head.messageLength = static_cast<std::int16_t>(sizeof head + size);
    head.segment = kMaskNseDerivatives;
    std::memcpy(message, &head, sizeof head);
    if (size != 0) std::memcpy(message + sizeof head, body, size);
    library_->ProcessRPFInfo(message, head.messageLength, true);
}

void CDerivativeHouse::StageFile() {
    ++files_;
    const std::int32_t today = library_->context.settings.tradingDayBase;
    for (int contract = 0; contract < contracts_; ++contract) {
        if (contract % kContractsPerUnderlying == 0) {
            tagRPFUnderlyingRecord underlying{};
            underlying.underlyingToken = UnderlyingOf(contract);
            underlying.calendarSpreadCharge = 3;
            Send(28006, &underlying, sizeof underlying);
        }
        const tagRPFContractRecord record = RecordOf(contract, files_, today);
        Send(28009, &record, sizeof record);
    }
}

void CDerivativeHouse::Swap() { Send(28002, nullptr, 0); }

double CDerivativeHouse::PlainLoop() const {
    std::array<double, kScenarioCount> sums{};
    for (const auto& category : library_->manager->categories) {
        for (const auto& account : category.value->Book(Period::kExpiry).accounts.accounts) {
            account.value->ForEachScrip([&sums](const CScripExposure& scrip) {
                tagScripMargin& margin = *scrip.scripMargin;
                const tagRPFContractRecord record = margin.contract;
                const bool option = record.contract.strikePrice > 0;
                for (std::size_t v = 0; v < kViewCount; ++v) {
                    const tagSurvPositionData& p = scrip.position.data;
                    const std::int64_t bought = v == 0 || v == 2 ? p.orderBuyQty : p.tradedBuyQty;
                    const std::int64_t sold = v == 0 || v == 3 ? p.orderSellQty : p.tradedSellQty;
                    const auto net = static_cast<double>(bought - sold);
                    for (std::size_t i = 0; i < kScenarioCount; ++i) {
                        sums[i] += static_cast<double>(static_cast<float>(net * record.riskArray[i]));
                    }
                    margin.view[v].spreadPosition = net * record.compositeDelta;
                    if (option) {
                        margin.view[v].netOptionValue = net * record.contractPrice / 100.0;
                        margin.view[v].longOptionQuantity = std::max<std::int64_t>(bought - sold, 0);
                        margin.view[v].shortOptionQuantity = std::max<std::int64_t>(sold - bought, 0);
                    } else {
                        margin.view[v].futuresQuantity = std::abs(bought - sold);
                    }
                    margin.view[v].riskQuantity = bought - sold;
                }
            });
        }
    }
    return sums[0] + sums[kScenarioCount - 1];
}

}  // namespace surv::bench
