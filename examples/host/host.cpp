// A host in C++: starts the library, hands in a day, sends orders and a trade, reads the answers, frees what it owns.
#include "surveillance/host.h"

#include <cstdio>
#include <cstring>

#include "surveillance/codes.h"

constexpr std::int16_t kSettlementOfNseCash = 3;  // limit mask
constexpr std::int32_t kToken = 2885;

template <std::size_t Width>
void Put(char (&field)[Width], const char* text) {
    std::memcpy(field, text, strnlen(text, Width - 1));
}
void PutContract(tagContractDescriptor& contract) {
    Put(contract.symbol, "SCRIP");
    Put(contract.series, "EQ");
}

BKSurveillanceLimitDefTag* NewLimitRow(const char* entity) {
    return new BKSurveillanceLimitDefTag(UnlimitedRow(entity, surv::kAllSecurities, kSettlementOfNseCash));
}

/// 100 shares that client C1 bought at 99.00.
BKExposureTag* NewPositionRow() {
    auto* row = new BKExposureTag{};
    Put(row->levelCode, "C1");
    Put(row->groupCode, "G1");
    Put(row->accountCode, "C1");
    row->clientLevelType = 2;
    row->marketSegment = static_cast<std::int16_t>(surv::Segment::kNseEquity);
    row->limitMask = kSettlementOfNseCash;
    row->token = kToken;
    PutContract(row->contract);
    row->priceMultiplier = 1;
    row->orderBuyQty = row->tradedBuyQty = 100;
    row->orderBuyValue = row->tradedBuyValue = 9900.0 * 100;
    return row;
}

/// In positionMode 1 the library frees each row as it takes it in; what a failed start leaves in the lists is ours.
bool Start() {
    CPtrList limits, positions;
    for (const char* entity : {"-", "G1", "D1"}) limits.AddTail(NewLimitRow(entity));
    BKSurveillanceLimitDefTag* client = NewLimitRow("C1");
    client->maxSingleOrderQty = 500;
    client->grossExposureLimit = 80'000 * 100.0;                                             // paise
    client->usedGrossOrder = client->usedGrossTraded = client->usedMaxGross = 9900.0 * 100;  // by the position
    limits.AddTail(client);
    positions.AddTail(NewPositionRow());
    const short result = InitializeSurvManager(&limits, &positions, 0, 1, 0, 0, 1, 0, 0, nullptr, nullptr, nullptr);
    FreeRows<BKSurveillanceLimitDefTag>(limits);
    FreeRows<BKExposureTag>(positions);
    return result == surv::kDone;
}

void PutHead(tagSurveillanceInfo& head, std::int16_t messageCode) {
    head.messageCode = messageCode;
    head.exchangeMask = surv::kMaskNseCash;
    head.token = kToken;
    head.priceMultiplier = 1;
    Put(head.groupCode, "G1");
    Put(head.dealerCode, "D1");
    Put(head.clientCode, "C1");
    head.clientType = 2;
    head.subClientType = surv::level::kNone;
    head.levelCheckFlags = 0x3E;  // every level is checked
}

/// A purchase at 100.00. An order, its stored state and a trade name these fields alike.
template <class Record>
void PutPurchase(Record& record) {
    record.exchangeMask = surv::kMaskNseCash;
    PutContract(record.contract);
    Put(record.clientAccount, "C1");
    record.buySell = surv::kBuy;
    record.productType = surv::product::kMargin;
    if constexpr (requires { record.quantity; }) {
        Put(record.accountText, "C1");
        record.proClient = 1, record.price = 10000;
    }
}

void SendOrder(std::int32_t quantity) {
    struct [[gnu::packed]] {
        tagSurveillanceInfo head;
        tagOrderRequest order;
    } request{};
    PutHead(request.head, 2000);
    PutPurchase(request.order);
    request.order.quantity = quantity;
    tagOrdErrMessage error{};
    short status = 0;
    CPtrList touched, undone;
    if (CheckSurveillance(&request.head, &error, &status, &touched, nullptr, &undone, 0) != surv::kDone) return;
    if (status == surv::status::kPass) {
        std::printf("order of %d: accepted, %d limit rows touched\n", quantity, touched.GetCount());
    } else {
        std::printf("order of %d: refused %d, %s\n", quantity, error.errorCode, error.errorText);
    }
    FreeRows<BKSurveillanceLimitDefTag>(touched);
    FreeRows<tagBreachRow>(undone);
}

/// Of an open order for `ordered` shares `quantity` have traded.
void SendTrade(std::int32_t quantity, std::int32_t pricePaise, std::int32_t ordered) {
    struct [[gnu::packed]] {
        tagSurveillanceInfo head;
        tagTradeInfo trade;
        tagOrderInfo stored;
    } event{};
    PutHead(event.head, 2222);
    event.head.levelMarginFlags = 0x80;  // the stored order follows
    PutPurchase(event.trade);
    event.trade.tradedQuantity = quantity;
    event.trade.tradePrice = pricePaise;
    PutPurchase(event.stored);
    event.stored.orderStatus = 1;
    event.stored.quantity = event.stored.quantityRemaining = ordered;
    CPtrList touched;
    const short result = UpdateSurveillance(&event.head, nullptr, &touched, nullptr, 0);
    std::printf("trade of %d: %s\n", quantity, result == surv::kDone ? "taken in" : "not done");
    FreeRows<BKSurveillanceLimitDefTag>(touched);
}

void ShowClient() {
    char category[] = "C1", group[] = "G1", account[] = "C1";
    CPtrList screen;
    GetNetPositionInfoFromDll(5, category, group, account, kToken, kSettlementOfNseCash, &screen, 0, 1);
    for (auto at = screen.GetHeadPosition(); at;) {
        const auto* held = static_cast<const BKExposureTag*>(screen.GetNext(at));
        std::printf("C1 holds %d of %s for %.2f rupees\n", held->tradedBuyQty, held->contract.symbol,
                    held->tradedBuyValue / 100);
    }
    FreeRows<BKExposureTag>(screen);
}

int main() {
    SetHostWindow([](void*, unsigned, unsigned, const char* text) { std::printf("! %s\n", text); }, nullptr);
    SendOrder(1);  // too early, and the library says so
    if (!Start()) return 1;
    SendOrder(400);
    SendTrade(60, 9950, 400);
    SendOrder(600);
    SendOrder(400);
    ShowClient();
    CleanupSurvManager();
}
